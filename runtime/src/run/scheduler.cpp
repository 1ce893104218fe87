#include "run/scheduler.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "value/error.h"
#include "ports/attempts.h"
#include "ports/outside.h"
#include "run/ending.h"
#include "run/timer.h"

namespace lumos {

namespace {

constexpr unsigned steps_of_a_turn = 100;
// What a turn of a busy component takes on a simulated clock.
constexpr Time time_of_a_turn = 10000;
constexpr Time poll_interval = 1000000;
constexpr Time longest_poll_interval = 100 * poll_interval;
// A simulated test case in which nothing but polling happens for so long is stuck.
constexpr Time longest_polling = Time(3600) * 1000000000;

// An entry for another turn of its component than the next counts no more.
struct Entry {
  Component* component;
  unsigned turn;
};

// A list from which the first is taken, in memory that it keeps: a deque would take and give back blocks all
// the time.
class Queue {
 public:
  bool empty() const { return begin_ == entries_.size(); }
  size_t size() const { return entries_.size() - begin_; }
  Entry& operator[](size_t i) { return entries_[begin_ + i]; }
  void push(Entry entry) { entries_.push_back(entry); }
  Entry take_first() {
    const Entry first = entries_[begin_++];
    if (2 * begin_ >= entries_.size()) {
      entries_.erase(entries_.begin(), entries_.begin() + static_cast<ptrdiff_t>(begin_));
      begin_ = 0;
    }
    return first;
  }
  void clear() { *this = Queue(); }

 private:
  std::vector<Entry> entries_;
  size_t begin_ = 0;
};
Queue ready;
std::vector<Watcher> watchers;  // of any component
uint64_t questions = 0;
std::vector<Component*> polling;
std::optional<uint64_t> explored;
uint64_t schedule_state = 0;  // 0: the usual order
// Of a run with another schedule, which something outside might go on with: how often it waited for that.
unsigned idle_rounds = 0;
constexpr unsigned most_idle_rounds = 10;

size_t any_below(size_t n) {
  schedule_state = schedule_state * 6364136223846793005u + 1442695040888963407u;
  return (schedule_state >> 33) % n;
}
Time next_poll = never;
Time last_progress = 0;
Time simulated_poll_interval = poll_interval;

// Component that asked the scheduler to end it.
Component* leaving = nullptr;

// A loop that waits for the simulated clock sees it move, but not past a timer, and not before all
// others have done what they can.
void pass_time(const Task& task) {
  if (!is_simulated()) return;
  for (size_t i = 0; i < ready.size(); ++i)
    if (ready[i].turn == ready[i].component->turn && !ready[i].component->busy) return;
  advance_to(std::min(next_expiry(), now() + (task.polls_clock ? poll_interval : time_of_a_turn)));
}

// A task that does not wait for anything gives the others their turn after a while.
void end_turn() {
  Task& task = *current_task;
  pass_time(task);
  task.steps = 0;
  task.polls_clock = false;
  if (Component* c = task.component) {
    c->busy = true;
    make_ready(*c);
    to_scheduler();
  } else {
    wake_expired(now());
    check_run_goes_on();
  }
}

inline void take_step() {
  if (++current_task->steps >= steps_of_a_turn) end_turn();
}

// Polling a simulated clock in vain gets slower.
Time next_poll_interval() {
  if (!is_simulated()) return poll_interval;
  Time interval = simulated_poll_interval;
  simulated_poll_interval = std::min(2 * interval, longest_poll_interval);
  return interval;
}

void resume(Component& c) {
  c.state = State::running;
  Task* scheduler_task = current_task;
  current_task = &c.task;
  switch_fiber(c.task.fiber);
  current_task = scheduler_task;
  if (!leaving) return;
  Component* gone = leaving;
  leaving = nullptr;
  bury(*gone);
}

void wake_polling() {
  next_poll = never;
  // Those that wait again poll anew.
  std::sort(polling.begin(), polling.end(),
            [](const Component* a, const Component* b) { return a->number < b->number; });
  for (Component* c : polling) {
    c->is_polling = false;
    if (c->state == State::waiting && c->polls) make_ready(*c);
  }
  polling.clear();
}

// A component that received what it does not take ends the test case itself.
void end_waiting(const char* reason) {
  for (auto& c : test_case->components)
    if (c && c->overdue) return;
  for (auto& c : test_case->components) {
    if (!c || c->state != State::waiting || c->task.attempts.empty()) continue;
    c->overdue = reason;
    return make_ready(*c);
  }
  end_test_case(lumo_verdict_error_c, reason);
}

// Asking a real clock costs as much as a short turn: while others are ready, only some turns do.
void check_time() {
  if (const char* reason = ending_reason()) return end_test_case(lumo_verdict_error_c, reason);
  if (real_time_is_over()) return end_waiting("the time given to the test case is over");
  constexpr unsigned turns_between = 8;
  static unsigned turns = 0;
  if (!is_simulated() && !ready.empty() && ++turns % turns_between != 0) return;
  if (next_expiry() == never && test_case->deadline == never && next_poll == never) return;
  Time time = now();
  wake_expired(time);
  if (time >= test_case->deadline) {
    end_waiting("the time given to the test case is over");
    return;
  }
  if (time >= next_poll) wake_polling();
}

void idle() {
  Time next = next_expiry();
  if (test_case->deadline < next) next = test_case->deadline;
  bool only_polling = next == never;
  if (next_poll < next) next = next_poll;
  if (is_simulated()) {
    bool stuck = next == never || (only_polling && now() - last_progress > longest_polling);
    if (stuck && (!outside_may_send() || (schedule_state && ++idle_rounds > most_idle_rounds)))
      return end_waiting("all components wait and nothing can happen any more");
    if (next != never) return advance_to(next);
    return wait_outside(never);
  }
  if (next == never && !outside_may_send())
    return end_waiting("all components wait and nothing can happen any more");
  wait_outside(next);
}

}  // namespace

void schedule() {
  last_progress = now();
  simulated_poll_interval = poll_interval;
  idle_rounds = 0;
  while (!test_case->ended) {
    take_messages_from_outside();
    check_time();
    if (test_case->ended) return;
    if (ready.empty()) {
      idle();
      continue;
    }
    if (schedule_state) std::swap(ready[0], ready[any_below(ready.size())]);
    const Entry next = ready.take_first();
    if (next.turn == next.component->turn && next.component->state == State::ready) resume(*next.component);
  }
}

void make_ready(Component& c) {
  c.state = State::ready;
  c.polls = false;
  ready.push({&c, c.turn});
}

void clear_schedule() {
  ready.clear();
  watchers.clear();
  polling.clear();
  next_poll = never;
}

void drop_from_ready(Component& c) {
  ++c.turn;
}

void to_scheduler() {
  switch_fiber(test_case->scheduler);
}

void leave_component(Component& c) {
  leaving = &c;
  to_scheduler();
  std::abort();  // nobody switches here again
}

void watch_components(Component& c) {
  if (c.is_watching) return;
  c.is_watching = true;
  watchers.push_back({&c, ++questions});
}

namespace {

// So many are looked through; what others watch stands in a table.
constexpr size_t few_watchers = 8;

uint64_t watch_of(const Component& c, const Component& other) {
  return static_cast<uint64_t>(c.number) << 32 | static_cast<uint64_t>(other.number);
}

bool watches(const Component& c, const Component& other) {
  const size_t size = other.watchers.size();
  for (size_t i = 0; i < size && i < few_watchers; ++i)
    if (other.watchers[i].component == &c) return true;
  return size > few_watchers && test_case->watches.count(watch_of(c, other));
}

}  // namespace

void watch_component(Component& c, Component& other) {
  // What has ended does not change any more.
  if (c.watched == &other || other.state == State::ended) return;
  c.watched = &other;
  if (watches(c, other)) return;
  if (other.watchers.size() >= few_watchers) test_case->watches.insert(watch_of(c, other));
  other.watchers.push_back({&c, ++questions});
}

void wake_watchers(Component& changed) {
  // In the order of their questions. Nobody asks meanwhile.
  size_t i = 0, k = 0;
  while (i < watchers.size() || k < changed.watchers.size()) {
    const bool is_of_any = k == changed.watchers.size() ||
                           (i < watchers.size() && watchers[i].number < changed.watchers[k].number);
    Component& c = *(is_of_any ? watchers[i++] : changed.watchers[k++]).component;
    if (is_of_any) c.is_watching = false;
    if (c.watched == &changed) c.watched = nullptr;
    if (!is_of_any && k > few_watchers) test_case->watches.erase(watch_of(c, changed));
    wake(c);
  }
  watchers.clear();
  changed.watchers.clear();
  if (changed.state == State::ended) changed.watchers.shrink_to_fit();
}

void wake(Component& c) {
  c.task.event = true;
  idle_rounds = 0;
  if (is_simulated()) {
    last_progress = now();
    simulated_poll_interval = poll_interval;
  }
  if (c.state == State::waiting) make_ready(c);
}

void wake_task(Task& task) {
  task.event = true;
  if (task.component) wake(*task.component);
}

void explore_schedule(std::optional<uint64_t> seed) {
  explored = seed;
  schedule_state = seed.value_or(0) ? *seed * 2 + 1 : 0;
}

std::optional<uint64_t> explored_seed() {
  return explored;
}

void maybe_yield() {
  if (schedule_state && test_case && current_task->component && any_below(2)) yield();
}

void yield() {
  Component* c = current_task->component;
  if (!c) return;
  make_ready(*c);
  to_scheduler();
}

}  // namespace lumos

