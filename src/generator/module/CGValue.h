// Objects that hold values: constants, external constants, module parameters, and their imports.
#pragma once

#include <string>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

/// A T3ConstDecl, T3ExtConstDecl, T3ImportConstDecl or T3ImportModuleParDecl of the module.
void CGValue(T3Tree_Node* decl);
/// A T3ModuleParDecl.
void CGModulePar(T3Tree_Node* decl);

/// A constant, variable or timer where its statement stands. Throws cg::not_supported for what no code is
/// generated for.
void CGLocalValue(T3Tree_Node* decl, CFunction& function);
/// The same object without a value, where a jump goes over its statement.
void CGUnsetLocalValue(T3Tree_Node* decl, CFunction& function);
/// A constant, variable or timer of a component, by its place in the record that the function being written
/// gets.
void CGComponentValue(T3Tree_Node* decl, unsigned place, CFunction& function);
/// True for a timer or an array of timers.
bool IsTimerDeclaration(T3Tree_Node* decl);
