// The stamp files of modules.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3ModuleMap.h"
#include "frontend/T3Tree.h"
#include "support/TemporaryFiles.h"

namespace {
constexpr const char* kAnalysed = "analysed";
constexpr const char* kCompiled = "compiled";
constexpr const char* kOptimized = "unused_definitions_optimized";
constexpr const char* kNotOptimized = "unused_definitions_not_optimized";

struct Stamp {
  std::string stage = "undefined";
  long time = 0;
  std::string optimization;
  std::string settings;
};

/// The settings of a module's code, by its name: of what was generated last, and of what would be now.
struct Settings {
  std::string of_stamp;
  std::string of_run;
};
std::map<tIdent, Settings>& settings_of_modules = *new std::map<tIdent, Settings>;

T3Module* ModuleOf(T3Tree_Node* root, int line, const char* walk) {
  T3Tree_Node* node = T3Is<T3Builtin>(root) ? root->as<T3Builtin>()->module : root;
  if (!T3Is<T3Module>(node)) internal_error_ast("T3ModuleMap", line, walk, node);
  return node->as<T3Module>();
}

// Up to four words: what was done, the time of the source, and perhaps the optimization and the settings.
// Longer ones are none of ours.
Stamp ReadStamp(const std::string& path) {
  Stamp stamp;
  FILE* stream = std::fopen(path.c_str(), "r");
  if (stream == nullptr) return stamp;
  char stage[64] = "";
  char time[64] = "";
  char optimization[64] = "";
  char settings[256] = "";
  if (std::fscanf(stream, "%63s %63s %63s %255s", stage, time, optimization, settings) >= 1)
    stamp.stage = stage;
  std::fclose(stream);
  char* end = time;
  const long number = std::strtol(time, &end, 10);
  if (end == time || *end != '\0') return stamp;
  stamp.time = number;
  stamp.optimization = optimization;
  stamp.settings = settings;
  return stamp;
}
}  // namespace

std::string TimestampFileName(T3Tree_Node* module) {
  return GetOutputDir(module) + '/' + GetOutputFile(module) + ".t3a";
}

void UpdateBuildAvoidanceInfo(T3Tree_Node* root) {
  T3Module* module = ModuleOf(root, __LINE__, "T3Control::UpdateBuildAvoidanceInfo");
  const std::string path = TimestampFileName(module);
  module->file_changed = true;
  module->code_generation_necessary = true;
  struct stat status {};
  // A device or pipe in its place is no stamp, and might never end.
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  const Stamp stamp = ReadStamp(path);
  const long source_time = module->source_file_modification_time;
  if (status.st_mtime >= source_time && stamp.time == source_time) {
    module->file_changed = stamp.stage != kAnalysed && stamp.stage != kCompiled;
    module->code_generation_necessary = stamp.stage != kCompiled;
  }
  module->unused_definitions_removed = stamp.optimization == kOptimized;
  settings_of_modules[module->name].of_stamp = stamp.settings;
}

void UpdateBuildAvoidanceFile(T3Tree_Node* root, bool success, compiler_stage_t stage) {
  T3Module* module = ModuleOf(root, __LINE__, "T3Control::UpdateBuildAvoidanceFile");
  MakeDir(GetOutputDir(module));
  const std::string path = TimestampFileName(module);
  if (!success) {
    unlink(path.c_str());
    return;
  }
  OutputFile file;
  if (!file.Open(path)) return;
  const bool only_analysed = stage == stage_analysis && module->code_generation_necessary;
  std::fprintf(file.stream(), "%s\n%ld\n", only_analysed ? kAnalysed : kCompiled,
               module->source_file_modification_time);
  if (!only_analysed) {
    std::fprintf(file.stream(), "%s\n", module->unused_definitions_removed ? kOptimized : kNotOptimized);
    Settings& settings = settings_of_modules[module->name];
    if (stage == stage_code_generation) settings.of_stamp = settings.of_run;
    if (!settings.of_stamp.empty()) std::fprintf(file.stream(), "%s\n", settings.of_stamp.c_str());
  }
  // Whatever became of the new stamp, an old one must not speak for this run.
  if (!file.Commit()) unlink(path.c_str());
}

void SetCodeSettings(T3Tree_Node* module, const std::string& settings) {
  settings_of_modules[module->as<T3Module>()->name].of_run = settings;
}

bool CodeSettingsChanged(T3Tree_Node* module) {
  const Settings& settings = settings_of_modules[module->as<T3Module>()->name];
  return settings.of_stamp != settings.of_run;
}

void RequireGeneration(T3Tree_Node* node) {
  auto* module = node->as<T3Module>();
  const bool is_new = !module->code_generation_necessary;
  module->code_generation_necessary = true;
  if (is_new && access(TimestampFileName(module).c_str(), F_OK) == 0)
    UpdateBuildAvoidanceFile(module, true, stage_analysis);
}

void ClearOptimizationInfo(T3Tree_Node* node) {
  ModuleOf(node, __LINE__, "T3Control::ClearOptimizationInfo")->unused_definitions_removed = false;
}
