// Operands of operators and predefined functions.
#pragma once

#include "value/value.h"

namespace lumos {

// The operand as a value; a fault where it has none.
Value operand(Value v);
// The type of the language for results of the operand's kind of string.
lumo_type_t string_type(Value v);
int digit_value(char c);

}  // namespace lumos
