// What the generators ask of types: the declaration that gives a type its name, the type behind names and
// subtypes, and the C expressions by which generated code means a type at run time.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

/// The T3TypeDecl, T3ImportTypeDecl or T3ImportSignatureDecl that names a type; null for one that has none.
/// `type` is a type, or such a declaration.
T3Tree_Node* TypeDeclaration(T3Tree_Node* type);
/// The declared type behind an import.
T3Tree_Node* GetTypeFromTypeDecl(T3Tree_Node* decl);
/// The type node behind references and subtypes.
T3Tree_Node* RootType(T3Tree_Node* type);
/// The built-in type that a declaration is only another name of; null for any other.
T3Tree_Node* BuiltinBehind(T3Tree_Node* decl);
/// The declaration of the module's own copy of a built-in type; null where it has none.
T3Tree_Node* BuiltinCopy(T3Tree_Node* builtin_type);
/// True for a module or declaration that comes from ASN.1.
bool IsT3ASN_1(T3Tree_Node* decl);

/// The run-time handle of a type. `type` as above; null and T3NoType stand for no type.
std::string_view VEXATypeRef(T3Tree_Node* type);
/// The same as a constant expression for tables.
std::string_view VEXAStaticTypeRef(T3Tree_Node* type);
/// The lumo_type_kind_... word of the type behind references and subtypes.
std::string_view ExtractTypeRTKind(T3Tree_Node* type);

/// Words of parameter passing and template restrictions.
const char* PassModeConstant(t3_par_pass_t mode);
const char* TemplRestrModeConstant(t3_template_restriction_t restriction);

// Lengths of lists.
unsigned LengthOfTypeItemList(T3Tree_Node* list);
unsigned LengthOfFieldTypeList(T3Tree_Node* list);
unsigned LengthOfEnumValueList(T3Tree_Node* list);
unsigned LengthOfDeclList(T3Tree_Node* list);
unsigned LengthOfFormalParList(T3Tree_Node* list);
