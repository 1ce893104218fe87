#include "analysis/types/T3Candidates.h"

#include <algorithm>
#include <iterator>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"

bool IsWildcardType(const T3Tree_Node* type) {
  // The generic types are made one after the other: the numbers tell at once what is none of them.
  const uint32_t first = gT3AnyAnyType->number;
  if (type == nullptr || type->number - first > gT3AnyModuleType->number - first) return false;
  return type == gT3WildcardType || type == gT3AnyEnumeratedType || type == gT3AnyModuleType ||
         type == gT3AnyPortType || type == gT3AnyComponentType || type == gT3AnyAddressType ||
         type == gT3AnyUnionType || type == gT3AnyRecordType || type == gT3AnySetType ||
         type == gT3AnyRecordOfType || type == gT3AnySetOfType || type == gT3AnyArrayType ||
         type == gT3AnyAnyType;
}

// Wildcards are fit by others, and so are built-in types by each other.
void T3SharedTypes::Add(T3Tree_Node* local, T3Tree_Node* base) {
  const size_t place = types_.size();
  types_.emplace_back(local, base);
  if (IsWildcardType(base) || base->is<T3ErrorType>() || base->is<T3Address>() || local->is<_T3BuiltinType>())
    fit_by_others_.push_back(place);
  else
    places_.TryEmplace(local->number, place);
}

std::vector<size_t> T3SharedTypes::PlacesWithFields(std::span<const tIdent> names) const {
  for (; fields_.seen < types_.size(); ++fields_.seen) {
    auto* type = types_[fields_.seen].second->try_as<_T3StructuredType>();
    if (type == nullptr) {
      fields_.of_others.push_back(fields_.seen);
      continue;
    }
    fields_.last = fields_.seen;
    for (auto* field : Items<T3FieldType>(type->body)) {
      std::vector<size_t>& places = fields_.places[field->name];
      if (places.empty() || places.back() != fields_.seen) places.push_back(fields_.seen);
    }
  }
  std::vector<size_t> none, places;
  const std::vector<size_t>* fewest = nullptr;
  for (const tIdent name : names) {
    const auto found = fields_.places.find(name);
    const std::vector<size_t>& with_field = found == fields_.places.end() ? none : found->second;
    if (fewest == nullptr || with_field.size() < fewest->size()) fewest = &with_field;
  }
  std::merge(fewest->begin(), fewest->end(), fields_.of_others.begin(), fields_.of_others.end(),
             std::back_inserter(places));
  const auto last = std::lower_bound(places.begin(), places.end(), fields_.last);
  if (last == places.end() || *last != fields_.last) places.insert(last, fields_.last);
  return places;
}

std::vector<size_t> T3SharedTypes::PlacesFor(T3Tree_Node* own) const {
  std::vector<size_t> places = fit_by_others_;
  if (const size_t* place = places_.Find(own->number))
    places.insert(std::lower_bound(places.begin(), places.end(), *place), *place);
  return places;
}
