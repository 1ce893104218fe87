// From the ASN.1 files of the command line to modules of the tree.
#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>

#include "asn1/front/AsnFault.h"
#include "asn1/front/Backend.h"
#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3MeskNodes.h"
#include "asn1/integration/T3MeskTranslate.h"
#include "asn1/model/AsnObjects.h"
#include "asn1/integration/T3Representation.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3Tree.h"
#include "support/rFsearch.h"
#include "support/TemporaryFiles.h"
#include "support/rSystem.h"

namespace {
// The option that names the file of prefixes; empty until the tools have run.
std::string prefix_option_reference;
std::string generation_option_reference;
// For a source the prefixes of the modules that stand in it behind the first one.
std::map<std::string, std::vector<std::string>>& further_modules =
    *new std::map<std::string, std::vector<std::string>>;
// What the tools exchange goes on every road out.
std::vector<std::string>& option_files = *new std::vector<std::string>;

std::string OptionFileName(const std::string& directory, const char* ending) {
  return directory + DirectorySeparator() + "VEXA-ASN-1-" + std::to_string(std::time(nullptr)) + ending;
}

std::string AsnDirectory() {
  std::string directory = gT3CommandLine.GetDirectory(language_asn1);
  if (directory.empty() || directory[0] != DirectorySeparator())
    directory = gT3CommandLine.project_directory + DirectorySeparator() + directory;
  return directory;
}

bool IsOlder(const std::string& source, const std::string& copy) {
  struct stat of_source {
  }, of_copy{};
  if (stat(source.c_str(), &of_source) != 0 || stat(copy.c_str(), &of_copy) != 0) return false;
  return of_source.st_mtime < of_copy.st_mtime;
}

bool mesk_skipMESKRun(const std::string& directory) {
  if (!gT3CommandLine.build_avoidance) return false;
  for (const std::string& source : mesk::AsnSources()) {
    for (const std::string& syntax_file : SyntaxFilesOf(directory, source)) {
      const std::string copy = syntax_file + ".t3a";
      if (!IsOlder(source, copy) || std::rename(copy.c_str(), syntax_file.c_str()) != 0) return false;
    }
  }
  vexa_compiler_phases(gT3CommandLine.CommonVerbosity(),
                       "All MESK syntax files are up-to-date - skipping MESK invocation.");
  return true;
}

void RunMkprefil(const std::string& option_file) {
  std::string command = "mkprefil -OPTION-FILE=\"" + option_file + '"';
  for (const std::string& option : mesk::SourceDirectoryOptions()) command += ' ' + mesk::ShellQuoted(option);
  for (const std::string& source : mesk::AsnSources()) command += ' ' + mesk::ShellQuoted(rBaseName(source));
  command += " -ANALYZE";
  if (mesk::ShellInvoke(command) == 0) return;
  vexa_error("ASN.1 compilation failed", NoPosition);
  mesk_RemoveOptionFiles();
  rExit(1);
}

void WriteCompilationOptions() {
  std::ofstream file(mesk::kCompilationOptions, std::ios::app);
  for (const std::string& option : mesk::SourceDirectoryOptions()) file << option << '\n';
}

bool RunMesk(const std::string& directory, const std::string& source) {
  vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), "Invoking ASN.1 compiler");
  std::vector<std::string> arguments{"mesk",
                                     "-VERBOSE=tool",
                                     "-DEFINITION-CATEGORY=STAND-ALONE",
                                     "-TYP=1",
                                     "-DEF=1",
                                     "-TAB=1",
                                     "-COD=1",
                                     "-TST=1",
                                     "-NAMELEN=128",
                                     "-DEFINITELEN=1",
                                     "-S=" + directory,
                                     "-L=" + directory,
                                     prefix_option_reference,
                                     "+" + std::string(mesk::kCompilationOptions),
                                     rBaseName(source),
                                     "-C-GENERATION=REAL"};
  if (gT3CommandLine.strict) arguments.emplace_back("-STRICTSTANDARD");
  arguments.emplace_back("-ANALYZE");
  if (mesk::Binary_invoke(arguments)) return true;
  vexa_error("Errors found in ASN.1 compilation", NoPosition);
  return false;
}

// Sources are known to the tools by their names without directories, and to their files by prefixes.
bool NamesServe() {
  std::map<std::string, std::string> names, prefixes;
  bool good = true;
  for (const std::string& source : mesk::AsnSources()) {
    const auto [name, fresh] = names.emplace(rBaseName(source), source);
    if (const char begin = name->first[0]; begin == '-' || begin == '+') {
      vexa_error("the name of the ASN.1 file \"" + source + "\" must not begin with \"" + begin + "\"",
                 NoPosition);
      good = false;
    }
    if (!fresh && name->second != source) {
      vexa_error("ASN.1 files \"" + name->second + "\" and \"" + source + "\" have the same name",
                 NoPosition);
      good = false;
    }
    const auto [prefix, fresh_prefix] = prefixes.emplace(mesk::vexa_asn_1_filename_prefix(source), source);
    if (fresh && !fresh_prefix) {
      vexa_error("ASN.1 files \"" + prefix->second + "\" and \"" + source + "\" have the same prefix \"" +
                     prefix->first + "\" for what is written for them",
                 NoPosition);
      good = false;
    }
  }
  return good;
}

