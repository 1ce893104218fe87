#include "FileAPI/CBase.h"

#include <algorithm>
#include <utility>

void indent(CSection& section, unsigned n) {
  static constexpr std::string_view kBlanks =
      "                                                                ";
  for (; n > kBlanks.size(); n -= static_cast<unsigned>(kBlanks.size())) section.add(kBlanks);
  section.add(kBlanks.substr(0, n));
}

std::string joined(CWords words) {
  return CList(words, CWords{}, "", "").text();
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
