// Random values of all types of a suite that have an encoding: what is encoded has to be decoded to a value
// with the same octets. Linked with the generated modules of a suite; round_trips.py does it. Arguments:
// seed, rounds for each type.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>

#include "codec/families.h"
#include "codec/raw.h"
#include "run/component.h"
#include "suite/suite.h"
#include "text/codec.h"
#include "text/log.h"
#include "value/symbols.h"
#include "value/task.h"
#include "value/types.h"

using namespace lumos;

extern "C" void suite_register(lumo_boolean_t is_root, lumo_context_t context);

namespace {

std::mt19937 numbers;
lumo_type_t root;  // of the value that is made
int rounds, trips, unencodable, faults, passed_over;

unsigned below(unsigned n) {
  return static_cast<unsigned>(numbers() % n);
}

bool is_of_type(Value v) {
  const TempScope scope;
  const Quiet quiet;
  return !has_check(v->type) || lumo_type_check(v->type, v, current_task);
}

void set_string(Value v, unsigned length) {
  constexpr const char* digits[] = {"01", "0123456789ABCDEF", "abcXYZ 019"};
  const char* set = digits[v->kind == lumo_type_kind_bitstring    ? 0
                           : v->kind == lumo_type_kind_charstring ? 2
                                                                  : 1];
  std::string text;
  for (unsigned i = 0; i < length * (v->kind == lumo_type_kind_octetstring ? 2 : 1); ++i)
    text += set[below(static_cast<unsigned>(std::string_view(set).size()))];
  set_text(v, text);
}

bool fill(Value v, int depth);

bool fill_list(Value v, unsigned length, int depth) {
  shape(v);
  resize_parts(v, v->kind == lumo_type_kind_array ? array_length(v->type) : length);
  for (size_t i = 0; i < v->parts.size; ++i)
    if (!fill(force_part(v, i), depth + 1)) return false;
  return true;
}

// Lengths that the type allows are looked for once.
unsigned length_for(Value v, int depth) {
  static std::map<lumo_type_t, std::vector<unsigned>> good;
  auto [lengths, is_new] = good.try_emplace(v->type);
  for (unsigned n = 0; is_new && n <= 130; ++n) {
    is_list_kind(v->kind) ? void(fill_list(v, 0, depth)) : set_string(v, n);
    if (is_list_kind(v->kind) ? n < 3 : is_of_type(v)) lengths->second.push_back(n);
    if (lengths->second.size() == 8) break;
  }
  return lengths->second.empty() ? 0 : lengths->second[below(static_cast<unsigned>(lengths->second.size()))];
}

bool holds_any(Value v, const RawConditions& conditions) {
  return std::any_of(conditions.begin(), conditions.end(),
                     [&](const RawCondition& c) { return holds_for(c, part_at(v, c.path)); });
}

// Nothing tells that the field is omitted but the end of the octets.
bool is_untold(const RawField& f) {
  return f.optional && !f.has_presence && !f.has_tag && f.pointed_by == no_place && f.plan->presence.empty();
}

// Optional fields and alternatives are those that the fields before them tell.
bool agree(Value v, int depth) {
  std::vector<std::string> errors;
  const RawPlan& plan = raw_plan(v->type, errors);
  bool has_ended = false;
  for (size_t i = 0; i < plan.fields.size(); ++i) {
    const RawField& f = plan.fields[i];
    if (is_untold(f) && has_ended && !is_omit(v->parts.data[i])) {
      destroy(v->parts.data[i]);
      v->parts.data[i] = lumo_omit_value_c;
    }
    has_ended = has_ended || (is_untold(f) && is_omit(v->parts.data[i]));
    if (f.has_presence && (!is_omit(v->parts.data[i])) != holds_any(v, f.presence)) {
      const bool is_there = !is_omit(v->parts.data[i]);
      if (is_there) destroy(v->parts.data[i]);
      v->parts.data[i] = is_there ? lumo_omit_value_c : nullptr;
      if (!is_there && !fill(force_part(v, i), depth + 1)) return false;
    }
    if (f.cross.empty() || is_omit(v->parts.data[i])) continue;
    const auto told = std::find_if(f.cross.begin(), f.cross.end(), [&](const RawAlternative& a) {
      return a.conditions.empty() || holds_any(v, a.conditions);
    });
    if (told == f.cross.end()) continue;
    Value part = v->parts.data[i];
    clear_contents(part);
    shape(part);
    part->index = static_cast<long>(told->index);
    resize_parts(part, 1);
    if (!fill(force_part(part, 0), depth + 2)) return false;
  }
  return true;
}

// The bits of a value; 0 where padding makes them depend on its place.
size_t bits_of(const RawPlan& plan, Value v) {
  if (is_omit(v) || plan.padding || plan.prepadding) return 0;
  size_t bits = 0;
  const bool is_choice = plan.kind == lumo_type_kind_union;
  if (!is_record_kind(plan.kind) && !is_list_kind(plan.kind) && !is_choice) {
    const bool is_bits = !is_string_kind(plan.kind) || plan.kind == lumo_type_kind_bitstring;
    return is_bits && plan.form == RawLength::given ? plan.length : v->text.size * (is_bits ? 1 : 4);
  }
  for (size_t i = 0; i < v->parts.size; ++i) {
    const size_t at = is_choice ? static_cast<size_t>(v->index) : is_list_kind(plan.kind) ? 0 : i;
    bits += bits_of(*plan.fields[at].plan, v->parts.data[i]);
  }
  return bits;
}

// What is counted in octets is made of whole ones: within one nothing tells which of the optional parts are
// there.
bool has_whole_octets(Value v) {
  std::vector<std::string> errors;
  const RawPlan& plan = raw_plan(v->type, errors);
  return std::all_of(plan.lengths.begin(), plan.lengths.end(), [&](const RawLengthField& length) {
    size_t bits = 0;
    for (const size_t i : length.counted) bits += bits_of(*plan.fields[i].plan, v->parts.data[i]);
    return length.unit != 8 || bits % 8 == 0;
  });
}

bool fill_fields(Value v, int depth) {
  shape(v);
  for (size_t i = 0; i < v->parts.size; ++i) {
    const lumo_field_info_t& field = field_info(v->type)[i];
    if (is_optional(field) && (depth > 8 || below(2)))
      v->parts.data[i] = lumo_omit_value_c;
    else if (!fill(force_part(v, i), depth + 1))
      return false;
  }
  return std::string_view(codec_family_of(root) ? codec_family_of(root)->name : "") != "RAW" ||
         (agree(v, depth) && has_whole_octets(v));
}

bool fill_once(Value v, int depth) {
  constexpr long spreads[] = {2, 8, 16, 64, 128, 256, 65536};
  switch (v->kind) {
    case lumo_type_kind_integer:
      v->form = Form::integer;
      v->integer = below(static_cast<unsigned>(spreads[below(7)]));
      return true;
    case lumo_type_kind_boolean:
      lumo_value_set_boolean(v, below(2), current_task);
      return true;
    case lumo_type_kind_enumerated:
      v->form = Form::enumerated;
      v->integer =
          structure_of(v->type)
              ->enum_or_array_info[below(static_cast<unsigned>(structure_of(v->type)->number_of_fields))]
              .number;
      return true;
    case lumo_type_kind_record:
    case lumo_type_kind_set:
      return fill_fields(v, depth);
    case lumo_type_kind_union: {
      shape(v);
      v->index = static_cast<long>(below(static_cast<unsigned>(field_count(v->type))));
      resize_parts(v, 1);
      return fill(force_part(v, 0), depth + 1);
    }
    default:
      if (is_list_kind(v->kind)) return fill_list(v, depth > 8 ? 0 : below(3), depth);
      if (v->kind == lumo_type_kind_universal_charstring) return set_wide(v, U"\u00e4b", 2), true;
      if (!is_string_kind(v->kind)) return false;
      set_string(v, length_for(v, depth));
      return true;
  }
}

bool fill(Value v, int depth) {
  if (depth > 40) return false;
  for (int i = 0; i < 20; ++i) {
    clear_contents(v);
    if (!fill_once(v, depth)) return false;
    if (is_of_type(v)) return true;
  }
  return false;
}

std::string shown(const std::string& octets) {
  std::string text;
  char two[3];
  for (const unsigned char c : octets) text += (std::snprintf(two, sizeof two, "%02X", c), two);
  return text;
}

void round_trip(lumo_type_t type) {
  const TempScope scope;
  Value v = make_root(root = type, lumo_temp_alloc_c);
  std::string octets, again, fault;
  if (!fill(v, 0)) return void(++passed_over);
  if (!encode_value(v, octets, fault)) {
    ++unencodable;
    if (std::getenv("SHOW")) std::printf("- %s: %s\n", type_name(type), fault.c_str());
    return;
  }
  Value back = decode_value(type, octets, nullptr, fault);
  ++trips;
  if (back && encode_value(back, again, fault) && again == octets) return;
  ++faults;
  std::printf("%s: %s\n  %s\n  %s\n  %s\n", type_name(type), back ? "other octets" : fault.c_str(),
              render(v).c_str(), shown(octets).c_str(), back ? shown(again).c_str() : "");
}

void run_all(void*) {
  for (const Module& m : registered_modules())
    for (unsigned long i = 0; i < m.row_count; ++i) {
      const lumo_symbol_entry_struct_t& row = m.rows[i];
      if (row.kind != lumo_symbol_entry_kind_userdefined_type || row.type_descriptor->module) continue;
      if (!codec_family_of(row.type_descriptor)) continue;
      for (int n = 0; n < rounds; ++n) round_trip(row.type_descriptor);
    }
}

}  // namespace

int main(int argc, char* argv[]) {
  numbers.seed(argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 1);
  rounds = argc > 2 ? std::atoi(argv[2]) : 10;
  set_log_kinds("error");
  if (!register_root(suite_register) || !lumo_initialize(nullptr)) return 2;
  if (!run_guarded("", run_all, nullptr)) return 2;
  std::printf("%d trips, %d faults, %d values that cannot be encoded, %d not made\n", trips, faults,
              unencodable, passed_over);
  return faults != 0 || trips == 0;
}
