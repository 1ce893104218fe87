// References: what a name, qualification, subscription or call means, and the type that it has by itself,
// before a context chooses. Resolved once, from the innermost base outwards, without recursion.
#pragma once

#include "frontend/T3Tree.h"

/// Resolves a reference with all its bases: `def` and the three views of its own type. Names that mean
/// nothing are reported here, once.
void ResolveReference(T3Tree_Node* reference);
/// The bases of a reference, the innermost first, and the reference itself as the last.
T3NodeList ReferenceChain(T3Tree_Node* reference);
