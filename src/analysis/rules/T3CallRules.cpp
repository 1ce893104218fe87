// The rules of calls: how many actual parameters there are and what may stand for one that gives something
// back, and whether what is called runs on the component of the caller.
#include "analysis/flow/T3AltStatus.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/rules/T3ParameterKinds.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
// ---- Actual parameters ----

bool HasDefault(T3Tree_Node* par) {
  auto* typed = par->try_as<_T3TypedFormal>();
  T3Tree_Node* value = typed == nullptr ? nullptr : typed->default_value;
  return T3Is<T3TemplateDef>(value) || (T3Is<_T3Expression>(value) && !value->is<T3NoExpression>());
}

// What takes a value must be given one, and what gives a value back something that takes it. Templates of
// values may be used for matching.
void CheckActual(T3Tree_Node* actual, T3Tree_Node* formal) {
  auto* par = formal->try_as<_T3TypedFormal>();
  if (par == nullptr) return;
  T3Tree_Node* value = ConstraintOf(actual);
  if (IsPortOrPortArray(par)) {
    const bool is_matching = value->is<_T3MatchingExpression>() || value->is<ExtraMatchingExpressions>();
    if ((is_matching || value->is<T3Omit>()) && !HasFailed(value))
      vexa_filtered_error(ERR_lvalue, PositionOf(actual));
    return;
  }
  if (par->pass == t3_par_pass_t::In) {
    if (par->is<T3FormalPar>() && value->is<T3Omit>())
      vexa_filtered_error(ERR_not_allowed_for, PositionOf(actual), "'omit'", "template value");
    else if (par->is<T3FormalPar>() && T3Is<_T3FunctionDecl>(par->place->vexa_owner) && !HasFailed(value))
      CheckGivenTemplate(actual);
    return;
  }
  if (!T3Is<_T3Expression>(value) || value->is<T3NotUsedSymbol>() || HasFailed(value)) return;
  const bool holds_template = !par->is<T3FormalTemplatePar>() || IsTemplateReference(value);
  if (!IsLvalue(value) || !holds_template) vexa_filtered_error(ERR_lvalue, PositionOf(actual));
}

bool CheckActualParList(T3Tree_Node* actual, T3Tree_Node* formal) {
  for (auto* at : Items<T3ActualPar>(actual)) {
    if (!T3Is<_T3FormalPar>(formal)) return false;
    CheckActual(at->expression, formal);
    formal = formal->as<_T3FormalPar>()->next;
  }
  for (auto* item : Items<_T3FormalPar>(formal))
    if (!HasDefault(item)) return false;
  return true;
}

// A default is what would be given.
void CheckDefault(T3Tree_Node* node) {
  auto* par = node->as<_T3TypedFormal>();
  if (par->pass == t3_par_pass_t::In && HasDefault(par)) CheckActual(par->default_value, par);
}

bool HasParameters(T3Tree_Node* def) {
  return T3Is<_T3FunctionDecl>(def) || T3Is<T3TemplateDecl>(def);
}

void CheckCall(T3Tree_Node* node) {
  auto* call = node->as<T3Parameterization>();
  T3Tree_Node* def = BehindImport(Def(call));
  if (HasParameters(def) && !CheckActualParList(call->apl, FormalParametersOf(def)))
    vexa_filtered_error(ERR_parlist_length, call->position);
}

// What calls a template, and a template that modifies one, has parameters of its own.
bool TakesParameters(T3Tree_Node* name) {
  T3Tree_Node* parent = name->parent;
  if (auto* call = T3Is<T3Parameterization>(parent) ? parent->as<T3Parameterization>() : nullptr)
    return call->base == name;
  return T3Is<T3TemplateReference>(parent) && T3Is<T3TemplateDef>(parent->parent) &&
         T3Is<T3TemplateDecl>(parent->parent->parent);
}

// Makes a call of a name, with the default of each parameter.
void CallWithDefaults(_T3Reference* name, T3Tree_Node* fpl) {
  auto* call = gT3AST.mT3Parameterization(name->position, name, _sgT3NoActualPar());
  call->place = call->apl->place = name->place;
  TakeMeaning(call, name);
  call->attr().fpl = fpl;
  call->attr().is_strict = name->attr().is_strict;
  ReplaceChild(name, call);
  AdoptChildren(call);
}

// The name of a template with parameters stands for it if each has a default.
void CheckBareTemplate(T3Tree_Node* node) {
  auto* name = node->as<_T3Reference>();
  T3Tree_Node* def = name->attributes == nullptr ? nullptr : name->attr().def;
  if (!T3Is<T3TemplateDecl>(def) && !T3Is<T3ImportTemplateDecl>(def)) return;
  T3Tree_Node* fpl = FormalParametersOf(def);
  if (!T3Is<_T3FormalPar>(fpl) || TakesParameters(name)) return;
  for (auto* par : Items<_T3FormalPar>(fpl))
    if (!HasDefault(par)) return vexa_filtered_error(ERR_parlist_length, name->position);
  CallWithDefaults(name, fpl);
}

