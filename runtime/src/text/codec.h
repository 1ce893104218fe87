// Encoding and decoding: by the functions of a type where it has them, then by its encode attribute,
// otherwise plainly - strings as their octets, everything else in the notation of the language, but for types of ASN.1,
// which have no plain form.
#pragma once

#include <string>

#include "value/value.h"

namespace lumos {

// Whether the user or the generated code gave the type functions.
bool has_own_codec(lumo_type_t type);
// Whether the octets of a type are those of its codec, as opposed to plain ones.
bool has_codec(lumo_type_t type);
// False leaves a reason in fault.
bool encode_value(Value v, std::string& octets, std::string& fault);
// A value with temporary life; null leaves the place and reason in fault if the octets are none of the type.
// taken tells how many octets the value took; without it the value has to take all.
Value decode_value(lumo_type_t type, const std::string& octets, size_t* taken, std::string& fault);

// The line of the log that tells of octets that were none of a type; a long message is cut.
std::string undecodable(const std::string& port, lumo_type_t type, const std::string& octets,
                        const std::string& fault);

}  // namespace lumos
