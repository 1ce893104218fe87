// UTF-8 in the text of character-string literals: its check, its length, and its decoding. Sequences have
// one to six bytes.
#pragma once

#include "support/StringM.h"

/// What a character-string literal holds.
enum char_string_kind_t : int {
  kind_ascii_character = 0,
  kind_ascii_string = 1,
  kind_character = 2,
  kind_string = 3,
  kind_malformed = 4,
};

/// The UTF-8 form of a code below 0x10000, written to `buffer`; the number of its bytes, 0 for a code that
/// is too large.
int ucs2_2_utf8(unsigned long code, char* buffer);

/// Decodes one character that has been checked. Returns the place behind it and takes its bytes off
/// `length`. A null `s` or a length that is too small is a fault of the caller.
const unsigned char* UTF_8ToUCS_4(const unsigned char* s, int& length, unsigned char& group,
                                  unsigned char& plane, unsigned char& row, unsigned char& cell);

/// The kind of a literal that is given with its enclosing double quotes.
char_string_kind_t DetermineCharStringKind(const unsigned short* s);

/// The number of characters of a string, all that it holds; 0 when it is malformed.
long long UTF8StringLength(const unsigned short* s);
