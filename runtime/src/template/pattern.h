// Patterns of strings: the pattern notation of charstrings, compiled to a program that runs
// in time linear in the text, and the wildcards of binary strings.
#pragma once

#include <string>
#include <string_view>

#include "value/value.h"

namespace lumos {

// The pattern is a text; the kind of the value tells its notation. Not readable patterns
// are a fault.
bool match_pattern(Value pattern, Value v);
// The number of characters that all texts which match have; -1 where they differ in length.
long pattern_length(Value pattern);
struct TextPart {
  size_t first = 0, length = 0;
};
// The part of the text that the numbered group of the pattern takes (from 0), empty if the
// whole text does not match.
TextPart pattern_group(Value pattern, Value v, size_t group);

// The longest beginning of a text of octets that a pattern matches; npos if it matches none. Patterns that
// are not readable match nothing; readable_pattern tells.
size_t pattern_prefix(std::string_view pattern, std::string_view text, bool any_case);
bool readable_pattern(std::string_view pattern);

}  // namespace lumos
