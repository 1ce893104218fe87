#include "codec/text.h"

#include <algorithm>
#include <charconv>

#include "codec/plain.h"
#include "codec/raw.h"
#include "codec/trials.h"
#include "value/error.h"
#include "value/task.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr size_t npos = std::string_view::npos;

// A list without elements and without texts around it: an optional field that holds it leaves no trace, not
// even the separator before it.
bool is_nothing(const TextPlan& plan, Value v) {
  v = settled(v);
  return v->form == Form::vector && v->parts.size == 0 && !plan.begin.given && !plan.end.given;
}

// Their digits are the text.
bool is_digit_kind(lumo_type_kind_t kind) {
  return kind == lumo_type_kind_bitstring || kind == lumo_type_kind_hexstring;
}

void convert(std::string& text, TextCase to) {
  for (char& c : text)
    if (to != TextCase::same)
      c = static_cast<char>(to == TextCase::upper ? std::toupper(static_cast<unsigned char>(c))
                                                  : std::tolower(static_cast<unsigned char>(c)));
}

// --- encoding

class TextEncoder {
 public:
  bool encode(const TextPlan& plan, Value v);
  std::string octets, fault;

 private:
  bool fail(const std::string& what);
  bool encode_content(const TextPlan& plan, Value v);
  bool encode_fields(const TextPlan& plan, Value v);
  bool encode_list(const TextPlan& plan, Value v);
  bool encode_leaf(const TextPlan& plan, Value v);
  FieldPath path_;
};

bool TextEncoder::fail(const std::string& what) {
  const std::string field = path_.text();
  fault = field.empty() ? what : "field " + field + ": " + what;
  return false;
}

bool TextEncoder::encode(const TextPlan& plan, Value v) {
  if (stack_is_short()) return fail("the value is nested too deeply");
  octets += plan.begin.text;
  if (!encode_content(plan, settled(v))) return false;
  octets += plan.end.text;
  return true;
}

bool TextEncoder::encode_fields(const TextPlan& plan, Value v) {
  bool is_first = true;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const TextField& field = plan.fields[i];
    if (field.optional && (!is_there(v->parts.data[i]) || is_nothing(*field.plan, v->parts.data[i])))
      continue;
    path_.enter(field.name.c_str());
    if (!is_there(v->parts.data[i])) return fail("the field is not initialized");
    if (!is_first) octets += plan.separator.text;
    is_first = false;
    if (!encode(*field.plan, v->parts.data[i])) return false;
    path_.leave();
  }
  return true;
}

bool TextEncoder::encode_list(const TextPlan& plan, Value v) {
  for (size_t i = 0; i < v->parts.size; ++i) {
    if (!is_there(v->parts.data[i])) return fail("an element is not initialized");
    if (i) octets += plan.separator.text;
    if (!encode(*plan.fields[0].plan, v->parts.data[i])) return false;
  }
  return true;
}

bool TextEncoder::encode_leaf(const TextPlan& plan, Value v) {
  std::string text;
  if (v->form == Form::enumerated) {
    for (const auto& [literal, number] : plan.literals)
      if (number == v->integer) text = literal;
  } else if (v->form == Form::boolean) {
    text = v->boolean ? "true" : "false";
  } else if (v->form == Form::unset || v->form == Form::special) {
    return fail("the value is not completely initialized");
  } else if (is_digit_kind(plan.kind)) {
    text.assign(v->text.data, v->text.size);
  } else {
    text = plain_octets(v);
  }
  convert(text, plan.written_case);
  if (text.size() > plan.most)
    return fail("the value has " + std::to_string(text.size()) + " characters, " + std::to_string(plan.most) +
                " fit");
  if (text.size() < plan.least) {
    const size_t at = !plan.just_right ? text.size() : plan.leading_zeros && text.starts_with("-") ? 1 : 0;
    text.insert(at, plan.least - text.size(), plan.leading_zeros && plan.just_right ? '0' : ' ');
  }
  octets += text;
  return true;
}

bool TextEncoder::encode_content(const TextPlan& plan, Value v) {
  if (is_record_kind(plan.kind) && plan.fields.empty()) return true;
  if (v->form == Form::fields) return encode_fields(plan, v);
  if (v->form == Form::vector) return encode_list(plan, v);
  if (v->form != Form::choice) return encode_leaf(plan, v);
  if (v->index < 0 || !is_there(v->parts.data[0])) return fail("no alternative is chosen");
  const TextField& field = plan.fields[static_cast<size_t>(v->index)];
  path_.enter(field.name.c_str());
  if (!encode(*field.plan, v->parts.data[0])) return false;
  path_.leave();
  return true;
}

