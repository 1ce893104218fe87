// The plain encoding, which needs no description: strings as their octets, everything else in the notation of
// the language.
#pragma once

#include <string>
#include <string_view>

#include "value/value.h"

namespace lumos {

std::string plain_octets(Value v);
// Sets a value from octets; false if they are none of its type. taken tells how many it took.
bool set_plain(Value v, std::string_view octets, size_t& taken);
// A value with temporary life, or null if the octets are none of the type. taken tells how many it took.
Value value_of_plain(lumo_type_t type, std::string_view octets, size_t& taken);

}  // namespace lumos
