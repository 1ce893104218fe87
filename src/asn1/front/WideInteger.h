// Whole numbers of ASN.1 sources, whose ranges go beyond what values of the run-time system hold: 128 bits.
// The least and the greatest one stand for the infinities of a range.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace asn1 {
using Wide = __int128;
inline constexpr Wide kMaximum = static_cast<Wide>(~static_cast<unsigned __int128>(0) >> 1);
inline constexpr Wide kMinimum = -kMaximum - 1;

inline bool FitsInt64(Wide number) {
  return number >= INT64_MIN && number <= INT64_MAX;
}

inline int64_t Clamped(Wide number) {
  return static_cast<int64_t>(number < INT64_MIN ? INT64_MIN : number > INT64_MAX ? INT64_MAX : number);
}

/// Reads decimal digits; false where the number is one of the infinities, or beyond.
inline bool ParseWide(std::string_view digits, bool negative, Wide& result) {
  Wide value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9' || value > (kMaximum - 1 - (c - '0')) / 10) return false;
    value = value * 10 + (c - '0');
  }
  result = negative ? -value : value;
  return true;
}

inline std::string ToString(Wide number) {
  std::string text;
  auto rest = static_cast<unsigned __int128>(number);
  if (number < 0) rest = 0 - rest;
  do {
    text.insert(text.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
  } while ((rest /= 10) != 0);
  return number < 0 ? "-" + text : text;
}
}  // namespace asn1
