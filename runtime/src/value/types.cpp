#include "value/types.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>
#include <string_view>
#include <unordered_map>

#include "value/error.h"
#include "value/value.h"

namespace lumos {

namespace {

// Longer chains are taken for cyclic tables.
constexpr int chain_limit = 1000;

// Bounds of an array by the names of their rows.
long bound(lumo_type_t type, const char* name, long otherwise) {
  const lumo_type_info_struct_t* info = structure_of(type);
  if (!info || info->kind != lumo_type_kind_array || !info->enum_or_array_info) return otherwise;
  for (int i = 0; i < 2; ++i) {
    const lumo_enum_or_array_info_t& row = info->enum_or_array_info[i];
    // The two names differ in their first letter behind the bracket.
    if (row.name && row.name[1] == name[1]) return row.number;
  }
  return otherwise;
}

}  // namespace

bool takes_null_address(lumo_type_t type) {
  for (int i = 0; i < chain_limit && type && type->type_info; ++i) {
    if (type->type_info->kind == lumo_type_kind_address || std::string_view(type_name(type)) == "address")
      return true;
    type = type->type_info->parent_type;
  }
  return false;
}

lumo_type_t type_behind(lumo_type_t type) {
  for (int i = 0; i < chain_limit && type && type->type_info; ++i) {
    const lumo_type_info_struct_t* info = type->type_info;
    if (info->kind == lumo_type_kind_template && info->template_info) {
      type = static_cast<const lumo_template_info_t*>(info->template_info)->base_type;
    } else if (info->kind == lumo_type_kind_address && info->field_info) {
      type = info->field_info[0].type;
    } else {
      break;
    }
  }
  return type;
}

const lumo_type_info_struct_t* root_behind(lumo_type_t type) {
  const lumo_type_info_struct_t* info = nullptr;
  for (int i = 0; i < chain_limit; ++i) {
    type = plain_type(type);
    if (!type || !type->type_info) break;
    info = type->type_info;
    if (!info->parent_type) break;
    type = info->parent_type;
  }
  return info;
}

namespace {
// A name without the module that stands before a type which is an alternative of anytype.
const char* short_name(const lumo_field_info_t& field) {
  const char* name = field.name ? field.name : "";
  const char* point = std::strrchr(name, '.');
  return point ? point + 1 : name;
}

// The first field of a short name, from a place on; -1 if there is none.
long find_short_name(lumo_type_t type, const char* name, size_t from) {
  const lumo_field_info_t* fields = field_info(type);
  const size_t count = fields ? field_count(type) : 0;
  for (size_t i = from; i < count; ++i)
    if (fields[i].name && !std::strcmp(short_name(fields[i]), name)) return static_cast<long>(i);
  return -1;
}

// The only one of that short name; -1 if there is none or another.
long field_of_short_name(lumo_type_t type, const char* name) {
  const long first = find_short_name(type, name, 0);
  const bool is_only = first < 0 || find_short_name(type, name, static_cast<size_t>(first) + 1) < 0;
  return is_only ? first : -1;
}
}  // namespace

namespace {

// The row of that key, -1 if there is none. Where there are many, a table tells where to look; it remembers
// hashes only, so that what it says is looked at in any case.
template <class Row, class Key, class KeyOf>
long row_of(const Row* rows, size_t count, Key key, KeyOf key_of) {
  constexpr size_t many = 16;
  if (rows && count > many) {
    static auto& tables = *new std::unordered_map<const Row*, std::unordered_map<size_t, size_t>>;
    const std::hash<Key> hash_of;
    auto& table = tables[rows];
    if (table.empty())
      for (size_t i = 0; i < count; ++i) table.try_emplace(hash_of(key_of(rows[i])), i);
    const auto found = table.find(hash_of(key));
    if (found != table.end() && found->second < count && key_of(rows[found->second]) == key)
      return static_cast<long>(found->second);
  }
  for (size_t i = 0; rows && i < count; ++i)
    if (key_of(rows[i]) == key) return static_cast<long>(i);
  return -1;
}

template <class Row>
long row_named(const Row* rows, size_t count, std::string_view name) {
  return row_of(rows, count, name, [](const Row& row) { return std::string_view(row.name ? row.name : ""); });
}

}  // namespace

long field_index(lumo_type_t type, const char* name) {
  const long exact = row_named(field_info(type), field_count(type), name);
  return exact >= 0 ? exact : field_of_short_name(type, name);
}

const char* shown_name(lumo_type_t type, size_t index) {
  const lumo_field_info_t& field = field_info(type)[index];
  const char* name = short_name(field);
  return name == field.name || !field.name || field_of_short_name(type, name) >= 0 ? name : field.name;
}

namespace {
std::span<const lumo_enum_or_array_info_t> literals(lumo_type_t type) {
  const lumo_type_info_struct_t* info = structure_of(type);
  if (!info || info->kind != lumo_type_kind_enumerated || !info->enum_or_array_info) return {};
  return {info->enum_or_array_info, static_cast<size_t>(std::max(0L, long{info->number_of_fields}))};
}
}  // namespace

long enum_number(lumo_type_t type, const char* name, size_t length) {
  const auto rows = literals(type);
  const long place = row_named(rows.data(), rows.size(), {name, length});
  return place < 0 ? -1 : rows[static_cast<size_t>(place)].number;
}

const char* enum_name(lumo_type_t type, long number) {
  const auto rows = literals(type);
  // Mostly the number is the place.
  auto place = static_cast<size_t>(number);
  if (place >= rows.size() || rows[place].number != number)
    place = static_cast<size_t>(row_of(rows.data(), rows.size(), number, [](const auto& row) { return row.number; }));
  return place < rows.size() ? rows[place].name : nullptr;
}

lumo_type_t element_type(lumo_type_t type) {
  const lumo_field_info_t* fields = field_info(type);
  if (!fields) return lumo_undefined_type;
  if (!fields[0].type && field_count(type) > 1) return fields[1].type;
  return fields[0].type;
}

// How many attributes stand in each table.
static std::unordered_map<const lumo_encoding_attr_struct_t*, unsigned long>& attribute_counts() {
  static auto* all = new std::unordered_map<const lumo_encoding_attr_struct_t*, unsigned long>;
  return *all;
}

std::span<const lumo_encoding_attr_struct_t> attributes(const lumo_encoding_attr_struct_t* table) {
  const auto found = attribute_counts().find(table);
  return {table, found == attribute_counts().end() ? 0 : found->second};
}

size_t array_length(lumo_type_t type) {
  long length = bound(type, lumo_type_array_length_c, 0);
  return length > 0 ? static_cast<size_t>(length) : 0;
}

long array_base(lumo_type_t type) {
  return bound(type, lumo_type_array_base_index_c, 0);
}

bool is_checked_somewhere(lumo_type_t type) {
  for (int i = 0; i < chain_limit; ++i) {
    type = plain_type(type);
    if (!type || !type->type_info) return false;
    if (type->type_info->kind == lumo_type_kind_component) return false;
    if (type->type_info->check_function) return true;
    if (!type->type_info->parent_type) return false;
    type = type->type_info->parent_type;
  }
  return false;
}

lumo_type_t record_type(lumo_type_t type) {
  lumo_type_kind_t kind = base_kind(type);
  if (kind != lumo_type_kind_port_ref && kind != lumo_type_kind_component_ref) return type;
  const lumo_field_info_t* fields = field_info(type);
  return fields ? fields[0].type : type;
}

namespace {

// What a type without a name of its own is.
const char* kind_words(lumo_type_kind_t kind) {
  static const char* const words[] = {"type",
                                      "integer",
                                      "float",
                                      "boolean",
                                      "objid",
                                      "verdicttype",
                                      "bitstring",
                                      "hexstring",
                                      "octetstring",
                                      "charstring",
                                      "universal charstring",
                                      "record",
                                      "record of",
                                      "set",
                                      "set of",
                                      "enumerated",
                                      "union",
                                      "address",
                                      "port",
                                      "component",
                                      "array",
                                      "template",
                                      "timer",
                                      "signature",
                                      "char",
                                      "universal char",
                                      "default",
                                      "component",
                                      "port",
                                      "function",
                                      "testcase",
                                      "altstep"};
  const size_t number = static_cast<size_t>(kind);
  return words[number < std::size(words) ? number : 0];
}

// Generated code gives names that users do not know to what stands in line.
bool is_internal(const char* name) {
  return !std::strncmp(name, "vexa_", 5);
}

}  // namespace

const char* type_name(lumo_type_t type) {
  if (!type) return "no type";
  const lumo_type_info_struct_t* info = type->type_info;
  const char* name = type->name ? type->name : info && info->name ? info->name : "unnamed type";
  if (!is_internal(name)) return name;
  lumo_type_t plain = plain_type(type);
  if (plain && plain != type) return type_name(plain);
  const char* root = root_of(type) ? root_of(type)->name : nullptr;
  return root && !is_internal(root) ? root : kind_words(base_kind(type));
}

}  // namespace lumos

