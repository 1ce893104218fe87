// Templates: instances of declared ones, dynamic ones, and their turning into values.
#pragma once

#include "value/value.h"

namespace lumos {

// The value that the template stands for; a fault where it stands for more than one.
Value valueof_value(Value v, lumo_alloc_strategy_t strategy);
// What a template variable or parameter with that restriction may hold of the
// source: a value in place of a template; a fault where the restriction forbids it.
Value restricted(Value source, unsigned restriction);
// Gives the contents the form of fields, elements or alternative, so that one part can be
// written: an instance becomes its contents, `?` becomes a list of `?`, or one of any length.
void open_structure(Value v);
// Makes room for an element of a list; a template that was `?` goes on to match any elements behind it.
void make_room(Value v, size_t slot);
// Whether the element is one of any number that such a template goes on to match.
bool is_behind_open_end(Value v, size_t slot);
// Shapes of template nodes (values.cpp).
void open_parts(Value v, Form form, size_t count);
void append_object_id(Value v, lumo_long_integer_t number);
bool match_value(Value pattern, Value v);

}  // namespace lumos
