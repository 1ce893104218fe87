#include "run/arguments.h"
#include "run/scheduler.h"
#include "run/defaults.h"

#include <algorithm>

#include "value/hooks.h"
#include "value/error.h"
#include "text/log.h"
#include "value/types.h"

namespace lumos {

namespace {

long next_number = 1;

// Timers and ports are passed as themselves.
bool is_passed_itself(Value v) {
  return v->form == Form::timer || v->form == Form::port;
}

void free_arguments(std::vector<lumo_value_t>& arguments) {
  for (lumo_value_t v : arguments)
    if (v && !is_passed_itself(v)) destroy(v);
  arguments.clear();
}

// Of one that runs they are kept until it has ended.
void retire(Task& task, ActiveDefault& d) {
  const auto run = std::find_if(task.default_runs.begin(), task.default_runs.end(),
                                [&](const DefaultRun& r) { return r.number == d.number; });
  if (run != task.default_runs.end()) return run->argv.swap(d.argv);
  free_arguments(d.argv);
}

void end_runs(Task& task, size_t from) {
  std::vector<DefaultRun>& list = task.default_runs;
  for (; list.size() > from; list.pop_back()) free_arguments(list.back().argv);
}

bool is_active(const ActiveDefault& d) {
  return d.altstep != nullptr;
}

// What was deactivated stays in its place while defaults run, and until half of all are such, unless it is
// the youngest.
void drop_inactive(Task& task) {
  std::vector<ActiveDefault>& defaults = task.defaults;
  for (; !defaults.empty() && !is_active(defaults.back()); defaults.pop_back()) --task.inactive_defaults;
  if (!task.default_runs.empty() || 2 * task.inactive_defaults <= defaults.size()) return;
  std::erase_if(defaults, [](const ActiveDefault& d) { return !is_active(d); });
  task.inactive_defaults = 0;
}

bool is_part_of(Value part, Value whole) {
  while (part && part != whole) part = part->parent;
  return part != nullptr;
}

bool is_among(const std::vector<lumo_value_t>& arguments, Value timers) {
  for (lumo_value_t v : arguments)
    if (v && is_passed_itself(v) && is_part_of(v, timers)) return true;
  return false;
}

bool is_argument(const Task& task, Value timers) {
  for (const ActiveDefault& d : task.defaults)
    if (is_among(d.argv, timers)) return true;
  for (const DefaultRun& run : task.default_runs)
    if (is_among(run.argv, timers)) return true;
  return false;
}

void end_kept_timers(Task& task) {
  std::vector<lumo_value_t> kept;
  kept.swap(task.kept_timers);
  for (lumo_value_t timers : kept) {
    if (is_argument(task, timers)) {
      task.kept_timers.push_back(timers);
    } else {
      destroy(timers);
    }
  }
}

// Null if there is none. They are in the order of their numbers.
ActiveDefault* find(Task& task, long number) {
  const auto found = std::lower_bound(task.defaults.begin(), task.defaults.end(), number,
                                      [](const ActiveDefault& d, long n) { return d.number < n; });
  const bool is_there = found != task.defaults.end() && found->number == number && is_active(*found);
  return is_there ? &*found : nullptr;
}

void deactivate(Task& task, ActiveDefault& d) {
  retire(task, d);
  d.altstep = nullptr;
  ++task.inactive_defaults;
}

}  // namespace

DefaultNumbers::DefaultNumbers() : first_(next_number) {}
DefaultNumbers::~DefaultNumbers() {
  next_number = first_;
}

void deactivate_all(Task& task) {
  for (ActiveDefault& d : task.defaults)
    if (is_active(d)) deactivate(task, d);
  drop_inactive(task);
  if (!task.kept_timers.empty()) end_kept_timers(task);
}

void end_defaults(Task& task) {
  end_runs(task, 0);
  deactivate_all(task);
}

bool keep_for_defaults(Value timers) {
  if (timers->form != Form::timer && timers->form != Form::vector) return false;
  if (!is_argument(*current_task, timers)) return false;
  current_task->kept_timers.push_back(timers);
  return true;
}

namespace {
const bool defaults_hook_is_set = (hooks.keep_for_defaults = keep_for_defaults, true);
}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_activate(const char* module, const char* name, unsigned long argc, lumo_value_t argv[],
                           lumo_alloc_strategy_t strategy, lumo_context_t context) {
  maybe_yield();
  check_choice("activate");
  Task& task = *current_task;
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, name, context);
  if (!row->function_ptr) fault("altstep '%s.%s' has no behaviour", module, name);
  check_arguments(row->type_descriptor, argc, argv);
  task.defaults.push_back(
      {next_number++, reinterpret_cast<lumo_test_step_t>(row->function_ptr), row->type_descriptor, argc, {}});
  ActiveDefault& d = task.defaults.back();
  d.argv.reserve(argc + 1);
  for (unsigned long i = 0; i < argc; ++i) {
    Value v = argv ? argv[i] : nullptr;
    d.argv.push_back(!v || is_passed_itself(v) ? v : copy_value(v, lumo_perm_alloc_c));
  }
  d.argv.push_back(nullptr);
  Value reference = make_root(lumo_default_type, strategy);
  reference->form = Form::default_ref;
  reference->integer = d.number;
  if (log_enabled(lumo_log_msg_event_c))
    log_format(lumo_log_msg_event_c, "default %s.%s activated", module, name);
  return reference;
}

void lumo_deactivate(lumo_value_t reference, lumo_context_t) {
  check_choice("deactivate");
  Task& task = *current_task;
  if (reference == lumo_value_all_c) return deactivate_all(task);
  if (!reference || (reference->form != Form::default_ref && !is_special(reference, Special::null_default)))
    fault("use of a default reference that is not initialized");
  if (reference->form != Form::default_ref) return;
  ActiveDefault* found = find(task, static_cast<long>(reference->integer));
  if (!found) return;
  deactivate(task, *found);
  drop_inactive(task);
  if (!task.kept_timers.empty()) end_kept_timers(task);
}

namespace {
lumo_test_step_result_t invoke(const ActiveDefault& active, lumo_context_t context) {
  Task& task = *current_task;
  const size_t outer = task.default_runs.size();
  task.default_runs.push_back({active.number, {}});
  // The list of defaults may move while the altstep runs, not so what it refers to.
  auto* arguments = const_cast<lumo_value_t*>(active.argv.data());
  const lumo_test_step_result_t result =
      lumo_call_altstep(active.altstep, active.type, active.argc, arguments, context);
  end_runs(task, outer);
  if (!task.kept_timers.empty()) end_kept_timers(task);
  return result;
}
}  // namespace

lumo_activation_list_result_t lumo_activation_list_invoke(lumo_context_t context) {
  Task& task = *current_task;
  lumo_test_step_result_t result = lumo_test_step_unsuccessful_c;
  // The youngest first. A default that fails leaves the list as it was, but for what it deactivated.
  for (size_t i = task.defaults.size(); i-- > 0 && result == lumo_test_step_unsuccessful_c;)
    if (i < task.defaults.size() && is_active(task.defaults[i])) result = invoke(task.defaults[i], context);
  drop_inactive(task);
  return result == lumo_test_step_successful_proceed_c  ? lumo_activation_list_successful_proceed_c
         : result == lumo_test_step_successful_repeat_c ? lumo_activation_list_successful_repeat_c
                                                        : lumo_activation_list_unsuccessful_c;
}
