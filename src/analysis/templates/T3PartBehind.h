// What a reference stands for: the constraint of a template, the value of a constant, what was given for a
// parameter, or a part of these, however they are written.
#pragma once

#include <unordered_map>

#include "frontend/T3Tree.h"

/// The constraint of a template that is named, or called by `call`, which may be null; an expression, or null
/// where it must not be looked into.
using T3ConstraintGetter = T3Tree_Node* (*)(T3TemplateDecl* decl, T3Parameterization* call);
/// As it is written, merged with what it modifies if that has been done.
T3Tree_Node* WrittenConstraint(T3TemplateDecl* decl, T3Parameterization* call);
/// The expressions that stand for the parameters of a template in a call, by parameter: what is given, or the
/// defaults, which are all for a null call.
std::unordered_map<T3Tree_Node*, T3Tree_Node*> ActualsOf(T3TemplateDecl* decl, T3Parameterization* call);

/// Follows an expression through templates, constants and parameters to what it stands for. A part of what
/// matches several values, or none, is taken for the whole. What cannot be followed any further, such as a
/// variable, is its own; so is a part that is not written. Asks for no name a second time, and reports
/// nothing.
T3Tree_Node* PartBehind(T3Tree_Node* expression, T3ConstraintGetter constraint_of = WrittenConstraint);
