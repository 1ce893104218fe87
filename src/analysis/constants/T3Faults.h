// What has failed already: a constant expression with a fault inside has had its message, and what is held
// against it tells nothing but the same fault again.
#pragma once

#include "frontend/T3Tree.h"

/// True when a part of a constant expression has no type, or when it refers to a constant of which that
/// holds. Each constant is looked through once, to the end of the module.
bool HasFault(T3Tree_Node* expression);
