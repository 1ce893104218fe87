#include "generator/expressions/CGCalls.h"
#include "frontend/T3Lists.h"
#include "generator/expressions/CGModes.h"

#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace {
T3Tree_Node* Behind(T3Tree_Node* decl) {
  return decl->is<_T3ImportDecl>() ? decl->as<_T3ImportDecl>()->attr().def_aux : decl;
}

std::string Slot(std::string_view array, unsigned index) {
  return joined({array, "[", std::to_string(index), "]"});
}

// Whether the callee works on the caller's object.
bool IsReferenceParameter(T3Tree_Node* formal) {
  if (!formal->is<_T3TypedFormal>()) return true;
  auto* typed = formal->as<_T3TypedFormal>();
  T3Tree_Node* type = RootType(typed->type);
  return typed->pass != t3_par_pass_t::In || type->is<T3TimerType>() || type->is<T3PortType>();
}

// A variable, a parameter, or a part of one, that a callee may change.
bool IsTemplateObject(T3Tree_Node* node) {
  if (auto* element = node->try_as<T3Subscription>()) return IsTemplateObject(element->base);
  if (auto* field = node->try_as<T3Qualifier>(); field != nullptr && cg::IsField(field))
    return IsTemplateObject(cg::WholeOf(field));
  return T3Is<T3VarDecl>(Def(node)) || T3Is<_T3TypedFormal>(Def(node));
}

// The object itself where the parameter comes back.
std::string TemplateArgument(T3Tree_Node* actual, T3FormalTemplatePar* formal, CFunction& function) {
  auto* definition = actual->try_as<T3TemplateDef>();
  T3Tree_Node* object = definition == nullptr ? actual : definition->constraint;
  const bool is_modified = definition != nullptr && definition->modifies->is<T3TemplateReference>();
  if (formal->pass == t3_par_pass_t::In || is_modified || !IsTemplateObject(object))
    return cg::TemplateInPlace(actual, vexa_template_plain, function);
  return std::string(cg::InRTS(object, CGTemplateMode().with(CGAccess::Write), function));
}

bool IsInTemplateVariable(T3Tree_Node* node) {
  if (auto* element = node->try_as<T3Subscription>()) return IsInTemplateVariable(element->base);
  if (auto* field = node->try_as<T3Qualifier>(); field != nullptr && cg::IsField(field))
    return IsInTemplateVariable(cg::WholeOf(field));
  auto* variable = Def(node)->try_as<T3VarDecl>();
  return variable != nullptr && variable->is_template_variable;
}

