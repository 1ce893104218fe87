// Timers: each belongs to the task that started it. A queue of all running timers tells
// which task is to be woken next.
#pragma once

#include <cstddef>
#include <string>

#include "value/clock.h"
#include "value/task.h"
#include "value/value.h"

namespace lumos {

struct Timer {
  Value value = nullptr;
  Task* owner = nullptr;  // while running
  double default_duration = -1;
  Time started = 0, expiry = 0;
  uint64_t number = 0;          // of its start among all starts
  bool running = false;         // started and neither stopped nor taken as timed out
  bool of_call = false;         // is no timer to "any timer" and "all timer"
  size_t place = SIZE_MAX;      // in the queue
  size_t own_place = SIZE_MAX;  // among those of the owner, in the order of their expiry
  Timer* next = nullptr;        // running timers of the owner
  Timer* previous = nullptr;
};

Timer* new_timer(Value value);
void delete_timer(Timer* timer);
void copy_timer_default(Timer* target, const Timer* source);
std::string timer_text(const Timer* timer);

// When the first timer of the queue expires; never if none runs.
Time next_expiry();
// Takes expired timers out of the queue and tells their owners through wake_task.
void wake_expired(Time time);
void stop_timers_of(Task& task);
// Those that are no part of the component's record: an alive component keeps its own.
void stop_timers_outside(Task& task, Value record);
void wake_task(Task& task);  // component.cpp

}  // namespace lumos
