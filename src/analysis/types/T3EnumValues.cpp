// The numbers of the literals of enumerations.
#include <algorithm>
#include <vector>

#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"

int64_t GetEnumValueNumber(T3Tree_Node* type, tIdent name) {
  T3Tree_Node* base = BaseTypeDef(type);
  for (auto* value : Items<T3EnumValue>(base->as<T3EnumType>()->values)) {
    if (value->name != name) continue;
    if (!value->attr().IsEvaluated(T3EnumValue_Attributes::assigned_no_bit)) AssignEnumValues(base);
    return value->attr().assigned_no;
  }
  internal_error_ast("T3Types", 0, "GetEnumValueNumber", type);
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
