// The command line and option files of the compiler.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mesk {

struct Prefixes {
  std::string file, generation;
};

/// An option that is kept for the generators, with the list of prefixes that it holds for; an empty list is
/// all.
struct ModuleOption {
  std::string text;
  std::vector<std::string> scope;
};

struct Options {
  std::string syntax_directory = ".";
  std::vector<std::string> source_directories;
  std::map<std::string, Prefixes> prefixes;  // by module name, with hyphens
  std::set<std::string> entries;             // with hyphens
  std::vector<std::string> sources;
  std::vector<ModuleOption> module_options;
  std::string dump;
  bool verbose = false;
  bool quiet = false;   // unknown options are not told
  bool strict = false;  // what the standard does not have is an error

  /// Reads the arguments; false after a message on the standard output.
  bool parse(const std::vector<std::string>& words);
  /// The options that hold for a module with these prefixes.
  std::vector<std::string> optionsFor(const Prefixes& prefixes) const;

 private:
  bool addOption(std::string_view text, const std::string& file = {});
  bool addPrefix(std::string_view value);
  bool readFile(const std::string& path);
  void keepOption(const std::string& text, const std::string& file);
  std::vector<std::string> scope_;
};

/// `directory` and `name` as one path.
std::string joinPath(const std::string& directory, const std::string& name);
/// A name as ASN.1 has it: with hyphens.
std::string hyphenated(std::string_view name);
}  // namespace mesk
