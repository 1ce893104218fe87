// Templates that modify others: what is written and what is modified become one constraint, so that later
// stages meet only templates that are written out. What comes from a template with parameters goes on
// referring to these: a definition and the templates along its chain (ModifiedTemplate) each have their own
// arguments. A part that was a call, or that is only known at run time, becomes a definition of its own that
// modifies it, in the place of the value.
#pragma once

#include "frontend/T3Tree.h"

/// The constraint of a definition, merged with what it modifies. It is made at the first question, and takes
/// the place of the constraint that was written. Its parts are shared with the constraints it is made from.
/// A definition whose modified template is not known keeps its own.
T3Tree_Node* MergedConstraint(T3Tree_Node* definition);
/// The template that a definition modifies; null where none is known.
T3TemplateDecl* ModifiedTemplate(T3TemplateDef* definition);
/// The T3ActualPar list that a definition gives to what it modifies; null where none is written.
T3Tree_Node* ActualsForModified(T3TemplateDef* definition);
/// What is modified is only known when the suite runs: the constraint has the changes, and no more.
bool IsModifiedAtRunTime(T3TemplateDef* definition);
/// True for a definition that modifies another one and has not been merged with it.
bool AwaitsMerge(T3Tree_Node* definition);
/// Merges two constraints; `derived` is of the type of both. What cannot be merged is reported at `derived`.
T3Tree_Node* MergeConstraints(T3Tree_Node* base, T3Tree_Node* derived);
