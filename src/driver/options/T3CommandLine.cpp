#include "driver/options/T3CommandLine.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "driver/diagnostics/T3Error.h"
#include "driver/options/T3Version.h"
#include "support/rGetopt.h"

void usage(const char* program) {
  std::fputs(UsageText(program).c_str(), stderr);
  std::exit(-1);
}

namespace {
// What is read next. A reader returns the section that follows it.
enum class Section { T3Group, Asn1Group, Modules, T3Modules, Asn1Modules, Files, End };

struct Arguments {
  int argc;
  const char** argv;
  T3CommandLine& line;
};

[[noreturn]] void OptionFault(const Arguments& arguments) {
  if (rOptmsg != nullptr) std::fprintf(stderr, "Error: %s %c\n", rOptmsg, rOptopt);
  usage(arguments.argv[0]);
}

// The section that a section switch leads to, from outside the modules section.
Section SwitchTo(int option) {
  switch (option) {
    case 'T':
      return Section::T3Group;
    case 'A':
      return Section::Asn1Group;
    case 'M':
      return Section::Modules;
    default:
      return Section::Files;
  }
}

bool IsSwitch(int option) {
  return option == 'T' || option == 'A' || option == 'M' || option == 'F';
}

bool SetMakefileOption(int option, T3CommandLine& line) {
  if (option != 'k' && option != 'K') return false;
  line.generate_makefile = true;
  line.overwrite_makefile = option == 'K';
  return true;
}

bool SetGlobalSwitch(int option, T3CommandLine& line) {
  switch (option) {
    case 'B':
      line.build_avoidance = true;
      return true;
    case 'G':
      line.debug = true;
      return true;
    case 'O':
      line.optimize = 1;
      return true;
    case 'i':
      line.tci = true;
      return true;
    case 'R':
      line.test_management = true;
      return true;
    case 'E':
      line.force_main = true;
      return true;
    case 'D':
      line.strict = true;
      return true;
    default:
      return SetMakefileOption(option, line);
  }
}

bool SetGlobalValue(int option, const Arguments& arguments) {
  T3CommandLine& line = arguments.line;
  switch (option) {
    case 't': {
      const auto mode = static_cast<unsigned long>(std::atol(rOptarg));
      if (mode > 2) usage(arguments.argv[0]);
      line.tri_mode = static_cast<unsigned>(mode);
      return true;
    }
    case 'l':
      line.template_description_length = std::atol(rOptarg);
      if (line.template_description_length < 0) usage(arguments.argv[0]);
      return true;
    case 'm':
      line.maximum_errors = std::atol(rOptarg);
      return true;
    case 'r':
      line.root_module_given = true;
      line.root_module = rOptarg;
      return true;
    case 'p':
      line.project_directory = rOptarg;
      return true;
    case 'f':
      line.mcfg_file = rOptarg;
      return true;
    default:
      return false;
  }
}

// A word that is no option ends the reading; whoever wrote it will wonder why nothing comes of it.
void WarnOfWordsLeft(const Arguments& arguments) {
  if (rOptind >= arguments.argc) return;
  vexa_warning(
      arguments.line.CommonVerbosity(),
      std::string("nothing is compiled: no -F stands in front of \"") + arguments.argv[rOptind] + '"',
      NoPosition);
}

Section ReadGlobalSection(const Arguments& arguments) {
  const std::string options = OptionString(kReadGlobal);
  rOptreset();
  for (;;) {
    const int option = rGetopt(arguments.argc, arguments.argv, options.c_str());
    if (option == -1) {
      WarnOfWordsLeft(arguments);
      return Section::End;
    }
    if (IsSwitch(option)) return SwitchTo(option);
    if (option == 'V') {
      VersionInfo::Print(stdout);
      std::exit(0);
    }
    if (!SetModuleOptions(static_cast<char>(option), rOptarg, arguments.argv, arguments.line.common) &&
        !SetGlobalSwitch(option, arguments.line) && !SetGlobalValue(option, arguments))
      OptionFault(arguments);
  }
}

// The options of one language; a section must follow.
Section ReadGroup(const Arguments& arguments, OptionReader reader, ModuleOptions& block) {
  const std::string options = OptionString(reader);
  rOptreset();
  for (;;) {
    const int option = rGetopt(arguments.argc, arguments.argv, options.c_str());
    if (IsSwitch(option)) return SwitchTo(option);
    if (option == -1 || !SetModuleOptions(static_cast<char>(option), rOptarg, arguments.argv, block))
      OptionFault(arguments);
  }
}

Section ReadT3GlobalModuleOpts(const Arguments& arguments) {
  return ReadGroup(arguments, kReadT3Group, arguments.line.ttcn3_group);
}

Section ReadASN1GlobalModuleOpts(const Arguments& arguments) {
  return ReadGroup(arguments, kReadAsn1Group, arguments.line.asn1_group);
}

// The first thing behind -M: the language of the modules.
Section ReadModuleOpts(const Arguments& arguments) {
  rOptreset();
  switch (rGetopt(arguments.argc, arguments.argv, OptionString(kReadModules).c_str())) {
    case 'T':
      return Section::T3Modules;
    case 'A':
      return Section::Asn1Modules;
    default:
      OptionFault(arguments);
  }
}

// One group of modules. Options accumulate; each module gets a copy of what has been given before it.
Section ReadModuleGroup(const Arguments& arguments, OptionReader reader, ::language of) {
  const std::string options = OptionString(reader);
  ModuleOptions block;
  bool any_module = false;
  rOptreset();
  for (;;) {
    const int option = rGetopt(arguments.argc, arguments.argv, options.c_str());
    if (option == 1) {
      arguments.line.modules.push_back({gIdents.MakeIdent(rOptarg), of, block});
      any_module = true;
    } else if (IsSwitch(option)) {
      if (!any_module) usage(arguments.argv[0]);
      if (option == 'F') return Section::Files;
      return option == 'T' ? Section::T3Modules : Section::Asn1Modules;
    } else if (option == -1 || !SetModuleOptions(static_cast<char>(option), rOptarg, arguments.argv, block)) {
      OptionFault(arguments);
    }
  }
}

Section ReadT3ModuleOpts(const Arguments& arguments) {
  return ReadModuleGroup(arguments, kReadT3Modules, language_ttcn3);
}

Section ReadASN1ModuleOpts(const Arguments& arguments) {
  return ReadModuleGroup(arguments, kReadAsn1Modules, language_asn1);
}

file_format_t ReadFormat(const char* word) {
  for (const file_format_t format : {format_ascii, format_utf8, format_ucs2, format_ucs2le, format_ucs2be})
    if (std::string(word) == FORMAT_SELECTOR[format]) return format;
  std::fprintf(stderr,
               "Error: unknown file format selector \"%s\"; must be ASCII UTF-8 UCS-2 UCS-2BE UCS-2LE\n",
               word);
  std::exit(-1);
}

// Format and action hold for all files up to the next -T or -A.
Section ReadFiles(const Arguments& arguments) {
  const std::string options = OptionString(kReadFiles);
  file_argument_t current;
  rOptreset();
  for (;;) {
    const int option = rGetopt(arguments.argc, arguments.argv, options.c_str());
    switch (option) {
      case -1:
        return Section::End;
      case 1:
        current.name = gIdents.MakeIdent(rOptarg);
        arguments.line.files.push_back(current);
        break;
      case 'A':
        arguments.line.asn1_files = true;
        [[fallthrough]];
      case 'T':
        current.language = option == 'T' ? language_ttcn3 : language_asn1;
        current.options = FileOptions();
        break;
      case 'e':
        current.options.format = ReadFormat(rOptarg);
        break;
      case 's':
        current.options.action.Set(action_parse);
        break;
      case 'a':
        current.options.action.Set(action_analyse);
        break;
      case 'c':
        current.options.action.Set(action_compile);
        break;
      case 'l':
        current.options.action.Set(action_list);
        break;
      default:
        OptionFault(arguments);
    }
  }
}

Section ReadSection(Section section, const Arguments& arguments) {
  switch (section) {
    case Section::T3Group:
      return ReadT3GlobalModuleOpts(arguments);
    case Section::Asn1Group:
      return ReadASN1GlobalModuleOpts(arguments);
    case Section::Modules:
      return ReadModuleOpts(arguments);
    case Section::T3Modules:
      return ReadT3ModuleOpts(arguments);
    case Section::Asn1Modules:
      return ReadASN1ModuleOpts(arguments);
    case Section::Files:
      return ReadFiles(arguments);
    case Section::End:
      break;
  }
  return Section::End;
}

struct CodecWord {
  const char* word;
  int bit;
};
constexpr CodecWord kCodecs[] = {
    {"BER:1997", kCodecBer},
    {"BER:1997-length-form-3", kCodecBerLengthForm3},
    {"PER-BASIC-UNALIGNED:1997", kCodecPerUnaligned},
    {"PER-BASIC-ALIGNED:1997", kCodecPerAligned},
};

// Codec names add up; they and "all" drop the bit for no translation.
void SetCodec(const std::string& word, const char** argv, OptionValue<int>& codecs) {
  if (!codecs.given) codecs.Set(0);
  if (word == "none") {
    codecs.value &= ~kCodecAll;
    return;
  }
  if (word == "all") {
    codecs.value = kCodecAll;
    return;
  }
  if (word == "no-translation") {
    codecs.value = kCodecNoTranslation;
    return;
  }
  for (const CodecWord& codec : kCodecs) {
    if (word != codec.word) continue;
    codecs.value = (codecs.value & kCodecAll) | codec.bit;
    return;
  }
  usage(argv[0]);
}

long NumberBetween(long low, long high, const char* text, const char** argv) {
  const long number = std::atol(text);
  if (number < low || number > high) usage(argv[0]);
  return number;
}
}  // namespace

