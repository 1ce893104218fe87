// The files of a run, which must be as many as their names.
#include <filesystem>
#include <map>

#include "build/T3GenMakefile.h"
#include "driver/controller/T3Controller.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3Tree.h"

namespace {
constexpr const char* kSource = "a source";

class Outputs {
 public:
  /// Notes a file in a directory, and what it belongs to. One that belongs to something else is reported.
  void Add(const std::string& directory, const std::string& name, const std::string& owner);
  /// Notes a file that the run reads.
  void AddSource(const std::filesystem::path& path);
  bool Distinct() const { return distinct_; }

 private:
  const std::filesystem::path& Canonical(const std::string& directory);

  std::map<std::string, std::filesystem::path> directories_;
  std::map<std::string, std::string> owners_;
  /// Of two things that share several files only one is told.
  std::set<std::pair<std::string, std::string>> told_;
  bool distinct_ = true;
};

const std::filesystem::path& Outputs::Canonical(const std::string& directory) {
  const auto [place, is_new] = directories_.try_emplace(directory);
  if (is_new) {
    std::error_code failed;
    place->second = std::filesystem::weakly_canonical(directory.empty() ? "." : directory, failed);
    if (failed) place->second = directory;
  }
  return place->second;
}

void Outputs::Add(const std::string& directory, const std::string& name, const std::string& owner) {
  const std::string path = (Canonical(directory) / name).lexically_normal().string();
  const auto [place, is_new] = owners_.try_emplace(path, owner);
  if (is_new || place->second == owner || !told_.emplace(place->second, owner).second) return;
  distinct_ = false;
  const bool is_source = place->second == kSource;
  vexa_error("\"" + directory + "/" + name + "\" would be written for " +
                 (is_source ? owner + ", but is a source of this run" : place->second + " and for " + owner),
             NoPosition);
}

void Outputs::AddSource(const std::filesystem::path& path) {
  Add(path.parent_path().string(), path.filename().string(), kSource);
}

std::string ModuleText(T3Tree_Node* module) {
  return std::string("module \"") + gIdents.GetCStr(module->as<T3Module>()->name) + '"';
}

void AddModule(Outputs& outputs, T3Tree_Node* module) {
  const compiler_action_t action = GetAction(module);
  if (action == action_parse || action == action_generate_only) return;
  const std::string directory = GetOutputDir(module);
  const std::string base = GetOutputFile(module);
  const std::string owner = ModuleText(module);
  outputs.Add(directory, base + ".t3a", owner);
  if (!WillGenerateCode(action)) return;
  for (const char* suffix : {".h", ".c"}) outputs.Add(directory, base + suffix, owner);
  if (!T3Is<T3ASN_1>(module->as<T3Module>()->representation)) return;
  for (const std::string& suffix : Asn1OutputSuffixes()) outputs.Add(directory, base + suffix, owner);
}

void AddRegistry(Outputs& outputs) {
  if (!gT3CommandLine.tci || gT3CommandLine.modules.empty()) return;
  const auto first = gT3ModuleMap.find(gT3CommandLine.modules.front().name);
  if (first == gT3ModuleMap.end()) return;
  for (const char* name : {"ts_modules.h", "ts_modules.c"})
    outputs.Add(GetOutputDir(first->second), name, "the registry of modules");
}
}  // namespace

bool OutputsAreDistinct(const std::vector<tIdent>& order) {
  Outputs outputs;
  for (const file_argument_t& file : gT3CommandLine.files) outputs.AddSource(gIdents.GetCStr(file.name));
  for (const tIdent name : order) AddModule(outputs, gT3ModuleMap.at(name));
  AddRegistry(outputs);
  const MakefileOutputs build = GetMakefileOutputs(orv_dir);
  for (const std::string& name : build.names) outputs.Add(build.directory, name, '"' + name + '"');
  return outputs.Distinct();
}
