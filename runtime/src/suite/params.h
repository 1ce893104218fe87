// Module parameters that the user gave: texts in the notation of the language by
// "<module>.<name>" or by the name alone.
#pragma once

#include <string>

#include "lumos.h"

namespace lumos {

// Takes "name=value"; false without "=" or name.
bool add_parameter(const std::string& definition);
// Reads such lines; "#" begins a comment. False leaves a message.
bool read_parameter_file(const std::string& path, std::string& error);
// After all modules have asked for their parameters: false if one was given that none asked for, with a
// message. One that stands in a file of parameters, which may serve several suites, is only worth a warning.
bool all_parameters_known();
// Whether a text was given; one that cannot be read is a fault.
bool set_from_parameter(const char* module, const char* name, lumo_value_t location);

}  // namespace lumos
