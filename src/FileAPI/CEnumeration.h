// A generated C enumeration.
#pragma once

#include <map>
#include <string>

#include "FileAPI/CBase.h"

class CEnumeration : public CBase {
 public:
  CEnumeration(CFile* file, const std::string& name, bool exported, bool isTypedef);
  /// An enumeration without members is dropped. Throws internal_exception without a file.
  void end() override;

  /// An empty value stands for none; the name of an earlier member stands for that one's value.
  void addMember(const std::string& name, const std::string& value = "");
  void addMember(const std::string& name, long value);
  static constexpr long kNoValue = 0x80000000L;

 private:
  std::string name_;
  bool exported_;
  bool isTypedef_;
  unsigned members_ = 0;
  std::map<std::string, std::string> values_;
  CSection section_;
};
