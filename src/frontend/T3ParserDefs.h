// What scanner, grammar actions and the stages around a parse share: the file that is being read, and the
// state that one action leaves for another. All of it is reset when a module begins or ends.
#pragma once

#include "driver/modules/T3Global.h"
#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

/// Where the last repair of the file let the parse go on; line 0 before the first. What began before it was
/// read in pieces, so that faults of its meaning are not told.
inline tPosition gRepairedTo;
