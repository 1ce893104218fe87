#include "generator/CGType.h"

void CGType(T3Tree_Node*) {}

void CGBuiltinType(T3Tree_Node*) {}
