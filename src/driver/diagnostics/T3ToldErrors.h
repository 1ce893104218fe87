// What the filter of T3Error has let through, for rules that would tell the same fault again.
#pragma once

#include "support/Position.h"

/// Whether an error has been told at a position.
bool vexa_error_is_told(const tPosition& position);
