// Where options stand that were not given on the command line, for messages about their values that can only
// come when the modules are known.
#pragma once

#include <string>

namespace lumos {

// What is read from now on stands there, such as "suite.cfg, line 3"; empty for the command line.
void set_option_place(const std::string& place);
// What a message about what is being read begins with: "suite.cfg, line 3: " or nothing.
const std::string& option_place();
// Keeps that for a name of a test case or port.
void note_option_place(const std::string& name);
std::string place_of_option(const std::string& name);

}  // namespace lumos
