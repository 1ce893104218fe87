// A generated C structure with its initializer.
#pragma once

#include <string_view>

#include "FileAPI/CBase.h"

class CStructure : public CBase {
 public:
  /// `singleLine`: the members stand behind one another. Type and name live as long as the structure.
  CStructure(CFile* file, std::string_view type, std::string_view name, bool singleLine, bool isStatic);
  void end() override;

  void addMember(std::string_view text) { addMembers({text}); }
  void addMembers(CWords members);
  std::string_view name() const { return name_; }

 private:
  std::string_view type_;
  std::string_view name_;
  bool singleLine_;
  bool isStatic_;
  bool hasMembers_ = false;
  CSection section_;
};
