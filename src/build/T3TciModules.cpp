#include "build/T3TciModules.h"

#include "FileAPI/CFile.h"
#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3Global.h"
#include "driver/options/T3Version.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace {
constexpr const char* kFunction = "t3tci_get_modules_info";

T3Tree_Node* KnownModule(const module_argument_t& argument) {
  const auto found = gT3ModuleMap.find(argument.name);
  return found == gT3ModuleMap.end() ? nullptr : found->second;
}

void AddModules(CFile& file) {
  auto array = file.beginArray(LUMO_MODULE_ENTRY_STRUCT_T, VEXA_MODULES_INFO, true);
  for (const module_argument_t& argument : gT3CommandLine.modules) {
    T3Tree_Node* module = KnownModule(argument);
    if (module == nullptr || !WillGenerateCode(GetAction(module))) continue;
    array->addRow({Quote(argument.name), CGFunctionPointer(ModuleRegisterName(argument.name))});
    file.addInclude(GetOutputFile(module) + ".h", false, false);
  }
  array->addRow({C_NULL, C_NULL});
  array->end();
}

void AddFunction(CFile& file) {
  auto function = file.beginFunction(LUMO_MODULE_ENTRY_T, kFunction, {}, "", true);
  function->_return(VEXA_MODULES_INFO);
  function->end();
}
}  // namespace

void tci_generate_modules_info() {
  if (gT3CommandLine.modules.empty()) return;
  T3Tree_Node* first = KnownModule(gT3CommandLine.modules.front());
  if (first == nullptr) return;
  CFile file(GetOutputDir(first), "ts_modules.h", "ts_modules.c", true, CFile::kNoLineLimit);
  file.setHeaderMessage(GenerateModuleHeader());
  file.addInclude(VEXA_RTS_INCLUDE, false, true);
  CGAddMagicNumber(file);
  AddModules(file);
  AddFunction(file);
  file.end();
}
