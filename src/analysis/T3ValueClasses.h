// What an expression may be used for: whether it can be assigned to.
#pragma once

#include "frontend/T3Tree.h"

/// True for variables and formal parameters, their fields and elements.
bool IsLvalue(T3Tree_Node* expression);
