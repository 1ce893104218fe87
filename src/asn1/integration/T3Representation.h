// What kind of module a T3Module is: its representation, and the texts of language clauses.
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

/// The representation that a module has, by its language clause where none was set; any other node is its
/// own.
T3Tree_Node* RepresentationOf(T3Tree_Node* node);

/// The shared representations of ASN.1 modules, once they were made.
extern T3Tree_Node *gT3ASN_1, *gT3MESK, *gT3ASN2C;
void MakeSharedRepresentations();

/// Whether a text in double quotes names an edition; without `strict` also the bare language.
bool IsTTCN3LanguageSpecification(std::string_view text, bool strict);
bool IsASN1LanguageSpecification(std::string_view text, bool strict);
