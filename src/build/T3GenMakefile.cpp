#include "build/T3GenMakefile.h"

#include <memory>
#include <vector>

#include "build/T3Makefile.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "driver/options/T3Version.h"
#include "frontend/T3Tree.h"

namespace {

/// The sections of the MCFG file, by TRI mode.
constexpr const char* kTriModes[] = {"DEFAULT_TRI", "DEFAULT_NO_TRI", "USER_DEFINED"};

struct Root {
  T3Tree_Node* node;
  std::string name;
};

T3Tree_Node* FindModule(tIdent name) {
  const auto place = gT3ModuleMap.find(name);
  return place == gT3ModuleMap.end() ? nullptr : place->second;
}

T3Tree_Node* ModuleOf(const module_argument_t& argument) {
  T3Tree_Node* node = FindModule(argument.name);
  if (node == nullptr) throw "no module \"" + std::string(gIdents.GetCStr(argument.name)) + "\"";
  return node;
}

/// The module given with `-r`, or else the first of the command line.
Root FindRoot() {
  if (!gT3CommandLine.root_module_given) {
    T3Tree_Node* first = ModuleOf(gT3CommandLine.modules.front());
    return {first, gIdents.GetCStr(first->as<T3Module>()->name)};
  }
  T3Tree_Node* node = FindModule(gIdents.MakeIdent(gT3CommandLine.root_module));
  if (node == nullptr) throw std::string("non-existent root module");
  return {node, gT3CommandLine.root_module};
}

void RefuseLineBreaks(const std::string& path) {
  if (path.find_first_of("\r\n") != std::string::npos)
    throw "a line break in a path cannot stand in a makefile: \"" + path + "\"";
}

std::vector<T3Makefile::Module> CollectModules() {
  std::vector<T3Makefile::Module> modules;
  for (const module_argument_t& argument : gT3CommandLine.modules) {
    T3Tree_Node* node = ModuleOf(argument);
    modules.push_back({GetOutputDir(node), GetOutputFile(node), GetSourceFile(node), GetAction(node),
                       T3Is<T3ASN_1>(node->as<T3Module>()->representation)});
  }
  for (const T3Makefile::Module& module : modules) {
    RefuseLineBreaks(module._output_dir);
    RefuseLineBreaks(module._output_file);
  }
  return modules;
}

std::unique_ptr<T3Makefile> MakeMakefile(const std::string& orv_dir) {
  if (gT3CommandLine.modules.empty()) throw std::string("no modules to generate for");
  const Root root = FindRoot();
  auto makefile = std::make_unique<T3Makefile>(GetOutputDir(root.node), gT3CommandLine.project_directory,
                                               root.name, CollectModules(), gT3CommandLine.asn1_files);
  makefile->set_root_file(GetOutputFile(root.node));
  if (gT3CommandLine.tri_mode >= std::size(kTriModes)) {
    throw std::string("MakeFile/MainFile generation - Illegal TRI code");
  }
  makefile->set_tri(kTriModes[gT3CommandLine.tri_mode]);
  makefile->set_version(kVersion, kToolName);
  makefile->set_overwrite(gT3CommandLine.overwrite_makefile);
  makefile->init(orv_dir, "GnuMake", "");
  return makefile;
}

bool IsAskedFor() {
  return gT3CommandLine.generate_makefile || gT3CommandLine.force_main;
}

void Generate(const std::string& orv_dir) {
  const auto makefile = MakeMakefile(orv_dir);
  if (gT3CommandLine.generate_makefile) {
    makefile->generate();
  } else {
    makefile->generate_main_function_file();
  }
}

}  // namespace

bool GenerateMakefile(const std::string& orv_dir) {
  if (!IsAskedFor()) return true;
  const verbosity_level_t verbosity = gT3CommandLine.CommonVerbosity();
  vexa_compiler_phases(verbosity, "Generating MakeFile/MainFile");
  try {
    Generate(orv_dir);
  } catch (const std::string& reason) {
    vexa_compiler_phases(verbosity, "Makefile/MainFile generation failed: \"" + reason + "\"");
    return false;
  }
  return true;
}

MakefileOutputs GetMakefileOutputs(const std::string& orv_dir) {
  if (!IsAskedFor()) return {};
  try {
    const auto makefile = MakeMakefile(orv_dir);
    return {makefile->output_dir(), makefile->outputs(gT3CommandLine.generate_makefile)};
  } catch (const std::string&) {
    // GenerateMakefile will report it.
    return {};
  }
}
