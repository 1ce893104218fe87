// The words of generated C, one constant for each. A generator never spells a word itself.
#pragma once

#define T3_WORD(constant, text) inline constexpr const char* constant = text;
#define T3_C_WORD(constant, text) inline constexpr const char* constant = text;
#include "generator/text/T3CodeDefs.def"
#undef T3_WORD
#undef T3_C_WORD
