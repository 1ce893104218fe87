// What the evaluation of an expression or the execution of a behaviour may do to the state of its component.
#pragma once

#include "frontend/T3Tree.h"

/// The values of an alternative's status that rules ask for.
inline constexpr int kHasSideEffects = 2;
inline constexpr int kChangesSnapshot = 3;

/// 0: nothing. 1: it came back to a declaration that was still worked on. 2: side effects, after which a
/// standstill cannot be told from a wait. 3: it may change a snapshot, so that it may not stand in the guard
/// or the operation of an alternative.
int AltStatus(T3Tree_Node* root);
/// The same of what a declaration means where it is named.
int AltStatusOfDecl(T3Tree_Node* decl);

/// Whether the guards of a list of alternatives have no effects at all, and whether their operations have
/// none; altsteps that stand there count with their own alternatives.
struct T3Cleanness {
  bool guards = true;
  bool templates = true;
};
T3Cleanness CleannessOf(T3Tree_Node* alternatives);
