#include "generator/types/CGValue.h"

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Bounds.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/diagnostics/T3Exception.h"
#include "frontend/T3Lists.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
const tPosition& PositionOfDecl(T3Tree_Node* decl) {
  return decl->as<_T3DeclList>()->position;
}

// A comment that tells the place in the source, and the call that tells it when the suite runs.
void Mark(T3Tree_Node* decl, std::string_view what, CFunction& function) {
  const tPosition& position = PositionOfDecl(decl);
  CGCommentPlace(function, position, what);
  CGSetSourceLine(function, position);
}

void AddRow(std::string_view name, const char* kind, T3Tree_Node* type) {
  CGSymTabAddEntry({Quote(name), kind, VEXAStaticTypeRef(type)});
}

std::string RowOf(tIdent module, tIdent name) {
  return getSignature("", LUMO_FIND_ELEMENT_WITH_CHECK, {Quote(module), Quote(name), VEXA_CONTEXT});
}

// Enters a value in its row, where other modules find it, and deletes it with the module.
void Publish(T3Tree_Node* decl, std::string_view location, CFunction& function) {
  function.addLine({RowOf(CGCurrentModule()->name, DeclaredName(decl)), "->", TypeOrValueDescriptor(decl),
                    " = ", location, ";"});
  CFunction& finalize = gT3Context.finalizeFunction();
  finalize.call(LUMO_VALUE_DELETE, {joined({"&(", location, ")"}), VEXA_CONTEXT});
  finalize.assign(location, C_NULL);
}

void Instantiate(std::string_view location, T3Tree_Node* decl, T3Tree_Node* type, CFunction& function,
                 vexa_allocation_mode_t allocation = vexa_perm_alloc) {
  function.callAndAssign(
      location, LUMO_TYPE_INSTANTIATE_NAMED_VALUE,
      {VEXATypeRef(type), Quote(DeclaredName(decl)), AllocationMode(allocation), VEXA_CONTEXT});
}

void CGConstant(T3ConstDecl* decl) {
  const std::string location = VEXAConstName(decl);
  AddRow(gIdents.GetCStr(decl->name), LUMO_SYMTAB_KIND_CONSTANT, decl->type);
  gT3Context.file().addVariable(LUMO_VALUE_T, location, true);
  CFunction& function = gT3Context.initializeFunction();
  Mark(decl, T3KindName(decl), function);
  Instantiate(location, decl, decl->type, function);
  {
    const CGStatementScope scope(function);
    CGAssign(location, decl->value, false, function);
  }
  Publish(decl, location, function);
}

// User code gives the value.
void CGExternalConstant(T3ExtConstDecl* decl) {
  const std::string location = VEXAExtConstName(decl);
  AddRow(gIdents.GetCStr(decl->name), LUMO_SYMTAB_KIND_EXTERNAL_CONSTANT, decl->type);
  CFile& file = gT3Context.file();
  file.addVariable(LUMO_VALUE_T, location, true);
  CFunction& function = gT3Context.initializeFunction();
  Instantiate(location, decl, decl->type, function);
  const std::string value = function.getTmpVariable(LUMO_VALUE_T);
  function.assign(value, location);
  file.addExternalFunctionDecl(C_VOID, VEXAExtObjectName(decl),
                               {FormalPar(LUMO_VALUE_T, "value"), FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)});
  function.call(VEXAExtObjectName(decl), {value, VEXA_CONTEXT});
  function.releaseTmpVariable(value);
  Publish(decl, location, function);
}

const char* SymtabKind(T3Tree_Node* import) {
  return import->is<T3ImportConstDecl>() ? LUMO_SYMTAB_KIND_CONSTANT : LUMO_SYMTAB_KIND_MODULE_PARAMETER;
}

// The function in which the origin of an import has its value by then.
CFunction& TargetFunction(T3Tree_Node* import) {
  return import->is<T3ImportConstDecl>() ? gT3Context.initializeFunction()
                                         : gT3Context.moduleParamsInitializeFunction();
}

void CGImportedValue(T3Tree_Node* import) {
  auto* decl = import->as<_T3ImportDecl>();
  T3Tree_Node* origin = decl->attr().def_aux;
  if (!T3Is<_T3InstanceDecl>(origin)) internal_error_ast("CGValue", __LINE__, "CGImportedValue", import);
  const std::string location = VEXAConstName(import);
  const tIdent module = origin->place->vexa_module_name;
  AddRow(std::string(gIdents.GetString(module)) + '.' + gIdents.GetCStr(DeclaredName(origin)),
         SymtabKind(import), origin->as<_T3InstanceDecl>()->type);
  gT3Context.file().addVariable(LUMO_VALUE_T, location, true);
  TargetFunction(import).assign(location, "((" + std::string(LUMO_VALUE_T) + ") " + FindOriginCall(import) +
                                              "->" + TypeOrValueDescriptor(import) + ")");
}
}  // namespace

