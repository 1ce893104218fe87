// Where options stand that were not given on the command line, for messages about their values that can only
// come when the modules are known.
#pragma once

#include <functional>
#include <string>

namespace lumos {

// What is read from now on stands there, such as "suite.cfg, line 3"; empty for the command line.
void set_option_place(const std::string& place);
// What a message about what is being read begins with: "suite.cfg, line 3: " or nothing.
const std::string& option_place();
// Takes the lines of a file that are no comments, without blanks at their ends, as what stands there; false
// with a message about the line that was not taken, or the file.
bool read_option_lines(const std::string& path,
                       const std::function<bool(const std::string& line, std::string& error)>& take,
                       std::string& error);
// Without the blanks at its ends.
std::string trimmed(const std::string& text);
// Keeps that for a name of a test case or port.
void note_option_place(const std::string& name);
std::string place_of_option(const std::string& name);

}  // namespace lumos
