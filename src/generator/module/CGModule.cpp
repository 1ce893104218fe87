#include "generator/module/CGModule.h"

#include "asn1/integration/T3Representation.h"
#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3Global.h"
#include "generator/module/CGDecl.h"
#include "generator/module/CGForms.h"
#include "generator/module/CGIncludes.h"
#include "generator/behaviour/CGFunction.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGLiteralTable.h"
#include "generator/text/CGModuleText.h"
#include "generator/types/CGType.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
// Whether what is generated beside an ASN.1 module is part of its generated code, and whether codecs are.
bool HasExternalHeader(T3Module* module) {
  return T3ReprToLanguage(module) == language_asn1 && (GetCodecGeneration(module) & kCodecNoTranslation) == 0;
}

bool HasExternalCodecs(T3Module* module) {
  return HasExternalHeader(module) && (GetCodecGeneration(module) & kCodecAll) != 0;
}

void AddModuleToSymbolTable(T3Module* module, const char* kind) {
  CGSymTabAddEntry({Quote(module->name), kind});
}

void AddBootstrapRow(const char* name, const char* kind, const std::string& function) {
  CGSymTabAddEntry({Quote(std::string(name)), kind, C_NULL, C_NULL, CGFunctionPointer(function)});
}

void AddBootstrapToSymbolTable(T3Module* module) {
  AddBootstrapRow("module initialize", LUMO_SYMTAB_KIND_INITIALIZE_FUNCTION,
                  ModuleInitializeName(module->name));
  AddBootstrapRow("module params initialize", LUMO_SYMTAB_KIND_MODULE_PARAMS_INITIALIZE_FUNCTION,
                  ModuleParamsInitializeName(module->name));
  AddBootstrapRow("module finalize", LUMO_SYMTAB_KIND_FINALIZE_FUNCTION, ModuleFinalizeName(module->name));
}

// A life-cycle function up to the first statement of its scope, which runs once a cycle.
std::unique_ptr<CFunction> BeginGuarded(const std::string& name, std::vector<std::string> parameters,
                                        const std::string& guard) {
  CFile& file = gT3Context.file();
  file.addVariableWithInit("bool", guard, C_FALSE, true);
  parameters.push_back(FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT));
  auto function = file.beginFunction(C_VOID, name, parameters, "", true);
  function->beginIf("!(" + guard + ")");
  function->runsHere();
  function->assign(guard, C_TRUE);
  return function;
}

void CreateInitializeFunction(T3Module* module) {
  auto function = BeginGuarded(ModuleInitializeName(module->name), {}, VEXAInitFunctionGuard(module->name));
  CGPushSourceLocation(*function, module, CGModuleName(module) + "_module_initialization", C_NULL,
                       LUMO_SCOPE_UNDEFINED_C, module->position);
  gT3Context.file().addVariable(C_BOOL, VEXA_TEMPLATE_CONTINUE_MATCH, true);
  function->callAndAssign(VEXA_TEMPLATE_CONTINUE_MATCH, LUMO_MATCH_CONTINUE_ON_FAIL, {VEXA_CONTEXT});
  gT3Context.storeInitializeFunction(std::move(function));
}

void CreateFinalizeFunction(T3Module* module) {
  auto function = BeginGuarded(ModuleFinalizeName(module->name), {}, VEXAFinalizeFunctionGuard(module->name));
  function->assign(VEXAInitFunctionGuard(module->name), C_FALSE);
  function->assign(VEXAModuleParamsInitializeFunctionGuard(module->name), C_FALSE);
  // without it the next cycle could not register, and so not finalize either
  function->assign(VEXARegisterFunctionGuard(module->name), C_FALSE);
  gT3Context.storeFinalizeFunction(std::move(function));
}

void CreateModuleParamsInitializeFunction(T3Module* module) {
  auto function = BeginGuarded(ModuleParamsInitializeName(module->name), {},
                               VEXAModuleParamsInitializeFunctionGuard(module->name));
  CGPushSourceLocation(*function, module, CGModuleName(module) + "_module_parameters_initialization", C_NULL,
                       LUMO_SCOPE_UNDEFINED_C, module->position);
  gT3Context.storeModuleParamsInitializeFunction(std::move(function));
}

void CreateRegisterFunction(T3Module* module) {
  auto function = BeginGuarded(ModuleRegisterName(module->name), {FormalPar(C_BOOL, "is_root")},
                               VEXARegisterFunctionGuard(module->name));
  function->assign(VEXAInitFunctionGuard(module->name), C_FALSE);
  function->assign(VEXAModuleParamsInitializeFunctionGuard(module->name), C_FALSE);
  function->assign(VEXAFinalizeFunctionGuard(module->name), C_FALSE);
  gT3Context.storeRegisterFunction(std::move(function));
}

void T3Module_AddExternalInclude(T3Module* module) {
  if (HasExternalHeader(module))
    gT3Context.file().addInclude(GetOutputFile(module) + "t3asn.h", false, false);
}

