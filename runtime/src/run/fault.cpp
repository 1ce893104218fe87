// Faults, and the runs that a fault ends.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <signal.h>

#include "run/component.h"
#include "value/error.h"
#include "text/log.h"
#include "run/scheduler.h"

namespace lumos {

namespace {

Task process_task;
// Given back when memory ends, so that this can be told.
void* memory_reserve = nullptr;

struct Guard {
  Task task;
  Fiber* caller;
  Task* caller_task;
  void (*function)(void*);
  void* argument;
  bool failed = false;
  Guard* outer = nullptr;
};
Guard* guard = nullptr;

void leave_guard(bool failed) {
  Guard* left = guard;
  left->failed = failed;
  if (failed) test_case = nullptr;
  current_task = left->caller_task;
  switch_fiber(left->caller);
}

void guarded_entry(void* argument) {
  auto* entered = static_cast<Guard*>(argument);
  entered->function(entered->argument);
  leave_guard(false);
}

}  // namespace

Task* current_task = &process_task;

void leave_behaviour() {
  if (Component* c = current_task->component) {
    leave_component(*c);
  } else if (guard) {
    leave_guard(false);
  }
  std::exit(2);
}

void fault(const char* format, ...) {
  static char text[2048];
  static bool reporting = false;
  if (!reporting) {
    reporting = true;
    va_list list;
    va_start(list, format);
    std::vsnprintf(text, sizeof text, format, list);
    va_end(list);
    log_line(lumo_log_msg_error_c, text);
  }
  reporting = false;
  if (Component* c = current_task->component) {
    c->verdict = lumo_verdict_error_c;
    end_test_case(lumo_verdict_error_c, text);
    leave_component(*c);
  } else if (guard) {
    leave_guard(true);
  }
  std::fprintf(stderr, "%s\n", text);
  std::exit(2);
}

void refuse(const char* format, ...) {
  static char text[1024];
  va_list list;
  va_start(list, format);
  std::vsnprintf(text, sizeof text, format, list);
  va_end(list);
  if (current_task->decoding == 0) fault("%s", text);
  current_task->refused = true;
  log_line(lumo_log_msg_error_c, text);
}

bool stack_is_short() {
  constexpr size_t reserve = 48 * 1024;
  return stack_left() < reserve;
}

void check_stack() {
  if (stack_is_short()) fault("the calls or the value are nested too deeply");
}

namespace {

// A quotient of integers that no integer is: C leaves it to the machine.
void quotient_fault(int) {
  fault("the quotient of two integers is beyond 64 bits");
}

void memory_fault() {
  static bool is_first = true;
  if (is_first) {
    is_first = false;
    std::free(memory_reserve);
  }
  fault("the memory is used up");
}

// Faults that are not found by asking; they are those of the behaviour that runs.
void catch_faults() {
  static bool is_done = false;
  if (is_done) return;
  is_done = true;
  memory_reserve = std::malloc(256 * 1024);
  std::set_new_handler(memory_fault);
  struct sigaction action = {};
  action.sa_handler = quotient_fault;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGFPE, &action, nullptr);
}

}  // namespace

void* allocate(void* memory, size_t size) {
  void* data = std::realloc(memory, size);
  if (!data) memory_fault();
  return data;
}

bool run_guarded(const char* task_name, void (*function)(void*), void* argument) {
  catch_faults();
  Guard here;
  here.task.name = task_name;
  here.caller = current_fiber();
  here.caller_task = current_task;
  here.function = function;
  here.argument = argument;
  here.outer = guard;
  Fiber* fiber = new_fiber(guarded_entry, &here);
  if (!fiber) return false;
  here.task.fiber = fiber;
  guard = &here;
  current_task = &here.task;
  switch_fiber(fiber);
  guard = here.outer;
  delete_fiber(fiber);
  Task* task = current_task;
  current_task = &here.task;
  reset_task(here.task);
  current_task = task;
  return !here.failed;
}

}  // namespace lumos
