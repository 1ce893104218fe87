// What the units of rules share: whether an expression is there, whether it has failed, where a node stands,
// what a name of a template means, and warnings.
#pragma once

#include <string>

#include "frontend/T3Tree.h"

/// A timer that runs longer, in seconds, is worth a warning.
inline constexpr double kExcessiveDuration = 10000.0;

/// True for an expression that is there.
bool IsGiven(T3Tree_Node* expression);
/// True for what is no expression, or has no type: its message has been given.
bool HasFailed(T3Tree_Node* expression);
/// True directly in the control part of a module.
bool IsInControlPart(T3Tree_Node* node);
/// Reports that something is not allowed in the control part, at a node that stands there.
void RefuseInControlPart(T3Tree_Node* node, const char* what);
/// Reports that something is not allowed in an interleave, at a node that stands in one.
void RefuseInInterleave(T3Tree_Node* node, const char* what);
/// Warns at a node, as loud as its module is.
void WarnAt(T3Tree_Node* node, const std::string& text);
/// The template that a name means, found without reports; null for anything else.
T3TemplateDecl* TemplateNamed(T3Tree_Node* reference);
/// The constraint of a template definition; any other node is its own.
T3Tree_Node* ConstraintOf(T3Tree_Node* definition);
/// True for a list of values in which some stand by position, some by name and some by index, or two of
/// these.
bool MixesNotations(T3Tree_Node* values);
/// What a call, or a name without parameters, calls, imports followed; null where that has failed.
T3Tree_Node* CalleeOf(T3Tree_Node* call);
/// The component that a declaration runs on: gT3NoType for none.
T3Tree_Node* ComponentOf(T3Tree_Node* decl);
/// True for a part of a compound value that is an element of a list or an array.
bool IsElement(T3Tree_Node* part);
/// True for the name of a type, which stands where a value of it should: no field of `anytype` is one.
bool NamesType(T3Tree_Node* expression);
/// Reports what cannot be given for a parameter that is a value: a template with matching symbols.
void CheckGivenTemplate(T3Tree_Node* actual);
/// Reports what an operation that receives cannot compare with: a template that is not sufficiently defined.
void CheckReceivedTemplate(T3Tree_Node* statement);
