// Questions about type descriptions: what kind a type is behind references, templates and
// subtypes, where its fields stand, and when two types are the same.
#pragma once

#include <span>

#include "lumos.h"

namespace lumos {

// The type behind templates and redefinitions of address.
lumo_type_t plain_type(lumo_type_t type);
lumo_type_kind_t base_kind(lumo_type_t type);
// The description that holds the fields: that of the root of a chain of subtypes.
const lumo_type_info_struct_t* structure_of(lumo_type_t type);
// The description by which equal types are known.
const lumo_type_info_struct_t* root_of(lumo_type_t type);
size_t field_count(lumo_type_t type);
lumo_field_info_t* field_info(lumo_type_t type);  // nullptr if there are none
// Both -1 if not found.
long field_index(lumo_type_t type, const char* name);
long enum_number(lumo_type_t type, const char* name, size_t length);
const char* enum_name(lumo_type_t type, long number);  // nullptr if there is none
lumo_type_t element_type(lumo_type_t type);
// The rows of a table of attributes.
std::span<const lumo_encoding_attr_struct_t> attributes(const lumo_encoding_attr_struct_t* table);
size_t array_length(lumo_type_t type);
long array_base(lumo_type_t type);
// Whether the type or a parent has a check function.
bool has_check(lumo_type_t type);
// The record type behind a port or component reference type.
lumo_type_t record_type(lumo_type_t type);
const char* type_name(lumo_type_t type);
const lumo_template_info_t* template_info(lumo_type_t type);

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
inline bool is_optional(const lumo_field_info_t& f) {
  return f.property & lumo_field_property_optional_c;
}

}  // namespace lumos
