#include "analysis/templates/T3TemplateRestrictions.h"

#include <string_view>
#include <unordered_map>
#include <vector>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/templates/T3PartBehind.h"
#include "analysis/templates/T3TemplateMerge.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"

namespace {
using Restriction = t3_template_restriction_t;

// Templates refer to each other; what lies deeper is taken for a value, and checked when the suite runs.
constexpr int kMaxDepthOfRestrictions = 6000;

void Refuse(T3Tree_Node* node, const char* what, const char* where) {
  vexa_filtered_error(ERR_not_allowed_for, PositionOf(node), what, where);
}

T3TemplateDecl* TemplateCalled(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  return call == nullptr ? nullptr : TemplateNamed(call->base);
}

// ---- What an expression can produce ----

// A search through an expression and the templates that it refers to, each looked through once.
class ExpressionSearch {
 public:
  using Leaf = bool (*)(T3Tree_Node*);
  explicit ExpressionSearch(Leaf leaf) : leaf_(leaf) {}

  bool In(T3Tree_Node* expression) {
    too_deep_ = too_deep_ || depth_ >= kMaxDepthOfRestrictions;
    if (depth_ >= kMaxDepthOfRestrictions) return false;
    ++depth_;
    const bool found = leaf_(expression) || InParts(expression);
    --depth_;
    return found;
  }

  /// What was asked for, or a warning that it is not known.
  bool InAllOf(T3Tree_Node* expression) {
    const bool found = In(expression);
    if (!found && too_deep_)
      WarnAt(expression, "Cannot check template restrictions, check will be enforced at runtime");
    return found;
  }

 private:
  bool InParts(T3Tree_Node* expression) {
    if (auto* definition = expression->try_as<T3TemplateDef>()) return In(definition->constraint);
    if (auto* compound = expression->try_as<T3CompoundValue>()) return InFields(compound);
    if (auto* decl = TemplateCalled(expression)) return InDecl(decl) || InActuals(expression);
    if (auto* decl = TemplateNamed(expression)) return InDecl(decl);
    T3Tree_Node* part = PartBehind(expression);
    return part != expression && In(part);
  }

  bool InDecl(T3TemplateDecl* decl) {
    const auto [known, made] = known_.try_emplace(decl->number, false);
    if (!made) return known->second;
    const bool found = In(decl->definition);
    return known_[decl->number] = found;
  }

  bool InFields(T3CompoundValue* compound) {
    for (auto* at : Items<T3FieldValue>(compound->value))
      if (In(at->value)) return true;
    return false;
  }

  bool InActuals(T3Tree_Node* call) {
    T3Tree_Node* at = call->as<T3Parameterization>()->apl;
    for (auto* actual : Items<T3ActualPar>(at))
      if (In(actual->expression)) return true;
    return false;
  }

