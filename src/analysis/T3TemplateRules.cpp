// The rules of template definitions, and of what may be sent.
#include <vector>

#include "analysis/T3RuleParts.h"
#include "analysis/T3AltStatus.h"
#include "analysis/T3Eval.h"
#include "analysis/T3Names.h"
#include "analysis/T3Stages.h"
#include "analysis/T3TemplateStatus.h"
#include "analysis/T3Types.h"
#include "driver/T3Error.h"

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

// A field of a template that stands for one value, or for one or none, may not match several.
void RefuseFields(T3CompoundValue* compound, const char* where) {
  std::vector<T3Tree_Node*> open{compound->value};
  while (!open.empty()) {
    auto* at = open.back()->try_as<T3FieldValue>();
    open.pop_back();
    if (at == nullptr) continue;
    open.push_back(at->next);
    if (at->value->is<T3AnyValue>())
      vexa_filtered_error(ERR_not_allowed_for, PositionOf(at), "'?'", where);
    else if (auto* inner = at->value->try_as<T3CompoundValue>())
      open.push_back(inner->value);
  }
}

void CheckRestriction(T3Tree_Node* node) {
  auto* definition = node->as<T3TemplateDef>();
  T3Tree_Node* constraint = definition->constraint;
  const bool matching = constraint->is<_T3MatchingExpression>() || constraint->is<ExtraMatchingExpressions>();
  const auto refuse = [node](const char* what, const char* where) {
    vexa_filtered_error(ERR_not_allowed_for, PositionOf(node), what, where);
  };
  const char* where = nullptr;
  switch (definition->restriction) {
    case t3_template_restriction_t::Present:
      if (IsIfPresent(constraint)) refuse("'IfPresent' indicator", "(present)-restricted templates");
      if (constraint->is<T3Omit>()) refuse("value", "(present)-restricted templates");
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
  if (auto* compound = constraint->try_as<T3CompoundValue>()) RefuseFields(compound, where);
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

// ---- Uses ----

// The statements whose templates are looked at when all of the module is known.
std::vector<T3Tree_Node*>& g_sending = *new std::vector<T3Tree_Node*>;

void NoteSending(T3Tree_Node* node) {
  g_sending.push_back(node);
}

bool HasTemplate(T3Tree_Node* statement) {
  T3Tree_Node* value = statement->as<_T3TemplatePortStmt>()->template_value;
  return value->is<T3TemplateDef>() && !ExpressionBaseType(value)->is<T3ErrorType>();
}

int StatusOf(T3Tree_Node* statement, bool deep, vexa_template_mode_t mode) {
  return CollectTemplateStatus(statement->as<_T3TemplatePortStmt>()->template_value, deep, mode);
}

void RefuseMatching(T3Tree_Node* node, vexa_template_mode_t mode) {
  if (HasTemplate(node) && StatusOf(node, false, mode) > kStatusReference)
    vexa_filtered_error(ERR_template_ambiguous, PositionOf(node));
}

void CheckCall(T3Tree_Node* node) {
  RefuseMatching(node, vexa_template_mode_t::Call);
}
void CheckReply(T3Tree_Node* node) {
  RefuseMatching(node, vexa_template_mode_t::Reply);
}

void RefuseUndefined(T3Tree_Node* node, vexa_template_mode_t mode) {
  if (HasTemplate(node) && StatusOf(node, false, mode) == kStatusUndefined)
    vexa_filtered_error(ERR_template_underdefined, PositionOf(node));
}

void CheckReceive(T3Tree_Node* node) {
  RefuseUndefined(node, vexa_template_mode_t::Message);
}
void CheckGetCall(T3Tree_Node* node) {
  RefuseUndefined(node, vexa_template_mode_t::Call);
}
void CheckGetReply(T3Tree_Node* node) {
  RefuseUndefined(node, vexa_template_mode_t::Reply);
}

void CheckValueOf(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<T3ValueOf>()->template_value;
  if (value->is<T3TemplateDef>() && !ExpressionBaseType(value)->is<T3ErrorType>() &&
      CollectTemplateStatus(value, false, vexa_template_mode_t::Message) > kStatusReference)
    vexa_filtered_error(ERR_template_ambiguous, PositionOf(node));
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3TemplateDef, CheckKindOfTemplate},
    {T3Kind::T3TemplateDef, CheckRestriction},
    {T3Kind::T3TemplateDecl, WarnOfEffects},
    {T3Kind::T3SendStmt, NoteSending},
    {T3Kind::T3RaiseStmt, NoteSending},
    {T3Kind::T3CallStmt, CheckCall},
    {T3Kind::T3ReplyStmt, CheckReply},
    {T3Kind::T3ReceiveStmt, CheckReceive},
    {T3Kind::T3TriggerStmt, CheckReceive},
    {T3Kind::T3GetCallStmt, CheckGetCall},
    {T3Kind::T3GetReplyStmt, CheckGetReply},
    {T3Kind::T3ValueOf, CheckValueOf},
};
}  // namespace

std::span<const T3Rule> TemplateRules() {
  return kRules;
}

void CheckMatchingExpressionsInSendTemplates(T3Tree_Node*) {
  for (T3Tree_Node* statement : g_sending) {
    if (!HasTemplate(statement)) continue;
    if (StatusOf(statement, false, vexa_template_mode_t::Message) > kStatusReference)
      vexa_filtered_error(ERR_template_ambiguous, PositionOf(statement));
    else if (StatusOf(statement, true, vexa_template_mode_t::Message) > kStatusReference)
      WarnAt(statement, "template may contain matching expressions (will be checked at run-time)");
  }
  ForgetSendingStatements();
}

void ForgetSendingStatements() {
  g_sending.clear();
}
