// Which modules are processed, in which order, with which options.
#include <algorithm>
#include <cstdio>

#include "driver/controller/T3Controller.h"
#include "support/TopologicalSort.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"
#include "support/FormatText.h"

namespace {
std::string Quoted(tIdent name) {
  return std::string("\"") + gIdents.GetCStr(name) + '"';
}

T3Module* MakeModuleWithoutSource(tIdent name) {
  T3Module* module =
      gT3AST.mT3Module(NoPosition, _sgT3NoModule(false), name, gStringM.PutString("\"TTCN-3\""), 0, false,
                       false, false, _sgT3NoExpression(), _sgT3NoDecl(), _sgT3NoWith());
  module->representation = _sgT3TTCN_3();
  return module;
}

// Requests one module of a file, unless the file's modules name it twice.
void AddModule(const file_argument_t& file, tIdent name, std::set<tIdent>& requested,
               std::vector<module_argument_t>& arguments) {
  if (!requested.insert(name).second) {
    vexa_error("Adding a module which has already been added", NoPosition);
    return;
  }
  vexa_progress(gT3CommandLine.CommonVerbosity(),
                FormatText("Adding module \"%s\" from %s file \"%s\"", gIdents.GetCStr(name),
                           KindToStr(file.language), gIdents.GetCStr(file.name)));
  arguments.push_back({name, file.language, ModuleOptions()});
}

void PrintCycle(const std::vector<tIdent>& cycle) {
  std::string line;
  for (const tIdent name : cycle) line += (line.empty() ? "" : " <- ") + Quoted(name);
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

bool ReportMissing(const std::vector<tIdent>& order, const T3ModuleDeps& known,
                   const T3ImportPositions& positions) {
  bool complete = true;
  for (const tIdent name : order) {
    if (known.contains(name)) continue;
    const auto position = positions.find(name);
    vexa_error("cannot find source for module " + Quoted(name),
               position == positions.end() ? NoPosition : position->second);
    complete = false;
  }
  return complete;
}
}  // namespace

void ExtendModuleTable(const std::vector<module_argument_t>& arguments, T3ModuleMap& modules) {
  for (const module_argument_t& argument : arguments) {
    if (!argument.options.action.given || argument.options.action.value != action_generate_only) continue;
    const auto found = modules.find(argument.name);
    if (found == modules.end())
      modules.emplace(argument.name, MakeModuleWithoutSource(argument.name));
    else
      vexa_warning(GetVerbosity(found->second),
                   "Module to be generated only was already parsed: " + Quoted(argument.name), NoPosition);
  }
}

void JoinRepeatedModules(std::vector<module_argument_t>& arguments) {
  std::map<tIdent, size_t> places;
  size_t kept = 0;
  for (const module_argument_t& argument : std::vector(arguments)) {
    const auto [place, is_new] = places.try_emplace(argument.name, kept);
    arguments[place->second] = argument;
    if (is_new) ++kept;
  }
  arguments.resize(kept);
}

std::vector<T3Tree_Node*> GetFileModules(tIdent file, const T3ModuleMap& modules) {
  std::vector<T3Tree_Node*> found;
  for (const auto& [name, module] : modules)
    if (module->as<T3Module>()->filename == file) found.push_back(module);
  return found;
}

void DefaultModules(std::set<tIdent>& requested, std::vector<module_argument_t>& arguments,
                    const T3ModuleMap& modules) {
  // One pass over the modules, not one for each file.
  std::map<tIdent, std::vector<tIdent>> names_of_file;
  for (const auto& [name, module] : modules) names_of_file[module->as<T3Module>()->filename].push_back(name);
  for (const file_argument_t& file : gT3CommandLine.files) {
    const auto found = names_of_file.find(file.name);
    if (found == names_of_file.end()) continue;
    const std::vector<tIdent>& names = found->second;
    const bool any_requested = std::any_of(names.begin(), names.end(),
                                           [&requested](tIdent name) { return requested.contains(name); });
    if (any_requested) continue;
    for (const tIdent name : names) AddModule(file, name, requested, arguments);
  }
}

bool ResolveImports(const std::set<tIdent>& requested, const T3ModuleMap& modules, std::vector<tIdent>& order,
                    T3ModuleDeps& deps, const T3ImportPositions& positions) {
  T3ModuleDeps imports;
  for (const auto& [name, module] : modules) GetModuleDeps(module, &imports[name]);
  std::vector<tIdent> cycle;
  if (!TopologicalSort<tIdent>(requested, imports).ResolveDependencies(&order, &cycle)) {
    vexa_error("cyclic import structure", NoPosition);
    PrintCycle(cycle);
    return false;
  }
  if (!ReportMissing(order, imports, positions)) return false;
  deps = std::move(imports);
  return true;
}

void PropagateModuleOptions(const T3ModuleMap& modules) {
  for (const module_argument_t& argument : gT3CommandLine.modules) {
    const auto found = modules.find(argument.name);
    // The copy lives as long as the tree that points to it.
    if (found != modules.end()) found->second->as<T3Module>()->options = new ModuleOptions(argument.options);
  }
}
