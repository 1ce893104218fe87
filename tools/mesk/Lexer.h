// Cuts ASN.1 source text into tokens.
#pragma once

#include <cstdint>

#include "mesk/Source.h"

namespace mesk {

enum class Tok : uint8_t {
  kEnd,
  kUpper,  // a word that begins with a capital: a type, module or class reference, or a keyword
  kLower,  // a word that begins with a small letter
  kField,  // & and a word
  kNumber,
  kReal,
  kCString,  // text is what stands between the quotes, with "" and line ends resolved
  kBString,  // digits without white space
  kHString,
  kSymbol,
};

struct Token {
  Tok kind = Tok::kEnd;
  std::string_view text;
  int line = 0, column = 0;
  int match = -1;  // of a {: the index of its }
};

/// The tokens of a file, with a kEnd behind the last one. Errors are reported, and what is wrong is left out.
std::vector<Token> tokenize(SourceFile& file, Reporter& reporter);

bool isLetter(char c);
bool isDigit(char c);
bool isReservedWord(std::string_view word);

}  // namespace mesk
