#include "FileAPI/CEnumeration.h"

#include <utility>

#include "FileAPI/CFile.h"
#include "driver/diagnostics/T3Exception.h"

CEnumeration::CEnumeration(CFile* file, const std::string& name, bool exported, bool isTypedef)
    : CBase(file), name_(name), exported_(exported), isTypedef_(isTypedef) {
  section_.add((isTypedef ? "typedef enum" : "enum " + name) + "\n{\n  ");
}

void CEnumeration::addMember(const std::string& name, const std::string& value) {
  if (members_++ > 0) section_.add(",\n  ");
  const auto earlier = values_.find(value);
  const std::string text = earlier != values_.end() && !earlier->second.empty() ? earlier->second : value;
  section_.add(text.empty() ? name : name + " = " + text);
  values_[name] = text;
}

void CEnumeration::addMember(const std::string& name, long value) {
  addMember(name, value == kNoValue ? std::string() : std::to_string(value));
}

void CEnumeration::end() {
  if (file_ == nullptr) throw internal_exception("CEnumeration", __LINE__, "end", "Illegal file handle");
  section_.add("\n} " + (isTypedef_ ? name_ : std::string()) + ";\n\n");
  section_.end();
  if (members_ > 0)
    file_->add(exported_ ? CFile::HeaderEnumerations : CFile::SourceEnumerations, std::move(section_));
  section_.end();
}

std::unique_ptr<CEnumeration> CFile::beginEnumeration(const std::string& name, bool exported,
                                                      bool isTypedef) {
  return std::make_unique<CEnumeration>(this, name, exported, isTypedef);
}
