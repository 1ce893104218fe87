// The predefined functions.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "text/codec.h"
#include "text/log.h"
#include "value/characters.h"
#include "value/error.h"
#include "value/operand.h"
#include "template/lengths.h"
#include "template/pattern.h"
#include "value/subtypes.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

using Strategy = lumo_alloc_strategy_t;

Value digits_of(Value v, lumo_type_kind_t kind, const char* function) {
  v = operand(v);
  if (v->form != Form::string || v->kind != kind) fault("%s: the argument is of another type", function);
  return v;
}

std::string_view view(Value v) {
  return {v->text.data, v->text.size};
}

Value new_string(lumo_type_t type, std::string_view text, Strategy strategy) {
  Value v = make_root(type, strategy);
  set_text(v, text);
  return v;
}

Value new_integer(lumo_long_integer_t number, Strategy strategy) {
  Value v = make_root(lumo_integer_type, strategy);
  v->form = Form::integer;
  v->integer = number;
  return v;
}

Value digits_to_integer(Value v, int bits, Strategy strategy, const char* function) {
  unsigned long long number = 0;
  for (char c : view(v)) {
    if (number >> (63 - bits)) fault("%s: the number is too large", function);
    number = number << bits | static_cast<unsigned>(digit_value(c));
  }
  return new_integer(static_cast<lumo_long_integer_t>(number), strategy);
}

Value integer_to_digits(lumo_long_integer_t number, lumo_long_integer_t length, int bits, lumo_type_t type,
                        Strategy strategy, const char* function) {
  if (number < 0) fault("%s: the number is negative", function);
  if (length < 0 || length > (1 << 29)) fault("%s: the length is negative or too large", function);
  size_t count = static_cast<size_t>(type == lumo_octetstring_type ? 2 * length : length);
  Value v = make_root(type, strategy);
  reserve_text(v, count);
  auto rest = static_cast<unsigned long long>(number);
  for (size_t i = count; i-- > 0;) {
    v->text.data[i] = "0123456789ABCDEF"[rest & ((1u << bits) - 1)];
    rest >>= bits;
  }
  if (rest) fault("%s: %lld does not fit in %lld elements", function, number, length);
  return v;
}

// --- between binary strings: all go over bits

Value hex_to_bits(std::string_view hex, Strategy strategy) {
  Value bits = make_root(lumo_bitstring_type, strategy);
  reserve_text(bits, 4 * hex.size());
  for (size_t i = 0; i < bits->text.size; ++i)
    bits->text.data[i] = (digit_value(hex[i / 4]) >> (3 - i % 4) & 1) ? '1' : '0';
  return bits;
}

Value bits_to_hex(std::string_view bits, lumo_type_t type, size_t digits, Strategy strategy) {
  Value hex = make_root(type, strategy);
  reserve_text(hex, digits);
  size_t at = bits.size();
  for (size_t d = digits; d-- > 0;) {
    int value = 0;
    for (int i = 0; i < 4 && at > 0; ++i) value |= (bits[--at] - '0') << i;
    hex->text.data[d] = "0123456789ABCDEF"[value];
  }
  return hex;
}

Value text_operand(Value v, const char* function) {
  v = operand(v);
  if (!is_text_kind(v->kind)) fault("%s: the argument is no text", function);
  return v;
}

// A number at the whole of the text.
bool read_integer(const char* text, lumo_long_integer_t& number) {
  char* end;
  errno = 0;
  number = std::strtoll(text, &end, 10);
  bool digits = std::isdigit(static_cast<unsigned char>(text[*text == '-' || *text == '+']));
  return digits && !*end && errno == 0;
}

bool read_float(const char* text, double& number) {
  const char* p = text + (*text == '-' || *text == '+');
  for (const char* c = p; *c; ++c)
    if (!std::isdigit(static_cast<unsigned char>(*c)) && !std::strchr(".eE+-", *c)) return false;
  char* end;
  number = std::strtod(text, &end);
  return std::isdigit(static_cast<unsigned char>(*p)) && !*end;
}

Value str2int(Value v, Strategy strategy, bool zero) {
  const char* text = lumo_value_get_charstring(text_operand(v, "str2int"), nullptr);
  lumo_long_integer_t number = 0;
  if (!read_integer(text, number)) {
    if (!zero) fault("str2int: \"%.100s\" is no integer", text);
    number = 0;
  }
  return new_integer(number, strategy);
}

