// Runs of test cases with different schedules of their components, all of them legal: what comes out
// differently has a race in it.
#pragma once

#include "suite/selection.h"

namespace lumos {

// N schedules of each test case, by the seeds from the one given on. Tells the outcomes of each with a seed
// that repeats it; false if the run is to end.
bool explore(const std::vector<Selected>& list, long n, uint64_t seed);
// From now on each test case begins with a state of random numbers that depends on its name and the seed
// only.
void set_seed_of_testcases(uint64_t seed);

}  // namespace lumos
