// Operands with a plus before them: the sign has no node, but is only for numbers.
#pragma once

#include "frontend/T3Tree.h"

void NoteSignedOperand(const T3Tree_Node* operand);
bool IsSignedOperand(const T3Tree_Node* operand);
