// The words of RAW encoding that hold for a type or field, read into a structure; and which kinds of types
// take them.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "codec/words.h"

namespace lumos {

enum class RawLength { given, variable, null_terminated };
enum class RawSign { none, complement, sign_bit };
enum class RawExtension { none, last_is_one, last_is_zero };

// "field = value", both as written.
struct RawKey {
  std::string path;
  std::string value;
};
// One of the keys has to hold; none of them for OTHERWISE.
struct RawChoice {
  std::string field;
  std::vector<RawKey> keys;
};
struct RawExtensionGroup {
  RawExtension kind;
  std::string first, last;
};

constexpr long unit_elements = 0;

struct RawWords {
  std::optional<RawLength> length_form;
  long length = 0;  // with the form `given`
  std::optional<RawSign> sign;
  std::optional<bool> octets_last, bits_msb, mirrored, fields_msb, hex_high, align_left, repeatable, top_msb;
  std::optional<long> padding, prepadding;  // bits
  std::optional<std::string> pattern;       // digits
  std::optional<bool> pad_all;
  std::optional<RawExtension> extension;
  std::vector<RawExtensionGroup> extension_groups;
  std::vector<std::string> length_to;
  std::optional<long> length_added;
  std::optional<long> unit;  // bits, or unit_elements
  std::optional<std::string> length_index, pointer_to, pointer_base;
  std::optional<long> pointer_unit;
  std::vector<RawKey> presence;
  std::vector<RawChoice> tags, cross_tags;
  std::vector<std::string> force_omit;

  // Where the other says something, that holds.
  void add(const RawWords& other);
};

// Adds the words of a text; false leaves a message that names the word. Words of other encodings are passed
// over.
bool read_raw_words(const char* text, RawWords& words, std::string& error);
inline bool has_fields(lumo_type_kind_t kind) {
  return kind == lumo_type_kind_record || kind == lumo_type_kind_set;
}
// A word that a type of that kind cannot have; null if there is none.
const char* unfit_raw_word(const RawWords& words, lumo_type_kind_t kind);
// A word that says something of a field's place in a record and stands at a type of that kind; null if there
// is none.
const char* homeless_raw_word(const RawWords& words, lumo_type_kind_t kind);
// What is wrong with a word that says more of another one, which is missing; null if there is none.
const char* lonely_raw_word(const RawWords& words);

}  // namespace lumos
