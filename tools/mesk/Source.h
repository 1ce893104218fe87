// Source files, places in them, and the reports of errors.
#pragma once

#include <deque>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mesk {

struct SourceFile {
  std::string path;
  std::string text;
  std::deque<std::string> strings;  // texts that don't stand in the source as they are meant
};

/// Reads a file whole; false where it can't be read.
bool readFile(const std::string& path, std::string& text);
/// The same for a text, in UTF-8 or in two octets for each character; it becomes UTF-8.
bool readSource(const std::string& path, std::string& text);

struct Place {
  const SourceFile* file = nullptr;
  int line = 0, column = 0;
};

/// Ends the run: there were too many errors.
struct TooManyErrors {};
/// Leaves a construct whose error has been reported.
struct Abandoned {};

class Reporter {
 public:
  /// With `prints` off errors are only counted, and without a limit.
  explicit Reporter(bool prints = true) : prints_(prints) {}
  /// Writes an error, once for the same text at the same place.
  void error(const Place& place, const std::string& text);
  /// An error that has no place in a source.
  void error(const std::string& text);
  int errors() const { return errors_; }
  /// From now on what only old sources have is an error.
  void beStrict() { strict_ = true; }
  /// Such a thing, which is no error otherwise.
  void notStandard(const Place& place, const std::string& text) {
    if (strict_) error(place, text);
  }

 private:
  void write(const std::string& line);
  std::set<std::string> written_;
  int errors_ = 0;
  bool prints_;
  bool strict_ = false;
};

/// Counts the depth of a recursion; beyond the limit ok() is false.
class Depth {
 public:
  explicit Depth(int& level) : level_(level) { ++level_; }
  ~Depth() { --level_; }
  Depth(const Depth&) = delete;
  Depth& operator=(const Depth&) = delete;
  bool ok() const { return level_ <= kLimit; }

 private:
  static constexpr int kLimit = 250;
  int& level_;
};

}  // namespace mesk
