#include "support/rMemory.h"

#include <new>

void* Alloc(size_t size) {
  return ::operator new(AllocatedSize(size));
}

void Free(size_t, void* block) {
  ::operator delete(block);
}
