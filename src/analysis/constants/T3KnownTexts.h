// Strings that are known when compiling: literals, and what operators and predefined functions make of known
// operands, by the rules by which the run-time system computes them. Chains of constants cost what is
// written.
#pragma once

#include <optional>
#include <string>

#include "frontend/T3Tree.h"

struct T3KnownText {
  /// That of a literal of the same type; all kinds of character strings count as T3CharStringLiteral.
  T3Kind kind = T3Kind::T3NoExpression;
  /// Digits in capitals, characters in UTF-8.
  std::string text;
  /// More than literals and concatenations took part.
  bool computed = false;
};

/// The value of a string expression; nothing for one that isn't known, would be an error when the suite runs,
/// is very long, or is no string.
std::optional<T3KnownText> KnownText(T3Tree_Node* expression);
/// The same for a character string only, without its kind.
std::optional<std::string> KnownCharacters(T3Tree_Node* expression);
/// The characters of a checked UTF-8 text as numbers: group, plane, row and cell, in this order.
std::u32string CodesOf(const std::string& text);
/// The number of characters, digits or octets.
int64_t LengthOfText(const T3KnownText& text);
