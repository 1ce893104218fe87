#include "generator/module/CGModule.h"

#include <algorithm>
#include <array>

#include "asn1/integration/T3Representation.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "driver/options/T3Version.h"
#include "generator/module/CGDecl.h"
#include "generator/behaviour/CGFunction.h"
#include "generator/text/CGLiteralTable.h"
#include "generator/types/CGType.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
constexpr size_t kColumns = 7;

// Whether what is generated beside an ASN.1 module is part of its generated code, and whether codecs are.
bool HasExternalHeader(T3Module* module) {
  return T3ReprToLanguage(module) == language_asn1 && (GetCodecGeneration(module) & kCodecNoTranslation) == 0;
}

bool HasExternalCodecs(T3Module* module) {
  return HasExternalHeader(module) && (GetCodecGeneration(module) & kCodecAll) != 0;
}

std::string MagicNumberName() {
  std::string name = std::string("RTS_MAGIC_NUMBER_") + kVersion;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
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

void AddImports(T3Module* module) {
  const auto deps = gT3ModuleDeps.find(module->name);
  if (deps == gT3ModuleDeps.end()) return;
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
}
}  // namespace

std::string CGModuleName(T3Tree_Node* module) {
  if (!T3Is<T3Module>(module)) internal_error_ast("CGModule", __LINE__, "CGModuleName", module);
  return gIdents.GetCStr(module->as<T3Module>()->name);
}

void CGModule(T3Tree_Node* node) {
  auto* module = node->as<T3Module>();
  BeginSkeleton(module);
  gT3Context.storeCurrentModuleName(module->name);
  ResetLiteralTable();
  AddModuleBuiltinTypes(module);
  CGImportDecl(module->definition_part);
  CGGlobalConstants(module->definition_part);
  CGDecl(module->definition_part);
  if (!HasControlPart(module)) CGDummyControlPart(module);
  EndSkeleton(module);
}

T3Module* CGCurrentModule() {
  return gT3ModuleMap.at(gT3Context.currentModuleName())->as<T3Module>();
}

void CGAddMagicNumber(CFile& file) {
  const std::string type = std::string(C_VOID) + " *";
  file.addExternalConstant(type, MagicNumberName());
  file.addConstant(type, "RTS_MAGIC_NUMBER_CHECK", "&(" + MagicNumberName() + ")", true);
}

void CGSymTabAddEntry(CWords columns) {
  std::array<std::string_view, kColumns> row;
  std::copy(columns.begin(), columns.end(), row.begin());
  std::fill(row.begin() + columns.size(), row.end(), C_NULL);
  gT3Context.symbolTable().addRow({row[0], row[1], row[2], row[3], row[4], row[5], row[6]});
}

std::string CGFunctionPointer(const std::string& name) {
  return "((" + std::string(C_VOID) + " *) " + name + ")";
}

const std::string& CGSourceFileName(T3Tree_Node* module) {
  static T3Tree_Node* last = nullptr;
  static auto& name = *new std::string;
  if (module == last) return name;
  last = module;
  name.clear();
  for (const char c : EscapeEscape(GetSourceFile(module))) {
    if (c == '"') name += '\\';
    name += c;
  }
  return name;
}

void CGPushSourceLocation(CFunction& function, T3Tree_Node* module, const std::string& name,
                          const std::string& argv, const std::string& scope, const tPosition& position) {
  function.call(LUMO_SOURCE_LOCATION_PUSH,
                {Quote(CGModuleName(module)), Quote(name), argv, scope, Quote(CGSourceFileName(module)),
                 std::to_string(position.Line), VEXA_CONTEXT});
}

void CGPopSourceLocation(CFunction& function) {
  function.call(LUMO_SOURCE_LOCATION_POP, {VEXA_CONTEXT});
}

void CGSetSourceLine(CFunction& function, const tPosition& position) {
  function.call(LUMO_SOURCE_LOCATION_SET_LINE, {std::to_string(position.Line), VEXA_CONTEXT});
}

void CGCommentPlace(CFunction& function, const tPosition& position, const std::string& what) {
  std::string text = CGSourceFileName(CGCurrentModule());
  text.append(" - line ").append(std::to_string(position.Line)).append(" : ").append(what);
  // the name of a file must not end the comment
  for (size_t at = text.find("*/"); at != std::string::npos; at = text.find("*/", at))
    text.insert(at + 1, " ");
  function.addText("\n");
  function.addComment(text);
}

void CGLogInformation(CFunction& function, const std::string& text) {
  function.call(LUMO_LOG_STRING_TO_ALL, {LUMO_LOG_MSG_INFO_C, Quote(text), VEXA_CONTEXT});
}
