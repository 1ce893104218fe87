#include "component.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "defaults.h"
#include "error.h"
#include "log.h"
#include "outside.h"
#include "port.h"
#include "suite.h"
#include "templates.h"
#include "timer.h"
#include "types.h"

namespace lumos {

TestCase* test_case = nullptr;

namespace {

Task process_task;

constexpr unsigned steps_of_a_turn = 100;
constexpr Time poll_interval = 1000000;
constexpr Time longest_poll_interval = 100 * poll_interval;
// A simulated test case in which nothing but polling happens for so long is stuck.
constexpr Time longest_polling = Time(3600) * 1000000000;

std::deque<Component*> ready;
Time next_poll = never;
Time last_progress = 0;
Time simulated_poll_interval = poll_interval;

// --- guarded runs

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

// --- ending

void take_verdict(Component& c) {
  if (c.verdict > test_case->verdict) test_case->verdict = c.verdict;
}

void free_behaviour(Component& c) {
  for (lumo_value_t v : c.behaviour.argv)
    if (v) destroy(v);
  c.behaviour = Behaviour();
}

void wake_all() {
  for (auto& c : test_case->components)
    if (c) wake(*c);
}

void drop_from_ready(Component& c) {
  for (size_t i = 0; i < ready.size(); ++i)
    if (ready[i] == &c) ready.erase(ready.begin() + static_cast<long>(i--));
}

// The behaviour is over; not called on the component's own stack.
void release_behaviour(Component& c) {
  if (c.task.fiber) delete_fiber(c.task.fiber);
  c.task.fiber = nullptr;
  deactivate_all(c);
  reset_task(c.task);
  free_behaviour(c);
  drop_from_ready(c);
  if (c.unsent) delete_message(c.unsent);
  c.unsent = nullptr;
}

void release_component(Component& c) {
  release_behaviour(c);
  close_ports(c);
  if (c.record) destroy(c.record);
  c.record = nullptr;
}

// What is left to do for a component that switched away for the last time.
void bury(Component& c) {
  release_behaviour(c);
  take_verdict(c);
  c.done = true;
  if (&c == test_case->mtc) {
    c.state = State::ended;
    test_case->ended = true;
  } else if (c.alive) {
    c.state = State::idle;
  } else {
    c.state = State::ended;
    disconnect_all(c);
  }
  wake_all();
}

void furnish(Component& c);

// Component that asked the scheduler to end it.
Component* leaving = nullptr;

void component_entry(void* argument) {
  auto* c = static_cast<Component*>(argument);
  if (!c->record && c->type) furnish(*c);
  Behaviour& b = c->behaviour;
  lumo_call_function(b.function, b.type, b.argc, b.argv.data(), current_task);
  leave_behaviour();
}

void resume(Component& c) {
  c.state = State::running;
  c.steps = 0;
  Task* scheduler_task = current_task;
  current_task = &c.task;
  switch_fiber(c.task.fiber);
  current_task = scheduler_task;
  if (!leaving) return;
  Component* gone = leaving;
  leaving = nullptr;
  bury(*gone);
}

void to_scheduler() {
  switch_fiber(test_case->scheduler);
}

void make_ready(Component& c) {
  c.state = State::ready;
  c.polls = false;
  ready.push_back(&c);
}

// Polling a simulated clock in vain gets slower.
Time next_poll_interval() {
  if (!is_simulated()) return poll_interval;
  Time interval = simulated_poll_interval;
  simulated_poll_interval = std::min(2 * interval, longest_poll_interval);
  return interval;
}

// --- the scheduler

void wake_polling() {
  next_poll = never;
  for (auto& c : test_case->components)
    if (c && c->state == State::waiting && c->polls) make_ready(*c);
}

void check_time() {
  Time time = now();
  wake_expired(time);
  if (time >= test_case->deadline) {
    end_test_case(lumo_verdict_error_c, "the time given to the test case is over");
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
    if (stuck && !outside_may_send())
      return end_test_case(lumo_verdict_error_c, "all components wait and nothing can happen any more");
    if (next != never) return advance_to(next);
    return wait_outside(never);
  }
  if (next == never && !outside_may_send())
    return end_test_case(lumo_verdict_error_c, "all components wait and nothing can happen any more");
  wait_outside(next);
}

void schedule() {
  while (!test_case->ended) {
    take_messages_from_outside();
    check_time();
    if (test_case->ended) return;
    if (ready.empty()) {
      idle();
      continue;
    }
    Component* c = ready.front();
    ready.pop_front();
    if (c->state == State::ready) resume(*c);
  }
}

// --- making components

Component& add_component(lumo_type_t type, const std::string& name, bool alive) {
  auto c = std::make_unique<Component>();
  c->number = static_cast<long>(test_case->components.size()) + 1;
  c->type = type;
  c->name = name;
  c->alive = alive;
  c->task.component = c.get();
  test_case->components.push_back(std::move(c));
  Component& made = *test_case->components.back();
  if (made.name.empty()) made.name = "ptc" + std::to_string(made.number);
  made.task.name = made.name.c_str();
  return made;
}

void make_element(Component& c, size_t slot) {
  lumo_field_info_t* fields = field_info(c.record->type);
  lumo_type_t type = fields[slot].type;
  if (!type) return;
  Value part = force_part(c.record, slot);
  part->label = fields[slot].name;
  make_ports(c, part, type, fields[slot].name);
}

// Ports and timers come from the table, variables from the post-process function.
void furnish(Component& c) {
  lumo_type_t record = record_type(c.type);
  c.record = make_root(record, lumo_perm_alloc_c);
  shape(c.record);
  for (size_t i = 0; i < c.record->parts.size; ++i) make_element(c, i);
  void* post_process = record && record->type_info ? record->type_info->check_function : nullptr;
  if (!post_process || record->type_info->kind != lumo_type_kind_component) return;
  Task* creator = current_task;
  current_task = &c.task;
  reinterpret_cast<lumo_postprocess_function_t>(post_process)(c.record, current_task);
  end_roots(c.task, 0);
  current_task = creator;
}

bool start_fiber(Component& c) {
  c.task.fiber = new_fiber(component_entry, &c);
  return c.task.fiber != nullptr;
}

// The vector of a behaviour: copies of the arguments, a place for a result, NULL.
void set_behaviour(Component& c, lumo_symbol_entry_t row, unsigned long argc, lumo_value_t argv[]) {
  Behaviour& b = c.behaviour;
  b.function = reinterpret_cast<lumo_function_t>(row->function_ptr);
  b.type = row->type_descriptor;
  b.argc = argc;
  for (unsigned long i = 0; i < argc; ++i)
    b.argv.push_back(argv && argv[i] ? copy_value(argv[i], lumo_perm_alloc_c) : nullptr);
  const lumo_field_info_t* fields = b.type ? field_info(b.type) : nullptr;
  lumo_type_t signature = fields ? fields[0].type : nullptr;
  const lumo_field_info_t* formals = signature ? field_info(signature) : nullptr;
  size_t count = formals ? field_count(signature) : 0;
  if (count > argc && formals[argc].property & lumo_field_property_return_value_c)
    b.argv.push_back(make_root(formals[argc].type, lumo_perm_alloc_c));
  b.argv.push_back(nullptr);
}

// --- running a test case

void end_all_components() {
  for (auto& c : test_case->components) {
    if (!c) continue;
    take_verdict(*c);
    c->state = State::ended;
  }
  for (auto& c : test_case->components)
    if (c) release_component(*c);
  ready.clear();
  next_poll = never;
}

lumo_type_t testcase_clause(lumo_symbol_entry_t row, size_t which) {
  if (!row->type_descriptor || field_count(row->type_descriptor) <= which) return nullptr;
  return field_info(row->type_descriptor)[which].type;
}

void check_not_running(const char* what) {
  if (test_case) fault("%s inside of a test case", what);
}

void run_test_case(TestCase& tc, lumo_symbol_entry_t row, unsigned long argc, lumo_value_t argv[]) {
  lumo_type_t runs_on = testcase_clause(row, 1);
  tc.mtc = &add_component(runs_on, "mtc", false);
  tc.system_type = testcase_clause(row, 2) ? testcase_clause(row, 2) : runs_on;
  tc.system = &add_component(tc.system_type, "system", false);
  set_behaviour(*tc.mtc, row, argc, argv);
  outside_test_case_begins(tc.module.c_str(), tc.name.c_str());
  if (!start_fiber(*tc.mtc)) {
    end_test_case(lumo_verdict_error_c, "there is no memory for the stack of the test case");
  } else {
    make_ready(*tc.mtc);
  }
  last_progress = now();
  simulated_poll_interval = poll_interval;
  schedule();
  end_all_components();
  outside_test_case_ends();
}

}  // namespace

Task* current_task = &process_task;

std::vector<Result>& results() {
  static auto* all = new std::vector<Result>;
  return *all;
}

const char* verdict_name(lumo_verdict_t verdict) {
  static const char* const names[] = {"none", "pass", "inconc", "fail", "error"};
  return names[verdict];
}

// --- faults

void leave_behaviour() {
  if (Component* c = current_task->component) {
    leaving = c;
    to_scheduler();
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
    reporting = false;
  }
  if (Component* c = current_task->component) {
    c->verdict = lumo_verdict_error_c;
    end_test_case(lumo_verdict_error_c, text);
    leaving = c;
    to_scheduler();
  } else if (guard) {
    leave_guard(true);
  }
  std::fprintf(stderr, "%s\n", text);
  std::exit(2);
}

bool stack_is_short() {
  constexpr size_t reserve = 48 * 1024;
  return stack_left() < reserve;
}

void check_stack() {
  if (stack_is_short()) fault("the calls or the value are nested too deeply");
}

bool run_guarded(const char* task_name, void (*function)(void*), void* argument) {
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

// --- waking and waiting

void wake(Component& c) {
  c.task.event = true;
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

void yield() {
  Component* c = current_task->component;
  if (!c) return;
  make_ready(*c);
  to_scheduler();
}

void end_test_case(lumo_verdict_t verdict, const char* reason) {
  if (verdict > test_case->verdict) {
    test_case->verdict = verdict;
    test_case->reason = reason;
  }
  if (!test_case->ended && !current_task->component) log_line(lumo_log_msg_error_c, reason);
  test_case->ended = true;
}

// --- references

Component& self() {
  if (!current_task->component) fault("this needs a component and cannot be done in a control part");
  return *current_task->component;
}

Component* component_of(Value reference) {
  if (!reference) fault("use of a component reference that is not initialized");
  if (is_special(reference, Special::null_component)) return nullptr;
  if (reference->form != Form::special && is_template(reference))
    reference = valueof_value(reference, lumo_temp_alloc_c);
  if (reference->form != Form::component) fault("use of a component reference that is not initialized");
  size_t number = static_cast<size_t>(reference->integer);
  if (!test_case || number == 0 || number > test_case->components.size()) return nullptr;
  return test_case->components[number - 1].get();
}

Value reference_to(const Component& c) {
  Value v = make_root(c.type ? c.type : lumo_undefined_type, lumo_temp_alloc_c);
  clear_contents(v);
  v->kind = lumo_type_kind_component_ref;
  v->form = Form::component;
  v->integer = c.number;
  return v;
}

Value find_component_element(const char* name) {
  Component* c = current_task->component;
  if (!c || !c->record) return nullptr;
  long index = field_index(c->record->type, name);
  if (index < 0 || static_cast<size_t>(index) >= c->record->parts.size) return nullptr;
  return force_part(c->record, static_cast<size_t>(index));
}

Component& system_component() {
  Component& system = *test_case->system;
  if (!system.record) {
    if (!system.type) fault("the test case has no system component");
    furnish(system);
  }
  return system;
}

}  // namespace lumos

using namespace lumos;

namespace {

Component& existing(lumo_value_t reference) {
  Component* c = component_of(reference);
  if (!c) fault("the component reference is null or of no component of this test case");
  return *c;
}

bool is_parallel(const Component& c) {
  return &c != test_case->mtc && &c != test_case->system;
}

bool is_running(const Component& c) {
  return c.state == State::ready || c.state == State::running || c.state == State::waiting;
}

// Whether one, or all, of the parallel components have the property.
template <class Property>
bool of_components(lumo_value_t which, Property has) {
  if (which != lumo_value_any_c && which != lumo_value_all_c) return has(existing(which));
  bool all = which == lumo_value_all_c;
  for (auto& c : test_case->components)
    if (is_parallel(*c) && has(*c) != all) return !all;
  return all;
}

void stop_behaviour(Component& c) {
  if (!is_running(c)) return;
  if (current_task->component == &c) leave_behaviour();
  bury(c);
}

void stop(Component& c, bool kill) {
  if (&c == test_case->system) fault("the system component cannot be stopped");
  if (&c == test_case->mtc) {
    if (current_task->component == &c) leave_behaviour();
    test_case->ended = true;
    to_scheduler();
  }
  if (kill) c.alive = false;
  if (is_running(c)) return stop_behaviour(c);
  if (c.state == State::ended || (c.alive && !kill)) return;
  c.state = State::ended;
  take_verdict(c);
  disconnect_all(c);
  wake_all();
}

void stop_or_kill(lumo_value_t component, bool kill) {
  if (component == lumo_no_value_c || !component) {
    if (current_task->component) stop(*current_task->component, kill);
    leave_behaviour();
  }
  self();
  if (component != lumo_value_all_c) return stop(existing(component), kill);
  // The caller last, since it does not come back.
  for (size_t i = 0; i < test_case->components.size(); ++i) {
    Component& c = *test_case->components[i];
    if (is_parallel(c) && &c != current_task->component) stop(c, kill);
  }
  if (is_parallel(self())) stop(self(), kill);
}

}  // namespace

lumo_value_t lumo_component_create(lumo_value_t instance, lumo_value_t name, lumo_boolean_t alive,
                                   lumo_context_t) {
  self();
  prepare_write(instance);
  const char* text = name && name != lumo_no_value_c ? lumo_value_get_charstring(name, nullptr) : "";
  Component& c = add_component(instance->type, text, alive);
  furnish(c);
  clear_contents(instance);
  instance->form = Form::component;
  instance->integer = c.number;
  if (log_enabled(lumo_log_msg_event_c))
    log_format(lumo_log_msg_event_c, "component %s created", c.name.c_str());
  return instance;
}

void lumo_component_start(lumo_value_t component, const char* module, const char* function,
                          unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  self();
  Component& c = existing(component);
  if (!is_parallel(c)) fault("component %s cannot be started", c.name.c_str());
  if (is_running(c)) fault("component %s is running already", c.name.c_str());
  if (c.state == State::ended || (c.done && !c.alive)) fault("component %s has ended", c.name.c_str());
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, function, context);
  if (!row->function_ptr) fault("function '%s.%s' has no behaviour", module, function);
  set_behaviour(c, row, argc, argv);
  c.done = false;
  if (!start_fiber(c)) fault("there is no memory for the stack of component %s", c.name.c_str());
  make_ready(c);
  if (log_enabled(lumo_log_msg_event_c))
    log_format(lumo_log_msg_event_c, "component %s started: %s.%s", c.name.c_str(), module, function);
}

void lumo_component_stop(lumo_value_t component, lumo_context_t) {
  stop_or_kill(component, false);
}
void lumo_component_kill(lumo_value_t component, lumo_context_t) {
  stop_or_kill(component, true);
}

lumo_boolean_t lumo_component_is_running(lumo_value_t component, lumo_context_t) {
  self();
  return of_components(component, is_running);
}

lumo_boolean_t lumo_component_is_alive(lumo_value_t component, lumo_context_t) {
  self();
  return of_components(component, [](const Component& c) { return c.state != State::ended; });
}

lumo_boolean_t lumo_component_try_done(lumo_value_t component, lumo_context_t) {
  self();
  return of_components(component, [](const Component& c) { return c.done || c.state == State::ended; });
}

lumo_boolean_t lumo_component_try_killed(lumo_value_t component, lumo_context_t) {
  self();
  return of_components(component, [](const Component& c) { return c.state == State::ended; });
}

lumo_boolean_t lumo_component_try_else(lumo_context_t) {
  return true;
}
lumo_boolean_t lumo_try_else(lumo_context_t) {
  return true;
}

lumo_value_t lumo_component_self(lumo_context_t) {
  return reference_to(self());
}

lumo_value_t lumo_component_mtc(lumo_context_t) {
  self();
  return reference_to(*test_case->mtc);
}

lumo_value_t lumo_component_system(lumo_context_t) {
  self();
  return reference_to(*test_case->system);
}

lumo_value_t lumo_component_element(const char* name, lumo_context_t) {
  Component& c = self();
  Value v = find_component_element(name);
  if (!v) fault("component %s has no element '%s'", c.name.c_str(), name);
  return v;
}

void lumo_component_set_local_verdict(lumo_value_t verdict, lumo_value_t reasons[], lumo_context_t) {
  Component& c = self();
  lumo_verdict_t given = lumo_value_get_verdict(verdict, nullptr);
  if (given == lumo_verdict_error_c) fault("verdict error cannot be set");
  bool worse = given > c.verdict;
  if (worse) c.verdict = given;
  std::string text = std::string("verdict set to ") + verdict_name(given);
  std::string reason;
  for (size_t i = 0; reasons && reasons[i]; ++i) reason += render_plain(reasons[i]);
  if (!reason.empty()) text += ": " + reason;
  if (worse && given > test_case->verdict) test_case->reason = reason;
  log_line(given > lumo_verdict_pass_c ? lumo_log_msg_info_c : lumo_log_msg_event_c, text);
}

lumo_value_t lumo_component_get_local_verdict(lumo_context_t context) {
  lumo_verdict_t verdict = self().verdict;
  return lumo_value_set_verdict(make_root(lumo_verdicttype_type, lumo_temp_alloc_c), verdict, context);
}

void lumo_component_set_system_component_type(lumo_type_t type, lumo_context_t) {
  self();
  if (!type || type == lumo_undefined_type || test_case->system->record) return;
  test_case->system_type = type;
  test_case->system->type = type;
}

void lumo_component_snapshot(lumo_context_t) {
  current_task->snapshot_time = now();
  current_task->event = false;
}

namespace {

// A control part has nobody beside it: it sleeps until one of its timers expires.
void wait_in_control_part() {
  Time next = next_expiry();
  if (next == never) fault("the control part waits and nothing can happen any more");
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
  if (current_task->event) {
    // Others have their turn even if this one never lacks events.
    if (c && ++c->steps >= steps_of_a_turn) yield();
    return;
  }
  if (!c) return wait_in_control_part();
  c->state = State::waiting;
  c->polls = volatile_guards;
  if (volatile_guards && next_poll == never) next_poll = now() + next_poll_interval();
  to_scheduler();
}

void lumo_component_control(lumo_context_t) {
  Component* c = current_task->component;
  if (!c || ++c->steps < steps_of_a_turn) return;
  // A loop that waits for the simulated clock sees it move.
  if (is_simulated()) advance_to(now() + 1000);
  yield();
}

lumo_value_t lumo_component_execute(const char* module, const char* testcase, unsigned long argc,
                                    lumo_value_t argv[], double timeout, lumo_context_t context) {
  check_not_running("execute");
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, testcase, context);
  if (!row->function_ptr) fault("'%s.%s' is no test case", module, testcase);
  TestCase tc;
  tc.module = module;
  tc.name = testcase;
  tc.scheduler = current_fiber();
  tc.caller = current_task;
  Time begin = now();
  if (timeout >= 0) tc.deadline = begin + duration_of(timeout);
  log_format(lumo_log_msg_info_c, "test case %s.%s started", module, testcase);
  test_case = &tc;
  run_test_case(tc, row, argc, argv);
  test_case = nullptr;
  log_format(lumo_log_msg_info_c, "test case %s.%s finished with verdict %s%s%s", module, testcase,
             verdict_name(tc.verdict), tc.reason.empty() ? "" : ": ", tc.reason.c_str());
  results().push_back({module, testcase, tc.verdict, tc.reason});
  report_verdict(results().back());
  lumo_verdict_t verdict = tc.verdict;
  return lumo_value_set_verdict(make_root(lumo_verdicttype_type, lumo_temp_alloc_c), verdict, context);
}
