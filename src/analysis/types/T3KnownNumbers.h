// Numbers that are known when compiling, for what must be known then: the bounds of arrays and subtypes.
// Beyond what constants are folded to everywhere, operators and predefined functions are computed whose
// operands are known, by the rules by which the run-time system computes them.
#pragma once

#include <cstdint>
#include <optional>

#include "frontend/T3Tree.h"

/// The value of an integer expression; nothing for one that isn't known, or is no integer.
std::optional<int64_t> KnownInteger(T3Tree_Node* expression);
/// The same for floats.
std::optional<double> KnownFloat(T3Tree_Node* expression);
