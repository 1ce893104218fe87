#include "driver/options/T3Options.h"

#include <iterator>
#include <sstream>

const char* const FORMAT_SELECTOR[6] = {"ASCII", "UTF-8", "UCS-2", "UCS-2LE", "UCS-2BE", "UNKNOWN FORMAT"};

const char* KindToStr(::language value) {
  switch (value) {
    case language_ttcn2:
      return "TTCN-2";
    case language_ttcn3:
      return "TTCN-3";
    case language_asn1:
      return "ASN-1";
  }
  return "ERROR";
}

GlobalOptions::GlobalOptions() {
  common.verbosity.Set(verbosity_level_t::Stages);
  common.weak_typing.Set(false);
  common.initialize_check.Set(1);
  common.name_equivalence.Set(false);
  common.action.Set(action_compile);
  common.prefix.Set("t3_");
  common.directory.Set(".");
}

template <class T>
T GlobalOptions::Choose(::language of, OptionValue<T> ModuleOptions::*field, T otherwise) const {
  if (of != language_ttcn3 && of != language_asn1) return otherwise;
  const ModuleOptions& group = of == language_ttcn3 ? ttcn3_group : asn1_group;
  return (group.*field).given ? (group.*field).value : (common.*field).value;
}

verbosity_level_t GlobalOptions::GetVerbosity(::language of) const {
  return Choose(of, &ModuleOptions::verbosity, verbosity_level_t::Errors);
}
bool GlobalOptions::GetWeakTyping(::language of) const {
  return Choose(of, &ModuleOptions::weak_typing, true);
}
int GlobalOptions::GetInitializeCheck(::language of) const {
  return Choose(of, &ModuleOptions::initialize_check, 1);
}
bool GlobalOptions::GetNameEquivalence(::language of) const {
  return Choose(of, &ModuleOptions::name_equivalence, false);
}
compiler_action_t GlobalOptions::GetCompilerAction(::language of) const {
  return Choose(of, &ModuleOptions::action, action_compile);
}
int GlobalOptions::GetSplitFile(::language of) const {
  return Choose(of, &ModuleOptions::split_file, -1);
}
std::string GlobalOptions::GetPrefix(::language of) const {
  return Choose(of, &ModuleOptions::prefix, std::string("vexa_"));
}
std::string GlobalOptions::GetDirectory(::language of) const {
  return Choose(of, &ModuleOptions::directory, std::string("."));
}
std::string GlobalOptions::GetOutput(::language of) const {
  return Choose(of, &ModuleOptions::output, std::string("default"));
}
int GlobalOptions::GetCodecGeneration(::language of) const {
  return Choose(of, &ModuleOptions::codec_generation, kCodecAll);
}

