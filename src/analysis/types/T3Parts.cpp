#include "analysis/types/T3Parts.h"

#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/types/T3Types.h"

namespace {
// What the type of a compound numbers its parts by.
class Places {
 public:
  Places(T3Tree_Node* own, T3Tree_Node* seen_as)
      : own_(HasMembers(own) ? own : seen_as), seen_as_(seen_as), first_(FirstIndex(own)) {}

  std::optional<int64_t> Of(T3FieldValue* item, int64_t position) const {
    if (auto* index = item->field->try_as<T3FieldIndex>()) return OfIndex(KnownInteger(index->index));
    auto* name = item->field->try_as<T3FieldName>();
    return name == nullptr ? OfPosition(position) : OfName(name->name);
  }

 private:
  static bool HasMembers(T3Tree_Node* type) {
    return T3Is<_T3StructuredType>(type) || T3Is<T3SignatureType>(type);
  }
  static int64_t FirstIndex(T3Tree_Node* type) { return type->is<T3ArrayType>() ? LowerBoundValue(type) : 0; }

  // Fields of a set or a union of another type are those of the same name.
  bool GoesByName() const {
    return own_ != seen_as_ && (seen_as_->is<T3SetType>() || seen_as_->is<T3UnionType>());
  }

  std::optional<int64_t> OfIndex(std::optional<int64_t> index) const {
    int64_t place = 0;
    if (!index || __builtin_sub_overflow(*index, first_, &place) || place < 0) return std::nullopt;
    return place;
  }
  std::optional<int64_t> OfName(tIdent name) const {
    if (!HasMembers(own_)) return std::nullopt;
    const int64_t place = PlaceOfMember(GoesByName() ? seen_as_ : own_, name);
    return place < 0 ? std::nullopt : std::optional(place);
  }
  std::optional<int64_t> OfPosition(int64_t position) const {
    if (!GoesByName() || !own_->is<T3SetType>()) return position;
    T3Tree_Node* member = FindIndex(own_, position);
    return member->is<T3FieldType>() ? OfName(member->as<T3FieldType>()->name) : std::nullopt;
  }

  T3Tree_Node* own_;
  T3Tree_Node* seen_as_;
  int64_t first_;
};

// What the walk has not come by is of the type that it is seen as: faults in it are due there.
bool IsInferred(T3CompoundValue* compound) {
  return compound->attributes != nullptr && compound->attr().expression_base_type != nullptr;
}

// The number of the part that a reference selects from a value of its base's type.
std::optional<int64_t> SelectedPlace(T3Tree_Node* reference, T3Tree_Node* type) {
  if (auto* field = reference->try_as<T3Qualifier>()) {
    const bool has_members = T3Is<_T3StructuredType>(type) || T3Is<T3SignatureType>(type);
    const int64_t place = has_members ? PlaceOfMember(type, field->id) : -1;
    return place < 0 ? std::nullopt : std::optional(place);
  }
  auto* element = reference->try_as<T3Subscription>();
  const auto index = element == nullptr ? std::nullopt : KnownInteger(element->index);
  if (!index || !type->is<_T3HomogeneousType>()) return std::nullopt;
  int64_t place = 0;
  const int64_t first = type->is<T3ArrayType>() ? LowerBoundValue(type) : 0;
  return __builtin_sub_overflow(*index, first, &place) ? std::nullopt : std::optional(place);
}
}  // namespace

std::vector<T3Tree_Node*> MembersOf(T3Tree_Node* type) {
  std::vector<T3Tree_Node*> members;
  if (auto* structured = type->try_as<_T3StructuredType>())
    for (auto* at : Items<T3FieldType>(structured->body)) members.push_back(at);
  if (auto* signature = type->try_as<T3SignatureType>())
    for (auto* at : Items<_T3FormalPar>(signature->fpl)) members.push_back(at);
  return members;
}

// Parameters are counted from 1 there.
int64_t PlaceOfMember(T3Tree_Node* type, tIdent name) {
  const int64_t index = GetAlternativeIndex(type, name, false);
  return type->is<T3SignatureType>() && index > 0 ? index - 1 : index;
}

std::vector<T3Part> PartsOf(T3CompoundValue* compound, T3Tree_Node* type) {
  T3Tree_Node* own = type == nullptr || IsInferred(compound) ? ExpressionBaseType(compound) : type;
  own = GetAddressBaseType(own);
  const Places places(own, type == nullptr ? own : type);
  std::vector<T3Part> parts;
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    auto* item = at;
    parts.push_back({item, places.Of(item, static_cast<int64_t>(parts.size()))});
  }
  return parts;
}

bool AllPlacesAreKnown(const std::vector<T3Part>& parts) {
  for (const T3Part& part : parts)
    if (!part.place) return false;
  return true;
}

std::vector<T3FieldValue*> ValuesByPlace(const std::vector<T3Part>& parts, size_t limit) {
  std::vector<T3FieldValue*> values;
  for (const T3Part& part : parts) {
    if (!part.place || static_cast<uint64_t>(*part.place) >= limit) continue;
    const auto place = static_cast<size_t>(*part.place);
    if (place >= values.size()) values.resize(place + 1, nullptr);
    values[place] = part.item;
  }
  return values;
}

T3Tree_Node* ValueAt(T3CompoundValue* compound, T3Tree_Node* type, int64_t place) {
  for (const T3Part& part : PartsOf(compound, type))
    if (part.place == place) return part.item->value;
  return nullptr;
}

T3Tree_Node* SelectedPart(T3CompoundValue* compound, T3Tree_Node* reference) {
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(reference->as<_T3Qualification>()->base));
  if (T3Is<T3AnyType>(type)) {
    auto* item = compound->value->try_as<T3FieldValue>();
    const bool chosen = item != nullptr && item->attr().def != nullptr &&
                        BehindImport(item->attr().def) == BehindImport(Def(reference));
    return chosen ? item->value : nullptr;
  }
  const auto place = SelectedPlace(reference, type);
  return place ? ValueAt(compound, type, *place) : nullptr;
}
