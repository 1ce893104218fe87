// Values of one C number or character: integer, float, boolean, verdict, enumerated, char,
// and object identifiers.
#include <cmath>

#include "value/error.h"
#include "template/templates.h"
#include "value/task.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

const char* form_word(Form form) {
  switch (form) {
    case Form::integer:
      return "an integer";
    case Form::real:
      return "a float";
    case Form::boolean:
      return "a boolean";
    case Form::verdict:
      return "a verdict";
    case Form::enumerated:
      return "an enumerated value";
    case Form::character:
    case Form::wide_character:
      return "a character";
    default:
      return "an object identifier";
  }
}

// The value in the form wanted; templates with one value stand for it.
Value get(Value v, Form form) {
  if (!v) fault("use of a value that is not initialized");
  if (v->form != form && is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  v = settled(v);
  if (v->form == form) return v;
  if (v->form == Form::unset || v->form == Form::special)
    fault("use of %s that is not initialized%s%s", form_word(form), v->label ? ": " : "",
          v->label ? v->label : "");
  fault("%s is needed, not a value of type '%s'", form_word(form), type_name(v->type));
}

Value set_form(Value v, Form form) {
  prepare_write(v);
  if (v->form != form) {
    clear_contents(v);
    v->form = form;
  }
  return v;
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_value_set_integer(lumo_value_t value, lumo_long_integer_t number, lumo_context_t) {
  set_form(value, Form::integer)->integer = number;
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_float(lumo_value_t value, double number, lumo_context_t context) {
  if (!std::isfinite(number)) fault("the result of an operation on floats is no number");
  return lumo_value_set_real(value, number, context);
}

lumo_value_t lumo_value_set_real(lumo_value_t value, double number, lumo_context_t) {
  set_form(value, Form::real)->real = number;
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_boolean(lumo_value_t value, lumo_boolean_t truth, lumo_context_t) {
  set_form(value, Form::boolean)->boolean = truth;
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_verdict(lumo_value_t value, lumo_verdict_t verdict, lumo_context_t) {
  set_form(value, Form::verdict)->verdict = verdict;
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_enum(lumo_value_t value, long number, lumo_context_t) {
  set_form(value, Form::enumerated)->integer = number;
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_char(lumo_value_t value, char character, lumo_context_t) {
  if (value && is_string_kind(value->kind)) {
    prepare_write(value);
    if (value->kind == lumo_type_kind_universal_charstring) {
      char32_t wide = static_cast<unsigned char>(character);
      set_wide(value, &wide, 1);
    } else {
      set_text(value, {&character, 1});
    }
  } else {
    set_form(value, Form::character)->character = character;
  }
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_universal_char(lumo_value_t value, lumo_wide_char_t character, lumo_context_t) {
  char32_t code = code_of(character);
  if (value && value->kind == lumo_type_kind_universal_charstring) {
    prepare_write(value);
    set_wide(value, &code, 1);
  } else {
    set_form(value, Form::wide_character)->wide_character = code;
  }
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_universal_char_to_ascii(lumo_value_t value, char character,
                                                    lumo_context_t context) {
  return lumo_value_set_universal_char(value, wide_char_of(static_cast<unsigned char>(character)), context);
}

lumo_long_integer_t lumo_value_get_integer(lumo_value_t value, lumo_context_t) {
  if (value && value->form == Form::integer) return value->integer;
  return get(value, Form::integer)->integer;
}

double lumo_value_get_float(lumo_value_t value, lumo_context_t) {
  return get(value, Form::real)->real;
}

lumo_boolean_t lumo_value_get_boolean(lumo_value_t value, lumo_context_t) {
  return get(value, Form::boolean)->boolean;
}

lumo_verdict_t lumo_value_get_verdict(lumo_value_t value, lumo_context_t) {
  return get(value, Form::verdict)->verdict;
}

long lumo_value_get_enum_number(lumo_value_t value, lumo_context_t) {
  return static_cast<long>(get(value, Form::enumerated)->integer);
}

char lumo_value_get_char(lumo_value_t value, lumo_context_t context) {
  if (value && value->form == Form::string && value->text.size == 1) return value->text.data[0];
  if (value && value->form != Form::character && is_text_kind(value->kind))
    return static_cast<char>(code_of(lumo_value_get_universal_char(value, context)));
  return get(value, Form::character)->character;
}

lumo_wide_char_t lumo_value_get_universal_char(lumo_value_t value, lumo_context_t) {
  if (value) {
    if (value->form == Form::character) return wide_char_of(static_cast<unsigned char>(value->character));
    if (value->form == Form::wide_string && value->wide.size == 1) return wide_char_of(value->wide.data[0]);
    if (value->form == Form::string && value->text.size == 1)
      return wide_char_of(static_cast<unsigned char>(value->text.data[0]));
  }
  return wide_char_of(get(value, Form::wide_character)->wide_character);
}

lumo_value_t lumo_value_add_objectid_element(lumo_value_t value, lumo_long_integer_t number, lumo_context_t) {
  append_object_id(value, number);
  return value;
}

lumo_long_integer_t lumo_value_get_objectid_element(lumo_value_t value, unsigned long index, lumo_context_t) {
  Value v = get(value, Form::object_id);
  if (index >= v->ids.size) fault("object identifier has no element %lu", index);
  return v->ids.data[index];
}

unsigned long t3asn_lumo_objectid_size(lumo_value_t value, lumo_context_t) {
  return get(value, Form::object_id)->ids.size;
}

lumo_long_integer_t lumo_divisor(lumo_long_integer_t number, lumo_context_t) {
  if (number == 0) fault("division by zero");
  if (number == -1) note_division_by_minus_one();
  return number;
}

double lumo_float_divisor(double number, lumo_context_t) {
  if (number == 0) fault("division by zero");
  return number;
}

// The sign of the second operand does not matter; its magnitude may be one more than the largest number.
lumo_long_integer_t lumo_mod(lumo_long_integer_t a, lumo_long_integer_t b, lumo_context_t context) {
  if (b == 0) fault("mod by zero");
  const lumo_long_integer_t rest = lumo_rem(a, b, context);
  if (rest >= 0) return rest;
  return static_cast<lumo_long_integer_t>(b < 0 ? static_cast<uint64_t>(rest) - static_cast<uint64_t>(b)
                                                : static_cast<uint64_t>(rest) + static_cast<uint64_t>(b));
}

lumo_long_integer_t lumo_rem(lumo_long_integer_t a, lumo_long_integer_t b, lumo_context_t) {
  if (b == 0) fault("rem by zero");
  return b == -1 ? 0 : a % b;
}

double lumo_float_rem(double a, double b, lumo_context_t) {
  if (b == 0) fault("rem by zero");
  return std::fmod(a, b);
}
