// Equality and order of values, and whether a value belongs to a type.
#include <algorithm>
#include <cstring>
#include <functional>

#include "value/characters.h"
#include "value/error.h"
#include "value/scratch.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

Value comparable_whole(Value v) {
  if (!v) fault("use of a value that is not initialized");
  if (v->form != Form::special && is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  v = settled(v);
  if (is_blank(v))
    fault("use of a value that is not initialized%s%s", v->label ? ": " : "", v->label ? v->label : "");
  return v;
}

inline Value comparable(Value v) {
  return v && is_scalar(v->form) && !v->dynamic ? v : comparable_whole(v);
}

bool is_text(Value v) {
  return is_text_kind(v->kind) && (v->form == Form::string || v->form == Form::wide_string ||
                                   v->form == Form::character || v->form == Form::wide_character);
}

// Special values are equal to themselves; null is also the number 0 of its kind.
bool equal_specials(Value a, Value b) {
  if (a->form != Form::special) std::swap(a, b);
  if (b->form == Form::special) return a->special == b->special;
  if (a->special == Special::null_component) return b->form == Form::component && b->integer == 0;
  if (a->special == Special::null_default) return b->form == Form::default_ref && b->integer == 0;
  return false;
}

// Null where a part has no value.
Value part_if_any(Value v, size_t i) {
  Value part = v->parts.data[i];
  if (part && part->form != Form::unset) return part;
  const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
  if (fields && fields[i].default_value) return fields[i].default_value;
  if (fields && is_optional(fields[i])) return lumo_omit_value_c;
  return part && is_record_kind(part->kind) ? part : nullptr;
}

Value part_or_omit(Value v, size_t i) {
  if (Value part = part_if_any(v, i)) return part;
  const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
  fault("a part of a value is not initialized%s%s", fields && fields[i].name ? ": " : "",
        fields && fields[i].name ? fields[i].name : "");
}

bool equal_in_order(Value a, Value b) {
  if (a->parts.size != b->parts.size) return false;
  check_stack();
  for (size_t i = 0; i < a->parts.size; ++i)
    if (!equal_values(part_or_omit(a, i), part_or_omit(b, i))) return false;
  return true;
}

uint64_t hash_of(Value v);

constexpr uint64_t mixed(uint64_t hash, uint64_t more) {
  hash = (hash ^ more) * 0x9E3779B97F4A7C15u;
  return hash ^ hash >> 29;
}

uint64_t hash_of_text(Value v) {
  const Characters text(v);
  uint64_t hash = text.size();
  for (size_t i = 0; i < text.size(); ++i) hash = mixed(hash, text[i]);
  return hash;
}

uint64_t hash_of_parts(Value v) {
  check_stack();
  uint64_t hash = v->parts.size;
  for (size_t i = 0; i < v->parts.size; ++i) {
    const uint64_t more = hash_of(part_if_any(v, i));
    // A list may be one whose order is of no matter.
    hash = v->form == Form::vector ? hash + mixed(1, more) : mixed(hash, more);
  }
  return hash;
}

// The same for values that are equal. Where a part has no value, which comparing it may be a fault, it has
// one nevertheless.
uint64_t hash_of(Value v) {
  if (!v) return 0;
  if (v->dynamic || v->form == Form::external) v = comparable(v);
  switch (v->form) {
    case Form::special:
      return is_special(v, Special::null_component) || is_special(v, Special::null_default)
                 ? mixed(0, 0)
                 : static_cast<uint64_t>(v->special);
    case Form::integer:
    case Form::enumerated:
    case Form::component:
    case Form::default_ref:
      return mixed(0, static_cast<uint64_t>(v->integer));
    case Form::real:
      return std::hash<double>()(v->real);
    case Form::boolean:
      return v->boolean;
    case Form::verdict:
      return v->verdict;
    case Form::string:
    case Form::wide_string:
    case Form::character:
    case Form::wide_character:
      return hash_of_text(v);
    case Form::object_id: {
      uint64_t hash = v->ids.size;
      for (size_t i = 0; i < v->ids.size; ++i) hash = mixed(hash, static_cast<uint64_t>(v->ids.data[i]));
      return hash;
    }
    case Form::fields:
    case Form::vector:
      return hash_of_parts(v);
    case Form::choice:
      return mixed(static_cast<uint64_t>(v->index), hash_of_parts(v));
    default:
      return 0;
  }
}

struct HashedPart {
  uint64_t hash;
  size_t place;
};

void hash_parts(Value v, Scratch<HashedPart>& hashed) {
  for (size_t i = 0; i < v->parts.size; ++i) hashed[i] = {hash_of(part_if_any(v, i)), i};
  std::sort(hashed.data(), hashed.data() + v->parts.size, [](const HashedPart& one, const HashedPart& other) {
    return one.hash < other.hash || (one.hash == other.hash && one.place < other.place);
  });
}

// Only elements of the same hash are compared. Equality is an equivalence, so any free equal element will do.
bool equal_in_any_order(Value a, Value b) {
  const size_t size = a->parts.size;
  if (size != b->parts.size) return false;
  TempScope scope;
  Scratch<HashedPart> of_a(size + 1), of_b(size + 1);
  hash_parts(a, of_a);
  hash_parts(b, of_b);
  for (size_t i = 0; i < size; ++i)
    if (of_a[i].hash != of_b[i].hash) return false;
  Scratch<char> used(size + 1);
  for (size_t i = 0, first = 0; i < size; ++i) {
    if (of_a[i].hash != of_a[first].hash) first = i;
    size_t k = first;
    for (; k < size && of_b[k].hash == of_a[i].hash; ++k)
      if (!used[k] && equal_values(part_or_omit(a, of_a[i].place), part_or_omit(b, of_b[k].place))) break;
    if (k == size || of_b[k].hash != of_a[i].hash) return false;
    used[k] = 1;
    // Many are equal to each other.
    while (first < i && used[first]) ++first;
  }
  return true;
}

bool equal_texts(Value a, Value b) {
  if (a->form == Form::string && b->form == Form::string)
    return a->text.size == b->text.size && !std::memcmp(a->text.data, b->text.data, a->text.size);
  return compare(Characters(a), Characters(b)) == 0;
}

int compare_object_ids(Value a, Value b) {
  size_t common = a->ids.size < b->ids.size ? a->ids.size : b->ids.size;
  for (size_t i = 0; i < common; ++i)
    if (a->ids.data[i] != b->ids.data[i]) return a->ids.data[i] < b->ids.data[i] ? -1 : 1;
  if (a->ids.size == b->ids.size) return 0;
  return a->ids.size < b->ids.size ? -1 : 1;
}

bool equal_forms(Value a, Value b) {
  switch (a->form) {
    case Form::unset:
      return true;
    case Form::real:
      return a->real == b->real;
    case Form::boolean:
      return a->boolean == b->boolean;
    case Form::verdict:
      return a->verdict == b->verdict;
    case Form::integer:
    case Form::enumerated:
    case Form::component:
    case Form::default_ref:
      return a->integer == b->integer;
    case Form::object_id:
      return compare_object_ids(a, b) == 0;
    case Form::string:
      return a->kind == b->kind && equal_texts(a, b);
    case Form::fields:
      return equal_in_order(a, b);
    case Form::vector:
      return a->kind == lumo_type_kind_setof && b->kind == lumo_type_kind_setof ? equal_in_any_order(a, b)
                                                                                : equal_in_order(a, b);
    case Form::choice:
      return a->index == b->index && equal_in_order(a, b);
    case Form::port:
      return a->port == b->port;
    case Form::timer:
      return a->timer == b->timer;
    default:
      return false;
  }
}

int compare(Value a, Value b) {
  a = comparable(a);
  b = comparable(b);
  if (a->form == Form::real && b->form == Form::real) return a->real < b->real ? -1 : a->real > b->real;
  if (a->form == Form::object_id && b->form == Form::object_id) return compare_object_ids(a, b);
  if (is_text(a) && is_text(b)) return compare(Characters(a), Characters(b));
  if (a->form == b->form && (a->form == Form::integer || a->form == Form::enumerated))
    return a->integer < b->integer ? -1 : a->integer > b->integer;
  fault("values of the types '%s' and '%s' have no order", type_name(a->type), type_name(b->type));
}

// Types of the same structure: the same root, or fields of the same kinds.
bool fits(lumo_type_t type, Value v) {
  if (root_of(type) == root_of(v->type)) return true;
  lumo_type_kind_t kind = base_kind(type);
  if (kind == lumo_type_kind_undefined) return true;
  if (is_text_kind(kind) && is_text_kind(v->kind)) {
    if (kind == lumo_type_kind_universal_charstring || kind == v->kind) return true;
    if (kind == lumo_type_kind_charstring) return v->kind == lumo_type_kind_char;
    return kind == lumo_type_kind_universal_char && v->kind == lumo_type_kind_char;
  }
  if (is_record_kind(kind) && is_record_kind(v->kind)) return field_count(type) == field_count(v->type);
  if (is_list_kind(kind) && is_list_kind(v->kind)) return true;
  auto component = [](lumo_type_kind_t k) {
    return k == lumo_type_kind_component || k == lumo_type_kind_component_ref;
  };
  if (component(kind) && component(v->kind)) return true;
  if (kind == lumo_type_kind_enumerated && v->kind == kind) return false;
  if (kind == lumo_type_kind_union && v->kind == kind) return field_count(type) == field_count(v->type);
  return kind == v->kind;
}

bool is_specially_any_type(Value v) {
  return v->form == Form::special;
}

}  // namespace

