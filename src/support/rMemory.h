// Memory by size: the caller gives the size back with the block. Exhausted memory ends the process by the
// program's new-handler.
#pragma once

#include <cstddef>

/// The room that a block of `size` bytes really takes.
constexpr size_t AllocatedSize(size_t size) {
  return (size + 7) / 8 * 8;
}

void* Alloc(size_t size);
void Free(size_t size, void* block);
