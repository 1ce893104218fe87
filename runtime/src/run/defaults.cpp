#include "run/defaults.h"

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

void free_arguments(ActiveDefault& d) {
  for (lumo_value_t v : d.argv)
    if (v && !is_passed_itself(v)) destroy(v);
  d.argv.clear();
}

bool is_part_of(Value part, Value whole) {
  while (part && part != whole) part = part->parent;
  return part != nullptr;
}

bool is_argument(const Task& task, Value timers) {
  for (const ActiveDefault& d : task.defaults)
    for (lumo_value_t v : d.argv)
      if (v && is_passed_itself(v) && is_part_of(v, timers)) return true;
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
  for (ActiveDefault& d : task.defaults) free_arguments(d);
  task.defaults.clear();
  end_kept_timers(task);
}

bool keep_for_defaults(Value timers) {
  if (current_task->defaults.empty() || !is_argument(*current_task, timers)) return false;
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
  check_effect("activate");
  Task& task = *current_task;
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, name, context);
  if (!row->function_ptr) fault("altstep '%s.%s' has no behaviour", module, name);
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
  check_effect("deactivate");
  Task& task = *current_task;
  if (reference == lumo_value_all_c) return deactivate_all(task);
  if (!reference || (reference->form != Form::default_ref && !is_special(reference, Special::null_default)))
    fault("use of a default reference that is not initialized");
  if (reference->form != Form::default_ref) return;
  size_t place = find(task, static_cast<long>(reference->integer));
  if (place == SIZE_MAX) return;
  free_arguments(task.defaults[place]);
  task.defaults.erase(task.defaults.begin() + static_cast<long>(place));
  end_kept_timers(task);
}

lumo_activation_list_result_t lumo_activation_list_invoke(lumo_context_t context) {
  std::vector<ActiveDefault>& defaults = current_task->defaults;
  // The youngest first. A default that fails leaves the list as it was.
  for (size_t i = defaults.size(); i-- > 0;) {
    if (i >= defaults.size()) continue;
    ActiveDefault& d = defaults[i];
    // The vector may move while the altstep runs.
    lumo_value_t* arguments = d.argv.data();
    lumo_test_step_result_t result = lumo_call_altstep(d.altstep, d.type, d.argc, arguments, context);
    if (result == lumo_test_step_successful_proceed_c) return lumo_activation_list_successful_proceed_c;
    if (result == lumo_test_step_successful_repeat_c) return lumo_activation_list_successful_repeat_c;
  }
  return lumo_activation_list_unsuccessful_c;
}
