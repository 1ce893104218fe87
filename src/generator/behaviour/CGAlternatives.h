// Alternatives and communication: an `alt` is a loop that looks at a snapshot, tries its branches in their
// order and then the defaults, and waits. What blocks alone is an `alt` with one branch.
#pragma once

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

void CGAlt(T3AltStmt* statement, CFunction& function);
/// All orders in which the branches can be gone through, as loops in each other.
void CGInterleave(T3InterleaveStmt* statement, CFunction& function);
/// What the ends of the blocks and loops around `from` would have run, up to the end of the interleave.
void CGLeaveInterleave(T3Tree_Node* from, T3InterleaveStmt* statement, CFunction& function);
/// The same for an alternative or interleave that stands in a branch of one.
void CGLeaveNested(T3Tree_Node* from, T3Tree_Node* owner);
/// An operation that may block and stands alone as a statement.
void CGBlockingOperation(T3Tree_Node* statement, CFunction& function);
/// An altstep that is called as a statement.
void CGAltstepCall(T3Parameterization* call, CFunction& function);
/// The branches of a list, inside of the loop that they leave. `statement` is the T3AltStmt or T3CallStmt to
/// which `repeat` and `break` belong.
void CGAltList(T3Tree_Node* alternatives, T3Tree_Node* statement, CFunction& function);
/// True for what waits: done, killed, timeout and the receiving operations.
bool IsBlockingOperation(T3Tree_Node* statement);

void CGSend(T3SendStmt* statement, CFunction& function);
void CGCall(T3CallStmt* statement, CFunction& function);
void CGReply(T3ReplyStmt* statement, CFunction& function);
void CGRaise(T3RaiseStmt* statement, CFunction& function);

void CGRepeat(T3RepeatStmt* statement, CFunction& function);
/// The label that `break` jumps to in a T3AltStmt, T3CallStmt or T3InterleaveStmt; empty for any other
/// construct.
std::string BreakLabelOfAlt(T3Tree_Node* owner);
