// Bit fields to values. Nothing is read outside of the octets, and no part outside of what the lengths around
// it leave.
#include <algorithm>
#include <cstring>

#include "codec/plain.h"
#include "codec/raw.h"
#include "codec/trials.h"
#include "value/error.h"
#include "value/task.h"
#include "value/types.h"

namespace lumos {

namespace {

// What a length field of the record said.
struct Counter {
  bool known;
  long left;  // bits, or elements
};

// A record that is being decoded; where its fields and counters begin among those of all that are open.
struct Record {
  const RawPlan& plan;
  Value v;
  size_t limit;
  size_t spans, counters;
  // Where the fields of the group end whose octets tell it by their extension bits.
  mutable size_t group_end = SIZE_MAX;
};

constexpr size_t any_count = SIZE_MAX;

class Decoder {
 public:
  explicit Decoder(std::string_view octets) : source(octets), trials_(octets.size()) {}
  bool decode_all(const RawPlan& plan, Value v);
  std::string fault() const;
  bool has_fault() const { return has_fault_; }
  void skip_padding(unsigned multiple, size_t limit);
  BitSource source;

 private:
  bool decode(const RawPlan& plan, Value v, RawOrder around, size_t limit);
  bool fail(const char* what);
  bool give_up();
  bool fail_from(size_t start, const char* what);
  BitOrder order_of(const RawPlan& plan, RawOrder around) const;

