// Things that are said again and again, each kept once. There is room for so many; a new one takes the place
// of one that was not said for a while, or of one that lies in its way.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "text/text_forms.h"

namespace lumos {

constexpr uint64_t mixed(uint64_t hash, uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15;
  return hash ^ hash >> 29;
}
inline size_t hash_of_text(std::string_view text) {
  uint64_t hash = text.size();
  size_t i = 0;
  for (; i + 16 <= text.size(); i += 16)
    hash = mixed(hash, eight_octets(text, i) + std::rotl(eight_octets(text, i + 8), 29));
  for (; i < text.size(); i += 8) hash = mixed(hash, eight_octets(text, i));
  return hash;
}

template <class Thing>
class Repeated {
 public:
  template <class Said>
  const Thing& of(const Said& said, size_t hash) {
    Thing* place = nullptr;
    for (size_t way = 0; way < ways; ++way) {
      Thing& thing = things_[(hash + way) % most];
      if (thing.serial && thing.says(said)) return thing;
      if (!place || (place->serial && thing.serial < place->serial)) place = &thing;
    }
    return put(static_cast<size_t>(place - things_.data()), said);
  }
  // At a place that was chosen elsewhere.
  template <class Said>
  const Thing& put(size_t slot, const Said& said) {
    Thing& thing = things_[slot];
    thing.take(said);
    thing.slot = slot;
    thing.serial = ++made_;
    return thing;
  }
  // Null where nothing was put.
  const Thing* at(size_t slot) const {
    return slot < most && things_[slot].serial ? &things_[slot] : nullptr;
  }
  size_t size() const { return most; }

 private:
  static constexpr size_t ways = 4, most = 512;
  std::vector<Thing> things_ = std::vector<Thing>(most);
  static inline uint64_t made_ = 0;  // by all: who makes something of such things may be told those of several
};

// What somebody has made of such things.
template <class Made>
class MadeOf {
 public:
  // And whether it is still to be made, in which case it is empty.
  template <class Thing>
  std::pair<Made&, bool> of(const Thing& thing) {
    if (thing.slot >= all_.size()) all_.resize(thing.slot + 1);
    auto& [serial, made] = all_[thing.slot];
    const bool is_new = serial != thing.serial;
    if (is_new) made = Made();
    serial = thing.serial;
    return {made, is_new};
  }

 private:
  std::vector<std::pair<uint64_t, Made>> all_;
};

}  // namespace lumos
