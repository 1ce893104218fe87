// The C declarations of a module's homes.
#pragma once

#include "asn1/front/SyntaxTree.h"
#include "asn2c/CFile.h"

namespace asn2c {
/// Declares the C types of a module's definitions, and includes those of the modules that it imports. The
/// types of the second form, whose file prefixes have `second` at their ends, are the same ones, and are shut
/// out where the first ones are there.
void WriteHomes(asn1::ModRec& module, const std::string& second, CFile& file);
}  // namespace asn2c
