#include "codec/raw_plan.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <span>
#include <unordered_map>

#include "codec/constants.h"
#include "value/subtypes.h"
#include "value/types.h"

namespace lumos {

namespace {

RawOrder order_of(const std::optional<bool>& msb) {
  return !msb ? RawOrder::inherited : *msb ? RawOrder::msb : RawOrder::lsb;
}

bool is_constructed(lumo_type_kind_t kind) {
  return has_fields(kind) || kind == lumo_type_kind_union || is_list_kind(kind);
}

// Bits that the greatest number of an enumeration needs.
size_t enumerated_bits(lumo_type_t type) {
  const lumo_type_info_struct_t* info = structure_of(type);
  unsigned long greatest = 1;
  for (long i = 0; i < info->number_of_fields; ++i)
    greatest =
        std::max(greatest, static_cast<unsigned long>(std::max(0L, info->enum_or_array_info[i].number)));
  size_t bits = 0;
  for (; greatest; greatest >>= 1) ++bits;
  return bits;
}

// What a field's words say of its place among the other fields, as opposed to what they say of its encoding.
RawWords take_place_words(RawWords& words) {
  RawWords place;
  std::swap(place.length_to, words.length_to);
  std::swap(place.length_added, words.length_added);
  std::swap(place.unit, words.unit);
  std::swap(place.length_index, words.length_index);
  std::swap(place.pointer_to, words.pointer_to);
  std::swap(place.pointer_base, words.pointer_base);
  std::swap(place.pointer_unit, words.pointer_unit);
  std::swap(place.presence, words.presence);
  std::swap(place.cross_tags, words.cross_tags);
  return place;
}

// A length that the type itself fixes.
void take_bounds(RawPlan& plan) {
  if (!plan.has_check || (!is_string_kind(plan.kind) && !is_list_kind(plan.kind))) return;
  const LengthBounds bounds = length_bounds(plan.type);
  if (bounds.upper < 0) return;
  plan.most = static_cast<size_t>(bounds.upper);
  if (bounds.lower != bounds.upper) return;
  plan.form = RawLength::given;
  plan.length = plan.most;
}

size_t bits_of_unit(lumo_type_kind_t kind) {
  if (kind == lumo_type_kind_hexstring) return 4;
  return is_text_kind(kind) || kind == lumo_type_kind_octetstring ? 8 : 1;
}

// Called in any order: what is below is looked at once more, to a certain depth.
size_t least_bits(const RawPlan& plan, int depth = 0) {
  if (depth > 6) return 0;
  if (has_fields(plan.kind)) {
    size_t bits = 0;
    for (const RawField& f : plan.fields) bits += f.optional ? 0 : least_bits(*f.plan, depth + 1);
    return bits;
  }
  if (is_list_kind(plan.kind))
    return plan.form == RawLength::given ? plan.length * least_bits(*plan.fields[0].plan, depth + 1) : 0;
  if (plan.kind != lumo_type_kind_union)
    return plan.form == RawLength::given ? plan.length * bits_of_unit(plan.kind) : 0;
  size_t bits = SIZE_MAX;
  for (const RawField& f : plan.fields) bits = std::min(bits, least_bits(*f.plan, depth + 1));
  return bits;
}

class Planner {
 public:
  const RawPlan& plan(lumo_type_t type, std::vector<std::string>& errors);

 private:
  // A type has one plan for each set of words that fields add to its own.
  using Key = std::pair<lumo_type_t, std::string>;

  RawPlan* plan_with(lumo_type_t type, const std::string& added_text, const RawWords& added,
                     const std::string& place);
  void fill(RawPlan& plan, const RawWords& words);
  void fill_leaf(RawPlan& plan, const RawWords& words);
  void fill_fields(RawPlan& plan, const RawWords& words);
  void fill_field(RawPlan& plan, size_t i, const RawWords& words);
  RawWords words_of(lumo_type_t type, std::string_view field);

  // Behind the making of all plans, which may be recursive.
  void resolve(RawPlan& plan, const RawWords& words, const std::vector<RawWords>& places);
  void resolve_place(RawPlan& plan, size_t i, const RawWords& place);
  void resolve_length(RawPlan& plan, size_t i, const RawWords& place);
  void resolve_pointer(RawPlan& plan, size_t i, const RawWords& place);
  void resolve_tags(RawPlan& plan, const std::vector<RawChoice>& tags);
  void resolve_cross_tags(RawPlan& plan, size_t i, const std::vector<RawChoice>& tags);
  RawConditions conditions(const RawPlan& of, const std::vector<RawKey>& keys, const char* word,
                           const std::string& place);
  bool resolve_path(const RawPlan& from, std::string_view path, RawCondition& condition);
  size_t field_of(const RawPlan& plan, std::string_view name, const char* word, const std::string& place);
  void force_omit(RawPlan& plan, const std::string& path);
  void check_before(const RawPlan& plan, size_t i, const RawCondition& c, const char* word);