// --- decoding

class TextDecoder {
 public:
  explicit TextDecoder(std::string_view octets) : octets_(octets), trials_(octets.size()) {}
  bool decode(const TextPlan& plan, Value v);
  std::string fault() const;
  bool has_fault() const { return has_fault_; }
  size_t at = 0;

 private:
  bool fail(const char* what);
  bool give_up();
  bool take(const TextToken& token, const char* what);
  bool decode_content(const TextPlan& plan, Value v);
  bool decode_fields(const TextPlan& plan, Value v);
  bool decode_field(const TextPlan& plan, Value v, size_t i, bool& is_first);
  bool decode_set(const TextPlan& plan, Value v);
  bool decode_set_field(const TextPlan& plan, Value v, size_t i, bool& is_first);
  bool decode_list(const TextPlan& plan, Value v);
  bool decode_choice(const TextPlan& plan, Value v);
  bool decode_leaf(const TextPlan& plan, Value v);
  void skip_blanks(const TextPlan& plan, size_t start);
  bool decode_literal(const TextPlan& plan, Value v);
  bool set_leaf(const TextPlan& plan, Value v, std::string text);
  bool omit(const TextPlan& plan, Value v, size_t i);
  size_t extent(const TextPlan& plan) const;
  bool check(Value v);

  std::string_view octets_;
  Trials trials_;
  // What ends a text that has no pattern of its own, the innermost last.
  std::vector<const TextToken*> terminators_;
  FieldPath path_;
  bool has_fault_ = false;
  size_t fault_at_ = 0;
  std::string fault_path_;
  const char* fault_what_ = "";
};

// The fault that is furthest in the text tells most.
bool TextDecoder::fail(const char* what) {
  if (has_fault_ && at <= fault_at_) return false;
  has_fault_ = true;
  fault_at_ = at;
  fault_path_ = path_.text();
  fault_what_ = what;
  return false;
}

// Whatever was found out before.
bool TextDecoder::give_up() {
  has_fault_ = true;
  fault_at_ = octets_.size();
  fault_path_.clear();
  fault_what_ = too_many_trials;
  return false;
}

std::string TextDecoder::fault() const {
  return "octet " + std::to_string(fault_at_ + 1) + (fault_path_.empty() ? "" : ", field " + fault_path_) +
         ": " + fault_what_;
}

bool TextDecoder::take(const TextToken& token, const char* what) {
  if (!token.given) return true;
  const size_t n = token.match(octets_.substr(at));
  if (n == npos) return fail(what);
  at += n;
  return true;
}

bool TextDecoder::check(Value v) {
  if (!has_check(v->type)) return true;
  const TempScope scope;
  const Quiet quiet;
  return lumo_type_check(v->type, v, current_task) || fail("the value is not of its type");
}

bool TextDecoder::decode(const TextPlan& plan, Value v) {
  if (stack_is_short()) return fail("the value is nested too deeply");
  if (!trials_.begin()) return give_up();
  const size_t terminators = terminators_.size();
  if (plan.end.given) terminators_.push_back(&plan.end);
  const bool good = take(plan.begin, "the text that begins the value is missing") &&
                    decode_content(plan, v) && take(plan.end, "the text that ends the value is missing") &&
                    check(v);
  terminators_.resize(terminators);
  return good;
}

bool TextDecoder::decode_content(const TextPlan& plan, Value v) {
  switch (plan.kind) {
    case lumo_type_kind_record:
      return decode_fields(plan, v);
    case lumo_type_kind_set:
      return decode_set(plan, v);
    case lumo_type_kind_union:
      return decode_choice(plan, v);
    default:
      return is_list_kind(plan.kind) ? decode_list(plan, v) : decode_leaf(plan, v);
  }
}

bool TextDecoder::omit(const TextPlan& plan, Value v, size_t i) {
  if (!plan.fields[i].optional) return false;
  v->parts.data[i] = lumo_omit_value_c;
  return true;
}

