// The headers that a module's header includes ahead of those of its imports. C compilers limit how deep headers may
// include each other, to 32 levels for some, and chains of imports may be longer: so a header first includes, from the
// bottom up, each sixteenth level of what it imports at all. What is included later finds these there already.
#pragma once

#include <vector>

#include "frontend/T3Tree.h"

/// In the order in which they are to be included; empty for modules with short chains of imports.
std::vector<T3Module*> HeadersAhead(T3Module* module);
