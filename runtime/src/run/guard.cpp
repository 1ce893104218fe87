// The runs that a fault ends.
#include <cstdio>
#include <cstdlib>

#include "run/component.h"
#include "run/ending.h"
#include "run/scheduler.h"
#include "value/hooks.h"
#include "value/error.h"
#include "text/log.h"
#include "run/defaults.h"
#include "run/timer.h"

namespace lumos {

namespace {

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
  current_task = left->caller_task;
  switch_fiber(left->caller);
}

void guarded_entry(void* argument) {
  auto* entered = static_cast<Guard*>(argument);
  entered->function(entered->argument);
  leave_guard(false);
}

}  // namespace

void leave_behaviour() {
  if (Component* c = current_task->component) {
    leave_component(*c);
  } else if (guard) {
    leave_guard(false);
  }
  std::exit(2);
}

namespace {

// A fault of what is around the components of a test case, such as the adapter at its beginning.
void end_around_test_case(const char* text) {
  end_test_case(lumo_verdict_error_c, text);
  conclude_test_case();
}

// Gives what runs its verdict, and leaves it.
[[noreturn]] void end_faulty(const char* text) {
  if (Component* c = current_task->component) {
    c->verdict = lumo_verdict_error_c;
    end_test_case(lumo_verdict_error_c, text);
    leave_component(*c);
  } else if (guard) {
    if (test_case) end_around_test_case(text);
    if (!ending_reason() && !log_shows(lumo_log_msg_error_c)) std::fprintf(stderr, "%s\n", text);
    leave_guard(true);
  }
  std::fprintf(stderr, "%s\n", text);
  std::exit(2);
}

const bool guard_hook_is_set = (hooks.end_faulty = end_faulty, true);

}  // namespace

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
  leave_copy_of_run();
  guard = here.outer;
  delete_fiber(fiber);
  Task* task = current_task;
  current_task = &here.task;
  stop_timers_of(here.task);
  end_defaults(here.task);
  reset_task(here.task);
  current_task = task;
  return !here.failed;
}

}  // namespace lumos