void AddImport(T3Module* imported) {
  gT3Context.file().addInclude(GetOutputFile(imported) + ".h", false, false);
  T3Module_AddExternalInclude(imported);
  AddModuleToSymbolTable(imported, LUMO_SYMTAB_KIND_IMPORTED_MODULE);
  gT3Context.registerFunction().call(ModuleRegisterName(imported->name), {C_FALSE, VEXA_CONTEXT});
  gT3Context.initializeFunction().call(ModuleInitializeName(imported->name), {VEXA_CONTEXT});
  gT3Context.moduleParamsInitializeFunction().call(ModuleParamsInitializeName(imported->name),
                                                   {VEXA_CONTEXT});
  gT3Context.finalizeFunction().call(ModuleFinalizeName(imported->name), {VEXA_CONTEXT});
}

bool HasImports(T3Module* module) {
  const auto deps = gT3ModuleDeps.find(module->name);
  return deps != gT3ModuleDeps.end() && !deps->second.empty();
}

void AddImports(T3Module* module) {
  if (!HasImports(module)) return;
  const auto deps = gT3ModuleDeps.find(module->name);
  BeginImportedHeaders();
  for (const tIdent name : deps->second) {
    const auto imported = gT3ModuleMap.find(name);
    if (imported != gT3ModuleMap.end()) AddImport(imported->second->as<T3Module>());
  }
}

void AddModuleBuiltinTypes(T3Module* module) {
  gT3AST.ForallT3Tree(module->attr().vexa_builtins, [](T3Tree_Node* decl) {
    auto* type_decl = decl->try_as<T3TypeDecl>();
    if (type_decl != nullptr && type_decl->type->is<_T3BuiltinType>()) CGBuiltinType(type_decl);
  });
}

// All rows must be in the table by now.
void RegisterThisModule(T3Module* module) {
  gT3Context.registerFunction().call(
      LUMO_MODULE_REGISTER,
      {Quote(module->name), "is_root", VEXA_SYMBOL_TABLE, std::to_string(gT3Context.symbolTable().count()),
       CStringOfLiteral(StringM::StGetString(module->language)), VEXA_CONTEXT});
}

void EndInitializeFunction(T3Module* module) {
  CFunction& function = gT3Context.initializeFunction();
  if (HasExternalCodecs(module)) function.call(ModuleRegisterCodecsName(module->name), {VEXA_CONTEXT});
  CGSetSourceLine(function, module->end_position);
  CGLogInformation(function, "Module " + CGModuleName(module) + " initialized");
  CGPopSourceLocation(function);
  function.endIf();
}

void EndFinalizeFunction(T3Module* module) {
  CFunction& function = gT3Context.finalizeFunction();
  CGLogInformation(function, "Module " + CGModuleName(module) + " finalized");
  function.endIf();
}

void EndRegisterFunction(T3Module* module) {
  CFunction& function = gT3Context.registerFunction();
  CGLogInformation(function, "Module " + CGModuleName(module) + " registered");
  function.endIf();
}

void EndModuleParamsInitializeFunction(T3Module* module) {
  CFunction& function = gT3Context.moduleParamsInitializeFunction();
  CGSetSourceLine(function, module->end_position);
  CGLogInformation(function, "Module " + CGModuleName(module) + " - module parameters initialized");
  CGPopSourceLocation(function);
  function.endIf();
}

bool HasControlPart(T3Module* module) {
  bool found = false;
  gT3AST.ForallT3Tree(module->definition_part,
                      [&found](T3Tree_Node* decl) { found = found || decl->is<T3ControlPart>(); });
  return found;
}

void BeginSkeleton(T3Module* module) {
  gT3Context.file().addInclude(VEXA_RTS_INCLUDE, false, true);
  CGAddMagicNumber(gT3Context.file());
  AddModuleToSymbolTable(module, LUMO_SYMTAB_KIND_MODULE);
  AddBootstrapToSymbolTable(module);
  CreateInitializeFunction(module);
  CreateFinalizeFunction(module);
  CreateModuleParamsInitializeFunction(module);
  CreateRegisterFunction(module);
  T3Module_AddExternalInclude(module);
  AddImports(module);
}

void EndSkeleton(T3Module* module) {
  RegisterThisModule(module);
  EndInitializeFunction(module);
  EndFinalizeFunction(module);
  EndRegisterFunction(module);
  EndModuleParamsInitializeFunction(module);
  if (HasImports(module)) EndImportedHeaders(module);
}
}  // namespace

void CGModule(T3Tree_Node* node) {
  auto* module = node->as<T3Module>();
  BeginSkeleton(module);
  gT3Context.storeCurrentModuleName(module->name);
  ResetLiteralTable();
  AddModuleBuiltinTypes(module);
  CGSetForms();
  CGImportDecl(module->definition_part);
  CGGlobalConstants(module->definition_part);
  CGDecl(module->definition_part);
  if (!HasControlPart(module)) CGDummyControlPart(module);
  EndSkeleton(module);
}
