// Statements: the C text of a list of statements. Each has a comment with its place before it, each block a
// scope of memory, and each way out of a block goes through the same clean-up.
#pragma once

#include <functional>
#include <string>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

/// Generates a list of statements up to its end marker.
void CGStatement(T3Tree_Node* list, CFunction& function);

/// One of them, whatever follows it.
void CGOneStatement(T3Tree_Node* statement, CFunction& function);
/// A block with other statements than its own in it.
void CGBlockAround(T3BlockStmt* block, CFunction& function, const std::function<void()>& statements);

/// The calls that leave a block.
void LeaveBlock(T3BlockStmt* block, CFunction& function);
/// What the normal ends of the blocks around `from` would have run, up to the construct `to`, which is not
/// left; all of the behaviour's for null.
void TidyUp(T3Tree_Node* from, T3Tree_Node* to, CFunction& function);
/// Deletes the timers of a list of declarations, or those that a list of statements declares.
void DeleteTimers(T3Tree_Node* list, CFunction& function);

/// A comment with the place of a statement, and the call that tells it.
void GenSourceLocation(T3Tree_Node* statement, CFunction& function);
/// The same for the end of a construct that has one.
void GenSourceLocationEnd(T3Tree_Node* statement, CFunction& function);
/// Leaves the behaviour; `value` is empty for a C function without result.
void GenReturn(std::string_view value, CFunction& function);
/// A point at which the run-time system may stop the component.
void CallComponentControl(CFunction& function);
