// The C declarations of a module's homes.
#pragma once

#include "asn1/front/SyntaxTree.h"
#include "asn2c/CFile.h"

namespace asn2c {
/// Declares the C types of a module's definitions, and includes those of the modules that it imports.
void WriteHomes(asn1::ModRec& module, CFile& file);
}  // namespace asn2c
