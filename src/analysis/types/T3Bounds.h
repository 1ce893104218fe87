// The bounds of arrays, which are known before the suite is compiled.
#pragma once

#include <cstdint>
#include <optional>

#include "frontend/T3Tree.h"

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
