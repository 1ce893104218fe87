// Questions about type descriptions: what kind a type is behind references, templates and
// subtypes, where its fields stand, and when two types are the same.
#pragma once

#include <span>

#include "lumos.h"

namespace lumos {

// Much of what follows is asked several times for each value that is made: most types stand for themselves.
lumo_type_t type_behind(lumo_type_t type);
const lumo_type_info_struct_t* root_behind(lumo_type_t type);

// The type behind templates and redefinitions of address.
inline lumo_type_t plain_type(lumo_type_t type) {
  if (!type || !type->type_info) return type;
  const lumo_type_info_struct_t* info = type->type_info;
  if (info->kind == lumo_type_kind_template && info->template_info) {
    type = static_cast<const lumo_template_info_t*>(info->template_info)->base_type;
    if (!type || !type->type_info) return type;
    info = type->type_info;
  }
  return info->kind == lumo_type_kind_template || info->kind == lumo_type_kind_address ? type_behind(type)
                                                                                       : type;
}
inline lumo_type_kind_t base_kind(lumo_type_t type) {
  type = plain_type(type);
  return type && type->type_info ? type->type_info->kind : lumo_type_kind_undefined;
}
// The description by which equal types are known.
inline const lumo_type_info_struct_t* root_of(lumo_type_t type) {
  type = plain_type(type);
  if (!type || !type->type_info) return nullptr;
  return type->type_info->parent_type ? root_behind(type) : type->type_info;
}
// Whether both stand for one type, or one of them for a subtype of the other.
bool are_related(lumo_type_t a, lumo_type_t b);
// The description that holds the fields: that of the root of a chain of subtypes.
inline const lumo_type_info_struct_t* structure_of(lumo_type_t type) {
  return root_of(type);
}
// The tables of component records have count and fields two places behind those of other types.
inline size_t field_count(lumo_type_t type) {
  const lumo_type_info_struct_t* info = structure_of(type);
  if (!info) return 0;
  if (info->kind == lumo_type_kind_component) return reinterpret_cast<size_t>(info->enum_or_array_info);
  return info->number_of_fields > 0 ? static_cast<size_t>(info->number_of_fields) : 0;
}
// Null if there are none.
inline lumo_field_info_t* field_info(lumo_type_t type) {
  const lumo_type_info_struct_t* info = structure_of(type);
  if (!info) return nullptr;
  if (info->kind == lumo_type_kind_component) return static_cast<lumo_field_info_t*>(info->reserved_last);
  return info->field_info;
}
// Both -1 if not found.
long field_index(lumo_type_t type, const char* name);
// The name of a field; an alternative of anytype goes without its module where one alone has the name.
const char* shown_name(lumo_type_t type, size_t index);
long enum_number(lumo_type_t type, const char* name, size_t length);
const char* enum_name(lumo_type_t type, long number);  // nullptr if there is none
lumo_type_t element_type(lumo_type_t type);
// The rows of a table of attributes.
std::span<const lumo_encoding_attr_struct_t> attributes(const lumo_encoding_attr_struct_t* table);
size_t array_length(lumo_type_t type);
long array_base(lumo_type_t type);
// Whether the type or a parent has a check function.
bool is_checked_somewhere(lumo_type_t type);
inline bool has_check(lumo_type_t type) {
  const lumo_type_info_struct_t* info = type ? type->type_info : nullptr;
  if (!info) return false;
  const bool is_plain = !info->check_function && !info->parent_type &&
                        info->kind != lumo_type_kind_template && info->kind != lumo_type_kind_address;
  return !is_plain && is_checked_somewhere(type);
}
// Whether the type is that of addresses, whatever it is defined as, or a subtype of it.
bool takes_null_address(lumo_type_t type);
// The record type behind a port or component reference type.
lumo_type_t record_type(lumo_type_t type);
const char* type_name(lumo_type_t type);
inline const lumo_template_info_t* template_info(lumo_type_t type) {
  if (!type || !type->type_info || type->type_info->kind != lumo_type_kind_template) return nullptr;
  return static_cast<const lumo_template_info_t*>(type->type_info->template_info);
}

inline bool is_string_kind(lumo_type_kind_t k) {
  return k == lumo_type_kind_charstring || k == lumo_type_kind_bitstring || k == lumo_type_kind_hexstring ||
         k == lumo_type_kind_octetstring || k == lumo_type_kind_universal_charstring;
}
inline bool is_text_kind(lumo_type_kind_t k) {
  return k == lumo_type_kind_charstring || k == lumo_type_kind_universal_charstring ||
         k == lumo_type_kind_char || k == lumo_type_kind_universal_char;
}
inline bool is_list_kind(lumo_type_kind_t k) {
  return k == lumo_type_kind_recordof || k == lumo_type_kind_setof || k == lumo_type_kind_array;
}
inline bool is_record_kind(lumo_type_kind_t k) {
  return k == lumo_type_kind_record || k == lumo_type_kind_set || k == lumo_type_kind_signature ||
         k == lumo_type_kind_component;
}
// What a template in the field or parameter is restricted to; 0 for nothing.
constexpr unsigned restricted_to_omit = 1, restricted_to_value = 2, restricted_to_present = 3;
inline unsigned restriction_of(const lumo_field_info_t& f) {
  return f.property & lumo_field_property_omit_templ_restr_c      ? restricted_to_omit
         : f.property & lumo_field_property_value_templ_restr_c   ? restricted_to_value
         : f.property & lumo_field_property_present_templ_restr_c ? restricted_to_present
                                                                  : 0;
}
inline bool is_optional(const lumo_field_info_t& f) {
  return f.property & lumo_field_property_optional_c;
}

}  // namespace lumos