Value str2float(Value v, Strategy strategy, bool zero) {
  const char* text = lumo_value_get_charstring(text_operand(v, "str2float"), nullptr);
  double number = 0;
  if (!read_float(text, number)) {
    if (!zero) fault("str2float: \"%.100s\" is no float", text);
    number = 0;
  }
  return lumo_value_set_float(make_root(lumo_float_type, strategy), number, nullptr);
}

Value char_value(lumo_type_t type, lumo_long_integer_t number, lumo_long_integer_t most, Strategy strategy,
                 const char* function) {
  if (number < 0 || number > most) fault("%s: %lld is no character", function, number);
  char32_t c = static_cast<char32_t>(number);
  Value v = make_root(type, strategy);
  if (type == lumo_charstring_type) {
    char narrow = static_cast<char>(c);
    set_text(v, {&narrow, 1});
  } else if (type == lumo_universal_charstring_type) {
    set_wide(v, &c, 1);
  } else if (type == lumo_char_type) {
    v->form = Form::character;
    v->character = static_cast<char>(c);
  } else {
    v->form = Form::wide_character;
    v->wide_character = c;
  }
  return v;
}

constexpr lumo_long_integer_t last_char = 127, last_universal_char = 0x7FFFFFFF;

Value sublist(Value v, size_t index, size_t count, Strategy strategy) {
  Value result = make_root(plain_type(v->type), strategy);
  shape(result);
  resize_parts(result, count);
  for (size_t i = 0; i < count; ++i)
    if (v->parts.data[index + i]) store_part(result, i, v->parts.data[index + i]);
  return result;
}

Value substring(Value v, size_t index, size_t count, Strategy strategy) {
  Value result = make_root(string_type(v), strategy);
  if (v->form == Form::wide_string) {
    set_wide(result, v->wide.data + index, count);
  } else if (v->form == Form::string) {
    size_t unit = v->kind == lumo_type_kind_octetstring ? 2 : 1;
    set_text(result, view(v).substr(index * unit, count * unit));
  } else if (v->form == Form::wide_character) {
    set_wide(result, &v->wide_character, count);
  } else {
    set_text(result, {&v->character, count});
  }
  return result;
}

size_t element_count(Value v) {
  if (v->form == Form::vector) return v->parts.size;
  return lumo_value_string_length(v, nullptr);
}

uint64_t random_state = 0x9E3779B97F4A7C15u;

double next_random() {
  uint64_t z = random_state += 0x9E3779B97F4A7C15u;
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
  z = (z ^ z >> 27) * 0x94D049BB133111EBu;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) / 9007199254740992.0;
}

}  // namespace

void set_random_seed(uint64_t seed) {
  random_state = (seed + 1) * 0x9E3779B97F4A7C15u;
}

namespace {

bool all_values(Value v) {
  if (v->if_present || (v->restraint && (v->restraint->has_length || !v->restraint->permutations.empty())))
    return false;
  switch (v->form) {
    case Form::special:
      return v->special == Special::omit || v->special == Special::null_component ||
             v->special == Special::null_address || v->special == Special::null_default;
    case Form::instance: {
      check_stack();
      Value opened = lumo_templateof(v, lumo_temp_alloc_c, current_task);
      return opened->form != Form::instance && all_values(opened);
    }
    case Form::wrapped:
    case Form::range:
    case Form::value_list:
    case Form::pattern:
      return false;
    case Form::fields:
    case Form::vector:
    case Form::choice:
      check_stack();
      for (size_t i = 0; i < v->parts.size; ++i)
        if (v->parts.data[i] && !all_values(v->parts.data[i])) return false;
      return is_complete(v);
    default:
      return is_complete(v);
  }
}

// What a template with a name, or in line, stands for.
Value opened_whole(Value v) {
  return v && v->form == Form::instance ? lumo_templateof(v, lumo_temp_alloc_c, current_task) : v;
}

unsigned long size_of_parts(Value v) {
  if (v->form == Form::vector) return v->parts.size;
  if (v->form == Form::fields) {
    unsigned long count = 0;
    for (size_t i = 0; i < v->parts.size; ++i) {
      Value part = v->parts.data[i];
      if (part && !is_omit(part) && part->form != Form::unset) ++count;
    }
    return count;
  }
  if (v->form == Form::object_id) return v->ids.size;
  if (v->form == Form::choice) return 1;
  fault("a value of type '%s' has no size", type_name(v->type));
}

// The fields of a template that are there in any value that it matches.
unsigned long size_of_fields(Value v) {
  for (size_t i = 0; i < v->parts.size; ++i) {
    Value part = v->parts.data[i];
    if (part && (is_special(part, Special::anyornone) || part->if_present))
      fault("sizeof: a field of the template may be omitted");
  }
  return size_of_parts(v);
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_bit2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return digits_to_integer(digits_of(v, lumo_type_kind_bitstring, "bit2int"), 1, strategy, "bit2int");
}

lumo_value_t lumo_hex2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return digits_to_integer(digits_of(v, lumo_type_kind_hexstring, "hex2int"), 4, strategy, "hex2int");
}

