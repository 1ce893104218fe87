// Values to bit fields.
#include <algorithm>
#include <cstring>

#include "codec/plain.h"
#include "codec/raw.h"
#include "value/error.h"
#include "value/types.h"

namespace lumos {

namespace {

// A part that gets another value than it has, since lengths, tags and pointers ask for it.
struct Replaced {
  Value part;
  Value by;  // null: the number
  long number;
};

// One of the comparisons has to hold for the parts of a value.
struct Asked {
  Value whole;
  const RawConditions* conditions;
};

const std::vector<std::string> no_index;

class Encoder {
 public:
  bool encode(const RawPlan& plan, Value v, RawOrder around);
  void pad(unsigned multiple, const std::string& pattern, BitOrder order);
  BitSink sink;
  std::string fault;

 private:
  bool fail(const std::string& text);
  bool encode_content(const RawPlan& plan, Value v, RawOrder around);
  bool encode_number(const RawPlan& plan, lumo_long_integer_t number, BitOrder order);
  bool encode_groups_of_seven(const RawPlan& plan, lumo_long_integer_t number, BitOrder order);
  bool encode_bits(const RawPlan& plan, std::string_view digits, BitOrder order);
  bool encode_octets(const RawPlan& plan, Value v, BitOrder order);
  bool encode_digits(const RawPlan& plan, std::string_view digits, BitOrder order);
  bool encode_float(const RawPlan& plan, double number, BitOrder order);
  bool encode_list(const RawPlan& plan, Value v, RawOrder around);
  bool encode_choice(const RawPlan& plan, Value v, RawOrder around);
  bool encode_record(const RawPlan& plan, Value v);
  bool encode_fields(const RawPlan& plan, Value v, size_t spans);
  bool set_lengths(const RawPlan& plan, Value v, size_t spans);
  bool set_pointers(const RawPlan& plan, Value v, size_t spans);
  bool set_number(const RawPlan& plan, Value v, size_t field, std::span<const std::string> index, long number,
                  size_t spans);
  bool encode_again(const RawPlan& plan, Value v, size_t field, size_t spans);
  bool mark_last(RawExtension kind, const BitPlace& start, const BitPlace& end);

  void settle(size_t first);
  bool holds(const Asked& asked) const;
  size_t held(size_t first) const;
  void make_hold(const Asked& asked, size_t first, size_t around);
  const Replaced* replacement(Value part) const;

