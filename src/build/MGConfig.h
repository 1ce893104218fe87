// The contents of an MCFG file: keys with their words, and the expansion of placeholders in them.
//
// A placeholder is a key written with angle brackets; wherever a value holds one, its words stand
// instead. Nothing in a file is an error: lines that do not fit are ignored.
#pragma once

#include <istream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class Config {
 public:
  /// Reads the whole stream. Lines count where they stand outside of all sections or in `section`.
  void read_config_file(std::istream& in, const std::string& section);
  /// Makes `value` the only entry of `key`.
  void add_default_value(const std::string& key, const std::string& value);

  /// The expanded entries of `key` joined with nothing between them, or the default where that is empty.
  /// Throws a std::string for a placeholder that reaches itself or grows beyond all measure.
  std::string item(const std::string& key, const std::string& default_value = "") const;
  /// The expanded entries of `key`, or the default alone where there are none and it is not empty.
  std::vector<std::string> items(const std::string& key, const std::string& default_value = "") const;
  /// True when `key` has an entry, be it empty.
  bool item_defined(const std::string& key) const { return entries_.contains(key); }

 private:
  class Expansion;

  void read_item(std::string_view line);
  void read_words(const std::string& key, std::string_view words);

  std::multimap<std::string, std::string> entries_;
};
