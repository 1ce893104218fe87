// Extension of component types: after ExtendComponents (T3Stages.h) each component type has the plain list
// of all its declarations, inherited ones first. An inherited declaration is a node of its own that shares
// type and value with the declaration that it was copied from.
#pragma once

#include "frontend/T3Tree.h"

/// The declaration that a copied one comes from, to the first of them; any other declaration itself.
T3Tree_Node* GetBaseDecl(T3Tree_Node* decl);
/// Notes that `copy` was made from `source`.
void StoreBaseDecl(T3Tree_Node* copy, T3Tree_Node* source);
/// True for an inherited declaration: its children belong to its base declaration, which has its places
/// and its checks.
bool IsCopiedDecl(const T3Tree_Node* decl);
/// A copy of a declaration list, each entry noted by StoreBaseDecl.
T3Tree_Node* CopyDeclsList(T3Tree_Node* list);
/// True when a list of declarations, groups included, has a component type with an `extends` clause.
bool ContainsExtensions(T3Tree_Node* decls);
/// The identifier `module.name`.
tIdent MakeQualifiedId(tIdent module, tIdent name);
/// Appends `source` to `target`, as a copy unless `own`; what `target` has from the same origin is left
/// out. Names that clash go to `clashes`, and make the result false.
bool AppendDeclList(T3Tree_Node* target, T3Tree_Node* source, bool own, T3Tree_Node** result,
                    std::vector<tIdent>* clashes);
