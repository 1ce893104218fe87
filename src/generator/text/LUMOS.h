// The names of all C objects that the generators make. A name tells the kind of a declaration, its module
// and its own name; identifiers keep the spelling of the source. Each function takes the nodes that its
// comment tells; any other is the compiler's own fault and throws internal_exception.
#pragma once

#include <string>
#include <string_view>

#include "frontend/T3Tree.h"

/// "_line_column".
std::string PositionSuffix(const tPosition& position);

/// The declarations and modules of the run whose names in C have a number, since others have the same; a word, empty
/// where there are none. The code of all modules that know them depends on it.
std::string NumberedNamesOfRun();

// Names of a module's life-cycle functions and their guards, from its identifier.
std::string ModuleInitializeName(tIdent module);
std::string ModuleParamsInitializeName(tIdent module);
std::string ModuleFinalizeName(tIdent module);
std::string ModuleRegisterName(tIdent module);
std::string ModuleRegisterCodecsName(tIdent module);
std::string VEXAInitFunctionGuard(tIdent module);
std::string VEXAFinalizeFunctionGuard(tIdent module);
std::string VEXARegisterFunctionGuard(tIdent module);
std::string VEXAModuleParamsInitializeFunctionGuard(tIdent module);
std::string VEXAModuleParamsInfoName(T3Tree_Node* module);
std::string VEXAModuleParameterName(tIdent a, tIdent b);
/// A new name for each call of the run.
std::string VEXALocalVarName(tIdent name);
/// Whether two texts of C differ in nothing but the numbers in such names, which run on from where another
/// module stopped: all by the same.
bool IsSameCode(std::string_view a, std::string_view b);

// Types: T3TypeDecl, and where it makes sense T3ImportTypeDecl and T3ImportSignatureDecl.
std::string_view VEXATypeConstName(T3Tree_Node* decl);
/// Also for a T3PortDecl.
std::string_view VEXATypeName(T3Tree_Node* decl);
std::string_view VEXATypeStructName(T3Tree_Node* decl);
std::string VEXAFieldInfoName(T3Tree_Node* decl);
std::string VEXAEnumInfoName(T3Tree_Node* decl);
std::string VEXAArrayInfoName(T3Tree_Node* decl);
std::string VEXATypeInfoStructName(T3Tree_Node* decl);
std::string VEXACheckName(T3Tree_Node* decl);
/// Also for a T3TemplateDecl.
std::string VEXAConstraintOfName(T3Tree_Node* decl);
std::string VEXAPortRecordName(T3Tree_Node* decl);
std::string VEXAPortRecordInfoStructName(T3Tree_Node* decl);
std::string VEXAPortRecordFieldInfoName(T3Tree_Node* decl);
std::string VEXAComponentRecordName(T3Tree_Node* decl);
std::string VEXAComponentRecordInfoStructName(T3Tree_Node* decl);
std::string VEXAComponentRecordFieldInfoName(T3Tree_Node* decl);
std::string VEXAComponentPostProcessFuncName(T3Tree_Node* decl);
std::string VEXAAttributesName(T3Tree_Node* decl, t3_with_attribute_t kind);

// The module's own copy of a built-in type: T3TypeDecl.
std::string VEXABuiltinTypeName(T3Tree_Node* decl);
std::string VEXABuiltinTypeStructName(T3Tree_Node* decl);
std::string VEXABuiltinTypeInfoStructName(T3Tree_Node* decl);
std::string VEXABuiltinFieldInfoName(T3Tree_Node* decl);
/// The run-time system's own description of a built-in type.
std::string VEXARTSTypeInfoStructName(T3Tree_Node* type);

// Templates: T3TemplateDecl, the first two also T3ImportTemplateDecl.
std::string VEXATemplateConstName(T3Tree_Node* decl);
std::string_view VEXATemplateTypeStructName(T3Tree_Node* decl);
std::string VEXATemplateRef(T3Tree_Node* decl);
std::string VEXASizeOfName(T3Tree_Node* decl);
std::string VEXAMatchName(T3Tree_Node* decl, vexa_template_mode_t mode);
std::string VEXAValueOfName(T3Tree_Node* decl, vexa_template_mode_t mode);
std::string VEXATemplateFieldInfoName(T3Tree_Node* decl);
std::string VEXATemplateTypeInfoStructName(T3Tree_Node* decl);
std::string VEXATemplateInfoName(T3Tree_Node* decl);

// Behaviours and values, with their imports.
std::string VEXAFunctionName(T3Tree_Node* decl);
std::string VEXATestcaseName(T3Tree_Node* decl);
std::string VEXATeststepName(T3Tree_Node* decl);
/// T3ExtFunction, T3ExtConstDecl.
std::string VEXAExtObjectName(T3Tree_Node* decl);
std::string VEXAExtFuncName(T3Tree_Node* decl);
std::string VEXAExtFuncCompileSwitchName(T3Tree_Node* decl);
/// T3ConstDecl, T3ImportConstDecl, T3ImportModuleParDecl.
std::string VEXAConstName(T3Tree_Node* decl);
std::string VEXAModuleParName(T3Tree_Node* decl);
std::string VEXAExtConstName(T3Tree_Node* decl);
std::string VEXAControlPartFunctionName();
/// Function, test case, altstep, external function, or an import of one.
std::string VEXAFuncTypeStructName(T3Tree_Node* decl);
std::string VEXAFuncTypeInfoName(T3Tree_Node* decl);
std::string VEXAFuncTypeFieldInfoName(T3Tree_Node* decl);
/// The same, and signatures.
std::string VEXASignatureStructName(T3Tree_Node* decl);
std::string VEXASignatureInfoName(T3Tree_Node* decl);
std::string VEXASignatureFieldInfoName(T3Tree_Node* decl);

/// The C expression of a function: T3Function, T3ExtFunction, T3ImportFunctionDecl.
std::string GetFunctionObject(T3Tree_Node* decl);
/// The same for T3TestStep and T3ImportTeststepDecl.
std::string GetTeststepObject(T3Tree_Node* decl);

/// A quoted text in lines of at most n characters.
std::string SliceString(const std::string& text, size_t n);
/// The text between double quotes.
std::string Quote(std::string_view text);
std::string_view Quote(tIdent name);
/// Each backslash twice.
std::string EscapeEscape(const std::string& text);
/// A text whose backslashes are doubled already, as that of a literal of C.
std::string InLiteral(const std::string& text);
/// The value of a string literal of the source, with or without the double quotes around it, as a literal of
/// C.
std::string CStringOfLiteral(std::string_view literal);
/// Type blank name.
std::string FormalPar(std::string_view type, std::string_view name);
