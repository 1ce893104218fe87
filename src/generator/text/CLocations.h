// Where the objects of a module lie in generated C: the expression of an object's storage and that of its
// run-time value. Both hold vexa_location_not_allocated until the generator that owns the object assigns
// them. For declarations, formal parameters, expressions and template definitions; any other node is the
// compiler's own fault.
#pragma once

#include <string_view>

#include "frontend/T3Tree.h"

/// The texts stay as long as the tree.
std::string_view CLocation(T3Tree_Node* node);
std::string_view RTSLocation(T3Tree_Node* node);
/// To the end of the innermost scope.
void SetCLocation(T3Tree_Node* node, std::string_view location);
void SetRTSLocation(T3Tree_Node* node, std::string_view location);
/// To the end of the module, unless it is reset before.
void DeclareRTSLocation(T3Tree_Node* node, std::string_view location);
bool HasCLocation(T3Tree_Node* node);
bool HasRTSLocation(T3Tree_Node* node);
/// Both are unassigned again.
void ResetLocation(T3Tree_Node* node);

/// Ends the locations that nodes have got in it. Scopes nest.
class CLocationScope {
 public:
  CLocationScope();
  CLocationScope(const CLocationScope&) = delete;
  CLocationScope& operator=(const CLocationScope&) = delete;
  ~CLocationScope();

 private:
  size_t begin_;
};
/// So are those of all nodes: the work on a module has ended.
void ResetAllLocations();
