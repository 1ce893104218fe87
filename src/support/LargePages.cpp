#include "support/LargePages.h"

#include <cstdint>  // tells which C library this is

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {
constexpr int kHeapStep = 16 << 20;
constexpr int kKeptWhenFree = 1 << 30;
constexpr int kOwnMapping = 16 << 20;

// The heap up to here has been asked for in large pages, or was there before.
uintptr_t g_covered = 0;
}  // namespace

void PrepareLargePages() {
  mallopt(M_TOP_PAD, kHeapStep);
  mallopt(M_TRIM_THRESHOLD, kKeptWhenFree);
  mallopt(M_MMAP_THRESHOLD, kOwnMapping);
  const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  g_covered = (reinterpret_cast<uintptr_t>(sbrk(0)) + page - 1) / page * page;
}

void UseLargePages() {
  const auto end = reinterpret_cast<uintptr_t>(sbrk(0));
  if (g_covered == 0 || end <= g_covered) return;
  madvise(reinterpret_cast<void*>(g_covered), end - g_covered, MADV_HUGEPAGE);
  g_covered = end;
}
#else
void PrepareLargePages() {}
void UseLargePages() {}
#endif
