// The operators on strings and lists.
#include <cctype>
#include <cstring>

#include "value/characters.h"
#include "value/error.h"
#include "value/operand.h"
#include "template/templates.h"
#include "value/task.h"
#include "value/types.h"

namespace lumos {

Value operand(Value v) {
  if (!v) fault("use of a value that is not initialized");
  if (v->form != Form::special && is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  v = settled(v);
  if (v->form == Form::unset || v->form == Form::special)
    fault("use of a value that is not initialized%s%s", v->label ? ": " : "", v->label ? v->label : "");
  return v;
}

int digit_value(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : std::toupper(c) - 'A' + 10;
}

lumo_type_t string_type(Value v) {
  switch (v->kind) {
    case lumo_type_kind_bitstring:
      return lumo_bitstring_type;
    case lumo_type_kind_hexstring:
      return lumo_hexstring_type;
    case lumo_type_kind_octetstring:
      return lumo_octetstring_type;
    case lumo_type_kind_universal_charstring:
    case lumo_type_kind_universal_char:
      return lumo_universal_charstring_type;
    default:
      return lumo_charstring_type;
  }
}

namespace {

using Strategy = lumo_alloc_strategy_t;

template <class Operation>
Value bitwise(Value a, Value b, Strategy strategy, const char* name, Operation operation) {
  a = operand(a);
  b = operand(b);
  bool binary = a->form == Form::string && !is_text_kind(a->kind);
  if (!binary || a->kind != b->kind) fault("%s: the operands are no binary strings of one type", name);
  if (a->text.size != b->text.size) fault("%s: the operands differ in length", name);
  Value v = make_root(string_type(a), strategy);
  reserve_text(v, a->text.size);
  for (size_t i = 0; i < a->text.size; ++i)
    v->text.data[i] =
        "0123456789ABCDEF"[operation(digit_value(a->text.data[i]), digit_value(b->text.data[i])) & 15];
  return v;
}

Value concatenate_lists(Value a, Value b, Strategy strategy) {
  Value v = make_root(plain_type(a->type), strategy);
  shape(v);
  resize_parts(v, a->parts.size + b->parts.size);
  for (size_t i = 0; i < a->parts.size; ++i)
    if (a->parts.data[i]) store_part(v, i, a->parts.data[i]);
  for (size_t i = 0; i < b->parts.size; ++i)
    if (b->parts.data[i]) store_part(v, a->parts.size + i, b->parts.data[i]);
  return v;
}

Value concatenate_texts(Value a, Value b, Strategy strategy) {
  bool narrow = a->form == Form::string && b->form == Form::string;
  if (narrow) {
    Value v = make_root(lumo_charstring_type, strategy);
    reserve_text(v, a->text.size + b->text.size);
    std::memcpy(v->text.data, a->text.data, a->text.size);
    std::memcpy(v->text.data + a->text.size, b->text.data, b->text.size);
    return v;
  }
  bool wide =
      string_type(a) == lumo_universal_charstring_type || string_type(b) == lumo_universal_charstring_type;
  const Characters first(a), second(b);
  const size_t size = first.size() + second.size();
  Value v = make_root(wide ? lumo_universal_charstring_type : lumo_charstring_type, strategy);
  if (wide) {
    reserve_wide(v, size);
    first.copy_to(v->wide.data);
    second.copy_to(v->wide.data + first.size());
  } else {
    reserve_text(v, size);
    first.copy_to(v->text.data);
    second.copy_to(v->text.data + first.size());
  }
  return v;
}

// A shift or rotation by whole elements; fill 0 rotates.
Value moved(Value v, lumo_long_integer_t count, bool left, bool rotate, Strategy strategy) {
  v = operand(v);
  size_t unit = v->kind == lumo_type_kind_octetstring ? 2 : 1;
  if (v->form == Form::vector || v->form == Form::wide_string || is_text_kind(v->kind)) {
    if (!rotate) fault("a value of type '%s' cannot be shifted", type_name(v->type));
  } else if (v->form != Form::string) {
    fault("a value of type '%s' cannot be shifted or rotated", type_name(v->type));
  }
  // The magnitude of the least number is no number of that kind.
  auto shift = static_cast<unsigned long long>(count);
  if (count < 0) {
    left = !left;
    shift = 0 - shift;
  }
  Value result = copy_value(v, strategy);
  size_t size = v->form == Form::vector        ? v->parts.size
                : v->form == Form::wide_string ? v->wide.size
                                               : v->text.size / unit;
  if (size == 0) return result;
  if (!rotate && shift > size) shift = size;
  size_t by = static_cast<size_t>(shift % size);
  bool all = !rotate && shift == size;
  for (size_t i = 0; i < size; ++i) {
    size_t from = left ? (i + by) % size : (i + size - by) % size;
    bool lost = !rotate && (all || (left ? i + by >= size : i < by));
    if (v->form == Form::vector) {
      if (v->parts.data[from]) store_part(result, i, v->parts.data[from]);
    } else if (v->form == Form::wide_string) {
      result->wide.data[i] = v->wide.data[from];
    } else if (lost) {
      std::memset(result->text.data + i * unit, '0', unit);
    } else {
      std::memcpy(result->text.data + i * unit, v->text.data + from * unit, unit);
    }
  }
  return result;
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_not4b(lumo_value_t a, lumo_alloc_strategy_t strategy, lumo_context_t) {
  Value v = operand(a);
  if (v->form != Form::string || is_text_kind(v->kind)) fault("not4b: the operand is no binary string");
  int mask = v->kind == lumo_type_kind_bitstring ? 1 : 15;
  return bitwise(v, v, strategy, "not4b", [mask](int x, int) { return x ^ mask; });
}

lumo_value_t lumo_and4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return bitwise(a, b, strategy, "and4b", [](int x, int y) { return x & y; });
}

lumo_value_t lumo_or4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return bitwise(a, b, strategy, "or4b", [](int x, int y) { return x | y; });
}

lumo_value_t lumo_xor4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return bitwise(a, b, strategy, "xor4b", [](int x, int y) { return x ^ y; });
}

// The texts of patterns are put together too.
static Value concatenated(Value v) {
  if (v && v->form == Form::instance) v = lumo_templateof(v, lumo_temp_alloc_c, current_task);
  return operand(v && v->form == Form::pattern ? v->parts.data[0] : v);
}

lumo_value_t lumo_concatenate(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy,
                              lumo_context_t) {
  a = concatenated(a);
  b = concatenated(b);
  if (a->form == Form::vector && b->form == Form::vector) return concatenate_lists(a, b, strategy);
  if (is_text_kind(a->kind) && is_text_kind(b->kind)) return concatenate_texts(a, b, strategy);
  if (a->form != Form::string || a->kind != b->kind) fault("the operands of & are of different types");
  Value v = make_root(string_type(a), strategy);
  reserve_text(v, a->text.size + b->text.size);
  std::memcpy(v->text.data, a->text.data, a->text.size);
  std::memcpy(v->text.data + a->text.size, b->text.data, b->text.size);
  return v;
}

lumo_value_t lumo_shiftleft(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                            lumo_context_t) {
  return moved(a, count, true, false, strategy);
}

lumo_value_t lumo_shiftright(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                             lumo_context_t) {
  return moved(a, count, false, false, strategy);
}

lumo_value_t lumo_rotateleft(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                             lumo_context_t) {
  return moved(a, count, true, true, strategy);
}

lumo_value_t lumo_rotateright(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                              lumo_context_t) {
  return moved(a, count, false, true, strategy);
}
