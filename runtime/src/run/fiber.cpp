// The checked longjmp takes a jump to another stack for an error.
#undef _FORTIFY_SOURCE
#include "run/fiber.h"

#include "value/error.h"

#include <setjmp.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define LUMOS_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUMOS_ASAN 1
#endif
#endif
#ifdef LUMOS_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif

// The compiler's own jumps keep fewer registers than the library's; not every compiler has them elsewhere.
#ifdef __x86_64__
using JumpPlace = void* [5];
#define SET_PLACE(place) __builtin_setjmp(place)
#define GO_TO(place) __builtin_longjmp(place, 1)
#else
using JumpPlace = jmp_buf;
#define SET_PLACE(place) _setjmp(place)
#define GO_TO(place) _longjmp(place, 1)
#endif

namespace lumos {

struct Fiber {
  void (*entry)(void*) = nullptr;
  void* argument = nullptr;
  char* memory = nullptr;  // guard page first
  size_t size = 0;
  bool started = false;
  ucontext_t start;
  JumpPlace place;
  void* fake_stack = nullptr;
  const void* bottom = nullptr;
  size_t bottom_size = 0;
};

namespace {

size_t stack_size = 1024 * 1024;
Fiber the_main;
Fiber* running = &the_main;
Fiber* previous = nullptr;

// Ended fibers, to be used again with their stacks; not ended with the process.
std::vector<Fiber*>& spare = *new std::vector<Fiber*>;
constexpr size_t most_spare = 1024;

// A guard page costs two of the mappings that a process may have, 65,530 by default. Beyond so many stacks
// the checks of the library itself, at each call of a behaviour, have to do.
size_t guards_left = 20000;

size_t page_size() {
  static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

bool take_stack(Fiber& fiber) {
  void* memory = mmap(nullptr, stack_size + page_size(), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return false;
  if (guards_left > 0 && mprotect(memory, page_size(), PROT_NONE) == 0) --guards_left;
  fiber.memory = static_cast<char*>(memory);
  fiber.size = stack_size;
  return true;
}

// With a stack; null where there is no memory for one.
[[gnu::noinline]] Fiber* spare_fiber() {
  if (!spare.empty() && spare.back()->size == stack_size) {
    Fiber* fiber = spare.back();
    spare.pop_back();
    fiber->started = false;
    fiber->fake_stack = nullptr;
    return fiber;
  }
  auto* fiber = new Fiber;
  if (take_stack(*fiber)) return fiber;
  delete fiber;
  return nullptr;
}

void on_arrival() {
#ifdef LUMOS_ASAN
  const void* bottom = nullptr;
  size_t size = 0;
  __sanitizer_finish_switch_fiber(running->fake_stack, &bottom, &size);
  if (previous == &the_main && !the_main.bottom) {
    the_main.bottom = bottom;
    the_main.bottom_size = size;
  }
#endif
}

void run_entry() {
  on_arrival();
  Fiber* self = running;
  self->entry(self->argument);
}

#ifndef LUMOS_ASAN
// Not part of the function that such a jump arrives in.
[[noreturn, gnu::noinline]] void jump(Fiber* to) {
  if (to->started) GO_TO(to->place);
  to->started = true;
  setcontext(&to->start);
  __builtin_unreachable();
}
#endif

[[gnu::noinline]] void leave([[maybe_unused]] Fiber* from, Fiber* to) {
#ifdef LUMOS_ASAN
  // The sanitizer must see switches of contexts, not jumps.
  swapcontext(&from->start, &to->start);
#else
  if (SET_PLACE(from->place)) return;
  jump(to);
#endif
}

}  // namespace

void set_fiber_stack_size(size_t bytes) {
  size_t page = page_size();
  stack_size = (bytes + page - 1) / page * page;
}

namespace {

// Faults, their text and the adapter's code need some room.
const char* limit_of(const Fiber& fiber) {
  constexpr size_t reserve = 48 * 1024;
  return fiber.memory ? fiber.memory + page_size() + reserve : nullptr;
}

}  // namespace

Fiber* main_fiber() {
  the_main.started = true;
  return &the_main;
}

Fiber* current_fiber() {
  return running;
}

Fiber* new_fiber(void (*entry)(void*), void* argument) {
  main_fiber();
  Fiber* fiber = spare_fiber();
  if (!fiber) return nullptr;
  fiber->entry = entry;
  fiber->argument = argument;
  getcontext(&fiber->start);
  fiber->start.uc_stack.ss_sp = fiber->memory + page_size();
  fiber->start.uc_stack.ss_size = fiber->size;
  fiber->start.uc_link = nullptr;
  fiber->bottom = fiber->memory + page_size();
  fiber->bottom_size = fiber->size;
  makecontext(&fiber->start, run_entry, 0);
  return fiber;
}

void delete_fiber(Fiber* fiber) {
  if (!fiber || fiber == &the_main) return;
#ifdef LUMOS_ASAN
  ASAN_UNPOISON_MEMORY_REGION(fiber->memory + page_size(), fiber->size);
#endif
  if (spare.size() < most_spare) return spare.push_back(fiber);
  munmap(fiber->memory, fiber->size + page_size());
  delete fiber;
}

void switch_fiber(Fiber* to) {
  Fiber* from = running;
  if (from == to) return;
  previous = from;
  running = to;
  stack_limit = limit_of(*to);
#ifdef LUMOS_ASAN
  __sanitizer_start_switch_fiber(&from->fake_stack, to->bottom, to->bottom_size);
#endif
  leave(from, to);
  on_arrival();
}

}  // namespace lumos
