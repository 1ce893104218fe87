#include "run/defaults.h"

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

size_t find(Component& c, long number) {
  for (size_t i = 0; i < c.defaults.size(); ++i)
    if (c.defaults[i].number == number) return i;
  return SIZE_MAX;
}

}  // namespace

void deactivate_all(Component& c) {
  for (ActiveDefault& d : c.defaults) free_arguments(d);
  c.defaults.clear();
}

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_activate(const char* module, const char* name, unsigned long argc, lumo_value_t argv[],
                           lumo_alloc_strategy_t strategy, lumo_context_t context) {
  Component& c = self();
  lumo_symbol_entry_t row = lumo_find_element_with_check(module, name, context);
  if (!row->function_ptr) fault("altstep '%s.%s' has no behaviour", module, name);
  c.defaults.push_back(
      {next_number++, reinterpret_cast<lumo_test_step_t>(row->function_ptr), row->type_descriptor, argc, {}});
  ActiveDefault& d = c.defaults.back();
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
  Component& c = self();
  if (reference == lumo_value_all_c) return deactivate_all(c);
  if (!reference || (reference->form != Form::default_ref && !is_special(reference, Special::null_default)))
    fault("use of a default reference that is not initialized");
  if (reference->form != Form::default_ref) return;
  size_t place = find(c, static_cast<long>(reference->integer));
  if (place == SIZE_MAX) return;
  free_arguments(c.defaults[place]);
  c.defaults.erase(c.defaults.begin() + static_cast<long>(place));
}

lumo_activation_list_result_t lumo_activation_list_invoke(lumo_context_t context) {
  Component* c = current_task->component;
  if (!c) return lumo_activation_list_unsuccessful_c;
  // The youngest first. A default that fails leaves the list as it was.
  for (size_t i = c->defaults.size(); i-- > 0;) {
    if (i >= c->defaults.size()) continue;
    ActiveDefault& d = c->defaults[i];
    // The vector may move while the altstep runs.
    lumo_value_t* arguments = d.argv.data();
    lumo_test_step_result_t result = lumo_call_altstep(d.altstep, d.type, d.argc, arguments, context);
    if (result == lumo_test_step_successful_proceed_c) return lumo_activation_list_successful_proceed_c;
    if (result == lumo_test_step_successful_repeat_c) return lumo_activation_list_successful_repeat_c;
  }
  return lumo_activation_list_unsuccessful_c;
}
