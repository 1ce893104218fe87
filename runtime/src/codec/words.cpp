#include "codec/words.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "value/types.h"

namespace lumos {

namespace {

bool is_name(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool is_separator(char c) {
  return c == ',' || c == ';' || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The end of what begins with a quote or an opening bracket; npos without one.
size_t end_of(std::string_view text, size_t at) {
  if (text[at] == '\'' || text[at] == '"') {
    const char quote = text[at];
    for (size_t i = at + 1; i < text.size(); ++i) {
      if (text[i] == '\\' && i + 1 < text.size())
        ++i;
      else if (text[i] == quote)
        return i + 1;
    }
    return std::string_view::npos;
  }
  const char close = text[at] == '(' ? ')' : '}';
  for (size_t i = at + 1; i < text.size();) {
    if (text[i] == close) return i + 1;
    i = std::strchr("'\"({", text[i]) ? end_of(text, i) : i + 1;
    if (i == std::string_view::npos) break;
  }
  return std::string_view::npos;
}

bool opens(char c) {
  return c == '\'' || c == '"' || c == '(' || c == '{';
}

// The end of a part of a list.
size_t end_of_part(std::string_view text, size_t at, char separator) {
  while (at < text.size() && text[at] != separator) {
    at = opens(text[at]) ? end_of(text, at) : at + 1;
    if (at == std::string_view::npos) return text.size();
  }
  return at;
}

// "+ 4" or "- 1" behind a word.
std::string take_suffix(std::string_view text, size_t& at) {
  size_t i = text.find_first_not_of(" \t\r\n", at);
  if (i == std::string_view::npos || (text[i] != '+' && text[i] != '-')) return {};
  const size_t start = i++;
  while (i < text.size() && (is_name(text[i]) || text[i] == ' ')) ++i;
  at = i;
  return std::string(trim(text.substr(start, i - start)));
}

bool is_word(std::string_view name) {
  return std::none_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

bool read_word(std::string_view text, size_t& at, Word& word) {
  size_t i = at;
  while (i < text.size() && is_name(text[i])) ++i;
  const std::string_view name = text.substr(at, i - at);
  const size_t open = text.find_first_not_of(" \t\r\n", i);
  // "JSON: name as 'x'" is a phrase.
  if (name.empty() || !is_word(name) || (open != std::string_view::npos && text[open] == ':')) {
    i = end_of_part(text, at, ',');
    word.arguments = trim(text.substr(at, i - at));
    at = i;
    return true;
  }
  word.name = name;
  at = i;
  if (open == std::string_view::npos || text[open] != '(') return true;
  at = end_of(text, open);
  if (at == std::string_view::npos) return false;
  word.arguments = trim(text.substr(open + 1, at - open - 2));
  word.suffix = take_suffix(text, at);
  return true;
}

}  // namespace

std::string_view trim(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

namespace {
// The text with blanks for its comments.
std::string without_comments(std::string_view text) {
  std::string plain(text);
  for (size_t at = 0; at + 1 < plain.size();) {
    if (plain[at] == '\'' || plain[at] == '"') {
      const size_t end = end_of(plain, at);
      at = end == std::string::npos ? plain.size() : end;
      continue;
    }
    const bool is_line = plain.compare(at, 2, "//") == 0;
    if (!is_line && plain.compare(at, 2, "/*") != 0) {
      ++at;
      continue;
    }
    size_t end = is_line ? plain.find('\n', at) : plain.find("*/", at + 2);
    end = end == std::string::npos ? plain.size() : is_line ? end : end + 2;
    std::fill(plain.begin() + static_cast<long>(at), plain.begin() + static_cast<long>(end), ' ');
    at = end;
  }
  return plain;
}
}  // namespace

bool read_words(std::string_view commented, std::vector<Word>& words) {
  const std::string plain = without_comments(commented);
  const std::string_view text = plain;
  for (size_t at = 0; at < text.size();) {
    if (is_separator(text[at])) {
      ++at;
      continue;
    }
    Word word;
    if (!read_word(text, at, word)) return false;
    words.push_back(std::move(word));
  }
  return true;
}

std::vector<std::string_view> split_list(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  if (trim(text).empty()) return parts;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = end_of_part(text, at, separator);
    parts.push_back(trim(text.substr(at, end - at)));
    at = end + 1;
  }
  return parts;
}

bool read_number(std::string_view text, long& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool is_path(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return is_name(c) || c == '.'; }) &&
         text.front() != '.' && text.back() != '.';
}

bool is_known_word(std::string_view name) {
  constexpr std::string_view known[] = {"FIELDLENGTH",
                                        "COMP",
                                        "BYTEORDER",
                                        "BITORDER",
                                        "BITORDERINFIELD",
                                        "BITORDERINOCTET",
                                        "FIELDORDER",
                                        "HEXORDER",
                                        "ALIGN",
                                        "PADDING",
                                        "PREPADDING",
                                        "PADDING_PATTERN",
                                        "PADDALL",
                                        "EXTENSION_BIT",
                                        "EXTENSION_BIT_GROUP",
                                        "LENGTHTO",
                                        "UNIT",
                                        "LENGTHINDEX",
                                        "POINTERTO",
                                        "PTRUNIT",
                                        "PTROFFSET",
                                        "PRESENCE",
                                        "TAG",
                                        "CROSSTAG",
                                        "REPEATABLE",
                                        "TOPLEVEL",
                                        "FORCEOMIT",
                                        "BEGIN",
                                        "END",
                                        "SEPARATOR",
                                        "TEXT_CODING"};
  return std::find(std::begin(known), std::end(known), name) != std::end(known);
}

bool is_json_phrase(std::string_view phrase) {
  constexpr std::string_view beginnings[] = {"JSON",       "name as ",  "omit as ", "default", "as value",
                                             "escape as ", "as number", "as map",   "metainfo"};
  return std::any_of(std::begin(beginnings), std::end(beginnings),
                     [&](std::string_view beginning) { return phrase.starts_with(beginning); });
}

std::vector<std::vector<const char*>> variants_of(lumo_type_t type, std::string_view field) {
  std::vector<std::vector<const char*>> levels;
  for (type = plain_type(type); type && type->type_info && levels.size() < 1000;
       type = plain_type(type->type_info->parent_type)) {
    levels.emplace_back();
    for (const lumo_encoding_attr_struct_t& row : attributes(type->variant_attributes))
      if (field == (row.field_name ? row.field_name : "")) levels.back().push_back(row.text);
  }
  std::reverse(levels.begin(), levels.end());
  return levels;
}

std::string place_of(lumo_type_t type) {
  const char* module = lumo_type_definition_module(type, nullptr);
  return std::string("type ") + (module ? module : "") + "." + type_name(type);
}

std::string place_of(const std::string& place, std::string_view field) {
  const bool is_field = place.find(", field ") != std::string::npos;
  return field.empty() ? place : place + (is_field ? "." : ", field ") + std::string(field);
}

void add_fault(std::vector<std::string>& errors, const std::string& place, const std::string& text) {
  std::string line = place + ": " + text;
  if (std::find(errors.begin(), errors.end(), line) == errors.end()) errors.push_back(std::move(line));
}

}  // namespace lumos
