// The rules of statements, alternatives, and operations on components, timers, defaults and verdicts.
#include <string>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/flow/T3AltStatus.h"
#include "analysis/types/T3Constants.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/rules/T3ParameterKinds.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"

namespace {
void NotAllowedHere(T3Tree_Node* node, const char* what) {
  vexa_filtered_error(ERR_not_allowed_here, PositionOf(node), what);
}

// ---- Surroundings that refuse some statements ----

void CheckLoop(T3Tree_Node* node) {
  RefuseInInterleave(node, "loop statement");
}

void CheckGoto(T3Tree_Node* node) {
  RefuseInInterleave(node, "goto");
}

// A place in a list where a declaration stands behind behaviour.
void CheckDeclaration(T3Tree_Node* node) {
  if (node->place == nullptr || node->place->inside_declaration_header) return;
  if (gT3CommandLine.strict)
    vexa_filtered_error(ERR_mixing_decl_and_stmt, PositionOf(node));
  else
    WarnAt(node,
           "declaration mixed with behavioural statements, consider that it's a non-standard extension");
}

// ---- Alternatives ----

void CheckElse(T3Tree_Node* node) {
  auto* alt = node->as<T3AltStmt>();
  auto* otherwise = alt->else_branch->try_as<_T3Stmt>();
  if (otherwise == nullptr) return;
  tPosition last = otherwise->position;
  for (auto* next = alt->alts->try_as<_T3Alt>(); next != nullptr; next = next->next->try_as<_T3Alt>())
    last = next->position;
  if (otherwise->next->is<_T3Stmt>() || Compare(otherwise->position, last) < 0)
    vexa_filtered_error(ERR_alt_else, alt->position);
}

void CheckGuard(T3Tree_Node* node) {
  T3Tree_Node* guard = node->as<_T3Alt>()->guard;
  if (!HasBeenRefused(guard) && AltStatus(guard) == kChangesSnapshot)
    vexa_filtered_error(ERR_alt_illegal_guard, PositionOf(node));
}

// A standstill is noticed only where nothing has effects.
void WarnOfEffects(T3Tree_Node* node, T3Tree_Node* alternatives) {
  const T3Cleanness clean = CleannessOf(alternatives);
  if (!clean.templates)
    WarnAt(node, "run-time deadlock detection disabled because of side-effects in guard operations");
  if (!clean.guards)
    WarnAt(node, "run-time deadlock detection disabled because of side-effects in guard expressions");
}

// The alternatives of an altstep belong to the altstep.
bool IsBodyOfAltstep(T3Tree_Node* alt) {
  T3Tree_Node* owner = alt->place == nullptr ? nullptr : alt->place->vexa_owner;
  return T3Is<T3TestStep>(owner) && owner->as<T3TestStep>()->body == alt;
}

void WarnOfEffectsInAlt(T3Tree_Node* node) {
  if (!IsBodyOfAltstep(node)) WarnOfEffects(node, node->as<T3AltStmt>()->alts);
}

void WarnOfEffectsInAltstep(T3Tree_Node* node) {
  T3Tree_Node* body = node->as<T3TestStep>()->body;
  if (body->is<T3AltStmt>()) WarnOfEffects(node, body->as<T3AltStmt>()->alts);
}

void WarnOfEffectsInCall(T3Tree_Node* node) {
  WarnOfEffects(node, node->as<T3CallStmt>()->body);
}

// ---- Plain statements ----

void CheckAssignment(T3Tree_Node* node) {
  T3Tree_Node* target = node->as<T3AssignStmt>()->lhs;
  if (HasFailed(target) || (IsLvalue(target) && !IsObjectType(ExpressionBaseType(target)))) return;
  vexa_filtered_error(ERR_lvalue, PositionOf(node));
}

void CheckReturn(T3Tree_Node* node) {
  RefuseInInterleave(node, "return");
  T3Tree_Node* owner = node->place == nullptr ? nullptr : node->place->vexa_owner;
  if (owner != nullptr && !owner->is<T3Function>() && !owner->is<T3TestStep>())
    NotAllowedHere(node, "return");
}

void CheckSetVerdict(T3Tree_Node* node) {
  RefuseInControlPart(node, "verdict operation");
  auto* verdict = node->as<T3SetVerdictStmt>()->verdict->try_as<T3VerdictLiteral>();
  if (verdict != nullptr && verdict->value == t3_verdict_t::Error)
    vexa_filtered_error(ERR_setverdict_error, PositionOf(node));
}

void CheckAction(T3Tree_Node* node) {
  T3Tree_Node* action = node->as<T3SUTStmt>()->action;
  if (!IsGiven(action) || HasFailed(action)) return;
  T3Tree_Node* type = ExpressionBaseType(action);
  if (!IsCharStringType(type) && !IsUniversalCharStringType(type)) WarnAt(node, "not a string sut action");
}

void CheckRepeat(T3Tree_Node* node) {
  RefuseInInterleave(node, "repeat");
  if (node->place != nullptr && T3Is<T3NoStmt>(node->place->enclosing_alt)) NotAllowedHere(node, "repeat");
}

void CheckBreak(T3Tree_Node* node) {
  T3Tree_Node* owner = node->place == nullptr ? nullptr : node->place->vexa_break_continue_owner;
  if (owner == nullptr) return;
  auto* altstep =
      node->place->vexa_owner == nullptr ? nullptr : node->place->vexa_owner->try_as<T3TestStep>();
  const bool fits = owner->is<_T3LoopStmt>() || owner->is<T3AltStmt>() || owner->is<T3InterleaveStmt>() ||
                    owner->is<T3CallStmt>();
  if (!fits || (altstep != nullptr && altstep->body == owner)) NotAllowedHere(node, "break");
}

// What stands in an alternative continues the loop around.
void CheckContinue(T3Tree_Node* node) {
  T3Tree_Node* at = node->place == nullptr ? nullptr : node->place->vexa_break_continue_owner;
  while (T3Is<_T3Stmt>(at) && !at->is<_T3LoopStmt>() && at->place != nullptr)
    at = at->place->vexa_break_continue_owner;
  if (at != nullptr && !at->is<_T3LoopStmt>()) NotAllowedHere(node, "continue");
}

void CheckDeactivate(T3Tree_Node* node) {
  RefuseInInterleave(node, "deactivate");
  T3Tree_Node* operand = node->as<T3DeactivateStmt>()->teststep;
  if (IsGiven(operand) && !HasBeenRefused(operand) && !ExpressionBaseType(operand)->is<T3Default>())
    vexa_filtered_error(ERR_deactivate_wo_def_ref, PositionOf(node));
}

// ---- Timers and components ----

bool IsTimerObject(T3Tree_Node* object) {
  return object->is<T3AnyTimer>() || object->is<T3AllTimer>() ||
         T3Is<T3TimerType>(ExpressionBaseType(object));
}

bool IsPortObject(T3Tree_Node* object) {
  T3Tree_Node* type = ExpressionBaseType(object);
  return object->is<T3AnyPort>() || object->is<T3AllPort>() || type == gT3AnyPortType ||
         T3Is<T3PortType>(type);
}

bool IsComponentObject(T3Tree_Node* object) {
  T3Tree_Node* type = ExpressionBaseType(object);
  return T3Is<T3ComponentType>(type) || type == gT3AnyComponentType;
}

void CheckTimeout(T3Tree_Node* node) {
  T3Tree_Node* timer = node->as<T3TimeoutStmt>()->timer;
  if (!HasFailed(timer) && (!IsTimerObject(timer) || !IsRvalue(timer)))
    vexa_filtered_error(ERR_invalid_timer, PositionOf(node));
}

// True when the statement has been refused because its object is an array.
bool RefuseArray(T3Tree_Node* node, T3Tree_Node* object, const char* operation) {
  if (!T3Is<T3ArrayType>(ExpressionBaseType(object))) return false;
  vexa_filtered_error(ERR_illegal_operation_for_arr, PositionOf(node), operation);
  return true;
}

void CheckStop(T3Tree_Node* node) {
  T3Tree_Node* object = node->as<T3StopStmt>()->object;
  if (!IsGiven(object)) return RefuseInInterleave(node, "stop");
  if (HasFailed(object) || RefuseArray(node, object, "stop")) return;
  if (IsTimerObject(object) && IsRvalue(object)) return;
  const bool port = IsPortObject(object);
  if (!port) RefuseInInterleave(node, "stop");
  RefuseInControlPart(node, port ? "port operation" : "'<comp>.stop'");
  if ((!port && !IsComponentObject(object)) || !IsRvalue(object))
    vexa_filtered_error(ERR_rvalue, PositionOf(node));
}

void CheckKill(T3Tree_Node* node) {
  RefuseInInterleave(node, "kill");
  RefuseInControlPart(node, "'<comp>.kill'");
  T3Tree_Node* object = node->as<T3KillStmt>()->object;
  if (!IsGiven(object) || HasFailed(object) || RefuseArray(node, object, "kill")) return;
  if (!IsComponentObject(object) || !IsRvalue(object))
    vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
}

void CheckFinished(T3Tree_Node* node, T3Tree_Node* component) {
  RefuseInControlPart(node, "'done'");
  if (!HasFailed(component) && (!IsComponentObject(component) || !IsRvalue(component)))
    vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
}

void CheckDone(T3Tree_Node* node) {
  CheckFinished(node, node->as<T3DoneStmt>()->component);
}
void CheckKilled(T3Tree_Node* node) {
  CheckFinished(node, node->as<T3KilledStmt>()->component);
}

void CheckTimerStart(T3StartStmt* start) {
  const auto duration = IsGiven(start->argument) ? ConstFloatValue(start->argument) : std::nullopt;
  if (!duration) return;
  if (*duration < 0.0) vexa_filtered_error(ERR_negative_duration, PositionOf(start));
  if (*duration > kExcessiveDuration)
    WarnAt(start, "starting timer with excessive duration (>= 10,000 seconds)");
}

void CheckComponentStart(T3StartStmt* start) {
  RefuseInControlPart(start, "'<comp>.start'");
  auto* call =
      T3Is<T3Parameterization>(start->argument) ? start->argument->as<T3Parameterization>() : nullptr;
  T3Tree_Node* callee = CalleeOf(call);
  if (call != nullptr && callee == nullptr) return;
  auto* function = callee == nullptr ? nullptr : callee->try_as<T3Function>();
  if (function == nullptr) return vexa_filtered_error(ERR_start_wo_function, PositionOf(start));
  const ParameterKinds kinds = KindsOf(function->fpl);
  RefuseParameters(start, "started function", kinds.timer, "timer");
  RefuseParameters(start, "started function", kinds.port, "port");
  T3Tree_Node* component = ComponentOf(function);
  T3Tree_Node* object = ExpressionBaseType(start->object);
  if (component->is<T3NoType>()) vexa_filtered_error(ERR_start_wo_runs_on, PositionOf(start));
  if (component->is<T3ComponentType>() && object->is<T3ComponentType>() && !IsCompatible(component, object))
    vexa_filtered_error(ERR_incompatible_start, PositionOf(start));
}

// What is no port, timer or component; a type of ports or components is none, nor is a call of a timer.
void RefuseObject(T3Tree_Node* node, T3Tree_Node* object) {
  auto* identifier = object->try_as<T3Identifier>();
  if (IsTimerObject(object))
    vexa_filtered_error(ERR_invalid_timer, PositionOf(node));
  else if (!IsPortObject(object))
    vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
  else if (identifier != nullptr)
    vexa_filtered_error(ERR_invalid_port_with_name, PositionOf(node), identifier->id);
  else
    vexa_filtered_error(ERR_invalid_port, PositionOf(node));
}

void CheckStart(T3Tree_Node* node) {
  auto* start = node->as<T3StartStmt>();
  if (HasFailed(start->object) || RefuseArray(start, start->object, "start")) return;
  if (IsPortObject(start->object)) RefuseInControlPart(start, "port operation");
  if (!IsRvalue(start->object)) return RefuseObject(start, start->object);
  if (IsTimerObject(start->object)) return CheckTimerStart(start);
  if (IsComponentObject(start->object)) return CheckComponentStart(start);
  if (!IsPortObject(start->object)) return RefuseObject(start, start->object);
  // A port takes nothing to start with: a timer is meant, or a component.
  if (IsGiven(start->argument) && !HasFailed(start->argument))
    vexa_filtered_error(start->argument->is<T3Parameterization>() ? ERR_invalid_comp_ref : ERR_invalid_timer,
                        PositionOf(start));
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3LoopStmt, CheckLoop},
    {T3Kind::T3GotoStmt, CheckGoto},
    {T3Kind::T3DeclStmt, CheckDeclaration},
    {T3Kind::_T3Alt, CheckGuard},
    {T3Kind::T3AltStmt, CheckElse},
    {T3Kind::T3AltStmt, WarnOfEffectsInAlt},
    {T3Kind::T3TestStep, WarnOfEffectsInAltstep},
    {T3Kind::T3CallStmt, WarnOfEffectsInCall},
    {T3Kind::T3AssignStmt, CheckAssignment},
    {T3Kind::T3RetStmt, CheckReturn},
    {T3Kind::T3SetVerdictStmt, CheckSetVerdict},
    {T3Kind::T3SUTStmt, CheckAction},
    {T3Kind::T3RepeatStmt, CheckRepeat},
    {T3Kind::T3BreakStmt, CheckBreak},
    {T3Kind::T3ContinueStmt, CheckContinue},
    {T3Kind::T3DeactivateStmt, CheckDeactivate},
    {T3Kind::T3TimeoutStmt, CheckTimeout},
    {T3Kind::T3StopStmt, CheckStop},
    {T3Kind::T3KillStmt, CheckKill},
    {T3Kind::T3DoneStmt, CheckDone},
    {T3Kind::T3KilledStmt, CheckKilled},
    {T3Kind::T3StartStmt, CheckStart},
};
}  // namespace

std::span<const T3Rule> StatementRules() {
  return kRules;
}