// What a template variable holds has to be a value where the parameter is one.
std::string ValueArgument(T3Tree_Node* actual, T3Tree_Node* formal, CFunction& function) {
  const std::string_view location = cg::InRTS(actual, vexa_temp_alloc, function);
  if (!IsInTemplateVariable(actual)) return std::string(location);
  if (!IsReferenceParameter(formal))
    return cg::Call(LUMO_VALUEOF, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  function.call(LUMO_VALUEOF, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  return std::string(location);
}

std::string Argument(T3Tree_Node* actual, T3Tree_Node* formal, bool is_behaviour_call, CFunction& function) {
  if (actual->is<T3NotUsedSymbol>()) return LUMO_VALUE_DEFAULT_C;
  if (auto* template_par = formal->try_as<T3FormalTemplatePar>())
    return TemplateArgument(actual, template_par, function);
  if (auto* definition = actual->try_as<T3TemplateDef>()) actual = definition->constraint;
  if (actual->is<T3NotUsedSymbol>()) return LUMO_VALUE_DEFAULT_C;
  const bool is_out =
      formal->is<_T3TypedFormal>() && formal->as<_T3TypedFormal>()->pass == t3_par_pass_t::Out;
  std::string location = is_out ? std::string(cg::PlaceToWrite(actual, false, function))
                                : ValueArgument(actual, formal, function);
  if (is_behaviour_call || IsReferenceParameter(formal)) return location;
  return cg::Call(LUMO_VALUE_COPY, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
}

// The location of an argument among others; as it is now, where one behind it may change it.
std::string Argument(const cg::Operands& given, size_t at, T3Tree_Node* formal, bool is_behaviour_call,
                     CFunction& function) {
  const std::string argument = Argument(given.All()[at], formal, is_behaviour_call, function);
  const bool is_kept = !IsReferenceParameter(formal) && given.MayChange(at, true, function);
  return is_kept ? cg::Kept(argument, function) : argument;
}

std::string CGActualParameterList1(T3Tree_Node* actuals, T3Tree_Node* formals, bool has_result,
                                   bool is_behaviour_call, CFunction& function) {
  const unsigned count = GetParNumber(formals);
  if (!T3Is<T3ActualPar>(actuals) && count == 0 && !has_result) return C_NULL;
  // An array is no variable that another statement could use: each call has its own.
  std::string array = function.declareArray(LUMO_VALUE_T, count + (has_result ? 2 : 1));
  const cg::Operands given = GivenActuals(actuals);
  unsigned index = 0;
  for (auto* formal : Items<_T3FormalPar>(formals)) {
    function.assign(Slot(array, index), index < given.All().size()
                                            ? Argument(given, index, formal, is_behaviour_call, function)
                                            : LUMO_VALUE_DEFAULT_C);
    ++index;
  }
  function.assign(Slot(array, index + (has_result ? 1 : 0)), C_NULL);
  return array;
}

T3Tree_Node* ValueOfActual(T3Tree_Node* actual) {
  T3Tree_Node* value = actual->as<T3ActualPar>()->expression;
  return value->is<T3TemplateDef>() ? value->as<T3TemplateDef>()->constraint : value;
}

bool IsOptionalField(T3Tree_Node* type, tIdent name) {
  if (!IsRecordOrSetType(type)) return false;
  for (auto* field : Items<T3FieldType>(type->as<_T3StructuredType>()->body))
    if (field->name == name) return field->optional;
  return false;
}

T3Tree_Node* ReturnTypeOf(T3Tree_Node* behaviour) {
  if (auto* function = behaviour->try_as<T3Function>()) return function->return_type;
  if (auto* external = behaviour->try_as<T3ExtFunction>()) return external->return_type;
  return gT3NoType;
}
}  // namespace

void CGInstantiateOutOmittedParameters(T3Tree_Node* actuals, T3Tree_Node* formals, std::string_view array,
                                       CFunction& function) {
  unsigned index = 0;
  for (const auto [formal, actual] : Pairs<_T3TypedFormal, T3ActualPar>(formals, actuals)) {
    const std::string slot = Slot(array, index++);
    auto* field = ValueOfActual(actual)->try_as<T3Qualifier>();
    if (field == nullptr || formal->is<T3FormalTemplatePar>() || !cg::IsField(field)) continue;
    T3Tree_Node* type = cg::TypeOf(field->base);
    if (!IsOptionalField(type, field->id)) continue;
    function.beginIf(slot + " == " + LUMO_OMIT_VALUE_C);
    if (formal->pass == t3_par_pass_t::Out)
      function.callAndAssign(slot, LUMO_VALUE_INSTANTIATE_OMITTED_FIELD_VALUE,
                             {RTSLocation(field->base),
                              std::to_string(GetAlternativeIndex(type, field->id, true)), VEXA_CONTEXT});
    else
      cg::ReportAtRunTime(
          "omitted field '" + std::string(gIdents.GetCStr(field->id)) + "' is passed as a value",
          field->position, function);
    function.endIf();
  }
}

unsigned GetParNumber(T3Tree_Node* formals) {
  return LengthOfFormalParList(formals);
}

tIdent GetRealFunctionName(T3Tree_Node* decl) {
  return Behind(decl)->as<_T3Decl>()->name;
}

tIdent GetRealFunctionModule(T3Tree_Node* decl) {
  return Behind(decl)->place->vexa_module_name;
}

std::string CGActualParameterList(T3Tree_Node* actuals, T3Tree_Node* formals, bool has_result,
                                  CFunction& function) {
  return CGActualParameterList1(actuals, formals, has_result, true, function);
}

cg::Operands GivenActuals(T3Tree_Node* actuals) {
  std::vector<T3Tree_Node*> given;
  for (auto* actual : Items<T3ActualPar>(actuals)) given.push_back(actual->expression);
  return cg::Operands(std::move(given));
}

std::string CGArgument(const cg::Operands& given, size_t at, T3Tree_Node* formal, CFunction& function) {
  return Argument(given, at, formal, true, function);
}

std::string CGActualParameterListForTestcase(T3Tree_Node* actuals, T3Tree_Node* formals,
                                             CFunction& function) {
  return CGActualParameterList1(actuals, formals, false, false, function);
}

void GenDefaultFormalPars(T3Tree_Node* formals, CFunction& function) {
  for (auto* formal : Items<_T3FormalPar>(formals)) {
    auto* typed = formal->try_as<_T3TypedFormal>();
    T3Tree_Node* value = typed == nullptr ? nullptr : typed->default_value;
    if (!T3Is<T3TemplateDef>(value) && (!T3Is<_T3Expression>(value) || value->is<T3NoExpression>())) continue;
    const std::string slot = Slot(VEXA_ARGV, static_cast<unsigned>(typed->attr().vexa_index));
    function.beginIf(slot + " == " + LUMO_VALUE_DEFAULT_C);
    {
      const CGStatementScope scope(function);
      const std::string location = formal->is<T3FormalTemplatePar>()
                                       ? cg::TemplateInPlace(value, vexa_template_plain, function)
                                       : std::string(cg::InRTS(value, vexa_temp_alloc, function));
      function.assign(slot, cg::Call(LUMO_VALUE_COPY, {location, LUMO_PERM_ALLOC_C, VEXA_CONTEXT}));
    }
    function.endIf();
  }
}

void CGFunctionCall(T3Parameterization* call, CGMode mode, CFunction& function) {
  T3Tree_Node* decl = Def(call);
  auto* behaviour = Behind(decl)->try_as<_T3FunctionDecl>();
  if (!T3Is<T3Function>(behaviour) && !T3Is<T3ExtFunction>(behaviour)) cg::NotSupported(call);
  const bool has_result = !ReturnTypeOf(behaviour)->is<T3NoType>();
  const unsigned count = GetParNumber(behaviour->fpl);
  const std::string array = CGActualParameterList(call->apl, behaviour->fpl, has_result, function);
  if (has_result) function.assign(Slot(array, count), cg::AllocateRTSValue(call, mode.temporary(), function));
  CGInstantiateOutOmittedParameters(call->apl, behaviour->fpl, array, function);
  const cg::Callee callee = cg::CalleeOf(decl);
  function.call(LUMO_CALL_FUNCTION,
                {callee.function, callee.type, std::to_string(count), array, VEXA_CONTEXT});
}
