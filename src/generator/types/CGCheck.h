// Functions that check values against the constraint of a subtype, and build its most general value.
#pragma once

#include "frontend/T3Tree.h"

/// Writes the check function of a T3TypeDecl with a constrained T3SubType.
void CGCheck(T3Tree_Node* decl);
/// The same for the constraint-of function.
void CGConstraintOf(T3Tree_Node* decl);
