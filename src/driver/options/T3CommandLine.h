// The command line of the run: reading it, and answering which option holds for a module. No one else
// looks at argv.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "driver/options/T3Options.h"

struct T3Tree_Node;

/// The options and arguments of the run. The controller appends to the modules; nobody else changes it
/// after reading.
struct T3CommandLine : GlobalOptions {
  /// The modules section, in order.
  std::vector<module_argument_t> modules;
  /// The files section, in order.
  std::vector<file_argument_t> files;

  /// The verbosity of messages that belong to no module.
  verbosity_level_t CommonVerbosity() const { return common.verbosity.value; }
  /// The first file argument of a name, or null.
  const file_argument_t* FindFile(tIdent name) const;

 private:
  /// Where the names of `files` stand first, as far as they have been asked for.
  mutable std::unordered_map<tIdent, size_t> places_;
};

inline T3CommandLine& gT3CommandLine = *new T3CommandLine;

/// Reads all arguments into `command_line`. A fault prints the help text and ends the process with
/// status -1; `-V` ends it with status 0.
void ReadGlobalOpts(int argc, const char** argv, T3CommandLine& command_line);

/// Applies a module option to a block; false when `option` is none.
bool SetModuleOptions(char option, const char* arg, const char** argv, ModuleOptions& options);

/// Prints the help text on standard error and ends the process with status -1.
[[noreturn]] void usage(const char* program);

/// Whether any file argument is of a language.
bool HasFilesOfLanguage(::language of);

/// True for the actions that end in generated code.
bool WillGenerateCode(compiler_action_t action);

// Which option holds for a module: its own, for the action then that of its file, then that of the
// language group, then the common one. `module` is a T3Module.
verbosity_level_t GetVerbosity(T3Tree_Node* module);
bool GetWeakTyping(T3Tree_Node* module);
bool GetNameEquivalence(T3Tree_Node* module);
/// Whether reads of variables without a value are passed over (0), warned of (1) or refused (2).
int GetInitializeCheck(T3Tree_Node* module);
compiler_action_t GetAction(T3Tree_Node* module);
int GetSplitFile(T3Tree_Node* module);
std::string GetPrefix(T3Tree_Node* module);
/// The output directory: as given where absolute, else below the project directory.
std::string GetOutputDir(T3Tree_Node* module);
/// The base name of the module's generated files.
std::string GetOutputFile(T3Tree_Node* module);
int GetCodecGeneration(T3Tree_Node* module);
/// The name of the source file, as on the command line.
std::string GetSourceFile(T3Tree_Node* module);

/// True when the environment asks for the additional check of `omit`.
bool GetOmitCheckOpt();

/// Makes a directory. Failure is told on standard output and has no other effect.
void MakeDir(const std::string& directory);

/// The text without its enclosing double quotes, where it has both.
std::string RemoveEnclosingQuotes(const std::string& text);
