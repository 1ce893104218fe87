// Writes the syntax files of resolved modules.
#pragma once

#include <map>

#include "mesk/Model.h"

namespace mesk {

class Writer {
 public:
  Writer(std::vector<std::unique_ptr<Module>>& modules, Reporter& reporter);

  /// Gives every node of every module its record number. Before the first write.
  void number();
  /// The contents of a module's syntax file; `options` become its option records.
  std::string contents(Module& module, const std::vector<std::string>& options);

 private:
  struct Nodes {
    std::vector<TypeNode*> types;
    std::vector<ValueNode*> values;
    std::vector<ConstraintNode*> constraints;
  };
  void addType(Nodes& nodes, Module& module, TypeNode* node);
  void addTypeParts(Nodes& nodes, Module& module, TypeNode& node);
  void addValue(Nodes& nodes, Module& module, ValueNode* node);
  void addValueParts(Nodes& nodes, Module& module, ValueNode& node);
  void addConstraint(Nodes& nodes, Module& module, ConstraintNode* node);

  struct File;
  void writeType(File& file, Module& module, const TypeNode& node);
  void writeValue(File& file, Module& module, const ValueNode& node);
  void writeConstraint(File& file, Module& module, const ConstraintNode& node);
  void linkDefinitions(File& file, Module& module);
  void writeModules(File& file, Module& module);

  std::vector<std::unique_ptr<Module>>& modules_;
  Reporter& reporter_;
  std::map<const Module*, Nodes> nodes_;
  int32_t date_ = 0, time_ = 0;
};

}  // namespace mesk
