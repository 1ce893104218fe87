// A generated C structure with its initializer.
#pragma once

#include <string>

#include "FileAPI/CBase.h"

class CStructure : public CBase {
 public:
  /// `singleLine`: the members stand behind one another.
  CStructure(CFile* file, const std::string& type, const std::string& name, bool singleLine, bool isStatic);
  void end() override;

  void addMember(std::string_view text);
  /// Members that are all NULL.
  void addNulls(unsigned count);
  const std::string& name() const { return name_; }

 private:
  std::string type_;
  std::string name_;
  bool singleLine_;
  bool isStatic_;
  unsigned members_ = 0;
  CSection section_;
};
