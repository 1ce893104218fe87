#include "FileAPI/CBase.h"

void indent(CSection& section, unsigned n) {
  static const std::string blanks(64, ' ');
  for (; n > blanks.size(); n -= static_cast<unsigned>(blanks.size())) section.add(blanks);
  section.add(std::string_view(blanks).substr(0, n));
}

std::string getSignature(std::string_view returnType, std::string_view name,
                         const std::vector<std::string>& parameters) {
  std::string text(returnType);
  if (!text.empty()) text += ' ';
  text.append(name).append("(");
  const char* separator = "";
  for (const std::string& parameter : parameters) {
    text.append(separator).append(parameter);
    separator = ", ";
  }
  return text + ")";
}

void CBase::indent(CSection& section, int n) const {
  ::indent(section, n < 0 ? indentation_ : static_cast<unsigned>(n));
}

void CBase::newline(CSection& section) const {
  section.add("\n");
  indent(section);
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
