#include "run/scheduler.h"
#include "run/timer.h"

#include <time.h>

#include <charconv>
#include <cstdio>
#include <iterator>

#include "value/error.h"
#include "report/events.h"
#include "run/component.h"
#include "text/log.h"
#include "text/text_forms.h"
#include "value/hooks.h"
#include "value/types.h"

namespace lumos {

namespace {

bool expires_before(const Timer& a, const Timer& b) {
  return a.expiry < b.expiry;
}
// Of those that expire together, the last that was started.
bool is_taken_before(const Timer& a, const Timer& b) {
  return a.expiry < b.expiry || (a.expiry == b.expiry && a.number > b.number);
}

// A binary heap; each timer knows its place.
template <size_t Timer::*place, bool (*is_before)(const Timer&, const Timer&)>
class TimerHeap {
 public:
  explicit TimerHeap(std::vector<Timer*>& timers) : timers_(timers) {}

  void add(Timer* timer) {
    timers_.push_back(timer);
    timer->*place = timers_.size() - 1;
    rise(timer->*place);
  }
  void remove(Timer* timer) {
    const size_t at = timer->*place;
    if (at == SIZE_MAX) return;
    timer->*place = SIZE_MAX;
    Timer* last = timers_.back();
    timers_.pop_back();
    if (last == timer) return;
    put(at, last);
    rise(at);
    sink(last->*place);
  }

 private:
  void put(size_t at, Timer* timer) {
    timers_[at] = timer;
    timer->*place = at;
  }
  bool earlier(size_t a, size_t b) const { return is_before(*timers_[a], *timers_[b]); }
  void swap_places(size_t a, size_t b) {
    Timer* first = timers_[a];
    put(a, timers_[b]);
    put(b, first);
  }
  void rise(size_t at) {
    for (; at > 0 && earlier(at, (at - 1) / 2); at = (at - 1) / 2) swap_places(at, (at - 1) / 2);
  }
  void sink(size_t at) {
    for (;;) {
      size_t least = at;
      for (size_t child = 2 * at + 1; child <= 2 * at + 2; ++child)
        if (child < timers_.size() && earlier(child, least)) least = child;
      if (least == at) return;
      swap_places(at, least);
      at = least;
    }
  }

  std::vector<Timer*>& timers_;
};

using Expiries = TimerHeap<&Timer::place, expires_before>;
using OwnExpiries = TimerHeap<&Timer::own_place, is_taken_before>;

// Of all tasks: who is to be woken next.
std::vector<Timer*>& queue() {
  static auto* all = new std::vector<Timer*>;
  return *all;
}

void enqueue(Timer* timer) {
  Expiries(queue()).add(timer);
  if (!timer->of_call) OwnExpiries(timer->owner->first_timers).add(timer);
}

void dequeue(Timer* timer) {
  Expiries(queue()).remove(timer);
}

void link(Timer* timer) {
  timer->next = timer->owner->timers;
  timer->previous = nullptr;
  if (timer->next) timer->next->previous = timer;
  timer->owner->timers = timer;
}

void unlink(Timer* timer) {
  if (timer->previous) {
    timer->previous->next = timer->next;
  } else {
    timer->owner->timers = timer->next;
  }
  if (timer->next) timer->next->previous = timer->previous;
  timer->next = timer->previous = nullptr;
}

void halt(Timer* timer) {
  if (!timer->running) return;
  timer->running = false;
  dequeue(timer);
  OwnExpiries(timer->owner->first_timers).remove(timer);
  unlink(timer);
  timer->owner = nullptr;
}

bool expired(const Timer* timer, Time time) {
  return timer->running && timer->expiry <= time;
}

uint64_t starts = 0;

Timer* timer_of(Value v) {
  if (!v || v->form != Form::timer) fault("a timer is needed");
  return v->timer;
}

const char* name_of(const Timer* timer) {
  return timer->value && timer->value->label ? timer->value->label : "timer";
}

// The text of a duration, which timers mostly have in common.
class DurationText {
 public:
  explicit DurationText(std::chars_format format) : format_(format) {}
  const std::string& of(double duration) {
    if (duration == known_) return text_;
    char digits[400];
    text_.assign(digits, std::to_chars(digits, std::end(digits), duration, format_, 6).ptr);
    text_ += " s";
    known_ = duration;
    return text_;
  }

