// Which declarations need no code, because nothing that is always generated uses them.
#pragma once

#include "frontend/T3Tree.h"

/// Whether a declaration gets code; false for a null node.
bool RequiresGeneration(T3Tree_Node* decl);
