#include "codec/raw_words.h"

#include <algorithm>
#include <array>

#include "value/types.h"

namespace lumos {

namespace {

using Arguments = std::vector<std::string_view>;

template <class T>
bool set_once(std::optional<T>& target, const T& value) {
  if (target && *target != value) return false;
  target = value;
  return true;
}

// One of two words, the second for true.
bool set_choice(std::optional<bool>& target, const Arguments& a, std::string_view no, std::string_view yes) {
  return a.size() == 1 && (a[0] == no || a[0] == yes) && set_once(target, a[0] == yes);
}

bool set_number(std::optional<long>& target, std::string_view text, long least, long most) {
  long number;
  return read_number(text, number) && number >= least && number <= most && set_once(target, number);
}

constexpr long longest = 1L << 24;

bool set_length(RawWords& w, const Arguments& a) {
  if (a.size() != 1) return false;
  if (a[0] == "variable") return set_once(w.length_form, RawLength::variable);
  if (a[0] == "null_terminated") return set_once(w.length_form, RawLength::null_terminated);
  long length;
  if (!read_number(a[0], length) || length < 0 || length > longest) return false;
  if (w.length_form == RawLength::given && w.length != length) return false;
  w.length = length;
  return set_once(w.length_form, RawLength::given);
}

bool set_sign(RawWords& w, const Arguments& a) {
  if (a.size() != 1) return false;
  if (a[0] == "nosign") return set_once(w.sign, RawSign::none);
  if (a[0] == "2scompl") return set_once(w.sign, RawSign::complement);
  return a[0] == "signbit" && set_once(w.sign, RawSign::sign_bit);
}

bool set_padding(std::optional<long>& target, const Arguments& a) {
  constexpr std::array<std::pair<std::string_view, long>, 7> names = {
      {{"no", 0}, {"yes", 8}, {"bit", 1}, {"octet", 8}, {"nibble", 4}, {"word16", 16}, {"dword32", 32}}};
  if (a.size() != 1) return false;
  for (const auto& [name, bits] : names)
    if (a[0] == name) return set_once(target, bits);
  return set_number(target, a[0], 0, 4096);
}

bool set_pattern(RawWords& w, const Arguments& a) {
  if (a.size() != 1 || a[0].size() < 4 || a[0].front() != '\'' || !a[0].ends_with("'B")) return false;
  const std::string digits(a[0].substr(1, a[0].size() - 3));
  return digits.find_first_not_of("01") == std::string::npos && set_once(w.pattern, digits);
}

bool read_extension(std::string_view text, RawExtension& kind) {
  kind = text == "yes"       ? RawExtension::last_is_one
         : text == "reverse" ? RawExtension::last_is_zero
                             : RawExtension::none;
  return text == "yes" || text == "reverse" || text == "no";
}

bool set_extension(RawWords& w, const Arguments& a) {
  RawExtension kind;
  return a.size() == 1 && read_extension(a[0], kind) && set_once(w.extension, kind);
}

bool add_extension_group(RawWords& w, const Arguments& a) {
  RawExtensionGroup group;
  if (a.size() != 3 || !read_extension(a[0], group.kind) || !is_path(a[1]) || !is_path(a[2])) return false;
  group.first = a[1];
  group.last = a[2];
  w.extension_groups.push_back(std::move(group));
  return true;
}

bool add_paths(std::vector<std::string>& paths, const Arguments& a) {
  for (const std::string_view path : a) {
    if (!is_path(path)) return false;
    paths.emplace_back(path);
  }
  return !a.empty();
}

bool set_path(std::optional<std::string>& target, const Arguments& a) {
  return a.size() == 1 && is_path(a[0]) && set_once(target, std::string(a[0]));
}

bool set_unit(RawWords& w, const Arguments& a) {
  if (a.size() != 1) return false;
  if (a[0] == "elements") return set_once(w.unit, unit_elements);
  if (a[0] == "octets") return set_once(w.unit, 8L);
  if (a[0] == "bits") return set_once(w.unit, 1L);
  return set_number(w.unit, a[0], 1, longest);
}

bool add_key(std::vector<RawKey>& keys, std::string_view text) {
  const size_t equals = text.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view path = trim(text.substr(0, equals)), value = trim(text.substr(equals + 1));
  if (!is_path(path) || value.empty()) return false;
  keys.push_back({std::string(path), std::string(value)});
  return true;
}

// "a = x, {b = y, c = z}".
bool add_keys(std::vector<RawKey>& keys, const Arguments& a) {
  return !a.empty() && std::all_of(a.begin(), a.end(), [&](std::string_view part) {
    if (part.empty() || part.front() != '{') return add_key(keys, part);
    return part.back() == '}' && add_keys(keys, split_list(part.substr(1, part.size() - 2), ','));
  });
}

bool add_choices(std::vector<RawChoice>& choices, std::string_view text) {
  for (const std::string_view part : split_list(text, ';')) {
    if (part.empty()) continue;
    Arguments a = split_list(part, ',');
    if (a.size() < 2 || !is_path(a[0])) return false;
    RawChoice choice{std::string(a[0]), {}};
    a.erase(a.begin());
    const bool otherwise = a.size() == 1 && a[0] == "OTHERWISE";
    if (!otherwise && !add_keys(choice.keys, a)) return false;
    choices.push_back(std::move(choice));
  }
  return !choices.empty();
}

bool set_suffix(RawWords& w, std::string_view suffix) {
  if (suffix.empty()) return true;
  long number;
  if (!read_number(trim(suffix.substr(1)), number) || number > longest || number < 0) return false;
  return set_once(w.length_added, suffix[0] == '-' ? -number : number);
}

struct RawWord {
  const char* name;
  bool (*set)(RawWords& words, const Arguments& arguments);
};

constexpr RawWord table[] = {
    {"FIELDLENGTH", set_length},
    {"COMP", set_sign},
    {"BYTEORDER",
     [](RawWords& w, const Arguments& a) { return set_choice(w.octets_last, a, "first", "last"); }},
    {"BITORDER", [](RawWords& w, const Arguments& a) { return set_choice(w.bits_msb, a, "lsb", "msb"); }},
    {"BITORDERINFIELD",
     [](RawWords& w, const Arguments& a) { return set_choice(w.mirrored, a, "lsb", "msb"); }},
    {"BITORDERINOCTET",
     [](RawWords& w, const Arguments& a) { return set_choice(w.bits_msb, a, "lsb", "msb"); }},
    {"FIELDORDER", [](RawWords& w, const Arguments& a) { return set_choice(w.fields_msb, a, "lsb", "msb"); }},
    {"HEXORDER", [](RawWords& w, const Arguments& a) { return set_choice(w.hex_high, a, "low", "high"); }},
    {"ALIGN", [](RawWords& w, const Arguments& a) { return set_choice(w.align_left, a, "right", "left"); }},
    {"PADDING", [](RawWords& w, const Arguments& a) { return set_padding(w.padding, a); }},
    {"PREPADDING", [](RawWords& w, const Arguments& a) { return set_padding(w.prepadding, a); }},
    {"PADDING_PATTERN", set_pattern},
    {"PADDALL",
     [](RawWords& w, const Arguments& a) {
       return a.empty() ? set_once(w.pad_all, true) : set_choice(w.pad_all, a, "no", "yes");
     }},
    {"EXTENSION_BIT", set_extension},
    {"EXTENSION_BIT_GROUP", add_extension_group},
    {"LENGTHTO", [](RawWords& w, const Arguments& a) { return add_paths(w.length_to, a); }},
    {"UNIT", set_unit},
    {"LENGTHINDEX", [](RawWords& w, const Arguments& a) { return set_path(w.length_index, a); }},
    {"POINTERTO", [](RawWords& w, const Arguments& a) { return set_path(w.pointer_to, a); }},
    {"PTRUNIT",
     [](RawWords& w, const Arguments& a) {
       return a.size() == 1 && set_number(w.pointer_unit, a[0], 1, 4096);
     }},
    {"PTROFFSET", [](RawWords& w, const Arguments& a) { return set_path(w.pointer_base, a); }},
    {"PRESENCE", [](RawWords& w, const Arguments& a) { return add_keys(w.presence, a); }},
    {"REPEATABLE", [](RawWords& w, const Arguments& a) { return set_choice(w.repeatable, a, "no", "yes"); }},
    {"FORCEOMIT", [](RawWords& w, const Arguments& a) { return add_paths(w.force_omit, a); }},
};

// Words whose arguments are no list of names and values.
bool read_special(const Word& word, RawWords& w, bool& good) {
  if (word.name == "TAG") {
    good = add_choices(w.tags, word.arguments);
  } else if (word.name == "CROSSTAG") {
    good = add_choices(w.cross_tags, word.arguments);
  } else if (word.name == "TOPLEVEL") {
    std::vector<Word> inner;
    RawWords top;
    std::string error;
    good = read_raw_words(word.arguments.c_str(), top, error) && top.bits_msb &&
           set_once(w.top_msb, *top.bits_msb);
  } else {
    return false;
  }
  return true;
}

bool read_word(const Word& word, RawWords& w, std::string& error) {
  bool good = word.name.empty() && is_json_phrase(word.arguments);
  if (good) return true;
  if (!read_special(word, w, good)) {
    const auto* row = std::find_if(std::begin(table), std::end(table),
                                   [&](const RawWord& r) { return word.name == r.name; });
    if (row == std::end(table)) {
      if (is_known_word(word.name)) return true;
      error = "the word '" + (word.name.empty() ? word.arguments : word.name) + "' is not known";
      return false;
    }
    good = row->set(w, split_list(word.arguments, ',')) && (word.suffix.empty() || word.name == "LENGTHTO") &&
           set_suffix(w, word.suffix);
  }
  if (!good)
    error = "the word " + word.name + "(" + word.arguments + ")" + word.suffix +
            " is wrong or contradicts another";
  return good;
}

template <class T>
void replace(std::optional<T>& target, const std::optional<T>& source) {
  if (source) target = source;
}

template <class T>
void replace(std::vector<T>& target, const std::vector<T>& source) {
  if (!source.empty()) target = source;
}

bool is_number(lumo_type_kind_t kind) {
  return kind == lumo_type_kind_integer || kind == lumo_type_kind_enumerated ||
         kind == lumo_type_kind_boolean;
}

}  // namespace

void RawWords::add(const RawWords& o) {
  if (o.length_form) length = o.length;
  replace(length_form, o.length_form);
  replace(sign, o.sign);
  for (const auto member : {&RawWords::octets_last, &RawWords::bits_msb, &RawWords::mirrored,
                            &RawWords::fields_msb, &RawWords::hex_high, &RawWords::align_left,
                            &RawWords::repeatable, &RawWords::top_msb, &RawWords::pad_all})
    replace(this->*member, o.*member);
  for (const auto member : {&RawWords::padding, &RawWords::prepadding, &RawWords::length_added,
                            &RawWords::unit, &RawWords::pointer_unit})
    replace(this->*member, o.*member);
  for (const auto member :
       {&RawWords::pattern, &RawWords::length_index, &RawWords::pointer_to, &RawWords::pointer_base})
    replace(this->*member, o.*member);
  replace(extension, o.extension);
  replace(extension_groups, o.extension_groups);
  replace(length_to, o.length_to);
  replace(presence, o.presence);
  replace(tags, o.tags);
  replace(cross_tags, o.cross_tags);
  replace(force_omit, o.force_omit);
}

bool read_raw_words(const char* text, RawWords& words, std::string& error) {
  std::vector<Word> list;
  if (!read_words(text, list)) {
    error = std::string("the text \"") + text + "\" has a parenthesis or quote without an end";
    return false;
  }
  return std::all_of(list.begin(), list.end(),
                     [&](const Word& word) { return read_word(word, words, error); });
}

namespace {

bool is_counting(lumo_type_kind_t kind) {
  return kind == lumo_type_kind_integer || kind == lumo_type_kind_enumerated;
}

bool has_alternatives(lumo_type_kind_t kind) {
  return has_fields(kind) || kind == lumo_type_kind_union;
}

bool has_marks(const RawWords& w) {
  return w.extension && *w.extension != RawExtension::none;
}

bool may_be_long(lumo_type_kind_t kind) {
  return is_string_kind(kind) || is_list_kind(kind);
}

// Where a word speaks of what only some kinds of types have. Those of orders and boundaries are not here:
// what they do not concern they leave as it is, so that they may stand at a group of all kinds of types.
struct Fit {
  const char* word;
  bool (*is_said)(const RawWords& w);
  bool (*fits)(const RawWords& w, lumo_type_kind_t kind);
};

constexpr Fit fits[] = {
    {"FIELDLENGTH", [](const RawWords& w) { return w.length_form == RawLength::given; },
     [](const RawWords& w, lumo_type_kind_t kind) {
       if (kind == lumo_type_kind_float) return w.length == 32 || w.length == 64;
       return is_number(kind) ? w.length >= 1 && w.length <= 64 : may_be_long(kind);
     }},
    {"FIELDLENGTH(variable)", [](const RawWords& w) { return w.length_form == RawLength::variable; },
     [](const RawWords& w, lumo_type_kind_t kind) {
       return may_be_long(kind) || (kind == lumo_type_kind_integer && has_marks(w));
     }},
    {"FIELDLENGTH(null_terminated)",
     [](const RawWords& w) { return w.length_form == RawLength::null_terminated; },
     [](const RawWords&, lumo_type_kind_t kind) { return is_text_kind(kind); }},
    {"COMP", [](const RawWords& w) { return w.sign.has_value(); },
     [](const RawWords& w, lumo_type_kind_t kind) { return is_counting(kind) && !has_marks(w); }},
    {"HEXORDER", [](const RawWords& w) { return w.hex_high.has_value(); },
     [](const RawWords&, lumo_type_kind_t kind) { return kind == lumo_type_kind_hexstring; }},
    {"TAG", [](const RawWords& w) { return !w.tags.empty(); },
     [](const RawWords&, lumo_type_kind_t kind) { return has_alternatives(kind); }},
    {"CROSSTAG", [](const RawWords& w) { return !w.cross_tags.empty(); },
     [](const RawWords&, lumo_type_kind_t kind) { return kind == lumo_type_kind_union; }},
    {"EXTENSION_BIT_GROUP", [](const RawWords& w) { return !w.extension_groups.empty(); },
     [](const RawWords&, lumo_type_kind_t kind) { return has_fields(kind); }},
    {"PADDALL", [](const RawWords& w) { return w.pad_all.value_or(false); },
     [](const RawWords&, lumo_type_kind_t kind) { return has_fields(kind); }},
    {"REPEATABLE", [](const RawWords& w) { return w.repeatable.value_or(false); },
     [](const RawWords&, lumo_type_kind_t kind) { return is_list_kind(kind); }},
    {"FORCEOMIT", [](const RawWords& w) { return !w.force_omit.empty(); },
     [](const RawWords&, lumo_type_kind_t kind) { return has_fields(kind); }},
    {"LENGTHTO", [](const RawWords& w) { return !w.length_to.empty(); },
     [](const RawWords&, lumo_type_kind_t kind) {
       return kind == lumo_type_kind_integer || has_alternatives(kind);
     }},
    {"POINTERTO", [](const RawWords& w) { return w.pointer_to.has_value(); },
     [](const RawWords&, lumo_type_kind_t kind) { return kind == lumo_type_kind_integer; }},
};

}  // namespace

const char* unfit_raw_word(const RawWords& words, lumo_type_kind_t kind) {
  for (const Fit& fit : fits)
    if (fit.is_said(words) && !fit.fits(words, kind)) return fit.word;
  return nullptr;
}

const char* homeless_raw_word(const RawWords& w, lumo_type_kind_t kind) {
  if (!w.presence.empty() && !has_alternatives(kind)) return "PRESENCE";
  if (!w.length_to.empty()) return "LENGTHTO";
  if (w.unit) return "UNIT";
  if (w.length_index) return "LENGTHINDEX";
  if (w.pointer_to) return "POINTERTO";
  if (w.pointer_unit) return "PTRUNIT";
  if (w.pointer_base) return "PTROFFSET";
  return w.cross_tags.empty() ? nullptr : "CROSSTAG";
}

const char* lonely_raw_word(const RawWords& w) {
  if (w.length_to.empty() && w.length_index) return "LENGTHINDEX is nothing without LENGTHTO";
  if (w.length_to.empty() && w.unit) return "UNIT is nothing without LENGTHTO";
  if (!w.pointer_to && w.pointer_unit) return "PTRUNIT is nothing without POINTERTO";
  return !w.pointer_to && w.pointer_base ? "PTROFFSET is nothing without POINTERTO" : nullptr;
}

}  // namespace lumos
