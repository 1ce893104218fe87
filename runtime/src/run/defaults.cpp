#include "run/arguments.h"
#include "run/scheduler.h"
#include "run/defaults.h"

#include <unordered_map>

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

// A default that runs. When it is deactivated meanwhile, its arguments are kept here until it has ended.
struct Run {
  long number;
  std::vector<lumo_value_t> argv;
};

// Of each task that is in a default, outermost first.
std::unordered_map<const Task*, std::vector<Run>> runs;

void retire(const Task& task, ActiveDefault& d) {
  const auto found = runs.find(&task);
  if (found != runs.end())
    for (Run& run : found->second)
      if (run.number == d.number) return run.argv.swap(d.argv);
  free_arguments(d.argv);
}

void end_runs(const Task& task, size_t from) {
  const auto found = runs.find(&task);
  if (found == runs.end()) return;
  std::vector<Run>& list = found->second;
  for (; list.size() > from; list.pop_back()) free_arguments(list.back().argv);
  if (list.empty()) runs.erase(found);
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
  const auto found = runs.find(&task);
  if (found == runs.end()) return false;
  for (const Run& run : found->second)
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

size_t find(const Task& task, long number) {
  for (size_t i = 0; i < task.defaults.size(); ++i)
    if (task.defaults[i].number == number) return i;
  return SIZE_MAX;
}

}  // namespace

void deactivate_all(Task& task) {
  for (ActiveDefault& d : task.defaults) retire(task, d);
  task.defaults.clear();
  end_kept_timers(task);
}

void end_defaults(Task& task) {
  end_runs(task, 0);
  deactivate_all(task);
}

bool keep_for_defaults(Value timers) {
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
  size_t place = find(task, static_cast<long>(reference->integer));
  if (place == SIZE_MAX) return;
  retire(task, task.defaults[place]);
  task.defaults.erase(task.defaults.begin() + static_cast<long>(place));
  end_kept_timers(task);
}

namespace {
lumo_test_step_result_t invoke(ActiveDefault& active, lumo_context_t context) {
  Task& task = *current_task;
  std::vector<Run>& list = runs[&task];
  const size_t outer = list.size();
  list.push_back({active.number, {}});
  // The list of defaults may move while the altstep runs, not so what it refers to.
  lumo_value_t* arguments = active.argv.data();
  const lumo_test_step_result_t result =
      lumo_call_altstep(active.altstep, active.type, active.argc, arguments, context);
  end_runs(task, outer);
  if (!task.kept_timers.empty()) end_kept_timers(task);
  return result;
}
}  // namespace

lumo_activation_list_result_t lumo_activation_list_invoke(lumo_context_t context) {
  std::vector<ActiveDefault>& defaults = current_task->defaults;
  // The youngest first. A default that fails leaves the list as it was.
  for (size_t i = defaults.size(); i-- > 0;) {
    if (i >= defaults.size()) continue;
    const lumo_test_step_result_t result = invoke(defaults[i], context);
    if (result == lumo_test_step_successful_proceed_c) return lumo_activation_list_successful_proceed_c;
    if (result == lumo_test_step_successful_repeat_c) return lumo_activation_list_successful_repeat_c;
  }
  return lumo_activation_list_unsuccessful_c;
}