using namespace lumos;

lumo_boolean_t lumo_type_is_equal(lumo_type_t a, lumo_type_t b, lumo_context_t) {
  if (a == b) return true;
  return a && b && a->type_info && a->type_info == b->type_info;
}

lumo_type_kind_t lumo_type_kind(lumo_type_t type, lumo_context_t) {
  return base_kind(type);
}

const char* lumo_type_definition_module(lumo_type_t type, lumo_context_t) {
  if (!type) return nullptr;
  return type->module ? type->module : type->type_info ? type->type_info->module : nullptr;
}

const char* lumo_type_definition_name(lumo_type_t type, lumo_context_t) {
  if (!type) return nullptr;
  return type->name ? type->name : type->type_info ? type->type_info->name : nullptr;
}

lumo_type_t lumo_type_template_base_type(lumo_type_t type, lumo_context_t) {
  const lumo_template_info_t* info = template_info(type);
  return info ? info->base_type : type;
}

long lumo_type_enum_number_by_name(lumo_type_t type, const char* name, lumo_context_t) {
  return enum_number(type, name, std::strlen(name));
}

long lumo_type_field_index(lumo_type_t type, const char* name, lumo_context_t) {
  return field_index(type, name);
}

lumo_value_t lumo_type_field_default_value(lumo_type_t type, unsigned long index, lumo_context_t) {
  const lumo_field_info_t* fields = field_info(type);
  if (!fields || index >= field_count(type)) fault("type '%s' has no field %lu", type_name(type), index);
  return fields[index].default_value ? fields[index].default_value : lumo_no_value_c;
}

