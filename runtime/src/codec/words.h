// The texts of variant attributes, cut into words: "FIELDLENGTH(8), COMP(nosign)" is two of them. Also what
// the arguments of words consist of: names, numbers, texts in quotes, paths of fields.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lumos.h"

namespace lumos {

struct Word {
  std::string name;       // empty for a phrase such as "name as 'x'"
  std::string arguments;  // what stands in the parentheses, or the phrase
  std::string suffix;     // what stands behind them: "+ 4"
};

// Cuts the text; false if a parenthesis or quote has no end.
bool read_words(std::string_view text, std::vector<Word>& words);

std::string_view trim(std::string_view text);
// The parts between separators that stand outside of quotes, parentheses and braces, trimmed; none of an
// empty text.
std::vector<std::string_view> split_list(std::string_view text, char separator);
// A whole number and nothing else.
bool read_number(std::string_view text, long& number);
// "name" or "name.of.part".
bool is_path(std::string_view text);

// Whether a word in capitals is one that some encoding knows.
bool is_known_word(std::string_view name);
// Whether a phrase is one of those that the encoding of JSON knows.
bool is_json_phrase(std::string_view phrase);

// The variant texts that hold for a type, a list for each type that it is derived from, the root first: later
// ones win. An empty field asks for those of the type as a whole, else for those of a field.
std::vector<std::vector<const char*>> variants_of(lumo_type_t type, std::string_view field);

// "type M.T" and "type M.T, field f": where a word stands, for messages.
std::string place_of(lumo_type_t type);
std::string place_of(const std::string& place, std::string_view field);
// Adds a line about a place, once.
void add_fault(std::vector<std::string>& errors, const std::string& place, const std::string& text);

}  // namespace lumos
