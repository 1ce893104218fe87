// Whether an expression reads what an assignment changes: where it does not, the target may be
// filled in place.
#pragma once

#include "frontend/T3Tree.h"

namespace cg {
/// The name at the bottom of a reference to a part.
T3Tree_Node* RootOfReference(T3Tree_Node* reference);
/// True where the value of the expression may depend on the variable that `target` is, or is a part of: it
/// names it, what may be the same variable by another name, or calls what may use it.
bool Reads(T3Tree_Node* expression, T3Tree_Node* target);
}  // namespace cg