// mkprefil writes a line for each module: its name, the prefix of its source, and its own, which is another
// one behind the first module of the source.
void NoteFurtherModules(const std::string& option_file) {
  std::map<std::string, std::string> sources;
  for (const std::string& source : mesk::AsnSources())
    sources[mesk::vexa_asn_1_filename_prefix(source)] = source;
  std::ifstream file(option_file);
  for (std::string line; std::getline(file, line);) {
    const size_t of_file = line.find(':') + 1, own = line.find(':', of_file) + 1;
    const auto source = sources.find(line.substr(of_file, own - of_file - 1));
    if (source != sources.end() && line.substr(own) != source->first)
      further_modules[source->second].push_back(line.substr(own));
  }
}

// The syntax files of all sources, which are read together, so that each is read once.
void LoadSyntaxFiles() {
  static const asn1::BackendName name{"VEXA-ASN-1", 100, 0, {}};
  std::vector<std::string> prefixes;
  for (const std::string& source : mesk::AsnSources()) {
    prefixes.push_back(mesk::vexa_asn_1_filename_prefix(source));
    const std::vector<std::string>& further = further_modules[source];
    prefixes.insert(prefixes.end(), further.begin(), further.end());
  }
  asn1::initBackend(mesk::BackendWords(prefix_option_reference, AsnDirectory(), prefixes), name,
                    [](asn1::ModRec&, const std::string&) { return true; });
}

// Once in a run: the tools for all ASN.1 files.
bool RunTools(const std::string& source) {
  const std::string directory = AsnDirectory();
  if (!NamesServe()) {
    prefix_option_reference = "+";
    return false;
  }
  MakeDir(directory);
  mesk::HoldWorkingFolder();
  const std::string prefixes = OptionFileName(directory, "-MESK.txt");
  mesk::RemoveAtEnd(prefixes);
  mesk::RemoveAtEnd(mesk::kCompilationOptions);
  RunMkprefil(prefixes);
  WriteCompilationOptions();
  prefix_option_reference = "+" + prefixes;
  const std::string generation = OptionFileName(directory, "-ASN2C.txt");
  mesk::RemoveAtEnd(generation);
  generation_option_reference = "+" + generation;
  NoteFurtherModules(prefixes);
  if (!mesk_skipMESKRun(directory) && !RunMesk(directory, source)) return false;
  LoadSyntaxFiles();
  return true;
}

// The tools' result for all files: a fault told once is not told for each file.
bool ToolsHaveRun(const std::string& source) {
  static bool good = false;
  if (prefix_option_reference.empty()) good = RunTools(source);
  return good;
}

bool ReadModule(const std::string& source, const std::string& prefix) {
  asn1::ModRec& module = asn1::gSyntaxTrees.findOrCreateModRec(prefix, "");
  bool good = false;
  translate_module(module, gIdents.MakeIdent(source), good);
  // Any of these may stand in an open type of some module.
  for (const asn1::AsnType& type : asn1::TypesOfObjects(module))
    addMESKEntryType(asn1::getTypeRef(type));
  return good;
}
}  // namespace

std::string& mesk::GenerationOptionReference() {
  return generation_option_reference;
}

void mesk::RemoveAtEnd(const std::string& path) {
  RememberTemporaryFile(path);
  option_files.push_back(path);
}

void mesk_RemoveOptionFiles() {
  for (const std::string& path : option_files) {
    rDeleteFile(path);
    ForgetTemporaryFile(path);
  }
  option_files.clear();
}

std::vector<std::string> SyntaxFilesOf(const std::string& directory, const std::string& source) {
  std::vector<std::string> files;
  const auto add = [&](const std::string& prefix) {
    files.push_back(directory + DirectorySeparator() + prefix + ".stx");
  };
  add(mesk::vexa_asn_1_filename_prefix(source));
  for (const std::string& prefix : further_modules[source]) add(prefix);
  return files;
}

bool mesk_T3Module_read(const std::string& source) {
  if (!ToolsHaveRun(source)) return false;
  bool good = ReadModule(source, mesk::vexa_asn_1_filename_prefix(source));
  for (const std::string& prefix : further_modules[source]) good = ReadModule(source, prefix) && good;
  mesk::ResolveWaitingItems();
  return good;
}
