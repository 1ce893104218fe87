// Patterns that subtypes hold their strings to, asked when compiling as the run-time system asks them.
#pragma once

#include <optional>

#include "frontend/T3Tree.h"

/// Whether a pattern allows a string; nothing where one of them is known only when the suite runs, the pattern
/// cannot be read, or the answer takes too long.
std::optional<bool> PatternAllows(T3CharStringMatch* pattern, T3Tree_Node* expression);
