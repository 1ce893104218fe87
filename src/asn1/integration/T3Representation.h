// What kind of module a T3Module is: its representation, the texts of language clauses, and the steps of
// a module's life that depend on it.
#pragma once

#include <string>
#include <string_view>

#include "driver/options/T3Options.h"

struct T3Tree_Node;

/// The text of a representation with its double quotes, as in a language clause. `node` is a module or a
/// representation; a module without one is taken by its language clause.
const char* T3ReprToString(T3Tree_Node* node);
/// The language that the option tables are indexed by.
::language T3ReprToLanguage(T3Tree_Node* node);
/// The node of the edition that a language clause names, in double quotes; T3TTCN_3 for any other text.
T3Tree_Node* MakeTTCN3Representation(std::string_view text);

/// The steps of the controller that a module's analysis and generation lead to.
struct T3ModuleSteps {
  bool (*analyze)(T3Tree_Node* module);
  bool (*generate)(T3Tree_Node* module);
};

/// Once, before the first file is parsed, and at the end of a run that went well.
void BeginT3Representation(const T3ModuleSteps& steps);
void CloseT3Representation();

/// The shared representations of ASN.1 modules, from BeginT3Representation on.
extern T3Tree_Node *gT3ASN_1, *gT3MESK, *gT3ASN2C;

/// Analyses and generates a module in the way of its representation; false after a report.
bool T3Module_analyze(T3Tree_Node* module);
bool T3Module_generate(T3Tree_Node* module);

/// Parses one ASN.1 file, read at `path`, whose positions carry `file`; false after a report.
bool ParseASN1(const char* path, tIdent file);
/// Keeps a copy of each ASN.1 file's syntax file in `directory` beside it, for a later run.
void mesk_backupSTXFiles(const std::string& directory);

/// Whether a text in double quotes names an edition; without `strict` also the bare language.
bool IsTTCN3LanguageSpecification(std::string_view text, bool strict);
bool IsASN1LanguageSpecification(std::string_view text, bool strict);