  std::vector<BitSpan> spans_;
  std::vector<Replaced> replaced_;
  std::vector<Asked> asked_;
  FieldPath path_;
};

bool Encoder::fail(const std::string& text) {
  const std::string field = path_.text();
  fault = field.empty() ? text : "field " + field + ": " + text;
  return false;
}

const Replaced* Encoder::replacement(Value part) const {
  for (size_t i = replaced_.size(); i-- > 0;)
    if (replaced_[i].part == part) return &replaced_[i];
  return nullptr;
}

bool Encoder::holds(const Asked& asked) const {
  return std::any_of(asked.conditions->begin(), asked.conditions->end(), [&](const RawCondition& c) {
    Value part = part_at(asked.whole, c.path);
    const Replaced* by = part && !replaced_.empty() ? replacement(part) : nullptr;
    return holds_for(c, by && by->by ? by->by : part);
  });
}

size_t Encoder::held(size_t first) const {
  return static_cast<size_t>(std::count_if(asked_.begin() + static_cast<std::ptrdiff_t>(first), asked_.end(),
                                           [&](const Asked& a) { return holds(a); }));
}

// Makes the first comparison hold that takes nothing from others, nor from what is said from around.
void Encoder::make_hold(const Asked& asked, size_t first, size_t around) {
  const size_t before = held(first);
  for (const RawCondition& c : *asked.conditions) {
    Value part = part_at(asked.whole, c.path);
    if (!part || !c.constant) continue;
    const Replaced* by = replacement(part);
    if (by && static_cast<size_t>(by - replaced_.data()) < around) continue;
    replaced_.push_back({part, c.constant, 0});
    if (held(first) > before) return;
    replaced_.pop_back();
  }
}

// What was asked for from the first on is made to hold, and stays so whatever is asked for further inside.
void Encoder::settle(size_t first) {
  const size_t around = replaced_.size();
  for (size_t k = first; k < asked_.size(); ++k)
    if (!holds(asked_[k])) make_hold(asked_[k], first, around);
  for (size_t k = first; k < asked_.size(); ++k)
    for (const RawCondition& c : *asked_[k].conditions) {
      Value part = part_at(asked_[k].whole, c.path);
      if (part && !replacement(part) && holds_for(c, part)) replaced_.push_back({part, c.constant, 0});
    }
  asked_.resize(first);
}

void Encoder::pad(unsigned multiple, const std::string& pattern, BitOrder order) {
  if (multiple == 0) return;
  for (size_t i = 0; sink.place.bits() % multiple != 0; ++i)
    sink.put(pattern[i % pattern.size()] == '1', 1, order);
}

bool Encoder::encode(const RawPlan& plan, Value v, RawOrder around) {
  if (stack_is_short()) return fail("the value is nested too deeply");
  const size_t replaced = replaced_.size();
  if (!plan.presence.empty()) {
    asked_.push_back({v, &plan.presence});
    settle(asked_.size() - 1);
  }
  const BitPlace start = sink.place;
  const bool good = encode_content(plan, v, around);
  replaced_.resize(replaced);
  const bool has_marks = plan.extension != RawExtension::none && has_octet_marks(plan);
  return good && (!has_marks || mark_last(plan.extension, start, sink.place));
}

bool Encoder::encode_content(const RawPlan& plan, Value v, RawOrder around) {
  v = settled(v);
  if (const Replaced* by = replaced_.empty() ? nullptr : replacement(v)) {
    if (!by->by) {
      BitOrder order = plan.bits;
      order.fields_msb = (plan.order == RawOrder::inherited ? around : plan.order) == RawOrder::msb;
      return encode_number(plan, by->number, order);
    }
    v = by->by;
  }
  const RawOrder order_around = plan.order == RawOrder::inherited ? around : plan.order;
  BitOrder order = plan.bits;
  order.fields_msb = order_around == RawOrder::msb;
  switch (plan.kind) {
    case lumo_type_kind_integer:
    case lumo_type_kind_enumerated:
      if (v->form != Form::integer && v->form != Form::enumerated) break;
      return encode_number(plan, v->integer, order);
    case lumo_type_kind_boolean:
      if (v->form != Form::boolean) break;
      return encode_number(plan, v->boolean, order);
    case lumo_type_kind_float:
      if (v->form != Form::real) break;
      return encode_float(plan, v->real, order);
    case lumo_type_kind_bitstring:
      if (v->form != Form::string) break;
      return encode_bits(plan, {v->text.data, v->text.size}, order);
    case lumo_type_kind_hexstring:
      if (v->form != Form::string) break;
      return encode_digits(plan, {v->text.data, v->text.size}, order);
    case lumo_type_kind_octetstring:
    case lumo_type_kind_charstring:
    case lumo_type_kind_universal_charstring:
      if (v->form != Form::string && v->form != Form::wide_string) break;
      return encode_octets(plan, v, order);
    case lumo_type_kind_record:
    case lumo_type_kind_set:
      if (v->form != Form::fields && !plan.fields.empty()) break;
      return encode_record(plan, v);
    case lumo_type_kind_union:
      if (v->form != Form::choice || v->index < 0) break;
      return encode_choice(plan, v, order_around);
    case lumo_type_kind_recordof:
    case lumo_type_kind_setof:
    case lumo_type_kind_array:
      if (v->form != Form::vector) break;
      return encode_list(plan, v, order_around);
    default:
      return fail(std::string("values of type '") + type_name(plan.type) + "' have no RAW encoding");
  }
  return fail("the value is not completely initialized");
}

std::string too_large(lumo_long_integer_t number, size_t bits) {
  return "the number " + std::to_string(number) + " does not fit into " + std::to_string(bits) + " bits";
}

bool Encoder::encode_groups_of_seven(const RawPlan& plan, lumo_long_integer_t number, BitOrder order) {
  if (number < 0) return fail("a negative number has no extension bits");
  const auto most = static_cast<unsigned>(plan.form == RawLength::given ? plan.length / 8 : 9);
  unsigned groups = plan.form == RawLength::given ? most : 1;
  while (groups < 9 && number >> 7 * groups) ++groups;
  if (groups > most) return fail(too_large(number, plan.length - most));
  const BitPlace start = sink.place;
  for (unsigned i = 0; i < groups; ++i) {
    const unsigned at = order.octets_last ? groups - 1 - i : i;
    sink.put(static_cast<uint64_t>(number) >> 7 * at & 0x7F, 8, order);
  }
  return mark_last(plan.extension, start, sink.place);
}

// The bits that stand for a number; false where it does not fit.
bool number_bits(const RawPlan& plan, lumo_long_integer_t number, uint64_t& bits) {
  const auto length = static_cast<unsigned>(plan.length);
  const bool is_negative = number < 0;
  if (is_negative && plan.sign == RawSign::none) return false;
  const uint64_t magnitude = is_negative ? 0 - static_cast<uint64_t>(number) : static_cast<uint64_t>(number);
  const unsigned room = plan.sign == RawSign::none ? length : length - 1;
  // The complement has one negative number more.
  const bool has_more = plan.sign == RawSign::complement && is_negative;
  if (room < 64 && (magnitude - has_more) >> room != 0) return false;
  bits = plan.sign == RawSign::complement ? static_cast<uint64_t>(number) : magnitude;
  if (plan.sign == RawSign::sign_bit && is_negative) bits |= uint64_t(1) << room;
  if (length < 64) bits &= (uint64_t(1) << length) - 1;
  return true;
}

bool Encoder::encode_number(const RawPlan& plan, lumo_long_integer_t number, BitOrder order) {
  if (is_groups_of_seven(plan)) return encode_groups_of_seven(plan, number, order);
  uint64_t bits;
  if (!number_bits(plan, number, bits)) return fail(too_large(number, plan.length));
  sink.put(bits, static_cast<unsigned>(plan.length), order);
  return true;
}

bool Encoder::encode_float(const RawPlan& plan, double number, BitOrder order) {
  if (plan.length == 32) {
    const auto narrow = static_cast<float>(number);
    uint32_t bits;
    std::memcpy(&bits, &narrow, sizeof bits);
    sink.put(bits, 32, order);
    return true;
  }
  uint64_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  if (plan.length != 64) return fail("a float takes 32 or 64 bits");
  sink.put(bits, 64, order);
  return true;
}

bool Encoder::encode_bits(const RawPlan& plan, std::string_view digits, BitOrder order) {
  const size_t length = plan.form == RawLength::given ? plan.length : digits.size();
  if (digits.size() > length)
    return fail(std::to_string(digits.size()) + " bits do not fit into " + std::to_string(length));
  if (digits.size() == length) {
    sink.put_digits(digits, order);
    return true;
  }
  std::string filled(digits);
  filled.insert(plan.align_left ? filled.size() : 0, length - digits.size(), '0');
  sink.put_digits(filled, order);
  return true;
}

// The digits of a hexstring go two by two into octets, the first one low or high.
bool Encoder::encode_digits(const RawPlan& plan, std::string_view digits, BitOrder order) {
  const size_t length = plan.form == RawLength::given ? plan.length : digits.size();
  if (digits.size() > length)
    return fail(std::to_string(digits.size()) + " digits do not fit into " + std::to_string(length));
  std::string all(digits);
  all.insert(plan.align_left ? all.size() : 0, length - digits.size(), '0');
  auto number = [](char c) { return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'A' + 10); };
  size_t pairs = all.size() / 2;
  for (size_t i = 0; i < pairs; ++i) {
    const size_t at = order.octets_last ? pairs - 1 - i : i;
    const unsigned first = number(all[2 * at]), second = number(all[2 * at + 1]);
    sink.put_octet(static_cast<unsigned char>(plan.hex_high ? first << 4 | second : second << 4 | first),
                   order);
  }
  if (all.size() % 2) sink.put(number(all.back()), 4, order);
  return true;
}

bool Encoder::encode_octets(const RawPlan& plan, Value v, BitOrder order) {
  std::string text;
  std::string_view octets;
  if (v->kind == lumo_type_kind_charstring && v->form == Form::string) {
    octets = {v->text.data, v->text.size};
  } else {
    text = plain_octets(v);
    octets = text;
  }
  const size_t length = plan.form == RawLength::given ? plan.length : octets.size();
  if (octets.size() > length)
    return fail(std::to_string(octets.size()) + " octets do not fit into " + std::to_string(length));
  const size_t missing = length - octets.size();
  const unsigned char filler = is_text_kind(v->kind) ? ' ' : 0;
  if (!plan.align_left)
    for (size_t i = 0; i < missing; ++i) sink.put_octet(filler, order);
  sink.put_octets(octets, order);
  if (plan.align_left)
    for (size_t i = 0; i < missing; ++i) sink.put_octet(filler, order);
  if (plan.form != RawLength::null_terminated) return true;
  if (octets.find('\0') != std::string_view::npos) return fail("the text holds the character that ends it");
  sink.put_octet(0, order);
  return true;
}

bool Encoder::encode_list(const RawPlan& plan, Value v, RawOrder around) {
  if (plan.form == RawLength::given && v->parts.size != plan.length)
    return fail(std::to_string(v->parts.size) + " elements instead of " + std::to_string(plan.length));
  const RawPlan& element = *plan.fields[0].plan;
  for (size_t i = 0; i < v->parts.size; ++i) {
    if (!is_there(v->parts.data[i])) return fail("an element is not initialized");
    pad(element.prepadding, element.pattern, {});
    if (!encode(element, v->parts.data[i], around)) return false;
    if (plan.extension != RawExtension::none)
      sink.set_last_bit((i + 1 == v->parts.size) == (plan.extension == RawExtension::last_is_one));
    pad(element.padding, element.pattern, {});
  }
  return true;
}

bool Encoder::encode_choice(const RawPlan& plan, Value v, RawOrder around) {
  const RawField& field = plan.fields[static_cast<size_t>(v->index)];
  if (!is_there(v->parts.data[0])) return fail("the value is not completely initialized");
  const size_t replaced = replaced_.size();
  if (!field.tag.empty()) {
    asked_.push_back({v->parts.data[0], &field.tag});
    settle(asked_.size() - 1);
  }
  path_.enter(field.name);
  bool good = encode(*field.plan, v->parts.data[0], around);
  if (good) path_.leave();
  if (good) pad(field.plan->padding, field.plan->pattern, {});
  replaced_.resize(replaced);
  return good;
}

// The most significant bit of each octet tells whether it is the last one.
bool Encoder::mark_last(RawExtension kind, const BitPlace& start, const BitPlace& end) {
  if (kind == RawExtension::none || end.octet == start.octet) return true;
  if (!start.is_aligned() || !end.is_aligned())
    return fail("what has an extension bit does not fill whole octets");
  for (size_t i = start.octet; i < end.octet; ++i) {
    const bool is_set = (i + 1 == end.octet) == (kind == RawExtension::last_is_one);
    auto& octet = reinterpret_cast<unsigned char&>(sink.octets()[i]);
    octet = static_cast<unsigned char>((octet & 0x7F) | (is_set ? 0x80 : 0));
  }
  return true;
}

bool Encoder::encode_record(const RawPlan& plan, Value v) {
  if (plan.fields.empty()) return true;
  const size_t replaced = replaced_.size(), spans = spans_.size(), asked = asked_.size();
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const RawField& field = plan.fields[i];
    Value part = v->parts.data[i];
    if (!is_there(part) || field.omitted) continue;
    if (!field.presence.empty()) asked_.push_back({v, &field.presence});
    if (!field.tag.empty()) asked_.push_back({part, &field.tag});
    if (field.cross.empty()) continue;
    const Value chosen = settled(part);
    for (const RawAlternative& a : field.cross)
      if (chosen->form == Form::choice && static_cast<long>(a.index) == chosen->index)
        asked_.push_back({v, &a.conditions});
  }
  settle(asked);
  spans_.resize(spans + plan.fields.size());
  bool good = encode_fields(plan, v, spans) && set_lengths(plan, v, spans) && set_pointers(plan, v, spans);
  for (const RawGroup& g : plan.groups)
    good = good && mark_last(g.kind, spans_[spans + g.first].start, spans_[spans + g.last].end);
  replaced_.resize(replaced);
  spans_.resize(spans);
  return good;
}

