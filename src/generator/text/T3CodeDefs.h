// The words of generated C, one constant for each. A generator never spells a word itself.
#pragma once

#define T3_WORD(constant, text) inline constexpr const char* constant = text;
#define T3_C_WORD(constant, text) inline constexpr const char* constant = text;
#include "generator/text/T3CodeDefs.def"
#undef T3_WORD
#undef T3_C_WORD

// Beside the vocabulary: what only few constructs ask of the run-time system.
inline constexpr const char* LUMO_EXTERNAL_FUNCTION_RESULT = "lumo_external_function_result";
inline constexpr const char* LUMO_ALTSTEP_DEFINITIONS = "lumo_altstep_definitions";
