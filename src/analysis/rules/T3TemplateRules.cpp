// The rules of template definitions, and of what may be sent.
#include <utility>
#include <vector>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/flow/T3AltStatus.h"
#include "analysis/constants/T3ConstantValues.h"
#include "analysis/types/T3Constants.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/templates/T3TemplateStatus.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"
#include "support/ModuleCaches.h"

namespace {
// ---- Definitions ----

void CheckKindOfTemplate(T3Tree_Node* node) {
  auto* definition = node->as<T3TemplateDef>();
  T3Tree_Node* type = ExpressionBaseType(definition);
  if (T3Is<T3PortType>(type) && !T3Is<T3NoType>(definition->parent))
    vexa_filtered_error(ERR_not_allowed_here, PositionOf(node), "port type");
  if (!T3Is<T3SignatureType>(type)) return;
  const char* what = definition->constraint->is<T3Omit>()        ? "'omit'"
                     : definition->constraint->is<T3AnyOrOmit>() ? "'*'"
                                                                 : nullptr;
  if (what != nullptr) vexa_filtered_error(ERR_not_allowed_in_template, PositionOf(node), what, "signature");
}

bool IsIfPresent(T3Tree_Node* constraint) {
  return constraint->is<T3IfPresentMatch>() || constraint->is<T3IfPresentIfLengthMatch>();
}

// A field that may be left out, of something whose value is known only when the suite runs.
bool CanBeOmitted(T3Tree_Node* constraint) {
  return constraint->is<T3Qualifier>() && !HasFailed(constraint) && IsFieldOptional(Def(constraint)) &&
         !IsConstant(constraint) && IsRvalue(constraint);
}

bool IsMatching(T3Tree_Node* value) {
  return value->is<_T3MatchingExpression>() || value->is<ExtraMatchingExpressions>();
}

// What a field of a template that stands for one value, or for one or none, may not be; null for others. A
// list has no other way to leave a field out than to say so in its place.
const char* RefusedField(T3FieldValue* field, bool may_be_omitted) {
  const auto permuted = field->permutation_kind;
  if (permuted == t3_permutation_kind_t::Head || permuted == t3_permutation_kind_t::HeadTail) return "value";
  T3Tree_Node* value = field->value;
  if (value->is<T3Omit>()) return may_be_omitted || field->field->is<T3NoFieldSpec>() ? nullptr : "'omit'";
  if (value->is<T3AnyValue>()) return "'?'";
  if (value->is<T3AnyOrOmit>()) return "'*'";
  return IsMatching(value) ? "value" : nullptr;
}

void RefuseFields(T3CompoundValue* compound, bool may_be_omitted, const char* where) {
  std::vector<T3Tree_Node*> open{compound->value};
  while (!open.empty()) {
    auto* at = open.back()->try_as<T3FieldValue>();
    open.pop_back();
    if (at == nullptr) continue;
    open.push_back(at->next);
    if (const char* what = RefusedField(at, may_be_omitted))
      vexa_filtered_error(ERR_not_allowed_for, PositionOf(at), what, where);
    else if (auto* inner = at->value->try_as<T3CompoundValue>())
      open.push_back(inner->value);
  }
}

void CheckRestriction(T3Tree_Node* node) {
  auto* definition = node->as<T3TemplateDef>();
  T3Tree_Node* constraint = definition->constraint;
  const bool matching = IsMatching(constraint);
  const auto refuse = [node](const char* what, const char* where) {
    vexa_filtered_error(ERR_not_allowed_for, PositionOf(node), what, where);
  };
  const char* where = nullptr;
  switch (definition->restriction) {
    case t3_template_restriction_t::Present:
      if (IsIfPresent(constraint)) refuse("'IfPresent' indicator", "(present)-restricted templates");
      if (constraint->is<T3Omit>() || CanBeOmitted(constraint))
        refuse("value", "(present)-restricted templates");
      return;
    case t3_template_restriction_t::Value:
      where = "(value)-restricted templates";
      if (constraint->is<T3Omit>() || matching) refuse("value", where);
      break;
    case t3_template_restriction_t::Omit:
      where = "(omit)-restricted templates";
      if (matching) refuse("value", where);
      break;
    default:
      return;
  }
  const bool may_be_omitted = definition->restriction == t3_template_restriction_t::Omit;
  if (auto* compound = constraint->try_as<T3CompoundValue>()) RefuseFields(compound, may_be_omitted, where);
}

void WarnOfEffects(T3Tree_Node* node) {
  switch (AltStatus(node->as<T3TemplateDecl>()->definition)) {
    case kHasSideEffects:
      return WarnAt(node,
                    "template causes side effects. Using this template in receiving operation will disable "
                    "run-time deadlock detection.");
    case kChangesSnapshot:
      return WarnAt(
          node,
          "template may not be used in receiving operations because its evaluation may alter a snapshot");
    default:
      return;
  }
}

// ---- Modifications ----

// The definitions that modify others, in source order.
std::vector<T3Tree_Node*>& g_modifying = *new std::vector<T3Tree_Node*>;

void NoteModifying(T3Tree_Node* node) {
  if (node->as<T3TemplateDef>()->modifies->is<T3TemplateReference>()) g_modifying.push_back(node);
}

// ---- Uses ----

// A use of a template, and what it must not be.
struct Use {
  T3Tree_Node* node;
  T3Tree_Node* value;
  vexa_template_mode_t mode;
  int refused;
  const _vexa_error_message_t* message;
};
// The uses that are looked at when templates that modify others are merged, and all that is sent, with no
// message: what is given for parameters is known only then.
std::vector<Use>& g_uses = *new std::vector<Use>;

T3Tree_Node* ValueOf(T3Tree_Node* statement) {
  return statement->as<_T3TemplatePortStmt>()->template_value;
}

bool IsKnown(T3Tree_Node* value) {
  return (value->is<T3TemplateDef>() || IsGiven(value)) && !ExpressionBaseType(value)->is<T3ErrorType>();
}

constexpr const char* kMayMatch = "template may contain matching expressions (will be checked at run-time)";
constexpr const char* kMayBeUndefined =
    "template may not be sufficiently defined (will be checked at run-time)";

void Check(const Use& use) {
  if (!IsKnown(use.value)) return;
  const T3TemplateStatus status = CollectTemplateStatus(use.value, false, use.mode);
  if (status.value >= use.refused)
    vexa_filtered_error(*use.message, PositionOf(use.node));
  else if (status.awaits_merge)
    g_uses.push_back(use);
  else if (status.is_cut_off)
    WarnAt(use.node, use.refused == kStatusMatching ? kMayMatch : kMayBeUndefined);
}

void RefuseMatching(T3Tree_Node* node, T3Tree_Node* value, vexa_template_mode_t mode) {
  Check({node, value, mode, kStatusMatching, &ERR_template_ambiguous});
}
void RefuseUndefined(T3Tree_Node* node, T3Tree_Node* value, vexa_template_mode_t mode) {
  Check({node, value, mode, kStatusUndefined, &ERR_template_underdefined});
}

void CheckSending(T3Tree_Node* node) {
  RefuseMatching(node, ValueOf(node), vexa_template_plain);
  g_uses.push_back({node, ValueOf(node), vexa_template_plain, kStatusMatching, nullptr});
}
void CheckCall(T3Tree_Node* node) {
  RefuseMatching(node, ValueOf(node), vexa_template_call);
}
void CheckReply(T3Tree_Node* node) {
  RefuseMatching(node, ValueOf(node), vexa_template_reply);
}
void CheckReturnTemplate(T3Tree_Node* node) {
  RefuseUndefined(node, node->as<T3GetReplyStmt>()->return_template, vexa_template_plain);
}
void CheckValueOf(T3Tree_Node* node) {
  RefuseMatching(node, node->as<T3ValueOf>()->template_value, vexa_template_plain);
}
void CheckEncValue(T3Tree_Node* node) {
  RefuseMatching(node, node->as<T3EncValue>()->template_value, vexa_template_plain);
}
void CheckAction(T3Tree_Node* node) {
  RefuseMatching(node, node->as<T3SUTStmt>()->action, vexa_template_plain);
}
// What is sent goes to addresses, not to what would match them.
void CheckRecipient(T3Tree_Node* node) {
  if (auto* single = node->try_as<T3RecipientSingle>())
    RefuseMatching(node, single->recipient, vexa_template_plain);
  else
    RefuseMatching(node, node->as<T3AddressListItem>()->recipient, vexa_template_plain);
}

// What cannot be sent has had its message.
void WarnOfActuals(T3Tree_Node* node, T3Tree_Node* value) {
  if (!IsKnown(value)) return;
  const T3TemplateStatus status = CollectTemplateStatus(value, false, vexa_template_plain);
  if (status.value < kStatusMatching && !status.awaits_merge &&
      CollectTemplateStatus(value, true, vexa_template_plain).value >= kStatusMatching)
    WarnAt(node, kMayMatch);
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3TemplateDef, CheckKindOfTemplate},
    {T3Kind::T3TemplateDef, CheckRestriction},
    {T3Kind::T3TemplateDef, NoteModifying},
    {T3Kind::T3TemplateDecl, WarnOfEffects},
    {T3Kind::T3SendStmt, CheckSending},
    {T3Kind::T3RaiseStmt, CheckSending},
    {T3Kind::T3CallStmt, CheckCall},
    {T3Kind::T3ReplyStmt, CheckReply},
    {T3Kind::T3GetReplyStmt, CheckReturnTemplate},
    {T3Kind::T3ValueOf, CheckValueOf},
    {T3Kind::T3EncValue, CheckEncValue},
    {T3Kind::T3SUTStmt, CheckAction},
    {T3Kind::T3RecipientSingle, CheckRecipient},
    {T3Kind::T3AddressListItem, CheckRecipient},
};
}  // namespace

void CheckGivenTemplate(T3Tree_Node* actual) {
  RefuseMatching(actual, actual, vexa_template_plain);
}

void CheckReceivedTemplate(T3Tree_Node* statement) {
  const auto mode = statement->is<T3GetCallStmt>()    ? vexa_template_call
                    : statement->is<T3GetReplyStmt>() ? vexa_template_reply
                                                      : vexa_template_plain;
  if (statement->is<_T3TemplatePortStmt>()) RefuseUndefined(statement, ValueOf(statement), mode);
}

std::span<const T3Rule> TemplateRules() {
  return kRules;
}

void ExplicifyTemplateModifies(T3Tree_Node*) {
  for (T3Tree_Node* definition : g_modifying) MergedConstraint(definition);
  ClearTreeCaches();
}

void CheckMatchingExpressionsInSendTemplates(T3Tree_Node*) {
  // A use that still waits, for a merge that an earlier fault has prevented, is left.
  const std::vector<Use> uses = std::move(g_uses);
  for (const Use& use : uses)
    if (use.message == nullptr)
      WarnOfActuals(use.node, use.value);
    else
      Check(use);
}

namespace {
const ModuleCache kCache{[] {
  g_uses.clear();
  g_modifying.clear();
}};
}  // namespace