using namespace lumos;

void lumo_component_snapshot(lumo_context_t) {
  take_step();
  maybe_yield();
  current_task->snapshot_time = never;
  current_task->event = false;
  current_task->choosing = true;
  if (!current_task->attempts.empty() || !current_task->kept_contents.empty())
    end_attempts_of_snapshot(*current_task);
}

namespace {

// A control part has nobody beside it: it sleeps until one of its timers expires.
void wait_in_control_part() {
  check_run_goes_on();
  Time next = next_expiry();
  if (next == never) fault("the control part waits and nothing can happen any more");
  next = std::min(next, control_deadline());
  if (is_simulated()) {
    advance_to(next);
  } else {
    wait_outside(next);
  }
  wake_expired(now());
}

}  // namespace

void lumo_component_wait(lumo_boolean_t volatile_guards, lumo_context_t) {
  Component* c = current_task->component;
  current_task->choosing = false;
  if (!current_task->attempts.empty()) keep_attempts();
  if (current_task->event) return;
  if (!c) return wait_in_control_part();
  c->busy = current_task->polls_clock = false;
  current_task->steps = 0;
  c->state = State::waiting;
  c->polls = volatile_guards;
  if (volatile_guards && !c->is_polling) {
    c->is_polling = true;
    polling.push_back(c);
  }
  if (volatile_guards && next_poll == never) next_poll = now() + next_poll_interval();
  to_scheduler();
  if (c->overdue) end_overdue(*c);
}

void lumo_component_control(lumo_context_t) {
  take_step();
}
