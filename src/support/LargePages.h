// Memory in large pages. The compiler takes much memory, gives little back and reads it all over, so that
// page faults and misses of the address cache cost more than many an analysis. Great blocks are mapped by
// themselves, aligned, so that nothing touches them before large pages were asked for; the heap, where the C
// library and the kernel let it, is asked to lie in large pages once a run has become a large one.
#pragma once

#include <cstddef>
#include <memory>

/// Makes the heap grow in great steps and keep what it has; to be called before much has been allocated.
void PrepareLargePages();
/// Asks for large pages for what the heap has and has not asked for yet. Cheap; to be called whenever a
/// large run has taken another block. Does nothing where there are none.
void UseLargePages();

/// What blocks of large pages are made of, in bytes.
inline constexpr size_t kLargePage = size_t{1} << 21;
/// A block of `size` bytes, or null where there is no memory. The caller owns it and gives it back, with the
/// same size, to `FreeLarge`. What it holds is undefined. Small blocks come from the heap.
void* AllocateLarge(size_t size);
void FreeLarge(void* block, size_t size);

struct LargeDeleter {
  size_t size = 0;
  void operator()(char* block) const { FreeLarge(block, size); }
};
/// Owns a block of AllocateLarge.
using LargeBlock = std::unique_ptr<char[], LargeDeleter>;
/// A block of its own, or std::bad_alloc.
LargeBlock MakeLargeBlock(size_t size);
