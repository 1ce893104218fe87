#include "FileAPI/CBase.h"

#include <algorithm>

void indent(CSection& section, unsigned n) {
  static constexpr std::string_view kBlanks =
      "                                                                ";
  for (; n > kBlanks.size(); n -= static_cast<unsigned>(kBlanks.size())) section.add(kBlanks);
  section.add(kBlanks.substr(0, n));
}

namespace {
template <class Words>
std::string Signature(std::string_view returnType, std::string_view name, const Words& parameters) {
  size_t size = returnType.size() + name.size() + sizeof " ()";
  for (const auto& parameter : parameters) size += parameter.size() + 2;
  std::string text;
  text.reserve(size);
  text.append(returnType);
  if (!text.empty()) text += ' ';
  text.append(name).append("(");
  std::string_view separator;
  for (const auto& parameter : parameters) {
    text.append(separator).append(parameter);
    separator = ", ";
  }
  text += ')';
  return text;
}
}  // namespace

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
