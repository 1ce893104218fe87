// Options of the ASN.1 tools and generators. They stand on a command line, in option files and in syntax
// files, and are all words of one form: a name, for many of them "=" and a value.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace asn1 {

/// The things whose C names naming options change.
enum NamingKind {
  kNamesTypes = 1,
  kNamesClasses,
  kNamesValues,
  kNamesObjects,
  kNamesValueSets,
  kNamesObjectSets,
  kNamesComponents,
  kNamesFunctions
};

/// What the naming options say of one kind, or of one thing of that kind.
struct FixRec {
  std::string conversion, prefix, name, suffix;
};

/// Another name for what an import stands in: its file prefix and its generation prefix.
struct PrefixRec {
  std::string file_prefix, generation_prefix;
};

/// The options that hold for one module.
class AsnOptions {
 public:
  /// Keeps an option's text, without its "-", for Apply.
  void Record(std::string text) { texts_.push_back(std::move(text)); }
  /// The length to which the prefixes of "PREFIX=" are cut.
  void set_prefix_length(int length) { prefix_length_ = static_cast<size_t>(length); }
  /// Evaluates the recorded options in their order. `names` are the file prefixes by which a scope can mean
  /// the module; `common` are options of all modules, which stand behind the recorded ones. An option that is none,
  /// or whose value is faulty, goes to `unknown`.
  void Apply(const std::vector<std::string>& names, const std::function<bool(const std::string&)>& unknown,
             const std::vector<std::string>& common = {});
  /// Whether a text is a sound "PREFIX=", which says of no other option what it means.
  static bool IsPrefix(const std::string& text);

  /// The value of an option with a number; `otherwise` where it was not given.
  int Number(const std::string& name, int otherwise) const;
  std::string Text(const std::string& name) const;
  /// The `feature` of "C-GENERATION=".
  bool testCGenerationOption(int feature) const { return c_generation_.count(feature) != 0; }
  /// What the naming options say of a thing: one for its name before one for its kind.
  FixRec getFixRec(NamingKind kind, const std::string& name) const;
  /// Whether some say it of the name.
  bool HasFixOf(NamingKind kind, const std::string& name) const { return fixes_.count({kind, name}) != 0; }
  /// Whether a text is an option of this table, or one that some generator knows.
  static bool IsKnown(const std::string& text);
  /// The name of the type in the value of "ENTRY="; empty where there is none.
  static std::string EntryOf(const std::string& value);
  const std::set<std::string>& entries() const { return entries_; }
  const std::vector<std::string>& info() const { return info_; }
  const std::map<std::string, PrefixRec>& prefixes() const { return prefixes_; }

 private:
  std::string Cut(const std::string& prefix, const char* what) const;
  bool TakeOption(const std::string& text);
  bool TakeNaming(const std::string& name, const std::string& value);
  bool TakeEntry(const std::string& value);
  void TakePrefix(const std::string& value);
  bool TakeFeatures(const std::string& value);
  bool TakeAlternatives(const std::string& names);

  size_t prefix_length_ = 32;
  int alternatives_ = 0;  // the most names of an alternative encoder or decoder that were given at once
  std::vector<std::string> texts_;
  std::map<std::string, int> numbers_;
  std::map<std::string, std::string> values_;
  std::set<int> c_generation_;
  std::map<std::pair<int, std::string>, FixRec> fixes_;
  std::set<std::string> entries_;
  std::vector<std::string> info_;
  std::map<std::string, PrefixRec> prefixes_;  // by the module's name with underscores
};

/// The command line of a tool or generator, read as far as it must be known before syntax files are.
struct AsnCommandLine {
  std::string syntax_directory;                 // with its separator; empty for the working directory
  std::vector<std::string> source_directories;  // "-A="
  std::vector<std::string> file_prefixes;
  struct Word {
    std::string text;  // without "-"
    std::string file;  // the option file that it stands in; empty for the command line
  };
  std::vector<Word> options;  // all others in their order
  int prefix_length = 5;
  bool version = false;
  int warnings = 0;
};

/// Reads the words behind the program's name. Warnings go to standard output; a missing option file is a
/// fatal error.
AsnCommandLine parseCmdLineParams(const std::vector<std::string>& words);

/// Whether a line of an option file is a comment.
bool IsComment(std::string_view line);
/// Tells that an option has no effect, and the option file in which it stands.
void argumentIgnored(const std::string& option, const std::string& file);
/// The part before "=" in capitals, the rest as it stands.
std::string optionToUpper(std::string_view option);
/// Cuts a file prefix to `length` characters, with a warning that calls it `what`.
std::string CutPrefix(const std::string& prefix, int length, const char* what);
/// The lines behind a warning that something is cut to `length` characters.
void TellCutting(int length);
/// Letters, digits, "-" and "_", at least one.
bool validFilePrefix(std::string_view prefix);
std::string convertHyphens(std::string text);
std::string convertUnderscores(std::string text);
}  // namespace asn1