namespace {

// Two of what most comparisons are about: integers, booleans and strings of one kind.
inline bool are_plain(Value a, Value b) {
  const bool is_form = a->form == Form::string || a->form == Form::integer || a->form == Form::boolean;
  return is_form && a->form == b->form && a->kind == b->kind && !a->dynamic && !b->dynamic;
}

inline bool equal_plain(Value a, Value b) {
  if (a->form == Form::string) return equal_texts(a, b);
  return a->form == Form::integer ? a->integer == b->integer : a->boolean == b->boolean;
}

}  // namespace

uint64_t hash_value(Value v) {
  return hash_of(v);
}

bool equal_values(Value a, Value b) {
  if (a && b && are_plain(a, b)) return equal_plain(a, b);
  if (a == b && a && is_complete(a) && !is_blank(a)) return true;
  a = comparable(a);
  b = comparable(b);
  if (a->form == Form::special || b->form == Form::special) return equal_specials(a, b);
  if (is_text(a) && is_text(b)) return equal_texts(a, b);
  return a->form == b->form && equal_forms(a, b);
}

}  // namespace lumos

using namespace lumos;

lumo_boolean_t lumo_is_equal(lumo_value_t a, lumo_value_t b, lumo_context_t) {
  return equal_values(a, b);
}
lumo_boolean_t lumo_is_greater(lumo_value_t a, lumo_value_t b, lumo_context_t) {
  return compare(a, b) > 0;
}
lumo_boolean_t lumo_is_lesser(lumo_value_t a, lumo_value_t b, lumo_context_t) {
  return compare(a, b) < 0;
}

