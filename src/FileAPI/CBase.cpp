#include "FileAPI/CBase.h"

std::string joined(const CMeasuredWords& words) {
  return TextOf(CList(words, ""));
}

void CBase::beginScope(CSection& section) {
  section.add(line(), "{");
  indentation_ += 2;
}

void CBase::endScope(CSection& section) {
  if (indentation_ >= 2) indentation_ -= 2;
  section.add(line(), "}");
}
