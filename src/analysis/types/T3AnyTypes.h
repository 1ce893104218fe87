// The members of `anytype`: the types that a module sees, each an alternative that is named by its module and
// its name.
#pragma once

#include "frontend/T3Tree.h"

/// The member that a name means at a node; `module` is NoIdent for a name alone. gT3ErrorType where there is
/// none; the caller reports it.
T3Tree_Node* AnyTypeMember(T3Tree_Node* at, tIdent name, tIdent module, const tPosition& position);
/// The module that a name means there, if it means one and no type; null otherwise.
T3Tree_Node* ModuleInAnyType(T3Tree_Node* at, tIdent name, const tPosition& position);
/// Reports that there is no such member.
void ReportNoAnyTypeMember(T3Tree_Node* at, tIdent name, tIdent module, const tPosition& position);
/// The fields of an `anytype` whose module has been analysed, made at the first question; null before.
T3Tree_Node* AnyTypeFields(T3Tree_Node* anytype);
/// The number of the alternative that stands for a declared type; each module has a list of its own. -1 where
/// there is none.
int64_t AnyTypeAlternative(T3Tree_Node* anytype, T3Tree_Node* type_decl);