lumo_boolean_t lumo_type_check_builtin(lumo_type_t type, lumo_value_t value, lumo_context_t) {
  if (!value) return false;
  return is_specially_any_type(value) || fits(type, settled(value));
}

lumo_boolean_t lumo_type_check(lumo_type_t type, lumo_value_t value, lumo_context_t context) {
  if (!value) return false;
  if (is_specially_any_type(value)) return true;
  // Who asks tells that the value is of another type; it may be one of several that are asked for.
  Quiet quiet;
  type = plain_type(type);
  for (int i = 0; i < 1000 && type && type->type_info; ++i) {
    const lumo_type_info_struct_t* info = type->type_info;
    if (info->check_function && info->kind != lumo_type_kind_component)
      return reinterpret_cast<lumo_check_function_t>(info->check_function)(type, value, context);
    if (!info->parent_type) break;
    type = plain_type(info->parent_type);
  }
  return fits(type, settled(value));
}

lumo_boolean_t lumo_type_check_char_range(lumo_value_t value, const char* bounds,
                                          unsigned long number_of_bounds, lumo_context_t) {
  Value v = comparable(value);
  return Characters(v).all([&](char32_t c) {
    for (unsigned long i = 0; i + 1 < number_of_bounds; i += 2)
      if (static_cast<unsigned char>(bounds[i]) <= c && c <= static_cast<unsigned char>(bounds[i + 1]))
        return true;
    return false;
  });
}

lumo_boolean_t lumo_type_check_universal_char_range(lumo_value_t value, const lumo_wide_char_t* bounds,
                                                    unsigned long number_of_bounds, lumo_context_t) {
  Value v = comparable(value);
  return Characters(v).all([&](char32_t c) {
    for (unsigned long i = 0; i + 1 < number_of_bounds; i += 2)
      if (code_of(bounds[i]) <= c && c <= code_of(bounds[i + 1])) return true;
    return false;
  });
}