void CGValue(T3Tree_Node* decl) {
  if (auto* constant = decl->try_as<T3ConstDecl>()) return CGConstant(constant);
  if (auto* external = decl->try_as<T3ExtConstDecl>()) return CGExternalConstant(external);
  if (decl->is<T3ImportConstDecl>() || decl->is<T3ImportModuleParDecl>()) return CGImportedValue(decl);
  throw internal_exception("CGValue", __LINE__, "CGValue", "Unhandled node type");
}

namespace {
bool HasValue(const _T3InstanceValueDecl* decl) {
  return T3Is<_T3Expression>(decl->value) ? !decl->value->is<T3NoExpression>()
                                          : T3Is<T3TemplateDef>(decl->value);
}

// The type of the elements of an array of any dimensions; a type that is no array is its own.
T3Tree_Node* ElementOf(T3Tree_Node* type) {
  for (type = RootType(type); type->is<T3ArrayType>(); type = RootType(type->as<T3ArrayType>()->type)) {
  }
  return type;
}

// A first template, and that the variable has changed.
void SetFirstTemplate(std::string_view location, T3VarDecl* decl, CFunction& function) {
  if (!HasValue(decl)) return;
  const std::string value = CGTemplateExpression(decl->value, vexa_template_plain, function);
  function.call(LUMO_VALUE_ASSIGN, {location, value, VEXA_CONTEXT});
  function.call(LUMO_LOG_VARIABLE_MODIFIED_EVENT, {location, VEXA_CONTEXT});
}

// The durations of a list, for each timer of an array that has one.
void GenerateTimerArrayDecl2(std::string_view location, T3Tree_Node* list, T3Tree_Node* type,
                             CFunction& function) {
  auto* array = RootType(type)->try_as<T3ArrayType>();
  auto* values = list->try_as<T3CompoundValue>();
  if (array == nullptr || values == nullptr) cg::NotSupported(list);
  const bool nested = RootType(array->type)->is<T3ArrayType>();
  const int64_t first = LowerBoundValue(array->dimension);
  for (const auto [position, at] : Numbered<T3FieldValue>(values->value)) {
    const int64_t index = first + static_cast<int64_t>(position);
    T3Tree_Node* duration = at->value;
    if (duration->is<T3NotUsedSymbol>()) continue;
    if (nested)
      GenerateTimerArrayDecl2(
          cg::Call(LUMO_VALUE_FIELD_BY_INDEX, {location, std::to_string(index), VEXA_CONTEXT}), duration,
          array->type, function);
    else
      function.call(LUMO_VALUE_SET_TIMER_IN_ARRAY_DEFAULT_DURATION,
                    {location, std::to_string(index), cg::InC(duration, function), VEXA_CONTEXT});
  }
}

bool HasOneDuration(_T3InstanceValueDecl* decl) {
  return HasValue(decl) && !RootType(decl->type)->is<T3ArrayType>();
}

void SetDurations(std::string_view location, T3VarDecl* decl, CFunction& function) {
  if (!HasValue(decl)) return;
  if (RootType(decl->type)->is<T3ArrayType>())
    return GenerateTimerArrayDecl2(location, decl->value, decl->type, function);
  function.call(LUMO_VALUE_SET_TIMER_DEFAULT_DURATION,
                {location, cg::InC(decl->value, function), VEXA_CONTEXT});
}
}  // namespace

bool IsTimerDeclaration(T3Tree_Node* decl) {
  return decl->is<T3VarDecl>() && ElementOf(decl->as<T3VarDecl>()->type)->is<T3TimerType>();
}

namespace {
void InstantiateTemplateVariable(std::string_view location, T3VarDecl* decl, CFunction& function) {
  function.callAndAssign(location, LUMO_TYPE_INSTANTIATE_NAMED_DYNAMIC_TEMPLATE,
                         {VEXATypeRef(decl->type), Quote(decl->name), LUMO_TEMP_ALLOC_C,
                          std::to_string(static_cast<int>(decl->templ_restriction)), VEXA_CONTEXT});
}

// The duration is known before the timer is there.
void CGLocalTimer(T3VarDecl* decl, std::string_view location, CFunction& function) {
  const CGStatementScope scope(function);
  if (HasOneDuration(decl)) cg::InC(decl->value, function);
  Mark(decl, T3KindName(decl), function);
  Instantiate(location, decl, decl->type, function, vexa_perm_alloc);
  SetDurations(location, decl, function);
}
}  // namespace

namespace {
// The variable in C of a local object.
std::string_view DeclareLocal(_T3InstanceValueDecl* decl, CFunction& function) {
  if (!HasRTSLocation(decl))
    DeclareRTSLocation(decl,
                       function.declare(LUMO_VALUE_T, VEXALocalVarName(decl->name), LUMO_ILLEGAL_VALUE_C));
  return RTSLocation(decl);
}

bool HoldsTemplates(T3Tree_Node* decl) {
  return decl->is<T3VarDecl>() && decl->as<T3VarDecl>()->is_template_variable;
}
}  // namespace

