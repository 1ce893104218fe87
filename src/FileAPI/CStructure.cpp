#include "FileAPI/CStructure.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CStructure::CStructure(CFile* file, const std::string& type, const std::string& name, bool singleLine,
                       bool isStatic)
    : CBase(file), type_(type), name_(name), singleLine_(singleLine), isStatic_(isStatic) {
  section_.add({isStatic ? "static " : "", type, " ", name, " = "});
  beginScope(section_);
}

void CStructure::addMember(std::string_view text) {
  if (members_++ > 0) section_.add(",");
  if (singleLine_)
    section_.add(" ");
  else
    newline(section_);
  section_.add(text);
}

void CStructure::addNulls(unsigned count) {
  static constexpr std::string_view kNull = "NULL";
  static constexpr std::string_view kRest =
      ",\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    NULL";
  static constexpr size_t kLength = kRest.size() / 7;
  if (singleLine_ || count == 0 || count > 8) {
    for (unsigned i = 0; i < count; ++i) addMember(kNull);
    return;
  }
  addMember(kNull);
  section_.add(kRest.substr(0, (count - 1) * kLength));
  members_ += count - 1;
}

void CStructure::end() {
  if (file_ == nullptr) throw internal_exception("CStructure", __LINE__, "end", "No file");
  file_->add(isStatic_ ? CFile::SourceStructureDecls : CFile::HeaderStructures,
             {isStatic_ ? "static " : "extern ", type_, " ", name_, ";\n"});
  endScope(section_);
  section_.add(";\n\n");
  section_.end();
  file_->add(CFile::SourceStructures, std::move(section_));
  section_.end();
}

std::unique_ptr<CStructure> CFile::beginStructure(const std::string& type, const std::string& name,
                                                  bool singleLine, bool isStatic) {
  return std::make_unique<CStructure>(this, type, name, singleLine, isStatic);
}
