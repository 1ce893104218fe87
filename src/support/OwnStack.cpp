#include "support/OwnStack.h"

#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

namespace {
struct Call {
  int (*work)(void*);
  void* argument;
  int result;
  ucontext_t caller;
  ucontext_t callee;
};

// What a context begins with takes no pointer.
Call* g_call = nullptr;

void Begin() {
  Call* call = g_call;
  call->result = call->work(call->argument);
}
}  // namespace

int CallOnOwnStack(size_t size, int (*work)(void*), void* argument) {
  const auto guard = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* memory = mmap(nullptr, guard + size, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  Call call{work, argument, 0, {}, {}};
  if (memory == MAP_FAILED || mprotect(memory, guard, PROT_NONE) != 0 || getcontext(&call.callee) != 0)
    return work(argument);
  call.callee.uc_stack.ss_sp = static_cast<char*>(memory) + guard;
  call.callee.uc_stack.ss_size = size;
  call.callee.uc_link = &call.caller;
  makecontext(&call.callee, Begin, 0);
  g_call = &call;
  swapcontext(&call.caller, &call.callee);
  munmap(memory, guard + size);
  return call.result;
}
