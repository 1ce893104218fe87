// What is modified and known at run time only: a parameter, a variable, what a function gives.
#include <optional>

#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3Lists.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/templates/CGTemplateParts.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/CGTypeAccess.h"

namespace cgtemplate {
namespace {
bool HasPermutation(T3CompoundValue* compound) {
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (at->permutation_kind != t3_permutation_kind_t::No) return true;
  return false;
}

// Whether parts of a value are written over what is there; anything else takes its place.
bool IsWrittenOver(T3Tree_Node* value, T3Tree_Node* type) {
  auto* compound = value->try_as<T3CompoundValue>();
  return compound != nullptr && compound->value->is<T3FieldValue>() && !HasPermutation(compound) &&
         (IsRecordOrSetType(type) || type->is<T3UnionType>() || type->is<_T3HomogeneousType>());
}

void WriteOver(std::string_view target, T3CompoundValue* changes, CFunction& function);

void WritePart(std::string_view target, T3Tree_Node* value, CFunction& function) {
  if (IsWrittenOver(value, cg::TypeOf(value)))
    return WriteOver(target, value->as<T3CompoundValue>(), function);
  CGAssign(target, value, false, function, CGTemplateMode());
}

// The place of a part, which is made where it is missing.
std::string PartToWrite(std::string_view target, T3FieldValue* item, T3Tree_Node* type, size_t position,
                        CFunction& function) {
  auto* name = item->field->try_as<T3FieldName>();
  auto* index = item->field->try_as<T3FieldIndex>();
  const auto bounds = type->is<T3ArrayType>() ? KnownBounds(type) : std::nullopt;
  const int64_t first = bounds ? bounds->low : 0;
  const std::string place = name != nullptr    ? std::to_string(GetAlternativeIndex(type, name->name, true))
                            : index != nullptr ? cg::CastToUnsignedLong(cg::InC(index->index, function))
                                               : std::to_string(first + static_cast<int64_t>(position));
  return cg::Call(
      type->is<T3UnionType>() ? LUMO_VALUE_TRY_SET_UNION_ALTERNATIVE_BY_INDEX : LUMO_VALUE_FIELD_BY_INDEX_LHS,
      {target, place, VEXA_CONTEXT});
}

void WriteOver(std::string_view target, T3CompoundValue* changes, CFunction& function) {
  T3Tree_Node* type = cg::TypeOf(changes);
  for (const auto [position, item] : Numbered<T3FieldValue>(changes->value)) {
    if (item->value->is<T3NotUsedSymbol>()) continue;
    const std::string part = cg::Temporary(LUMO_VALUE_T, function);
    function.assign(part, PartToWrite(target, item, type, position, function));
    WritePart(part, item->value, function);
  }
}
}  // namespace

// A copy of what is modified, with the changes written over it.
std::string ModifiedAtRunTime(T3TemplateDef* definition, CFunction& function) {
  const std::string_view base =
      cg::InRTS(definition->modifies->as<T3TemplateReference>()->reference, CGTemplateMode(), function);
  std::string location = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(location, LUMO_TYPE_INSTANTIATE_DYNAMIC_TEMPLATE,
                         {VEXATypeRef(TypeOfTemplate(definition)), LUMO_TEMP_ALLOC_C, "0", VEXA_CONTEXT});
  function.call(LUMO_VALUE_ASSIGN, {location, base, VEXA_CONTEXT});
  WritePart(location, definition->constraint, function);
  return location;
}
}  // namespace cgtemplate
