#include "FileAPI/CStructure.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CStructure::CStructure(CFile* file, std::string_view type, std::string_view name, bool singleLine,
                       bool isStatic)
    : CBase(file), type_(type), name_(name), singleLine_(singleLine), isStatic_(isStatic) {
  const std::string_view storage = isStatic ? "static " : "";
  section_.add(storage, type, " ", name, " = ");
  beginScope(section_);
}

void CStructure::addMembers(CWords members) {
  const std::string_view separator = singleLine_ ? ", " : nextLine();
  section_.add(separator.substr(hasMembers_ ? 0 : 1), CList(members, separator));
  hasMembers_ = true;
}

void CStructure::end() {
  if (file_ == nullptr) throw internal_exception("CStructure", __LINE__, "end", "No file");
  file_->define(name_);
  file_->add(isStatic_ ? CFile::SourceStructureDecls : CFile::HeaderStructures,
             {isStatic_ ? "static " : "extern ", type_, " ", name_, ";\n"});
  endScope(section_);
  section_.add(";\n\n");
  section_.end();
  file_->add(CFile::SourceStructures, std::move(section_));
  section_.end();
}

std::unique_ptr<CStructure> CFile::beginStructure(std::string_view type, std::string_view name,
                                                  bool singleLine, bool isStatic) {
  return std::make_unique<CStructure>(this, type, name, singleLine, isStatic);
}
