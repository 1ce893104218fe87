// What the declarations of a module need of each other: cycles, and the order that follows.
#pragma once

#include "frontend/T3Tree.h"

/// Empties the dependencies of the module under analysis: those of constants and types, and of templates.
void ResetDependencies();
/// Empties the chains of template modifications.
void resetTemplateDependencies();
/// Enters a declaration in its graphs, and reports each cycle at the declaration that closes it.
void EnterDependencies(T3Tree_Node* decl);
/// The declarations of the module in an order in which each stands behind what its value or type needs.
T3NodeList orderDependencies(T3Tree_Node* module);