  Leaf leaf_;
  int depth_ = 0;
  bool too_deep_ = false;
  std::unordered_map<uint32_t, bool> known_;
};

bool AnyExpression(T3Tree_Node* expression) {
  return ExpressionSearch([](T3Tree_Node* node) {
           return node->is<_T3MatchingExpression>() || node->is<ExtraMatchingExpressions>();
         })
      .InAllOf(expression);
}

bool OmitValue(T3Tree_Node* expression) {
  return ExpressionSearch([](T3Tree_Node* node) { return node->is<T3Omit>() || node->is<T3AnyOrOmit>(); })
      .InAllOf(expression);
}

// ---- Where a parameter stands ----

bool IsNamed(T3Tree_Node* expression, tIdent name) {
  return expression->is<T3Identifier>() && expression->as<T3Identifier>()->id == name;
}

// True for a call of a template which passes the parameter on to one of its own that is its whole body.
bool CheckOmitParameterizationForParamId(T3Tree_Node* expression, tIdent name, int depth);

// True where an expression is the parameter itself.
bool CheckTemplEqParam(T3Tree_Node* expression, tIdent name, int depth = 0) {
  return IsNamed(expression, name) || CheckOmitParameterizationForParamId(expression, name, depth);
}

bool CheckOmitParameterizationForParamId(T3Tree_Node* expression, tIdent name, int depth) {
  T3TemplateDecl* decl = TemplateCalled(expression);
  if (decl == nullptr || depth >= kMaxDepthOfRestrictions) return false;
  T3Tree_Node* actuals = expression->as<T3Parameterization>()->apl;
  for (const auto [par, at] : Pairs<_T3FormalPar, T3ActualPar>(decl->fpl, actuals))
    if (IsNamed(ConstraintOf(at->expression), name) &&
        CheckTemplEqParam(ConstraintOf(decl->definition), par->name, depth + 1))
      return true;
  return false;
}

// True where the parameter stands anywhere in an expression.
bool CheckFieldEqParam(T3Tree_Node* expression, tIdent name, int depth = 0) {
  if (IsNamed(expression, name)) return true;
  if (depth >= kMaxDepthOfRestrictions) return false;
  if (auto* compound = expression->try_as<T3CompoundValue>()) {
    for (auto* at : Items<T3FieldValue>(compound->value))
      if (CheckFieldEqParam(at->value, name, depth + 1)) return true;
  } else if (TemplateCalled(expression) != nullptr) {
    T3Tree_Node* at = expression->as<T3Parameterization>()->apl;
    for (auto* actual : Items<T3ActualPar>(at))
      if (CheckFieldEqParam(ConstraintOf(actual->expression), name, depth + 1)) return true;
  }
  return false;
}

// ---- Uses ----

void TemplVarAssignCheck(Restriction restriction, T3Tree_Node* value) {
  if (!T3Is<_T3Expression>(value) || HasFailed(value)) return;
  switch (restriction) {
    case Restriction::Omit:
      if (AnyExpression(value)) Refuse(value, "multiple-value assignment", "omit-restricted templates");
      return;
    case Restriction::Value:
      if (OmitValue(value)) Refuse(value, "'omit'", "value-restricted templates");
      if (AnyExpression(value)) Refuse(value, "multiple-value assignment", "value-restricted templates");
      return;
    case Restriction::Present:
      if (OmitValue(value)) Refuse(value, "'omit'", "present-restricted templates");
      return;
    default:
      return;
  }
}

// One parameter whose own restriction decides.
void CheckRestricted(Restriction restriction, T3Tree_Node* actual, T3Tree_Node* value) {
  switch (restriction) {
    case Restriction::Omit:
      if (AnyExpression(value)) Refuse(actual, "multiple-value", "omit-restricted params");
      return;
    case Restriction::Value:
      if (OmitValue(value))
        Refuse(actual, "'omit'", "value-restricted params");
      else if (AnyExpression(value))
        Refuse(actual, "multiple-value", "value-restricted params");
      return;
    case Restriction::Present:
      if (OmitValue(value)) Refuse(actual, "'omit'", "present-restricted params");
      return;
    default:
      return;
  }
}

// One parameter without a restriction: what it is used for decides.
void CheckUnrestricted(T3TemplateDef* definition, tIdent name, T3Tree_Node* actual, T3Tree_Node* value) {
  T3Tree_Node* constraint = definition->constraint;
  const auto brings_several = [&] { return CheckFieldEqParam(constraint, name) && AnyExpression(value); };
  const auto brings_none = [&] { return CheckTemplEqParam(constraint, name) && OmitValue(value); };
  switch (definition->restriction) {
    case Restriction::Omit:
      if (brings_several()) Refuse(actual, "multiple-value", "omit-restricted template");
      return;
    case Restriction::Value:
      if (brings_several()) Refuse(actual, "multiple-value", "value-restricted template");
      if (brings_none()) Refuse(actual, "'omit'", "value-restricted params");
      return;
    case Restriction::Present:
      if (brings_none()) Refuse(actual, "'omit'", "present-restricted params");
      return;
    default:
      return;
  }
}

void CheckActual(T3FormalTemplatePar* formal, T3Tree_Node* actual, T3Tree_Node* value,
                 T3TemplateDef* definition) {
  if (!T3Is<_T3Expression>(value) || HasFailed(value)) return;
  if (formal->restriction != Restriction::None)
    CheckRestricted(formal->restriction, actual, value);
  else if (definition != nullptr)
    CheckUnrestricted(definition, formal->name, actual, value);
}

// What a parameter is where nothing is given for it.
void CheckDefault(T3FormalTemplatePar* formal) {
  T3Tree_Node* value = ConstraintOf(formal->default_value);
  auto* decl = formal->place->vexa_owner->try_as<T3TemplateDecl>();
  CheckActual(formal, value, value, decl == nullptr ? nullptr : decl->definition->try_as<T3TemplateDef>());
}

void CheckTemplateParameterization(T3Tree_Node* formals, T3Tree_Node* actuals, T3TemplateDef* definition) {
  for (const auto [par, actual] : Pairs<_T3FormalPar, T3ActualPar>(formals, actuals)) {
    if (par->is<T3FormalPar>()) continue;
    auto* formal = par->try_as<T3FormalTemplatePar>();
    if (formal == nullptr) return;
    CheckActual(formal, actual, ConstraintOf(actual->expression), definition);
  }
}

bool MayModify(Restriction base, Restriction modified) {
  return base == modified || modified == Restriction::Value || base == Restriction::None;
}

// The parameters of a template and of the one that it modifies.
void TemplParRestrCheck(T3Tree_Node* pars, T3Tree_Node* bases) {
  for (const auto [par, base] : Pairs<_T3FormalPar, _T3FormalPar>(pars, bases)) {
    if (!par->is<T3FormalTemplatePar>() || !base->is<T3FormalTemplatePar>()) continue;
    if (!MayModify(base->as<T3FormalTemplatePar>()->restriction, par->as<T3FormalTemplatePar>()->restriction))
      Refuse(par, "combination of template parameters restrictions", "base and modified templates");
  }
}

T3TemplateDecl* Modified(T3TemplateDecl* decl) {
  auto* definition = decl->definition->try_as<T3TemplateDef>();
  auto* modifies = definition == nullptr ? nullptr : definition->modifies->try_as<T3TemplateReference>();
  return modifies == nullptr ? nullptr : TemplateNamed(modifies->reference);
}

// What the rules of declarations have refused at the variable already.
bool IsToldAtDeclaration(T3VarDecl* variable) {
  T3Tree_Node* value = ConstraintOf(variable->value);
  if (variable->templ_restriction == Restriction::Present) return value->is<T3Omit>();
  return value->is<T3AnyValue>() || value->is<T3AnyOrOmit>();
}

// The variable that an assignment is to as a whole; null for others.
T3VarDecl* VariableOf(T3Tree_Node* target) {
  T3Tree_Node* def = target->is<T3Identifier>() ? DefQuietly(target) : nullptr;
  return T3Is<T3VarDecl>(def) ? def->as<T3VarDecl>() : nullptr;
}

void TemplateRestrictionsAnalyze(T3Tree_Node* node) {
  if (auto* decl = node->try_as<T3TemplateDecl>()) {
    if (T3TemplateDecl* modified = Modified(decl)) TemplParRestrCheck(decl->fpl, modified->fpl);
  } else if (auto* variable = node->try_as<T3VarDecl>()) {
    if (!IsToldAtDeclaration(variable))
      TemplVarAssignCheck(variable->templ_restriction, ConstraintOf(variable->value));
  } else if (auto* assignment = node->try_as<T3AssignStmt>()) {
    if (T3VarDecl* target = VariableOf(assignment->lhs))
      TemplVarAssignCheck(target->templ_restriction, ConstraintOf(assignment->rhs));
  } else if (auto* formal = node->try_as<T3FormalTemplatePar>()) {
    CheckDefault(formal);
  } else if (T3TemplateDecl* called = TemplateCalled(node)) {
    if (auto* definition = called->definition->try_as<T3TemplateDef>())
      CheckTemplateParameterization(called->fpl, node->as<T3Parameterization>()->apl, definition);
  }
}

// ---- What is noted on the way ----

std::vector<T3Tree_Node*>& g_restricted = *new std::vector<T3Tree_Node*>;

void NoteModification(T3Tree_Node* node) {
  if (Modified(node->as<T3TemplateDecl>()) != nullptr) g_restricted.push_back(node);
}
void NoteVariable(T3Tree_Node* node) {
  if (node->as<T3VarDecl>()->templ_restriction != Restriction::None) g_restricted.push_back(node);
}
void NoteAssignment(T3Tree_Node* node) {
  T3VarDecl* target = VariableOf(node->as<T3AssignStmt>()->lhs);
  if (target != nullptr && target->templ_restriction != Restriction::None) g_restricted.push_back(node);
}
void NoteDefault(T3Tree_Node* node) {
  if (T3Is<_T3Expression>(ConstraintOf(node->as<T3FormalTemplatePar>()->default_value)))
    g_restricted.push_back(node);
}
void NoteCall(T3Tree_Node* node) {
  if (TemplateCalled(node) != nullptr) g_restricted.push_back(node);
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3TemplateDecl, NoteModification}, {T3Kind::T3VarDecl, NoteVariable},
    {T3Kind::T3FormalTemplatePar, NoteDefault}, {T3Kind::T3AssignStmt, NoteAssignment},
    {T3Kind::T3Parameterization, NoteCall},
};
}  // namespace

std::span<const T3Rule> RestrictionRules() {
  return kRules;
}

void TemplateRestrictionsCheck(T3Tree_Node*) {
  for (T3Tree_Node* node : g_restricted) TemplateRestrictionsAnalyze(node);
  ClearTreeCaches();
}

namespace {
const ModuleCache kTemplateRestrictionsCache{[] { g_restricted.clear(); }};
}  // namespace