lumo_value_t lumo_oct2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return digits_to_integer(digits_of(v, lumo_type_kind_octetstring, "oct2int"), 4, strategy, "oct2int");
}

lumo_value_t lumo_str2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return str2int(v, strategy, false);
}

lumo_value_t lumo_str2int_zero(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return str2int(v, strategy, true);
}

lumo_value_t lumo_str2float(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return str2float(v, strategy, false);
}

lumo_value_t lumo_str2float_zero(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return str2float(v, strategy, true);
}

lumo_value_t lumo_char2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  char32_t c = code_of(lumo_value_get_universal_char(text_operand(v, "char2int"), context));
  if (c > last_char) fault("char2int: the character is outside of the first 128");
  return new_integer(c, strategy);
}

lumo_value_t lumo_unichar2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  return new_integer(code_of(lumo_value_get_universal_char(text_operand(v, "unichar2int"), context)),
                     strategy);
}

lumo_value_t lumo_enum2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  return new_integer(lumo_value_get_enum_number(v, context), strategy);
}

lumo_value_t lumo_float2int(double number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  constexpr double beyond = 9223372036854775808.0;
  if (!(-beyond <= number && number < beyond)) fault("float2int: the number is too large");
  return new_integer(static_cast<lumo_long_integer_t>(number), strategy);
}

lumo_value_t lumo_int2float(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                            lumo_context_t context) {
  return lumo_value_set_float(make_root(lumo_float_type, strategy), static_cast<double>(number), context);
}

lumo_value_t lumo_int2bit(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t) {
  return integer_to_digits(number, length, 1, lumo_bitstring_type, strategy, "int2bit");
}

lumo_value_t lumo_int2hex(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t) {
  return integer_to_digits(number, length, 4, lumo_hexstring_type, strategy, "int2hex");
}

lumo_value_t lumo_int2oct(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t) {
  return integer_to_digits(number, length, 4, lumo_octetstring_type, strategy, "int2oct");
}

lumo_value_t lumo_int2str(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return new_string(lumo_charstring_type, std::to_string(number), strategy);
}

lumo_value_t lumo_int2char(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return char_value(lumo_char_type, number, last_char, strategy, "int2char");
}

lumo_value_t lumo_int2charstr(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return char_value(lumo_charstring_type, number, last_char, strategy, "int2char");
}

lumo_value_t lumo_int2unichar(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return char_value(lumo_universal_char_type, number, last_universal_char, strategy, "int2unichar");
}

lumo_value_t lumo_int2unicharstr(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return char_value(lumo_universal_charstring_type, number, last_universal_char, strategy, "int2unichar");
}

lumo_value_t lumo_bit2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return new_string(lumo_charstring_type, view(digits_of(v, lumo_type_kind_bitstring, "bit2str")), strategy);
}

lumo_value_t lumo_hex2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return new_string(lumo_charstring_type, view(digits_of(v, lumo_type_kind_hexstring, "hex2str")), strategy);
}

lumo_value_t lumo_oct2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return new_string(lumo_charstring_type, view(digits_of(v, lumo_type_kind_octetstring, "oct2str")),
                    strategy);
}

lumo_value_t lumo_str2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  const char* text = lumo_value_get_charstring(text_operand(v, "str2oct"), context);
  for (const char* p = text; *p; ++p)
    if (!std::isxdigit(static_cast<unsigned char>(*p))) fault("str2oct: '%c' is no hexadecimal digit", *p);
  if (std::strlen(text) % 2) fault("str2oct: the number of digits is odd");
  return lumo_value_set_octetstring(make_root(lumo_octetstring_type, strategy), text, context);
}

lumo_value_t lumo_oct2char(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = digits_of(v, lumo_type_kind_octetstring, "oct2char");
  Value result = make_root(lumo_charstring_type, strategy);
  reserve_text(result, v->text.size / 2);
  for (size_t i = 0; i < v->text.size / 2; ++i) {
    int c = digit_value(v->text.data[2 * i]) << 4 | digit_value(v->text.data[2 * i + 1]);
    if (c > last_char) fault("oct2char: an octet is above 7F");
    result->text.data[i] = static_cast<char>(c);
  }
  return result;
}

