// Extension of component types: after ExtendComponents (T3Stages.h) each component type has its members
// (T3Members.h), inherited ones first.
#pragma once

#include "frontend/T3Tree.h"

/// True when a list of declarations, groups included, has a component type with an `extends` clause.
bool ContainsExtensions(T3Tree_Node* decls);
/// The identifier `module.name`.
tIdent MakeQualifiedId(tIdent module, tIdent name);
