#include "generator/behaviour/CGFunction.h"

#include <memory>

#include "analysis/types/T3Constants.h"
#include "analysis/flow/T3AltStatus.h"
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
#include "generator/types/CGPortTypes.h"
#include "generator/behaviour/CGStatement.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/types/CGValue.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
// What a kind of behaviour is in C and to the run-time system.
struct BehaviourWords {
  std::string name;
  const char* result;
  const char* symbol_kind;
  const char* scope;
};

BehaviourWords WordsOf(T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3Function:
      return {VEXAFunctionName(decl), C_VOID, LUMO_SYMTAB_KIND_FUNCTION, LUMO_SCOPE_FUNCTION_C};
    case T3Kind::T3Testcase:
      return {VEXATestcaseName(decl), C_VOID, LUMO_SYMTAB_KIND_TESTCASE, LUMO_SCOPE_TESTCASE_C};
    case T3Kind::T3TestStep:
      return {VEXATeststepName(decl), LUMO_TEST_STEP_RESULT_T, LUMO_SYMTAB_KIND_TEST_STEP,
              LUMO_SCOPE_TESTSTEP_C};
    case T3Kind::T3ExtFunction:
      return {VEXAExtObjectName(decl), C_VOID, LUMO_SYMTAB_KIND_EXTERNAL_FUNCTION,
              LUMO_SCOPE_EXTERNAL_FUNCTION_C};
    default:
      internal_error_ast("CGFunction", __LINE__, "FunctionSymtabKind", decl);
  }
}

void AddBehaviourRow(T3Tree_Node* decl, const BehaviourWords& words, std::string_view struct_name) {
  CGSymTabAddEntry({Quote(decl->as<_T3Decl>()->name), words.symbol_kind, joined({"&(", struct_name, ")"}),
                    C_NULL, CGFunctionPointer(words.name)});
}

std::string Slot(int index) {
  return std::string(VEXA_ARGV) + "[" + std::to_string(index) + "]";
}

// The formal parameters that a body may change: assigned, passed on to be changed, or the target of a
// redirect.
T3NodeSet ChangedFormals(T3Tree_Node* body) {
  T3NodeSet changed;
  const auto note = [&changed](T3Tree_Node* target) {
    if (target == nullptr || !target->is<_T3Expression>()) return;
    T3Tree_Node* root = cg::RootOfReference(target);
    if (root->is<T3Identifier>() && T3Is<_T3FormalPar>(Def(root))) changed.insert(Def(root));
  };
  ForEachInSubtree(body, [&](T3Tree_Node* node) {
    if (auto* assignment = node->try_as<T3AssignStmt>()) note(assignment->lhs);
    if (auto* redirect = node->try_as<T3PortRedirect>()) {
      note(redirect->redirect_value);
      note(redirect->redirect_sender);
      for (auto* at : Items<T3FieldValue>(redirect->redirect_params)) note(at->value);
    }
    if (auto* call = node->try_as<T3Parameterization>())
      for (auto* at : Items<T3ActualPar>(call->apl)) {
        T3Tree_Node* actual = at->expression;
        note(actual->is<T3TemplateDef>() ? actual->as<T3TemplateDef>()->constraint : actual);
      }
    return !node->is<_T3Type>() && !node->is<_T3LiteralExpression>();
  });
  return changed;
}

bool IsOwnValue(T3Tree_Node* formal, const T3NodeSet& changed) {
  auto* typed = formal->try_as<_T3TypedFormal>();
  if (typed == nullptr || typed->pass != t3_par_pass_t::In || changed.count(formal) == 0) return false;
  T3Tree_Node* type = RootType(typed->type);
  return !type->is<T3TimerType>() && !type->is<T3PortType>();
}

