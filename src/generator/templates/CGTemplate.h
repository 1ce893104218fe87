// Templates: each declaration is described to the run-time system as a type of its own, with functions that
// match a value, make one, count elements and give the most general value. What is written in line becomes
// such a declaration without a name of its own.
#pragma once

#include <string>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"
#include "generator/text/LUMOS.h"

/// A T3TemplateDecl of the module.
void CGTemplate(T3Tree_Node* decl);
/// One of a block, where its statement stands: without parameters it is made there, of what is local there.
void CGLocalTemplate(T3TemplateDecl* decl, CFunction& function);
/// A T3ImportTemplateDecl.
void CGTemplateImport(T3Tree_Node* decl);

/// Ends a function that gives the most general value of a constraint: of a template, or of a subtype.
void GenConstraintOf(T3Tree_Node* constraint, T3Tree_Node* type, CFunction& function);

/// The location of a template where one is wanted: a T3TemplateDef or an expression at its place of use.
std::string CGInlinedTemplate(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function);
/// The same where what has a value, or is a template already, is taken as it is.
std::string CGTemplateExpression(T3Tree_Node* node, vexa_template_mode_t mode, CFunction& function);
