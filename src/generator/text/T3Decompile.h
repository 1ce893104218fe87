// Trees as source text: what the run-time system's logs show of a template. The text is one line with spaces
// of its own; the layout of the source is not kept.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

/// The body of a template definition; its name and what it modifies are not part of it.
std::string DecompileTemplateDef(T3Tree_Node* definition);
/// An expression. What cannot be rendered gives "<Description is n/a>" in its place.
std::string DecompileExpression(T3Tree_Node* expression);

/// How tightly an operator binds; a higher number binds tighter. 0 for what is no operator.
int GetOperatorPrecendence(T3Tree_Node* expression);

/// The text of a T3TemplateDecl's body, cut to about `limit` characters where it is longer, with each
/// backslash twice; "<description is n/a>" where there is no body.
std::string GetTemplateDescription(T3Tree_Node* decl, long limit);
/// The same of what stands for a value in a template.
std::string GetConstraintDescription(T3Tree_Node* constraint, long limit);
