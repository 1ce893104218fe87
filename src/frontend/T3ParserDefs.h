// What scanner, grammar actions and the stages around a parse share: the file that is being read, and the
// state that one action leaves for another. All of it is reset when a module begins or ends.
#pragma once

#include <unordered_set>

#include "driver/modules/T3Global.h"
#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

/// The nodes of the file that hold a token which a repair inserted, or behind which it left some out: faults
/// of their meaning are not told.
inline std::unordered_set<const T3Tree_Node*> gRepairedNodes;
