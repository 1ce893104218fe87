// Types and values for tests of the run-time library, and runs that may fault.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "run/component.h"
#include "text/log.h"
#include "lumos.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos::testing {

// A type with its tables, in the form that generated code has.
class TypeTable {
 public:
  TypeTable(const char* name, lumo_type_kind_t kind, std::vector<lumo_field_info_t> fields = {},
            std::vector<lumo_enum_or_array_info_t> rows = {})
      : fields_(std::move(fields)), rows_(std::move(rows)) {
    long count = static_cast<long>(kind == lumo_type_kind_enumerated ? rows_.size() : fields_.size());
    info_ = {name,    "Test",  kind,  nullptr,        true,         nullptr, nullptr,
             nullptr, nullptr, count, fields_.data(), rows_.data(), nullptr};
    type_ = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &info_};
  }
  TypeTable(const TypeTable&) = delete;
  operator lumo_type_t() { return &type_; }
  lumo_type_info_struct_t& info() { return info_; }

  void make_subtype_of(lumo_type_t parent, lumo_check_function_t check) {
    info_.parent_type = parent;
    info_.resolved = false;
    info_.number_of_fields = -1;
    info_.check_function = reinterpret_cast<void*>(check);
  }

 private:
  std::vector<lumo_field_info_t> fields_;
  std::vector<lumo_enum_or_array_info_t> rows_;
  lumo_type_info_struct_t info_;
  lumo_type_struct_t type_;
};

inline lumo_field_info_t mandatory(const char* name, lumo_type_t type) {
  return {name, lumo_field_property_mandatory_c, type, nullptr};
}
inline lumo_field_info_t optional(const char* name, lumo_type_t type) {
  return {name, lumo_field_property_optional_c, type, nullptr};
}

// Runs the function as a guarded task; the text of the fault, or empty.
inline std::string fault_of(const std::function<void()>& function) {
  std::string log;
  set_log_times(false);
  set_log_kinds("error");
  capture_log(&log);
  auto call = [](void* argument) { (*static_cast<const std::function<void()>*>(argument))(); };
  bool good = run_guarded("", call, const_cast<std::function<void()>*>(&function));
  capture_log(nullptr);
  if (good) return "";
  size_t start = log.find("error ");
  return start == std::string::npos ? "?" : log.substr(start + 6, log.size() - start - 7);
}

// A value from its notation.
inline Value value(lumo_type_t type, const std::string& text) {
  Value v = make_root(type, lumo_temp_alloc_c);
  std::string error;
  return read_value(v, text, error) ? v : nullptr;
}

// A dynamic template of the type, empty.
inline Value dynamic(lumo_type_t type) {
  return lumo_type_instantiate_dynamic_template(type, lumo_temp_alloc_c, 0, nullptr);
}

inline Value integer(lumo_long_integer_t n) {
  return lumo_value_set_integer(make_root(lumo_integer_type, lumo_temp_alloc_c), n, nullptr);
}
inline Value text(const char* t) {
  return lumo_value_set_string(make_root(lumo_charstring_type, lumo_temp_alloc_c), t, nullptr);
}

// The types that most tests use.
struct Types {
  TypeTable color{"Color", lumo_type_kind_enumerated, {}, {{"red", 0}, {"green", 5}, {"blue", 2}}};
  TypeTable list{
      "List", lumo_type_kind_recordof, {mandatory(lumo_type_array_contained_type_c, lumo_integer_type)}};
  TypeTable bag{
      "Bag", lumo_type_kind_setof, {mandatory(lumo_type_array_contained_type_c, lumo_integer_type)}};
  TypeTable array{
      "Array",
      lumo_type_kind_array,
      {mandatory(lumo_type_array_contained_type_c, lumo_integer_type), mandatory("", lumo_integer_type)},
      {{lumo_type_array_length_c, 3}, {lumo_type_array_base_index_c, 5}}};
  TypeTable inner{"Inner",
                  lumo_type_kind_record,
                  {mandatory("n", lumo_integer_type), optional("s", lumo_charstring_type)}};
  TypeTable choice{
      "Choice", lumo_type_kind_union, {mandatory("i", lumo_integer_type), mandatory("r", inner)}};
  TypeTable outer{
      "Outer", lumo_type_kind_record, {mandatory("in", inner), mandatory("l", list), optional("c", choice)}};
  TypeTable small{"Small", lumo_type_kind_integer};
  Types() {
    small.make_subtype_of(lumo_integer_type,
                          [](lumo_type_t type, lumo_value_t v, lumo_context_t c) -> lumo_boolean_t {
                            return lumo_type_check_builtin(type, v, c) && lumo_value_get_integer(v, c) < 10;
                          });
  }
};

}  // namespace lumos::testing
