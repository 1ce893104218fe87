#include "driver/controller/T3Controller.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <new>

#include "analysis/walk/T3Stages.h"
#include "asn1/front/AsnFault.h"
#include "asn1/integration/T3ModuleSteps.h"
#include "build/T3GenMakefile.h"
#include "driver/diagnostics/Errors.h"
#include "driver/options/T3Version.h"
#include "support/LargePages.h"
#include "support/OwnStack.h"
#include "support/TemporaryFiles.h"
#include "support/rSystem.h"

namespace {
constexpr rlim_t kStackSize = 64UL << 20;

void Say(const std::string& text) {
  vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), text);
}

// Nesting in a source is limited, but not by the stack that the user's shell happens to give. False when the
// system refuses more.
bool EnlargeStack() {
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return false;
  if (limit.rlim_cur >= kStackSize) return true;
  limit.rlim_cur = std::min(kStackSize, limit.rlim_max);
  return setrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur >= kStackSize;
}

int ParseStage() {
  if (!CheckFiles(gT3CommandLine.files.begin(), gT3CommandLine.files.end())) return kExitFiles;
  if (ParseFiles()) return kExitNormal;
  Say("Syntax analysis failed");
  return kExitParsing;
}

int OrderStage(std::vector<tIdent>& order) {
  T3ImportPositions positions;
  BuildModuleTable(gT3AST.root, &gT3ModuleMap, &positions);
  JoinRepeatedModules(gT3CommandLine.modules);
  ExtendModuleTable(gT3CommandLine.modules, gT3ModuleMap);
  std::set<tIdent> requested;
  for (const module_argument_t& argument : gT3CommandLine.modules) requested.insert(argument.name);
  DefaultModules(requested, gT3CommandLine.modules, gT3ModuleMap);
  if (!ResolveImports(requested, gT3ModuleMap, order, gT3ModuleDeps, positions)) {
    Say("Compilation failed when resolving imports");
    return kExitImports;
  }
  PropagateModuleOptions(gT3ModuleMap);
  SeparateModules(gT3AST.root);
  return kExitNormal;
}

int Stages(int argc, const char** argv) {
  g_argc = argc;
  g_argv = argv;
  ReadGlobalOpts(argc, argv, gT3CommandLine);
  BeginT3Representation({[](T3Tree_Node* module) { return Analyze(module, gT3ModuleMap); }, Generate});
  InitBuiltinTypes();
  if (const int status = ParseStage(); status != kExitNormal) return status;
  std::vector<tIdent> order;
  if (const int status = OrderStage(order); status != kExitNormal) return status;
  if (!OutputsAreDistinct(order)) return kExitGeneration;
  if (!AnalyzeSystem(order.begin(), order.end())) return kExitAnalysis;
  if (!GenerateCode()) return kExitGeneration;
  if (!GenerateMakefile(orv_dir)) return kExitMakefile;
  Say("Done");
  CloseT3Representation();
  return kExitNormal;
}

int Failed(const char* form, const char* what) {
  std::fprintf(stderr, form, what);
  std::fflush(stderr);
  return kExitException;
}

struct Arguments {
  int argc;
  const char** argv;
};

int StagesUnderHandlers(int argc, const char** argv) {
  try {
    return Stages(argc, argv);
  } catch (const asn1::AsnExit& ends) {
    CloseT3Representation();
    return ends.status;
  } catch (const MaximumErrorsExceeded&) {
    gErrors.Message("Maximum number of errors reached, breaking", kError, NoPosition);
    return kExitErrorLimit;
  } catch (const std::exception& exception) {
    return Failed("\nINTERNAL ERROR: %s\ncompilation failed\n", exception.what());
  } catch (const std::string& text) {
    return Failed("\nERROR: %s\ncompilation failed\n", text.c_str());
  } catch (...) {
    return Failed("\nUnknown exception%s\n", "");
  }
}
}  // namespace

int RunCompiler(int argc, const char** argv) {
  OccupyStandardStreams();
  std::set_new_handler(OutOfMemory);
  CatchSignals();
  const bool enough_stack = EnlargeStack();
  PrepareLargePages();
  vexa_compiler_phases(verbosity_level_t::Stages, Banner());
  gT3AST.SetCheckReport(stderr);
  try {
    setup_paths(argc, argv);
  } catch (const std::string& text) {
    vexa_compiler_phases(verbosity_level_t::Stages, text);
    return kExitException;
  }
  Arguments arguments{argc, argv};
  const auto run = [](void* given) {
    const auto* from = static_cast<const Arguments*>(given);
    return StagesUnderHandlers(from->argc, from->argv);
  };
  return enough_stack ? run(&arguments) : CallOnOwnStack(kStackSize, run, &arguments);
}
