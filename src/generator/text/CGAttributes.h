// The tables of `with` attributes of types.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

/// Writes the table of a type's attributes of one kind, and returns its name, or "NULL" where the type has
/// none. `decl` is a T3TypeDecl, T3ImportTypeDecl or T3ImportSignatureDecl; an import has the attributes of
/// the type of origin and those of its own.
std::string GenAttributes(T3Tree_Node* decl, t3_with_attribute_t kind);
