// A fiber is a stack of its own for a task. Fibers switch to each other explicitly; a fiber
// that is not to go on is simply not switched to any more and then deleted.
#pragma once

#include <cstddef>

namespace lumos {

struct Fiber;

// Bytes of stack that fibers made from now on get.
void set_fiber_stack_size(size_t bytes);

// The fiber of the process's own stack: no memory, no entry.
Fiber* main_fiber();
// Runs entry(argument) at the first switch to it; entry must not return. Null if there is
// no memory for a stack.
Fiber* new_fiber(void (*entry)(void*), void* argument);
void delete_fiber(Fiber* fiber);
void switch_fiber(Fiber* to);
Fiber* current_fiber();

}  // namespace lumos
