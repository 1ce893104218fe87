#include "generator/CGValue.h"

void CGValue(T3Tree_Node*) {}

void CGModulePar(T3Tree_Node*) {}
