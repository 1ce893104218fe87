// The control centre: the fixed sequence of stages from start to exit status. It holds no knowledge of the
// language; every stage is a call into another room.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3ModuleMap.h"

/// How a run ends: the status of the stage that failed.
enum ExitStatus : int {
  kExitNormal = 0,
  kExitFatal = 1,
  kExitUsage = -1,
  kExitException = -4,
  kExitFiles = -5,
  kExitParsing = -6,
  kExitImports = -8,
  kExitAnalysis = -9,
  kExitGeneration = -10,
  kExitMakefile = -11,
  kExitErrorLimit = -12,
};

/// One run of the compiler; returns its exit status.
int RunCompiler(int argc, const char** argv);

/// Finds the installation directory from the program's path, and puts the programs beside it at the head of
/// PATH. Throws a std::string for an unknown host.
void setup_paths(int argc, const char** argv);

// Files (T3ControllerFiles).

/// True when every file can be opened; reports each one that cannot.
bool CheckFiles(std::vector<file_argument_t>::const_iterator begin,
                std::vector<file_argument_t>::const_iterator end);
/// Parses all files into gT3AST; false when one failed.
bool ParseFiles();
/// Parses one TTCN-3 file, read at `path`, whose positions carry `file`.
bool ParseTTCN3(const char* path, tIdent file);

// Selection and order of modules (T3ControllerModules).

/// Enters modules that are to be generated without a source.
void ExtendModuleTable(const std::vector<module_argument_t>& arguments, T3ModuleMap& modules);
/// The modules of a file, in the order of their names' identifiers.
std::vector<T3Tree_Node*> GetFileModules(tIdent file, const T3ModuleMap& modules);
/// Requests the modules of each file of which none has been requested.
void DefaultModules(std::set<tIdent>& requested, std::vector<module_argument_t>& arguments,
                    const T3ModuleMap& modules);
/// The order of processing, imported modules first. False after a report of a cycle or missing modules.
bool ResolveImports(const std::set<tIdent>& requested, const T3ModuleMap& modules, std::vector<tIdent>& order,
                    T3ModuleDeps& deps, const T3ImportPositions& positions);
/// Gives each module that is named on the command line its own options.
void PropagateModuleOptions(const T3ModuleMap& modules);

/// Leaves one of the arguments that name the same module: the first, with the options of the last.
void JoinRepeatedModules(std::vector<module_argument_t>& arguments);

// What is written (T3ControllerOutputs).

/// Whether no two outputs of the run are one file; reports those that are. `order` are the modules of the
/// run.
bool OutputsAreDistinct(const std::vector<tIdent>& order);

// Analysis (T3ControllerAnalysis).

/// Analyses the modules in order; false when one has errors.
bool AnalyzeSystem(std::vector<tIdent>::const_iterator begin, std::vector<tIdent>::const_iterator end);
/// The stages of one module's analysis.
bool Analyze(T3Tree_Node* module, T3ModuleMap& modules);
/// Throws a std::string when an imported module is not analysed.
bool CheckDependencies(T3Tree_Node* module);
/// A module whose source changed may use what an imported module left out when it was generated last.
void PropagateOptimizationInfo(T3Tree_Node* module);
/// A module must be generated when a module that it imports has changed.
void PropagateBuildAvoidanceInfo(T3Tree_Node* module);
/// Whether a changed module shows, perhaps, in the code of one that has been analysed: it imports that
/// module, be it through others.
bool ImportsChanged(T3Tree_Node* module);

// Generation (T3ControllerGeneration).

/// Writes the code of all modules; false when one failed.
bool GenerateCode();
/// Writes the code of one module.
bool Generate(T3Tree_Node* module);
/// True when a module argument of the language will get code.
bool WillAnythingGenerateCode(::language of);
/// Stores and fetches the integer type node of a module.
void SaveModule_gT3IntegerType(T3Tree_Node* module);
void RestoreModule_gT3IntegerType(T3Tree_Node* module);
