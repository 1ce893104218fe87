// Values with parts: records, sets, signatures, unions, lists and arrays.
#include "value/error.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/subtypes.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

const size_t most_elements = size_t(1) << 31;

// The slot behind an index as generated code counts, which for arrays has a base.
size_t slot_of(Value v, unsigned long index) {
  if (v->kind != lumo_type_kind_array) return index;
  long base = array_base(v->type);
  long slot = static_cast<long>(index) - base;
  if (slot < 0 || static_cast<size_t>(slot) >= array_length(v->type))
    fault("index %ld is outside of the array '%s'", static_cast<long>(index), type_name(v->type));
  return static_cast<size_t>(slot);
}

// The contents to read parts from: a template that stands for other contents is opened.
Value readable(Value v) {
  if (!v || v->form == Form::special) {
    if (v && (v->special == Special::anyone || v->special == Special::anyornone)) return v;
    fault("a part of a value that is not there is used");
  }
  v = settled(v);
  if (v->form == Form::instance || v->form == Form::wrapped)
    return lumo_templateof(v, lumo_temp_alloc_c, current_task);
  return v;
}

// A part that its whole does not have yet: an element behind the end, an omitted field, an alternative that
// is not chosen.
Value pending_part(Value whole, size_t place, lumo_type_t type) {
  if (place >= most_elements) fault("index %zu is too large", place);
  Value part = make_part(type, whole);
  set_strategy(part, lumo_temp_alloc_c);
  part->pending = true;
  part->place = static_cast<uint32_t>(place);
  return part;
}

Value pending_element(Value list, size_t slot) {
  Value part = pending_part(list, slot, element_type(list->type));
  if (is_behind_open_end(list, slot)) set_special(part, Special::anyone);
  return part;
}

Value pending_field(Value v, size_t slot) {
  const lumo_field_info_t& field = field_info(v->type)[slot];
  Value part = pending_part(v, slot, field.type);
  part->label = field.name;
  return part;
}

// The field to be written: one that is omitted is not there before that.
Value written_field(Value v, size_t slot) {
  if (slot >= v->parts.size) fault("type '%s' has no field %zu", type_name(v->type), slot);
  Value part = v->parts.data[slot];
  const lumo_field_info_t* fields = field_info(v->type);
  const bool is_there = part && part->life != Life::fixed;
  if (is_there || v->dynamic || !fields || !is_optional(fields[slot])) return force_part(v, slot);
  return pending_field(v, slot);
}

// A matching mechanism that stands for a whole, with the type of the whole, so that its parts can be asked
// for.
Value typed_any(Value part, lumo_type_t type) {
  const lumo_type_kind_t kind = base_kind(type);
  const bool has_parts = is_record_kind(kind) || is_list_kind(kind) || kind == lumo_type_kind_union;
  const bool is_any = is_special(part, Special::anyone) || is_special(part, Special::anyornone);
  if (!has_parts || !is_any || part->life != Life::fixed) return part;
  Value typed = lumo_type_instantiate_dynamic_template(type, lumo_temp_alloc_c, 0, current_task);
  set_special(typed, part->special);
  return typed;
}

Value read_field(Value v, size_t slot) {
  const lumo_field_info_t* fields = field_info(v->type);
  if (v->form == Form::unset) shape(v);
  if (v->form != Form::fields)
    fault("the fields of a template of type '%s' are not known", type_name(v->type));
  if (slot >= v->parts.size) fault("type '%s' has no field %zu", type_name(v->type), slot);
  Value part = v->parts.data[slot];
  bool optional = fields && is_optional(fields[slot]);
  if (part && is_omit(part)) return lumo_omit_value_c;
  if (part && part->form != Form::unset) return v->dynamic ? typed_any(part, fields[slot].type) : part;
  if (fields && fields[slot].default_value && !v->dynamic) return fields[slot].default_value;
  if (optional && !v->dynamic) return lumo_omit_value_c;
  return force_part(v, slot);
}

