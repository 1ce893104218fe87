// What every unit writes about the module that is being generated: its name and place in the source, rows of
// its symbol table, and calls that tell the run-time system where execution stands.
#pragma once

#include <string>

#include "FileAPI/CBase.h"
#include "frontend/T3Tree.h"

class CFile;
class CFunction;

/// The module's name; any other node throws internal_exception.
std::string CGModuleName(T3Tree_Node* module);

/// A reference by which the file links only with the run-time library of the compiler's version.
void CGAddMagicNumber(CFile& file);

/// The module being generated.
T3Module* CGCurrentModule();

/// Adds a row to the symbol table: quoted name, kind word, and up to five columns; the rest is "NULL".
void CGSymTabAddEntry(CWords columns);
/// "((void *) name)".
std::string CGFunctionPointer(const std::string& name);

/// The name of the module's source file as the text of a C string literal.
const std::string& CGSourceFileName(T3Tree_Node* module);
/// The same of the file of a place, which an inherited member may have elsewhere than the module.
std::string CGSourceFileName(const tPosition& position);
/// Whether the place lies in another file than the module that is being generated.
bool CGIsElsewhere(const tPosition& position);
/// Calls that tell the run-time system where execution stands. `argv` is a word of C, `scope` the word of
/// the kind of behaviour.
void CGPushSourceLocation(CFunction& function, T3Tree_Node* module, std::string_view name,
                          std::string_view argv, std::string_view scope, const tPosition& position);
void CGPopSourceLocation(CFunction& function);
void CGSetSourceLine(CFunction& function, const tPosition& position);
/// A comment behind an empty line: a place in the source of the module, and what stands there.
void CGCommentPlace(CFunction& function, const tPosition& position, std::string_view what);
/// Logs an information to all.
void CGLogInformation(CFunction& function, const std::string& text);
