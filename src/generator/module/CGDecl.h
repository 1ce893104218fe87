// The walk over a module's declarations: each kind goes to its generator in the pass that it belongs to.
#pragma once

#include "frontend/T3Tree.h"

/// The normal pass over a declaration list.
void CGDecl(T3Tree_Node* list);
/// The import pass, which comes first.
void CGImportDecl(T3Tree_Node* list);
/// Types and constants of the module, each behind what it uses.
void CGGlobalConstants(T3Tree_Node* list);
