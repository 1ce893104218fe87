// Values and templates in the notation of the language, for the log and for text codecs.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "text/text_forms.h"
#include "value/error.h"
#include "value/task.h"
#include "value/hooks.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

constexpr int deepest_shown = 200;
constexpr size_t usual_length = 100;
constexpr std::string_view comma = ", ", assigned = " := ";

void put(std::string& out, Value v, int depth);

void put_float(std::string& out, double number) {
  if (std::isinf(number)) {
    out += number < 0 ? "-infinity" : "infinity";
    return;
  }
  if (std::isnan(number)) {
    out += "not_a_number";
    return;
  }
  // The shortest digits that read back as the same number.
  double size = std::fabs(number);
  bool plain = size == 0 || (size >= 1e-4 && size < 1e16);
  char text[64];
  auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
  char* end = std::to_chars(text, text + sizeof text - 1, number, format).ptr;
  std::string_view all(text, static_cast<size_t>(end - text));
  std::string_view mantissa = all.substr(0, all.find('e'));
  out += mantissa;
  if (mantissa.find('.') == std::string_view::npos) out += ".0";
  if (mantissa.size() == all.size()) return;
  std::string_view exponent = all.substr(mantissa.size() + 1);
  if (exponent[0] == '+') exponent.remove_prefix(1);
  out += "E";
  out += exponent;
}

size_t quotable(const unsigned char* text, size_t size) {
  return quotable_octets({reinterpret_cast<const char*>(text), size});
}
size_t quotable(const char32_t* text, size_t size) {
  size_t n = 0;
  while (n < size && text[n] >= 32 && text[n] < 127 && text[n] != '"') ++n;
  return n;
}

// Octets are copied at once: by iterators a text of another character type is converted first.
void put_plain(std::string& out, const unsigned char* text, size_t size) {
  out.append(reinterpret_cast<const char*>(text), size);
}
void put_plain(std::string& out, const char32_t* text, size_t size) {
  out.append(text, text + size);
}

void put_number(std::string& out, long long number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, std::end(digits), number).ptr);
}

// Characters that cannot stand in quotes are written as quadruples, joined by "&".
template <class Character>
void put_text(std::string& out, const Character* text, size_t size) {
  bool open = false, first = true;
  auto part = [&](bool quoted) {
    if (open && quoted) return;
    if (open) out += '"';
    if (!first) out += " & ";
    if (quoted) out += '"';
    open = quoted;
    first = false;
  };
  for (size_t i = 0; i < size; ++i) {
    const size_t n = quotable(text + i, size - i);
    if (n) part(true);
    put_plain(out, text + i, n);
    i += n;
    if (i == size) break;
    const char32_t c = text[i];
    part(c == '"');
    if (c == '"') {
      out += "\"\"";
      continue;
    }
    lumo_wide_char_t w = wide_char_of(c);
    char quadruple[40];
    std::snprintf(quadruple, sizeof quadruple, "char(%d, %d, %d, %d)", w.group, w.plane, w.row, w.cell);
    out += quadruple;
  }
  if (open) out += '"';
  if (first) out += "\"\"";
}

void put_wide_text(std::string& out, Value v) {
  const std::u32string text = wide_text(v);
  put_text(out, text.data(), text.size());
}

void put_quoted(std::string& out, Value v, const char* kind) {
  out += '\'';
  out.append(v->text.data, v->text.size);
  out += kind;
}

void put_object_id(std::string& out, Value v) {
  out += "objid {";
  for (size_t i = 0; i < v->ids.size; ++i) out += " " + std::to_string(v->ids.data[i]);
  out += " }";
}

void put_special(std::string& out, Special s) {
  switch (s) {
    case Special::omit:
      out += "omit";
      return;
    case Special::not_used:
    case Special::default_value:
      out += "-";
      return;
    case Special::anyone:
      out += "?";
      return;
    case Special::anyornone:
      out += "*";
      return;
    case Special::any:
      out += "any";
      return;
    case Special::all:
      out += "all";
      return;
    case Special::null_address:
    case Special::null_component:
    case Special::null_default:
      out += "null";
      return;
    case Special::infinity:
      out += "infinity";
      return;
    default:
      out += "<no value>";
      return;
  }
}

void put_part(std::string& out, Value part, int depth) {
  if (!part) {
    out += "-";
  } else {
    put(out, part, depth);
  }
}

void put_list(std::string& out, Value v, const char* open, const char* close, int depth) {
  out += open;
  for (size_t i = 0; i < v->parts.size; ++i) {
    if (i) out += comma;
    put_part(out, v->parts.data[i], depth);
  }
  out += close;
}

void put_fields(std::string& out, Value v, int depth) {
  const lumo_field_info_t* fields = field_info(v->type);
  // What a signature returns is no parameter and has no name.
  const bool has_names = fields && v->kind == lumo_type_kind_signature;
  bool is_first = true;
  out += '{';
  for (size_t i = 0; i < v->parts.size; ++i) {
    if (has_names && !(fields[i].name && *fields[i].name)) continue;
    is_first ? out.append(1, ' ') : out.append(comma);
    is_first = false;
    if (fields && fields[i].name && *fields[i].name) out.append(fields[i].name).append(assigned);
    Value part = v->parts.data[i];
    if ((!part || part->form == Form::unset) && fields && is_optional(fields[i]) && !v->dynamic) {
      out += "omit";
    } else {
      put_part(out, part, depth);
    }
  }
  if (!is_first) out += ' ';
  out += '}';
}

void put_choice(std::string& out, Value v, int depth) {
  const lumo_field_info_t* fields = field_info(v->type);
  if (v->index < 0 || !v->parts.size) {
    out += "-";
    return;
  }
  out += std::string("{ ") + (fields ? shown_name(v->type, v->index) : "") + " := ";
  put_part(out, v->parts.data[0], depth);
  out += " }";
}