bool Encoder::encode_fields(const RawPlan& plan, Value v, size_t spans) {
  BitOrder order;
  order.fields_msb = plan.order == RawOrder::msb;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const RawField& field = plan.fields[i];
    Value part = v->parts.data[i];
    if (!is_there(part) || field.omitted) {
      spans_[spans + i] = {sink.place, sink.place, false};
      if (field.optional) continue;
      path_.enter(field.name);
      return fail("the field is not initialized");
    }
    pad(field.plan->prepadding, field.plan->pattern, order);
    const BitPlace start = sink.place;
    path_.enter(field.name);
    // The number of a length or pointer is set when all is there.
    if (field.length != no_place || field.pointer != no_place) {
      const size_t replaced = replaced_.size();
      const Value number =
          length_leaf(part, field.length == no_place ? no_index : plan.lengths[field.length].index);
      if (number) replaced_.push_back({number, nullptr, 0});
      if (!encode(*field.plan, part, plan.order)) return false;
      replaced_.resize(replaced);
    } else if (!encode(*field.plan, part, plan.order)) {
      return false;
    }
    path_.leave();
    spans_[spans + i] = {start, sink.place, true};
    pad(field.plan->padding, field.plan->pattern, order);
  }
  return true;
}

bool Encoder::set_lengths(const RawPlan& plan, Value v, size_t spans) {
  // Inner ones come later and may count further ones, so they go first.
  for (size_t k = plan.lengths.size(); k-- > 0;) {
    const RawLengthField& length = plan.lengths[k];
    if (!spans_[spans + length.field].present) continue;
    size_t total = 0;
    for (const size_t i : length.counted) {
      const BitSpan& span = spans_[spans + i];
      if (!span.present) continue;
      total += length.unit == unit_elements ? settled(v->parts.data[i])->parts.size
                                            : span.end.bits() - span.start.bits();
    }
    const auto unit = static_cast<size_t>(length.unit == unit_elements ? 1 : length.unit);
    const long number = static_cast<long>((total + unit - 1) / unit) + length.added;
    path_.enter(plan.fields[length.field].name);
    if (!set_number(plan, v, length.field, length.index, number, spans)) return false;
    path_.leave();
  }
  return true;
}

