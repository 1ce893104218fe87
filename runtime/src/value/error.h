// Faults of a test case at run time.
#pragma once

#include <cstddef>

namespace lumos {

// Logs the text at the current place and ends what runs: a test case gets verdict error, a
// control part or an initialization ends. Does not return and runs no destructors of the
// frames that it leaves, so callers hold no resources of their own at the call.
[[noreturn]] void fault(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The same for what a value refuses. Where a decoder writes it the text is logged, the octets are none of the
// type and the function returns.
void refuse(const char* format, ...) __attribute__((format(printf, 1, 2)));

// As realloc, with a fault where there is no memory.
void* allocate(void* memory, size_t size);

// The address below which the running task has little stack left; null for the process's own stack. Whoever
// switches stacks sets it.
extern const char* stack_limit;
inline bool stack_is_short() {
  return static_cast<const char*>(__builtin_frame_address(0)) < stack_limit;
}
[[noreturn]] void stack_fault();
// As fault, where the task has little stack left. Called where nesting is unlimited.
inline void check_stack() {
  if (stack_is_short()) stack_fault();
}

// From here on, faults that are not found by asking are those of the behaviour that runs: memory that ends,
// and quotients beyond 64 bits.
void catch_faults();
// Of all quotients of integers only those by -1 may be beyond 64 bits: the task is about to make one here.
void note_division_by_minus_one();

}  // namespace lumos
