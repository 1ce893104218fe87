// Behaviours: a static C function for each, which the run-time system finds by the symbol table.
#pragma once

#include <string>
#include <vector>

#include "frontend/T3Tree.h"

/// A _T3FunctionDecl, T3ControlPart, or an import of a behaviour.
void CGFunction(T3Tree_Node* decl);
/// A control part for a module that has none.
void CGDummyControlPart(T3Tree_Node* module);
/// The parameters that all behaviours have.
const std::vector<std::string>& CGBehaviourParameters();
