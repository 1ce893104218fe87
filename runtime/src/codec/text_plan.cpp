#include "codec/text_plan.h"

#include <algorithm>
#include <map>
#include <memory>
#include <unordered_map>

#include "codec/words.h"
#include "template/pattern.h"
#include "value/types.h"

namespace lumos {

namespace {

// What the words say, before they are known to fit a type.
struct TextWords {
  TextToken begin, end, separator, content;
  TextCase written_case = TextCase::same, read_case = TextCase::same;
  long least = -1, most = -1;
  bool has_just = false, just_right = false, leading_zeros = false, repeatable = false;
  std::vector<std::string> literals;  // "literal=text"
  std::string third;                  // the one of them that is a pattern where the type has no literals

  void add(const TextWords& o);
};

void TextWords::add(const TextWords& o) {
  for (const auto token : {&TextWords::begin, &TextWords::end, &TextWords::separator, &TextWords::content})
    if ((o.*token).given) this->*token = o.*token;
  if (o.written_case != TextCase::same) written_case = o.written_case;
  if (o.read_case != TextCase::same) read_case = o.read_case;
  if (o.least >= 0) least = o.least;
  if (o.most >= 0) most = o.most;
  if (o.has_just) just_right = o.just_right;
  has_just = has_just || o.has_just;
  leading_zeros = leading_zeros || o.leading_zeros;
  repeatable = repeatable || o.repeatable;
  if (o.literals.empty()) return;
  literals = o.literals;
  third = o.third;
}

bool is_quoted(std::string_view text) {
  return text.size() > 1 && text.front() == '\'' && text.back() == '\'';
}

std::string_view inside(std::string_view quoted) {
  return quoted.substr(1, quoted.size() - 2);
}

std::string without_escapes(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      plain += text[i];
      continue;
    }
    const char c = text[++i];
    plain += c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
  }
  return plain;
}

// ('text', 'pattern', case_insensitive); all but the first may be missing.
bool read_token(const Word& word, TextToken& token) {
  const auto parts = split_list(word.arguments, ',');
  if (parts.empty() || parts.size() > 3 || token.given) return false;
  token.given = true;
  if (!parts[0].empty() && !is_quoted(parts[0])) return false;
  if (!parts[0].empty()) token.text = without_escapes(inside(parts[0]));
  if (parts.size() > 1 && !parts[1].empty()) {
    if (!is_quoted(parts[1]) || !readable_pattern(inside(parts[1]))) return false;
    token.pattern = inside(parts[1]);
  }
  if (parts[0].empty() && token.pattern.empty()) return false;
  if (parts.size() < 3 || parts[2].empty()) return true;
  token.any_case = parts[2] == "case_insensitive";
  return token.any_case || parts[2] == "case_sensitive";
}

bool read_case(std::string_view value, TextCase& target) {
  target = value.starts_with("upper") ? TextCase::upper : TextCase::lower;
  return value == "upper" || value == "lower" || value == "upper_case" || value == "lower_case";
}

bool read_length(std::string_view value, TextWords& words) {
  const bool is_least = value.starts_with("min(") && value.ends_with(")");
  const bool is_most = value.starts_with("max(") && value.ends_with(")");
  if (is_least || is_most)
    return read_number(value.substr(4, value.size() - 5), is_least ? words.least : words.most);
  return read_number(value, words.least) && read_number(value, words.most);
}

bool read_option(std::string_view option, bool decodes, TextWords& words) {
  const size_t equals = option.find('=');
  const std::string_view name = trim(option.substr(0, equals));
  const std::string_view value = equals == std::string_view::npos ? "" : trim(option.substr(equals + 1));
  if (name == "convert") return read_case(value, decodes ? words.read_case : words.written_case);
  if (name == "length") return read_length(value, words);
  if (name == "leading0") return words.leading_zeros = value == "true", value == "true" || value == "false";
  if (name == "repeatable") {
    words.repeatable = value == "true" || value == "yes";
    return words.repeatable || value == "false" || value == "no";
  }
  if (name != "just") return false;
  words.has_just = true;
  words.just_right = value == "right";
  return value == "right" || value == "left";
}

