// Addresses of the system under test as the library's channels have them, "host:port", and as values of the
// type that the suite declares as address: a charstring, or a record of host and port number.
#pragma once

#include <string>

#include "value/value.h"

namespace lumos {

// False for a value that is no address.
bool address_text(Value address, std::string& text);
// A value with temporary life; null where the type is no address of that kind.
Value address_value(lumo_type_t type, const std::string& text);

}  // namespace lumos
