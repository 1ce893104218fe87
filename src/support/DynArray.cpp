#include "support/DynArray.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "support/rMemory.h"

namespace {
constexpr size_t kWord = 8;

// So many elements that the whole ends at a word's border.
unsigned long RoundedCount(unsigned long count, size_t element_size) {
  while (count * AlignedSize(element_size) % kWord != 0) ++count;
  return count;
}
}  // namespace

size_t AlignedSize(size_t element_size) {
  if (element_size < kWord) return std::bit_ceil(std::max<size_t>(element_size, 1));
  return (element_size + kWord - 1) / kWord * kWord;
}

void MakeArray(void** array, unsigned long* count, size_t element_size) {
  *count = RoundedCount(*count, element_size);
  const size_t size = *count * AlignedSize(element_size);
  *array = Alloc(size);
  std::memset(*array, 0, size);
}

void ResizeArray(void** array, unsigned long* old_count, unsigned long count, size_t element_size) {
  void* made = nullptr;
  unsigned long made_count = count;
  MakeArray(&made, &made_count, element_size);
  if (*array != nullptr)
    std::memcpy(made, *array, std::min(*old_count, made_count) * AlignedSize(element_size));
  ReleaseArray(array, old_count, element_size);
  *array = made;
  *old_count = made_count;
}

void ExtendArray(void** array, unsigned long* count, size_t element_size) {
  ResizeArray(array, count, std::max(*count, 1UL) * 2, element_size);
}

void ShrinkArray(void** array, unsigned long* old_count, unsigned long count, size_t element_size) {
  if (RoundedCount(count, element_size) < *old_count) ResizeArray(array, old_count, count, element_size);
}

void ReleaseArray(void** array, unsigned long* count, size_t element_size) {
  if (*array != nullptr) Free(*count * AlignedSize(element_size), *array);
  *array = nullptr;
  *count = 0;
}
