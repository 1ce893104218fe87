// The clock of a run: real, or simulated, where it stands still while anything can run and
// then jumps to the next event. Times are nanoseconds from an arbitrary beginning.
#pragma once

#include <cstdint>

namespace lumos {

using Time = int64_t;
constexpr Time never = INT64_MAX;

Time now();
// Also where time is simulated.
Time real_time();
bool is_simulated();
void set_simulated(bool on);
// Moves the simulated clock on.
void advance_to(Time time);
Time duration_of(double seconds);

}  // namespace lumos