lumo_value_t lumo_char2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  v = text_operand(v, "char2oct");
  lumo_value_get_charstring(v, context);
  const Characters text(v);
  Value result = make_root(lumo_octetstring_type, strategy);
  reserve_text(result, 2 * text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    result->text.data[2 * i] = "0123456789ABCDEF"[text[i] >> 4 & 15];
    result->text.data[2 * i + 1] = "0123456789ABCDEF"[text[i] & 15];
  }
  return result;
}

lumo_value_t lumo_bit2hex(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = digits_of(v, lumo_type_kind_bitstring, "bit2hex");
  return bits_to_hex(view(v), lumo_hexstring_type, (v->text.size + 3) / 4, strategy);
}

lumo_value_t lumo_bit2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = digits_of(v, lumo_type_kind_bitstring, "bit2oct");
  return bits_to_hex(view(v), lumo_octetstring_type, (v->text.size + 7) / 8 * 2, strategy);
}

lumo_value_t lumo_hex2bit(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return hex_to_bits(view(digits_of(v, lumo_type_kind_hexstring, "hex2bit")), strategy);
}

lumo_value_t lumo_hex2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  std::string_view digits = view(digits_of(v, lumo_type_kind_hexstring, "hex2oct"));
  std::string octets = digits.size() % 2 ? "0" : "";
  octets += digits;
  return new_string(lumo_octetstring_type, octets, strategy);
}

lumo_value_t lumo_oct2bit(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return hex_to_bits(view(digits_of(v, lumo_type_kind_octetstring, "oct2bit")), strategy);
}

lumo_value_t lumo_oct2hex(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return new_string(lumo_hexstring_type, view(digits_of(v, lumo_type_kind_octetstring, "oct2hex")), strategy);
}

lumo_value_t lumo_rnd(lumo_value_t seed, lumo_alloc_strategy_t strategy, lumo_context_t context) {
  if (seed && seed != lumo_no_value_c) {
    double number = lumo_value_get_float(seed, context);
    std::memcpy(&random_state, &number, sizeof random_state);
  }
  return lumo_value_set_float(make_root(lumo_float_type, strategy), next_random(), context);
}

lumo_value_t lumo_substr(lumo_value_t v, unsigned long index, unsigned long count,
                         lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = operand(v);
  size_t length = element_count(v);
  if (index > length || count > length - index)
    fault("substr: %lu elements from index %lu are not in a string of length %zu", count, index, length);
  return v->form == Form::vector ? sublist(v, index, count, strategy) : substring(v, index, count, strategy);
}

lumo_value_t lumo_decomp(lumo_value_t v, unsigned long index, unsigned long count,
                         lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = operand(v);
  if (v->form != Form::object_id) fault("decomp: the argument is no object identifier");
  if (index > v->ids.size || count > v->ids.size - index)
    fault("decomp: %lu elements from index %lu are not in an identifier of %zu", count, index, v->ids.size);
  Value result = make_root(lumo_objectidentifier_type, strategy);
  for (size_t i = 0; i < count; ++i) append_object_id(result, v->ids.data[index + i]);
  return result;
}

lumo_value_t lumo_replace(lumo_value_t v, unsigned long index, unsigned long length, lumo_value_t by,
                          lumo_alloc_strategy_t strategy, lumo_context_t context) {
  v = operand(v);
  size_t size = element_count(v);
  if (index > size || length > size - index)
    fault("replace: %lu elements from index %lu are not in a string of length %zu", length, index, size);
  Value head = lumo_substr(v, 0, index, lumo_temp_alloc_c, context);
  Value tail = lumo_substr(v, index + length, size - index - length, lumo_temp_alloc_c, context);
  head = lumo_concatenate(head, by, lumo_temp_alloc_c, context);
  return lumo_concatenate(head, tail, strategy, context);
}

lumo_value_t lumo_regexp_regexp(lumo_value_t text, lumo_value_t pattern, lumo_long_integer_t group,
                                lumo_alloc_strategy_t strategy, lumo_context_t) {
  Value v = text_operand(text, "regexp");
  if (group < 0) fault("regexp: the number of the group is negative");
  const TextPart part = pattern_group(pattern, v, static_cast<size_t>(group));
  return substring(v, part.first, part.length, strategy);
}