void CGUnsetLocalValue(T3Tree_Node* node, CFunction& function) {
  if (!node->is<T3VarDecl>() && !node->is<T3ConstDecl>()) cg::NotSupported(node);
  auto* decl = node->as<_T3InstanceValueDecl>();
  const std::string_view location = DeclareLocal(decl, function);
  if (IsTimerDeclaration(decl)) {
    Instantiate(location, decl, decl->type, function, vexa_perm_alloc);
  } else if (HoldsTemplates(decl)) {
    InstantiateTemplateVariable(location, decl->as<T3VarDecl>(), function);
  } else {
    Instantiate(location, decl, decl->type, function, vexa_temp_alloc);
  }
}

void CGLocalValue(T3Tree_Node* node, CFunction& function) {
  if (!node->is<T3VarDecl>() && !node->is<T3ConstDecl>()) cg::NotSupported(node);
  auto* decl = node->as<_T3InstanceValueDecl>();
  auto* variable = node->try_as<T3VarDecl>();
  const bool holds_template = HoldsTemplates(decl);
  const std::string_view location = DeclareLocal(decl, function);
  const bool is_timer = IsTimerDeclaration(decl);
  if (is_timer) return CGLocalTimer(decl->as<T3VarDecl>(), location, function);
  if (HasValue(decl)) Mark(decl, T3KindName(decl), function);
  if (holds_template) {
    InstantiateTemplateVariable(location, variable, function);
    const CGStatementScope scope(function);
    return SetFirstTemplate(location, variable, function);
  }
  Instantiate(location, decl, decl->type, function, vexa_temp_alloc);
  if (HasValue(decl)) {
    const CGStatementScope scope(function);
    CGAssign(location, decl->value, decl->is<T3VarDecl>(), function);
  }
}

namespace {
// A variable that holds templates: its field is made one that may, and gets its first template.
void ComponentTemplate(T3VarDecl* decl, std::string_view location, std::string_view index,
                       CFunction& function) {
  const std::string made =
      cg::Call(LUMO_TYPE_INSTANTIATE_NAMED_DYNAMIC_TEMPLATE,
               {VEXATypeRef(decl->type), Quote(decl->name), LUMO_TEMP_ALLOC_C,
                std::to_string(static_cast<int>(decl->templ_restriction)), VEXA_CONTEXT});
  function.call(LUMO_VALUE_INIT_VECTOR_ELEMENT,
                {VEXA_COMPONENT_POSTPROCESS_ARG_NAME, index, made, VEXA_CONTEXT});
  SetFirstTemplate(location, decl, function);
}
}  // namespace

void CGComponentValue(T3Tree_Node* node, unsigned place, CFunction& function) {
  auto* decl = node->as<_T3InstanceValueDecl>();
  auto* variable = node->try_as<T3VarDecl>();
  const std::string index = std::to_string(place);
  const std::string location =
      cg::Call(LUMO_VALUE_FIELD_BY_INDEX, {VEXA_COMPONENT_POSTPROCESS_ARG_NAME, index, VEXA_CONTEXT});
  DeclareRTSLocation(decl, location);
  const bool is_timer = IsTimerDeclaration(decl);
  const bool holds_template = variable != nullptr && variable->is_template_variable;
  const CGStatementScope scope(function);
  if (is_timer && HasOneDuration(decl)) cg::InC(decl->value, function);
  if (is_timer || HasValue(decl)) Mark(decl, T3KindName(decl), function);
  if (holds_template) ComponentTemplate(variable, location, index, function);
  function.call(LUMO_SOURCE_TRACKING_REGISTER_VALUE, {location, C_TRUE, VEXA_CONTEXT});
  if (holds_template) return;
  if (is_timer)
    SetDurations(location, variable, function);
  else if (HasValue(decl))
    CGAssign(location, decl->value, decl->is<T3VarDecl>(), function);
}

void CGModulePar(T3Tree_Node* node) {
  auto* decl = node->as<T3ModuleParDecl>();
  const std::string location = VEXAModuleParName(decl);
  const std::string name = gIdents.GetCStr(decl->name);
  AddRow(name, LUMO_SYMTAB_KIND_MODULE_PARAMETER, decl->type);
  gT3Context.file().addVariable(LUMO_VALUE_T, location, true);
  CFunction& function = gT3Context.moduleParamsInitializeFunction();
  Mark(decl, "module parameter " + name, function);
  Instantiate(location, decl, decl->type, function);
  const std::vector<std::string> arguments = {std::string(Quote(CGCurrentModule()->name)), Quote(name),
                                              location, VEXA_CONTEXT};
  if (!T3Is<_T3Expression>(decl->value) || decl->value->is<T3NoExpression>()) {
    function.call(LUMO_RETRIEVE_MODULE_PARAMETER, arguments);
  } else {
    // What the test system gives comes before the default of the source.
    function.beginIf("!(" + getSignature("", LUMO_RETRIEVE_MODULE_PARAMETER, arguments) + ")");
    {
      const CGStatementScope scope(function);
      CGAssign(location, decl->value, true, function);
    }
    function.endIf();
  }
  Publish(decl, location, function);
}
