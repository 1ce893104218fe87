// A stack of the program's own, for work that needs more than the system gives.
#pragma once

#include <cstddef>

/// Calls `work` with `argument` on a stack of `size` bytes and returns its result. The stack lives as long as
/// the call; its end is guarded. `work` may end the process, but no exception may leave it. Where there is no
/// memory for it the call takes place on the present stack.
int CallOnOwnStack(size_t size, int (*work)(void*), void* argument);
