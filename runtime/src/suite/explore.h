// Runs of test cases with different schedules of their components, all of them legal: what comes out
// differently has a race in it.
#pragma once

#include "suite/selection.h"

namespace lumos {

// As many schedules of each test case as the options say, by the seeds from theirs on. Tells the outcomes of
// each with a seed that repeats it; false if the run is to end.
bool explore(const std::vector<Selected>& list, const SuiteOptions& options);

}  // namespace lumos
