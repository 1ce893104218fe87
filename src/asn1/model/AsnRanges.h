// Flat sets of whole numbers that constraints allow: the values of an INTEGER or ENUMERATED, the sizes of a
// string or list.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "asn1/model/AsnModel.h"

namespace asn1 {
struct Segment {
  Wide low, high;
  bool operator==(const Segment&) const = default;
};

/// Sorted segments that do not touch each other.
class ValueSet {
 public:
  ValueSet() = default;
  ValueSet(Wide low, Wide high);
  bool empty() const { return segments_.empty(); }
  const std::vector<Segment>& segments() const { return segments_; }
  Wide low() const { return segments_.front().low; }
  Wide high() const { return segments_.back().high; }
  ValueSet Merge(const ValueSet& other) const;
  ValueSet Intersect(const ValueSet& other) const;
  ValueSet Exclude(const ValueSet& other) const;

 private:
  std::vector<Segment> segments_;
};

/// What a type's constraints, those of the types that it refers to included, leave of its values or sizes.
struct ConstrainedSet {
  ValueSet set;
  bool constrained = false;
  bool extensible = false;  // values beyond the set may come from a later version
};
ConstrainedSet IntegerSetOf(const AsnType& type);
ConstrainedSet SizeSetOf(const AsnType& type);
/// The sizes that one SIZE constraint of the type names.
ConstrainedSet SizeSetOfConstraint(const AsnType& type, const AsnConstraint& constraint);
/// What constraints leave of the characters of a type.
struct Alphabet {
  std::string characters;  // each once, as they are written
  bool known = false;  // they say something of characters
  bool extensible = false;
};
/// The characters that permitted alphabets leave, in ascending order; none where there is no such
/// constraint, or one that is extensible.
std::string PermittedAlphabetOf(const AsnType& type);
/// The characters that one constraint of the type leaves, each once, as they are written; none where it says
/// nothing of them, or is extensible.
std::optional<std::string> constructAllowedCharacters(const AsnType& type, const AsnConstraint& constraint);

/// The endpoints of a type's values or sizes: an unbounded high one is the greatest number, an unbounded low
/// one the least of an INTEGER or ENUMERATED and 0 of a size.
Segment EndpointsOf(const AsnType& type);
}  // namespace asn1