// Reading leaves a template as it is, also one in the place of a part.
Value part_at(Value v, size_t slot) {
  Value part = v->parts.data[slot];
  return part ? typed_any(part, part_type(v, slot)) : force_part(v, slot);
}

Value read_element(Value v, size_t slot, bool is_try) {
  if (is_behind_open_end(v, slot)) return typed_any(lumo_anyone_value_c, element_type(v->type));
  if (v->form == Form::vector && slot < v->parts.size) return part_at(v, slot);
  if (is_try) return lumo_omit_value_c;
  return pending_element(v, slot);
}

Value any_part(Value parent, size_t slot) {
  if (is_list_kind(parent->kind)) return typed_any(lumo_anyone_value_c, element_type(parent->type));
  const bool has_fields = is_record_kind(parent->kind) || parent->kind == lumo_type_kind_union;
  if (!has_fields || slot >= field_count(parent->type)) return lumo_anyone_value_c;
  const lumo_field_info_t& field = field_info(parent->type)[slot];
  return typed_any(is_optional(field) ? lumo_anyornone_value_c : lumo_anyone_value_c, field.type);
}

Value read_alternative(Value v, long index, const char* name) {
  if (v->form != Form::choice || v->index < 0)
    fault("no alternative of the union '%s' is chosen", type_name(v->type));
  if (v->index != index) {
    const lumo_field_info_t* fields = field_info(v->type);
    fault("alternative '%s' of union '%s' is not chosen, but '%s'", name, type_name(v->type),
          fields[v->index].name);
  }
  return part_at(v, 0);
}

// What is asked for most: a part that a record or list has. Null for all else.
Value plain_part(Value v, unsigned long index) {
  const bool is_plain =
      v && !v->dynamic &&
      (v->form == Form::fields || (v->form == Form::vector && v->kind != lumo_type_kind_array));
  Value part = is_plain && index < v->parts.size ? v->parts.data[index] : nullptr;
  return part && part->form != Form::special && part->form != Form::unset ? part : nullptr;
}

Value get_part(Value value, unsigned long index, bool is_try) {
  if (Value part = plain_part(value, index)) return part;
  Value v = readable(value);
  if (is_special(v, Special::anyornone)) {
    if (is_try) return lumo_omit_value_c;
    fault("a part of a template that may be omitted is used");
  }
  if (v->form == Form::special) return any_part(v, index);
  if (is_list_kind(v->kind)) return read_element(v, slot_of(v, index), is_try);
  if (v->kind == lumo_type_kind_union) {
    if (is_try && (v->form != Form::choice || v->index != static_cast<long>(index))) return lumo_omit_value_c;
    return read_alternative(v, static_cast<long>(index), "");
  }
  if (!is_record_kind(v->kind)) fault("a value of type '%s' has no parts", type_name(v->type));
  return read_field(v, index);
}

// What is made without naming a field has none of those that it need not have.
void omit_all(Value record) {
  const lumo_field_info_t* fields = field_info(record->type);
  if (record->dynamic || !is_blank(record) || !fields) return;
  for (size_t i = 0; i < record->parts.size; ++i)
    if (is_optional(fields[i])) store_part(record, i, lumo_omit_value_c);
}

void check_alternative(Value v, unsigned long index) {
  open_structure(v);
  if (v->kind != lumo_type_kind_union) fault("'%s' is no union type", type_name(v->type));
  if (index >= field_count(v->type)) fault("union '%s' has no alternative %lu", type_name(v->type), index);
}

Value choose(Value v, unsigned long index) {
  prepare_write(v);
  check_alternative(v, index);
  if (v->index != static_cast<long>(index) || v->parts.size != 1) {
    resize_parts(v, 0);
    v->index = static_cast<long>(index);
    resize_parts(v, 1);
  }
  Value part = force_part(v, 0);
  part->label = field_info(v->type)[index].name;
  return part;
}

