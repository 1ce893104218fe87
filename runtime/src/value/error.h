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

// As fault, where the task has little stack left. Called where nesting is unlimited.
void check_stack();
// The same question without a fault.
bool stack_is_short();

}  // namespace lumos
