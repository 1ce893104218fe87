#include "value/clock.h"

#include <ctime>

namespace lumos {

namespace {
bool simulated = false;
Time simulated_time = 0;
}  // namespace

Time now() {
  return simulated ? simulated_time : real_time();
}

Time real_time() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return Time(time.tv_sec) * 1000000000 + time.tv_nsec;
}

bool is_simulated() {
  return simulated;
}
void set_simulated(bool on) {
  simulated = on;
}

void advance_to(Time time) {
  if (time > simulated_time) simulated_time = time;
}

Time duration_of(double seconds) {
  double nanoseconds = seconds * 1e9;
  return nanoseconds >= 9e18 ? Time(9000000000000000000) : static_cast<Time>(nanoseconds);
}

}  // namespace lumos