// Of its own type, which may be wider than that of the argument.
std::string OwnValue(T3Tree_Node* formal, std::string_view slot) {
  const std::string_view type = VEXATypeRef(formal->as<_T3TypedFormal>()->type);
  auto* of_template = formal->try_as<T3FormalTemplatePar>();
  if (of_template == nullptr)
    return cg::Call(LUMO_VALUE_COPY_TO_TYPE, {type, slot, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  const std::string restriction = std::to_string(static_cast<int>(of_template->restriction));
  return cg::Call(LUMO_TEMPLATE_COPY_TO_TYPE, {type, slot, LUMO_TEMP_ALLOC_C, restriction, VEXA_CONTEXT});
}

// A parameter by value that the body changes becomes the body's own, in a vector of its own: the caller's may
// be used for another call.
void CopyChangedParameters(_T3FunctionDecl* decl, CFunction& function) {
  auto* body = decl->try_as<_T3FunctionBodyDecl>();
  if (body == nullptr || !decl->fpl->is<_T3FormalPar>()) return;
  const T3NodeSet changed = ChangedFormals(body->body);
  std::vector<std::string> slots;
  bool any = false;
  for (auto* formal : Items<_T3FormalPar>(decl->fpl)) {
    const bool own = IsOwnValue(formal, changed);
    const std::string slot = Slot(static_cast<int>(slots.size()));
    slots.push_back(own ? OwnValue(formal, slot) : slot);
    any = any || own;
  }
  if (!any) return;
  // The result, or the end of the vector.
  slots.push_back(Slot(static_cast<int>(slots.size())));
  const std::string vector = function.declareArray(LUMO_VALUE_T, slots.size());
  for (size_t i = 0; i < slots.size(); ++i) function.assign(vector + "[" + std::to_string(i) + "]", slots[i]);
  function.assign(VEXA_ARGV, vector);
}

// Defaults of the parameters, and where execution stands.
void BeginBody(_T3FunctionDecl* decl, const BehaviourWords& words, CFunction& function) {
  GenDefaultFormalPars(decl->fpl, function);
  CopyChangedParameters(decl, function);
  CGPushSourceLocation(function, CGCurrentModule(), gIdents.GetString(decl->name), VEXA_ARGV, words.scope,
                       decl->position);
}

void FunctionBody(T3Function* decl, CFunction& function) {
  CallComponentControl(function);
  CGStatement(decl->body, function);
  GenReturn("", function);
}

void TestcaseBody(T3Testcase* decl, CFunction& function) {
  const bool has_system = !decl->system->is<T3NoType>();
  T3Tree_Node* system = has_system ? decl->system : decl->runs_on;
  function.call(LUMO_COMPONENT_SET_SYSTEM_COMPONENT_TYPE, {VEXATypeRef(system), VEXA_CONTEXT});
  if (!has_system) AddMapStatements(decl);
  CGStatement(decl->body, function);
  CGPopSourceLocation(function);
  function.call(LUMO_COMPONENT_STOP, {LUMO_NO_VALUE_C, VEXA_CONTEXT});
}

// How far calls in the definitions of an altstep are followed.
constexpr int kMaxCallDepth = 3;
bool MayHaveEffect(T3Tree_Node* part, int depth);

bool HasReferenceParameter(T3Tree_Node* formals) {
  for (auto* par : Items<_T3TypedFormal>(formals))
    if (par->pass != t3_par_pass_t::In) return true;
  return false;
}

// Whether the called function may change what is around, as far as that can be seen at the call.
bool CallMayHaveEffect(T3Tree_Node* call, int depth) {
  T3Tree_Node* callee = BehindImport(Def(call));
  if (!T3Is<T3Function>(callee) || depth > kMaxCallDepth) return false;
  return HasReferenceParameter(callee->as<T3Function>()->fpl) ||
         MayHaveEffect(callee->as<T3Function>()->body, depth + 1);
}

bool MayHaveEffect(T3Tree_Node* part, int depth) {
  bool found = AltStatus(part) >= kHasSideEffects;
  ForEachInSubtree(part, [&found, depth](T3Tree_Node* node) {
    found = found || node->is<_T3ConfStmt>() || node->is<T3SUTStmt>() ||
            (node->is<T3Parameterization>() && CallMayHaveEffect(node, depth));
    return !found;
  });
  return found;
}

// An altstep's definitions are evaluated whether one of its alternatives is chosen or not.
void CGLocalDecls(T3Tree_Node* decls, CFunction& function) {
  for (auto* local : Items<_T3Decl>(decls)) {
    const bool watched = local->is<T3VarDecl>() && MayHaveEffect(local->as<T3VarDecl>()->value, 0);
    if (watched) function.call(LUMO_ALTSTEP_DEFINITIONS, {C_TRUE, VEXA_CONTEXT});
    local->is<T3TemplateDecl>() ? CGLocalTemplate(local->as<T3TemplateDecl>(), function)
                                : CGLocalValue(local, function);
    if (watched) function.call(LUMO_ALTSTEP_DEFINITIONS, {C_FALSE, VEXA_CONTEXT});
  }
}

// One round over the alternatives; the caller, whose alternatives these are as well, waits.
void AltstepBody(T3TestStep* decl, CFunction& function) {
  CallComponentControl(function);
  function.call(LUMO_SOURCE_LOCATION_PUSH_BLOCK, {VEXA_CONTEXT});
  CGLocalDecls(decl->decls, function);
  auto* alt = decl->body->try_as<T3AltStmt>();
  if (alt == nullptr) cg::NotSupported(decl->body);
  const std::string success = function.getTmpVariable(C_BOOL);
  const std::string repeat = function.getTmpVariable(C_BOOL);
  const std::string label = function.getNewLabel();
  auto& names = alt->cold();
  names.repeat_var = decl->cold().repeat_var = gT3AST.KeepText(repeat);
  names.repeat_label = names.vexa_break_label = decl->cold().repeat_label = gT3AST.KeepText(label);
  names.temp_memory_scope = "";
  function.assign(repeat, C_FALSE);
  function.assign(success, C_TRUE);
  function.beginWhile(C_TRUE);
  CGAltList(alt->alts, alt, function);
  if (alt->else_branch->is<_T3Stmt>()) {
    function.beginIf(LUMO_COMPONENT_TRY_ELSE, {VEXA_CONTEXT});
    CGStatement(alt->else_branch, function);
    function.addBreak();
    function.endIf();
  }
  function.assign(success, C_FALSE);
  function.addBreak();
  function.endWhile();
  function.addLabel(label);
  function.call(LUMO_SOURCE_LOCATION_POP_BLOCK, {VEXA_CONTEXT});
  GenSourceLocationEnd(alt, function);
  DeleteTimers(decl->decls, function);
  function.beginIf(success);
  function.beginIf(repeat);
  GenReturn(LUMO_TEST_STEP_SUCCESSFUL_REPEAT_C, function);
  function.endIf();
  GenReturn(LUMO_TEST_STEP_SUCCESSFUL_PROCEED_C, function);
  function.endIf();
  GenReturn(LUMO_TEST_STEP_UNSUCCESSFUL_C, function);
}

std::unique_ptr<CFunction> BeginBehaviour(const BehaviourWords& words) {
  ForgetLabels();
  return gT3Context.file().beginFunction(words.result, words.name, CGBehaviourParameters(), "", false);
}

template <class Body>
void Generate(_T3FunctionDecl* decl, const Body& body) {
  const std::string type_struct = GenFunctionType(decl);
  const BehaviourWords words = WordsOf(decl);
  AddBehaviourRow(decl, words, type_struct);
  const CGStatementScope scope;
  auto function = BeginBehaviour(words);
  BeginBody(decl, words, *function);
  body(*function);
  function->end();
}

// User code, or the test adapter where it is not linked.
void ExtFunctionBody(T3ExtFunction* decl, CFunction& function) {
  const std::vector<std::string> arguments = {VEXA_ARGC, VEXA_ARGV, VEXA_CONTEXT};
  const std::string compile_switch = VEXAExtFuncCompileSwitchName(decl);
  gT3Context.file().addExternalFunctionDeclConditionally(compile_switch, LUMO_VALUE_T, VEXAExtFuncName(decl),
                                                         CGBehaviourParameters());
  const bool has_result = !decl->return_type->is<T3NoType>();
  const std::string slot = Slot(static_cast<int>(GetParNumber(decl->fpl)));
  const std::string result = has_result ? function.getTmpVariable(LUMO_VALUE_T) : std::string();
  function.beginIfDef(compile_switch);
  if (has_result) {
    function.callAndAssign(result, VEXAExtFuncName(decl), arguments);
    function.call(LUMO_EXTERNAL_FUNCTION_RESULT, {slot, result, VEXA_CONTEXT});
  } else {
    function.call(VEXAExtFuncName(decl), arguments);
  }
  function.beginElsePP();
  const std::vector<std::string> outside = {"&(" + VEXASignatureStructName(decl) + ")", VEXA_ARGV,
                                            VEXA_CONTEXT};
  if (!has_result) {
    function.call(LUMO_CALL_EXTERNAL_FUNCTION, outside);
  } else {
    function.assign(result, slot);
    function.assign(slot, C_NULL);
    function.call(LUMO_CALL_EXTERNAL_FUNCTION, outside);
    function.call(LUMO_VALUE_ASSIGN, {result, slot, VEXA_CONTEXT});
    function.assign(slot, result);
  }
  function.endIfPP();
  if (has_result) function.releaseTmpVariable(result);
  GenReturn("", function);
}

// ---- Imports ----

struct ImportWords {
  std::string name;
  const char* pointer_type;
  const char* symbol_kind;
};

ImportWords WordsOfImport(T3Tree_Node* import) {
  if (import->is<T3ImportTestcaseDecl>())
    return {VEXATestcaseName(import), LUMO_TEST_CASE_T, LUMO_SYMTAB_KIND_TESTCASE};
  if (import->is<T3ImportTeststepDecl>())
    return {VEXATeststepName(import), LUMO_TEST_STEP_T, LUMO_SYMTAB_KIND_TEST_STEP};
  return {VEXAFunctionName(import), LUMO_FUNCTION_T, LUMO_SYMTAB_KIND_FUNCTION};
}

// The address is known only when the suite runs: the register function fetches it, and the initialize
// function completes the row.
void CGImportedBehaviour(T3Tree_Node* import) {
  T3Tree_Node* origin = import->as<_T3ImportDecl>()->attr().def_aux;
  if (!T3Is<_T3FunctionDecl>(origin))
    internal_error_ast("CGFunction", __LINE__, "BindImportedFunction", import);
  const ImportWords words = WordsOfImport(import);
  const std::string type_struct = GenFunctionType(import);
  const std::string qualified = joined(
      {gIdents.GetString(origin->place->vexa_module_name), ".", gIdents.GetString(DeclaredName(origin))});
  CGSymTabAddEntry({Quote(qualified), words.symbol_kind, joined({"&(", type_struct, ")"})});
  gT3Context.file().addVariable(words.pointer_type, words.name, true);
  CFunction& bind = gT3Context.registerFunction();
  bind.addComment("binding imported function");
  bind.addLine({words.name, " = ((", words.pointer_type, ") ", FindOriginCall(import), "->function_ptr);"});
  const std::string_view module = gIdents.GetString(gT3Context.currentModuleName());
  gT3Context.initializeFunction().addLine(
      {FindCall(module, qualified), "->function_ptr = ", CGFunctionPointer(words.name), ";"});
}

// ---- Control parts ----

std::unique_ptr<CFunction> BeginControlPart(T3Tree_Node* module, const tPosition& position) {
  const std::string name = VEXAControlPartFunctionName();
  ForgetLabels();
  auto function = gT3Context.file().beginFunction(C_VOID, name, CGBehaviourParameters(), "", false);
  CGPushSourceLocation(*function, module, "control", C_NULL, LUMO_SCOPE_CONTROL_PART_C, position);
  return function;
}

void AddControlPartRow() {
  CGSymTabAddEntry({Quote(std::string(VEXA_CONTROL_PART_NAME)), LUMO_SYMTAB_KIND_CONTROL_PART_FUNCTION,
                    C_NULL, C_NULL, CGFunctionPointer(VEXAControlPartFunctionName())});
}

void CGControlPart(T3ControlPart* decl) {
  AddControlPartRow();
  const CGStatementScope scope;
  auto function = BeginControlPart(CGCurrentModule(), decl->position);
  CGStatement(decl->body, *function);
  CGPopSourceLocation(*function);
  function->end();
}
}  // namespace

const std::vector<std::string>& CGBehaviourParameters() {
  static auto& parameters = *new std::vector<std::string>{
      FormalPar(C_UNSIGNED_LONG, VEXA_ARGC), FormalPar(LUMO_VALUE_T, std::string(VEXA_ARGV) + "[]"),
      FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)};
  return parameters;
}

void CGFunction(T3Tree_Node* decl) {
  if (auto* control = decl->try_as<T3ControlPart>()) return CGControlPart(control);
  if (decl->is<_T3ImportDecl>()) return CGImportedBehaviour(decl);
  if (auto* function = decl->try_as<T3Function>())
    return Generate(function, [&](CFunction& body) { FunctionBody(function, body); });
  if (auto* testcase = decl->try_as<T3Testcase>())
    return Generate(testcase, [&](CFunction& body) { TestcaseBody(testcase, body); });
  if (auto* external = decl->try_as<T3ExtFunction>())
    return Generate(external, [&](CFunction& body) { ExtFunctionBody(external, body); });
  if (auto* altstep = decl->try_as<T3TestStep>())
    return Generate(altstep, [&](CFunction& body) { AltstepBody(altstep, body); });
  internal_error_ast("CGFunction", __LINE__, "CGFunction", decl);
}

void CGDummyControlPart(T3Tree_Node* module) {
  AddControlPartRow();
  auto function = BeginControlPart(module, module->as<T3Module>()->position);
  CGLogInformation(*function, "module has no control part - exiting");
  CGPopSourceLocation(*function);
  function->end();
}
