// Raw arrays whose number of elements the caller holds beside them. For new code std::vector is the better
// choice; these serve structures that are laid out as plain memory.
#pragma once

#include <cstddef>

/// The room of one element: below 8 bytes the next power of two, else a multiple of 8.
size_t AlignedSize(size_t element_size);

/// Sets `*array` to new memory for at least `*count` elements, zeroed.
void MakeArray(void** array, unsigned long* count, size_t element_size);
/// Room for `count` elements; those that fit are kept, new ones are zeroed.
void ResizeArray(void** array, unsigned long* old_count, unsigned long count, size_t element_size);
/// Twice as many elements.
void ExtendArray(void** array, unsigned long* count, size_t element_size);
/// Gives back what is not needed for `count` elements.
void ShrinkArray(void** array, unsigned long* old_count, unsigned long count, size_t element_size);
/// Gives all back; the array is null and has no elements then.
void ReleaseArray(void** array, unsigned long* count, size_t element_size);
