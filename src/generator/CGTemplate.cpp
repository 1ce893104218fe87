#include "generator/CGTemplate.h"

void CGTemplate(T3Tree_Node*) {}

void CGTemplateImport(T3Tree_Node*) {}