  void check_words(const RawPlan& plan, const RawWords& words);
  void check_room(const RawPlan& plan);

  void error(const RawPlan& plan, std::string_view field, const std::string& text);
  void error_at(const std::string& place, const std::string& text);

  std::map<Key, std::unique_ptr<RawPlan>> plans_;
  std::unordered_map<lumo_type_t, const RawPlan*> made_;  // those of messages
  std::vector<std::unique_ptr<RawPlan>> copies_;
  std::deque<std::function<void()>> unresolved_;
  std::vector<std::string>* errors_ = nullptr;
};

void Planner::error_at(const std::string& place, const std::string& text) {
  add_fault(*errors_, place, text);
}

void Planner::error(const RawPlan& plan, std::string_view field, const std::string& text) {
  error_at(place_of(plan.place, field), text);
}

RawWords Planner::words_of(lumo_type_t type, std::string_view field) {
  RawWords all;
  for (const std::vector<const char*>& level : variants_of(type, field)) {
    RawWords words;
    std::string text;
    for (const char* variant : level)
      if (!read_raw_words(variant, words, text)) error_at(place_of(place_of(type), field), text);
    all.add(words);
  }
  return all;
}

const RawPlan& Planner::plan(lumo_type_t type, std::vector<std::string>& errors) {
  const RawPlan*& made = made_[type];
  if (made) return *made;
  errors_ = &errors;
  made = plan_with(plain_type(type), "", {}, place_of(type));
  while (!unresolved_.empty()) {
    const std::function<void()> next = std::move(unresolved_.front());
    unresolved_.pop_front();
    next();
  }
  errors_ = nullptr;
  return *made;
}

RawPlan* Planner::plan_with(lumo_type_t type, const std::string& added_text, const RawWords& added,
                            const std::string& place) {
  std::unique_ptr<RawPlan>& known = plans_[{type, added_text}];
  if (known) return known.get();
  known = std::make_unique<RawPlan>();
  RawPlan* plan = known.get();
  plan->type = type;
  plan->kind = base_kind(type);
  plan->place = place;
  RawWords words = words_of(type, "");
  if (const char* word = homeless_raw_word(words, plan->kind))
    error(*plan, "", std::string("the word ") + word + " stands at no field");
  words.add(added);
  check_words(*plan, words);
  fill(*plan, words);
  check_room(*plan);
  return plan;
}

void Planner::check_words(const RawPlan& plan, const RawWords& words) {
  if (const char* word = unfit_raw_word(words, plan.kind))
    error(plan, "", std::string("the word ") + word + " does not fit the type");
}

// Whether a field of that length can hold values of the type.
void Planner::check_room(const RawPlan& plan) {
  if (plan.form != RawLength::given) return;
  if (plan.kind == lumo_type_kind_enumerated && plan.length < enumerated_bits(plan.type))
    error(plan, "", "the word FIELDLENGTH leaves no room for all literals of the type");
  if (plan.extension != RawExtension::none && !is_list_kind(plan.kind) &&
      plan.length * bits_of_unit(plan.kind) % 8 != 0)
    error(plan, "", "the word EXTENSION_BIT needs whole octets");
  if (!plan.has_check || (!is_string_kind(plan.kind) && !is_list_kind(plan.kind))) return;
  const LengthBounds bounds = length_bounds(plan.type);
  const auto length = static_cast<lumo_long_integer_t>(plan.length);
  if (length < bounds.lower || (bounds.upper >= 0 && length > bounds.upper))
    error(plan, "", "the word FIELDLENGTH gives a length that the type does not allow");
}

void Planner::fill(RawPlan& plan, const RawWords& words) {
  plan.order = order_of(words.fields_msb);
  if (has_fields(plan.kind) && plan.order == RawOrder::inherited) plan.order = RawOrder::lsb;
  plan.bits.octets_last = words.octets_last.value_or(false);
  plan.bits.bits_msb = words.bits_msb.value_or(false);
  plan.bits.mirrored = words.mirrored.value_or(false);
  plan.padding = static_cast<unsigned>(words.padding.value_or(0));
  plan.prepadding = static_cast<unsigned>(words.prepadding.value_or(0));
  plan.pattern = words.pattern.value_or("0");
  plan.extension = words.extension.value_or(RawExtension::none);
  plan.repeatable = words.repeatable.value_or(false);
  plan.top_msb = words.top_msb.value_or(false);
  plan.has_check = has_check(plan.type);
  plan.form = words.length_form.value_or(RawLength::variable);
  plan.length = static_cast<size_t>(words.length);
  if (!words.length_form) take_bounds(plan);
  if (is_constructed(plan.kind)) return fill_fields(plan, words);
  fill_leaf(plan, words);
  plan.least_bits = least_bits(plan);
}

void Planner::fill_leaf(RawPlan& plan, const RawWords& words) {
  plan.sign = plan.extension == RawExtension::none ? words.sign.value_or(RawSign::none) : RawSign::none;
  plan.hex_high = words.hex_high.value_or(false);
  plan.align_left = words.align_left.value_or(is_string_kind(plan.kind));
  // The first bit of a bitstring is the leftmost: from the most significant end on, that is how it reads.
  if (plan.kind == lumo_type_kind_bitstring && plan.bits.bits_msb) {
    plan.bits.bits_msb = false;
    plan.bits.octets_last = true;
  }
  if (words.length_form || is_string_kind(plan.kind)) return;
  plan.form = RawLength::given;
  plan.length = plan.kind == lumo_type_kind_boolean      ? 1
                : plan.kind == lumo_type_kind_enumerated ? enumerated_bits(plan.type)
                : plan.kind == lumo_type_kind_float      ? 64
                                                         : 8;
  if (plan.kind == lumo_type_kind_integer && plan.extension != RawExtension::none)
    plan.form = RawLength::variable;
}

void Planner::fill_fields(RawPlan& plan, const RawWords& words) {
  const bool is_list = is_list_kind(plan.kind);
  const size_t count = is_list ? 1 : field_count(plan.type);
  plan.fields.resize(count);
  std::vector<RawWords> places(count);
  for (size_t i = 0; i < count; ++i) {
    if (is_list) {
      const lumo_type_t element = plain_type(element_type(plan.type));
      plan.fields[i].name = "element";
      plan.fields[i].plan = plan_with(element, "", {}, place_of(element));
      continue;
    }
    RawWords own = words_of(plan.type, field_info(plan.type)[i].name);
    places[i] = take_place_words(own);
    if (words.pad_all.value_or(false)) {
      own.padding = own.padding ? own.padding : words.padding.value_or(8);
      own.pattern = own.pattern ? own.pattern : words.pattern;
    }
    fill_field(plan, i, own);
  }
  if (plan.kind == lumo_type_kind_array && plan.form == RawLength::variable) {
    plan.form = RawLength::given;
    plan.length = array_length(plan.type);
  }
  unresolved_.push_back([this, &plan, words, places] { resolve(plan, words, places); });
}

// Words of a field's encoding make a plan of its own, known by the texts and where they stand.
void Planner::fill_field(RawPlan& plan, size_t i, const RawWords& words) {
  const lumo_field_info_t& info = field_info(plan.type)[i];
  RawField& field = plan.fields[i];
  field.name = info.name;
  field.optional = plan.kind != lumo_type_kind_union && is_optional(info);
  std::string key;
  for (const auto& level : variants_of(plan.type, info.name))
    for (const char* text : level) key += std::string(text) + ";";
  if (words.padding) key += "+" + std::to_string(*words.padding);
  const lumo_type_t type = plain_type(info.type);
  field.plan = plan_with(type, key, words, key.empty() ? place_of(type) : place_of(plan.place, info.name));
}

// --- names

size_t Planner::field_of(const RawPlan& plan, std::string_view name, const char* word,
                         const std::string& place) {
  for (size_t i = 0; i < plan.fields.size(); ++i)
    if (name == plan.fields[i].name) return i;
  error_at(place, std::string("the word ") + word + " names " + std::string(name) + ", which is no field");
  return no_place;
}

// How many bits a value takes, whatever it is; false where that depends on it.
bool add_steps(const RawPlan& plan, RawOrder around, std::vector<RawStep>& steps, int depth = 0) {
  const RawOrder order = plan.order == RawOrder::inherited ? around : plan.order;
  if (plan.padding || plan.prepadding || depth > 20) return false;
  if (has_fields(plan.kind))
    return std::all_of(plan.fields.begin(), plan.fields.end(), [&](const RawField& f) {
      return !f.optional && !f.omitted && add_steps(*f.plan, order, steps, depth + 1);
    });
  if (is_constructed(plan.kind) || plan.form != RawLength::given) return false;
  steps.push_back({plan.length * bits_of_unit(plan.kind), order});
  return true;
}

bool Planner::resolve_path(const RawPlan& from, std::string_view path, RawCondition& c) {
  c.part = &from;
  c.is_fixed = true;
  for (const std::string_view name : split_list(path, '.')) {
    const auto& fields = c.part->fields;
    const auto found =
        std::find_if(fields.begin(), fields.end(), [&](const RawField& f) { return name == f.name; });
    if (found == fields.end() || is_list_kind(c.part->kind)) return false;
    if (c.part->order != RawOrder::inherited) c.part_order = c.part->order;
    if (has_fields(c.part->kind))
      for (auto before = fields.begin(); before != found && c.is_fixed; ++before)
        c.is_fixed = !before->optional && add_steps(*before->plan, c.part_order, c.steps);
    c.is_fixed = c.is_fixed && !found->plan->prepadding;
    c.path.push_back(static_cast<size_t>(found - fields.begin()));
    c.part = found->plan;
  }
  return true;
}

RawConditions Planner::conditions(const RawPlan& of, const std::vector<RawKey>& keys, const char* word,
                                  const std::string& place) {
  RawConditions list;
  for (const RawKey& key : keys) {
    RawCondition c;
    if (!resolve_path(of, key.path, c)) {
      error_at(place, std::string("the word ") + word + " names " + key.path + ", which is no field");
      continue;
    }
    if (key.value != "omit") {
      c.constant = read_constant(c.part->type, key.value, lumo_type_definition_module(of.type, nullptr));
      if (!c.constant) {
        error_at(place, std::string("the word ") + word + " compares " + key.path + " with " + key.value +
                            ", which is no value of its type");
        continue;
      }
    }
    list.push_back(std::move(c));
  }
  return list;
}

void Planner::resolve(RawPlan& plan, const RawWords& words, const std::vector<RawWords>& places) {
  plan.least_bits = least_bits(plan);
  plan.presence = conditions(plan, words.presence, "PRESENCE", plan.place);
  if (!is_list_kind(plan.kind)) resolve_tags(plan, words.tags);
  for (const RawExtensionGroup& group : words.extension_groups) {
    const RawGroup g = {group.kind, field_of(plan, group.first, "EXTENSION_BIT_GROUP", plan.place),
                        field_of(plan, group.last, "EXTENSION_BIT_GROUP", plan.place)};
    if (g.first == no_place || g.last == no_place || g.kind == RawExtension::none) continue;
    if (g.first > g.last) error(plan, "", "the word EXTENSION_BIT_GROUP names its last field first");
    for (size_t i = g.first; i <= g.last; ++i) plan.fields[i].group = plan.groups.size();
    plan.groups.push_back(g);
  }
  for (size_t i = 0; i < places.size(); ++i) resolve_place(plan, i, places[i]);
  // What is below is complete when all else is resolved.
  for (const std::string& path : words.force_omit)
    unresolved_.push_back([this, &plan, path] { force_omit(plan, path); });
}

void Planner::check_before(const RawPlan& plan, size_t i, const RawCondition& c, const char* word) {
  if (c.path[0] >= i)
    error(plan, plan.fields[i].name,
          std::string("the word ") + word + " names a field that does not come before");
}

void Planner::resolve_place(RawPlan& plan, size_t i, const RawWords& place) {
  RawField& field = plan.fields[i];
  // In a union these words speak of the alternative's own parts.
  if (!has_fields(plan.kind)) return;
  if (const char* word = unfit_raw_word(place, field.plan->kind)) {
    error(plan, field.name, std::string("the word ") + word + " does not fit the type");
    return;
  }
  // Others are there in any case.
  field.has_presence = field.optional && !place.presence.empty();
  field.presence = conditions(plan, place.presence, "PRESENCE", place_of(plan.place, field.name));
  for (const RawCondition& c : field.presence) check_before(plan, i, c, "PRESENCE");
  if (!place.length_to.empty()) resolve_length(plan, i, place);
  if (const char* text = lonely_raw_word(place)) error(plan, field.name, std::string("the word ") + text);
  if (place.pointer_to) resolve_pointer(plan, i, place);
  if (!place.cross_tags.empty()) resolve_cross_tags(plan, i, place.cross_tags);
}

// Whether a path of names ends in a number; of alternatives one is enough.
bool leads_to_number(const RawPlan& plan, std::span<const std::string> names, int depth = 0) {
  if (depth > 20 || (has_fields(plan.kind) && names.empty())) return false;
  if (!has_fields(plan.kind) && plan.kind != lumo_type_kind_union)
    return plan.kind == lumo_type_kind_integer && names.empty();
  return std::any_of(plan.fields.begin(), plan.fields.end(), [&](const RawField& f) {
    if (!names.empty() && names[0] == f.name) return leads_to_number(*f.plan, names.subspan(1), depth + 1);
    return plan.kind == lumo_type_kind_union && leads_to_number(*f.plan, names, depth + 1);
  });
}

void Planner::resolve_length(RawPlan& plan, size_t i, const RawWords& place) {
  RawField& field = plan.fields[i];
  RawLengthField length{i, {}, {}, place.unit.value_or(8), place.length_added.value_or(0)};
  const std::string index = place.length_index.value_or("");
  for (const std::string_view name : split_list(index, '.')) length.index.emplace_back(name);
  if (!leads_to_number(*field.plan, length.index))
    error(plan, field.name,
          place.length_index ? "the word LENGTHINDEX names " + *place.length_index + ", which is no number"
                             : "the word LENGTHTO needs LENGTHINDEX");
  field.length = plan.lengths.size();
  for (const std::string& name : place.length_to) {
    const size_t counted = field_of(plan, name, "LENGTHTO", place_of(plan.place, field.name));
    if (counted == no_place) continue;
    length.counted.push_back(counted);
    plan.fields[counted].counted_by.push_back(field.length);
    if (length.unit == unit_elements && !is_list_kind(plan.fields[counted].plan->kind))
      error(plan, field.name, "the word UNIT(elements) counts " + name + ", which is no list");
  }
  plan.lengths.push_back(std::move(length));
}

void Planner::resolve_pointer(RawPlan& plan, size_t i, const RawWords& place) {
  const std::string at = place_of(plan.place, plan.fields[i].name);
  RawPointerField pointer{i, field_of(plan, *place.pointer_to, "POINTERTO", at), i,
                          place.pointer_unit.value_or(8)};
  if (place.pointer_base) pointer.base = field_of(plan, *place.pointer_base, "PTROFFSET", at);
  if (pointer.target == no_place || pointer.base == no_place) return;
  if (pointer.target <= i || pointer.base > pointer.target) {
    error(plan, plan.fields[i].name, "the word POINTERTO leads to a field that comes before");
    return;
  }
  plan.fields[i].pointer = plan.pointers.size();
  plan.fields[pointer.target].pointed_by = plan.pointers.size();
  plan.pointers.push_back(pointer);
}

void Planner::resolve_tags(RawPlan& plan, const std::vector<RawChoice>& tags) {
  plan.has_tags = !tags.empty();
  for (const RawChoice& choice : tags) {
    const size_t i = field_of(plan, choice.field, "TAG", plan.place);
    if (i == no_place) continue;
    RawField& field = plan.fields[i];
    field.is_otherwise = choice.keys.empty();
    field.has_tag = true;
    for (RawCondition& c : conditions(*field.plan, choice.keys, "TAG", plan.place))
      field.tag.push_back(std::move(c));
  }
}

void Planner::resolve_cross_tags(RawPlan& plan, size_t i, const std::vector<RawChoice>& tags) {
  RawField& field = plan.fields[i];
  const std::string at = place_of(plan.place, field.name);
  for (const RawChoice& choice : tags) {
    const size_t alternative = field_of(*field.plan, choice.field, "CROSSTAG", at);
    if (alternative == no_place) continue;
    field.cross.push_back({alternative, conditions(plan, choice.keys, "CROSSTAG", at)});
    for (const RawCondition& c : field.cross.back().conditions) check_before(plan, i, c, "CROSSTAG");
  }
}

void Planner::force_omit(RawPlan& plan, const std::string& path) {
  RawPlan* at = &plan;
  for (const std::string_view name : split_list(path, '.')) {
    const size_t i = field_of(*at, name, "FORCEOMIT", plan.place);
    if (i == no_place) return;
    RawField& field = at->fields[i];
    if (&path.back() != &name.back()) {
      // Elsewhere the type has all its parts.
      copies_.push_back(std::make_unique<RawPlan>(*field.plan));
      field.plan = at = copies_.back().get();
    } else if (field.optional) {
      field.omitted = true;
    } else {
      error(plan, "", "the word FORCEOMIT names " + path + ", which is not optional");
    }
  }
}

}  // namespace

const RawPlan& raw_plan(lumo_type_t type, std::vector<std::string>& errors) {
  static auto* planner = new Planner;
  return planner->plan(type, errors);
}

}  // namespace lumos
