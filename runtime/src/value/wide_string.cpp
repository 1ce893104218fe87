#include "value/wide_string.h"

#include <cstdarg>
#include <cstring>
#include <string>

#include "value/task.h"
#include "value/types.h"
#include "value/value.h"

using namespace lumos;

namespace {

void end_text(void* home, lumo_context_t) {
  delete static_cast<lumo_wide_string_struct*>(home);
}

// A root of the task ends the string with the scope.
lumo_wide_string_t make(std::u32string text, lumo_alloc_strategy_t strategy) {
  auto* made = new lumo_wide_string_struct{std::move(text), strategy == lumo_temp_alloc_c};
  if (made->temporary) {
    Value keeper = lumo_type_instantiate_external_value(lumo_undefined_type, lumo_temp_alloc_c, nullptr);
    lumo_value_set_external_value(keeper, made, nullptr, end_text, nullptr);
  }
  return made;
}

std::u32string widened(const char* text) {
  std::u32string wide;
  for (const char* p = text; p && *p; ++p) wide += static_cast<unsigned char>(*p);
  return wide;
}

}  // namespace

lumo_wide_string_t lumo_wide_string_allocate(unsigned long length, lumo_alloc_strategy_t strategy,
                                             lumo_context_t) {
  return make(std::u32string(length, U' '), strategy);
}

void lumo_wide_string_deallocate(lumo_wide_string_t* text, lumo_context_t) {
  if (text && *text && !(*text)->temporary) delete *text;
  if (text) *text = nullptr;
}

void lumo_wide_string_set_element(lumo_wide_string_t text, unsigned long index, lumo_wide_char_t character,
                                  lumo_context_t) {
  if (text && index < text->text.size()) text->text[index] = code_of(character);
}

lumo_wide_string_t lumo_wide_string_construct_from_ascii(const char* text, lumo_alloc_strategy_t strategy,
                                                         lumo_context_t) {
  return make(widened(text), strategy);
}

lumo_wide_string_t lumo_wide_string_construct_from_wchar(const lumo_wide_char_t* characters,
                                                         unsigned long count, lumo_alloc_strategy_t strategy,
                                                         lumo_context_t) {
  std::u32string text;
  for (unsigned long i = 0; i < count; ++i) text += code_of(characters[i]);
  return make(std::move(text), strategy);
}

lumo_value_t lumo_value_set_universal_charstring(lumo_value_t value, lumo_wide_string_t text,
                                                 lumo_context_t) {
  prepare_write(value);
  if (value->kind == lumo_type_kind_charstring) {
    set_text(value, text ? narrow_text(text->text) : std::string());
  } else {
    set_wide(value, text ? text->text.data() : nullptr, text ? text->text.size() : 0);
  }
  check_written(value);
  return value;
}

int lumo_wchar_cmp(lumo_wide_char_t a, lumo_wide_char_t b) {
  char32_t x = code_of(a), y = code_of(b);
  return x < y ? -1 : x > y;
}

lumo_wide_string_t lumo_format_wide_string(const char* format, lumo_context_t context, ...) {
  // The format may come as the name of its macro.
  if (!std::strcmp(format, "LUMO__VAL_CHECK_VALUE_FAILURE_sname"))
    format = LUMO__VAL_CHECK_VALUE_FAILURE_sname;
  std::u32string text;
  va_list arguments;
  va_start(arguments, context);
  for (const char* at = format; *at; ++at) {
    const char kind = *at == '%' ? at[1] : '\0';
    if (kind == 'S') {
      lumo_wide_string_t wide = va_arg(arguments, lumo_wide_string_t);
      if (wide) text += wide->text;
    } else if (kind == 's') {
      text += widened(va_arg(arguments, const char*));
    } else if (kind == 'd') {
      text += widened(std::to_string(va_arg(arguments, int)).c_str());
    } else {
      text += static_cast<unsigned char>(*at);
      continue;
    }
    ++at;
  }
  va_end(arguments);
  return make(text, lumo_temp_alloc_c);
}

lumo_wide_string_t lumo__value_label_or_name(lumo_value_t value, lumo_context_t) {
  const char* name = value && value->label ? value->label : type_name(value ? value->type : nullptr);
  return make(widened(name), lumo_temp_alloc_c);
}

void lumo_log_wide_string_to_all(lumo_log_message_kind_t kind, lumo_wide_string_t text,
                                 lumo_context_t context) {
  lumo_log_string_to_all(kind, text ? narrow_text(text->text).c_str() : "", context);
}
