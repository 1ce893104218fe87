#include "generator/behaviour/CGStatement.h"
#include "generator/expressions/CGModes.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/behaviour/CGAlternatives.h"
#include "generator/expressions/CGCalls.h"
#include "generator/behaviour/CGConfiguration.h"
#include "generator/behaviour/CGJumps.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/expressions/CGReads.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/types/CGValue.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "frontend/T3KindCover.h"
#include "support/ModuleCaches.h"

namespace {
std::string ScopeAddress(std::string_view name) {
  return joined({"&(", name, ")"});
}

tPosition PositionOfStmt(T3Tree_Node* statement) {
  return statement->as<_T3StmtList>()->position;
}

// A text that a construct keeps for what lies in it.
const char* Keep(const std::string& text) {
  return gT3AST.KeepText(text);
}

// A memory scope with its own blocks of source locations: what blocks and `for` share.
template <class Node>
void BeginMemoryScope(Node* node, CFunction& function) {
  const std::string scope = function.getTmpVariable(LUMO_MEMORY_SCOPE_T);
  node->cold().temp_memory_scope = Keep(scope);
  function.call(LUMO_MEMORY_TEMP_BEGIN, {ScopeAddress(scope), VEXA_CONTEXT});
  function.call(LUMO_SOURCE_LOCATION_PUSH_BLOCK, {VEXA_CONTEXT});
}

// The calls that leave a scope; its variable stays taken.
void LeaveMemoryScope(const char* scope, T3Tree_Node* statements, CFunction& function) {
  function.call(LUMO_SOURCE_LOCATION_POP_BLOCK, {VEXA_CONTEXT});
  DeleteTimers(statements, function);
  function.call(LUMO_MEMORY_TEMP_END, {ScopeAddress(scope), VEXA_CONTEXT});
}

bool IsFunctionOrControlPartBody(T3Tree_Node* block) {
  T3Tree_Node* owner = block->place->vexa_enclosing_block;
  return owner->is<_T3FunctionBodyDecl>() || owner->is<T3ControlPart>();
}

// Evaluates a condition, and returns the text by which it is asked; what it has taken is free again behind
// the statement that asks, which is the next one.
std::string_view Condition(T3Tree_Node* condition, CFunction& function) {
  const CGStatementScope scope(function);
  return cg::InC(condition, function);
}

// C cannot hold the statements of a condition between `else` and `if`: a chain is made flat, each branch
// leaving it by a jump.
void CGIf(T3IfStmt* statement, CFunction& function) {
  const bool has_else = statement->else_stmt->is<_T3Stmt>();
  if (!statement->else_stmt->is<T3IfStmt>() || statement->else_stmt->as<_T3Stmt>()->next->is<_T3Stmt>()) {
    function.beginIf(Condition(statement->condition, function));
    CGStatement(statement->then_stmt, function);
    function.endIf();
    if (!has_else) return;
    function.beginElse();
    CGStatement(statement->else_stmt, function);
    function.endIf();
    return;
  }
  auto& inner = statement->else_stmt->as<T3IfStmt>()->cold();
  std::string label = statement->cold().end_elseif_label;
  const bool is_head = label.empty();
  if (is_head) label = function.getNewLabel();
  inner.end_elseif_label = Keep(label);
  function.beginIf(Condition(statement->condition, function));
  CGStatement(statement->then_stmt, function);
  function.addGoto(label);
  function.endIf();
  CGStatement(statement->else_stmt, function);
  inner.end_elseif_label = "";
  if (is_head) function.addLabel(label);
}

struct LoopLabels {
  std::string leave;
  std::string again;
};

LoopLabels BeginLoopBody(_T3LoopStmt* loop, CFunction& function) {
  CallComponentControl(function);
  LoopLabels labels{function.getNewLabel(), function.getNewLabel()};
  loop->cold().vexa_break_label = Keep(labels.leave);
  loop->cold().vexa_continue_label = Keep(labels.again);
  return labels;
}

// A label at the end of a scope of C; behind any other one stands at least the end of the block.
void AddEmptyStatementLabel(std::string_view label, CFunction& function) {
  function.addLabel(label);
  function.addText(";");
}

// True for a condition that comes to the same text whenever it is generated: an array of arguments is another
// one each time.
bool HasOneText(T3Tree_Node* condition) {
  bool has = true;
  ForEachInSubtree(condition, [&has](T3Tree_Node* node) {
    has = has && !node->is<T3Parameterization>() && !node->is<T3Match>() && !node->is<T3ValueOf>() &&
          !node->is<T3TemplateDef>();
    return has;
  });
  return has;
}

// True for what makes values when it is evaluated, which then live as long as the memory scope around.
bool MakesValues(T3Tree_Node* root) {
  bool makes = false;
  ForEachInSubtree(root, [&makes](T3Tree_Node* node) {
    if (!node->is<_T3Expression>() || node->is<T3Identifier>() || node->is<T3Qualifier>()) return !makes;
    const bool compares = node->is<T3Equal>() || node->is<T3NotEqual>();
    const bool is_literal =
        node->is<T3IntLiteral>() || node->is<T3FloatLiteral>() || node->is<T3BooleanLiteral>();
    const bool is_arithmetic = node->is<_T3BinaryExpression>() || node->is<_T3UnaryExpression>();
    makes = makes || !(is_literal || (is_arithmetic && !compares && NaturalMode(node) == vexa_c_mode));
    return !makes;
  });
  return makes;
}

// The head of a loop. The condition is evaluated before it and again at the end of each round, into the same
// variables, since the same ones are free at both places; one that cannot has a variable of its own. What
// the evaluations make, and the step of `for`, is given back each time.
struct Rounds {
  std::string condition;
  bool has_one_text = true;
  std::string scope;
};

std::string BeginRoundScope(bool makes_values, CFunction& function) {
  if (!makes_values) return "";
  const std::string scope = function.getTmpVariable(LUMO_MEMORY_SCOPE_T);
  function.call(LUMO_MEMORY_TEMP_BEGIN, {ScopeAddress(scope), VEXA_CONTEXT});
  return scope;
}

void ClearRoundScope(std::string_view scope, CFunction& function) {
  if (!scope.empty()) function.call(LUMO_MEMORY_TEMP_CLEAR, {ScopeAddress(scope), VEXA_CONTEXT});
}

void EndRoundScope(const std::string& scope, CFunction& function) {
  if (scope.empty()) return;
  function.call(LUMO_MEMORY_TEMP_END, {ScopeAddress(scope), VEXA_CONTEXT});
  function.releaseTmpVariable(scope);
}

Rounds BeginRounds(T3Tree_Node* condition, bool makes_values, CFunction& function) {
  Rounds rounds;
  rounds.scope = BeginRoundScope(makes_values, function);
  rounds.condition = Condition(condition, function);
  rounds.has_one_text = HasOneText(condition);
  if (!rounds.has_one_text) {
    const std::string holds = function.getTmpVariable(C_BOOL);
    function.assign(holds, rounds.condition);
    rounds.condition = holds;
  }
  function.beginWhile(rounds.condition);
  return rounds;
}

void EndRounds(T3Tree_Node* condition, const Rounds& rounds, CFunction& function) {
  ClearRoundScope(rounds.scope, function);
  const std::string_view again = Condition(condition, function);
  if (!rounds.has_one_text)
    function.assign(rounds.condition, again);
  else if (again != rounds.condition)
    internal_error_ast("CGStatement", __LINE__, "EndRounds", condition);
  function.endWhile();
  if (!rounds.has_one_text) function.releaseTmpVariable(rounds.condition);
}

void CGWhile(T3WhileStmt* loop, CFunction& function) {
  const Rounds rounds = BeginRounds(loop->condition, MakesValues(loop->condition), function);
  const LoopLabels labels = BeginLoopBody(loop, function);
  CGStatement(loop->body, function);
  AddEmptyStatementLabel(labels.again, function);
  EndRounds(loop->condition, rounds, function);
  function.addLabel(labels.leave);
  EndRoundScope(rounds.scope, function);
}

void CGDoWhile(T3DoWhileStmt* loop, CFunction& function) {
  const std::string scope = BeginRoundScope(MakesValues(loop->condition), function);
  function.beginDoWhile();
  const LoopLabels labels = BeginLoopBody(loop, function);
  CGStatement(loop->body, function);
  AddEmptyStatementLabel(labels.again, function);
  ClearRoundScope(scope, function);
  function.endDoWhile(Condition(loop->condition, function));
  function.addLabel(labels.leave);
  EndRoundScope(scope, function);
}

bool IsPlainStep(T3Tree_Node* step) {
  auto* assignment = step->try_as<T3AssignStmt>();
  return assignment != nullptr && assignment->lhs->is<T3Identifier>() && !MakesValues(assignment->rhs) &&
         NaturalMode(assignment->rhs) == vexa_c_mode;
}

void CGFor(T3ForStmt* loop, CFunction& function) {
  BeginMemoryScope(loop, function);
  CGStatement(loop->init, function);
  function.addText("\n");
  const bool makes_values = MakesValues(loop->condition) || !IsPlainStep(loop->step);
  const Rounds rounds = BeginRounds(loop->condition, makes_values, function);
  const LoopLabels labels = BeginLoopBody(loop, function);
  CGStatement(loop->body, function);
  function.addLabel(labels.again);
  CGStatement(loop->step, function);
  EndRounds(loop->condition, rounds, function);
  function.addLabel(labels.leave);
  const std::string scope = loop->cold().temp_memory_scope;
  if (!rounds.scope.empty()) function.releaseTmpVariable(rounds.scope);
  LeaveMemoryScope(scope.c_str(), loop->init, function);
  function.releaseTmpVariable(scope);
}

// ---- Jumps ----

void CGBreak(T3BreakStmt* statement, CFunction& function) {
  T3Tree_Node* owner = statement->place->vexa_break_continue_owner;
  auto* loop = owner->try_as<_T3LoopStmt>();
  const std::string label = loop != nullptr ? loop->cold().vexa_break_label : BreakLabelOfAlt(owner);
  if (label.empty()) return CGLeaveNested(statement, owner);
  if (auto* interleave = owner->try_as<T3InterleaveStmt>())
    CGLeaveInterleave(statement, interleave, function);
  else
    TidyUp(statement, owner, function);
  function.addGoto(label);
}

// What stands in an alternative continues the loop around.
void CGContinue(T3ContinueStmt* statement, CFunction& function) {
  T3Tree_Node* owner = statement->place->vexa_break_continue_owner;
  while (owner->is<_T3Stmt>() && !owner->is<_T3LoopStmt>()) owner = owner->place->vexa_break_continue_owner;
  auto* loop = owner->try_as<_T3LoopStmt>();
  if (loop == nullptr) cg::NotSupported(owner);
  TidyUp(statement, loop, function);
  function.addGoto(loop->cold().vexa_continue_label);
}

// ---- Return ----

_T3FunctionBodyDecl* BehaviourAround(T3Tree_Node* statement) {
  return statement->place->vexa_owner->try_as<_T3FunctionBodyDecl>();
}

// The caller decides by the slot that it gives whether it gets a template or a value.
void ReturnTemplate(std::string_view slot, T3Tree_Node* result, CFunction& function) {
  const auto assign = [&](bool value_of_first) {
    const CGStatementScope scope(function);
    std::string location = CGTemplateExpression(result, vexa_template_plain, function);
    if (value_of_first) location = cg::Call(LUMO_VALUEOF, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
    function.call(LUMO_VALUE_ASSIGN, {slot, location, VEXA_CONTEXT});
  };
  function.beginIf(LUMO_VALUE_IS_DYNAMIC_TEMPLATE, {slot, VEXA_CONTEXT});
  assign(false);
  function.endIf();
  function.beginElse();
  assign(true);
  function.endIf();
}

void CGReturn(T3RetStmt* statement, CFunction& function) {
  auto* behaviour = BehaviourAround(statement);
  if (behaviour != nullptr && behaviour->is<T3TestStep>()) {
    GenSourceLocationEnd(behaviour->body, function);
    TidyUp(statement, nullptr, function);
    function.call(LUMO_SOURCE_LOCATION_POP_BLOCK, {VEXA_CONTEXT});
    DeleteTimers(behaviour->as<T3TestStep>()->decls, function);
    return GenReturn(LUMO_TEST_STEP_SUCCESSFUL_PROCEED_C, function);
  }
  auto* target = behaviour == nullptr ? nullptr : behaviour->try_as<T3Function>();
  if (target != nullptr && !statement->value->is<T3NoExpression>()) {
    const CGStatementScope scope(function);
    const std::string slot = std::string(VEXA_ARGV) + "[" + std::to_string(GetParNumber(target->fpl)) + "]";
    if (target->returns_template)
      ReturnTemplate(slot, statement->value, function);
    else
      CGAssign(slot, statement->value, false, function);
  }
  if (behaviour != nullptr) GenSourceLocationEnd(behaviour->body, function);
  TidyUp(statement, nullptr, function);
  GenReturn("", function);
}

// ---- Assignments ----

void ElementModified(std::string_view parent, std::string_view index, CFunction& function) {
  function.call(LUMO_LOG_ELEMENT_MODIFIED_EVENT, {parent, cg::CastToUnsignedLong(index), VEXA_CONTEXT});
}

std::string_view LeftSideParent(T3Tree_Node* parent, CFunction& function) {
  return cg::InRTS(parent, CGTemplateMode().with(CGAccess::Write), function);
}

// A part of what holds a template gets a template.
std::string RightSide(T3Tree_Node* parent, T3Tree_Node* rhs, CFunction& function) {
  return cg::HoldsTemplate(parent) ? CGTemplateExpression(rhs, vexa_template_plain, function)
                                   : std::string(cg::InRTS(rhs, vexa_temp_alloc, function));
}

// The value of a right side; as it is now, where the way to its target may change it.
std::string RightSideBefore(T3Tree_Node* whole, T3Tree_Node* rhs, T3Tree_Node* target, CFunction& function) {
  const bool is_kept = (!whole->is<T3Identifier>() && cg::Reads(rhs, target)) ||
                       cg::Operands({rhs, whole}).MayChange(0, false, function);
  std::string value = RightSide(whole, rhs, function);
  return is_kept ? cg::Kept(value, function) : value;
}

void AssignField(T3Qualifier* field, T3Tree_Node* rhs, CFunction& function) {
  T3Tree_Node* whole = cg::WholeOf(field);
  const std::string index = std::to_string(cg::PlaceOfField(field));
  if (IsRecordOrSetType(cg::TypeOf(whole))) {
    const std::string value = RightSideBefore(whole, rhs, field, function);
    const std::string_view parent = LeftSideParent(whole, function);
    function.call(LUMO_VALUE_ASSIGN_VECTOR_ELEMENT, {parent, index, value, VEXA_CONTEXT});
    return ElementModified(parent, index, function);
  }
  // The alternative is chosen before it gets its value, unless that comes from the alternative before.
  const bool reads = cg::Reads(rhs, field);
  const std::string value = reads ? cg::Kept(RightSide(whole, rhs, function), function) : "";
  const std::string_view parent = LeftSideParent(whole, function);
  const std::string chosen = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(chosen, LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_INDEX, {parent, index, VEXA_CONTEXT});
  if (reads)
    function.call(LUMO_VALUE_ASSIGN, {chosen, value, VEXA_CONTEXT});
  else if (cg::HoldsTemplate(whole))
    function.call(LUMO_VALUE_ASSIGN, {chosen, RightSide(whole, rhs, function), VEXA_CONTEXT});
  else
    CGAssign(chosen, rhs, true, function);
  ElementModified(parent, index, function);
}

void AssignElement(T3Subscription* element, T3Tree_Node* rhs, CFunction& function) {
  T3Tree_Node* type = cg::TypeOf(element->base);
  const char* word = type->is<T3ArrayType>() ? LUMO_VALUE_ASSIGN_VECTOR_ELEMENT_PARTIAL
                     : IsStringType(type)    ? LUMO_VALUE_ASSIGN_STRING_ELEMENT
                                             : LUMO_VALUE_ASSIGN_VECTOR_ELEMENT;
  cg::InC(element->index, function);
  const std::string_view index =
      cg::OperandInOrder(cg::Operands({element->index, rhs, element->base}), 0, vexa_c_mode, function);
  const std::string value = RightSideBefore(element->base, rhs, element, function);
  const std::string_view parent = LeftSideParent(element->base, function);
  function.call(word, {parent, cg::CastToUnsignedLong(index), value, VEXA_CONTEXT});
  ElementModified(parent, index, function);
}

// A variable or parameter that holds a template gets the right side as one.
void AssignTemplate(T3AssignStmt* statement, CFunction& function) {
  const std::string_view target = cg::InRTS(statement->lhs, CGTemplateMode(), function);
  const std::string value = CGTemplateExpression(statement->rhs, vexa_template_plain, function);
  function.call(LUMO_VALUE_ASSIGN, {target, value, VEXA_CONTEXT});
  function.call(LUMO_LOG_VARIABLE_MODIFIED_EVENT, {target, VEXA_CONTEXT});
}

void CGAssignment(T3AssignStmt* statement, CFunction& function) {
  const CGStatementScope scope(function);
  auto* qualifier = statement->lhs->try_as<T3Qualifier>();
  if (qualifier != nullptr && cg::IsField(qualifier)) {
    T3Tree_Node* type = cg::TypeOf(cg::WholeOf(qualifier));
    if (IsRecordOrSetType(type) || type->is<T3UnionType>() || type->is<T3AnyType>())
      return AssignField(qualifier, statement->rhs, function);
  }
  if (auto* element = statement->lhs->try_as<T3Subscription>())
    return AssignElement(element, statement->rhs, function);
  if (statement->lhs->is<T3Identifier>() && cg::HoldsTemplate(statement->lhs))
    return AssignTemplate(statement, function);
  const std::string_view target = cg::InRTS(statement->lhs, vexa_temp_alloc, function);
  if (!statement->rhs->is<T3CompoundValue>() || !cg::Reads(statement->rhs, statement->lhs))
    return CGAssign(target, statement->rhs, true, function);
  // What is filled in place is a copy, since the parts are made of the old value.
  const std::string filled = cg::Kept(target, function);
  CGAssign(filled, statement->rhs, false, function);
  function.call(LUMO_VALUE_ASSIGN, {target, filled, VEXA_CONTEXT});
  function.call(LUMO_LOG_VARIABLE_MODIFIED_EVENT, {target, VEXA_CONTEXT});
}

// ---- Operations ----

// What is logged of an expression; a template's matching mechanisms with the values of its parameters.
std::string Logged(T3Tree_Node* expression, CFunction& function) {
  if (!cg::HoldsTemplate(expression)) return std::string(cg::InRTS(expression, vexa_temp_alloc, function));
  return cg::Call(LUMO_TEMPLATEOF,
                  {cg::InRTS(expression, CGTemplateMode(), function), LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
}

// The array of what is logged, or the reasons of a verdict, with an end mark.
std::string TemplateList(T3Tree_Node* list, CFunction& function) {
  const size_t count = Items<T3TemplateListItem>(list).size();
  std::string array = function.declareArray(LUMO_VALUE_T, count + 1);
  const auto slot = [&array](size_t i) { return array + "[" + std::to_string(i) + "]"; };
  std::vector<T3Tree_Node*> items;
  for (auto* item : Items<T3TemplateListItem>(list)) items.push_back(item->expression);
  const cg::Operands operands(items);
  for (size_t i = 0; i < count; ++i) {
    const std::string logged = Logged(items[i], function);
    function.assign(slot(i), operands.MayChange(i, true, function) ? cg::Kept(logged, function) : logged);
  }
  function.assign(slot(count), C_NULL);
  return array;
}

void CGLog(T3LogStmt* statement, CFunction& function) {
  if (!statement->values->is<T3TemplateListItem>()) {
    function.call(
        LUMO_LOG_STRING_TO_ALL,
        {LUMO_LOG_MSG_TTCN3_C, CStringOfLiteral(StringM::StGetString(statement->message)), VEXA_CONTEXT});
    return;
  }
  CallComponentControl(function);
  const std::string array = TemplateList(statement->values, function);
  function.call(LUMO_LOG_LIST_TO_ALL, {LUMO_LOG_MSG_TTCN3_C, array, VEXA_CONTEXT});
}

void CGSetVerdict(T3SetVerdictStmt* statement, CFunction& function) {
  const std::string_view verdict = cg::InRTS(statement->verdict, vexa_temp_alloc, function);
  const std::string reasons =
      statement->values->is<T3TemplateListItem>() ? TemplateList(statement->values, function) : C_NULL;
  function.call(LUMO_COMPONENT_SET_LOCAL_VERDICT, {verdict, reasons, VEXA_CONTEXT});
}

void StartComponent(std::string_view component, T3Tree_Node* argument, CFunction& function) {
  auto* call = argument->try_as<T3Parameterization>();
  T3Tree_Node* behaviour = call == nullptr ? nullptr : BehindImport(Def(call));
  if (!T3Is<_T3FunctionDecl>(behaviour)) cg::NotSupported(argument);
  T3Tree_Node* decl = Def(call);
  T3Tree_Node* formals = behaviour->as<_T3FunctionDecl>()->fpl;
  const std::string array = CGActualParameterList(call->apl, formals, false, function);
  function.call(LUMO_COMPONENT_START,
                {component, Quote(GetRealFunctionModule(decl)), Quote(GetRealFunctionName(decl)),
                 std::to_string(GetParNumber(formals)), array, VEXA_CONTEXT});
}

void CGStart(T3StartStmt* statement, CFunction& function) {
  T3Tree_Node* type = cg::TypeOf(statement->object);
  const std::string_view object = cg::InRTS(statement->object, vexa_temp_alloc, function);
  if (type->is<T3PortType>()) {
    function.call(LUMO_PORT_START, {object, VEXA_CONTEXT});
  } else if (type->is<T3TimerType>()) {
    const std::string_view duration = statement->argument->is<T3NoExpression>()
                                          ? LUMO_DURATION_DEFAULT_C
                                          : cg::InC(statement->argument, function);
    function.call(LUMO_TIMER_START, {object, duration, VEXA_CONTEXT});
  } else {
    StartComponent(object, statement->argument, function);
  }
}

void StopOrKill(T3Tree_Node* object, const char* component_word, CFunction& function) {
  if (object->is<T3NoExpression>()) {
    CGPopSourceLocation(function);
    function.call(component_word, {LUMO_NO_VALUE_C, VEXA_CONTEXT});
    return;
  }
  T3Tree_Node* type = cg::TypeOf(object);
  const char* word = type->is<T3TimerType>()  ? LUMO_TIMER_STOP
                     : type->is<T3PortType>() ? LUMO_PORT_STOP
                                              : component_word;
  function.call(word, {cg::InRTS(object, vexa_temp_alloc, function), VEXA_CONTEXT});
}

void CallWith(const char* word, T3Tree_Node* operand, CFunction& function) {
  function.call(word, {cg::InRTS(operand, vexa_temp_alloc, function), VEXA_CONTEXT});
}

void CGDeactivate(T3DeactivateStmt* statement, CFunction& function) {
  if (statement->teststep->is<T3NoExpression>())
    function.call(LUMO_DEACTIVATE, {LUMO_VALUE_ALL_C, VEXA_CONTEXT});
  else
    CallWith(LUMO_DEACTIVATE, statement->teststep, function);
}

void CGInvocation(T3Tree_Node* invocation, CFunction& function) {
  const CGStatementScope scope(function);
  if (invocation->is<T3Execute>()) {
    // Its generator forms the text of the call only.
    function.addLine({cg::InRTS(invocation, vexa_temp_alloc, function), ";"});
    return;
  }
  auto* call = invocation->try_as<T3Parameterization>();
  if (call == nullptr) {
    const std::string_view location = cg::InRTS(invocation, vexa_temp_alloc, function);
    if (invocation->is<T3Create>()) function.addLine({location, ";"});
    return;
  }
  T3Tree_Node* decl = BehindImport(Def(call));
  if (T3Is<T3TestStep>(decl)) return CGAltstepCall(call, function);
  CGFunctionCall(call, vexa_temp_alloc, function);
}

// Statements that are one operation.
void CGOperation(T3Tree_Node* statement, CFunction& function) {
  const CGStatementScope scope(function);
  switch (statement->kind) {
    case T3Kind::T3ConnectStmt:
      return CGConnection(LUMO_COMPONENT_CONNECT_PORT, statement->as<_T3ConfStmt>(), function);
    case T3Kind::T3DisconnectStmt:
      return CGConnection(LUMO_COMPONENT_DISCONNECT_PORT, statement->as<_T3ConfStmt>(), function);
    case T3Kind::T3MapStmt:
      return CGConnection(LUMO_COMPONENT_MAP_PORT, statement->as<_T3ConfStmt>(), function);
    case T3Kind::T3UnmapStmt:
      return CGConnection(LUMO_COMPONENT_UNMAP_PORT, statement->as<_T3ConfStmt>(), function);
    case T3Kind::T3ClearStmt:
      return CallWith(LUMO_PORT_CLEAR, statement->as<_T3PortStmt>()->port, function);
    case T3Kind::T3HaltStmt:
      return CallWith(LUMO_PORT_HALT, statement->as<_T3PortStmt>()->port, function);
    case T3Kind::T3StartStmt:
      return CGStart(statement->as<T3StartStmt>(), function);
    case T3Kind::T3StopStmt:
      return StopOrKill(statement->as<T3StopStmt>()->object, LUMO_COMPONENT_STOP, function);
    case T3Kind::T3KillStmt:
      return StopOrKill(statement->as<T3KillStmt>()->object, LUMO_COMPONENT_KILL, function);
    case T3Kind::T3SetVerdictStmt:
      return CGSetVerdict(statement->as<T3SetVerdictStmt>(), function);
    case T3Kind::T3DeactivateStmt:
      return CGDeactivate(statement->as<T3DeactivateStmt>(), function);
    case T3Kind::T3SUTStmt:
      return CallWith(LUMO_PORT_SUT_ACTION, statement->as<T3SUTStmt>()->action, function);
    case T3Kind::T3LogStmt:
      return CGLog(statement->as<T3LogStmt>(), function);
    default:
      cg::NotSupported(statement);
  }
}

using Structured = T3Kinds<T3DeclStmt, T3InvocationStmt, T3BlockStmt, T3IfStmt, _T3LoopStmt, T3BreakStmt,
                           T3ContinueStmt, T3AssignStmt, T3RetStmt, T3LabelStmt, T3GotoStmt, T3AltStmt,
                           T3InterleaveStmt, T3RepeatStmt, T3SendStmt, T3CallStmt, T3ReplyStmt, T3RaiseStmt>;
using Blocking = T3Kinds<T3DoneStmt, T3KilledStmt, T3TimeoutStmt, _T3ReceivingPortStmt, _T3CheckStmt>;
using Operation = T3Kinds<_T3ConfStmt, T3ClearStmt, T3HaltStmt, T3StartStmt, T3StopStmt, T3KillStmt,
                          T3SetVerdictStmt, T3DeactivateStmt, T3SUTStmt, T3LogStmt>;
static_assert(T3Covers<_T3Stmt, Structured, Blocking, Operation>());

void CGStatementWorker(T3Tree_Node* statement, CFunction& function) {
  switch (statement->kind) {
    case T3Kind::T3DeclStmt:
      for (auto* decl : Items<_T3Decl>(statement->as<T3DeclStmt>()->decl))
        decl->is<T3TemplateDecl>() ? CGLocalTemplate(decl->as<T3TemplateDecl>(), function)
                                   : CGLocalValue(decl, function);
      break;
    case T3Kind::T3InvocationStmt:
      return CGInvocation(statement->as<T3InvocationStmt>()->invocation, function);
    case T3Kind::T3BlockStmt:
      return CGBlockAround(statement->as<T3BlockStmt>(), function,
                           [&] { CGStatement(statement->as<T3BlockStmt>()->body, function); });
    case T3Kind::T3IfStmt:
      return CGIf(statement->as<T3IfStmt>(), function);
    case T3Kind::T3WhileStmt:
      return CGWhile(statement->as<T3WhileStmt>(), function);
    case T3Kind::T3DoWhileStmt:
      return CGDoWhile(statement->as<T3DoWhileStmt>(), function);
    case T3Kind::T3ForStmt:
      return CGFor(statement->as<T3ForStmt>(), function);
    case T3Kind::T3BreakStmt:
      return CGBreak(statement->as<T3BreakStmt>(), function);
    case T3Kind::T3ContinueStmt:
      return CGContinue(statement->as<T3ContinueStmt>(), function);
    case T3Kind::T3AssignStmt:
      return CGAssignment(statement->as<T3AssignStmt>(), function);
    case T3Kind::T3RetStmt:
      return CGReturn(statement->as<T3RetStmt>(), function);
    case T3Kind::T3LabelStmt:
      return CGLabel(statement->as<T3LabelStmt>(), function);
    case T3Kind::T3GotoStmt:
      return CGGoto(statement->as<T3GotoStmt>(), function);
    case T3Kind::T3AltStmt:
      return CGAlt(statement->as<T3AltStmt>(), function);
    case T3Kind::T3InterleaveStmt:
      return CGInterleave(statement->as<T3InterleaveStmt>(), function);
    case T3Kind::T3RepeatStmt:
      return CGRepeat(statement->as<T3RepeatStmt>(), function);
    case T3Kind::T3SendStmt:
      return CGSend(statement->as<T3SendStmt>(), function);
    case T3Kind::T3CallStmt:
      return CGCall(statement->as<T3CallStmt>(), function);
    case T3Kind::T3ReplyStmt:
      return CGReply(statement->as<T3ReplyStmt>(), function);
    case T3Kind::T3RaiseStmt:
      return CGRaise(statement->as<T3RaiseStmt>(), function);
    default:
      return IsBlockingOperation(statement) ? CGBlockingOperation(statement, function)
                                            : CGOperation(statement, function);
  }
}

// The end of a construct that has one; null for any other.
const tPosition* EndOf(T3Tree_Node* statement) {
  if (auto* block = statement->try_as<T3BlockStmt>()) return &block->end_position;
  if (auto* alt = statement->try_as<T3AltStmt>()) return &alt->end_position;
  if (auto* call = statement->try_as<T3CallStmt>()) return &call->end_position;
  return nullptr;
}
}  // namespace

void CGStatement(T3Tree_Node* list, CFunction& function) {
  for (auto* at : Items<_T3Stmt>(list)) CGOneStatement(at, function);
}

void CGOneStatement(T3Tree_Node* statement, CFunction& function) {
  GenSourceLocation(statement, function);
  CGStatementWorker(statement, function);
}

void CGBlockAround(T3BlockStmt* block, CFunction& function, const std::function<void()>& statements) {
  BeginMemoryScope(block, function);
  const std::string scope = block->cold().temp_memory_scope;
  statements();
  function.addText("\n");
  if (!IsFunctionOrControlPartBody(block)) GenSourceLocationEnd(block, function);
  LeaveMemoryScope(scope.c_str(), block->body, function);
  function.releaseTmpVariable(scope);
}

void GenSourceLocation(T3Tree_Node* statement, CFunction& function) {
  if (statement->is<T3BlockStmt>() || statement->is<T3DeclStmt>()) return;
  CGCommentPlace(function, PositionOfStmt(statement), T3KindName(statement));
  if (!statement->is<T3ForStmt>()) CGSetSourceLine(function, PositionOfStmt(statement));
}

void GenSourceLocationEnd(T3Tree_Node* statement, CFunction& function) {
  const tPosition* end = EndOf(statement);
  if (end == nullptr || *end == NoPosition) return;
  CGCommentPlace(function, *end, joined({T3KindName(statement), " marks end of scope"}));
  CGSetSourceLine(function, *end);
}

namespace {
// By the numbers of lists, which are left at each `return` in them.
std::unordered_map<uint32_t, T3NodeList>& g_timers = *new std::unordered_map<uint32_t, T3NodeList>;
const ModuleCache timers([] { g_timers.clear(); });

void CollectTimers(T3Tree_Node* declarations, T3NodeList& found) {
  for (auto* decl : Items<_T3Decl>(declarations))
    if (IsTimerDeclaration(decl)) found.push_back(decl);
}

const T3NodeList& TimersOf(T3Tree_Node* list) {
  const auto [entry, is_new] = g_timers.try_emplace(list->number);
  if (!is_new) return entry->second;
  CollectTimers(list, entry->second);
  for (auto* at : Items<_T3Stmt>(list))
    if (auto* declarations = at->try_as<T3DeclStmt>()) CollectTimers(declarations->decl, entry->second);
  return entry->second;
}
}  // namespace

void DeleteTimers(T3Tree_Node* list, CFunction& function) {
  for (T3Tree_Node* decl : TimersOf(list))
    if (HasRTSLocation(decl))
      function.call(LUMO_VALUE_DELETE, {ScopeAddress(RTSLocation(decl)), VEXA_CONTEXT});
}

namespace {
// The alternatives of an altstep have no scope of memory of their own.
void LeaveAlt(T3AltStmt* alt, CFunction& function) {
  const std::string scope = alt->cold().temp_memory_scope;
  if (!scope.empty()) function.call(LUMO_MEMORY_TEMP_END, {ScopeAddress(scope), VEXA_CONTEXT});
}
}  // namespace

void LeaveBlock(T3BlockStmt* block, CFunction& function) {
  LeaveMemoryScope(block->cold().temp_memory_scope, block->body, function);
}

void TidyUp(T3Tree_Node* from, T3Tree_Node* to, CFunction& function) {
  for (T3Tree_Node* at = from->place->vexa_enclosing_block; at != to; at = at->place->vexa_enclosing_block) {
    if (at->is<T3ControlPart>() || at->is<_T3FunctionBodyDecl>()) return;
    if (auto* block = at->try_as<T3BlockStmt>())
      LeaveBlock(block, function);
    else if (auto* loop = at->try_as<T3ForStmt>())
      LeaveMemoryScope(loop->cold().temp_memory_scope, loop->init, function);
    else if (auto* alt = at->try_as<T3AltStmt>())
      LeaveAlt(alt, function);
    else if (!at->is<_T3Stmt>())
      internal_error_ast("CGStatement", __LINE__, "CGStatement::TidyUp", at);
  }
}

void GenReturn(std::string_view value, CFunction& function) {
  CGPopSourceLocation(function);
  value.empty() ? function.addLine("return;") : function._return(value);
}

void CallComponentControl(CFunction& function) {
  function.call(LUMO_COMPONENT_CONTROL, {VEXA_CONTEXT});
}