  bool decode_content(const RawPlan& plan, Value v, RawOrder around, size_t limit);
  bool decode_kind(const RawPlan& plan, Value v, RawOrder around, size_t limit, size_t count);
  bool decode_number(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool decode_groups_of_seven(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool take_number(const RawPlan& plan, Value v, uint64_t bits);
  bool decode_float(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool decode_bits(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool decode_digits(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool decode_octets(const RawPlan& plan, Value v, BitOrder order, size_t limit);
  bool decode_list(const RawPlan& plan, Value v, RawOrder around, size_t limit, size_t count);
  bool decode_element(const RawPlan& plan, Value v, RawOrder around, size_t limit);
  bool decode_choice(const RawPlan& plan, Value v, RawOrder around, size_t limit);
  bool try_alternatives(const RawPlan& plan, Value v, RawOrder around, size_t limit, bool fills);
  bool decode_alternative(const RawPlan& plan, Value v, size_t i, RawOrder around, size_t limit);
  bool decode_record(const RawPlan& plan, Value v, size_t limit);
  bool decode_set(const RawPlan& plan, Value v, size_t limit);
  bool decode_set_field(const Record& r, size_t i, bool& found);
  bool decode_field(const Record& r, size_t i);
  bool decode_present(const Record& r, size_t i, size_t limit);
  bool omit(const Record& r, size_t i);
  bool choose_alternative(const Record& r, size_t i);
  bool enter_group(const Record& r, size_t i);
  bool leave_group(const Record& r, size_t i);
  bool add_distance(const Record& r, const RawPointerField& pointer, size_t& bits) const;
  bool go_to_target(const Record& r, size_t i, bool& is_omitted);
  size_t limit_of(const Record& r, size_t i) const;
  size_t count_of(const Record& r, size_t i) const;
  bool has_own_length(const Record& r, size_t i) const;
  size_t needed_behind(const Record& r, size_t i, size_t counter) const;
  bool start_counter(const Record& r, size_t i);
  void count_down(const Record& r, size_t i);
  bool check_counters(const Record& r);
  bool narrow(RawExtension marks, size_t& limit);
  bool check_type(const RawPlan& plan, Value v, size_t start);
  bool any_seen(const RawConditions& conditions, const RawPlan& plan, RawOrder around, size_t limit);
  bool seen(const RawCondition& c, const RawPlan& plan, RawOrder around, size_t limit);

  Trials trials_;
  std::vector<BitSpan> spans_;
  std::vector<Counter> counters_;
  FieldPath path_;
  int quiet_ = 0;
  size_t forced_ = no_place;  // the alternative of the next union
  size_t count_ = any_count;  // the elements of the next list
  bool chosen_ = false;       // a tag around was found for the next value
  bool fills_ = false;        // the next union has all octets to its limit
  bool has_fault_ = false;
  size_t begin_ = 0;  // of the value that is decoded
  size_t fault_reach_ = 0, fault_bits_ = 0;
  std::string fault_path_;
  const char* fault_what_ = "";
};

// Of what began at start. The fault that is furthest in the octets tells most: what was tried before it was
// not meant.
bool Decoder::fail_from(size_t start, const char* what) {
  const size_t reached = source.place.bits();
  if (quiet_ || (has_fault_ && reached <= fault_reach_)) return false;
  has_fault_ = true;
  fault_reach_ = reached;
  fault_bits_ = start;
  fault_path_ = path_.text();
  fault_what_ = what;
  return false;
}

bool Decoder::fail(const char* what) {
  return fail_from(source.place.bits(), what);
}

// Whatever was found out before.
bool Decoder::give_up() {
  has_fault_ = true;
  fault_reach_ = SIZE_MAX;
  fault_bits_ = source.size();
  fault_path_.clear();
  fault_what_ = too_many_trials;
  return false;
}

std::string Decoder::fault() const {
  std::string text = "octet " + std::to_string(fault_bits_ / 8 + 1);
  if (!fault_path_.empty()) text += ", field " + fault_path_;
  return text + ": " + fault_what_;
}

BitOrder Decoder::order_of(const RawPlan& plan, RawOrder around) const {
  BitOrder order = plan.bits;
  order.fields_msb = (plan.order == RawOrder::inherited ? around : plan.order) == RawOrder::msb;
  return order;
}

void Decoder::skip_padding(unsigned multiple, size_t limit) {
  if (multiple == 0) return;
  const size_t over = source.place.bits() % multiple;
  if (over == 0) return;
  const size_t missing = multiple - over, left = std::min(limit, source.size()) - source.place.bits();
  source.skip(std::min(missing, left), {}, limit);
}

bool Decoder::check_type(const RawPlan& plan, Value v, size_t start) {
  if (!plan.has_check) return true;
  const bool is_small = plan.kind == lumo_type_kind_integer && v->integer >= 0 && v->integer < 256;
  if (is_small && plan.checked.empty()) plan.checked.resize(256);
  uint8_t* known = is_small ? &plan.checked[static_cast<size_t>(v->integer)] : nullptr;
  if (known && *known) return *known == 1 || fail_from(start, "the value is not of its type");
  bool good;
  {
    const TempScope scope;
    const Quiet quiet;
    good = lumo_type_check(plan.type, v, current_task);
  }
  if (known) *known = good ? 1 : 2;
  return good || fail_from(start, "the value is not of its type");
}

// The octet with the mark of the last one ends what has extension bits.
bool Decoder::narrow(RawExtension marks, size_t& limit) {
  const size_t end = std::min(limit, source.size()) / 8;
  for (size_t i = source.place.octet; i < end; ++i) {
    const bool is_set = source.octets()[i] & 0x80;
    if (is_set != (marks == RawExtension::last_is_one)) continue;
    limit = (i + 1) * 8;
    return true;
  }
  return fail("no octet has the mark of the last one");
}

bool Decoder::seen(const RawCondition& c, const RawPlan& plan, RawOrder around, size_t limit) {
  const BitPlace start = source.place;
  const RawPlan& wanted = c.is_fixed ? *c.part : plan;
  RawOrder order = around;
  bool good = true;
  if (c.is_fixed) {
    for (const RawStep& step : c.steps) {
      BitOrder o;
      o.fields_msb = (step.order == RawOrder::inherited ? around : step.order) == RawOrder::msb;
      good = good && source.skip(step.bits, o, limit);
    }
    if (c.part_order != RawOrder::inherited) order = c.part_order;
  }
  Value scratch = make_root(wanted.type, lumo_perm_alloc_c);
  ++quiet_;
  good = good && decode_content(wanted, scratch, order, limit) &&
         holds_for(c, c.is_fixed ? scratch : part_at(scratch, c.path));
  --quiet_;
  destroy(scratch);
  source.place = start;
  return good;
}

bool Decoder::any_seen(const RawConditions& conditions, const RawPlan& plan, RawOrder around, size_t limit) {
  return std::any_of(conditions.begin(), conditions.end(),
                     [&](const RawCondition& c) { return seen(c, plan, around, limit); });
}

bool Decoder::decode_all(const RawPlan& plan, Value v) {
  fills_ = true;
  return decode(plan, v, RawOrder::lsb, SIZE_MAX);
}

bool Decoder::decode(const RawPlan& plan, Value v, RawOrder around, size_t limit) {
  if (stack_is_short()) return fail("the value is nested too deeply");
  if (!trials_.begin()) return give_up();
  const bool is_chosen = std::exchange(chosen_, false);
  if (!is_chosen && !plan.presence.empty() && !any_seen(plan.presence, plan, around, limit))
    return fail("the octets are not those that the type begins with");
  return decode_content(plan, v, around, limit);
}

bool Decoder::decode_content(const RawPlan& plan, Value v, RawOrder around, size_t limit) {
  if (plan.extension != RawExtension::none && has_octet_marks(plan) && !narrow(plan.extension, limit))
    return false;
  const size_t count = std::exchange(count_, any_count);
  if (plan.kind != lumo_type_kind_union) fills_ = false;
  const size_t start = begin_ = source.place.bits();
  return decode_kind(plan, v, around, limit, count) && check_type(plan, v, start);
}

bool Decoder::decode_kind(const RawPlan& plan, Value v, RawOrder around, size_t limit, size_t count) {
  const RawOrder order_around = plan.order == RawOrder::inherited ? around : plan.order;
  const BitOrder order = order_of(plan, around);
  switch (plan.kind) {
    case lumo_type_kind_integer:
    case lumo_type_kind_enumerated:
    case lumo_type_kind_boolean:
      return decode_number(plan, v, order, limit);
    case lumo_type_kind_float:
      return decode_float(plan, v, order, limit);
    case lumo_type_kind_bitstring:
      return decode_bits(plan, v, order, limit);
    case lumo_type_kind_hexstring:
      return decode_digits(plan, v, order, limit);
    case lumo_type_kind_octetstring:
    case lumo_type_kind_charstring:
    case lumo_type_kind_universal_charstring:
      return decode_octets(plan, v, order, limit);
    case lumo_type_kind_record:
      return decode_record(plan, v, limit);
    case lumo_type_kind_set:
      return decode_set(plan, v, limit);
    case lumo_type_kind_union:
      return decode_choice(plan, v, order_around, limit);
    case lumo_type_kind_recordof:
    case lumo_type_kind_setof:
    case lumo_type_kind_array:
      return decode_list(plan, v, order_around, limit, count);
    default:
      return fail("values of this type have no RAW encoding");
  }
}

bool Decoder::take_number(const RawPlan& plan, Value v, uint64_t bits) {
  if (plan.kind == lumo_type_kind_boolean) {
    v->form = Form::boolean;
    v->boolean = bits != 0;
    return true;
  }
  const auto length = static_cast<unsigned>(plan.length);
  auto number = static_cast<lumo_long_integer_t>(bits);
  const bool is_negative = plan.sign != RawSign::none && bits >> (length - 1) & 1;
  if (plan.sign == RawSign::none && number < 0) return fail_from(begin_, "the number has more than 63 bits");
  if (is_negative && plan.sign == RawSign::complement && length < 64)
    number = static_cast<lumo_long_integer_t>(bits | ~uint64_t(0) << length);
  if (is_negative && plan.sign == RawSign::sign_bit)
    number = -static_cast<lumo_long_integer_t>(bits & ~(uint64_t(1) << (length - 1)));
  v->form = plan.kind == lumo_type_kind_integer ? Form::integer : Form::enumerated;
  v->integer = number;
  if (plan.kind == lumo_type_kind_enumerated && !enum_name(plan.type, static_cast<long>(number)))
    return fail_from(begin_, "the number is none of the enumeration");
  return true;
}

bool Decoder::decode_number(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  if (is_groups_of_seven(plan)) return decode_groups_of_seven(plan, v, order, limit);
  uint64_t bits;
  if (!source.get(bits, static_cast<unsigned>(plan.length), order, limit)) return fail("the octets end");
  return take_number(plan, v, bits);
}

bool Decoder::decode_groups_of_seven(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  uint64_t number = 0;
  const auto most = static_cast<unsigned>(plan.form == RawLength::given ? plan.length / 8 : 9);
  bool is_last = false;
  for (unsigned i = 0; i < most && !is_last; ++i) {
    uint64_t octet;
    if (!source.get(octet, 8, order, limit)) return fail("the octets end");
    const uint64_t seven = octet & 0x7F;
    number = order.octets_last ? number << 7 | seven : number | seven << 7 * i;
    is_last = (octet >> 7 == 1) == (plan.extension == RawExtension::last_is_one);
    if (is_last && plan.form == RawLength::given && i + 1 < most)
      return fail("the mark of the last octet stands too early");
  }
  return is_last ? take_number(plan, v, number) : fail("no octet has the mark of the last one");
}

bool Decoder::decode_float(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  uint64_t bits;
  if (!source.get(bits, static_cast<unsigned>(std::min<size_t>(plan.length, 64)), order, limit))
    return fail("the octets end");
  double number;
  if (plan.length == 32) {
    const auto narrow_bits = static_cast<uint32_t>(bits);
    float narrow_number;
    std::memcpy(&narrow_number, &narrow_bits, sizeof narrow_number);
    number = narrow_number;
  } else {
    std::memcpy(&number, &bits, sizeof number);
  }
  if (number != number) return fail_from(begin_, "the octets are no number");
  v->form = Form::real;
  v->real = number;
  return true;
}

size_t left_until(const BitSource& source, size_t limit) {
  const size_t end = std::min(limit, source.size()), at = source.place.bits();
  return end > at ? end - at : 0;
}

bool Decoder::decode_bits(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  const size_t length =
      plan.form == RawLength::given ? plan.length : std::min(plan.most, left_until(source, limit));
  std::string digits;
  if (!source.get_digits(digits, length, order, limit)) return fail("the octets end");
  set_text(v, digits);
  return true;
}

bool Decoder::decode_digits(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  const size_t length =
      plan.form == RawLength::given ? plan.length : std::min(plan.most, left_until(source, limit) / 4);
  if (length > left_until(source, limit) / 4) return fail("the octets end");
  reserve_text(v, length);
  constexpr char digit[] = "0123456789ABCDEF";
  const size_t pairs = length / 2;
  for (size_t i = 0; i < pairs; ++i) {
    unsigned char octet;
    if (!source.get_octet(octet, order, limit)) return fail("the octets end");
    char* at = v->text.data + 2 * (order.octets_last ? pairs - 1 - i : i);
    at[plan.hex_high ? 0 : 1] = digit[octet >> 4];
    at[plan.hex_high ? 1 : 0] = digit[octet & 15];
  }
  uint64_t last;
  if (length % 2 == 0) return true;
  if (!source.get(last, 4, order, limit)) return fail("the octets end");
  v->text.data[length - 1] = digit[last];
  return true;
}

bool Decoder::decode_octets(const RawPlan& plan, Value v, BitOrder order, size_t limit) {
  const size_t left = left_until(source, limit) / 8;
  const size_t length = plan.form == RawLength::given ? plan.length : std::min(plan.most, left);
  if (length > left) return fail("the octets end");
  std::string_view octets;
  std::string text;
  if (source.place.is_aligned() && !order.bits_msb && !order.octets_last &&
      plan.form != RawLength::null_terminated) {
    octets = source.octets().substr(source.place.octet, length);
    source.place.take_octets(length, order.fields_msb);
  } else {
    unsigned char octet = 1;
    while (text.size() < length && octet != 0) {
      source.get_octet(octet, order, limit);
      if (octet == 0 && plan.form == RawLength::null_terminated) break;
      text += static_cast<char>(octet);
      if (octet == 0) octet = 1;
    }
    if (plan.form == RawLength::null_terminated && octet != 0)
      return fail("the character that ends the text is missing");
    if (order.octets_last) std::reverse(text.begin(), text.end());
    octets = text;
  }
  size_t taken = 0;
  return set_plain(v, octets, taken) || fail_from(begin_, "the octets are no characters");
}

bool Decoder::decode_element(const RawPlan& plan, Value v, RawOrder around, size_t limit) {
  const RawPlan& element = *plan.fields[0].plan;
  const size_t at = v->parts.size;
  const BitPlace start = source.place;
  resize_parts(v, at + 1);
  skip_padding(element.prepadding, limit);
  if (!decode(element, force_part(v, at), around, limit)) {
    destroy(v->parts.data[at]);
    v->parts.data[at] = nullptr;
    v->parts.size = at;
    source.place = start;
    return false;
  }
  skip_padding(element.padding, limit);
  return true;
}

bool Decoder::decode_list(const RawPlan& plan, Value v, RawOrder around, size_t limit, size_t count) {
  shape(v);
  if (plan.form == RawLength::given) count = plan.length;
  // The slots of an array are there from the beginning.
  v->parts.size = 0;
  const size_t most = std::min(count, plan.most);
  bool is_last = plan.extension == RawExtension::none;
  while (v->parts.size < most && (count != any_count || left_until(source, limit) > 0)) {
    const size_t before = source.place.bits();
    if (!decode_element(plan, v, around, limit)) {
      if (count != any_count) return false;
      break;
    }
    if (plan.extension != RawExtension::none) {
      is_last = source.last_bit() == (plan.extension == RawExtension::last_is_one);
      if (is_last) break;
    }
    const bool took_nothing = source.place.bits() == before;
    if (took_nothing && (count == any_count || v->parts.size > source.size())) break;
  }
  if (!is_last && v->parts.size > 0) return fail("no element has the mark of the last one");
  return count == any_count || v->parts.size == count || fail("elements are missing");
}

void drop_alternative(Value v) {
  destroy(v->parts.data[0]);
  v->parts.data[0] = nullptr;
  v->parts.size = 0;
  v->index = -1;
}

bool Decoder::decode_alternative(const RawPlan& plan, Value v, size_t i, RawOrder around, size_t limit) {
  const RawField& field = plan.fields[i];
  v->index = static_cast<long>(i);
  resize_parts(v, 1);
  Value part = force_part(v, 0);
  part->label = field.name;
  path_.enter(field.name);
  skip_padding(field.plan->prepadding, limit);
  const bool good = decode(*field.plan, part, around, limit);
  path_.leave();
  if (good) {
    skip_padding(field.plan->padding, limit);
    return true;
  }
  drop_alternative(v);
  return false;
}

bool Decoder::decode_choice(const RawPlan& plan, Value v, RawOrder around, size_t limit) {
  shape(v);
  const size_t forced = std::exchange(forced_, no_place);
  const bool fills = std::exchange(fills_, false);
  if (forced != no_place) return decode_alternative(plan, v, forced, around, limit);
  size_t otherwise = no_place;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const RawField& field = plan.fields[i];
    if (field.is_otherwise) otherwise = i;
    if (!field.has_tag || !any_seen(field.tag, *field.plan, around, limit)) continue;
    chosen_ = true;
    return decode_alternative(plan, v, i, around, limit);
  }
  if (otherwise != no_place) return decode_alternative(plan, v, otherwise, around, limit);
  return try_alternatives(plan, v, around, limit, fills);
}

// The first alternative that fits; where the union is all that stands there, rather one that leaves no
// octets, and best one that leaves no bits.
bool Decoder::try_alternatives(const RawPlan& plan, Value v, RawOrder around, size_t limit, bool fills) {
  const BitPlace start = source.place;
  size_t best = no_place, rank_of_best = 3;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    if (!plan.fields[i].has_tag && decode_alternative(plan, v, i, around, limit)) {
      const size_t left = left_until(source, limit);
      if (!fills || left == 0) return true;
      const size_t rank = left < 8 ? 1 : 2;
      if (rank < rank_of_best) {
        best = i;
        rank_of_best = rank;
      }
      drop_alternative(v);
    }
    source.place = start;
  }
  if (best != no_place) return decode_alternative(plan, v, best, around, limit);
  return fail("no alternative fits");
}

// --- records

// Bits that fields behind one need, those that are certain to come; of one counter or of the record.
size_t Decoder::needed_behind(const Record& r, size_t i, size_t counter) const {
  size_t bits = 0;
  for (size_t k = i + 1; k < r.plan.fields.size(); ++k) {
    const RawField& f = r.plan.fields[k];
    if (counter != no_place &&
        std::find(f.counted_by.begin(), f.counted_by.end(), counter) == f.counted_by.end())
      continue;
    const bool is_due = f.optional && f.has_presence &&
                        std::any_of(f.presence.begin(), f.presence.end(), [&](const RawCondition& c) {
                          return c.path[0] < i && holds_for(c, part_at(r.v, c.path));
                        });
    if (!f.optional || is_due) bits += f.plan->least_bits;
  }
  return bits;
}

// How far a field may reach. What has no length of its own leaves what the fields behind it need.
size_t Decoder::limit_of(const Record& r, size_t i) const {
  const RawField& field = r.plan.fields[i];
  const size_t at = source.place.bits();
  size_t limit = std::min(r.limit, source.size());
  const bool is_open =
      field.plan->form != RawLength::given && field.pointed_by == no_place && r.plan.pointers.empty();
  auto leave = [&](size_t end, size_t counter) {
    const size_t needed = is_open ? needed_behind(r, i, counter) : 0;
    return end >= at + needed ? end - needed : end;
  };
  limit = std::min(leave(limit, no_place), r.group_end);
  for (const RawPointerField& p : r.plan.pointers) {
    if (p.field >= i || p.target <= i || p.base > i) continue;
    size_t target = p.base == i ? at : spans_[r.spans + p.base].start.bits();
    if (add_distance(r, p, target) && target >= at) limit = std::min(limit, target);
  }
  for (const size_t k : field.counted_by) {
    const Counter& counter = counters_[r.counters + k];
    if (!counter.known || r.plan.lengths[k].unit == unit_elements) continue;
    limit = std::min(limit, leave(at + static_cast<size_t>(std::max(0L, counter.left)), k));
  }
  return limit;
}

bool Decoder::has_own_length(const Record& r, size_t i) const {
  const auto& counted_by = r.plan.fields[i].counted_by;
  return std::any_of(counted_by.begin(), counted_by.end(), [&](size_t k) {
    return counters_[r.counters + k].known && r.plan.lengths[k].unit != unit_elements &&
           r.plan.lengths[k].counted.size() == 1;
  });
}

size_t Decoder::count_of(const Record& r, size_t i) const {
  for (const size_t k : r.plan.fields[i].counted_by) {
    const Counter& counter = counters_[r.counters + k];
    if (counter.known && r.plan.lengths[k].unit == unit_elements)
      return static_cast<size_t>(std::max(0L, counter.left));
  }
  return any_count;
}

// A length was decoded: what it counts and comes before it is taken off.
bool Decoder::start_counter(const Record& r, size_t i) {
  const RawLengthField& length = r.plan.lengths[r.plan.fields[i].length];
  const Value leaf = length_leaf(r.v->parts.data[i], length.index);
  const size_t start = spans_[r.spans + i].start.bits();
  if (!leaf) return fail_from(start, "there is no number that could hold the length");
  const long unit = length.unit == unit_elements ? 1 : length.unit;
  if (leaf->integer < length.added) return fail_from(start, "the length is too small");
  const auto number = static_cast<unsigned long>(leaf->integer - length.added);
  if (number > source.size() / static_cast<size_t>(unit) + 1)
    return fail_from(start, "the length is more than there are octets");
  Counter& counter = counters_[r.counters + r.plan.fields[i].length];
  counter = {true, static_cast<long>(number) * unit};
  for (const size_t c : length.counted) {
    const BitSpan& span = spans_[r.spans + c];
    if (c <= i && span.present && length.unit != unit_elements)
      counter.left -= static_cast<long>(span.end.bits() - span.start.bits());
  }
  return counter.left >= 0 || fail_from(start, "the length is too small");
}

void Decoder::count_down(const Record& r, size_t i) {
  const BitSpan& span = spans_[r.spans + i];
  for (const size_t k : r.plan.fields[i].counted_by) {
    Counter& counter = counters_[r.counters + k];
    if (!counter.known || r.plan.lengths[k].field >= i) continue;
    counter.left -= r.plan.lengths[k].unit == unit_elements
                        ? static_cast<long>(r.v->parts.data[i]->parts.size)
                        : static_cast<long>(span.end.bits() - span.start.bits());
  }
}

bool Decoder::check_counters(const Record& r) {
  for (size_t k = 0; k < r.plan.lengths.size(); ++k) {
    const Counter& counter = counters_[r.counters + k];
    const long unit = r.plan.lengths[k].unit == unit_elements ? 1 : r.plan.lengths[k].unit;
    if (!counter.known || (counter.left >= 0 && counter.left < unit)) continue;
    path_.enter(r.plan.fields[r.plan.lengths[k].field].name);
    fail_from(spans_[r.spans + r.plan.lengths[k].field].start.bits(),
              "the length does not agree with what it counts");
    path_.leave();
    return false;
  }
  return true;
}

bool Decoder::omit(const Record& r, size_t i) {
  if (!r.plan.fields[i].optional) return fail("a field is missing");
  r.v->parts.data[i] = lumo_omit_value_c;
  return true;
}

// From the base of a pointer to where it leads to; false where it leads nowhere.
bool Decoder::add_distance(const Record& r, const RawPointerField& pointer, size_t& bits) const {
  const Value number = length_leaf(r.v->parts.data[pointer.field], {});
  if (!number || number->integer <= 0 || number->integer > static_cast<long>(source.size())) return false;
  bits += static_cast<size_t>(number->integer) * static_cast<size_t>(pointer.unit);
  return bits <= source.size();
}

bool Decoder::go_to_target(const Record& r, size_t i, bool& is_omitted) {
  const RawPointerField& pointer = r.plan.pointers[r.plan.fields[i].pointed_by];
  const Value number = length_leaf(r.v->parts.data[pointer.field], {});
  is_omitted = !number || number->integer == 0;
  if (is_omitted) return true;
  size_t bits = spans_[r.spans + pointer.base].start.bits();
  if (!add_distance(r, pointer, bits))
    return fail_from(spans_[r.spans + pointer.field].start.bits(), "the pointer leads out of the octets");
  source.place = {};
  source.place.octet = bits / 8;
  const auto begun = static_cast<unsigned>(bits % 8);
  r.plan.order == RawOrder::msb ? source.place.high -= begun : source.place.low += begun;
  return true;
}

// The first field of a group that is there: the mark of the last octet tells how far the group reaches.
bool Decoder::enter_group(const Record& r, size_t i) {
  const size_t k = r.plan.fields[i].group;
  if (k == no_place || r.group_end != SIZE_MAX || left_until(source, r.limit) == 0) return true;
  size_t end = r.limit;
  if (!narrow(r.plan.groups[k].kind, end)) return false;
  r.group_end = end;
  return true;
}

bool Decoder::leave_group(const Record& r, size_t i) {
  const size_t k = r.plan.fields[i].group;
  if (k == no_place || r.plan.groups[k].last != i) return true;
  const size_t end = std::exchange(r.group_end, SIZE_MAX);
  return end == SIZE_MAX || end == source.place.bits() ||
         fail("the mark of the last octet does not agree with the fields");
}

// The alternative of a union by other fields of the record.
bool Decoder::choose_alternative(const Record& r, size_t i) {
  size_t otherwise = no_place;
  for (const RawAlternative& a : r.plan.fields[i].cross) {
    if (a.conditions.empty()) otherwise = a.index;
    for (const RawCondition& c : a.conditions) {
      if (!holds_for(c, part_at(r.v, c.path))) continue;
      forced_ = a.index;
      return true;
    }
  }
  forced_ = otherwise;
  return otherwise != no_place || fail("no field says which alternative it is");
}

// A field that is there, or may be.
bool Decoder::decode_present(const Record& r, size_t i, size_t limit) {
  const RawField& field = r.plan.fields[i];
  const BitPlace before = source.place;
  Value part = force_part(r.v, i);
  skip_padding(field.plan->prepadding, limit);
  BitSpan& span = spans_[r.spans + i];
  span.start = source.place;
  count_ = count_of(r, i);
  fills_ = has_own_length(r, i);
  bool good =
      (field.cross.empty() || choose_alternative(r, i)) && decode(*field.plan, part, r.plan.order, limit);
  forced_ = no_place;
  count_ = any_count;
  chosen_ = fills_ = false;
  if (!good) {
    source.place = before;
    destroy(part);
    r.v->parts.data[i] = nullptr;
    return false;
  }
  spans_[r.spans + i].end = source.place;
  spans_[r.spans + i].present = true;
  if (field.length != no_place && !start_counter(r, i)) return false;
  count_down(r, i);
  skip_padding(field.plan->padding, r.limit);
  return true;
}

bool Decoder::decode_field(const Record& r, size_t i) {
  const RawField& field = r.plan.fields[i];
  if (field.omitted) return omit(r, i);
  bool is_omitted = false;
  if (field.pointed_by != no_place && !go_to_target(r, i, is_omitted)) return false;
  if (is_omitted) return omit(r, i);
  bool is_certain = !field.optional || field.pointed_by != no_place;
  if (field.has_presence) {
    is_certain = std::any_of(field.presence.begin(), field.presence.end(),
                             [&](const RawCondition& c) { return holds_for(c, part_at(r.v, c.path)); });
    if (!is_certain) return omit(r, i);
  }
  if (!enter_group(r, i)) return false;
  const size_t limit = limit_of(r, i);
  if (!is_certain && left_until(source, limit) == 0) return omit(r, i);
  if (field.has_tag && !field.is_otherwise) {
    if (!any_seen(field.tag, *field.plan, r.plan.order, limit)) return omit(r, i);
    is_certain = chosen_ = true;
  }
  return decode_present(r, i, limit) || (!is_certain && omit(r, i));
}

bool Decoder::decode_record(const RawPlan& plan, Value v, size_t limit) {
  shape(v);
  const Record r = {plan, v, limit, spans_.size(), counters_.size()};
  spans_.resize(r.spans + plan.fields.size(), BitSpan{{}, {}, false});
  counters_.resize(r.counters + plan.lengths.size(), Counter{false, 0});
  BitPlace end = source.place;
  bool good = true;
  for (size_t i = 0; i < plan.fields.size() && good; ++i) {
    path_.enter(plan.fields[i].name);
    good = decode_field(r, i) && leave_group(r, i);
    path_.leave();
    if (source.place.bits() > end.bits()) end = source.place;
  }
  if (!plan.pointers.empty()) source.place = end;
  good = good && check_counters(r);
  spans_.resize(r.spans);
  counters_.resize(r.counters);
  return good;
}

// --- sets: the fields may come in any order

bool Decoder::decode_set_field(const Record& r, size_t i, bool& found) {
  const RawField& field = r.plan.fields[i];
  const size_t limit = limit_of(r, i);
  const bool is_certain = field.has_tag && !field.is_otherwise;
  if (is_certain && !any_seen(field.tag, *field.plan, r.plan.order, limit)) return true;
  const Value before = r.v->parts.data[i];
  r.v->parts.data[i] = nullptr;
  const size_t at = source.place.bits();
  chosen_ = is_certain;
  found = decode_present(r, i, limit) && source.place.bits() > at;
  if (!before) return found || !is_certain;
  append_elements(before, std::exchange(r.v->parts.data[i], before));
  return found || !is_certain;
}

bool Decoder::decode_set(const RawPlan& plan, Value v, size_t limit) {
  shape(v);
  const Record r = {plan, v, limit, spans_.size(), counters_.size()};
  spans_.resize(r.spans + plan.fields.size(), BitSpan{{}, {}, false});
  counters_.resize(r.counters + plan.lengths.size(), Counter{false, 0});
  bool good = true;
  for (bool found = true; found && good && left_until(source, limit) > 0;) {
    found = false;
    for (size_t i = 0; i < plan.fields.size() && good && !found; ++i) {
      const bool may_come =
          !v->parts.data[i] || (plan.fields[i].plan->repeatable && is_list_kind(plan.fields[i].plan->kind));
      if (plan.fields[i].omitted || !may_come) continue;
      path_.enter(plan.fields[i].name);
      good = decode_set_field(r, i, found);
      path_.leave();
    }
  }
  for (size_t i = 0; i < plan.fields.size() && good; ++i) {
    path_.enter(plan.fields[i].name);
    if (!v->parts.data[i]) good = omit(r, i);
    path_.leave();
  }
  good = good && check_counters(r);
  spans_.resize(r.spans);
  counters_.resize(r.counters);
  return good;
}

}  // namespace

Value raw_decode(const RawPlan& plan, std::string_view octets, size_t& taken, std::string& fault) {
  std::string turned;
  if (plan.top_msb) {
    for (const char c : octets) turned += static_cast<char>(mirror(static_cast<unsigned char>(c), 8));
    octets = turned;
  }
  Decoder decoder(octets);
  Value v = make_root(plan.type, lumo_temp_alloc_c);
  decoder.skip_padding(plan.prepadding, SIZE_MAX);
  const bool good = decoder.decode_all(plan, v);
  if (good) decoder.skip_padding(plan.padding, SIZE_MAX);
  taken = decoder.source.place.octet + !decoder.source.place.is_aligned();
  // What was tried last tells why octets are left.
  if (!good || (taken < octets.size() && decoder.has_fault())) fault = decoder.fault();
  return good ? v : nullptr;
}

}  // namespace lumos
