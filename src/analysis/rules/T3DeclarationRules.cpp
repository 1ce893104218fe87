// The rules of declarations, formal parameters and types that go beyond names and the types by themselves.
#include <algorithm>
#include <optional>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/constants/T3KnownTexts.h"
#include "analysis/flow/T3ValueClasses.h"
#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/rules/T3ParameterKinds.h"
#include "analysis/types/T3Types.h"
#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3Representation.h"
#include "driver/diagnostics/T3Error.h"

ParameterKinds KindsOf(T3Tree_Node* fpl) {
  ParameterKinds kinds;
  for (auto* at : Items<_T3FormalPar>(fpl)) {
    auto* par = at->try_as<_T3TypedFormal>();
    if (par == nullptr) continue;
    const bool port = IsPortOrPortArray(par);
    const bool timer = IsTimer(par) || IsTimerArray(par);
    kinds.port |= port;
    kinds.timer |= timer;
    kinds.out |= !port && !timer && par->pass != t3_par_pass_t::In;
  }
  return kinds;
}

void RefuseParameters(T3Tree_Node* node, const char* what, bool refused, const char* kind) {
  if (refused) vexa_filtered_error(ERR_wrong_parameter_kind, PositionOf(node), what, kind);
}

namespace {
bool IsPort(T3Tree_Node* type) {
  return T3Is<T3PortType>(BaseTypeDef(type));
}

// ---- Parameters ----

void CheckTestcaseParameters(T3Tree_Node* node) {
  const ParameterKinds kinds = KindsOf(node->as<T3Testcase>()->fpl);
  RefuseParameters(node, "testcase", kinds.port, "port");
  RefuseParameters(node, "testcase", kinds.timer, "timer");
}

void CheckTemplateParameters(T3Tree_Node* node) {
  const ParameterKinds kinds = KindsOf(node->as<T3TemplateDecl>()->fpl);
  RefuseParameters(node, "template", kinds.port, "port");
  RefuseParameters(node, "template", kinds.timer, "timer");
  RefuseParameters(node, "template", kinds.out, "out");
}

// A parameter of a modified template, and the one that takes its place.
bool ContinuesParameter(T3Tree_Node* par, T3Tree_Node* base) {
  if (!T3Is<_T3TypedFormal>(par) || par->kind != base->kind || !base->is<_T3TypedFormal>()) return false;
  auto* own = par->as<_T3TypedFormal>();
  auto* old = base->as<_T3TypedFormal>();
  if (own->name != old->name || own->pass != old->pass) return false;
  T3Tree_Node* type = BaseTypeDef(own);
  T3Tree_Node* old_type = BaseTypeDef(old);
  return type->is<T3ErrorType>() || old_type->is<T3ErrorType>() ||
         CheckStrictTypeCompatibility(type, old_type);
}

// A template has the parameters of the one that it modifies, unless they are given; it may have more behind
// them.
void CheckModifiedParameters(T3Tree_Node* node) {
  auto* decl = node->as<T3TemplateDecl>();
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  auto* modifies = definition == nullptr ? nullptr : definition->modifies->try_as<T3TemplateReference>();
  T3TemplateDecl* modified = modifies == nullptr ? nullptr : TemplateNamed(modifies->reference);
  if (modified == nullptr) return;
  T3Tree_Node* par = decl->fpl;
  for (auto* base : Items<_T3FormalPar>(modified->fpl)) {
    if (!ContinuesParameter(par, base))
      return vexa_filtered_error(ERR_template_modified_parlist, decl->position);
    par = par->as<_T3FormalPar>()->next;
  }
}

// A template stands for values.
void CheckTemplateParameter(T3Tree_Node* node) {
  if (IsPort(node)) vexa_filtered_error(ERR_not_allowed_here, PositionOf(node), "port type");
}

void CheckFormalParameter(T3Tree_Node* node) {
  auto* par = node->as<T3FormalPar>();
  if (IsSignatureType(par)) vexa_filtered_error(ERR_type_signature_not_allowed, PositionOf(par));
  if (IsPort(par) && par->pass != t3_par_pass_t::InOut)
    vexa_filtered_error(ERR_port_passed_not_by_ref, PositionOf(par));
}

// ---- Declarations ----

void CheckInstance(T3Tree_Node* node) {
  auto* decl = node->as<_T3InstanceDecl>();
  const bool in_component = decl->place != nullptr && T3Is<T3ComponentType>(decl->place->vexa_owner);
  if (!in_component && IsPortOrPortArray(decl))
    vexa_filtered_error(ERR_not_allowed_here, PositionOf(decl), "port type");
  if (IsSignatureType(decl)) vexa_filtered_error(ERR_type_signature_not_allowed, PositionOf(decl));
}

void CheckPortDecl(T3Tree_Node* node) {
  auto* decl = node->as<T3PortDecl>();
  T3Tree_Node* type = BaseTypeDef(decl);
  if (T3Is<T3ArrayType>(type)) {
    type = BaseTypeDef(ElementType(type));
    if (T3Is<T3ArrayType>(type)) return vexa_filtered_error(ERR_multidimensional_port_arr, PositionOf(decl));
  }
  if (!T3Is<T3ErrorType>(type) && !T3Is<T3PortType>(type))
    vexa_filtered_error(ERR_type_not_a_port, PositionOf(decl), decl->name);
}

void CheckRunsOn(T3Tree_Node* node) {
  T3Tree_Node* runs_on = node->as<_T3FunctionDecl>()->runs_on;
  T3Tree_Node* type = BaseTypeDef(runs_on);
  T3Tree_Node* named = runs_on->is<T3TypeReference>() ? runs_on->as<T3TypeReference>()->reference : runs_on;
  if (named->is<T3MTC>() || named->is<T3System>()) vexa_filtered_error(ERR_illegal_runs_on, PositionOf(node));
  if (!T3Is<T3ErrorType>(type) && !T3Is<T3NoType>(type) && !T3Is<T3ComponentType>(type))
    vexa_filtered_error(ERR_illegal_runs_on, PositionOf(node));
}

void CheckSystem(T3Tree_Node* node) {
  T3Tree_Node* type = BaseTypeDef(node->as<T3Testcase>()->system);
  if (!T3Is<T3ErrorType>(type) && !T3Is<T3NoType>(type) && !T3Is<T3ComponentType>(type))
    vexa_filtered_error(ERR_illegal_argument, PositionOf(node), "system", "a component type");
}

// ---- Timers ----

void CheckDuration(T3Tree_Node* decl, T3Tree_Node* value) {
  const auto duration = ConstFloatValue(value);
  if (!duration) return;
  if (*duration < 0.0 && decl->is<T3VarDecl>()) vexa_filtered_error(ERR_negative_duration, PositionOf(decl));
  if (*duration > kExcessiveDuration)
    WarnAt(decl, "declaring timer with excessive duration (>= 10,000 seconds)");
}

// True for a list of values, one for each element of an array, with such lists for arrays of arrays.
bool FitsArray(T3Tree_Node* value, T3Tree_Node* type) {
  auto* compound = value->try_as<T3CompoundValue>();
  if (compound == nullptr) return false;
  T3Tree_Node* element = BaseTypeDef(ElementType(type));
  const Items<T3FieldValue> items(compound->value);
  for (auto* at : items)
    if (element->is<T3ArrayType>() && !FitsArray(at->value, element)) return false;
  const auto bounds = KnownBounds(type);
  return !bounds || items.size() == bounds->Size();
}

T3Tree_Node* InitialValue(T3Tree_Node* value) {
  auto* definition = value == nullptr ? nullptr : value->try_as<T3TemplateDef>();
  return definition == nullptr ? value : definition->constraint;
}

void CheckTimerVariable(T3Tree_Node* node) {
  auto* decl = node->as<T3VarDecl>();
  T3Tree_Node* value = InitialValue(decl->value);
  if (!T3Is<_T3Expression>(value) || value->is<T3NoExpression>()) return;
  if (IsTimer(decl)) CheckDuration(decl, value);
  if (IsTimerArray(decl) && !ExpressionBaseType(value)->is<T3ErrorType>() &&
      !FitsArray(value, BaseTypeDef(decl)))
    vexa_filtered_error(ERR_timer_array_init, PositionOf(decl));
}

void CheckTimerParameter(T3Tree_Node* node) {
  auto* par = node->as<T3FormalPar>();
  T3Tree_Node* value = InitialValue(par->default_value);
  if (IsTimer(par) && T3Is<_T3Expression>(value)) CheckDuration(par, value);
}

// ---- Restricted variables ----

void CheckRestriction(T3Tree_Node* node) {
  auto* decl = node->as<T3VarDecl>();
  T3Tree_Node* value = InitialValue(decl->value);
  if (!T3Is<_T3Expression>(value)) return;
  const char* any = value->is<T3AnyValue>() ? "'?'" : value->is<T3AnyOrOmit>() ? "'*'" : nullptr;
  const auto refuse = [decl](const char* what, const char* where) {
    vexa_filtered_error(ERR_not_allowed_for, PositionOf(decl), what, where);
  };
  if (decl->templ_restriction == t3_template_restriction_t::Present && value->is<T3Omit>())
    refuse("'omit'", "(present)-restricted variable templates");
  if (decl->templ_restriction == t3_template_restriction_t::Value && any != nullptr)
    refuse(any, "(value)-restricted variable templates");
  if (decl->templ_restriction == t3_template_restriction_t::Omit && any != nullptr)
    refuse(any, "(omit)-restricted variable templates");
}

// ---- Types ----

void RefusePort(T3Tree_Node* element) {
  if (IsPort(element)) vexa_filtered_error(ERR_not_allowed_here, PositionOf(element), "port type");
}

void RefuseSignature(T3Tree_Node* element) {
  if (IsSignatureType(element)) vexa_filtered_error(ERR_type_signature_not_allowed, PositionOf(element));
}

// Neither a part of a value nor a result is a port or a procedure.
void RequireValues(T3Tree_Node* element) {
  RefusePort(element);
  RefuseSignature(element);
}

// Ports stand in components and their arrays only, procedures in the lists of ports.
void CheckPartsOfType(T3Tree_Node* node) {
  T3Tree_Node* type = node->as<T3TypeDecl>()->type;
  if (type->is<T3RecordOfType>() || type->is<T3SetOfType>())
    RequireValues(type->as<_T3HomogeneousType>()->type);
  if (type->is<T3ArrayType>()) RefuseSignature(type->as<_T3HomogeneousType>()->type);
  if (auto* subtype = type->try_as<T3SubType>()) RefusePort(subtype->parent);
  if (auto* structured = type->try_as<_T3StructuredType>())
    for (auto* at : Items<T3FieldType>(structured->body)) RequireValues(at->type);
}

void CheckResult(T3Tree_Node* node) {
  RequireValues(node->is<T3Function>() ? node->as<T3Function>()->return_type
                                       : node->as<T3ExtFunction>()->return_type);
}

template <class Value>
bool Reversed(std::optional<Value> low, std::optional<Value> high) {
  return low && high && *high < *low;
}

void CheckArraySize(T3Tree_Node* node) {
  auto* array = node->as<T3ArrayType>();
  const auto bounds = KnownBounds(array);
  if (bounds && bounds->high < bounds->low) return vexa_filtered_error(ERR_arr_bounds, array->position);
  if (bounds && bounds->low < 0) vexa_filtered_error(ERR_negative_bound, array->position);
}

void CheckSignature(T3Tree_Node* node) {
  auto* signature = node->as<T3SignatureType>();
  for (auto* at : Items<T3TypeItem>(signature->exceptions))
    if (IsSignatureType(at->type))
      vexa_filtered_error(ERR_exception_type, PositionOf(at->type));
    else
      RefusePort(at->type);
  RequireValues(signature->return_type);
  const ParameterKinds kinds = KindsOf(signature->fpl);
  if (signature->not_blocking && (kinds.out || kinds.timer || kinds.port))
    vexa_filtered_error(ERR_noblock_param, signature->position);
}

void CheckSubType(T3Tree_Node* node) {
  auto* subtype = node->as<T3SubType>();
  if (IsSignatureType(subtype->parent))
    return vexa_filtered_error(ERR_type_signature_in_subtype, subtype->position);
  auto* list = subtype->constraint->try_as<T3ValueList>();
  T3Tree_Node* base = BaseTypeDef(subtype);
  if (list == nullptr || (!base->is<T3CharStringType>() && !base->is<T3UniversalCharStringType>())) return;
  bool ranges = false;
  bool values = false;
  for (auto* at : Items<T3ValueListItem>(list->values))
    (at->value->is<T3ValueRange>() ? ranges : values) = true;
  if (ranges && values) vexa_filtered_error(ERR_mixed_subtypes, subtype->position);
}

// Codecs are made for the types of ASN.1 that go over ports.
void NoteEntryType(T3Tree_Node* type) {
  auto* reference = type->try_as<T3TypeReference>();
  if (reference == nullptr) return;
  T3Tree_Node* decl = BehindImport(Def(reference->reference));
  if (!T3Is<T3TypeDecl>(decl) || decl->place == nullptr) return;
  if (T3ReprToLanguage(decl->place->vexa_my_module) == language_asn1)
    addMESKEntryType(gIdents.GetCStr(decl->as<T3TypeDecl>()->name));
}

void CheckPortLists(T3Tree_Node* node) {
  auto* port = node->as<T3PortType>();
  bool messages = false;
  bool signatures = false;
  for (T3Tree_Node* list : {port->in_list, port->out_list})
    for (auto* at : Items<T3TypeItem>(list)) {
      T3Tree_Node* base = BaseTypeDef(at->type);
      if (base->is<T3ErrorType>() || base->is<T3NoType>() || at->type->is<T3AllTypes>()) continue;
      NoteEntryType(at->type);
      RefusePort(at->type);
      (base->is<T3SignatureType>() ? signatures : messages) = true;
    }
  if (port->port_kind == t3_port_kind_t::Procedure && messages)
    vexa_filtered_error(ERR_message_on_proc_port, port->position);
  if (port->port_kind == t3_port_kind_t::Message && signatures)
    vexa_filtered_error(ERR_signature_on_msg_port, port->position);
}

// ---- Ranges ----

bool HasRanges(T3Tree_Node* base) {
  return base->is<T3Integer>() || base->is<T3Float>() || base->is<T3CharStringType>() ||
         base->is<T3UniversalCharStringType>() || base->is<T3CharacterType>() ||
         base->is<T3UniversalCharacterType>();
}

void CheckRangesOfSubType(T3Tree_Node* node) {
  auto* subtype = node->as<T3SubType>();
  auto* list = subtype->constraint->try_as<T3ValueList>();
  T3Tree_Node* base = BaseTypeDef(subtype);
  if (list == nullptr || base->is<T3ErrorType>() || HasRanges(GetAddressBaseType(base))) return;
  for (auto* at : Items<T3ValueListItem>(list->values))
    if (auto* range = at->value->try_as<T3ValueRange>())
      vexa_filtered_error(ERR_type_range_subtype, range->position);
}

bool IsInSubType(T3Tree_Node* range) {
  T3Tree_Node* at = range->parent;
  while (T3Is<T3ValueListItem>(at) || T3Is<T3ValueList>(at)) at = at->parent;
  return T3Is<T3SubType>(at);
}

// A range goes from one character to another; no text lies between two others.
bool HasSeveralCharacters(T3Tree_Node* bound) {
  const auto text = KnownText(bound);
  return text && text->kind == T3Kind::T3CharStringLiteral && LengthOfText(*text) != 1;
}

void CheckValueRange(T3Tree_Node* node) {
  auto* range = node->as<T3ValueRange>();
  if (HasFailed(range->lb) || HasFailed(range->ub)) return;
  // In a template a bound may be a value that the run gives, but no template.
  if ((IsTemplateReference(range->lb) || IsTemplateReference(range->ub)) && !IsInSubType(range))
    return vexa_filtered_error(ERR_const, range->position);
  if (Reversed(KnownInteger(range->lb), KnownInteger(range->ub)) ||
      Reversed(KnownFloat(range->lb), KnownFloat(range->ub)) ||
      Reversed(ConstCharValue(range->lb), ConstCharValue(range->ub)))
    vexa_filtered_error(ERR_arr_bounds, range->position);
  if (HasSeveralCharacters(range->lb) || HasSeveralCharacters(range->ub))
    return vexa_filtered_error(ERR_type_range_subtype, range->position);
  // Those of subtypes are told at the subtype.
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(range));
  if (!IsWildcardType(type) && !HasRanges(type) && !IsInSubType(range))
    vexa_filtered_error(ERR_type_range_subtype, range->position);
}

