// Descriptions of ports, components, signatures and behaviours. A port or component has two: one of the
// reference that a variable holds, and one of the real object.
#pragma once

#include "frontend/T3Tree.h"

// `decl` is a T3TypeDecl and `type` its type.
void GenPortType(T3Tree_Node* decl, T3Tree_Node* type);
void GenComponentType(T3Tree_Node* decl, T3Tree_Node* type);
void GenSignatureType(T3Tree_Node* decl, T3Tree_Node* type);
/// The type and the signature of a _T3FunctionDecl or of an import of one. Returns the name of the type.
std::string GenFunctionType(T3Tree_Node* decl);
