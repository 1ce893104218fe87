// What holds for the whole run beside the command line, the tree and the diagnostics. The controller owns
// these; other rooms read them, and set what is said to be theirs.
#pragma once

#include <ctime>
#include <map>
#include <set>
#include <string>

#include "support/Idents.h"

struct T3Tree_Node;

/// Every module known to the run, by name.
using T3ModuleMap = std::map<tIdent, T3Tree_Node*>;
/// The direct imports of each module.
using T3ModuleDeps = std::map<tIdent, std::set<tIdent>>;

inline T3ModuleMap& gT3ModuleMap = *new T3ModuleMap;
inline T3ModuleDeps& gT3ModuleDeps = *new T3ModuleDeps;

/// The source file being parsed, by the name of the command line, and when it was last changed.
inline tIdent gCurrentFilename = NoIdent;
inline time_t gCurrentFileModificationTime = 0;

/// True once any port's type list is `all`; set by the parser, holds for the whole run.
inline bool gT3IsPortAllTypes = false;

/// The integer type node that name analysis made for each module, by the module's name.
inline std::map<tIdent, T3Tree_Node*>& gT3IntegerTypes = *new std::map<tIdent, T3Tree_Node*>;

/// The installation directory, from the program's path.
inline std::string& orv_dir = *new std::string;
/// The arguments of `main`.
inline int g_argc = 0;
inline const char** g_argv = nullptr;
