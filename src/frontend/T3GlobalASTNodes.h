// Nodes that are used everywhere: one function for each, with position NoPosition. With true it gives the
// one shared node of the kind, with false a new one.
#pragma once

#include "frontend/T3Tree.h"

#include "T3TreeShared.inc"

/// The run-time constant for a permutation kind; an impossible kind throws a std::string.
const char* PermutationKindToString(t3_permutation_kind_t kind);