void lumo__type_resolve_parent_info(lumo_type_t type, lumo_context_t) {
  if (!type || !type->type_info || type->type_info->resolved) return;
  lumo_type_info_struct_t* info = type->type_info;
  lumo_type_t parent = plain_type(info->parent_type);
  if (!parent || !parent->type_info) return;
  if (!parent->type_info->resolved) lumo__type_resolve_parent_info(parent, nullptr);
  info->kind = parent->type_info->kind;
  info->number_of_fields = parent->type_info->number_of_fields;
  info->field_info = parent->type_info->field_info;
  info->enum_or_array_info = parent->type_info->enum_or_array_info;
  info->resolved = true;
}

void lumo_attributes_register(const lumo_encoding_attr_struct_t* attributes, unsigned long count,
                              lumo_context_t) {
  attribute_counts()[attributes] = count;
}

namespace {

// Each module that uses a type has a description of its own, and all of them share the information.
struct Codecs {
  lumo_encoder_t encoder = nullptr;
  lumo_decoder_t decoder = nullptr;
};

Codecs& codecs_of(const lumo_type_info_struct_t* info) {
  static auto* all = new std::unordered_map<const lumo_type_info_struct_t*, Codecs>;
  return (*all)[info];
}

}  // namespace

void lumo_type_set_encoder(lumo_type_t type, lumo_encoder_t encoder, lumo_context_t) {
  if (!type) return;
  type->encoder = encoder;
  if (type->type_info) codecs_of(type->type_info).encoder = encoder;
}

void lumo_type_set_decoder(lumo_type_t type, lumo_decoder_t decoder, lumo_context_t) {
  if (!type) return;
  type->decoder = decoder;
  if (type->type_info) codecs_of(type->type_info).decoder = decoder;
}

lumo_encoder_t lumo_type_get_encoder(lumo_type_t type, lumo_context_t) {
  if (!type || type->encoder || !type->type_info) return type ? type->encoder : nullptr;
  return codecs_of(type->type_info).encoder;
}

lumo_decoder_t lumo_type_get_decoder(lumo_type_t type, lumo_context_t) {
  if (!type || type->decoder || !type->type_info) return type ? type->decoder : nullptr;
  return codecs_of(type->type_info).decoder;
}
