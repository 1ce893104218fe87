// Any bytes as a source file, analysed and generated as a whole run does it: the run must end without a fault
// of the compiler itself, whatever it reports.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "analysis/walk/T3Stages.h"
#include "asn1/integration/T3ModuleSteps.h"
#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/controller/T3Controller.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3ModuleMap.h"
#include "frontend/T3Tree.h"

namespace {

std::string folder;

void RunCompiler() {
  T3ImportPositions positions;
  std::vector<tIdent> order;
  std::set<tIdent> requested;
  if (!ParseFiles()) return;
  BuildModuleTable(gT3AST.root, &gT3ModuleMap, &positions);
  DefaultModules(requested, gT3CommandLine.modules, gT3ModuleMap);
  if (!ResolveImports(requested, gT3ModuleMap, order, gT3ModuleDeps, positions)) return;
  PropagateModuleOptions(gT3ModuleMap);
  SeparateModules(gT3AST.root);
  if (AnalyzeSystem(order.begin(), order.end())) GenerateCode();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char name[] = "/tmp/orvane-fuzz-XXXXXX";
  if (mkdtemp(name) == nullptr || chdir(name) != 0) return 1;
  folder = name;
  // The messages are not what is looked at.
  gErrors.SetStream(std::fopen("/dev/null", "w"));
  BeginT3Representation({[](T3Tree_Node* module) { return Analyze(module, gT3ModuleMap); }, Generate});
  gT3CommandLine.common.verbosity.value = verbosity_level_t::Errors;
  gT3CommandLine.common.action.value = action_compile;
  gT3CommandLine.maximum_errors = 1000;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path = folder + "/input.ttcn";
  FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  file_argument_t argument;
  argument.name = gIdents.MakeIdent(path);
  argument.language = language_ttcn3;
  gT3CommandLine.files.assign(1, argument);
  gT3CommandLine.modules.clear();
  gT3ModuleMap.clear();
  gT3ModuleDeps.clear();
  gErrors.BeginErrors();
  gParseErrors = 0;
  InitBuiltinTypes();
  try {
    RunCompiler();
  } catch (const MaximumErrorsExceeded&) {
  } catch (const std::string&) {
    // an orderly end with its own text
  }
  return 0;
}
