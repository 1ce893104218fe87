// The steps of a module's life that depend on its representation: reading, analysis, generation.
#pragma once

#include <string>

#include "support/Idents.h"

struct T3Tree_Node;

/// The steps of the controller that a module's analysis and generation lead to.
struct T3ModuleSteps {
  bool (*analyze)(T3Tree_Node* module);
  bool (*generate)(T3Tree_Node* module);
};

/// Once, before the first file is parsed, and at the end of a run that went well.
void BeginT3Representation(const T3ModuleSteps& steps);
void CloseT3Representation();

/// Analyses and generates a module in the way of its representation; false after a report.
bool T3Module_analyze(T3Tree_Node* module);
bool T3Module_generate(T3Tree_Node* module);

/// Parses one ASN.1 file, read at `path`, whose positions carry `file`; false after a report.
bool ParseASN1(const char* path, tIdent file);
/// Keeps a copy of each ASN.1 file's syntax file in `directory` beside it, for a later run.
void mesk_backupSTXFiles(const std::string& directory);