namespace {
constexpr unsigned kGroups = kReadT3Group | kReadAsn1Group;
constexpr unsigned kModuleLists = kReadT3Modules | kReadAsn1Modules;
/// Every reader that fills a block of module options.
constexpr unsigned kBlocks = kReadGlobal | kGroups | kModuleLists;

constexpr const char* kFormatHelp =
    "the input file uses the specified file format (default:UNKNOWN FORMAT) \n"
    "(ASCII | UTF-8 | UCS-2 | UCS-2LE | UCS-2BE | UNKNOWN FORMAT)";
constexpr const char* kCodecHelp =
    "generate the following codecs for an ASN.1 module (default: all)\n"
    "(none | all | no-translation |\n"
    " BER:1997 | BER:1997-length-form-3 | PER-BASIC-ALIGNED:1997 | PER-BASIC-UNALIGNED:1997)";

// clang-format off
constexpr OptionRow kRows[] = {
    {'h', false, kReadGlobal, "-h", "this message",
     " where global_option is any of module_option except '-o' and/or any of the following:"},
    {'?', false, kReadGlobal, "-?", "this message", nullptr},
    {'V', false, kReadGlobal, "-V", "version info", nullptr},
    {'m', true, kReadGlobal, "-m <number>", "maximum number of errors", nullptr},
    {'t', true, kReadGlobal, "-t",
     "TRI based integration\nvalid values are\n0 - no TRI\n1 - vendor provided TRI\n2 - user provided TRI", nullptr},
    {'f', true, kReadGlobal, "-f <filename>", "set MCFG file", nullptr},
    {'B', false, kReadGlobal, "-B", "avoid re-building of unchanged files", nullptr},
    {'i', false, kReadGlobal, "-i", "enable TCI support", nullptr},
    {'R', false, kReadGlobal, "-R", "build ETS with support for Orvane test management (-i required)", nullptr},
    {'p', true, kReadGlobal, "-p", "project directory", nullptr},
    {'G', false, kReadGlobal, "-G", "generate code and makefile for debugging", nullptr},
    {'O', false, kReadGlobal, "-O", "do not generate code for unused declarations", nullptr},
    {'l', true, kReadGlobal, "-l <number>",
     "truncate generated template description to <number> characters (default=100)", nullptr},
    {'D', false, kReadGlobal, "-D",
     "force strict TTCN-3 compliance (deviations from standard are treated as errors)", nullptr},
    {'k', false, kReadGlobal, "-k", "generate makefile (keep orig. makefile) (-r required) ", " modules section"},
    {'K', false, kReadGlobal, "-K", "generate makefile (overwrite orig. makefile) (-r required)", nullptr},
    {'E', false, kReadGlobal, "-E", "force 'main' function generation (overrides MAINFILE option in MCFG file)", nullptr},
    {'r', true, kReadGlobal, "-r <root module>", "root module specified (required for -k and -K) ", nullptr},
    {'T', false, kBlocks | kReadModules, "-T <module opts>", "TTCN-3 module", nullptr},
    {'A', false, kBlocks | kReadModules, "-A <module opts>", "ASN.1 module", nullptr},
    {'M', false, kReadGlobal | kGroups, "-M", "beginning of modules section", nullptr},
    {'v', true, kBlocks, "-v <number>",
     "verbosity level [1-4](default=3)\n1=err., 2=err.+warn., 3=err.+warn.+stages, 4=err.+warn.+stages+progr. ",
     "module_option is any of the following:"},
    {'I', true, kBlocks, "-I <init_val>",
     "initialization check level [0-2](default=1)\n0=no check, 1=generate warnings, 2=generate errors ", nullptr},
    {'w', false, kBlocks, "-w", "weak typing ", nullptr},
    {'s', false, kBlocks, "-s", "syntax analysis only", nullptr},
    {'a', false, kBlocks, "-a", "syntax and semantic analysis only", nullptr},
    {'c', false, kBlocks, "-c", "compile", nullptr},
    {'S', true, kBlocks, nullptr, nullptr, nullptr},
    {'P', true, kBlocks, nullptr, nullptr, nullptr},
    {'d', true, kBlocks, "-d <directory>", "output directory (default: \".\")", nullptr},
    {'o', true, kBlocks, "-o <basename>", "basename for generated files (default: module name)", nullptr},
    {'C', true, kReadGlobal | kReadAsn1Group | kReadAsn1Modules, "-C <codec>", kCodecHelp, nullptr},
    {'e', true, kReadFiles, "-e <file_format>", kFormatHelp, " files section"},
    {'F', false, kBlocks | kReadModules, "-F", "beginning of files section", nullptr},
    {'T', false, kReadFiles, "-T", "TTCN-3 file (default)", nullptr},
    {'A', false, kReadFiles, "-A", "ASN.1 file ", nullptr},
    {'s', false, kReadFiles, "-s", "syntax analysis only for all modules in file", nullptr},
    {'a', false, kReadFiles, "-a", "syntax and semantic analysis only for all modules in file", nullptr},
    {'c', false, kReadFiles, "-c", "compile for all modules in file", nullptr},
    {'l', false, kReadFiles, nullptr, nullptr, nullptr},
};
// clang-format on

constexpr size_t kShownWidth = 18;
constexpr const char* kContinuation = "\t                   ";

void AppendRow(std::string& text, const OptionRow& row) {
  std::string shown = row.shown;
  if (shown.size() < kShownWidth) shown.resize(kShownWidth, ' ');
  text += "\t " + shown;
  std::istringstream help(row.help);
  std::string line;
  for (bool first = true; std::getline(help, line); first = false) {
    if (!first) text += kContinuation;
    text += line + '\n';
  }
}
}  // namespace

std::span<const OptionRow> OptionRows() {
  return kRows;
}

std::string OptionString(OptionReader reader) {
  // Where modules or files are listed, plain arguments belong to the section.
  std::string result = (reader & (kModuleLists | kReadFiles)) != 0 ? "-" : "";
  for (const OptionRow& row : kRows) {
    if ((row.readers & reader) == 0) continue;
    result += row.letter;
    if (row.has_argument) result += ':';
  }
  return result;
}

std::string UsageText(const char* program) {
  std::string text = std::string("usage: ") + program +
                     " (global_option)* [-M ((-T|-A) (module_option)* <module_name>)+]"
                     " -F ((-T|-A) <file_name>+)+]\n";
  for (const OptionRow& row : kRows) {
    if (row.heading != nullptr) text += std::string("\n") + row.heading + '\n';
    if (row.shown != nullptr) AppendRow(text, row);
  }
  return text + '\n';
}
