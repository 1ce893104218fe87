// Whether values hold what their subtypes ask for. A value is checked when it is written, and so is
// what it is a part of.
#pragma once

#include "value/value.h"

namespace lumos {

// After an assignment from another type: the parts have to belong to their own types.
void check_parts(Value v);
// A new value is going to be set part by part: where a subtype asks for certain wholes, none is made of
// new parts and old ones.
void begin_value(Value v);
// The length that a list was given has to be one that its type allows.
void check_length(Value v);
// Whether a value of the type may have lists in it that are still too short for their own types.
bool may_be_short(lumo_type_t type);

// The lengths that the subtypes of a string or list allow; upper is -1 without a limit.
struct LengthBounds {
  lumo_long_integer_t lower = 0, upper = -1;
};
LengthBounds length_bounds(lumo_type_t type);
// Whether what belongs to the value's own type belongs to this one as well.
bool belongs(Value v, lumo_type_t type);
// A fault for a complete value that is not of the type.
void check_belongs(Value v, lumo_type_t type);

}  // namespace lumos
