#include "analysis/types/T3Bounds.h"

#include <limits>

#include "analysis/types/T3Constants.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/types/T3Types.h"

namespace {
int64_t Folded(T3Tree_Node* expression) {
  return KnownInteger(expression).value_or(1);
}
}  // namespace

int64_t LowerBoundValue(T3Tree_Node* bound) {
  if (auto* array = bound->try_as<T3ArrayType>()) return LowerBoundValue(array->dimension);
  auto* range = bound->try_as<T3RangeBound>();
  return range == nullptr ? 0 : Folded(range->lb);
}

int64_t UpperBoundValue(T3Tree_Node* bound) {
  if (auto* array = bound->try_as<T3ArrayType>()) return UpperBoundValue(array->dimension);
  if (auto* range = bound->try_as<T3RangeBound>()) return Folded(range->ub);
  return static_cast<int64_t>(static_cast<uint64_t>(Folded(bound->as<T3SingleBound>()->ub)) - 1);
}

namespace {
bool IsKnownBound(T3Tree_Node* expression) {
  return IsConstant(expression) && !ExpressionBaseType(expression)->is<T3ErrorType>();
}

bool HasKnownBounds(T3Tree_Node* bound) {
  if (auto* range = bound->try_as<T3RangeBound>()) return IsKnownBound(range->lb) && IsKnownBound(range->ub);
  return IsKnownBound(bound->as<T3SingleBound>()->ub);
}
}  // namespace

// Bounds that are no constants have had their message, and are taken for any.
bool BoundsAreIdentical(T3Tree_Node* a, T3Tree_Node* b) {
  if (!HasKnownBounds(a) || !HasKnownBounds(b)) return true;
  return LowerBoundValue(a) == LowerBoundValue(b) && UpperBoundValue(a) == UpperBoundValue(b);
}

std::optional<T3KnownBounds> KnownBounds(T3Tree_Node* array) {
  T3Tree_Node* bound = array->as<T3ArrayType>()->dimension;
  if (auto* range = bound->try_as<T3RangeBound>()) {
    const auto low = KnownInteger(range->lb);
    const auto high = KnownInteger(range->ub);
    return low && high ? std::optional(T3KnownBounds{*low, *high}) : std::nullopt;
  }
  const auto size = KnownInteger(bound->as<T3SingleBound>()->ub);
  if (!size) return std::nullopt;
  // No number lies below the least one, which is no size in any case.
  return T3KnownBounds{0, *size == std::numeric_limits<int64_t>::min() ? *size : *size - 1};
}
