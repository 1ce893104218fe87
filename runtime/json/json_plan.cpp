#include "json_plan.h"

#include <algorithm>
#include <map>
#include <memory>

#include "codec/constants.h"
#include "codec/words.h"
#include "value/types.h"

namespace lumos {

namespace {

struct Phrases {
  std::string name, default_text;
  bool null_for_omit = false, as_value = false, ascii_only = false;
};

std::string_view behind(std::string_view text, std::string_view beginning) {
  return text.starts_with(beginning) ? trim(text.substr(beginning.size())) : std::string_view();
}

std::string_view without_marks(std::string_view text, char first, char last) {
  const bool has = text.size() > 1 && text.front() == first && text.back() == last;
  return has ? trim(text.substr(1, text.size() - 2)) : std::string_view();
}

// False for a phrase that is not known.
bool read_phrase(std::string_view text, Phrases& phrases) {
  if (const std::string_view rest = behind(text, "JSON"); !rest.empty() && rest.front() == ':')
    text = trim(rest.substr(1));
  if (const std::string_view name = without_marks(behind(text, "name as "), '\'', '\''); !name.empty()) {
    phrases.name = name;
  } else if (const std::string_view value = without_marks(behind(text, "default"), '(', ')');
             !value.empty()) {
    phrases.default_text = value;
  } else if (text == "omit as null") {
    phrases.null_for_omit = true;
  } else if (text == "as value") {
    phrases.as_value = true;
  } else if (text == "escape as usi" || text == "escape as short") {
    phrases.ascii_only = text.ends_with("usi");
  } else {
    return false;
  }
  return true;
}

class Planner {
 public:
  // as_value: a field says so of its type.
  const JsonPlan& plan(lumo_type_t type, bool as_value, std::vector<std::string>& errors);

 private:
  Phrases phrases_of(lumo_type_t type, std::string_view field, std::vector<std::string>& errors);
  JsonField field(lumo_type_t type, size_t i, std::vector<std::string>& errors);

  void check(const Phrases& phrases, lumo_type_kind_t kind, bool is_field, bool is_optional,
             const std::string& place, std::vector<std::string>& errors);

  std::map<std::pair<lumo_type_t, bool>, std::unique_ptr<JsonPlan>> plans_;
};

Phrases Planner::phrases_of(lumo_type_t type, std::string_view field, std::vector<std::string>& errors) {
  Phrases phrases;
  for (const auto& level : variants_of(type, field))
    for (const char* text : level) {
      std::vector<Word> words;
      if (!read_words(text, words))
        add_fault(errors, place_of(place_of(type), field),
                  std::string("the text \"") + text + "\" has no end");
      // Words in capitals are those of other encodings.
      for (const Word& word : words)
        if (word.name.empty() && !read_phrase(word.arguments, phrases))
          add_fault(errors, place_of(place_of(type), field),
                    "the phrase '" + word.arguments + "' is not known");
    }
  return phrases;
}

// A phrase that a type, or a field where it has a name, cannot have; empty if there is none.
std::string_view unfit_phrase(const Phrases& phrases, lumo_type_kind_t kind, bool is_field,
                              bool is_optional) {
  if (phrases.as_value && kind != lumo_type_kind_union) return "as value";
  if (!phrases.name.empty() && !is_field) return "name as";
  if (!phrases.default_text.empty() && !is_field) return "default";
  return phrases.null_for_omit && !is_optional ? "omit as null" : "";
}

JsonField Planner::field(lumo_type_t type, size_t i, std::vector<std::string>& errors) {
  const lumo_field_info_t& info = field_info(type)[i];
  const lumo_type_t own = plain_type(info.type);
  const std::string place = place_of(place_of(type), info.name);
  const Phrases phrases = phrases_of(type, info.name, errors);
  check(phrases, base_kind(own), true, is_optional(info), place, errors);
  JsonField field{phrases.name.empty() ? info.name : phrases.name, &plan(own, phrases.as_value, errors),
                  is_optional(info), phrases.null_for_omit, nullptr};
  if (phrases.default_text.empty()) return field;
  field.default_value = read_constant(own, phrases.default_text, lumo_type_definition_module(type, nullptr));
  if (!field.default_value)
    add_fault(errors, place, "the phrase 'default (" + phrases.default_text + ")' is no value of its type");
  return field;
}

void Planner::check(const Phrases& phrases, lumo_type_kind_t kind, bool is_field, bool is_optional,
                    const std::string& place, std::vector<std::string>& errors) {
  const std::string_view phrase = unfit_phrase(phrases, kind, is_field, is_optional);
  if (!phrase.empty())
    add_fault(errors, place, "the phrase '" + std::string(phrase) + "' does not fit the type");
}

// Two members of one name could not be told apart.
void check_names(const JsonPlan& plan, std::vector<std::string>& errors) {
  for (size_t i = 0; i < plan.fields.size(); ++i)
    for (size_t k = 0; k < i; ++k)
      if (plan.fields[i].name == plan.fields[k].name)
        add_fault(errors, place_of(place_of(plan.type), field_info(plan.type)[i].name),
                  "the phrase 'name as' gives a name that another field has");
}

const JsonPlan& Planner::plan(lumo_type_t type, bool as_value, std::vector<std::string>& errors) {
  std::unique_ptr<JsonPlan>& known = plans_[{type, as_value}];
  if (known) return *known;
  known = std::make_unique<JsonPlan>();
  JsonPlan& plan = *known;
  plan.type = type;
  plan.kind = base_kind(type);
  const Phrases phrases = phrases_of(type, "", errors);
  plan.as_value = phrases.as_value || as_value;
  plan.ascii_only = phrases.ascii_only;
  check(phrases, plan.kind, false, false, place_of(type), errors);
  const bool has_fields = plan.kind == lumo_type_kind_record || plan.kind == lumo_type_kind_set ||
                          plan.kind == lumo_type_kind_union;
  for (size_t i = 0; has_fields && i < field_count(type); ++i) plan.fields.push_back(field(type, i, errors));
  if (has_fields) check_names(plan, errors);
  if (is_list_kind(plan.kind))
    plan.fields.push_back(
        {"", &this->plan(plain_type(element_type(type)), false, errors), false, false, nullptr});
  return plan;
}

}  // namespace

const JsonPlan& json_plan(lumo_type_t type, std::vector<std::string>& errors) {
  static auto* planner = new Planner;
  return planner->plan(plain_type(type), false, errors);
}

}  // namespace lumos