const file_argument_t* T3CommandLine::FindFile(tIdent name) const {
  if (name == NoIdent) return nullptr;
  const auto at = [&]() -> const file_argument_t* {
    const auto place = places_.find(name);
    const bool stands =
        place != places_.end() && place->second < files.size() && files[place->second].name == name;
    return stands ? &files[place->second] : nullptr;
  };
  if (const file_argument_t* file = at()) return file;
  places_.clear();
  for (size_t i = 0; i < files.size(); ++i) places_.try_emplace(files[i].name, i);
  return at();
}

bool SetModuleOptions(char option, const char* arg, const char** argv, ModuleOptions& options) {
  switch (option) {
    case 'v':
      options.verbosity.Set(static_cast<verbosity_level_t>(NumberBetween(1, 4, arg, argv) - 1));
      return true;
    case 'I':
      options.initialize_check.Set(static_cast<int>(NumberBetween(0, 2, arg, argv)));
      return true;
    case 'w':
      options.weak_typing.Set(true);
      return true;
    case 's':
      options.action.Set(action_parse);
      return true;
    case 'a':
      options.action.Set(action_analyse);
      return true;
    case 'c':
      options.action.Set(action_compile);
      return true;
    case 'S':
      options.split_file.Set(static_cast<int>(std::atol(arg)));
      return true;
    case 'P':
      options.prefix.Set(arg);
      return true;
    case 'd':
      options.directory.Set(arg);
      return true;
    case 'o':
      options.output.Set(arg);
      return true;
    case 'C':
      SetCodec(arg, argv, options.codec_generation);
      return true;
    default:
      return false;
  }
}

void ReadGlobalOpts(int argc, const char** argv, T3CommandLine& command_line) {
  const Arguments arguments{argc, argv, command_line};
  Section section = ReadGlobalSection(arguments);
  while (section != Section::End) section = ReadSection(section, arguments);
}

bool HasFilesOfLanguage(::language of) {
  return std::any_of(gT3CommandLine.files.begin(), gT3CommandLine.files.end(),
                     [of](const file_argument_t& file) { return file.language == of; });
}

bool WillGenerateCode(compiler_action_t action) {
  return action == action_precompile || action == action_generate_only || action == action_compile;
}

bool GetOmitCheckOpt() {
  return std::getenv("TLOG_37767") != nullptr;
}

void MakeDir(const std::string& directory) {
  if (mkdir(directory.c_str(), 0775) == 0) return;
  if (errno == EEXIST) {
    struct stat status {};
    if (stat(directory.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return;
  }
  std::printf("WARNING: Could not create directory \"%s\"\n", directory.c_str());
  std::fflush(stdout);
}

std::string RemoveEnclosingQuotes(const std::string& text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return text;
  return text.substr(1, text.size() - 2);
}
