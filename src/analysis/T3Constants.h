// Constant values, constness, and the graphs of dependencies between declarations.
#pragma once

#include <optional>
#include <string>

#include "frontend/T3Tree.h"

// Accessors compute at the first read; empty where the expression has no such constant value.
std::optional<int64_t> ConstIntValue(T3Tree_Node* expression_or_decl);
std::optional<double> ConstFloatValue(T3Tree_Node* expression_or_decl);
std::optional<std::string> ConstCharValue(T3Tree_Node* expression_or_decl);
bool IsConstant(T3Tree_Node* expression);
bool IsLiteral(T3Tree_Node* expression);
/// The bounds of an array dimension, reported once where they are no constants.
int64_t LowerBoundValue(T3Tree_Node* bound);
int64_t UpperBoundValue(T3Tree_Node* bound);
bool BoundsAreIdentical(T3Tree_Node* a, T3Tree_Node* b);
