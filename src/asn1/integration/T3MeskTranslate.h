// ASN.1 modules as modules of the tree: declarations of types, constants and imports.
#pragma once

#include "asn1/front/SyntaxTree.h"
#include "support/Idents.h"

struct T3Tree_Node;

/// The module of that name that came from ASN.1, or null.
T3Tree_Node* vexa_find_T3Module(tIdent name);

/// Fills the tree's module of an ASN.1 module, which is made if there is none, with its declarations. `file`
/// is the name of the source for positions. Returns the module; false in `good` after a report.
T3Tree_Node* translate_module(asn1::ModRec& module, tIdent file, bool& good);

/// Gives the types of all ASN.1 modules the names that they have in generated C. Once, before the first
/// module is generated: modules refer to each other's types. False after a report, where two have one name.
bool NameGeneratedTypes();
