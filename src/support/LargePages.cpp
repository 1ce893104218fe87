#include "support/LargePages.h"

#include <cstdint>  // tells which C library this is
#include <cstdlib>
#include <new>

// A sanitizer has a heap of its own, and watches only what comes from it.
#if defined(__SANITIZE_ADDRESS__)
#define ORVANE_WATCHED_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVANE_WATCHED_HEAP 1
#endif
#endif

#if defined(__GLIBC__) && !defined(ORVANE_WATCHED_HEAP)
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {
constexpr int kHeapStep = 64 << 20;
constexpr int kKeptWhenFree = 1 << 30;

// The heap up to here has been asked for in large pages, or was there before.
uintptr_t g_covered = 0;
}  // namespace

namespace {
// Below this the heap must take what it needs, and not more.
constexpr rlim_t kRoomForSteps = 1 << 30;

bool IsLimited(int resource) {
  rlimit limit{};
  return getrlimit(static_cast<__rlimit_resource_t>(resource), &limit) == 0 && limit.rlim_cur < kRoomForSteps;
}
}  // namespace

void PrepareLargePages() {
  if (IsLimited(RLIMIT_AS) || IsLimited(RLIMIT_DATA)) return;
  mallopt(M_TOP_PAD, kHeapStep);
  mallopt(M_TRIM_THRESHOLD, kKeptWhenFree);
  mallopt(M_MMAP_MAX, 0);  // a mapping of its own would lie in small pages
  const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  g_covered = (reinterpret_cast<uintptr_t>(sbrk(0)) + page - 1) / page * page;
}

void UseLargePages() {
  const auto end = reinterpret_cast<uintptr_t>(sbrk(0));
  if (g_covered == 0 || end <= g_covered) return;
  madvise(reinterpret_cast<void*>(g_covered), end - g_covered, MADV_HUGEPAGE);
  g_covered = end;
}

namespace {
// From this size on a large page costs less than the small ones that it replaces.
constexpr size_t kLeastLarge = kLargePage / 8;

size_t Rounded(size_t size) {
  return (size + kLargePage - 1) / kLargePage * kLargePage;
}
}  // namespace

// One large page more than needed is mapped, and what lies before the first border and behind the end is
// given back.
void* AllocateLarge(size_t size) {
  if (size < kLeastLarge) return std::malloc(size);
  size = Rounded(size);
  void* mapping =
      mmap(nullptr, size + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) return nullptr;
  auto* begin = static_cast<char*>(mapping);
  const size_t before = (kLargePage - reinterpret_cast<uintptr_t>(begin) % kLargePage) % kLargePage;
  char* block = begin + before;
  if (before > 0) munmap(begin, before);
  munmap(block + size, kLargePage - before);
  madvise(block, size, MADV_HUGEPAGE);
  return block;
}

void FreeLarge(void* block, size_t size) {
  if (size < kLeastLarge)
    std::free(block);
  else if (block != nullptr)
    munmap(block, Rounded(size));
}
#else
void PrepareLargePages() {}
void UseLargePages() {}

void* AllocateLarge(size_t size) {
  return std::malloc(size);
}

void FreeLarge(void* block, size_t) {
  std::free(block);
}
#endif

LargeBlock MakeLargeBlock(size_t size) {
  auto* block = static_cast<char*>(AllocateLarge(size));
  if (block == nullptr) throw std::bad_alloc();
  return LargeBlock(block, LargeDeleter{size});
}