 private:
  std::chars_format format_;
  double known_ = -1;
  std::string text_;
};

const std::string& seconds_text(double duration) {
  static auto& text = *new DurationText(std::chars_format::fixed);
  return text.of(duration);
}

const std::string& short_seconds_text(double duration) {
  static auto& text = *new DurationText(std::chars_format::general);
  return text.of(duration);
}

void log_timer(const char* what, const Timer* timer, std::string_view more = {}) {
  std::string& text = log_text();
  ((text += what) += name_of(timer)) += more;
  log_line(lumo_log_msg_event_c, text);
}

void tell_stop(const Timer* timer) {
  if (!timer->running) return;
  if (log_enabled(lumo_log_msg_event_c)) log_timer("stop of ", timer);
  if (events_wanted) tell(EventKind::timer_stop, name_of(timer));
}

void take_timeout(Timer* timer) {
  if (log_enabled(lumo_log_msg_event_c)) log_timer("timeout of ", timer);
  if (events_wanted) tell(EventKind::timeout, name_of(timer));
  halt(timer);
}

// The time of the snapshot is that of the first question for it, since most alternatives ask for none.
Time snapshot_time() {
  if (current_task->snapshot_time == never) current_task->snapshot_time = now();
  return current_task->snapshot_time;
}

// The one of the task's timers that expired first.
Timer* first_expired() {
  const std::vector<Timer*>& timers = current_task->first_timers;
  return !timers.empty() && expired(timers[0], snapshot_time()) ? timers[0] : nullptr;
}

}  // namespace

namespace {
Timer* free_timers = nullptr;
}

Timer* new_timer(Value value) {
  // Those that ended serve again.
  Timer* timer = free_timers;
  if (timer) {
    free_timers = timer->next;
    *timer = Timer();
  } else {
    timer = new Timer;
  }
  timer->value = value;
  return timer;
}

void delete_timer(Timer* timer) {
  halt(timer);
  timer->next = free_timers;
  free_timers = timer;
}

void copy_timer_default(Timer* target, const Timer* source) {
  target->default_duration = source->default_duration;
}

std::string timer_text(const Timer* timer) {
  if (!timer->running) return "timer, not running";
  char text[64];
  std::snprintf(text, sizeof text, "timer, running for %g s",
                static_cast<double>(timer->expiry - timer->started) / 1e9);
  return text;
}

Time next_expiry() {
  return queue().empty() ? never : queue()[0]->expiry;
}

void wake_expired(Time time) {
  while (!queue().empty() && queue()[0]->expiry <= time) {
    Timer* timer = queue()[0];
    dequeue(timer);
    wake_task(*timer->owner);
  }
}

void stop_timers_of(Task& task) {
  while (task.timers) halt(task.timers);
}

void stop_timers_outside(Task& task, Value record) {
  for (Timer *t = task.timers, *next; t; t = next) {
    next = t->next;
    Value root = t->value;
    while (root && root->parent) root = root->parent;
    if (root != record) halt(t);
  }
}

namespace {
const bool timer_hooks_are_set =
    (hooks.new_timer = new_timer, hooks.delete_timer = delete_timer,
     hooks.copy_timer_default = copy_timer_default, hooks.timer_text = timer_text, true);
}  // namespace

}  // namespace lumos

using namespace lumos;

namespace {

// Neither the local definitions of an altstep nor the declarations of a component use timers.
void check_use(const char* operation) {
  check_effect(operation);
  if (execute_instead && !current_task->component) fault("it uses timers");
  if (current_task->furnishing) fault("timer operation '%s' in the declarations of a component", operation);
}

}  // namespace

void lumo_timer_start(lumo_value_t value, double duration, lumo_context_t) {
  maybe_yield();
  check_use("start");
  Timer* timer = timer_of(value);
  if (duration == lumo_duration_default_c) {
    if (timer->default_duration < 0) fault("timer '%s' is started without a duration", name_of(timer));
    duration = timer->default_duration;
  }
  if (!(duration >= 0)) fault("timer '%s' is started with a negative duration", name_of(timer));
  halt(timer);
  timer->owner = current_task;
  timer->started = now();
  timer->number = ++starts;
  Time length = duration_of(duration);
  timer->expiry = length > never - timer->started ? never - 1 : timer->started + length;
  timer->running = true;
  link(timer);
  enqueue(timer);
  if (log_enabled(lumo_log_msg_event_c))
    log_timer("start of ", timer, " for " + short_seconds_text(duration));
  if (events_wanted) tell(EventKind::timer_start, name_of(timer), {}, seconds_text(duration));
}

void lumo_timer_stop(lumo_value_t value, lumo_context_t) {
  check_use("stop");
  if (value == lumo_value_all_c) {
    for (Timer *t = current_task->timers, *next; t; t = next) {
      next = t->next;
      if (t->of_call) continue;
      tell_stop(t);
      halt(t);
    }
    return;
  }
  Timer* timer = timer_of(value);
  tell_stop(timer);
  halt(timer);
}

double lumo_timer_read(lumo_value_t value, lumo_context_t) {
  check_use("read");
  current_task->polls_clock = true;
  Timer* timer = timer_of(value);
  Time time = now();
  if (!timer->running || timer->expiry <= time) return 0.0;
  return static_cast<double>(time - timer->started) / 1e9;
}

lumo_boolean_t lumo_timer_is_running(lumo_value_t value, lumo_context_t) {
  check_use("running");
  current_task->polls_clock = true;
  Time time = now();
  if (value != lumo_value_any_c && value != lumo_value_all_c) {
    Timer* timer = timer_of(value);
    return timer->running && timer->expiry > time;
  }
  for (Timer* t = current_task->timers; t; t = t->next)
    if (!t->of_call && t->expiry > time) return true;
  return false;
}

lumo_boolean_t lumo_timer_try_timed_out(lumo_value_t value, lumo_context_t) {
  check_use("timeout");
  Timer* timer = value == lumo_value_any_c ? first_expired() : timer_of(value);
  if (!timer || !timer->running || !expired(timer, snapshot_time())) return false;
  take_timeout(timer);
  return takes(true);
}

void lumo_value_set_timer_default_duration(lumo_value_t value, double duration, lumo_context_t) {
  if (!(duration >= 0)) fault("the default duration of a timer is negative");
  timer_of(value)->default_duration = duration;
}

void lumo_value_set_timer_in_array_default_duration(lumo_value_t timers, unsigned long index, double duration,
                                                    lumo_context_t context) {
  lumo_value_set_timer_default_duration(lumo_value_field_by_index(timers, index, context), duration, context);
}
