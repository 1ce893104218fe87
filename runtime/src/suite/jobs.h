// Test cases in processes of their own, several at a time: a crash costs one verdict. What they print and log
// appears in the order of the test cases, as if they had been run one after the other.
#pragma once

#include "suite/selection.h"

namespace lumos {

// The time is that of all together, none where it is negative. False if the run ended before all were run.
bool run_in_processes(const std::vector<Selected>& list, long at_once, bool until_fail, double timeout);

}  // namespace lumos