lumo_value_t lumo_encvalue(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t) {
  v = operand(v);
  static char reason[512];
  bool encoded;
  Value result = make_root(lumo_bitstring_type, strategy);
  {
    std::string octets, fault;
    encoded = encode_value(v, octets, fault);
    std::strncpy(reason, fault.c_str(), sizeof reason - 1);
    reserve_text(result, 8 * octets.size());
    for (size_t i = 0; i < result->text.size; ++i)
      result->text.data[i] = (octets[i / 8] >> (7 - i % 8) & 1) ? '1' : '0';
  }
  if (!encoded) fault("encvalue: a value of type '%s' cannot be encoded: %s", type_name(v->type), reason);
  return result;
}

lumo_value_t lumo_decvalue(lumo_value_t encoded, lumo_value_t decoded, lumo_alloc_strategy_t strategy,
                           lumo_context_t context) {
  Value bits = digits_of(encoded, lumo_type_kind_bitstring, "decvalue");
  Value value = nullptr;
  size_t taken = 0;
  bool empty = bits->text.size < 8;
  {
    std::string octets(bits->text.size / 8, 0);
    for (size_t i = 0; i < octets.size() * 8; ++i)
      if (bits->text.data[i] == '1') octets[i / 8] = static_cast<char>(octets[i / 8] | 0x80 >> i % 8);
    std::string fault;
    value = decode_value(plain_type(decoded->type), octets, &taken, fault);
    if (!value && has_codec(decoded->type))
      log_line(lumo_log_msg_warning_c,
               std::string("decvalue: no value of type '") + type_name(decoded->type) + "': " + fault);
  }
  if (!value) return new_integer(empty ? 2 : 1, strategy);
  lumo_value_assign(decoded, value, context);
  Value rest = new_string(lumo_bitstring_type, view(bits).substr(taken * 8), lumo_temp_alloc_c);
  if (encoded->life != Life::fixed && !encoded->dynamic) lumo_value_assign(encoded, rest, context);
  return new_integer(0, strategy);
}

unsigned long lumo_lengthof(lumo_value_t v, lumo_context_t) {
  if (v && is_template(v)) return template_length(v, "lengthof");
  v = operand(v);
  if (v->form == Form::fields) return size_of_parts(v);
  return element_count(v);
}

unsigned long lumo_sizeof(lumo_value_t v, lumo_context_t context) {
  if (v && v->form == Form::instance) {
    const lumo_template_info_t* info = template_info(v->type);
    // What only matches a length has it by the matching mechanisms, which the function does not know.
    const long fixed = is_record_kind(base_kind(v->type)) ? -1 : fixed_length(v);
    if (fixed >= 0) return static_cast<unsigned long>(fixed);
    if (info && info->sizeof_function) {
      check_stack();
      return info->sizeof_function(info->base_type, v->parts.data, context);
    }
  }
  if (v && v->dynamic && v->form == Form::fields) return size_of_fields(v);
  if (v && is_template(v)) return template_length(v, "sizeof");
  return size_of_parts(operand(v));
}

unsigned long lumo_sizeoftype(lumo_value_t v, lumo_context_t) {
  if (!v) fault("use of a value that is not initialized");
  lumo_type_t type = plain_type(v->type);
  if (base_kind(type) == lumo_type_kind_array) return array_length(type);
  if (is_record_kind(base_kind(type)) || base_kind(type) == lumo_type_kind_union) return field_count(type);
  const lumo_long_integer_t most = is_list_kind(base_kind(type)) ? length_bounds(type).upper : -1;
  if (most >= 0) return static_cast<unsigned long>(most);
  fault("a value of type '%s' has no size by its type", type_name(type));
}

lumo_boolean_t lumo_ispresent(lumo_value_t parent, unsigned long index, lumo_context_t context) {
  if (!parent || is_omit(parent)) return false;
  Value part = lumo_value_try_field_by_index(parent, index, context);
  const bool may_be_omitted = part && (is_special(part, Special::anyornone) || part->if_present);
  return part && !may_be_omitted && !is_omit(part) && part->form != Form::unset;
}

lumo_boolean_t lumo_ischosen(lumo_value_t parent, unsigned long index, lumo_context_t context) {
  parent = opened_whole(parent);
  // What matches any value has chosen none.
  if (!parent || parent->form == Form::special) return false;
  if (parent->form == Form::unset) fault("use of a union that is not initialized");
  return lumo_value_union_index(parent, context) == static_cast<long>(index);
}

lumo_boolean_t lumo_isvalue(lumo_value_t v, lumo_context_t) {
  v = opened_whole(v);
  return v && !is_blank(v) && !is_omit(v) && all_values(v);
}
