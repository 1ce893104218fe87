// Matching mechanisms as run-time values.
#include "analysis/names/T3Names.h"
#include "analysis/templates/T3TemplateStatus.h"
#include "analysis/types/T3Types.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
const char* ListKind(T3Tree_Node* node) {
  if (node->is<T3Complement>()) return LUMO_VALUE_LIST_COMPLEMENT;
  if (node->is<T3SubSet>()) return LUMO_VALUE_LIST_SUBSET;
  if (node->is<_T3SuperOrSubSet>()) return LUMO_VALUE_LIST_SUPERSET;
  return LUMO_VALUE_LIST_NORMAL;
}

void ListMatch(T3Tree_Node* node, T3Tree_Node* values, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  std::vector<T3Tree_Node*> nodes;
  for (auto* at : Items<T3ValueListItem>(values)) nodes.push_back(at->value);
  const Operands operands(nodes);
  std::vector<std::string> items;
  for (size_t i = 0; i < nodes.size(); ++i) {
    InRTS(nodes[i], mode.temporary(), function);
    items.emplace_back(OperandInOrder(operands, i, vexa_rts_mode, function));
  }
  const std::string array = function.declareArray(LUMO_VALUE_T, items.size() + 1);
  for (size_t i = 0; i < items.size(); ++i) function.assign(array + "[" + std::to_string(i) + "]", items[i]);
  function.assign(array + "[" + std::to_string(items.size()) + "]", C_NULL);
  function.call(LUMO_TEMPLATE_SET_VALUE_LIST, {target, ListKind(node), array, C_FALSE, VEXA_CONTEXT});
}

std::string_view Bound(T3Tree_Node* node, CFunction& function) {
  if (IsInfinityExpression(node)) return LUMO_VALUE_INFINITY_C;
  return InRTS(node, vexa_temp_alloc, function);
}

void RangeMatch(T3ValueRange* node, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  std::string_view lower = Bound(node->lb, function);
  if (!IsInfinityExpression(node->lb))
    lower = OperandInOrder(Operands({node->lb, node->ub}), 0, vexa_rts_mode, function);
  const std::string_view upper = Bound(node->ub, function);
  function.call(LUMO_TEMPLATE_SET_VALUE_RANGE, {target, lower, upper, C_FALSE, VEXA_CONTEXT});
}

void SetLength(std::string_view target, T3Tree_Node* lower, T3Tree_Node* upper, CFunction& function) {
  const std::string_view from = Bound(lower, function);
  const std::string_view to = lower == upper ? from : Bound(upper, function);
  function.call(LUMO_TEMPLATE_SET_LENGTH_CONSTRAINT, {target, from, to, VEXA_CONTEXT});
}

void ExtraMatch(ExtraMatchingExpressions* node, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  const std::string_view inner = InRTS(node->object, mode.temporary(), function);
  const bool if_present = node->is<T3IfPresentMatch>() || node->is<T3IfPresentIfLengthMatch>();
  function.call(LUMO_TEMPLATE_SET_VALUE, {target, inner, if_present ? C_TRUE : C_FALSE, VEXA_CONTEXT});
  T3Tree_Node* bound = node->is<T3LengthMatch>()              ? node->as<T3LengthMatch>()->size
                       : node->is<T3IfPresentIfLengthMatch>() ? node->as<T3IfPresentIfLengthMatch>()->size
                                                              : nullptr;
  if (bound == nullptr) return;
  if (auto* single = bound->try_as<T3SingleBound>())
    SetLength(target, single->ub, single->ub, function);
  else if (auto* range = bound->try_as<T3RangeBound>())
    SetLength(target, range->lb, range->ub, function);
}

// A length that is a whole constraint.
void LengthMatch(T3LengthRange* node, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  function.call(LUMO_TEMPLATE_SET_VALUE, {target, LUMO_ANYORNONE_VALUE_C, C_FALSE, VEXA_CONTEXT});
  SetLength(target, node->lb, node->ub, function);
}

void SetPattern(T3Tree_Node* node, std::string_view pattern, Mode mode, CFunction& function) {
  mode.is_template = true;
  const std::string target = AllocateRTSValue(node, mode, function);
  function.call(LUMO_TEMPLATE_SET_STRING_PATTERN, {target, pattern, C_FALSE, VEXA_CONTEXT});
}

// A template of a block, which has its value where it is declared: the functions of another one find it by
// its name.
std::string TemplateOfBlock(T3Tree_Node* decl, const CFunction& function) {
  if (!function.reach.locals) return std::string(RTSLocation(decl));
  return Call(LUMO_SOURCE_TRACKING_FIND_VALUE, {Quote(decl->as<T3TemplateDecl>()->name), VEXA_CONTEXT});
}

