// The stage of code generation.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "FileAPI/CFile.h"
#include "analysis/walk/T3Stages.h"
#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3ModuleSteps.h"
#include "asn1/integration/T3Representation.h"
#include "build/T3TciModules.h"
#include "driver/controller/T3Controller.h"
#include "driver/diagnostics/Errors.h"
#include "driver/options/T3Version.h"
#include "frontend/T3Tree.h"
#include "generator/module/CGModule.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3Context.h"
#include "support/FormatText.h"
#include "support/ModuleCaches.h"

namespace {
[[noreturn]] void FetchPrecomppiledAST() {
  vexa_error("'-generate-only' option not supported - exit", NoPosition);
  std::exit(kExitUsage);
}

// The entry types that the analysis noted; generation adds some of its own.
unsigned long entry_types = 0;
std::string numbered_names;

// Options that change a module's code, names that coincide, and the types of ASN.1 for which codecs are asked.
std::string CodeSettings(T3Tree_Node* module) {
  std::string settings;
  if (gT3CommandLine.debug) settings += "G";
  if (gT3CommandLine.template_description_length != 100)
    settings += FormatText("l%ld", gT3CommandLine.template_description_length);
  if (GetCodecGeneration(module) != kCodecAll) settings += FormatText("C%d", GetCodecGeneration(module));
  if (std::getenv("TTCN3_DISABLE_LENGTH_RESTRICTION") != nullptr) settings += "L";
  settings += numbered_names;
  const bool asn1 = T3ReprToLanguage(module) == language_asn1;
  if (asn1 && GetPrefix(module) != "t3_") settings += "P" + GetPrefix(module);
  if (asn1 && entry_types != 0) settings += FormatText("E%lx", entry_types);
  return settings;
}

bool IsUnchanged(T3Module* module) {
  return gT3CommandLine.build_avoidance && !module->file_changed && !module->code_generation_necessary &&
         !CodeSettingsChanged(module);
}

// What generation found out about a module and hung on nodes.
void DropGenerated() {
  ClearModuleCaches();
  ResetAllLocations();
}

bool CompileModule(T3Tree_Node* module, const char* name) {
  vexa_compiler_phases(GetVerbosity(module), FormatText("Generating code for module \"%s\"", name));
  const bool generated = T3Module_generate(module);
  DropGenerated();
  return generated;
}

// Whether the files of a module are kept where the new ones say the same, and whether they were.
struct {
  bool asked = false;
  bool kept = false;
} keeping;

void SaySkipped(T3Module* module, const char* name) {
  vexa_compiler_phases(GetVerbosity(module),
                       FormatText("Skipping code generation for unchanged module \"%s\"", name));
}

// What changed may show in the code through several imports, or not: the code tells.
bool CompileWhereDifferent(T3Module* module, const char* name) {
  keeping = {true, false};
  const bool generated = T3Module_generate(module);
  if (keeping.kept)
    SaySkipped(module, name);
  else
    vexa_compiler_phases(GetVerbosity(module), FormatText("Generating code for module \"%s\"", name));
  keeping = {};
  DropGenerated();
  return generated;
}

bool GenerateModule(T3Module* module) {
  const compiler_action_t action = GetAction(module);
  const char* name = gIdents.GetCStr(module->name);
  SetCodeSettings(module, CodeSettings(module));
  if (IsUnchanged(module)) {
    if (action == action_compile && ImportsChanged(module)) return CompileWhereDifferent(module, name);
    if (WillGenerateCode(action)) SaySkipped(module, name);
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
  if (gT3CommandLine.build_avoidance) file->keepLike(IsSameCode);
  TellOutputFiles(module, directory, base);
  ClearOptimizationInfo(module);
  gT3Context.begin(std::move(file));
  RestoreModule_gT3IntegerType(module);
  const long errors_before = gErrors.ErrorCount();
  CGModule(module);
  // What is told only now has no form in C either.
  if (gErrors.ErrorCount() != errors_before) gT3Context.invalidateFile();
  const bool is_complete = gT3Context.file().valid();
  try {
    keeping.kept = !gT3Context.end() && keeping.asked;
  } catch (const CNameTaken& taken) {
    vexa_error(taken.message(), module->as<T3Module>()->position);
    return false;
  }
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
  entry_types = EntryTypesDigest();
  numbered_names = NumberedNamesOfRun();
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
