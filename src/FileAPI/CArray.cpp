#include "FileAPI/CArray.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CArray::CArray(CFile* file, std::string_view type, const std::string& name, bool isStatic)
    : CBase(file), type_(type), name_(name), isStatic_(isStatic) {
  const std::string_view storage = isStatic ? "static " : "";
  section_.add(storage, type, " ", name, "[] =\n{");
}

std::string_view CArray::beginElement() {
  if (counts_.empty()) throw internal_exception("CArray", __LINE__, "add", "Inconsistent size information");
  return counts_.back()++ > 0 ? nextLine() : line();
}

void CArray::addElement(std::string_view text) {
  section_.add(beginElement(), text);
}

void CArray::addRow(const CMeasuredWords& columns) {
  section_.add(beginElement(), "{ ", CList(columns, ", "), " }");
}

void CArray::addLevel(const CMeasuredWords& elements) {
  const std::string_view begin = beginElement();
  const std::string_view end = line();
  indentation_ += 2;
  const std::string_view separator = nextLine();
  section_.add(begin, "{", line(), CList(elements, separator), end, "}");
  indentation_ -= 2;
}

void CArray::beginLevel() {
  section_.add(beginElement(), "{");
  indentation_ += 2;
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
  file_->define(name_);
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