bool Encoder::set_pointers(const RawPlan& plan, Value v, size_t spans) {
  for (const RawPointerField& pointer : plan.pointers) {
    if (!spans_[spans + pointer.field].present) continue;
    const BitSpan &target = spans_[spans + pointer.target], &base = spans_[spans + pointer.base];
    const size_t distance = target.start.bits() - base.start.bits();
    path_.enter(plan.fields[pointer.field].name);
    const long number = target.present ? static_cast<long>(distance) / pointer.unit : 0;
    if (target.present && distance % static_cast<size_t>(pointer.unit))
      return fail("the distance is no whole number");
    if (!set_number(plan, v, pointer.field, no_index, number, spans)) return false;
    path_.leave();
  }
  return true;
}

bool Encoder::set_number(const RawPlan& plan, Value v, size_t field, std::span<const std::string> index,
                         long number, size_t spans) {
  const RawPlan& holder = *plan.fields[field].plan;
  uint64_t bits;
  if (holder.kind == lumo_type_kind_integer && holder.form == RawLength::given &&
      holder.extension == RawExtension::none && number_bits(holder, number, bits)) {
    BitOrder order = holder.bits;
    order.fields_msb = (holder.order == RawOrder::inherited ? plan.order : holder.order) == RawOrder::msb;
    sink.overwrite(spans_[spans + field].start, bits, static_cast<unsigned>(holder.length), order);
    return true;
  }
  const Value leaf = length_leaf(v->parts.data[field], index);
  if (!leaf) return fail("there is no number that could hold the length");
  replaced_.push_back({leaf, nullptr, number});
  const bool good = encode_again(plan, v, field, spans);
  replaced_.pop_back();
  return good;
}

