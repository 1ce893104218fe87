// Text of a generated C file: lines with indents, which are broken where they grow too long.
#pragma once

#include <string>

namespace asn1 {

class CText {
 public:
  /// Pieces of text. A piece at the beginning of a line gets the indent; one that would reach beyond the last
  /// column goes to a new line, two blanks deeper, without its leading blanks.
  void w(const std::string& text);
  /// Text as it stands, never broken.
  void put(const std::string& text);
  /// A brace and one level more, one level less and a brace.
  void open();
  void close();
  void endl() { put("\n"); }
  /// One level more or less without a brace.
  void indent() { ++level_; }
  void outdent() { --level_; }
  const std::string& text() const { return text_; }

 private:
  void Add(const std::string& piece, bool may_break);

  std::string text_;
  size_t column_ = 0;
  size_t level_ = 0;
};

}  // namespace asn1
