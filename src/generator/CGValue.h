// Objects that hold values: constants, external constants, module parameters, and their imports.
#pragma once

#include "frontend/T3Tree.h"

/// A T3ConstDecl, T3ExtConstDecl, T3ImportConstDecl or T3ImportModuleParDecl of the module.
void CGValue(T3Tree_Node* decl);
/// A T3ModuleParDecl.
void CGModulePar(T3Tree_Node* decl);
