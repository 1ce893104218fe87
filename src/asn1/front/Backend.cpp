#include "asn1/front/Backend.h"

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"

namespace asn1 {
SyntaxTrees gSyntaxTrees;

ModRec& firstModule() {
  if (gSyntaxTrees.all().empty()) fatalError(kInternal, "No module record list.");
  return *gSyntaxTrees.all().front();
}

namespace {
AsnCommandLine command_line;
int verbosity = 0;

[[noreturn]] void usage(const BackendName& name) {
  for (const char* line : name.usage) std::printf("%s\n", line);
  throw AsnExit{1};
}

int VerbosityOf(const AsnCommandLine& line) {
  int result = 0;
  for (const auto& word : line.options) {
    const std::string option = optionToUpper(word.text);
    if (option.compare(0, 8, "VERBOSE=") != 0) continue;
    const std::string value = optionToUpper(option.substr(8));
    result = value == "1" || value == "2" ? value[0] - '0'
             : value == "TERSE"           ? 1
             : value == "VERBOSE"         ? 2
                                          : 0;
  }
  return result;
}

void Tell(const char* text) {
  if (verbosity > 0) std::printf("%s", text);
}

// The options that are looked at for each module: what files are called has no need of that.
std::vector<std::string> OptionsOfEachModule() {
  AsnOptions prefixes;
  prefixes.set_prefix_length(command_line.prefix_length);
  std::vector<std::string> others;
  for (const auto& word : command_line.options) {
    if (AsnOptions::IsPrefix(word.text))
      prefixes.Record(word.text);
    else
      others.push_back(word.text);
  }
  prefixes.Apply({}, [](const std::string&) { return true; });  // which warns of those that are too long
  return others;
}

void Evaluate(ModRec& module, const std::vector<std::string>& common, const BackendOption& take) {
  module.options.set_prefix_length(command_line.prefix_length);
  std::set<std::string> unknown;
  module.options.Apply(
      {module.file_prefix, module.generation_prefix},
      [&](const std::string& text) {
        const bool taken = take(module, text);
        if (!taken) unknown.insert(text);
        return taken;
      },
      common);
  // Once for all modules; of options in syntax files whoever wrote these told.
  if (&module != &firstModule()) return;
  for (const auto& word : command_line.options)
    if (unknown.erase(word.text) != 0) argumentIgnored(word.text, word.file);
}
}  // namespace

void initBackend(const std::vector<std::string>& words, const BackendName& name, const BackendOption& take) {
  gSyntaxTrees.clear();
  command_line = parseCmdLineParams(words);
  verbosity = VerbosityOf(command_line);
  Tell("  Parsing command line parameters ...\n");
  if (command_line.version) {
    std::printf("%s\n",
                printVersionStri(std::string(name.name) + " version ", name.version, name.patch, "").c_str());
    throw AsnExit{0};
  }
  if (command_line.file_prefixes.empty()) usage(name);
  for (const std::string& prefix : command_line.file_prefixes)
    gSyntaxTrees.findOrCreateModRec(prefix, "").named_by_user = true;
  Tell("  Reading syntax trees ...\n");
  gSyntaxTrees.set_tells(verbosity > 0);
  gSyntaxTrees.readAllSyntaxTrees(command_line.syntax_directory);
  Tell("  Parsing command line options ...\n");
  const std::vector<std::string> common = OptionsOfEachModule();
  for (const auto& module : gSyntaxTrees.all())
    if (module->state == kRead) Evaluate(*module, common, take);
}

const AsnCommandLine& backendCommandLine() {
  return command_line;
}

int backendVerbosity() {
  return verbosity;
}
}  // namespace asn1
