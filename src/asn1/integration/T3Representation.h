// What kind of module a T3Module is: its representation, the texts of language clauses, and the steps of
// a module's life that depend on it.
#pragma once

#include <string_view>

#include "driver/T3Options.h"

struct T3Tree_Node;

/// The text of a representation with its double quotes, as in a language clause. `node` is a module or a
/// representation; a module without one is taken by its language clause.
const char* T3ReprToString(T3Tree_Node* node);
/// The language that the option tables are indexed by.
::language T3ReprToLanguage(T3Tree_Node* node);
/// The node of the edition that a language clause names, in double quotes; T3TTCN_3 for any other text.
T3Tree_Node* MakeTTCN3Representation(std::string_view text);

/// Whether a text in double quotes names an edition; without `strict` also the bare language.
bool IsTTCN3LanguageSpecification(std::string_view text, bool strict);
bool IsASN1LanguageSpecification(std::string_view text, bool strict);