// A field and the separator before it; where it is not there, nothing is taken.
bool TextDecoder::decode_field(const TextPlan& plan, Value v, size_t i, bool& is_first) {
  const size_t start = at, terminators = terminators_.size();
  const bool is_last = i + 1 == plan.fields.size();
  if (plan.separator.given && !is_last) terminators_.push_back(&plan.separator);
  // Without one the next field may begin with a text.
  const bool has_next = !plan.separator.given && !is_last && plan.fields[i + 1].plan->begin.given;
  if (has_next) terminators_.push_back(&plan.fields[i + 1].plan->begin);
  path_.enter(plan.fields[i].name.c_str());
  const bool good =
      (is_first || take(plan.separator, "the separator is missing")) &&
      decode(*plan.fields[i].plan, force_part(v, i)) &&
      (!plan.fields[i].optional || (at > start && !is_nothing(*plan.fields[i].plan, v->parts.data[i])));
  path_.leave();
  terminators_.resize(terminators);
  if (good) {
    is_first = false;
    return true;
  }
  at = start;
  if (v->parts.data[i] && v->parts.data[i]->life != Life::fixed) destroy(v->parts.data[i]);
  v->parts.data[i] = nullptr;
  return false;
}

bool TextDecoder::decode_fields(const TextPlan& plan, Value v) {
  shape(v);
  bool is_first = true;
  for (size_t i = 0; i < plan.fields.size(); ++i)
    if (!decode_field(plan, v, i, is_first) && !omit(plan, v, i)) return false;
  return true;
}

// The next field of a set, or more elements of one that may come apart; false where nothing was taken.
bool TextDecoder::decode_set_field(const TextPlan& plan, Value v, size_t i, bool& is_first) {
  const Value before = v->parts.data[i];
  if (before && !plan.fields[i].plan->repeatable) return false;
  const size_t start = at;
  v->parts.data[i] = nullptr;
  const bool was_first = is_first;
  bool good = decode_field(plan, v, i, is_first) && at > start;
  // A separator alone is not that of a list without elements.
  if (good && !was_first && is_nothing(*plan.fields[i].plan, v->parts.data[i])) {
    good = false;
    at = start;
    destroy(v->parts.data[i]);
    v->parts.data[i] = nullptr;
  }
  if (before) append_elements(before, std::exchange(v->parts.data[i], before));
  return good;
}

bool TextDecoder::decode_set(const TextPlan& plan, Value v) {
  shape(v);
  bool is_first = true;
  for (bool found = true; found;) {
    found = false;
    for (size_t i = 0; i < plan.fields.size() && !found; ++i) found = decode_set_field(plan, v, i, is_first);
  }
  for (size_t i = 0; i < plan.fields.size(); ++i)
    if (!v->parts.data[i] && !omit(plan, v, i)) return fail("a field is missing");
  return true;
}

bool TextDecoder::decode_list(const TextPlan& plan, Value v) {
  shape(v);
  v->parts.size = 0;
  const size_t terminators = terminators_.size();
  if (plan.separator.given) terminators_.push_back(&plan.separator);
  for (;;) {
    const size_t start = at, size = v->parts.size;
    resize_parts(v, size + 1);
    const bool good = (size == 0 || take(plan.separator, "the separator is missing")) &&
                      decode(*plan.fields[0].plan, force_part(v, size)) &&
                      (at > start || (size == 0 && at < octets_.size()));
    if (good) continue;
    at = start;
    destroy(v->parts.data[size]);
    v->parts.data[size] = nullptr;
    v->parts.size = size;
    break;
  }
  terminators_.resize(terminators);
  return v->kind != lumo_type_kind_array || v->parts.size == array_length(v->type) ||
         fail("elements are missing");
}

bool TextDecoder::decode_choice(const TextPlan& plan, Value v) {
  const size_t start = at;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    shape(v);
    v->index = static_cast<long>(i);
    resize_parts(v, 1);
    path_.enter(plan.fields[i].name.c_str());
    const bool good = decode(*plan.fields[i].plan, force_part(v, 0));
    path_.leave();
    if (good) return true;
    at = start;
    destroy(v->parts.data[0]);
    v->parts.size = 0;
    v->index = -1;
  }
  return fail("no alternative fits");
}

size_t while_any(std::string_view text, size_t at, std::string_view set) {
  const size_t end = text.find_first_not_of(set, at);
  return end == npos ? text.size() : end;
}

