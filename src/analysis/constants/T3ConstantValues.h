// Constant values as trees: what a constant reference stands for, the length of a constant expression, and
// the equality of two. What has been found is kept until the check that asks for it has ended, and chains of
// constants are worked off with lists, so that the cost stays that of the declarations.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frontend/T3Tree.h"

/// The value behind a constant reference, followed through declarations, fields and elements; any other
/// expression is its own, T3NoExpression where it cannot be found.
T3Tree_Node* ConstantValueOf(T3Tree_Node* expression);
/// The length of a constant string or list; `known` becomes false where it has none that is known.
int64_t ExpressionLength(T3Tree_Node* expression, bool& known);
/// False when two constants are known to differ. Values of different forms differ; what is computed only
/// when the suite runs differs from nothing.
bool ExpressionsAreEqual(T3Tree_Node* a, T3Tree_Node* b);
/// A text of an integer, a string or an enumeration literal: two constants whose texts begin with the same
/// letter are equal exactly when the texts are. Nothing where a constant is none of these.
std::optional<std::string> ConstantKey(T3Tree_Node* expression);
