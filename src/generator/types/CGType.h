// The static tables that describe types to the run-time system.
#pragma once

#include "frontend/T3Tree.h"

class CArray;

/// A T3TypeDecl, T3ImportTypeDecl or T3ImportSignatureDecl of the module.
void CGType(T3Tree_Node* decl);
/// The module's own copy of a built-in type, a T3TypeDecl.
void CGBuiltinType(T3Tree_Node* decl);
/// The rows of a list of fields.
void GenFieldTypeList(CArray& array, T3Tree_Node* fields);
