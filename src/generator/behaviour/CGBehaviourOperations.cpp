// Expressions that call behaviours, and operations on components and timers.
#include "analysis/types/T3Types.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
T3Tree_Node* FormalsOf(T3Tree_Node* call) {
  T3Tree_Node* decl = BehindImport(Def(call));
  if (!T3Is<_T3FunctionDecl>(decl)) NotSupported(call);
  return decl->as<_T3FunctionDecl>()->fpl;
}

// The text of the call only: where it stands alone it is a statement.
void GenerateExecute(T3Execute* node, CFunction& function) {
  auto* call = node->testcase->try_as<T3Parameterization>();
  if (call == nullptr) NotSupported(node->testcase);
  T3Tree_Node* decl = Def(call);
  T3Tree_Node* formals = FormalsOf(call);
  const std::string array = CGActualParameterListForTestcase(call->apl, formals, function);
  CGInstantiateOutOmittedParameters(call->apl, formals, array, function);
  const std::string_view timeout =
      node->timeout->is<T3NoExpression>() ? LUMO_DURATION_FOREVER_C : InC(node->timeout, function);
  SetRTSLocation(node, Call(LUMO_COMPONENT_EXECUTE,
                            {Quote(GetRealFunctionModule(decl)), Quote(GetRealFunctionName(decl)),
                             std::to_string(GetParNumber(formals)), array, timeout, VEXA_CONTEXT}));
}

void GenerateCreate(T3Create* node, Mode mode, CFunction& function) {
  const std::string_view name = InRTS(node->name, vexa_temp_alloc, function);
  const std::string instance =
      Call(LUMO_TYPE_INSTANTIATE_VALUE,
           {VEXATypeRef(ExpressionLocalType(node)), AllocationMode(mode.allocation), VEXA_CONTEXT});
  SetRTSLocation(
      node, Call(LUMO_COMPONENT_CREATE, {instance, name, node->is_alive ? C_TRUE : C_FALSE, VEXA_CONTEXT}));
}

void Ask(T3Tree_Node* node, const char* word, T3Tree_Node* operand, CFunction& function) {
  SetCLocation(node, Call(word, {InRTS(operand, vexa_temp_alloc, function), VEXA_CONTEXT}));
}

void GenerateActivate(T3Activate* node, Mode mode, CFunction& function) {
  auto* call = node->teststep->try_as<T3Parameterization>();
  if (call == nullptr) NotSupported(node->teststep);
  const std::string location = AllocateRTSValue(node, mode, function);
  T3Tree_Node* decl = Def(call);
  T3Tree_Node* formals = FormalsOf(call);
  const std::string array = CGActualParameterList(call->apl, formals, false, function);
  const std::string reference = Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(
      reference, LUMO_ACTIVATE,
      {Quote(GetRealFunctionModule(decl)), Quote(GetRealFunctionName(decl)),
       std::to_string(GetParNumber(formals)), array, AllocationMode(mode.allocation), VEXA_CONTEXT});
  function.call(LUMO_VALUE_ASSIGN, {location, reference, VEXA_CONTEXT});
}

const char* ComponentAccess(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3MTC:
      return LUMO_COMPONENT_MTC;
    case T3Kind::T3Self:
      return LUMO_COMPONENT_SELF;
    case T3Kind::T3System:
      return LUMO_COMPONENT_SYSTEM;
    case T3Kind::T3GetVerdict:
      return LUMO_COMPONENT_GET_LOCAL_VERDICT;
    default:
      return nullptr;
  }
}

const char* AnyOrAll(T3Tree_Node* node) {
  if (node->is<T3AnyComponent>() || node->is<T3AnyTimer>() || node->is<T3AnyPort>()) return LUMO_VALUE_ANY_C;
  if (node->is<T3AllComponent>() || node->is<T3AllTimer>() || node->is<T3AllPort>()) return LUMO_VALUE_ALL_C;
  return nullptr;
}
}  // namespace

bool Behaviour(T3Tree_Node* node, Mode mode, CFunction& function) {
  if (const char* word = ComponentAccess(node))
    SetRTSLocation(node, Call(word, {VEXA_CONTEXT}));
  else if (const char* value = AnyOrAll(node))
    SetRTSLocation(node, value);
  else if (auto* call = node->try_as<T3Parameterization>())
    CGFunctionCall(call, mode, function);
  else if (auto* execute = node->try_as<T3Execute>())
    GenerateExecute(execute, function);
  else if (auto* create = node->try_as<T3Create>())
    GenerateCreate(create, mode, function);
  else if (auto* running = node->try_as<T3Running>())
    Ask(node,
        TypeOf(running->object)->is<T3TimerType>() || running->object->is<T3AnyTimer>()
            ? LUMO_TIMER_IS_RUNNING
            : LUMO_COMPONENT_IS_RUNNING,
        running->object, function);
  else if (auto* alive = node->try_as<T3Alive>())
    Ask(node, LUMO_COMPONENT_IS_ALIVE, alive->object, function);
  else if (auto* read = node->try_as<T3Read>())
    Ask(node, LUMO_TIMER_READ, read->timer, function);
  else if (auto* activate = node->try_as<T3Activate>())
    GenerateActivate(activate, mode, function);
  else
    return false;
  return true;
}
}  // namespace cg
