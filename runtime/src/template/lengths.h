// How long the values are that a template matches.
#pragma once

#include "value/value.h"

namespace lumos {

// The length that all values have which a template of a list or string matches; a fault that names the
// function where it is not fixed.
unsigned long template_length(Value v, const char* function);
// The number, or -1 where it is not fixed.
long fixed_length(Value v);

}  // namespace lumos
