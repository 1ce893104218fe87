// What values, templates and texts need of the run that they belong to. They lie below it: the units of the
// run set these when the program starts, and where a program has no run, nothing is called.
#pragma once

#include <cstddef>
#include <string>

#include "value/task.h"

namespace lumos {

struct Hooks {
  // Ends what runs after a fault that has been logged; does not return.
  void (*end_faulty)(const char* text) = nullptr;
  // An element of the current component, or null.
  Value (*component_element)(const char* name) = nullptr;

  // Whether a value that generated code has done with goes on as an argument of a default, which ends it
  // then.
  bool (*keep_for_defaults)(Value value) = nullptr;
  // The task enters an `alt`: behind a call, the one in which its answers are taken.
  void (*enter_alternatives)(Task& task) = nullptr;
  void (*end_calls)(Task& task) = nullptr;

  // Timers, each the content of a value, which owns it.
  Timer* (*new_timer)(Value value) = nullptr;
  void (*delete_timer)(Timer* timer) = nullptr;
  void (*copy_timer_default)(Timer* target, const Timer* source) = nullptr;
  std::string (*timer_text)(const Timer* timer) = nullptr;
};
extern Hooks hooks;

}  // namespace lumos
