// The frame of a generated module: symbol table, the four life-cycle functions with their guards, imports,
// and the walk over the declarations, which fill the frame.
#pragma once

#include "frontend/T3Tree.h"

/// Generates an analysed module into gT3Context, between its begin and end.
void CGModule(T3Tree_Node* module);
