#include "run/component.h"

#include <cstdint>
#include <cstring>

#include "run/defaults.h"
#include "value/error.h"
#include "text/log.h"
#include "ports/attempts.h"
#include "ports/port.h"
#include "run/scheduler.h"
#include "run/timer.h"
#include "template/templates.h"
#include "value/hooks.h"
#include "value/types.h"

namespace lumos {

namespace {

void free_behaviour(Component& c) {
  for (lumo_value_t v : c.behaviour.argv)
    if (v) destroy(v);
  c.behaviour.argv.clear();
}

// The behaviour is over; not called on the component's own stack.
void release_behaviour(Component& c) {
  if (c.task.fiber) delete_fiber(c.task.fiber);
  c.task.fiber = nullptr;
  end_defaults(c.task);
  stop_timers_outside(c.task, c.record);
  reset_task(c.task);
  if (test_case && &c == test_case->mtc && test_case->arguments.empty())
    test_case->arguments.swap(c.behaviour.argv);
  free_behaviour(c);
  drop_from_ready(c);
  if (c.unsent) delete_message(c.unsent);
  c.unsent = nullptr;
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
  c.task.furnishing = true;
  reinterpret_cast<lumo_postprocess_function_t>(post_process)(c.record, current_task);
  c.task.furnishing = false;
  end_roots(c.task, 0);
  current_task = creator;
}

void component_entry(void* argument) {
  auto* c = static_cast<Component*>(argument);
  if (!c->record && c->type) furnish(*c);
  Behaviour& b = c->behaviour;
  lumo_call_function(b.function, b.type, b.argc, b.argv.data(), current_task);
  leave_behaviour();
}

}  // namespace

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

bool start_fiber(Component& c) {
  c.busy = c.task.polls_clock = false;
  c.task.steps = 0;
  c.task.fiber = new_fiber(component_entry, &c);
  return c.task.fiber != nullptr;
}

void take_verdict(Component& c) {
  if (c.verdict > test_case->verdict) test_case->verdict = c.verdict;
}

void release_component(Component& c) {
  release_behaviour(c);
  stop_timers_of(c.task);
  close_ports(c);
  if (c.record) destroy(c.record);
  c.record = nullptr;
}

namespace {
void end_for_good(Component& c) {
  c.state = State::ended;
  release_component(c);
  // There may be many of them: the memory of the task goes too.
  Task fresh;
  fresh.name = c.task.name;
  fresh.component = c.task.component;
  fresh.event = c.task.event;
  std::swap(c.task, fresh);
  c.behaviour = Behaviour();
}
}  // namespace

// What is left to do for a component that switched away for the last time.
void bury(Component& c) {
  release_behaviour(c);
  take_verdict(c);
  if (events_wanted) tell(EventKind::end, c.name);
  c.done = true;
  if (&c == test_case->mtc) {
    c.state = State::ended;
    test_case->ended = true;
  } else if (c.alive) {
    c.state = State::idle;
  } else {
    end_for_good(c);
  }
  count_anew(c);
  wake_watchers(c);
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

namespace {

// Generated code asks with the same few names, by the same few addresses: where one was found last is tried
// first.
struct FoundElement {
  const char* name;
  lumo_type_t type;
  long index;
};

[[gnu::noinline]] long search_element(FoundElement& found, lumo_type_t type, const char* name) {
  const long index = field_index(type, name);
  if (index >= 0) found = {name, type, index};
  return index;
}

inline long known_index(lumo_type_t type, const char* name) {
  static FoundElement places[256];
  const uintptr_t number = reinterpret_cast<uintptr_t>(name) ^ reinterpret_cast<uintptr_t>(type) >> 5;
  FoundElement& found = places[number % std::size(places)];
  return found.name == name && found.type == type ? found.index : search_element(found, type, name);
}

// An element of the calling component; null if the place is of none.
template <class IndexOf>
inline Value component_element(const char* name, IndexOf index_of) {
  Component* c = current_task->component;
  if (!c || !c->record) return nullptr;
  const long index = index_of(c->record->type, name);
  if (index < 0 || static_cast<size_t>(index) >= c->record->parts.size) return nullptr;
  Value part = c->record->parts.data[index];
  return part && part->life != Life::fixed ? part : force_part(c->record, static_cast<size_t>(index));
}

}  // namespace

long element_index(lumo_type_t type, const char* name) {
  return known_index(type, name);
}

Value find_component_element(const char* name) {
  return component_element(name, field_index);
}

namespace {
const bool component_hook_is_set = (hooks.component_element = find_component_element, true);
}  // namespace

void check_is_mtc(const char* operation) {
  if (&self() != test_case->mtc)
    fault("'%s' for all components is a matter of the main test component", operation);
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

bool is_parallel(const Component& c) {
  return &c != test_case->mtc && &c != test_case->system;
}

bool is_running(const Component& c) {
  return c.state == State::ready || c.state == State::running || c.state == State::waiting;
}

unsigned standing_of(const Component& c) {
  const bool is_killed = c.state == State::ended;
  const bool is_exempt = c.stopped_by_other || (!c.done && !is_running(c));
  unsigned standing = 0;
  if (is_running(c)) standing |= standing_running;
  if (is_killed) standing |= standing_killed;
  if (c.done || is_killed) standing |= standing_done;
  if (is_exempt) standing |= standing_exempt;
  return standing;
}

}  // namespace

void lumos::count_anew(Component& c) {
  if (!is_parallel(c)) return;
  if (c.standing != standings) --test_case->counts[c.standing];
  c.standing = static_cast<unsigned char>(standing_of(c));
  ++test_case->counts[c.standing];
}

namespace {

Component& existing(lumo_value_t reference) {
  Component* c = component_of(reference);
  if (!c) fault("the component reference is null or of no component of this test case");
  return *c;
}

bool runs(unsigned standing) {
  return standing & standing_running;
}
bool is_alive(unsigned standing) {
  return !(standing & standing_killed);
}
bool is_killed(unsigned standing) {
  return standing & standing_killed;
}
bool is_done(unsigned standing) {
  return standing & standing_done;
}

template <class Property>
bool any_component(Property has) {
  for (unsigned standing = 0; standing < standings; ++standing)
    if (test_case->counts[standing] && has(standing)) return true;
  return false;
}

template <class Property>
bool all_components(Property has) {
  return !any_component([&](unsigned standing) { return !has(standing); });
}

// Asks one component, any, or all of the parallel ones.
template <class One, class All>
bool ask(const char* operation, lumo_value_t which, One one, All all) {
  check_effect(operation);
  Component& asking = self();
  if (which != lumo_value_any_c && which != lumo_value_all_c) {
    Component& c = existing(which);
    watch_component(asking, c);
    return one(standing_of(c));
  }
  watch_components(asking);
  return which == lumo_value_any_c ? any_component(one) : all_components(all);
}

// What was received and not taken says why a verdict is set.
void tell_mismatches(std::string& reason) {
  const std::vector<std::string> mismatches = explain_attempts();
  for (const std::string& text : mismatches) log_line(lumo_log_msg_info_c, "mismatch: " + text);
  if (!mismatches.empty()) reason += (reason.empty() ? "" : ": ") + mismatches[0];
}

}  // namespace

void lumos::end_overdue(const Component& c) {
  static std::string reason;  // a fault leaves it as it is
  reason = c.overdue;
  tell_mismatches(reason);
  fault("%s", reason.c_str());
}

namespace {

void stop_behaviour(Component& c) {
  if (current_task->component == &c) leave_behaviour();
  c.stopped_by_other = true;
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
  take_verdict(c);
  end_for_good(c);
  count_anew(c);
  wake_watchers(c);
}

void stop_or_kill(lumo_value_t component, bool kill) {
  check_effect(kill ? "kill" : "stop");
  if (component == lumo_no_value_c || !component) {
    if (current_task->component) stop(*current_task->component, kill);
    leave_behaviour();
  }
  self();
  if (component != lumo_value_all_c) return stop(existing(component), kill);
  check_is_mtc(kill ? "kill" : "stop");
  for (size_t i = 0; i < test_case->components.size(); ++i) {
    Component& c = *test_case->components[i];
    if (is_parallel(c)) stop(c, kill);
  }
}

}  // namespace

lumo_value_t lumo_component_create(lumo_value_t instance, lumo_value_t name, lumo_boolean_t alive,
                                   lumo_context_t) {
  check_choice("create");
  self();
  prepare_write(instance);
  const char* text = name && name != lumo_no_value_c ? lumo_value_get_charstring(name, nullptr) : "";
  Component& c = add_component(instance->type, text, alive);
  furnish(c);
  count_anew(c);
  clear_contents(instance);
  instance->form = Form::component;
  instance->integer = c.number;
  if (log_enabled(lumo_log_msg_event_c))
    log_format(lumo_log_msg_event_c, "component %s created", c.name.c_str());
  if (events_wanted) tell(EventKind::create, c.name);
  return instance;
}

void lumo_component_start(lumo_value_t component, const char* module, const char* function,
                          unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  check_effect("start");
  self();
  Component& c = existing(component);
  if (!is_parallel(c)) fault("component %s cannot be started", c.name.c_str());
  if (is_running(c)) fault("component %s is running already", c.name.c_str());
  if (c.state == State::ended || (c.done && !c.alive)) fault("component %s has ended", c.name.c_str());
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, function, context);
  if (!row->function_ptr) fault("function '%s.%s' has no behaviour", module, function);
  set_behaviour(c, row, argc, argv);
  c.done = c.stopped_by_other = false;
  if (!start_fiber(c)) fault("there is no memory for the stack of component %s", c.name.c_str());
  make_ready(c);
  count_anew(c);
  if (log_enabled(lumo_log_msg_event_c))
    log_format(lumo_log_msg_event_c, "component %s started: %s.%s", c.name.c_str(), module, function);
  if (events_wanted) tell(EventKind::start, c.name, {}, std::string(module) + "." + function);
  maybe_yield();
}

void lumo_component_stop(lumo_value_t component, lumo_context_t) {
  stop_or_kill(component, false);
}
void lumo_component_kill(lumo_value_t component, lumo_context_t) {
  stop_or_kill(component, true);
}

lumo_boolean_t lumo_component_is_running(lumo_value_t component, lumo_context_t) {
  return ask("running", component, runs,
             [](unsigned standing) { return standing & (standing_running | standing_exempt); });
}

lumo_boolean_t lumo_component_is_alive(lumo_value_t component, lumo_context_t) {
  return ask("alive", component, is_alive, is_alive);
}

lumo_boolean_t lumo_component_try_done(lumo_value_t component, lumo_context_t) {
  return takes(ask("done", component, is_done, [](unsigned standing) { return !runs(standing); }));
}

lumo_boolean_t lumo_component_try_killed(lumo_value_t component, lumo_context_t) {
  return takes(ask("killed", component, is_killed, is_killed));
}

lumo_boolean_t lumo_component_try_else(lumo_context_t) {
  current_task->polls_clock = true;
  return takes(true);
}
lumo_boolean_t lumo_try_else(lumo_context_t context) {
  return lumo_component_try_else(context);
}

void lumo_altstep_definitions(lumo_boolean_t begin, lumo_context_t) {
  current_task->defining = begin;
  current_task->defining_frames = current_task->frames.size();
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

[[noreturn, gnu::noinline]] static void no_element(const char* name) {
  fault("component %s has no element '%s'", self().name.c_str(), name);
}

lumo_value_t lumo_component_element(const char* name, lumo_context_t) {
  Value v = component_element(name, known_index);
  if (!v) no_element(name);
  return v;
}

void lumo_component_set_local_verdict(lumo_value_t verdict, lumo_value_t reasons[], lumo_context_t) {
  check_choice("setverdict");
  Component& c = self();
  lumo_verdict_t given = lumo_value_get_verdict(verdict, nullptr);
  if (given == lumo_verdict_error_c) fault("verdict error cannot be set");
  bool worse = given > c.verdict;
  if (worse) c.verdict = given;
  std::string reason;
  for (size_t i = 0; reasons && reasons[i]; ++i) reason += render_plain(reasons[i]);
  if (given > lumo_verdict_pass_c && has_attempts(c.task)) tell_mismatches(reason);
  if (worse && given > test_case->verdict) {
    test_case->reason = reason;
    test_case->place = current_place();
  }
  if (events_wanted) tell(EventKind::verdict, verdict_name(given), {}, reason);
  const auto kind = given > lumo_verdict_pass_c ? lumo_log_msg_info_c : lumo_log_msg_event_c;
  if (log_enabled(kind))
    log_line(kind,
             std::string("verdict set to ") + verdict_name(given) + (reason.empty() ? "" : ": ") + reason);
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