// A field over what stands there. Where it takes more or less room, what follows is moved.
bool Encoder::encode_again(const RawPlan& plan, Value v, size_t field, size_t spans) {
  BitSpan& span = spans_[spans + field];
  const BitPlace end = sink.place;
  BitSink all = std::move(sink);
  sink = BitSink();
  sink.place = span.start;
  sink.octets() = all.octets().substr(0, span.start.octet + !span.start.is_aligned());
  const bool good = encode(*plan.fields[field].plan, v->parts.data[field], plan.order);
  if (!good) return false;
  const BitPlace now = sink.place;
  if (now.bits() == span.end.bits()) {
    const size_t whole = now.octet;
    if (!now.is_aligned()) {
      const unsigned free = ((1u << now.high) - 1) & ~((1u << now.low) - 1);
      auto& octet = reinterpret_cast<unsigned char&>(sink.octets()[whole]);
      octet = static_cast<unsigned char>((octet & ~free) |
                                         (static_cast<unsigned char>(all.octets()[whole]) & free));
    }
    sink.octets() += all.octets().substr(whole + !now.is_aligned());
    sink.place = end;
    return true;
  }
  if (!now.is_aligned() || !span.end.is_aligned())
    return fail("the length changes the place of what follows");
  sink.octets() += all.octets().substr(span.end.octet);
  const size_t shift = now.octet - span.end.octet;
  span.end = now;
  for (size_t i = field + 1; i < plan.fields.size(); ++i) {
    spans_[spans + i].start.octet += shift;
    spans_[spans + i].end.octet += shift;
  }
  sink.place = end;
  sink.place.octet += shift;
  return true;
}

}  // namespace

bool raw_encode(const RawPlan& plan, Value v, std::string& octets, std::string& fault) {
  Encoder encoder;
  encoder.sink.octets().reserve(64);
  encoder.pad(plan.prepadding, plan.pattern, {});
  if (!encoder.encode(plan, v, RawOrder::lsb)) {
    fault = encoder.fault;
    return false;
  }
  encoder.pad(plan.padding, plan.pattern, {});
  if (plan.top_msb)
    for (char& c : encoder.sink.octets()) c = static_cast<char>(mirror(static_cast<unsigned char>(c), 8));
  octets += encoder.sink.octets();
  return true;
}

}  // namespace lumos
