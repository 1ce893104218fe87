// Templates: their descriptions and the functions that match and make values.
#pragma once

#include "frontend/T3Tree.h"

/// A T3TemplateDecl.
void CGTemplate(T3Tree_Node* decl);
/// A T3ImportTemplateDecl.
void CGTemplateImport(T3Tree_Node* decl);
