#include "template/lengths.h"

#include <algorithm>

#include "value/task.h"
#include "template/pattern.h"
#include "template/templates.h"
#include "value/error.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr long unlimited = -1;

struct Lengths {
  long least, most;
};

Lengths lengths_of(Value v);

Lengths of_elements(Value v) {
  Lengths lengths = {0, 0};
  for (size_t i = 0; i < v->parts.size; ++i) {
    Value part = v->parts.data[i];
    if (part && is_special(part, Special::anyornone)) {
      lengths.most = unlimited;
    } else {
      ++lengths.least;
    }
  }
  if (lengths.most != unlimited) lengths.most = lengths.least;
  return lengths;
}

// Of a list of templates: the shortest and the longest; a set has at least the elements of a superset and at
// most those of a subset.
Lengths of_list(Value v) {
  const auto count = static_cast<long>(v->parts.size);
  if (v->list_kind == lumo_value_list_subset_c) return {0, count};
  if (v->list_kind == lumo_value_list_superset_c) return {count, unlimited};
  if (v->list_kind != lumo_value_list_normal_c || !count) return {0, unlimited};
  Lengths all = lengths_of(v->parts.data[0]);
  for (size_t i = 1; i < v->parts.size; ++i) {
    const Lengths one = lengths_of(v->parts.data[i]);
    all.least = std::min(all.least, one.least);
    all.most = all.most == unlimited || one.most == unlimited ? unlimited : std::max(all.most, one.most);
  }
  return all;
}

// A pattern of digits, in which `?` is one element.
Lengths of_pattern(Value v) {
  if (is_text_kind(v->kind)) {
    const long length = pattern_length(v);
    return length < 0 ? Lengths{0, unlimited} : Lengths{length, length};
  }
  const char* text = lumo_value_get_charstring(v->parts.data[0], current_task);
  const bool is_octets = v->kind == lumo_type_kind_octetstring;
  Lengths lengths = {0, 0};
  long digits = 0;
  for (; *text; ++text) {
    if (*text == '*') lengths.most = unlimited;
    if (*text == '?') ++lengths.least;
    if (*text != '*' && *text != '?') ++digits;
  }
  lengths.least += is_octets ? digits / 2 : digits;
  if (lengths.most != unlimited) lengths.most = lengths.least;
  return lengths;
}

Lengths restrained(Value v, Lengths lengths) {
  if (!v->restraint || !v->restraint->has_length) return lengths;
  lengths.least = std::max(lengths.least, static_cast<long>(v->restraint->lower));
  const long upper = static_cast<long>(v->restraint->upper);
  if (upper >= 0) lengths.most = lengths.most == unlimited ? upper : std::min(lengths.most, upper);
  return lengths;
}

Lengths of_contents(Value v) {
  if (base_kind(v->type) == lumo_type_kind_array) {
    const auto length = static_cast<long>(array_length(plain_type(v->type)));
    return {length, length};
  }
  switch (v->form) {
    case Form::instance:
      return lengths_of(lumo_templateof(v, lumo_temp_alloc_c, current_task));
    case Form::wrapped:
      return lengths_of(v->parts.data[0]);
    case Form::vector:
      return of_elements(v);
    case Form::value_list:
      return of_list(v);
    case Form::pattern:
      return of_pattern(v);
    case Form::string:
    case Form::wide_string:
    case Form::character:
    case Form::wide_character: {
      const auto length = static_cast<long>(lumo_value_string_length(v, current_task));
      return {length, length};
    }
    case Form::special:
      if (v->special == Special::anyone || v->special == Special::anyornone) return {0, unlimited};
      [[fallthrough]];
    default:
      return {1, 0};
  }
}

Lengths lengths_of(Value v) {
  check_stack();
  return restrained(v, of_contents(v));
}

}  // namespace

long fixed_length(Value v) {
  const Lengths lengths = lengths_of(v);
  return lengths.least == lengths.most ? lengths.least : -1;
}

unsigned long template_length(Value v, const char* function) {
  const long length = fixed_length(v);
  if (length < 0) fault("%s: the length of the template is not fixed", function);
  return static_cast<unsigned long>(length);
}

}  // namespace lumos
