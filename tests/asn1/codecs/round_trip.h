// One trip of an encoding through the codecs: decoded, encoded, decoded again. Used by the test and by the
// fuzz target.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

extern "C" {
#include "home.h"
}

/// All definitions of the test's modules, up to a null pointer.
extern "C" const asn_type* const asn_all_types[];

namespace codecs {

enum Rule { kBer, kBerIndefinite, kPerUnaligned, kPerAligned, kRules };
inline constexpr size_t kTooLarge = 20000;  // for all comparisons
using Octets = std::vector<unsigned char>;

/// A value of a type, with all memory that belongs to it.
class Home {
 public:
  explicit Home(const asn_type* type) : type_(type) {
    initStack(&stack_);
    home_ = createHandle(nullptr, &handle_, type->size);
    pushHome(&stack_, handle_);
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;
  ~Home() {
    popHome(&stack_);
    freeAsn(&handle_, FREE_STG);
  }
  void* get() { return home_; }

  /// Decodes into the value, which must be new; null or what is wrong.
  const char* Decode(Rule rule, const Octets& octets) {
    return rule == kBer || rule == kBerIndefinite ? DecodeBer(octets) : DecodePer(rule, octets);
  }

  const char* Encode(Rule rule, Octets& octets) const {
    const FRAME_PTR frame = createFrame(DB_SIZE);
    bool good = false;
    const char* error = nullptr;
    if (rule == kBer || rule == kBerIndefinite) {
      ASNCODG codec{};
      codec.frame = frame;
      codec.indefinite = rule == kBerIndefinite;
      good = asnEncodeBer(&codec, type_, home_) != FALSE;
      error = codec.error;
    } else {
      ASNPERG codec{};
      codec.frame = frame;
      codec.aligned = rule == kPerAligned;
      good = asnEncodePer(&codec, type_, home_) != FALSE;
      error = codec.error;
    }
    octets.assign(frame->octets, frame->octets + frame->n);
    deleteFrame(frame);
    return Verdict(good, error);
  }

 private:
  static const char* Verdict(bool good, const char* error) {
    if (good != (error == nullptr)) return "the result and the error do not fit";
    return error;
  }

  const char* DecodeBer(const Octets& octets) {
    ASNCODG codec{};
    codec.at = octets.data();
    codec.rest = octets.size();
    const bool good = asnDecodeBer(&codec, type_, home_) != FALSE;
    return Verdict(good, codec.error);
  }

  const char* DecodePer(Rule rule, const Octets& octets) {
    ASNPERG codec{};
    codec.octets = octets.data();
    codec.bits = octets.size() * 8;
    codec.aligned = rule == kPerAligned;
    const bool good = asnDecodePer(&codec, type_, home_) != FALSE;
    return Verdict(good, codec.error);
  }

  const asn_type* type_;
  ASNUTIG stack_{};
  ASNHOME* handle_ = nullptr;
  void* home_ = nullptr;
};

struct Trip {
  bool accepted = false;  // the octets are an encoding
  std::string fault;      // what must not be
};

/// Decodes the octets. When that goes well, the value must have an encoding, which must stand for the same
/// value.
inline Trip RoundTrip(const asn_type* type, Rule rule, const Octets& octets) {
  Trip trip;
  Home first(type);
  if (first.Decode(rule, octets) != nullptr) return trip;
  trip.accepted = true;
  const auto fault = [&](const std::string& text) {
    trip.fault = std::string(type->name) + ", rule " + std::to_string(rule) + ": " + text;
    return trip;
  };
  Octets encoded, again;
  if (const char* error = first.Encode(rule, encoded)) return fault(std::string("no encoding: ") + error);
  Home second(type);
  if (const char* error = second.Decode(rule, encoded)) return fault(std::string("no decoding: ") + error);
  if (const char* error = second.Encode(rule, again))
    return fault(std::string("no second encoding: ") + error);
  if (encoded != again) return fault("another encoding");
  // The two values must be the same to the other rules as well, with which the first may have no encoding.
  for (int other = 0; other < kRules && encoded.size() < kTooLarge; ++other) {
    if (other == rule) continue;
    const char* of_first = first.Encode(static_cast<Rule>(other), encoded);
    const char* of_second = second.Encode(static_cast<Rule>(other), again);
    if ((of_first == nullptr) != (of_second == nullptr)) return fault("another value");
    if (of_first == nullptr && encoded != again) return fault("another value");
  }
  return trip;
}
}  // namespace codecs
