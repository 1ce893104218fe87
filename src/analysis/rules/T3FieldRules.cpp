// The parts of compound values and templates: what may not stand there, and what is missing.
#include <unordered_set>
#include <vector>

#include "analysis/walk/T3Eval.h"
#include "analysis/walk/T3Surroundings.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/templates/T3TemplateStatus.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"

namespace {
// ---- Inside of templates ----

bool IsModifying(T3TemplateDef* definition) {
  return definition != nullptr && definition->modifies->is<T3TemplateReference>();
}

bool IsCharacters(T3Tree_Node* type) {
  return type->is<T3CharStringType>() || type->is<T3CharacterType>() ||
         type->is<T3UniversalCharStringType>() || type->is<T3UniversalCharacterType>();
}

bool AreOfOneKind(T3Tree_Node* a, T3Tree_Node* b) {
  const auto is_open = [](T3Tree_Node* type) {
    return type->is<T3ErrorType>() || type->is<T3NoType>() || IsWildcardType(type);
  };
  return a == b || is_open(a) || is_open(b) || IsCompatible(a, b) || (IsCharacters(a) && IsCharacters(b));
}

// Where the context leaves the type open, each member could be of another.
void CheckMembers(T3Tree_Node* list) {
  if (!list->is<T3ValueListItem>()) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(list->as<T3ValueListItem>()->value));
  for (auto* at : Items<T3ValueListItem>(list)) {
    T3Tree_Node* value = at->value;
    if (!AreOfOneKind(type, GetAddressBaseType(ExpressionBaseType(value))))
      vexa_filtered_error(ERR_type_valuelist, PositionOf(at));
  }
}

void CheckValueList(T3Tree_Node* node) {
  CheckMembers(node->as<T3ValueList>()->values);
}
void CheckComplement(T3Tree_Node* node) {
  CheckMembers(node->as<T3Complement>()->values);
}

// A field that is left open awaits one that modifies the template, and has no place in the first of a chain.
bool IsUnmodifiedMessage(T3Tree_Node* definition) {
  return T3Is<T3TemplateDecl>(definition->parent) && !IsModifying(definition->as<T3TemplateDef>()) &&
         !T3Is<T3SignatureType>(ExpressionBaseType(definition)) &&
         !T3Is<T3ErrorType>(ExpressionBaseType(definition));
}

void CheckField(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<T3FieldValue>()->value;
  if (value->is<T3NotUsedSymbol>() && InnermostTemplate() != nullptr &&
      IsUnmodifiedMessage(InnermostTemplate()))
    vexa_filtered_error(ERR_not_allowed_for, PositionOf(value), "'-'",
                        "message template declaration without modifies clause");
}

bool IsUndefined(T3Tree_Node* value, vexa_template_mode_t mode) {
  return CollectTemplateStatus(value, false, mode).value == kStatusUndefined;
}

// The parameters of a procedure have values, and those of a call or those of a reply are all there.
void CheckSignatureFields(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (!T3Is<T3SignatureType>(ExpressionBaseType(compound))) return;
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (T3Tree_Node* value = at->value; value->is<T3Omit>())
      vexa_filtered_error(ERR_not_allowed_for, PositionOf(value), "'omit'",
                          "parameters in signature templates");
  if (!IsModifying(InnermostTemplate()) && IsUndefined(compound, vexa_template_call) &&
      IsUndefined(compound, vexa_template_reply))
    vexa_filtered_error(ERR_template_underdefined, compound->position);
}

// ---- What is missing ----

T3Tree_Node* NextField(T3Tree_Node* field) {
  return field->as<T3FieldType>()->next;
}

// The first of the fields from `field` on that must have a value.
T3Tree_Node* NextMandatory(T3Tree_Node* field) {
  while (T3Is<T3FieldType>(field) && field->as<T3FieldType>()->optional) field = NextField(field);
  return field;
}

enum class Presence { All, SomeMissing, OutOfOrder, Failed };

// Goes along fields and values in step, which is enough for values in the order of the fields.
Presence FollowFields(T3Tree_Node* field, T3Tree_Node* at) {
  for (auto* item : Items<T3FieldValue>(at)) {
    T3Tree_Node* member = item->attr().def;
    if (!T3Is<T3FieldType>(member)) return Presence::Failed;
    if (field != member) field = NextMandatory(field);
    if (field != member && member->as<T3FieldType>()->optional) continue;
    if (field != member) return Presence::OutOfOrder;
    field = NextField(field);
  }
  return T3Is<T3FieldType>(NextMandatory(field)) ? Presence::SomeMissing : Presence::All;
}

bool AllNamesPresent(T3Tree_Node* field, T3Tree_Node* at) {
  std::unordered_set<T3Tree_Node*> present;
  for (auto* item : Items<T3FieldValue>(at)) {
    if (!T3Is<T3FieldType>(item->attr().def)) return true;
    present.insert(item->attr().def);
  }
  for (; T3Is<T3FieldType>(field); field = NextField(field))
    if (!field->as<T3FieldType>()->optional && present.count(field) == 0) return false;
  return true;
}

bool CheckCompoundValueIsFullyDefined(T3CompoundValue* compound, _T3StructuredType* type) {
  if (type->is<T3UnionType>()) return compound->value->is<T3FieldValue>();
  switch (FollowFields(type->body, compound->value)) {
    case Presence::SomeMissing:
      return false;
    case Presence::OutOfOrder:
      return AllNamesPresent(type->body, compound->value);
    default:
      return true;
  }
}

bool IsInAsn1Module(T3Tree_Node* node) {
  T3Tree_Node* module = node->place->vexa_my_module;
  return T3Is<T3Module>(module) && T3Is<T3ASN_1>(module->as<T3Module>()->representation);
}

void WarnOfMissingFields(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (node->place == nullptr || HasFailed(compound) || IsModifying(InnermostTemplate())) return;
  auto* type = GetAddressBaseType(ExpressionBaseType(compound))->try_as<_T3StructuredType>();
  if (type == nullptr || CheckCompoundValueIsFullyDefined(compound, type) || IsInAsn1Module(node)) return;
  WarnAt(node, "value may not be defined properly (some fields of the underlying type are not defined?)");
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3FieldValue, CheckField},
    {T3Kind::T3ValueList, CheckValueList},
    {T3Kind::T3Complement, CheckComplement},
    {T3Kind::T3CompoundValue, CheckSignatureFields},
    {T3Kind::T3CompoundValue, WarnOfMissingFields},
    {T3Kind::T3TemplateDef, LeaveTemplate},
};
}  // namespace

std::span<const T3Rule> FieldRules() {
  return kRules;
}
