// Templates that modify others: what is written and what is modified become one constraint, so that later
// stages meet only templates that are written out.
#pragma once

#include "frontend/T3Tree.h"

/// The constraint of a definition, merged with what it modifies. It is made at the first question, and takes
/// the place of the constraint that was written. Its parts are shared with the constraints it is made from.
/// A definition whose modified template is not known keeps its own.
T3Tree_Node* MergedConstraint(T3Tree_Node* definition);
/// True for a definition that modifies another one and has not been merged with it.
bool AwaitsMerge(T3Tree_Node* definition);
/// Merges two constraints; `derived` is of the type of both. What cannot be merged is reported at `derived`.
T3Tree_Node* MergeConstraints(T3Tree_Node* base, T3Tree_Node* derived);
