// Values of records and sets beside lists and arrays of compatible types: the fields that are there are the
// elements, in their order.
#pragma once

#include "value/value.h"

namespace lumos {

// Whether the target is of a record or set, and the source a value of a list or array, or the other way round.
bool is_other_row(Value target, Value source);
// Gives the target of the one kind the parts of the other. False, with nothing done, where a mandatory field
// gets none, or the number of elements is not that of the fields or of the array.
bool assign_row(Value target, Value source);
// The value itself where that is not so, or one of the type that lives as long as temporary ones; null where its
// parts are not those of the type.
Value as_row_of(lumo_type_t type, Value v);
// Whether two such values have equal parts.
bool equal_rows(Value a, Value b);

}  // namespace lumos
