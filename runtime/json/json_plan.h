// What the attributes of a type say about its form in JSON.
#pragma once

#include <string>
#include <vector>

#include "value/value.h"

namespace lumos {

struct JsonPlan;

struct JsonField {
  std::string name;  // of the member
  const JsonPlan* plan = nullptr;
  bool optional = false;
  bool null_for_omit = false;
  Value default_value = nullptr;  // what a missing member stands for
};

struct JsonPlan {
  lumo_type_t type = nullptr;
  lumo_type_kind_t kind = lumo_type_kind_undefined;
  bool as_value = false;  // a union without the name of its alternative
  bool ascii_only = false;
  std::vector<JsonField> fields;  // of a record; alternatives; the element of a list
};

// Made at the first call, which adds what is wrong to errors.
const JsonPlan& json_plan(lumo_type_t type, std::vector<std::string>& errors);

}  // namespace lumos
