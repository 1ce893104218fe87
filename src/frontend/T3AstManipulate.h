// Small rewrites of the tree that the actions of the parser use.
#pragma once

#include "frontend/T3Tree.h"

/// Chains an else-if list, whose T3IfStmt are linked by `next` in source order, through `else_stmt`; `last`
/// becomes the `else_stmt` of the last one. Returns the head.
T3Tree_Node* LinkIfStmt(T3Tree_Node* statement, T3Tree_Node* last);
/// Gives the `with` list to each declaration from `first` on, up to the end marker.
void PropagateWithStmt(T3Tree_Node* first, T3Tree_Node* with);
/// A copy of a list of T3TypeItem whose types are shared, at NoPosition.
T3Tree_Node* DuplicateList(T3Tree_Node* list);
/// For a T3CheckReceive: gives its port to the operation that it wraps.
void PortCheckAttrPort(T3Tree_Node* operation);
/// Turns the dimensions of a declarator, outermost last, round and puts `element` in; without dimensions
/// the result is `element`.
T3Tree_Node* MangleArrayTypes(T3Tree_Node* dimensions, T3Tree_Node* element);