// (for encoding, for decoding, 'pattern', case_insensitive), or the same options one by one; 'literal=text'
// of an enumeration.
bool read_coding(const Word& word, TextWords& words) {
  size_t i = 0;
  for (const std::string_view part : split_list(word.arguments, ',')) {
    const bool decodes = i++ == 1;
    if (part.empty()) continue;
    if (part == "case_insensitive" || part == "case_sensitive") {
      words.content.any_case = part == "case_insensitive";
      words.content.given = true;
    } else if (is_quoted(part) && inside(part).find('=') != std::string_view::npos &&
               words.content.pattern.empty() && is_path(inside(part).substr(0, inside(part).find('=')))) {
      words.literals.emplace_back(inside(part));
      if (i == 3) words.third = inside(part);
    } else if (is_quoted(part)) {
      if (!words.content.pattern.empty() || !readable_pattern(inside(part))) return false;
      words.content.pattern = inside(part);
      words.content.given = true;
    } else {
      for (const std::string_view option : split_list(part, ';'))
        if (!read_option(option, decodes, words)) return false;
    }
  }
  return true;
}

class TextPlanner {
 public:
  const TextPlan& plan(lumo_type_t type, std::vector<std::string>& errors) {
    const TextPlan*& made = made_[type];
    if (!made) made = plan_with(plain_type(type), "", {}, place_of(type), errors);
    return *made;
  }

 private:
  TextPlan* plan_with(lumo_type_t type, const std::string& key, const TextWords& added,
                      const std::string& place, std::vector<std::string>& errors);
  TextWords words_of(lumo_type_t type, std::string_view field, std::string* key,
                     std::vector<std::string>& errors);
  void fill(TextPlan& plan, const TextWords& words, std::vector<std::string>& errors);
  void fill_literals(TextPlan& plan, const TextWords& words, std::vector<std::string>& errors);

  std::map<std::pair<lumo_type_t, std::string>, std::unique_ptr<TextPlan>> plans_;
  std::unordered_map<lumo_type_t, const TextPlan*> made_;  // those of messages
};

TextWords TextPlanner::words_of(lumo_type_t type, std::string_view field, std::string* key,
                                std::vector<std::string>& errors) {
  TextWords all;
  for (const auto& level : variants_of(type, field)) {
    TextWords words;
    for (const char* text : level) {
      if (key) *key += std::string(text) + ";";
      std::vector<Word> list;
      if (!read_words(text, list))
        add_fault(errors, place_of(place_of(type), field),
                  std::string("the text \"") + text + "\" has no end");
      for (const Word& word : list) {
        const bool good = word.name == "BEGIN"         ? read_token(word, words.begin)
                          : word.name == "END"         ? read_token(word, words.end)
                          : word.name == "SEPARATOR"   ? read_token(word, words.separator)
                          : word.name == "TEXT_CODING" ? read_coding(word, words)
                          : word.name.empty()          ? is_json_phrase(word.arguments)
                                                       : is_known_word(word.name);
        if (!good)
          add_fault(errors, place_of(place_of(type), field),
                    "the word " +
                        (word.name.empty() ? word.arguments : word.name + "(" + word.arguments + ")") +
                        " is not known, wrong or there twice");
      }
    }
    all.add(words);
  }
  return all;
}

void TextPlanner::fill_literals(TextPlan& plan, const TextWords& words, std::vector<std::string>& errors) {
  const lumo_type_info_struct_t* info = structure_of(plan.type);
  std::map<std::string, std::string> texts;
  for (const std::string& pair : words.literals) {
    const size_t equals = pair.find('=');
    const std::string literal(trim(pair.substr(0, equals)));
    if (enum_number(plan.type, literal.c_str(), literal.size()) == -1)
      add_fault(errors, plan.place, "the word TEXT_CODING names " + literal + ", which is no literal");
    texts[literal] = without_escapes(trim(pair.substr(equals + 1)));
  }
  for (long i = 0; i < info->number_of_fields; ++i) {
    const auto& row = info->enum_or_array_info[i];
    const auto other = texts.find(row.name);
    plan.literals.emplace_back(other == texts.end() ? row.name : other->second, row.number);
  }
  // A longer literal is meant before one that it begins with.
  std::stable_sort(plan.literals.begin(), plan.literals.end(),
                   [](const auto& a, const auto& b) { return a.first.size() > b.first.size(); });
}

bool has_parts(lumo_type_kind_t kind) {
  return is_record_kind(kind) || kind == lumo_type_kind_union || is_list_kind(kind);
}

