// The options of one module: its own block, its file, its language group, the common block.
#include "asn1/integration/T3Representation.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3Tree.h"

namespace {
const ModuleOptions* OwnOptions(T3Tree_Node* module) {
  return module->as<T3Module>()->options;
}

// The value in the module's own block, if it was given there.
template <class T>
const T* Own(T3Tree_Node* module, OptionValue<T> ModuleOptions::*field) {
  const ModuleOptions* own = OwnOptions(module);
  return own != nullptr && (own->*field).given ? &(own->*field).value : nullptr;
}

bool IsAbsolute(const std::string& path) {
  if (path.empty()) return false;
  return path[0] == '/' || path[0] == '\\' || (path.size() > 1 && path[1] == ':');
}

// The action that was given with the module's file, where it stands first.
const compiler_action_t* ActionOfFile(T3Tree_Node* module) {
  const file_argument_t* file = gT3CommandLine.FindFile(module->as<T3Module>()->filename);
  return file != nullptr && file->options.action.given ? &file->options.action.value : nullptr;
}
}  // namespace

verbosity_level_t GetVerbosity(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::verbosity);
  return own != nullptr ? *own : gT3CommandLine.GetVerbosity(T3ReprToLanguage(module));
}

bool GetWeakTyping(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::weak_typing);
  return own != nullptr ? *own : gT3CommandLine.GetWeakTyping(T3ReprToLanguage(module));
}

// One level holds for all modules of a language: what a module's own argument says is not asked for.
int GetInitializeCheck(T3Tree_Node* module) {
  return gT3CommandLine.GetInitializeCheck(T3ReprToLanguage(module));
}

bool GetNameEquivalence(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::name_equivalence);
  return own != nullptr ? *own : gT3CommandLine.GetNameEquivalence(T3ReprToLanguage(module));
}

compiler_action_t GetAction(T3Tree_Node* module) {
  if (const auto* own = Own(module, &ModuleOptions::action)) return *own;
  if (const auto* of_file = ActionOfFile(module)) return *of_file;
  return gT3CommandLine.GetCompilerAction(T3ReprToLanguage(module));
}

int GetSplitFile(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::split_file);
  return own != nullptr ? *own : gT3CommandLine.GetSplitFile(T3ReprToLanguage(module));
}

std::string GetPrefix(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::prefix);
  return own != nullptr ? *own : gT3CommandLine.GetPrefix(T3ReprToLanguage(module));
}

std::string GetOutputDir(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::directory);
  const std::string directory = own != nullptr ? *own : gT3CommandLine.GetDirectory(T3ReprToLanguage(module));
  return IsAbsolute(directory) ? directory : gT3CommandLine.project_directory + '/' + directory;
}

std::string GetOutputFile(T3Tree_Node* module) {
  if (const auto* own = Own(module, &ModuleOptions::output)) return *own;
  const auto language = T3ReprToLanguage(module);
  const std::string name = gT3CommandLine.GetOutput(language) + gIdents.GetCStr(module->as<T3Module>()->name);
  // What the ASN.1 tools write has names of this length at most, and the rest goes with it.
  constexpr size_t kLongestPrefix = 30;
  return language == language_asn1 ? name.substr(0, kLongestPrefix) : name;
}

int GetCodecGeneration(T3Tree_Node* module) {
  const auto* own = Own(module, &ModuleOptions::codec_generation);
  return own != nullptr ? *own : gT3CommandLine.GetCodecGeneration(T3ReprToLanguage(module));
}

std::string GetSourceFile(T3Tree_Node* module) {
  return gIdents.GetCStr(module->as<T3Module>()->filename);
}
