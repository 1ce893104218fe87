// What a control part executes, found by running it without its test cases. That says all where it executes
// them unconditionally; one that asks for a verdict, waits, or calls code of the user has to be run as it is.
#pragma once

#include "suite/selection.h"

namespace lumos {

bool has_control_part(const char* module);
// The test cases in order, with their arguments; false with the reason where the control part has to be run
// itself.
bool plan_control_part(const char* module, std::vector<Selected>& list, std::string& why);

}  // namespace lumos