// What most records are made of: a number or string for a field that has nothing yet. False, with nothing
// done, for all else.
bool put_scalar(Value v, unsigned long index, Value element) {
  const bool is_plain = v && v->form == Form::fields && v->life != Life::fixed && !v->pending && element;
  if (!is_plain || index >= v->parts.size || v->parts.data[index]) return false;
  const lumo_type_info_struct_t* info = structure_of(v->type);
  const bool is_field = info && info->kind != lumo_type_kind_component && info->field_info &&
                        static_cast<long>(index) < info->number_of_fields;
  Value part = is_field ? new_scalar_part(v, info->field_info[index].type, element) : nullptr;
  if (!part) return false;
  part->label = info->field_info[index].name;
  v->parts.data[index] = part;
  check_written(part);
  return true;
}

// Vectors grow to take the element. A whole that becomes its own part is copied before it has the part.
void assign_part(Value v, unsigned long index, Value element) {
  if (put_scalar(v, index, element)) return;
  prepare_write(v);
  if (is_within(v, element)) element = copy_value(element, lumo_temp_alloc_c);
  if (v->kind == lumo_type_kind_union) {
    Value part = choose(v, index);
    if (element != lumo_not_used_value_c) lumo_value_assign(part, element, current_task);
    return;
  }
  open_structure(v);
  size_t slot = slot_of(v, index);
  if (v->form == Form::vector) {
    if (slot >= most_elements) fault("index %zu is too large", slot);
    make_room(v, slot);
  }
  if (slot >= v->parts.size) fault("type '%s' has no field %zu", type_name(v->type), slot);
  store_part(v, slot, element);
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_value_field_by_index(lumo_value_t value, unsigned long index, lumo_context_t) {
  return get_part(value, index, false);
}

lumo_value_t lumo_value_try_field_by_index(lumo_value_t value, unsigned long index, lumo_context_t) {
  if (!value || is_omit(value) || value->form == Form::unset) return lumo_omit_value_c;
  return get_part(value, index, true);
}

lumo_value_t lumo_value_vector_element(lumo_value_t value, unsigned long index, lumo_context_t) {
  return get_part(value, index, false);
}

lumo_value_t lumo_value_field_by_index_lhs(lumo_value_t value, unsigned long index, lumo_context_t) {
  check_writable(value);
  if (value->kind == lumo_type_kind_union) return choose(value, index);
  open_structure(value);
  if (value->form == Form::vector) {
    const size_t slot = slot_of(value, index);
    const bool is_there = slot < value->parts.size && !is_behind_open_end(value, slot);
    return is_there ? force_part(value, slot) : pending_element(value, slot);
  }
  return written_field(value, index);
}

lumo_value_t lumo_value_field_by_name(lumo_value_t value, const char* name, lumo_context_t) {
  Value v = readable(value);
  if (v->form == Form::special && v->life == Life::fixed) return get_part(v, 0, false);
  long index = field_index(v->type, name);
  if (index < 0) fault("type '%s' has no field '%s'", type_name(v->type), name);
  if (v->form == Form::special) return any_part(v, static_cast<size_t>(index));
  if (v->kind == lumo_type_kind_union) return read_alternative(v, index, name);
  return read_field(v, static_cast<size_t>(index));
}

lumo_value_t lumo_value_set_omit(lumo_value_t value, unsigned long index, lumo_context_t) {
  assign_part(value, index, lumo_omit_value_c);
  return value;
}

lumo_value_t lumo_value_instantiate_omitted_field_value(lumo_value_t value, unsigned long index,
                                                        lumo_context_t context) {
  return lumo_value_field_by_index_lhs(value, index, context);
}

lumo_value_t lumo_value_set_union_alternative_by_index(lumo_value_t value, unsigned long index,
                                                       lumo_context_t) {
  return choose(value, index);
}

lumo_value_t lumo_value_try_set_union_alternative_by_index(lumo_value_t value, unsigned long index,
                                                           lumo_context_t) {
  check_writable(value);
  check_alternative(value, index);
  if (value->dynamic || value->index == static_cast<long>(index)) return choose(value, index);
  return pending_field(value, index);
}

lumo_value_t lumo_value_set_union_alternative_by_name(lumo_value_t value, const char* name, lumo_context_t) {
  const long index = field_index(value->type, name);
  if (index < 0) {
    refuse("type '%s' has no alternative '%s'", type_name(value->type), name);
    return value;
  }
  return choose(value, static_cast<unsigned long>(index));
}

lumo_value_t lumo_value_union_value(lumo_value_t value, lumo_context_t) {
  Value v = readable(value);
  if (v->form == Form::special) return lumo_anyone_value_c;
  if (v->form != Form::choice || v->index < 0)
    fault("no alternative of the union '%s' is chosen", type_name(v->type));
  return force_part(v, 0);
}

long lumo_value_union_index(lumo_value_t value, lumo_context_t) {
  Value v = readable(value);
  return v->form == Form::choice ? v->index : -1;
}

void lumo_value_set_vector_size(lumo_value_t value, unsigned long size, lumo_context_t) {
  prepare_write(value);
  if (size >= most_elements) fault("a list of %lu elements is too large", size);
  if (value->dynamic && value->form != Form::vector) clear_contents(value);
  open_structure(value);
  if (value->form != Form::vector) fault("a value of type '%s' has no elements", type_name(value->type));
  begin_value(value);
  resize_parts(value, value->kind == lumo_type_kind_array ? array_length(value->type) : size);
  check_length(value);
}

void lumo_value_set_vector_empty(lumo_value_t value, lumo_context_t) {
  prepare_write(value);
  if (is_record_kind(value->kind)) {
    open_structure(value);
    return omit_all(value);
  }
  if (value->dynamic && value->form != Form::vector) clear_contents(value);
  open_structure(value);
  if (value->form == Form::vector && value->kind != lumo_type_kind_array) resize_parts(value, 0);
  check_written(value);
}

unsigned long lumo_value_vector_size(lumo_value_t value, lumo_context_t) {
  Value v = readable(value);
  if (v->form == Form::special) fault("the size of a template is not known");
  if (v->form == Form::vector || v->form == Form::fields) return v->parts.size;
  const bool is_list = v->kind == lumo_type_kind_recordof || v->kind == lumo_type_kind_setof;
  if (v->form == Form::unset && is_list) return 0;  // none yet
  fault("a value of type '%s' has no elements", type_name(v->type));
}

void lumo_value_add_vector_element(lumo_value_t value, lumo_value_t element, lumo_context_t) {
  prepare_write(value);
  open_structure(value);
  if (value->form != Form::vector) fault("a value of type '%s' has no elements", type_name(value->type));
  resize_parts(value, value->parts.size + 1);
  store_part(value, value->parts.size - 1, element);
}

void lumo_value_assign_vector_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                      lumo_context_t) {
  assign_part(value, index, element);
}

void lumo_value_assign_vector_element_partial(lumo_value_t value, unsigned long index, lumo_value_t element,
                                              lumo_context_t) {
  assign_part(value, index, element);
}

// A template without contents tells that a field of a component may hold templates.
void lumo_value_init_vector_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                    lumo_context_t context) {
  const bool declares =
      value->kind == lumo_type_kind_component && element && element->dynamic && element->form == Form::unset;
  if (value->kind == lumo_type_kind_record || value->kind == lumo_type_kind_set) begin_value(value);
  if (!declares) return assign_part(value, index, element);
  Value part = lumo_value_field_by_index(value, index, context);
  clear_contents(part);
  part->dynamic = true;
  part->restriction = element->restriction;
}

void lumo_value_init_vector_element_partial(lumo_value_t value, unsigned long index, lumo_value_t element,
                                            lumo_context_t) {
  assign_part(value, index, element);
}
