// References in the texts of patterns: `{name}` and `\N{name}`.
#pragma once

#include "frontend/T3Tree.h"

/// Makes what a name in the text of a pattern means an operand of a concatenation in its place, so that it is
/// a reference like any other from then on, with its messages; a type, in `\N{name}`, gives the pattern of its
/// values instead. Takes the expression behind `pattern` or in the place of a pattern.
void ResolvePatternReferences(T3Tree_Node* pattern);
