#include "FileAPI/CArray.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CArray::CArray(CFile* file, const std::string& type, const std::string& name, bool isStatic)
    : CBase(file), type_(type), name_(name), isStatic_(isStatic) {
  section_.add({isStatic ? "static " : "", type, " ", name, "[] =\n{"});
}

void CArray::beginElement() {
  if (counts_.empty()) throw internal_exception("CArray", __LINE__, "add", "Inconsistent size information");
  if (written_.back()) section_.add(",");
  written_.back() = true;
  ++counts_.back();
}

void CArray::addElement(std::string_view text) {
  beginElement();
  newline(section_);
  section_.add(text);
}

template <class Words>
void CArray::addColumns(const Words& columns) {
  addElement("{ ");
  std::string_view separator;
  for (const auto& column : columns) {
    section_.add({separator, column});
    separator = ", ";
  }
  section_.add(" }");
}

void CArray::addRow(const std::vector<std::string>& columns) {
  addColumns(columns);
}

void CArray::addRow(CWords columns) {
  addColumns(columns);
}

void CArray::beginLevel() {
  beginElement();
  beginScope(section_);
  counts_.push_back(0);
  written_.push_back(false);
}

void CArray::endScope(CSection& section) {
  CBase::endScope(section);
  if (counts_.empty()) return;
  counts_.pop_back();
  written_.pop_back();
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

std::unique_ptr<CArray> CFile::beginArray(const std::string& type, const std::string& name, bool isStatic) {
  return std::make_unique<CArray>(this, type, name.empty() ? uniqueName() : name, isStatic);
}