// A reference to a declared template with its arguments.
void TemplateReference(T3Tree_Node* node, T3Tree_Node* decl, T3Tree_Node* actuals, Mode mode,
                       CFunction& function) {
  T3Tree_Node* origin = BehindImport(decl);
  auto* definition = origin->as<T3TemplateDecl>()->definition->try_as<T3TemplateDef>();
  if (definition == nullptr) NotSupported(node);
  // Without a list all parameters have their defaults.
  const std::string array =
      CGActualParameterList(actuals, origin->as<T3TemplateDecl>()->fpl, false, function);
  const std::string instance =
      HasRTSLocation(origin)
          ? TemplateOfBlock(origin, function)
          : Call(LUMO_TYPE_INSTANTIATE_TEMPLATE,
                 {AccessNamedEntity(decl, function), AllocationMode(mode.allocation), array,
                  std::to_string(static_cast<int>(definition->restriction)), VEXA_CONTEXT});
  SetRTSLocation(node, mode.is_template
                           ? instance
                           : Call(LUMO_VALUEOF, {instance, AllocationMode(mode.allocation), VEXA_CONTEXT}));
}

// A value is its own.
bool IsPlain(T3Tree_Node* definition) {
  return CollectTemplateStatus(definition, false, vexa_template_plain).value == kStatusPlain &&
         !HoldsTemplate(definition->as<T3TemplateDef>()->constraint);
}

void ValueOf(T3ValueOf* node, Mode mode, CFunction& function) {
  if (node->template_value->is<T3TemplateDef>() && IsPlain(node->template_value))
    return SetRTSLocation(node, InRTS(node->template_value, mode, function));
  const std::string_view location = InRTS(node->template_value, CGTemplateMode(), function);
  SetRTSLocation(node, Call(LUMO_VALUEOF, {location, AllocationMode(mode.allocation), VEXA_CONTEXT}));
}

// A value of one type is never matched by a pattern of another one.
bool FitsPattern(T3Tree_Node* value, T3Tree_Node* pattern) {
  T3Candidates candidates(ExpressionLocalType(value), ExpressionBaseType(value));
  Exclude(candidates, ExpressionLocalType(pattern), ExpressionBaseType(pattern), false, false);
  return candidates.CountValid() > 0;
}

void MatchOperation(T3Match* node, CFunction& function) {
  if (!FitsPattern(node->expression, node->template_value)) {
    vexa_warning(GetVerbosity(CGCurrentModule()),
                 "Type mismatch in match statement: will always evaluate to false", node->position);
    return SetCLocation(node, "false");
  }
  InRTS(node->expression, vexa_temp_alloc, function);
  const std::string_view value =
      OperandInOrder(Operands({node->expression, node->template_value}), 0, vexa_rts_mode, function);
  const std::string pattern = CGInlinedTemplate(node->template_value, vexa_template_plain, function);
  SetCLocation(node, Call(LUMO_MATCH, {pattern, value, VEXA_CONTEXT}));
}
}  // namespace

bool Matching(T3Tree_Node* node, Mode mode, CFunction& function) {
  if (!mode.is_template && (node->is<_T3MatchingExpression>() || node->is<ExtraMatchingExpressions>())) {
    ReportAtRunTime(std::string("Attempt to call valueof for template ") + T3KindName(node), PositionOf(node),
                    function);
    SetRTSLocation(node, LUMO_ILLEGAL_VALUE_C);
  } else if (auto* match = node->try_as<T3Match>()) {
    MatchOperation(match, function);
  } else if (auto* value = node->try_as<T3ValueOf>()) {
    ValueOf(value, mode, function);
  } else if (node->is<T3AnyValue>()) {
    SetRTSLocation(node, LUMO_ANYONE_VALUE_C);
  } else if (node->is<T3AnyOrOmit>()) {
    SetRTSLocation(node, LUMO_ANYORNONE_VALUE_C);
  } else if (auto* list = node->try_as<T3ValueList>()) {
    ListMatch(node, list->values, mode, function);
  } else if (auto* complement = node->try_as<T3Complement>()) {
    ListMatch(node, complement->values, mode, function);
  } else if (auto* set = node->try_as<_T3SuperOrSubSet>()) {
    ListMatch(node, set->values, mode, function);
  } else if (auto* range = node->try_as<T3ValueRange>()) {
    RangeMatch(range, mode, function);
  } else if (auto* extra = node->try_as<ExtraMatchingExpressions>()) {
    ExtraMatch(extra, mode, function);
  } else if (auto* length = node->try_as<T3LengthRange>()) {
    LengthMatch(length, mode, function);
  } else if (node->is<T3CharStringMatch>() || node->is<_T3SpecialStringMatch>()) {
    SetPattern(node, PatternText(node, function), mode, function);
  } else if (auto* call = node->try_as<T3Parameterization>()) {
    if (!IsTemplateDecl(Def(call))) return false;
    TemplateReference(node, Def(call), call->apl, mode, function);
  } else if (node->is<T3Identifier>() || (node->is<T3Qualifier>() && !IsField(node->as<T3Qualifier>()))) {
    T3Tree_Node* def = Def(node);
    // A type in the list of a subtype: any of its values.
    if (T3Is<T3TypeDecl>(BehindImport(def)) && !IsAsnNullType(BehindImport(def)))
      return SetRTSLocation(node, LUMO_ANYONE_VALUE_C), true;
    if (!IsTemplateDecl(def)) return false;
    TemplateReference(node, def, _sgT3NoActualPar(), mode, function);
  } else {
    return false;
  }
  return true;
}
}  // namespace cg
