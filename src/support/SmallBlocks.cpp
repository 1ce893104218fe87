// Memory for small objects: the compiler is one thread that makes and drops many short strings and nodes of
// containers, for which the general heap takes a fifth of all instructions. Blocks of one size are cut from
// slabs and, when they are given back, kept in a list for that size. Nothing goes back to the system before
// the end of the process.
//
// A sanitizer is to see each object by itself, so there the general heap stays.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVANE_GENERAL_HEAP
#endif
#endif
#if !defined(__SANITIZE_ADDRESS__) && !defined(ORVANE_GENERAL_HEAP)

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr size_t kUnit = 16;
constexpr size_t kLargest = 512;
constexpr size_t kSlab = size_t{1} << 15;
constexpr size_t kSlabsAtOnce = 32;

struct FreeBlock {
  FreeBlock* next;
};
FreeBlock* g_free[kLargest / kUnit + 1];

/// What stands at the head of a slab.
struct Slab {
  size_t block_class;
};
constexpr size_t kHead = 64;

/// The slabs by their addresses, so that a block whose size is not told is known to be one.
class SlabTable {
 public:
  /// False when there is no memory.
  bool add(uintptr_t slab) {
    if (2 * (count_ + 1) > capacity_ && !grow()) return false;
    put(slab);
    ++count_;
    return true;
  }
  bool contains(uintptr_t slab) const {
    if (capacity_ == 0) return false;
    for (size_t at = place(slab); slabs_[at] != 0; at = (at + 1) % capacity_)
      if (slabs_[at] == slab) return true;
    return false;
  }

 private:
  size_t place(uintptr_t slab) const { return slab / kSlab * 0x9E3779B9u % capacity_; }
  void put(uintptr_t slab) {
    size_t at = place(slab);
    while (slabs_[at] != 0) at = (at + 1) % capacity_;
    slabs_[at] = slab;
  }
  bool grow() {
    uintptr_t* old = slabs_;
    const size_t old_capacity = capacity_;
    const size_t capacity = old_capacity == 0 ? 256 : 2 * old_capacity;
    auto* grown = static_cast<uintptr_t*>(std::calloc(capacity, sizeof *slabs_));
    if (grown == nullptr) return false;
    slabs_ = grown;
    capacity_ = capacity;
    for (size_t i = 0; i < old_capacity; ++i)
      if (old[i] != 0) put(old[i]);
    std::free(old);
    return true;
  }

  uintptr_t* slabs_ = nullptr;
  size_t capacity_ = 0;
  size_t count_ = 0;
};
SlabTable g_slabs;

uintptr_t SlabOf(void* block) {
  return reinterpret_cast<uintptr_t>(block) & ~(kSlab - 1);
}

/// The rest of the slab of each class that has not been cut yet.
struct Rest {
  char* begin;
  char* end;
};
Rest g_rest[kLargest / kUnit + 1];

/// Slabs that have been asked for and are not in use yet.
Rest g_spare;

/// Comes back where asking again may help.
void NoMemory() {
  const std::new_handler handler = std::get_new_handler();
  if (handler == nullptr) throw std::bad_alloc();
  handler();
}

char* TakeSlab() {
  while (g_spare.begin == g_spare.end) {
    auto* memory = static_cast<char*>(std::aligned_alloc(kSlab, kSlab * kSlabsAtOnce));
    if (memory == nullptr) {
      NoMemory();
      continue;
    }
    g_spare = {memory, memory + kSlab * kSlabsAtOnce};
  }
  char* slab = g_spare.begin;
  g_spare.begin += kSlab;
  while (!g_slabs.add(reinterpret_cast<uintptr_t>(slab))) NoMemory();
  return slab;
}

[[gnu::noinline]] void* CutBlock(size_t block_class) {
  Rest& rest = g_rest[block_class];
  const size_t size = block_class * kUnit;
  if (static_cast<size_t>(rest.end - rest.begin) < size) {
    char* slab = TakeSlab();
    new (slab) Slab{block_class};
    rest = {slab + kHead, slab + kSlab};
  }
  void* block = rest.begin;
  rest.begin += size;
  return block;
}

[[gnu::noinline]] void* TakeLarge(size_t size) {
  for (;;) {
    if (void* memory = std::malloc(size)) return memory;
    NoMemory();
  }
}

inline void* Take(size_t size) {
  if (size > kLargest) return TakeLarge(size);
  const size_t block_class = size == 0 ? 1 : (size + kUnit - 1) / kUnit;
  FreeBlock* block = g_free[block_class];
  if (block == nullptr) return CutBlock(block_class);
  g_free[block_class] = block->next;
  return block;
}

void Give(void* memory, size_t block_class) {
  g_free[block_class] = new (memory) FreeBlock{g_free[block_class]};
}

}  // namespace

void* operator new(size_t size) {
  return Take(size);
}

void operator delete(void* memory, size_t size) noexcept {
  if (memory == nullptr) return;
  if (size > kLargest) return std::free(memory);
  Give(memory, size == 0 ? 1 : (size + kUnit - 1) / kUnit);
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  const uintptr_t slab = SlabOf(memory);
  if (!g_slabs.contains(slab)) return std::free(memory);
  Give(memory, reinterpret_cast<const Slab*>(slab)->block_class);
}

#endif