// A word that a type of that kind cannot have; empty if there is none.
std::string unfit_word(const TextWords& words, lumo_type_kind_t kind) {
  const bool is_text = is_text_kind(kind) || kind == lumo_type_kind_enumerated;
  const bool has_case = words.written_case != TextCase::same || words.read_case != TextCase::same;
  if (words.separator.given && !has_parts(kind)) return "SEPARATOR";
  if (!words.literals.empty() && kind != lumo_type_kind_enumerated)
    return "TEXT_CODING('" + words.literals[0] + "')";
  if (words.repeatable && !is_list_kind(kind)) return "TEXT_CODING(repeatable)";
  if (has_parts(kind) && !words.content.pattern.empty())
    return "TEXT_CODING('" + words.content.pattern + "')";
  if ((words.least >= 0 || words.most >= 0) && has_parts(kind)) return "TEXT_CODING(length)";
  if (words.most >= 0 && words.least > words.most) return "TEXT_CODING(length)";
  if (words.has_just && has_parts(kind)) return "TEXT_CODING(just)";
  if (words.leading_zeros && kind != lumo_type_kind_integer && kind != lumo_type_kind_float)
    return "TEXT_CODING(leading0)";
  return has_case && !is_text ? "TEXT_CODING(convert)" : "";
}

void TextPlanner::fill(TextPlan& plan, const TextWords& words, std::vector<std::string>& errors) {
  plan.begin = words.begin;
  plan.end = words.end;
  plan.separator = words.separator;
  plan.content = words.content;
  plan.written_case = words.written_case;
  plan.read_case = words.read_case;
  if (words.least >= 0) plan.least = static_cast<size_t>(words.least);
  if (words.most >= 0) plan.most = static_cast<size_t>(words.most);
  plan.just_right = words.has_just ? words.just_right : plan.kind == lumo_type_kind_integer;
  plan.leading_zeros = words.leading_zeros;
  plan.repeatable = words.repeatable;
  if (plan.kind == lumo_type_kind_enumerated) fill_literals(plan, words, errors);
  if (const std::string word = unfit_word(words, plan.kind); !word.empty())
    add_fault(errors, plan.place, "the word " + word + " does not fit the type");
  const bool has_fields = has_parts(plan.kind) && !is_list_kind(plan.kind);
  for (size_t i = 0; has_fields && i < field_count(plan.type); ++i) {
    const lumo_field_info_t& info = field_info(plan.type)[i];
    std::string key;
    const TextWords own = words_of(plan.type, info.name, &key, errors);
    const lumo_type_t type = plain_type(info.type);
    const std::string place = key.empty() ? place_of(type) : place_of(plan.place, info.name);
    plan.fields.push_back({info.name, plan_with(type, key, own, place, errors), is_optional(info)});
  }
  if (!is_list_kind(plan.kind)) return;
  const lumo_type_t element = plain_type(element_type(plan.type));
  plan.fields.push_back({"element", plan_with(element, "", {}, place_of(element), errors), false});
}

// What looks like a literal and its text is a pattern where the type has no literals.
void settle_pattern(TextWords& words, lumo_type_kind_t kind) {
  if (kind == lumo_type_kind_enumerated || words.literals.size() != 1 || words.third.empty() ||
      !readable_pattern(words.third))
    return;
  words.literals.clear();
  words.content.pattern = words.third;
  words.content.given = true;
}

TextPlan* TextPlanner::plan_with(lumo_type_t type, const std::string& key, const TextWords& added,
                                 const std::string& place, std::vector<std::string>& errors) {
  std::unique_ptr<TextPlan>& known = plans_[{type, key}];
  if (known) return known.get();
  known = std::make_unique<TextPlan>();
  TextPlan* plan = known.get();
  plan->type = type;
  plan->place = place;
  plan->kind = base_kind(type);
  TextWords words = words_of(type, "", nullptr, errors);
  words.add(added);
  settle_pattern(words, plan->kind);
  fill(*plan, words, errors);
  return plan;
}

}  // namespace

size_t TextToken::match(std::string_view octets) const {
  if (!pattern.empty()) return pattern_prefix(pattern, octets, any_case);
  if (octets.size() < text.size()) return std::string_view::npos;
  const auto same = [this](char a, char b) {
    return a == b || (any_case && std::tolower(static_cast<unsigned char>(a)) ==
                                      std::tolower(static_cast<unsigned char>(b)));
  };
  return std::equal(text.begin(), text.end(), octets.begin(), same) ? text.size() : std::string_view::npos;
}

const TextPlan& text_plan(lumo_type_t type, std::vector<std::string>& errors) {
  static auto* planner = new TextPlanner;
  return planner->plan(type, errors);
}

}  // namespace lumos
