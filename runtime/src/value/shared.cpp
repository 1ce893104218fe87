#include "value/shared.h"

#include <sys/mman.h>

namespace lumos {

void* map_shared(size_t size) {
  void* memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

void unmap_shared(void* memory, size_t size) {
  munmap(memory, size);
}

}  // namespace lumos
