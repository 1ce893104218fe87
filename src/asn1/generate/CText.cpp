#include "asn1/generate/CText.h"

namespace asn1 {
namespace {
constexpr size_t kLastColumn = 78;
constexpr size_t kIndent = 2;
constexpr size_t kShortPiece = 2;
}  // namespace

void CText::Add(const std::string& piece, bool may_break) {
  const bool ends_line = !piece.empty() && piece.back() == '\n';
  const size_t indent = level_ * kIndent;
  std::string rest = piece;
  if (column_ == 0 && piece != "\n") {
    text_.append(indent, ' ');
    column_ = indent;
  } else if (may_break && !ends_line && column_ + piece.size() > kLastColumn && column_ > indent + kIndent &&
             piece.size() > kShortPiece) {
    text_ += '\n';
    text_.append(indent + kIndent, ' ');
    column_ = indent + kIndent;
    rest.erase(0, rest.find_first_not_of(' ') == std::string::npos ? 0 : rest.find_first_not_of(' '));
  }
  text_ += rest;
  column_ = ends_line ? 0 : column_ + rest.size();
}

void CText::w(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    const size_t stop = end == std::string::npos ? text.size() : end + 1;
    Add(text.substr(at, stop - at), true);
    at = stop;
  }
}

void CText::put(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    const size_t stop = end == std::string::npos ? text.size() : end + 1;
    Add(text.substr(at, stop - at), false);
    at = stop;
  }
}

void CText::open() {
  w("{\n");
  ++level_;
}

void CText::close() {
  if (level_ > 0) --level_;
  w("}\n");
}
}  // namespace asn1
