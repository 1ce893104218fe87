// Whether the records of a syntax file hold together, so that all who walk them come to an end.
#pragma once

#include "asn1/front/SyntaxTree.h"

namespace asn1 {
/// Numbers of records within the module are good, lists end, what is nested in something is nested in nothing
/// else, and not too deeply. What leads into other modules is not looked at.
bool IsSoundTree(const ModRec& module, int modules);
}  // namespace asn1
