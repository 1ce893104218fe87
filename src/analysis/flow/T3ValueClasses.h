// What an expression may be used for: assigned to, taken as a value, or taken as a template only.
#pragma once

#include "frontend/T3Tree.h"

/// True for variables and formal parameters, their fields and elements.
bool IsLvalue(T3Tree_Node* expression);
/// True for what has one value when it is evaluated: no matching symbols, and nothing that holds a template.
/// What has failed counts as a value.
bool IsRvalue(T3Tree_Node* expression);
/// The same, but variables, parameters and results that hold a template pass.
bool IsRvalueRelaxed(T3Tree_Node* expression);
/// True for a reference to a template, to what holds one, or to a function that returns one.
bool IsTemplateReference(T3Tree_Node* expression);
/// True for what has no type or is no value, and has had its message.
bool HasBeenRefused(T3Tree_Node* operand);
/// True for a function, an external one too, whose call is a value.
bool HasResult(T3Tree_Node* decl);
bool IsFunctionReturningTemplate(T3Tree_Node* decl);