// How much of the text a leaf takes.
size_t TextDecoder::extent(const TextPlan& plan) const {
  const std::string_view rest = octets_.substr(at);
  if (!plan.content.pattern.empty()) return plan.content.match(rest);
  size_t start = rest.find_first_not_of(' ');
  start = start == npos ? 0 : start;
  if (plan.kind == lumo_type_kind_integer)
    return while_any(rest, start + (start < rest.size() && rest[start] == '-'), "0123456789");
  if (plan.kind == lumo_type_kind_float) return while_any(rest, start, "0123456789.eE+-");
  if (plan.kind == lumo_type_kind_boolean)
    return rest.starts_with("false") ? 5 : std::min<size_t>(rest.size(), 4);
  if (is_digit_kind(plan.kind))
    return while_any(rest, 0, plan.kind == lumo_type_kind_bitstring ? "01" : "0123456789ABCDEFabcdef");
  const size_t most = std::min(plan.most, rest.size());
  for (size_t n = 0; n < most; ++n)
    for (const TextToken* token : terminators_)
      if (const size_t length = token->match(rest.substr(n)); length != npos && length > 0) return n;
  return most;
}

bool TextDecoder::decode_literal(const TextPlan& plan, Value v) {
  for (const auto& [literal, number] : plan.literals) {
    TextToken token{true, plan.content.any_case || plan.read_case != TextCase::same, literal, ""};
    convert(token.text, plan.written_case);
    const size_t n = token.match(octets_.substr(at));
    if (n == npos) continue;
    at += n;
    v->form = Form::enumerated;
    v->integer = number;
    return true;
  }
  return fail("the text is no literal of the enumeration");
}

bool TextDecoder::set_leaf(const TextPlan& plan, Value v, std::string text) {
  size_t taken = 0;
  if (plan.kind == lumo_type_kind_integer) {
    const std::string_view digits = trim(text);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), v->integer);
    if (error != std::errc() || end != digits.data() + digits.size())
      return fail("the text is no number of 64 bits");
    v->form = Form::integer;
    return true;
  }
  if (plan.kind == lumo_type_kind_boolean) {
    if (text != "true" && text != "false") return fail("the text is neither true nor false");
    v->form = Form::boolean;
    v->boolean = text == "true";
    return true;
  }
  if (plan.kind == lumo_type_kind_float) {
    char* end;
    v->real = std::strtod(text.c_str(), &end);
    if (text.empty() || *end) return fail("the text is no number");
    v->form = Form::real;
    return true;
  }
  if (is_digit_kind(plan.kind)) {
    convert(text, TextCase::upper);
    const char* digits = plan.kind == lumo_type_kind_bitstring ? "01" : "0123456789ABCDEF";
    if (text.find_first_not_of(digits) != npos) return fail("the text holds other characters than digits");
    return set_text(v, text), true;
  }
  convert(text, plan.read_case);
  if (plan.least && plan.just_right) text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
  if (plan.least && !plan.just_right) text.erase(text.find_last_not_of(' ') + 1);
  return (set_plain(v, text, taken) && taken == text.size()) || fail("the text is no value of the type");
}

// Blanks that make a value as long as it has to be.
void TextDecoder::skip_blanks(const TextPlan& plan, size_t start) {
  while (at < octets_.size() && at - start < plan.least && octets_[at] == ' ') ++at;
}

bool TextDecoder::decode_leaf(const TextPlan& plan, Value v) {
  const size_t start = at;
  const bool has_blanks = !is_text_kind(plan.kind);
  if (has_blanks && plan.just_right) skip_blanks(plan, start);
  const size_t begin = at;
  if (plan.kind == lumo_type_kind_enumerated) {
    if (!decode_literal(plan, v)) return false;
  } else {
    const size_t n = extent(plan);
    if (n == npos) return fail("the text does not match the pattern of the value");
    if (!set_leaf(plan, v, std::string(octets_.substr(begin, n)))) return false;
    at = begin + n;
  }
  if (has_blanks && !plan.just_right) skip_blanks(plan, start);
  return true;
}

}  // namespace

bool text_encode(const TextPlan& plan, Value v, std::string& octets, std::string& fault) {
  TextEncoder encoder;
  if (!encoder.encode(plan, v)) return fault = encoder.fault, false;
  octets += encoder.octets;
  return true;
}

Value text_decode(const TextPlan& plan, std::string_view octets, size_t& taken, std::string& fault) {
  TextDecoder decoder(octets);
  Value v = make_root(plan.type, lumo_temp_alloc_c);
  const bool good = decoder.decode(plan, v);
  taken = decoder.at;
  if (!good || (taken < octets.size() && decoder.has_fault())) fault = decoder.fault();
  return good ? v : nullptr;
}

}  // namespace lumos
