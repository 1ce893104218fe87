// Encoding and decoding of values as bit fields, by plans.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "codec/raw_plan.h"

namespace lumos {

// Appends the octets; false leaves in fault what cannot be encoded, with the path of the field.
bool raw_encode(const RawPlan& plan, Value v, std::string& octets, std::string& fault);
// A value with temporary life that lies at the beginning of the octets; null leaves in fault the field and
// the octet that are wrong. taken tells how many octets the value took.
Value raw_decode(const RawPlan& plan, std::string_view octets, size_t& taken, std::string& fault);

// --- shared by both

// Whether a part has a value that can be written.
inline bool is_there(Value part) {
  return part && !is_omit(part) && part->form != Form::unset;
}

// Where a coder is within a value, for messages.
class FieldPath {
 public:
  void enter(const char* name) { names_.push_back(name); }
  void leave() { names_.pop_back(); }
  size_t depth() const { return names_.size(); }
  void leave_to(size_t depth) { names_.resize(depth); }
  std::string text() const;

 private:
  std::vector<const char*> names_;
};

// Puts the elements of a list behind those of another one, and destroys the first; more may be null.
void append_elements(Value list, Value more);
// The part at the end of a path; null where something on the way is omitted or another alternative is chosen.
Value part_at(Value v, const std::vector<size_t>& path);
// Whether a number stands in seven bits of each octet.
inline bool is_groups_of_seven(const RawPlan& plan) {
  const bool is_number = plan.kind == lumo_type_kind_integer || plan.kind == lumo_type_kind_enumerated;
  return is_number && plan.extension != RawExtension::none;
}
// Whether the extension bits of a value are those of its octets: not those of a list, which are the last bits
// of its elements, nor of a string that has one octet in any case.
inline bool has_octet_marks(const RawPlan& plan) {
  const bool is_one =
      plan.kind == lumo_type_kind_octetstring && plan.form == RawLength::given && plan.length == 1;
  const bool is_list = plan.kind == lumo_type_kind_recordof || plan.kind == lumo_type_kind_setof ||
                       plan.kind == lumo_type_kind_array;
  return !is_groups_of_seven(plan) && !is_one && !is_list;
}
// The number that a length field holds: itself, the part with that path of names, or such a one in the chosen
// alternative.
Value length_leaf(Value field, std::span<const std::string> index);
bool holds_for(const RawCondition& condition, Value part);

}  // namespace lumos
