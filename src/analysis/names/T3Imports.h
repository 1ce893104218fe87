// Imports: the references of import statements, the search for what they name, and the words for kinds of
// declarations in messages. The stage itself is PreprocessImports (T3Stages.h).
#pragma once

#include <string>

#include "frontend/T3Tree.h"

/// The ASN.1 declaration of NULL of the last imported ASN.1 module; T3NoDecl or null where there is none.
extern T3Tree_Node* ASN_1_NULL_DECLARATION;

/// The path of a reference, with "." between the names.
std::string ImportRef2String(T3Tree_Node* reference);
/// A module's own declaration of a name, or T3NoDecl. What the module imports is never found.
T3Tree_Node* FindDeclInModule(T3Tree_Node* module, tIdent id);
/// The group that a reference names, or T3NoDecl; two such groups are reported.
T3Tree_Node* FindGroupInModule(T3Tree_Node* module, T3Tree_Node* reference);
/// True when an import of kind `restr` takes the declaration.
bool ImportThatKind(T3Tree_Node* decl, t3_import_restr_t restr);
/// True when a list of exceptions bars the declaration.
bool IsExcluded(T3Tree_Node* exceptions, T3Tree_Node* decl);
/// The word for a declaration's kind in messages about imports.
const char* DeclKind(T3Tree_Node* decl);
bool IsImportDecl(const T3Tree_Node* node);
/// True for a type declaration that a pre-pass made for a type written inside another.
bool ImplicitTypeDecl(const T3Tree_Node* decl);
