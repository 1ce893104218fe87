#include "value/rows.h"

#include "value/error.h"
#include "value/memory.h"
#include "value/types.h"

namespace lumos {

namespace {

bool has_fields(Value v) {
  return v->kind == lumo_type_kind_record || v->kind == lumo_type_kind_set;
}

bool is_unset(Value part) {
  return !part || part->form == Form::unset;
}

// The next slot from there on that is no omitted field; the number of slots where there is none.
size_t next_part(Value v, size_t slot) {
  const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
  auto is_omitted = [&](size_t i) {
    const Value part = v->parts.data[i];
    return is_unset(part) ? fields && is_optional(fields[i]) : is_omit(part);
  };
  while (slot < v->parts.size && is_omitted(slot)) ++slot;
  return slot;
}

size_t count_parts(Value v) {
  size_t count = 0;
  for (size_t i = next_part(v, 0); i < v->parts.size; i = next_part(v, i + 1)) ++count;
  return count;
}

void put(Value target, size_t slot, Value from) {
  Value part = force_part(target, slot);
  if (is_unset(from)) return clear_contents(part);
  part->dynamic = target->dynamic || from->dynamic;
  assign_contents(part, from);
}

bool assign_elements(Value target, Value source) {
  const size_t count = field_count(target->type);
  if (source->parts.size > count) return false;
  const lumo_field_info_t* fields = field_info(target->type);
  for (size_t i = source->parts.size; i < count; ++i)
    if (!is_optional(fields[i])) return false;
  change_form(target, Form::fields);
  resize_parts(target, count);
  for (size_t i = 0; i < count; ++i)
    i < source->parts.size ? put(target, i, source->parts.data[i])
                           : set_special(force_part(target, i), Special::omit);
  return true;
}

bool assign_fields(Value target, Value source) {
  const size_t count = count_parts(source);
  if (target->kind == lumo_type_kind_array && count != array_length(target->type)) return false;
  change_form(target, Form::vector);
  resize_parts(target, count);
  for (size_t from = next_part(source, 0), to = 0; to < count; from = next_part(source, from + 1))
    put(target, to++, source->parts.data[from]);
  return true;
}

}  // namespace

bool is_other_row(Value target, Value source) {
  if (has_fields(target)) return is_list_kind(source->kind) && source->form == Form::vector;
  return is_list_kind(target->kind) && has_fields(source) && source->form == Form::fields;
}

bool assign_row(Value target, Value source) {
  check_stack();
  return has_fields(target) ? assign_elements(target, source) : assign_fields(target, source);
}

Value as_row_of(lumo_type_t type, Value v) {
  const bool has_parts_in_a_row = v->form == Form::fields || v->form == Form::vector;
  if (!has_parts_in_a_row || !type || base_kind(type) == v->kind) return v;
  Value row = make_root(type, lumo_temp_alloc_c);
  if (!is_other_row(row, v)) return v;
  return assign_row(row, v) ? row : nullptr;
}

bool equal_rows(Value a, Value b) {
  if (count_parts(a) != count_parts(b)) return false;
  check_stack();
  for (size_t i = next_part(a, 0), j = next_part(b, 0); i < a->parts.size;
       i = next_part(a, i + 1), j = next_part(b, j + 1))
    if (!equal_values(a->parts.data[i], b->parts.data[j])) return false;
  return true;
}

}  // namespace lumos
