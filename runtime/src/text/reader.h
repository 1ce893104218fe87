// Reading values in the notation of the language, as the log writes them.
#pragma once

#include <string>
#include <string_view>

#include "value/value.h"

namespace lumos {

// Reads a value at the beginning of the text into the target; taken tells how much it took.
// False leaves a message in error. Nothing here faults but what a subtype refuses.
bool read_value_prefix(Value target, std::string_view text, size_t& taken, std::string& error);

}  // namespace lumos
