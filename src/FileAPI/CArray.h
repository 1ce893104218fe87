// A generated C array with its initializer. Its size is counted, so that it can be declared ahead.
#pragma once

#include <string>
#include <vector>

#include "FileAPI/CBase.h"

class CArray : public CBase {
 public:
  /// The type is a word that lives as long as the array.
  CArray(CFile* file, std::string_view type, const std::string& name, bool isStatic);
  void end() override;

  /// One element at the current level, on a line of its own.
  void addElement(std::string_view text);
  /// One element "{ a, b, ... }".
  void addRow(CWords columns) { addRow(CMeasuredWords(columns)); }
  /// One element with a level of its own, which has these elements, at least one.
  void addLevel(CWords elements) { addLevel(CMeasuredWords(elements)); }
  /// What is added up to the end of the level is one element of the level around it.
  void beginLevel();
  void endLevel() { endScope(section_); }

  const std::string& name() const { return name_; }
  /// The number of elements at the current level.
  unsigned count() const { return counts_.back(); }

 protected:
  void endScope(CSection& section) override;

 private:
  void addRow(const CMeasuredWords& columns);
  void addLevel(const CMeasuredWords& elements);
  /// Counts one, and gives the line that it begins.
  std::string_view beginElement();

  std::string_view type_;
  std::string name_;
  bool isStatic_;
  CSection section_;
  /// Elements of the levels that are open.
  std::vector<unsigned> counts_{0};
};
