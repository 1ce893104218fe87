// What a browser of ASN.1 sources reads: a tree of the definitions of a module, a summary of them, and the
// sources, of imported modules too, as a dependency of the summary for make.
#pragma once

#include "asn1/front/SyntaxTree.h"

namespace asn2c {
/// Writes the three files, whose names begin with the prefix and directory of the module's options; nothing
/// without them. Fatal errors are from then on told in the summary too. A directory without a prefix is such
/// an error.
void WriteBrowserFiles(asn1::ModRec& module);
}  // namespace asn2c
