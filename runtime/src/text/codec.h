// Encoding and decoding: by the functions of a type where it has them, otherwise plainly -
// strings as their octets, everything else in the notation of the language.
#pragma once

#include <string>

#include "value/value.h"

namespace lumos {

// Whether a value is of an ASN.1 type that no codec stands at: it has no plain form.
bool lacks_asn1_codec(Value v);
// False if the encoder fails.
bool encode_value(Value v, std::string& octets);
// A value with temporary life, or null if the octets are none of the type. taken tells how
// many octets the value took; without it the value has to take all.
Value decode_value(lumo_type_t type, const std::string& octets, size_t* taken);

}  // namespace lumos
