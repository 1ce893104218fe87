// Constant values and constness.
#pragma once

#include <optional>
#include <string>

#include "frontend/T3Tree.h"

// Accessors compute at the first read; empty where the expression has no such constant value.
std::optional<int64_t> ConstIntValue(T3Tree_Node* expression_or_decl);
std::optional<double> ConstFloatValue(T3Tree_Node* expression_or_decl);
/// The text of a character literal without the quotes around it; of a quadruple its UTF-8. Malformed text has
/// none.
std::optional<std::string> ConstCharValue(T3Tree_Node* expression_or_decl);
/// The UTF-8 form of a character's code.
std::string Utf8Of(uint64_t code);
/// The literal that an expression or declaration holds as its constant characters, or null.
T3Tree_Node* ConstCharLiteral(T3Tree_Node* expression_or_decl);
bool IsConstant(T3Tree_Node* expression);
bool IsLiteral(T3Tree_Node* expression);
/// The bounds of an array dimension; 0 and 1 where they are no constants, which the rules report.
int64_t LowerBoundValue(T3Tree_Node* bound);
int64_t UpperBoundValue(T3Tree_Node* bound);
/// The bounds of an array type, where both are known before the suite runs.
struct T3KnownBounds {
  int64_t low;
  int64_t high;
  /// The number of elements.
  uint64_t Size() const { return static_cast<uint64_t>(high) - static_cast<uint64_t>(low) + 1; }
};
std::optional<T3KnownBounds> KnownBounds(T3Tree_Node* array);
bool BoundsAreIdentical(T3Tree_Node* a, T3Tree_Node* b);
