// The events of a test case on their way from the process that runs it to the one that reports.
#pragma once

#include <string>
#include <string_view>

#include "report/events.h"

namespace lumos {

// Writes all that it is told to the descriptor, which it does not close.
std::unique_ptr<Reporter> make_wire(int descriptor, bool with_events);
// Tells what such a text holds to the reporters of this process, but for the end of the test case, whose
// result is given back. False if there is none, because the text is cut off.
bool tell_from_wire(std::string_view text, Result& result);

}  // namespace lumos
