#include "generator/module/CGIncludes.h"

#include <algorithm>
#include <unordered_map>

#include "driver/modules/T3ModuleMap.h"
#include "support/ModuleCaches.h"

namespace {
constexpr unsigned kLevels = 16;

struct Imports {
  /// The length of the longest chain of imports below the module.
  unsigned level = 0;
  /// Those among all imports that are included ahead.
  std::vector<tIdent> ahead;
};

std::unordered_map<tIdent, Imports>& Known() {
  static auto& known = *new std::unordered_map<tIdent, Imports>;
  return known;
}

const ModuleCache kCache{[] { Known().clear(); }, ModuleCache::Holds::ForRun};

std::vector<tIdent> ImportsOf(tIdent module) {
  std::vector<tIdent> imports;
  if (const auto deps = gT3ModuleDeps.find(module); deps != gT3ModuleDeps.end())
    for (const tIdent name : deps->second)
      if (gT3ModuleMap.contains(name)) imports.push_back(name);
  return imports;
}

bool IsBelow(tIdent a, tIdent b) {
  const unsigned left = Known().at(a).level;
  const unsigned right = Known().at(b).level;
  return left != right ? left < right : a < b;
}

// All imports are known, but for those around a cycle.
void Conclude(tIdent module) {
  Imports own;
  for (const tIdent name : ImportsOf(module)) {
    const Imports& imported = Known().at(name);
    own.level = std::max(own.level, imported.level + 1);
    std::vector<tIdent> below = imported.ahead;
    if (imported.level > 0 && imported.level % kLevels == 0) below.push_back(name);
    std::vector<tIdent> all;
    std::set_union(own.ahead.begin(), own.ahead.end(), below.begin(), below.end(), std::back_inserter(all),
                   IsBelow);
    own.ahead = std::move(all);
  }
  Known()[module] = std::move(own);
}

void LookBelow(tIdent module) {
  struct Step {
    tIdent module;
    bool imports_done;
  };
  std::vector<Step> open{{module, false}};
  while (!open.empty()) {
    const Step step = open.back();
    open.pop_back();
    if (step.imports_done) {
      Conclude(step.module);
    } else if (Known().try_emplace(step.module).second) {
      open.push_back({step.module, true});
      for (const tIdent name : ImportsOf(step.module)) open.push_back({name, false});
    }
  }
}
}  // namespace

std::vector<T3Module*> HeadersAhead(T3Module* module) {
  LookBelow(module->name);
  std::vector<T3Module*> modules;
  for (const tIdent name : Known().at(module->name).ahead)
    if (name != module->name) modules.push_back(gT3ModuleMap.at(name)->as<T3Module>());
  return modules;
}
