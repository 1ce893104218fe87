// The altsteps that a task activated as defaults.
#pragma once

#include "value/task.h"

namespace lumos {

void deactivate_all(Task& task);
// The task is over, and with it the defaults that run.
void end_defaults(Task& task);
// While it stands, defaults get numbers that begin anew when it ends: what a test case tells of them does not
// depend on those before it.
class DefaultNumbers {
 public:
  DefaultNumbers();
  ~DefaultNumbers();
  DefaultNumbers(const DefaultNumbers&) = delete;

 private:
  const long first_;
};
// Whether a timer, or one of an array, is an argument of an active default of the current task. If so it is
// kept until that default is deactivated.
bool keep_for_defaults(Value timers);

}  // namespace lumos
