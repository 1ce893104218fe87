#include "text/reader.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "value/error.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr int deepest_value = 300;

class Reader {
 public:
  Reader(std::string_view text, std::string& error) : text_(text), error_(error) {}

  size_t at() const { return at_; }

  void skip_blanks() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
  }

  bool read(Value v) {
    if (++depth_ > deepest_value || stack_is_short()) return fail("the value is nested too deeply");
    skip_blanks();
    bool good = read_by_kind(v);
    --depth_;
    return good;
  }

 private:
  bool fail(const std::string& message) {
    if (error_.empty()) error_ = message + " at character " + std::to_string(at_ + 1);
    return false;
  }

  char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  bool accept(char c) {
    skip_blanks();
    if (peek() != c) return false;
    ++at_;
    return true;
  }

  bool expect(char c) {
    if (accept(c)) return true;
    return fail(std::string("'") + c + "' is missing");
  }

  std::string_view word() {
    skip_blanks();
    size_t start = at_;
    while (std::isalnum(static_cast<unsigned char>(peek())) || peek() == '_') ++at_;
    return text_.substr(start, at_ - start);
  }

  bool accept_word(std::string_view wanted) {
    size_t start = at_;
    if (word() == wanted) return true;
    at_ = start;
    return false;
  }

  bool read_by_kind(Value v) {
    switch (v->kind) {
      case lumo_type_kind_integer:
        return read_integer(v);
      case lumo_type_kind_float:
        return read_float(v);
      case lumo_type_kind_boolean:
        return read_boolean(v);
      case lumo_type_kind_verdicttype:
        return read_verdict(v);
      case lumo_type_kind_enumerated:
        return read_enumerated(v);
      case lumo_type_kind_bitstring:
        return read_digits(v, 'B', "01");
      case lumo_type_kind_hexstring:
        return read_digits(v, 'H', "0123456789abcdefABCDEF");
      case lumo_type_kind_octetstring:
        return read_digits(v, 'O', "0123456789abcdefABCDEF");
      case lumo_type_kind_charstring:
      case lumo_type_kind_universal_charstring:
      case lumo_type_kind_char:
      case lumo_type_kind_universal_char:
        return read_text(v);
      case lumo_type_kind_objectidentifier:
        return read_object_id(v);
      case lumo_type_kind_record:
      case lumo_type_kind_set:
      case lumo_type_kind_signature:
        return read_fields(v);
      case lumo_type_kind_recordof:
      case lumo_type_kind_setof:
      case lumo_type_kind_array:
        return read_list(v);
      case lumo_type_kind_union:
        return read_union(v);
      default:
        if (accept_word("null")) {
          set_special(v, Special::null_address);
          return true;
        }
        return fail("a value of this type cannot be read");
    }
  }

  bool read_integer(Value v) {
    std::string digits;
    if (peek() == '-' || peek() == '+') digits += text_[at_++];
    while (std::isdigit(static_cast<unsigned char>(peek()))) digits += text_[at_++];
    if (digits.empty() || !std::isdigit(static_cast<unsigned char>(digits.back())))
      return fail("an integer is missing");
    errno = 0;
    lumo_long_integer_t number = std::strtoll(digits.c_str(), nullptr, 10);
    if (errno) return fail("the integer is too large");
    digits = std::string();
    lumo_value_set_integer(v, number, nullptr);
    return true;
  }

  bool read_float(Value v) {
    bool negative = accept('-');
    double number;
    if (accept_word("infinity")) {
      number = HUGE_VAL;
    } else if (accept_word("not_a_number")) {
      number = NAN;
    } else {
      std::string digits;
      while (peek() && std::strchr("0123456789.eE", peek()) != nullptr) {
        digits += text_[at_++];
        bool exponent = digits.back() == 'e' || digits.back() == 'E';
        if (exponent && (peek() == '-' || peek() == '+')) digits += text_[at_++];
      }
      char* end;
      number = std::strtod(digits.c_str(), &end);
      if (digits.empty() || *end) return fail("a float is missing");
    }
    prepare_write(v);
    clear_contents(v);
    v->form = Form::real;
    v->real = negative ? -number : number;
    check_written(v);
    return true;
  }

  bool read_boolean(Value v) {
    if (accept_word("true")) {
      lumo_value_set_boolean(v, true, nullptr);
      return true;
    }
    if (!accept_word("false")) return fail("a boolean is missing");
    lumo_value_set_boolean(v, false, nullptr);
    return true;
  }

  bool read_verdict(Value v) {
    static const char* const words[] = {"none", "pass", "inconc", "fail", "error"};
    for (int i = 0; i < 5; ++i) {
      if (!accept_word(words[i])) continue;
      lumo_value_set_verdict(v, static_cast<lumo_verdict_t>(i), nullptr);
      return true;
    }
    return fail("a verdict is missing");
  }

  bool read_enumerated(Value v) {
    std::string_view name = word();
    long number = enum_number(v->type, name.data(), name.size());
    bool known = !name.empty() && enum_name(v->type, number) && enum_name(v->type, number) == name;
    if (!known) return fail("a name of the enumeration is missing");
    lumo_value_set_enum(v, number, nullptr);
    return true;
  }

  bool read_digits(Value v, char letter, const char* allowed) {
    if (!expect('\'')) return false;
    std::string digits;
    while (peek() && peek() != '\'') {
      char c = text_[at_++];
      if (std::isspace(static_cast<unsigned char>(c))) continue;
      if (!std::strchr(allowed, c)) return fail("a digit is expected");
      digits += c;
    }
    if (!expect('\'')) return false;
    if (peek() != letter) return fail(std::string("'") + letter + "' is missing");
    ++at_;
    if (letter == 'O' && digits.size() % 2) return fail("the number of digits is odd");
    set_text(v, "");
    lumo_value_set_string(v, digits.c_str(), nullptr);
    return true;
  }

  // A number of a quadruple.
  bool read_octet(unsigned& number) {
    skip_blanks();
    if (!std::isdigit(static_cast<unsigned char>(peek()))) return fail("a number is missing");
    number = 0;
    while (std::isdigit(static_cast<unsigned char>(peek()))) {
      number = number * 10 + static_cast<unsigned>(text_[at_++] - '0');
      if (number > 255) return fail("the number is above 255");
    }
    return true;
  }

  bool read_quadruple(std::u32string& into) {
    if (!expect('(')) return false;
    char32_t code = 0;
    for (int i = 0; i < 4; ++i) {
      unsigned number = 0;
      if ((i && !expect(',')) || !read_octet(number)) return false;
      code = code << 8 | number;
    }
    into += code;
    return expect(')');
  }

  bool read_quoted(std::u32string& into) {
    while (at_ < text_.size()) {
      char c = text_[at_++];
      if (c == '"') {
        if (peek() != '"') return true;
        ++at_;
      }
      into += static_cast<unsigned char>(c);
    }
    return fail("the end of the text is missing");
  }

  bool read_text(Value v) {
    std::u32string text;
    do {
      skip_blanks();
      if (accept('"')) {
        if (!read_quoted(text)) return false;
      } else if (accept_word("char")) {
        if (!read_quadruple(text)) return false;
      } else {
        return fail("a text is missing");
      }
    } while (accept('&'));
    return store_text(v, text);
  }

  bool store_text(Value v, std::u32string& text) {
    bool single = v->kind == lumo_type_kind_char || v->kind == lumo_type_kind_universal_char;
    if (single && text.size() != 1) return fail("a single character is expected");
    prepare_write(v);
    if (v->kind == lumo_type_kind_universal_charstring) {
      set_wide(v, text.data(), text.size());
    } else if (v->kind == lumo_type_kind_charstring) {
      set_text(v, narrow_text(text));
    } else if (v->kind == lumo_type_kind_char) {
      lumo_value_set_char(v, static_cast<char>(text[0]), nullptr);
    } else {
      lumo_value_set_universal_char(v, wide_char_of(text[0]), nullptr);
    }
    text = std::u32string();
    check_written(v);
    return true;
  }

  bool read_object_id(Value v) {
    if (!accept_word("objid")) return fail("'objid' is missing");
    if (!expect('{')) return false;
    prepare_write(v);
    clear_contents(v);
    while (!accept('}')) {
      skip_blanks();
      size_t start = at_;
      while (std::isdigit(static_cast<unsigned char>(peek()))) ++at_;
      if (at_ == start) return fail("a number is missing");
      append_object_id(v, std::strtoll(std::string(text_.substr(start, at_ - start)).c_str(), nullptr, 10));
    }
    return true;
  }

  // "name :=" if it stands here.
  bool read_name(Value v, long& index) {
    size_t start = at_;
    std::string name(word());
    skip_blanks();
    if (name.empty() || text_.substr(at_, 2) != ":=") {
      at_ = start;
      return false;
    }
    at_ += 2;
    index = field_index(v->type, name.c_str());
    return true;
  }

  bool read_field(Value v, size_t index) {
    const lumo_field_info_t* fields = field_info(v->type);
    if (index >= v->parts.size) return fail("there are too many fields");
    skip_blanks();
    if (peek() == '-' &&
        !std::isdigit(static_cast<unsigned char>(at_ + 1 < text_.size() ? text_[at_ + 1] : 0))) {
      ++at_;
      return true;
    }
    if (accept_word("omit")) {
      if (!is_optional(fields[index])) return fail("a mandatory field cannot be omitted");
      store_part(v, index, lumo_omit_value_c);
      return true;
    }
    return read(force_part(v, index));
  }

  bool read_fields(Value v) {
    if (!expect('{')) return false;
    prepare_write(v);
    open_structure(v);
    for (size_t i = 0; !accept('}'); ++i) {
      if (i && !expect(',')) return false;
      long index = static_cast<long>(i);
      if (read_name(v, index) && index < 0) return fail("the type has no such field");
      if (!read_field(v, static_cast<size_t>(index))) return false;
    }
    return true;
  }

  bool read_list(Value v) {
    if (!expect('{')) return false;
    prepare_write(v);
    open_structure(v);
    bool fixed = v->kind == lumo_type_kind_array;
    if (!fixed) resize_parts(v, 0);
    for (size_t i = 0; !accept('}'); ++i) {
      if (i && !expect(',')) return false;
      if (fixed && i >= v->parts.size) return fail("there are too many elements");
      if (!fixed) resize_parts(v, i + 1);
      if (!read(force_part(v, i))) return false;
    }
    return true;
  }

  bool read_union(Value v) {
    if (!expect('{')) return false;
    long index = -1;
    skip_blanks();
    if (!read_name(v, index)) return fail("the name of an alternative is missing");
    if (index < 0) return fail("the type has no such alternative");
    Value part = lumo_value_set_union_alternative_by_index(v, static_cast<unsigned long>(index), nullptr);
    return read(part) && expect('}');
  }

  std::string_view text_;
  std::string& error_;
  size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace

bool read_value_prefix(Value target, std::string_view text, size_t& taken, std::string& error) {
  Reader reader(text, error);
  if (!reader.read(target)) return false;
  taken = reader.at();
  return true;
}

bool read_value(Value target, std::string_view text, std::string& error) {
  Reader reader(text, error);
  if (!reader.read(target)) return false;
  reader.skip_blanks();
  if (reader.at() == text.size()) return true;
  error = "text is left behind the value at character " + std::to_string(reader.at() + 1);
  return false;
}

}  // namespace lumos