void put_value_list(std::string& out, Value v, int depth) {
  static const char* const words[] = {"(", "complement(", "subset(", "superset("};
  put_list(out, v, words[v->list_kind & 3], ")", depth);
}

void put_instance(std::string& out, Value v, int depth) {
  const lumo_template_info_t* info = template_info(v->type);
  if (info && info->description && *info->description) {
    out += info->description;
    return;
  }
  out += type_name(v->type);
  if (v->parts.size) put_list(out, v, "(", ")", depth);
}

void put_string(std::string& out, Value v) {
  switch (v->kind) {
    case lumo_type_kind_bitstring:
      return put_quoted(out, v, "'B");
    case lumo_type_kind_hexstring:
      return put_quoted(out, v, "'H");
    case lumo_type_kind_octetstring:
      return put_quoted(out, v, "'O");
    default:
      return put_text(out, reinterpret_cast<const unsigned char*>(v->text.data), v->text.size);
  }
}

void put_enumerated(std::string& out, Value v) {
  const char* name = enum_name(v->type, static_cast<long>(v->integer));
  out += name ? std::string(name) : "<" + std::to_string(v->integer) + ">";
}

const char* verdict_word(lumo_verdict_t verdict) {
  static const char* const words[] = {"none", "pass", "inconc", "fail", "error"};
  return words[verdict];
}

void put_restraint(std::string& out, Value v) {
  if (v->restraint && v->restraint->has_length) {
    const Restraint& r = *v->restraint;
    out += " length(" + std::to_string(r.lower);
    if (r.upper < 0) {
      out += " .. infinity";
    } else if (r.upper != r.lower) {
      out += " .. " + std::to_string(r.upper);
    }
    out += ")";
  }
  if (v->if_present) out += " ifpresent";
}

void put_range(std::string& out, Value v, int depth) {
  out += "(";
  put_part(out, v->parts.data[0], depth);
  out += " .. ";
  put_part(out, v->parts.data[1], depth);
  out += ")";
}

// A pattern is kept as a text, also where it is one of digits.
void put_pattern(std::string& out, Value v, int depth) {
  const Value part = v->parts.data[0];
  out += "pattern ";
  for (const Value typed : {part, v}) {
    if (typed->kind == lumo_type_kind_bitstring) return put_quoted(out, part, "'B");
    if (typed->kind == lumo_type_kind_hexstring) return put_quoted(out, part, "'H");
    if (typed->kind == lumo_type_kind_octetstring) return put_quoted(out, part, "'O");
  }
  put_part(out, part, depth);
}

void put_contents(std::string& out, Value v, int depth) {
  switch (v->form) {
    case Form::unset:
      out += "-";
      return;
    case Form::special:
      return put_special(out, v->special);
    case Form::integer:
      return put_number(out, v->integer);
    case Form::real:
      return put_float(out, v->real);
    case Form::boolean:
      out += v->boolean ? "true" : "false";
      return;
    case Form::character:
    case Form::wide_character:
    case Form::wide_string:
      return put_wide_text(out, v);
    case Form::verdict:
      out += verdict_word(v->verdict);
      return;
    case Form::enumerated:
      return put_enumerated(out, v);
    case Form::string:
      return put_string(out, v);
    case Form::object_id:
      return put_object_id(out, v);
    case Form::fields:
      return put_fields(out, v, depth + 1);
    case Form::vector:
      if (!v->parts.size) {
        out += "{}";
        return;
      }
      return put_list(out, v, "{ ", " }", depth + 1);
    case Form::choice:
      return put_choice(out, v, depth + 1);
    case Form::component:
      out += v->integer ? "component(" + std::to_string(v->integer) + ")" : "null";
      return;
    case Form::default_ref:
      out += v->integer ? "default(" + std::to_string(v->integer) + ")" : "null";
      return;
    case Form::port:
      out += "port";
      return;
    case Form::timer:
      out += hooks.timer_text(v->timer);
      return;
    case Form::instance:
      return put_instance(out, v, depth + 1);
    case Form::wrapped:
      return put_part(out, v->parts.data[0], depth + 1);
    case Form::range:
      return put_range(out, v, depth + 1);
    case Form::value_list:
      return put_value_list(out, v, depth + 1);
    case Form::pattern:
      return put_pattern(out, v, depth + 1);
    case Form::external:
      out += "<encoded>";
      return;
  }
}

void put(std::string& out, Value v, int depth) {
  if (depth > deepest_shown || stack_is_short()) {
    out += "...";
    return;
  }
  put_contents(out, v, depth);
  if (v->dynamic) put_restraint(out, v);
}

}  // namespace

std::string render(Value v) {
  std::string out;
  render_to(out, v);
  return out;
}

void render_to(std::string& out, Value v) {
  out.reserve(out.size() + usual_length);
  put_part(out, v, 0);
}

std::string render_plain(Value v) {
  bool text = v && is_text_kind(v->kind) &&
              (v->form == Form::string || v->form == Form::wide_string || v->form == Form::character ||
               v->form == Form::wide_character);
  if (!text) return render(v);
  if (v->form == Form::string) return {v->text.data, v->text.size};
  // In the log other characters than those of ASCII are shown in UTF-8.
  std::string out;
  for (char32_t c : wide_text(v)) {
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
    } else if (c < 0x10000) {
      out += {static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
              static_cast<char>(0x80 | (c & 0x3F))};
    } else {
      out += {static_cast<char>(0xF0 | (c >> 18 & 7)), static_cast<char>(0x80 | (c >> 12 & 0x3F)),
              static_cast<char>(0x80 | (c >> 6 & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
    }
  }
  return out;
}

}  // namespace lumos
