// Who uses which declarations. Analysis records it while references are resolved; recursive imports follow
// what a declaration needs, and with the option for it the generator leaves out what nothing needs that
// always gets code.
#pragma once

#include <span>

#include "analysis/walk/T3Eval.h"

/// Notes that `user` uses `used`, where the option for it is given.
void AddAntiDependency(T3Tree_Node* used, T3Tree_Node* user);
/// Whether a declaration gets code; false for a null node. Reports each declaration that is left out, once,
/// as progress. To be asked when all modules are analysed.
bool RequiresGeneration(T3Tree_Node* decl);
/// True for the kinds of declarations that always get code, and for all without the option.
bool ExcludeFromOptimization(T3Tree_Node* decl);

/// The rules that record uses, and fill `dep_decls`: declarations, and modules for all types that these see.
std::span<const T3Rule> UsageRules();
