// Where the walk of the evaluation is: the template definitions around it, and whether the outermost
// expression that it is in may be a template. Kept by the walk, asked by the rules.
#pragma once

#include "frontend/T3Tree.h"

/// The walk enters a template definition, and has gone through it.
void EnterTemplate(T3Tree_Node* definition);
void LeaveTemplate(T3Tree_Node* definition);
/// The definition that the walk is in, the innermost one; null outside of all.
T3TemplateDef* InnermostTemplate();
/// The walk enters an expression that is no part of another one, in the context that `parent` is.
void EnterOutermostExpression(T3Tree_Node* expression, T3Tree_Node* parent);
/// True where matching symbols and references to templates may stand: in a definition, and in what a
/// variable, parameter or result is given that holds a template.
bool MayBeTemplateHere();
