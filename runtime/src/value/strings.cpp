// Strings: charstring, universal charstring, bit-, hex- and octetstring. Binary strings are
// kept as digits, an octet being two of them.
#include <cctype>
#include <cstring>

#include "value/characters.h"
#include "value/error.h"
#include "value/memory.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

std::u32string wide_text(Value v) {
  switch (v->form) {
    case Form::string: {
      std::u32string text;
      text.reserve(v->text.size);
      for (size_t i = 0; i < v->text.size; ++i) text += static_cast<unsigned char>(v->text.data[i]);
      return text;
    }
    case Form::wide_string:
      return {v->wide.data, v->wide.size};
    case Form::character:
      return std::u32string(1, static_cast<unsigned char>(v->character));
    case Form::wide_character:
      return std::u32string(1, v->wide_character);
    default:
      return {};
  }
}

std::string narrow_text(const std::u32string& text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (char32_t c : text) narrow += narrow_character(c);
  return narrow;
}

namespace {

size_t unit(Value v) {
  return v->kind == lumo_type_kind_octetstring ? 2 : 1;
}

// Makes room behind what is there, for the last characters to be written, and ends it.
template <class Buffer>
void lengthen(Buffer& text, size_t size) {
  reserve(text, size + 1);
  text.data[size] = 0;
  text.size = size;
}

Value text_value(Value v) {
  if (!v) fault("use of a value that is not initialized");
  if (is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  v = settled(v);
  if (v->form == Form::unset || v->form == Form::special) fault("use of a string that is not initialized");
  return v;
}

const char* get_digits(Value value, lumo_type_kind_t kind) {
  Value v = text_value(value);
  if (v->form != Form::string || v->kind != kind)
    fault("a binary string is needed, not a value of type '%s'", type_name(v->type));
  return v->text.data;
}

bool is_digit_of(lumo_type_kind_t kind, char c) {
  if (kind == lumo_type_kind_bitstring) return c == '0' || c == '1';
  return std::isxdigit(static_cast<unsigned char>(c));
}

// Digits as a user may write them: blanks between them, letters of either case.
Value set_digits(Value v, const char* digits, lumo_type_kind_t kind) {
  prepare_write(v);
  size_t count = 0;
  for (const char* p = digits; *p; ++p) {
    if (std::isspace(static_cast<unsigned char>(*p))) continue;
    if (!is_digit_of(kind, *p)) fault("'%c' is no digit of a binary string", *p);
    ++count;
  }
  if (kind == lumo_type_kind_octetstring && count % 2) fault("an octetstring needs an even number of digits");
  set_text(v, {digits, std::strlen(digits)});
  size_t to = 0;
  for (size_t i = 0; i < v->text.size; ++i) {
    unsigned char c = static_cast<unsigned char>(v->text.data[i]);
    if (!std::isspace(c)) v->text.data[to++] = static_cast<char>(std::toupper(c));
  }
  v->text.data[to] = 0;
  v->text.size = to;
  check_written(v);
  return v;
}

Value set_narrow(Value v, const char* text) {
  prepare_write(v);
  if (v->kind == lumo_type_kind_universal_charstring)
    return lumo_value_set_universal_charstring_to_ascii(v, text, nullptr);
  size_t size = std::strlen(text);
  if (v->kind == lumo_type_kind_char) {
    if (size != 1) fault("a single character is needed for type '%s'", type_name(v->type));
    return lumo_value_set_char(v, *text, nullptr);
  }
  set_text(v, {text, size});
  check_written(v);
  return v;
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_value_set_string(lumo_value_t value, const char* text, lumo_context_t) {
  if (!value || !text) fault("a string is set to nothing");
  switch (value->kind) {
    case lumo_type_kind_bitstring:
    case lumo_type_kind_hexstring:
    case lumo_type_kind_octetstring:
      return set_digits(value, text, value->kind);
    default:
      return set_narrow(value, text);
  }
}

lumo_value_t lumo_value_set_charstring(lumo_value_t value, const char* text, lumo_context_t) {
  return set_narrow(value, text);
}

lumo_value_t lumo_value_set_bitstring(lumo_value_t value, const char* digits, lumo_context_t) {
  return set_digits(value, digits, lumo_type_kind_bitstring);
}

lumo_value_t lumo_value_set_hexstring(lumo_value_t value, const char* digits, lumo_context_t) {
  return set_digits(value, digits, lumo_type_kind_hexstring);
}

lumo_value_t lumo_value_set_octetstring(lumo_value_t value, const char* digits, lumo_context_t) {
  return set_digits(value, digits, lumo_type_kind_octetstring);
}

lumo_value_t lumo_value_set_universal_charstring_to_ascii(lumo_value_t value, const char* text,
                                                          lumo_context_t) {
  prepare_write(value);
  size_t size = std::strlen(text);
  set_wide(value, nullptr, 0);
  std::u32string wide;
  for (size_t i = 0; i < size; ++i) wide += static_cast<unsigned char>(text[i]);
  set_wide(value, wide.data(), wide.size());
  wide = std::u32string();
  check_written(value);
  return value;
}

lumo_value_t lumo_value_set_universal_charstring_from_wchar_array(lumo_value_t value,
                                                                  const lumo_wide_char_t* characters,
                                                                  unsigned long count, lumo_context_t) {
  prepare_write(value);
  if (value->kind == lumo_type_kind_charstring) {
    std::string text;
    for (unsigned long i = 0; i < count; ++i) text += static_cast<char>(code_of(characters[i]));
    set_text(value, text);
    text = std::string();
  } else {
    std::u32string text;
    for (unsigned long i = 0; i < count; ++i) text += code_of(characters[i]);
    set_wide(value, text.data(), text.size());
    text = std::u32string();
  }
  check_written(value);
  return value;
}

const char* lumo_value_get_charstring(lumo_value_t value, lumo_context_t) {
  Value v = text_value(value);
  if (v->form == Form::string) return v->text.data;
  if (!is_text_kind(v->kind)) fault("a charstring is needed, not a value of type '%s'", type_name(v->type));
  // Another form of text: a charstring that lives as long as the scope.
  Value copy = make_root(lumo_charstring_type, lumo_temp_alloc_c);
  assign_contents(copy, v);
  return copy->text.data;
}

const char* lumo_value_get_string(lumo_value_t value, lumo_context_t context) {
  return lumo_value_get_charstring(value, context);
}

const char* lumo_value_get_bitstring(lumo_value_t value, lumo_context_t) {
  return get_digits(value, lumo_type_kind_bitstring);
}

const char* lumo_value_get_hexstring(lumo_value_t value, lumo_context_t) {
  return get_digits(value, lumo_type_kind_hexstring);
}

const char* lumo_value_get_octetstring(lumo_value_t value, lumo_context_t) {
  return get_digits(value, lumo_type_kind_octetstring);
}

lumo_value_t lumo_value_allocate_charstring(lumo_value_t value, unsigned long length, lumo_context_t) {
  prepare_write(value);
  std::string blanks(length, ' ');
  set_text(value, blanks);
  return value;
}

unsigned long lumo_value_string_length(lumo_value_t value, lumo_context_t) {
  // A template that holds a string has its length, whatever restrains it.
  Value v = value && is_scalar(value->form) ? value : text_value(value);
  switch (v->form) {
    case Form::string:
      return v->text.size / unit(v);
    case Form::wide_string:
      return v->wide.size;
    case Form::character:
    case Form::wide_character:
      return 1;
    default:
      fault("a value of type '%s' has no length", type_name(v->type));
  }
}

lumo_value_t lumo_value_string_element(lumo_value_t value, unsigned long index,
                                       lumo_alloc_strategy_t strategy, lumo_context_t context) {
  Value v = text_value(value);
  if (index >= lumo_value_string_length(v, context))
    fault("index %lu is behind the end of the string of length %lu", index,
          lumo_value_string_length(v, context));
  // An element has the type of the language, not a subtype that asks for a length.
  static const lumo_type_t types[] = {lumo_bitstring_type, lumo_hexstring_type, lumo_octetstring_type,
                                      lumo_charstring_type, lumo_universal_charstring_type};
  lumo_type_t type = lumo_charstring_type;
  for (lumo_type_t t : types)
    if (t->type_info->kind == v->kind) type = t;
  Value element = make_root(type, strategy);
  if (v->form == Form::string) {
    set_text(element, {v->text.data + index * unit(v), unit(v)});
  } else if (v->form == Form::wide_string) {
    set_wide(element, v->wide.data + index, 1);
  } else {
    assign_contents(element, v);
  }
  return element;
}

void lumo_value_assign_string_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                      lumo_context_t context) {
  prepare_write(value);
  if (value->form == Form::unset) {
    if (value->kind == lumo_type_kind_universal_charstring) {
      set_wide(value, nullptr, 0);
    } else {
      set_text(value, "");
    }
  }
  Value e = text_value(element);
  unsigned long length = lumo_value_string_length(value, context);
  if (index > length) fault("index %lu is behind the end of the string of length %lu", index, length);
  if (lumo_value_string_length(e, context) != 1) fault("a string element is one element long");
  const bool is_new = index == length;
  if (value->form == Form::wide_string) {
    const char32_t c = Characters(e)[0];
    if (is_new) lengthen(value->wide, length + 1);
    value->wide.data[index] = c;
  } else {
    const size_t size = unit(value);
    const bool narrow = e->form == Form::string && unit(e) == size;
    if (!narrow && !is_text_kind(e->kind)) fault("the element is of another kind of string");
    char c[2] = {0, 0};
    if (narrow) {
      std::memcpy(c, e->text.data, size);
    } else {
      c[0] = lumo_value_get_char(e, context);
    }
    if (is_new) lengthen(value->text, (length + 1) * size);
    std::memcpy(value->text.data + index * size, c, size);
  }
  check_written(value);
}
