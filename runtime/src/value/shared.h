// Memory that processes have together which part later: what one of them leaves there is seen by the others,
// also when it has ended at once.
#pragma once

#include <cstddef>
#include <new>

namespace lumos {

// Zeros; null where there is no memory. Only what is written to takes memory.
void* map_shared(size_t size);
void unmap_shared(void* memory, size_t size);

// A thing at the beginning of so much memory, and null where there is none.
template <class Thing>
class Shared {
 public:
  explicit Shared(size_t size = sizeof(Thing)) : size_(size) {
    void* memory = map_shared(size);
    if (memory) thing_ = new (memory) Thing;
  }
  ~Shared() {
    if (thing_) unmap_shared(thing_, size_);
  }
  Shared(const Shared&) = delete;
  explicit operator bool() const { return thing_; }
  Thing* operator->() const { return thing_; }
  Thing& operator*() const { return *thing_; }

 private:
  size_t size_;
  Thing* thing_ = nullptr;
};

}  // namespace lumos
