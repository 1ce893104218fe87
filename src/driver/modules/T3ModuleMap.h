// The modules of a run: the table of their names, their imports, and the stamp files by which a later run
// can skip work. Nodes of other kinds than those named are the compiler's own fault.
#pragma once

#include <map>
#include <set>
#include <string>

#include "driver/modules/T3Global.h"
#include "support/Position.h"

/// For the name of an imported module, where it is imported first.
using T3ImportPositions = std::map<tIdent, tPosition>;

/// Enters the modules of a list by name, and the positions of their imports. A name that is there already
/// is reported, and keeps its module.
void BuildModuleTable(T3Tree_Node* list, T3ModuleMap* modules, T3ImportPositions* positions);
/// Adds the imports of a declaration list.
void BuildImportTable(T3Tree_Node* decls, T3ImportPositions* positions);
/// Adds the names of the modules that a module imports directly.
void GetModuleDeps(T3Tree_Node* module, std::set<tIdent>* deps);
/// Makes each module of a list a list of its own.
void SeparateModules(T3Tree_Node* list);

/// How far a run has taken a module when it writes the stamp.
enum compiler_stage_t { stage_analysis = 0, stage_code_generation = 1 };

/// The path of a module's stamp file.
std::string TimestampFileName(T3Tree_Node* module);
/// Sets the module's flags from its stamp file. `root` is a T3Module or a T3Builtin.
void UpdateBuildAvoidanceInfo(T3Tree_Node* root);
/// Writes the stamp file, or removes it without `success`. A stamp that cannot be written is left out
/// silently: the next run does the work again.
void UpdateBuildAvoidanceFile(T3Tree_Node* root, bool success, compiler_stage_t stage);
/// What a module's code depends on beside sources, as a word; empty for the usual. The stamp keeps it.
void SetCodeSettings(T3Tree_Node* module, const std::string& settings);
/// Whether the module's code was generated with other settings than those that were set.
bool CodeSettingsChanged(T3Tree_Node* module);
/// Notes that the module is to be generated again, in its stamp too, should one be there.
void RequireGeneration(T3Tree_Node* module);
/// Forgets that unused declarations were left out.
void ClearOptimizationInfo(T3Tree_Node* module);
