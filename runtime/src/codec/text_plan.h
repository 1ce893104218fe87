// The plan by which values of a type are encoded and decoded as tokens of text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "value/value.h"

namespace lumos {

// What stands before, behind or between: written as a text, and read as a pattern or the text itself.
struct TextToken {
  bool given = false;
  bool any_case = false;
  std::string text, pattern;

  // How many octets at the beginning it takes; npos for none.
  size_t match(std::string_view octets) const;
};

enum class TextCase { same, upper, lower };

struct TextPlan;

struct TextField {
  std::string name;
  const TextPlan* plan = nullptr;
  bool optional = false;
};

struct TextPlan {
  lumo_type_t type = nullptr;
  std::string place;  // the type and field whose words it follows, for messages
  lumo_type_kind_t kind = lumo_type_kind_undefined;
  TextToken begin, end, separator;
  TextToken content;  // the pattern of a value
  TextCase written_case = TextCase::same, read_case = TextCase::same;
  size_t least = 0, most = SIZE_MAX;  // characters
  bool just_right = false, leading_zeros = false;
  bool repeatable = false;  // a list in a set: its elements may come apart
  std::vector<std::pair<std::string, long>> literals;  // of an enumeration, as they are written
  std::vector<TextField> fields;                       // of a record; alternatives; the element of a list
};

// Made at the first call, which adds what is wrong to errors.
const TextPlan& text_plan(lumo_type_t type, std::vector<std::string>& errors);

}  // namespace lumos
