// Constant values as trees: what a constant reference stands for, the length of a constant expression, and
// the equality of two.
#pragma once

#include <cstdint>

#include "frontend/T3Tree.h"

/// The value behind a constant reference, followed through declarations and fields; any other expression is
/// its own, T3NoExpression where it cannot be found.
T3Tree_Node* ConstantValueOf(T3Tree_Node* expression);
/// The length of a constant string or list; `known` becomes false where it has none that is known.
int64_t ExpressionLength(T3Tree_Node* expression, bool& known);
/// True when two constants have the same value; different forms are not equal.
bool ExpressionsAreEqual(T3Tree_Node* a, T3Tree_Node* b);
