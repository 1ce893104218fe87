// A generated C array with its initializer. Its size is counted, so that it can be declared ahead.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "FileAPI/CBase.h"

class CArray : public CBase {
 public:
  CArray(CFile* file, const std::string& type, const std::string& name, bool isStatic);
  void end() override;

  /// One element at the current level, on a line of its own.
  void addElement(std::string_view text);
  /// One element "{ a, b, ... }".
  void addRow(const std::vector<std::string>& columns);
  void addRow(CWords columns);
  /// What is added up to the end of the level is one element of the level around it.
  void beginLevel();
  void endLevel() { endScope(section_); }

  const std::string& name() const { return name_; }
  /// The number of elements at the current level.
  unsigned count() const { return counts_.back(); }

 protected:
  void endScope(CSection& section) override;

 private:
  void beginElement();
  template <class Words>
  void addColumns(const Words& columns);

  std::string type_;
  std::string name_;
  bool isStatic_;
  CSection section_;
  std::deque<unsigned> counts_{0};
  std::deque<bool> written_{false};
};
