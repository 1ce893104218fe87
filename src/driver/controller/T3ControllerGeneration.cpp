// The stage of code generation.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "FileAPI/CFile.h"
#include "analysis/walk/T3Stages.h"
#include "asn1/integration/T3Representation.h"
#include "build/T3TciModules.h"
#include "driver/controller/T3Controller.h"
#include "driver/diagnostics/Errors.h"
#include "driver/options/T3Version.h"
#include "frontend/T3Tree.h"
#include "generator/module/CGModule.h"
#include "generator/text/T3Context.h"

namespace {
[[noreturn]] void FetchPrecomppiledAST() {
  vexa_error("'-generate-only' option not supported - exit", NoPosition);
  std::exit(kExitUsage);
}

bool IsUnchanged(const T3Module* module) {
  return gT3CommandLine.build_avoidance && !module->file_changed && !module->code_generation_necessary;
}

bool CompileModule(T3Tree_Node* module, const char* name) {
  vexa_compiler_phases(GetVerbosity(module), FormatText("Generating code for module \"%s\"", name));
  const bool generated = T3Module_generate(module);
  CleanupCompilationIntermediateData(module);
  return generated;
}

bool GenerateModule(T3Module* module) {
  const compiler_action_t action = GetAction(module);
  const char* name = gIdents.GetCStr(module->name);
  if (IsUnchanged(module)) {
    if (WillGenerateCode(action))
      vexa_compiler_phases(GetVerbosity(module),
                           FormatText("Skipping code generation for unchanged module \"%s\"", name));
    return true;
  }
  if (action == action_generate_only) FetchPrecomppiledAST();
  return action != action_compile || CompileModule(module, name);
}

void TellOutputFiles(T3Tree_Node* module, const std::string& directory, const std::string& base) {
  const verbosity_level_t verbosity = GetVerbosity(module);
  vexa_progress(verbosity, FormatText("Output files: \"%s.h\" and \"%s.c\"", base.c_str(), base.c_str()));
  vexa_progress(verbosity, FormatText("Output directory: \"%s\"", directory.c_str()));
}

// False when something of the module cannot be generated, which has been told.
bool GenerationSteps(T3Tree_Node* module) {
  const std::string directory = GetOutputDir(module);
  const std::string base = GetOutputFile(module);
  auto file = std::make_unique<CFile>(directory, base + ".h", base + ".c", true, CFile::kNoLineLimit);
  file->setHeaderMessage(GenerateModuleHeader());
  TellOutputFiles(module, directory, base);
  ClearOptimizationInfo(module);
  gT3Context.begin(std::move(file));
  RestoreModule_gT3IntegerType(module);
  const long errors_before = gErrors.ErrorCount();
  CGModule(module);
  // What is told only now has no form in C either.
  if (gErrors.ErrorCount() != errors_before) gT3Context.invalidateFile();
  const bool is_complete = gT3Context.file().valid();
  gT3Context.end();
  return is_complete;
}
}  // namespace

bool Generate(T3Tree_Node* module) {
  try {
    if (!GenerationSteps(module)) return false;
  } catch (const MaximumErrorsExceeded&) {
    gT3Context.invalidateFile();
    throw;
  } catch (...) {
    gT3Context.invalidateFile();
    std::fputs("Generator: Exception\n", stderr);
    throw;
  }
  UpdateBuildAvoidanceFile(module, true, stage_code_generation);
  return true;
}

bool GenerateCode() {
  bool all = true;
  for (const module_argument_t& argument : gT3CommandLine.modules) {
    const auto found = gT3ModuleMap.find(argument.name);
    if (found != gT3ModuleMap.end()) all = GenerateModule(found->second->as<T3Module>()) && all;
  }
  if (!all) vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), "Code generation failed");
  if (gT3CommandLine.tci) tci_generate_modules_info();
  return all;
}

bool WillAnythingGenerateCode(::language of) {
  return std::any_of(gT3CommandLine.modules.begin(), gT3CommandLine.modules.end(),
                     [of](const module_argument_t& argument) {
                       const auto found = gT3ModuleMap.find(argument.name);
                       return argument.language == of && found != gT3ModuleMap.end() &&
                              WillGenerateCode(GetAction(found->second));
                     });
}