// The bounds of an array are told at the array.
void CheckRangeBound(T3Tree_Node* node) {
  auto* bound = node->as<T3RangeBound>();
  if (T3Is<T3ArrayType>(node->parent)) return;
  const auto low = KnownInteger(bound->lb);
  if (low && *low < 0) return vexa_filtered_error(ERR_negative_bound, bound->position);
  if (Reversed(low, KnownInteger(bound->ub))) vexa_filtered_error(ERR_arr_bounds, bound->position);
}

void CheckSingleBound(T3Tree_Node* node) {
  auto* bound = node->as<T3SingleBound>();
  const auto length = T3Is<T3ArrayType>(node->parent) ? std::nullopt : KnownInteger(bound->ub);
  if (length && *length < 0) vexa_filtered_error(ERR_negative_bound, bound->position);
}

void CheckLengthRange(T3Tree_Node* node) {
  auto* range = node->as<T3LengthRange>();
  const auto low = KnownInteger(range->lb);
  if (low && *low < 0) return vexa_filtered_error(ERR_negative_bound, range->position);
  if (range->ub->is<T3NoExpression>()) return;
  if (Reversed(low, KnownInteger(range->ub))) vexa_filtered_error(ERR_arr_bounds, range->position);
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3InstanceValueDecl, CheckInstance},
    {T3Kind::T3ExtConstDecl, CheckInstance},
    {T3Kind::T3VarDecl, CheckTimerVariable},
    {T3Kind::T3VarDecl, CheckRestriction},
    {T3Kind::T3PortDecl, CheckPortDecl},
    {T3Kind::_T3FunctionDecl, CheckRunsOn},
    {T3Kind::T3Testcase, CheckSystem},
    {T3Kind::T3Testcase, CheckTestcaseParameters},
    {T3Kind::T3TemplateDecl, CheckTemplateParameters},
    {T3Kind::T3TemplateDecl, CheckModifiedParameters},
    {T3Kind::T3FormalPar, CheckFormalParameter},
    {T3Kind::T3FormalTemplatePar, CheckTemplateParameter},
    {T3Kind::T3FormalPar, CheckTimerParameter},
    {T3Kind::T3TypeDecl, CheckPartsOfType},
    {T3Kind::T3Function, CheckResult},
    {T3Kind::T3ExtFunction, CheckResult},
    {T3Kind::T3ArrayType, CheckArraySize},
    {T3Kind::T3SignatureType, CheckSignature},
    {T3Kind::T3SubType, CheckSubType},
    {T3Kind::T3SubType, CheckRangesOfSubType},
    {T3Kind::T3PortType, CheckPortLists},
    {T3Kind::T3ValueRange, CheckValueRange},
    {T3Kind::T3RangeBound, CheckRangeBound},
    {T3Kind::T3SingleBound, CheckSingleBound},
    {T3Kind::T3LengthRange, CheckLengthRange},
};
}  // namespace

std::span<const T3Rule> DeclarationRules() {
  return kRules;
}