// ---- Components ----

void CheckRunsOnOfCallee(T3Tree_Node* node, T3Tree_Node* caller, T3Tree_Node* callee) {
  T3Tree_Node* needed = ComponentOf(callee);
  if (!needed->is<T3ComponentType>()) return;
  T3Tree_Node* own = ComponentOf(caller);
  if (own->is<T3NoType>()) vexa_filtered_error(ERR_runs_on, PositionOf(node));
  if (own->is<T3ComponentType>() && !IsCompatible(needed, own))
    vexa_filtered_error(ERR_incompatible_runs_on, PositionOf(node));
}

// What has no behaviour, or another one than is wanted, is not invoked.
void RefuseInvocation(T3Tree_Node* node) {
  vexa_filtered_error(ERR_not_allowed_here, PositionOf(node), "function invocation");
}

void CheckInvocation(T3Tree_Node* node) {
  T3Tree_Node* callee = CalleeOf(node->as<T3InvocationStmt>()->invocation);
  if (callee == nullptr) return;
  if (callee->is<T3Testcase>()) return vexa_filtered_error(ERR_testcase_invocation, PositionOf(node));
  if (callee->is<T3TestStep>())
    RefuseInInterleave(node, "function invocation");
  else if (!callee->is<T3Function>() && !callee->is<T3ExtFunction>())
    return RefuseInvocation(node);
  if (node->place != nullptr) CheckRunsOnOfCallee(node, node->place->vexa_owner, callee);
}

void CheckActivate(T3Tree_Node* node) {
  RefuseInInterleave(node, "activate");
  T3Tree_Node* call = node->as<T3Activate>()->teststep;
  T3Tree_Node* callee = CalleeOf(call);
  const bool named = call->is<T3Identifier>() || call->is<_T3Qualification>();
  if (named && callee == nullptr) return;
  if (!named || !call->is<T3Parameterization>() || !callee->is<T3TestStep>()) return RefuseInvocation(node);
  RefuseParameters(node, "activated altstep", KindsOf(callee->as<T3TestStep>()->fpl).out, "out");
  if (node->place != nullptr) CheckRunsOnOfCallee(node, node->place->vexa_owner, callee);
}

void CheckAltstepAlternative(T3Tree_Node* node) {
  T3Tree_Node* callee = CalleeOf(node->as<T3TestStepRefAlt>()->test_step);
  RefuseInInterleave(node, "function invocation");
  if (callee == nullptr) return;
  if (!callee->is<T3TestStep>()) return RefuseInvocation(node);
  if (node->place != nullptr) CheckRunsOnOfCallee(node, node->place->vexa_owner, callee);
}

// What is started runs on the started component; what stands in the place of an altstep or a test case is
// refused.
bool HasRuleOfItsOwn(T3Tree_Node* call) {
  T3Tree_Node* parent = call->parent;
  return T3Is<T3StartStmt>(parent) || T3Is<T3TestStepRefAlt>(parent) || T3Is<T3Execute>(parent);
}

// A function that is called for its value, by a behaviour: a declaration outside of one has no caller.
void CheckRunsOnInExpression(T3Tree_Node* node) {
  T3Tree_Node* caller = node->place == nullptr ? nullptr : node->place->top_scope_owner;
  if (!T3Is<_T3FunctionBodyDecl>(caller) && !T3Is<T3ControlPart>(caller)) return;
  T3Tree_Node* callee = CalleeOf(node);
  const bool is_function = T3Is<T3Function>(callee) || T3Is<T3ExtFunction>(callee);
  if (is_function && !HasRuleOfItsOwn(node)) CheckRunsOnOfCallee(node, caller, callee);
}

// In an interleave nothing may wait by itself.
void CheckCallInInterleave(T3Tree_Node* node) {
  if (node->place == nullptr || !node->place->inside_interleave) return;
  T3Tree_Node* callee = CalleeOf(node);
  if (T3Is<T3Function>(callee) && AltStatusOfDecl(callee) == kChangesSnapshot)
    RefuseInInterleave(node, "call to function with (indirect) usage of communication operation");
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3TypedFormal, CheckDefault},
    {T3Kind::T3Parameterization, CheckCall},
    {T3Kind::T3Identifier, CheckBareTemplate},
    {T3Kind::T3Qualifier, CheckBareTemplate},
    {T3Kind::T3Parameterization, CheckRunsOnInExpression},
    {T3Kind::T3Parameterization, CheckCallInInterleave},
    {T3Kind::T3InvocationStmt, CheckInvocation},
    {T3Kind::T3Activate, CheckActivate},
    {T3Kind::T3TestStepRefAlt, CheckAltstepAlternative},
};
}  // namespace

std::span<const T3Rule> CallRules() {
  return kRules;
}
