// The plan by which values of a type are encoded and decoded as bit fields: made once when the suite starts,
// with all names resolved, so that encoding and decoding look at no text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "codec/bits.h"
#include "codec/raw_words.h"
#include "value/value.h"

namespace lumos {

struct RawPlan;

// Whether fields fill octets from their most significant end; a type that does not say it has it from around.
enum class RawOrder : int8_t { inherited = -1, lsb = 0, msb = 1 };

// Bits that lie before a part.
struct RawStep {
  size_t bits;
  RawOrder order;
};

// A part of a value has a certain value. Where all that lies before the part has one size, it can be looked
// at in the octets without decoding what it is a part of.
struct RawCondition {
  std::vector<size_t> path;  // fields and alternatives
  const RawPlan* part = nullptr;
  Value constant = nullptr;  // null: the part is omitted
  bool is_fixed = false;
  std::vector<RawStep> steps;
  RawOrder part_order = RawOrder::inherited;
};
using RawConditions = std::vector<RawCondition>;  // one of them has to hold

struct RawAlternative {
  size_t index;
  RawConditions conditions;  // none for OTHERWISE
};

constexpr size_t no_place = SIZE_MAX;

struct RawField {
  const char* name = "";
  const RawPlan* plan = nullptr;
  bool optional = false;
  bool omitted = false;  // by FORCEOMIT
  bool has_presence = false, has_tag = false, is_otherwise = false;
  RawConditions presence;             // by fields of the record
  RawConditions tag;                  // by parts of its own
  std::vector<RawAlternative> cross;  // which alternative, by fields of the record
  std::vector<size_t> counted_by;     // which lengths of the record count this field
  size_t length = no_place;           // which length of the record it holds
  size_t pointer = no_place;          // which pointer it holds
  size_t pointed_by = no_place;       // which pointer leads to it
  size_t group = no_place;            // which group of extension bits it belongs to
};

struct RawLengthField {
  size_t field;
  std::vector<std::string> index;  // the part that holds the number; empty for the field itself
  std::vector<size_t> counted;
  long unit;  // bits, or unit_elements
  long added;
};

struct RawPointerField {
  size_t field, target, base;
  long unit;
};

struct RawGroup {
  RawExtension kind;
  size_t first, last;
};

struct RawPlan {
  lumo_type_t type = nullptr;
  std::string place;  // the type and field whose words it follows, for messages
  lumo_type_kind_t kind = lumo_type_kind_undefined;
  RawOrder order = RawOrder::inherited;
  BitOrder bits;  // without the order of fields
  RawLength form = RawLength::variable;
  size_t length = 0;       // with the form `given`: bits, digits, octets, characters or elements
  size_t most = SIZE_MAX;  // with another form: no more than that
  size_t least_bits = 0;   // that any value takes
  RawSign sign = RawSign::none;
  bool hex_high = false;
  bool align_left = false;
  bool repeatable = false;
  bool top_msb = false;
  bool has_check = false;
  unsigned padding = 0, prepadding = 0;
  std::string pattern;
  RawExtension extension = RawExtension::none;
  RawConditions presence;        // of its own parts
  std::vector<RawField> fields;  // of a record or set; alternatives; the one element of a list
  std::vector<RawLengthField> lengths;
  std::vector<RawPointerField> pointers;
  std::vector<RawGroup> groups;
  bool has_tags = false;
  // What the check of the type said of each of up to 256 values of a number: 0 not asked yet, 1 good, 2 bad.
  mutable std::vector<uint8_t> checked;
};

// The plan of a type, made at the first call; the texts that were wrong are added to errors, each once, with
// the names of type, field and word.
const RawPlan& raw_plan(lumo_type_t type, std::vector<std::string>& errors);

}  // namespace lumos
