// What the options of a run and of a module are: the enumerations, the record of a module's options, the
// global options with their look-up by language, and the table of option letters that both the readers
// and the help text follow.
#pragma once

#include <span>
#include <string>

#include "driver/diagnostics/T3Error.h"
#include "support/Idents.h"

/// The language of a file or module. Any other value is possible and answered with fixed defaults.
enum language : int { language_ttcn2 = 0, language_ttcn3 = 1, language_asn1 = 2 };

/// "TTCN-2", "TTCN-3", "ASN-1"; "ERROR" for any other value.
const char* KindToStr(::language value);

/// How far a module is taken.
enum compiler_action_t : int {
  action_parse = 0,
  action_analyse = 1,
  action_list = 2,
  action_precompile = 3,
  action_generate_only = 4,
  action_compile = 5,
};

enum file_format_t : int {
  format_ascii = 0,
  format_utf8 = 1,
  format_ucs2 = 2,
  format_ucs2le = 3,
  format_ucs2be = 4,
  format_unknown = 5,
};

/// The words of the formats, by number.
extern const char* const FORMAT_SELECTOR[6];

/// Bits of the codec selection of `-C`.
inline constexpr int kCodecBer = 1;
inline constexpr int kCodecBerLengthForm3 = 2;
inline constexpr int kCodecPerUnaligned = 4;
inline constexpr int kCodecPerAligned = 8;
inline constexpr int kCodecNoTranslation = 16;
inline constexpr int kCodecAll = 15;

/// A value and whether a command line gave it.
template <class T>
struct OptionValue {
  T value{};
  bool given = false;

  void Set(T new_value) {
    value = std::move(new_value);
    given = true;
  }
};

/// The options that can be given for one module, for a language group, or for all.
struct ModuleOptions {
  OptionValue<verbosity_level_t> verbosity;
  OptionValue<bool> weak_typing;
  OptionValue<int> initialize_check{1};
  OptionValue<bool> name_equivalence;
  OptionValue<compiler_action_t> action;
  OptionValue<int> split_file;
  OptionValue<std::string> prefix;
  OptionValue<std::string> directory;
  OptionValue<std::string> output;
  OptionValue<int> codec_generation{kCodecAll};
};

struct FileOptions {
  file_format_t format = format_unknown;
  OptionValue<compiler_action_t> action;
};

struct module_argument_t {
  tIdent name = NoIdent;
  ::language language = language_ttcn3;
  ModuleOptions options;
};

struct file_argument_t {
  tIdent name = NoIdent;
  ::language language = language_ttcn3;
  FileOptions options;
};

/// The options of the whole run. The readers with a language look in the group block of that language,
/// then in the common block; a language other than TTCN-3 or ASN.1 gets a fixed value.
struct GlobalOptions {
  GlobalOptions();

  unsigned tri_mode = 0;
  bool asn1_files = false;
  long maximum_errors = 100;
  bool root_module_given = false;
  std::string root_module;
  bool generate_makefile = false;
  bool overwrite_makefile = false;
  bool build_avoidance = false;
  bool debug = false;
  int optimize = 0;
  long template_description_length = 100;
  bool tci = false;
  bool test_management = false;
  std::string project_directory = ".";
  std::string mcfg_file;
  bool force_main = false;
  bool strict = false;
  ModuleOptions common;
  ModuleOptions asn1_group;
  ModuleOptions ttcn3_group;

  verbosity_level_t GetVerbosity(::language of) const;
  bool GetWeakTyping(::language of) const;
  int GetInitializeCheck(::language of) const;
  bool GetNameEquivalence(::language of) const;
  compiler_action_t GetCompilerAction(::language of) const;
  int GetSplitFile(::language of) const;
  std::string GetPrefix(::language of) const;
  std::string GetDirectory(::language of) const;
  std::string GetOutput(::language of) const;
  int GetCodecGeneration(::language of) const;

 private:
  template <class T>
  T Choose(::language of, OptionValue<T> ModuleOptions::*field, T otherwise) const;
};

/// The readers of the command line's sections, as bits.
enum OptionReader : unsigned {
  kReadGlobal = 1,
  kReadT3Group = 2,
  kReadAsn1Group = 4,
  kReadModules = 8,
  kReadT3Modules = 16,
  kReadAsn1Modules = 32,
  kReadFiles = 64,
};

/// One option: its letter, whether an argument follows, who reads it, and its place in the help text.
struct OptionRow {
  char letter;
  bool has_argument;
  unsigned readers;
  /// The option as the help text shows it; null for one that is not listed.
  const char* shown;
  /// The lines of its help, separated by newlines.
  const char* help;
  /// A heading that stands above this row, or null.
  const char* heading;
};

std::span<const OptionRow> OptionRows();

/// The option string of a reader, for rGetopt.
std::string OptionString(OptionReader reader);

/// The help text for a program of this name, with its last newline.
std::string UsageText(const char* program);
