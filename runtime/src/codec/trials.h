// Decoders that find out by trial what stands in the octets.
#pragma once

#include <cstddef>

namespace lumos {

// What is begun again behind a trial that failed may fail again at each depth, which doubles the work each time.
// So values may be begun a number of times that only grows with the octets; behind that, all trials fail.
class Trials {
 public:
  explicit Trials(size_t octets) : left_(100000 + 1000 * octets) {}
  // A value is begun; false when there were too many.
  bool begin() {
    if (left_ == 0) return false;
    --left_;
    return true;
  }

 private:
  size_t left_;
};
constexpr char too_many_trials[] = "finding out what the octets are takes too long";

}  // namespace lumos
