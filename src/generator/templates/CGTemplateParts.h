// What the units of the template generator share.
#pragma once

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

namespace cgtemplate {
/// Throws cg::not_supported for a declaration without a definition.
T3TemplateDef* DefinitionOf(T3TemplateDecl* decl);
T3Tree_Node* TypeOfTemplate(T3TemplateDef* definition);
bool IsSignatureTemplate(T3TemplateDef* definition);
/// A text of the source, as far as the user wants to see it, as the text of a literal of C.
const std::string& Description(T3TemplateDecl* decl);
/// A description, whose backslashes are doubled already, as the text of a literal of C.
std::string InLiteral(const std::string& description);
/// Forgets where the expressions of a definition lie, so that another walk allocates them afresh.
void ResetLocations(T3Tree_Node* definition);

/// A dynamic template: a copy of what a definition modifies that is known at run time only, with the changes
/// written over it. Returns its location.
std::string ModifiedAtRunTime(T3TemplateDef* definition, CFunction& function);

/// Everything that is generated for a declaration but its row in the symbol table.
void CGTemplateWorker(T3TemplateDecl* decl);
/// The functions that match, make a value, count elements and give the most general value.
void CGTemplateFunctions(T3TemplateDecl* decl, T3TemplateDef* definition);
}  // namespace cgtemplate
