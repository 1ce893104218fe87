// What scanner, grammar actions and the stages around a parse share: the file that is being read, and the
// state that one action leaves for another. All of it is reset when a module begins or ends.
#pragma once

#include <ctime>
#include <unordered_set>

#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

/// The source file being parsed, as an identifier; every position of the parse carries it.
inline tIdent gCurrentFilename = NoIdent;
/// The time of its last change.
inline time_t gCurrentFileModificationTime = 0;
/// Some port of the run has a type list `all`. Set by the parser, never cleared.
inline bool gT3IsPortAllTypes = false;
/// The nodes of the file that hold a token which a repair inserted, or behind which it left some out: faults
/// of their meaning are not told.
inline std::unordered_set<const T3Tree_Node*> gRepairedNodes;
