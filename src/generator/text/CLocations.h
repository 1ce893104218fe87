// Where the objects of a module lie in generated C: the expression of an object's storage and that of its
// run-time value. Both hold vexa_location_not_allocated until the generator that owns the object assigns
// them. For declarations, formal parameters, expressions and template definitions; any other node is the
// compiler's own fault.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

std::string CLocation(T3Tree_Node* node);
std::string RTSLocation(T3Tree_Node* node);
void SetCLocation(T3Tree_Node* node, const std::string& location);
void SetRTSLocation(T3Tree_Node* node, const std::string& location);
bool HasCLocation(T3Tree_Node* node);
bool HasRTSLocation(T3Tree_Node* node);
/// Both are unassigned again.
void ResetLocation(T3Tree_Node* node);
/// So are those of all nodes: the work on a module has ended.
void ResetAllLocations();
