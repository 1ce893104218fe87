// The altsteps that a task activated as defaults.
#pragma once

#include "value/task.h"

namespace lumos {

void deactivate_all(Task& task);
// The task is over, and with it the defaults that run.
void end_defaults(Task& task);
// Whether a timer, or one of an array, is an argument of an active default of the current task. If so it is
// kept until that default is deactivated.
bool keep_for_defaults(Value timers);

}  // namespace lumos
