#include "FileAPI/CArray.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CArray::CArray(CFile* file, std::string_view type, const std::string& name, bool isStatic)
    : CBase(file), type_(type), name_(name), isStatic_(isStatic) {
  section_.add({isStatic ? "static " : "", type, " ", name, "[] =\n{"});
}

std::string_view CArray::beginElement() {
  if (counts_.empty()) throw internal_exception("CArray", __LINE__, "add", "Inconsistent size information");
  return counts_.back()++ > 0 ? "," : "";
}

void CArray::addElement(std::string_view text) {
  const std::string_view before = beginElement();
  section_.add(CList({before, line()}, CWords{text}, "", ""));
}

void CArray::addRow(CWords columns) {
  const std::string_view before = beginElement();
  section_.add(CList({before, line(), "{ "}, columns, ", ", " }"));
}

void CArray::addLevel(CWords elements) {
  beginLevel();
  for (const std::string_view element : elements) addElement(element);
  endLevel();
}

void CArray::beginLevel() {
  section_.add(beginElement());
  beginScope(section_);
  counts_.push_back(0);
}

void CArray::endScope(CSection& section) {
  CBase::endScope(section);
  if (counts_.empty()) return;
  counts_.pop_back();
}

void CArray::end() {
  if (file_ == nullptr) throw internal_exception("CArray", __LINE__, "end", "No file object to flush to");
  if (counts_.size() != 1)
    throw internal_exception("CArray", __LINE__, "end", "Inconsistent size information");
  section_.add("\n};\n\n");
  section_.end();
  file_->add(
      isStatic_ ? CFile::SourceArrayDecls : CFile::HeaderArrays,
      {isStatic_ ? "static " : "extern ", type_, " ", name_, "[", std::to_string(counts_.back()), "];\n"});
  file_->add(CFile::SourceArrays, std::move(section_));
  section_.end();
}

std::unique_ptr<CArray> CFile::beginArray(std::string_view type, const std::string& name, bool isStatic) {
  return std::make_unique<CArray>(this, type, name.empty() ? uniqueName() : name, isStatic);
}
