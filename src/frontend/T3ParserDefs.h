// What scanner, grammar actions and the stages around a parse share: the file that is being read, and the
// state that one action leaves for another. All of it is reset when a module begins or ends.
#pragma once

#include <ctime>

#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

/// The source file being parsed, as an identifier; every position of the parse carries it.
inline tIdent gCurrentFilename = NoIdent;
/// The time of its last change.
inline time_t gCurrentFileModificationTime = 0;
/// Some port of the run has a type list `all`. Set by the parser, never cleared.
inline bool gT3IsPortAllTypes = false;
/// Where the last repair of the file let the parse go on; line 0 before the first. What began before it was
/// read in pieces, so that faults of its meaning are not told.
inline tPosition gRepairedTo;
