#include "FileAPI/CBase.h"

#include <algorithm>
#include <utility>

void indent(CSection& section, unsigned n) {
  static constexpr std::string_view kBlanks =
      "                                                                ";
  for (; n > kBlanks.size(); n -= static_cast<unsigned>(kBlanks.size())) section.add(kBlanks);
  section.add(kBlanks.substr(0, n));
}

namespace {
// A text of a known length in the making. There are very many, most of them short.
class Pieces {
 public:
  explicit Pieces(size_t size) : text_(size, '\0') {}
  void add(std::string_view piece) {
    CSection::copy(at_, piece);
    at_ += piece.size();
  }
  std::string&& text() { return std::move(text_); }

 private:
  std::string text_;
  char* at_ = text_.data();
};

template <class Words>
std::string Signature(std::string_view returnType, std::string_view name, const Words& parameters) {
  size_t size = returnType.size() + (returnType.empty() ? 0 : 1) + name.size() + 2;
  for (const std::string_view parameter : parameters) size += parameter.size() + 2;
  if (parameters.size() > 0) size -= 2;
  Pieces pieces(size);
  pieces.add(returnType);
  if (!returnType.empty()) pieces.add(" ");
  pieces.add(name);
  pieces.add("(");
  std::string_view separator;
  for (const std::string_view parameter : parameters) {
    pieces.add(separator);
    pieces.add(parameter);
    separator = ", ";
  }
  pieces.add(")");
  return pieces.text();
}
}  // namespace

std::string joined(CWords words) {
  size_t size = 0;
  for (const std::string_view word : words) size += word.size();
  Pieces pieces(size);
  for (const std::string_view word : words) pieces.add(word);
  return pieces.text();
}

std::string getSignature(std::string_view returnType, std::string_view name,
                         const std::vector<std::string>& parameters) {
  return Signature(returnType, name, parameters);
}

std::string getSignature(std::string_view returnType, std::string_view name, CWords parameters) {
  return Signature(returnType, name, parameters);
}

// Nobody counts columns beyond some thirty scopes, and blanks for each of them would be most of what is
// written.
void CBase::indent(CSection& section, int n) const {
  constexpr unsigned kMost = 64;
  ::indent(section, std::min(n < 0 ? indentation_ : static_cast<unsigned>(n), kMost));
}

void CBase::beginScope(CSection& section) {
  newline(section);
  section.add("{");
  indentation_ += 2;
}

void CBase::endScope(CSection& section) {
  if (indentation_ >= 2) indentation_ -= 2;
  newline(section);
  section.add("}");
}
