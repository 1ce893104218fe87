// Where the objects of a module lie in generated C: the expression of an object's storage and that of its
// run-time value. Both are vexa_location_not_allocated until the generator that owns the object assigns them.
// Declarations and formal parameters have one of a run-time value, to the end of the module; expressions and
// template definitions have both, to the end of a scope. Any other node is the compiler's own fault.
#pragma once

#include <cstdint>
#include <string_view>

#include "frontend/T3Tree.h"

/// The texts stay until the next scope around which there is none begins.
std::string_view CLocation(T3Tree_Node* node);
std::string_view RTSLocation(T3Tree_Node* node);
/// Of an expression or a template definition, to the end of the innermost scope.
void SetCLocation(T3Tree_Node* node, std::string_view location);
void SetRTSLocation(T3Tree_Node* node, std::string_view location);
/// Of a declaration or a formal parameter, to the end of the module unless it is reset before.
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
  uint32_t outer_begin_;
};
/// So are those of all nodes: the work on a module has ended.
void ResetAllLocations();
