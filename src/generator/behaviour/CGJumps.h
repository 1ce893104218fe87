// Labels and the jumps to them. A round between a label and a jump back to it gives its memory back; a jump
// over declarations leaves their variables unset, not as an earlier round made them.
#pragma once

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

void CGLabel(T3LabelStmt* statement, CFunction& function);
void CGGoto(T3GotoStmt* statement, CFunction& function);
/// To be called at the start of each behaviour.
void ForgetLabels();
