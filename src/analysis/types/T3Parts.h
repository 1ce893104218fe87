// The parts of compound values. A compound is written as a list, by names or by indices, and may be of
// another type than the one that it is seen as, if the two are compatible: fields of records, parameters and
// elements then go by their places, fields of sets and unions by their names. Whoever needs the value of a
// member asks here, so that all notations mean the same everywhere.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "frontend/T3Tree.h"

/// The fields of a record, set or union, or the parameters of a signature, in declared order.
std::vector<T3Tree_Node*> MembersOf(T3Tree_Node* type);
/// The number of a member from 0, by its name; -1 where there is none.
int64_t PlaceOfMember(T3Tree_Node* type, tIdent name);

/// One value of a compound.
struct T3Part {
  T3FieldValue* item;
  /// The number of its member, or of its element from the first one; nothing where the index is not constant,
  /// the name is that of no member, or the type is `anytype`.
  std::optional<int64_t> place;
};

/// The parts of a compound in source order, with the places that they have in `type`; `type` may be null for
/// the compound's own.
std::vector<T3Part> PartsOf(T3CompoundValue* compound, T3Tree_Node* type = nullptr);
bool AllPlacesAreKnown(const std::vector<T3Part>& parts);
/// The values by their places, null where there is none. What has no place, or one beyond `limit`, is left
/// out.
std::vector<T3FieldValue*> ValuesByPlace(const std::vector<T3Part>& parts, size_t limit);
/// The value at a place of `type`; null where none is written.
T3Tree_Node* ValueAt(T3CompoundValue* compound, T3Tree_Node* type, int64_t place);

/// The part of a compound that a field or an element of it means, the base of the reference having that
/// value; null where none is written, or it is not known which.
T3Tree_Node* SelectedPart(T3CompoundValue* compound, T3Tree_Node* reference);
