// The numbers of the literals of enumerations.
#include <algorithm>
#include <optional>
#include <vector>

#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "support/ModuleCaches.h"
#include "support/NumberMap.h"

namespace {
// The first literal of each name, by the numbers of the enumeration and of the name; those of an enumeration
// come in when it is asked for the first time, and with them an entry for no name.
NumberMap<T3EnumValue*>& g_literals = *new NumberMap<T3EnumValue*>;
const ModuleCache literals([] { g_literals.clear(); }, ModuleCache::Holds::ForRun);

uint64_t KeyOf(const T3EnumType* type, tIdent name) {
  return uint64_t{type->number} << 32 | static_cast<uint32_t>(name);
}

T3EnumValue* LiteralOf(T3EnumType* type, tIdent name) {
  if (g_literals.TryEmplace(KeyOf(type, NoIdent)).second)
    for (auto* value : Items<T3EnumValue>(type->values))
      g_literals.TryEmplace(KeyOf(type, value->name), value);
  T3EnumValue* const* found = g_literals.Find(KeyOf(type, name));
  return found == nullptr ? nullptr : *found;
}
}  // namespace

std::optional<int64_t> EnumValueNumber(T3EnumType* type, tIdent name) {
  T3EnumValue* literal = LiteralOf(type, name);
  if (literal == nullptr) return std::nullopt;
  if (!literal->attr().IsEvaluated(T3EnumValue_Attributes::assigned_no_bit)) AssignEnumValues(type);
  return literal->attr().assigned_no;
}

int64_t GetEnumValueNumber(T3Tree_Node* type, tIdent name) {
  const auto number = EnumValueNumber(BaseTypeDef(type)->as<T3EnumType>(), name);
  if (!number) internal_error_ast("T3Types", 0, "GetEnumValueNumber", type);
  return *number;
}

void AssignEnumValues(T3Tree_Node* type) {
  auto* enumeration = type->as<T3EnumType>();
  auto* first = enumeration->values->try_as<T3EnumValue>();
  if (first == nullptr || first->attr().IsEvaluated(T3EnumValue_Attributes::assigned_no_bit)) return;
  std::vector<int64_t> given;
  for (auto* at : Items<T3EnumValue>(first))
    if (const auto value = ConstIntValue(at->value)) given.push_back(*value);
  std::sort(given.begin(), given.end());
  if (std::adjacent_find(given.begin(), given.end()) != given.end())
    vexa_filtered_error(ERR_enum_duplicate, enumeration->position);
  int64_t counter = 0;
  for (auto* at : Items<T3EnumValue>(first)) {
    auto& attributes = at->attr();
    attributes.SetEvaluated(T3EnumValue_Attributes::assigned_no_bit);
    if (const auto value = ConstIntValue(at->value)) {
      attributes.assigned_no = *value;
      continue;
    }
    while (std::binary_search(given.begin(), given.end(), counter)) ++counter;
    attributes.assigned_no = counter++;
  }
}
