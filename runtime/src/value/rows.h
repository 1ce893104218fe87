// Values of records and sets beside lists and arrays of compatible types: the fields that are there are the
// elements, in their order.
#pragma once

#include "value/types.h"
#include "value/value.h"

namespace lumos {

inline bool has_named_fields(Value v) {
  return v->kind == lumo_type_kind_record || v->kind == lumo_type_kind_set;
}

// Whether the target is of a record or set, and the source a value of a list or array, or the other way round.
inline bool is_other_row(Value target, Value source) {
  if (has_named_fields(target)) return is_list_kind(source->kind) && source->form == Form::vector;
  return is_list_kind(target->kind) && has_named_fields(source) && source->form == Form::fields;
}

inline bool is_unset(Value part) {
  return !part || part->form == Form::unset;
}

// The next slot from there on that is no omitted field; the number of slots where there is none.
inline size_t next_part(Value v, size_t slot) {
  const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
  auto is_omitted = [&](size_t i) {
    const Value part = v->parts.data[i];
    return is_unset(part) ? fields && is_optional(fields[i]) : is_omit(part);
  };
  while (slot < v->parts.size && is_omitted(slot)) ++slot;
  return slot;
}

inline size_t count_parts(Value v) {
  size_t count = 0;
  for (size_t i = next_part(v, 0); i < v->parts.size; i = next_part(v, i + 1)) ++count;
  return count;
}

}  // namespace lumos
