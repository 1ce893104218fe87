#include "generator/module/CGIncludes.h"

#include "driver/modules/T3ModuleMap.h"
#include "driver/options/T3CommandLine.h"
#include "generator/text/T3Context.h"

void BeginImportedHeaders() {
  gT3Context.file().add(CFile::HeaderIncludes,
                        "#ifndef vexa_including_imports\n#define vexa_including_imports\n");
}

void EndImportedHeaders(T3Module* module) {
  const auto& imported = gT3ModuleDeps.at(module->name);
  for (const tIdent name : gT3Context.namedModules()) {
    const auto named = gT3ModuleMap.find(name);
    if (name == module->name || imported.count(name) > 0 || named == gT3ModuleMap.end()) continue;
    gT3Context.file().addInclude(GetOutputFile(named->second->as<T3Module>()) + ".h", false, false);
  }
  gT3Context.file().add(CFile::HeaderIncludes, "#undef vexa_including_imports\n#endif\n");
}
