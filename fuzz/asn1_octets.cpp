// Any octets are an encoding of some type by some rule, or are refused. The first two octets choose the type
// and the rule. What was decoded must have an encoding of the same value.
#include <cstdio>
#include <cstdlib>

#include "round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  if (size < 2) return 0;
  int types = 0;
  while (asn_all_types[types] != nullptr) ++types;
  const codecs::Octets octets(data + 2, data + size);
  const int chosen = (data[0] | data[1] / codecs::kRules << 8) % types;
  const codecs::Trip trip =
      codecs::RoundTrip(asn_all_types[chosen], static_cast<codecs::Rule>(data[1] % codecs::kRules), octets);
  if (!trip.fault.empty()) {
    std::fprintf(stderr, "%s\n", trip.fault.c_str());
    std::abort();
  }
  return 0;
}
