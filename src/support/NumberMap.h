// A map by numbers, for what is known of many nodes for a while: one array, so that an entry costs one look
// at memory, and emptying it nothing but the array.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

/// As value, of a set of numbers.
struct Nothing {};

template <class Value>
class NumberMap {
 public:
  NumberMap() : slots_(kFirst) {}

  /// The value of a number, which is `first` when it had none, and whether it had none. The pointer is valid
  /// up to the next entry.
  std::pair<Value*, bool> TryEmplace(uint64_t number, const Value& first = {}) {
    if ((used_ + 1) * 2 > slots_.size()) Grow();
    Slot& slot = slots_[PlaceOf(number + 1)];
    const bool made = slot.key == 0;
    if (made) {
      slot = {number + 1, first};
      ++used_;
    }
    return {&slot.value, made};
  }
  Value& operator[](uint64_t number) { return *TryEmplace(number).first; }
  /// The value of a number, or null where it has none.
  const Value* Find(uint64_t number) const {
    const Slot& slot = slots_[PlaceOf(number + 1)];
    return slot.key == 0 ? nullptr : &slot.value;
  }

  void clear() {
    if (used_ == 0) return;
    slots_.assign(kFirst, {});
    slots_.shrink_to_fit();
    used_ = 0;
  }

 private:
  static constexpr size_t kFirst = 16;
  struct Slot {
    /// 0 in a free slot.
    uint64_t key = 0;
    [[no_unique_address]] Value value{};
  };

  size_t PlaceOf(uint64_t key) const {
    const size_t mask = slots_.size() - 1;
    size_t at = (key * 0x9e3779b97f4a7c15u) >> 32 & mask;
    while (slots_[at].key != 0 && slots_[at].key != key) at = (at + 1) & mask;
    return at;
  }
  void Grow() {
    const std::vector<Slot> old = std::move(slots_);
    slots_ = std::vector<Slot>(old.size() * 4);
    for (const Slot& slot : old)
      if (slot.key != 0) slots_[PlaceOf(slot.key)] = slot;
  }

  std::vector<Slot> slots_;
  size_t used_ = 0;
};
