// The stage of analysis.
#include <cstdio>
#include <cstdlib>

#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "asn1/integration/T3ModuleSteps.h"
#include "asn1/integration/T3Representation.h"
#include "driver/diagnostics/Errors.h"
#include "driver/controller/T3Controller.h"
#include "frontend/T3Tree.h"
#include "support/FormatText.h"
#include "support/ModuleCaches.h"

namespace {
const char* NameOf(T3Tree_Node* module) {
  return gIdents.GetCStr(module->as<T3Module>()->name);
}

// The modules that a module imports directly.
std::vector<T3Module*> ImportedModules(T3Tree_Node* module) {
  std::vector<T3Module*> imported;
  const auto deps = gT3ModuleDeps.find(module->as<T3Module>()->name);
  if (deps == gT3ModuleDeps.end()) return imported;
  for (const tIdent name : deps->second) {
    const auto found = gT3ModuleMap.find(name);
    if (found != gT3ModuleMap.end()) imported.push_back(found->second->as<T3Module>());
  }
  return imported;
}

using Modules = std::set<const T3Tree_Node*>;

// The modules that a changed one reaches through imports, over however many steps.
Modules& with_changed_imports = *new Modules;
// Those whose imports must have all that they may need now.
Modules& needing_more = *new Modules;
const ModuleCache kCache{[] {
                           with_changed_imports.clear();
                           needing_more.clear();
                         },
                         ModuleCache::Holds::ForRun};

bool IsAnalysed(compiler_action_t action) {
  return action != action_parse && action != action_generate_only;
}

[[noreturn]] void StorePrecompiledAST() {
  vexa_error("'-precompile' option not supported - exit", NoPosition);
  std::exit(kExitUsage);
}

bool AnalyzeModule(T3Tree_Node* module) {
  CheckDependencies(module);
  vexa_compiler_phases(GetVerbosity(module),
                       FormatText("Analyzing %s module \"%s\"", T3ReprToString(module), NameOf(module)));
  const bool passed = T3Module_analyze(module);
  PropagateBuildAvoidanceInfo(module);
  PropagateOptimizationInfo(module);
  CleanupAnalysisIntermediateData(module);
  SaveModule_gT3IntegerType(module);
  return passed;
}

void EvaluateAttributes(T3Tree_Node* root, verbosity_level_t verbosity) {
  T3Eval evaluator;
  evaluator.BeginT3Eval();
  vexa_progress(verbosity, "Semantical analysis");
  evaluator.Evaluate(root);
  evaluator.CloseT3Eval();
}

void AnalyzeTemplates(T3Tree_Node* root, verbosity_level_t verbosity) {
  if (!TemplateCyclesFound()) {
    vexa_progress(verbosity, "Resolving template modifications");
    ExplicifyTemplateModifies(root);
  }
  CheckMatchingExpressionsInSendTemplates(root);
  if (GetOmitCheckOpt()) OmitCheck(root);
  TemplateRestrictionsCheck(root);
}

// The steps in their order; null when component extension failed.
T3Tree_Node* AnalysisSteps(T3Tree_Node* module) {
  const verbosity_level_t verbosity = GetVerbosity(module);
  vexa_progress(verbosity, "Pre-processing array types");
  ExplicifyArrayTypes(module);
  vexa_progress(verbosity, "Pre-processing attributes");
  PreprocessAttributes(module);
  vexa_progress(verbosity, "Importing declarations");
  PreprocessImports(module);
  vexa_progress(verbosity, "Resolving built-in types");
  T3Tree_Node* root = AddBuiltinTypes(module);
  vexa_progress(verbosity, "Pre-processing inlined types");
  ExplicifyInlinedTypes(root);
  if (!ExtendComponents(root)) {
    vexa_error("failed extending component type declarations", NoPosition);
    // Modules that import it ask its nodes where they stand.
    SetPlaces(root);
    return nullptr;
  }
  EvaluateAttributes(root, verbosity);
  AnalyzeTemplates(root, verbosity);
  if (!GetWeakTyping(module)) {
    vexa_progress(verbosity, "Checking subtype restrictions");
    CheckSubtypes(root);
  }
  vexa_progress(verbosity, "Generating anytype information");
  SetAnyTypeInformation(root);
  UpdateBuildAvoidanceInfo(root);
  return root;
}
}  // namespace

bool Analyze(T3Tree_Node* module, T3ModuleMap&) {
  T3Tree_Node* root = nullptr;
  try {
    root = AnalysisSteps(module);
  } catch (const MaximumErrorsExceeded&) {
    throw;
  } catch (...) {
    std::fputs("Analyzer: Exception\n", stderr);
    throw;
  }
  if (root == nullptr) return false;
  const bool passed = gErrors.ErrorCount() == 0;
  UpdateBuildAvoidanceFile(root, passed, stage_analysis);
  return passed;
}

bool CheckDependencies(T3Tree_Node* module) {
  for (T3Module* imported : ImportedModules(module))
    if (!IsAnalysed(GetAction(imported)))
      throw FormatText(
          "Analysis of \"%s\" requires analysis of \"%s\", which has been explicitly turned off. Exiting",
          NameOf(module), NameOf(imported));
  return true;
}

// What had been left out of an import, and is used now, uses more of what that imports in turn. Code that
// holds all declarations uses all of them, wherever such code comes anew.
void PropagateOptimizationInfo(T3Tree_Node* node) {
  auto* module = node->as<T3Module>();
  const bool whole = !gT3CommandLine.optimize && ImportsChanged(module);
  if (!module->file_changed && !module->code_generation_necessary && !whole) return;
  std::vector<T3Tree_Node*> open{module};
  while (!open.empty()) {
    T3Tree_Node* user = open.back();
    open.pop_back();
    if (!needing_more.insert(user).second) continue;
    for (T3Module* imported : ImportedModules(user)) {
      if (!imported->unused_definitions_removed) continue;
      if (user == module && module->file_changed) RequireGeneration(imported);
      with_changed_imports.insert(imported);
      open.push_back(imported);
    }
  }
}

void PropagateBuildAvoidanceInfo(T3Tree_Node* module) {
  for (T3Module* imported : ImportedModules(module)) {
    // One that waits for its generation changed in an earlier run.
    if (imported->file_changed || imported->code_generation_necessary || ImportsChanged(imported))
      with_changed_imports.insert(module);
    if (!imported->file_changed) continue;
    RequireGeneration(module);
    return;
  }
}

bool ImportsChanged(T3Tree_Node* module) {
  return with_changed_imports.contains(module);
}

bool AnalyzeSystem(std::vector<tIdent>::const_iterator begin, std::vector<tIdent>::const_iterator end) {
  bool all = true;
  for (auto name = begin; name != end; ++name) {
    T3Tree_Node* module = gT3ModuleMap.at(*name);
    const compiler_action_t action = GetAction(module);
    if (action == action_precompile) StorePrecompiledAST();
    if (!IsAnalysed(action)) continue;
    all = AnalyzeModule(module) && all;
  }
  if (!all) vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), "Semantic analysis failed");
  return all;
}

void SaveModule_gT3IntegerType(T3Tree_Node* module) {
  gT3IntegerTypes[module->as<T3Module>()->name] = gT3IntegerType;
}

void RestoreModule_gT3IntegerType(T3Tree_Node* module) {
  const auto saved = gT3IntegerTypes.find(module->as<T3Module>()->name);
  if (saved != gT3IntegerTypes.end()) gT3IntegerType = saved->second;
}
