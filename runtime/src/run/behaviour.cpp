// Calls of behaviours, and faults that generated code reports.
#include <cstdio>
#include <cstring>

#include "run/arguments.h"
#include "run/component.h"
#include "value/error.h"
#include "ports/outside.h"
#include "value/hooks.h"
#include "value/types.h"
#include "value/wide_string.h"

namespace lumos {

namespace {

bool is_part_of_component(Value v) {
  while (v && v->parent) v = v->parent;
  return v && current_task->component && v == current_task->component->record;
}

// A function in the local definitions of an altstep hands nothing back but its result, and none that it
// calls writes to the component.
void check_directions(lumo_type_t type, lumo_value_t argv[]) {
  const bool called_there = current_task->frames.size() == current_task->defining_frames;
  lumo_type_t signature = type && field_info(type) ? field_info(type)[0].type : nullptr;
  const lumo_field_info_t* formals = signature ? field_info(signature) : nullptr;
  constexpr unsigned back = lumo_field_property_out_value_c | lumo_field_property_inout_value_c;
  for (size_t i = 0; formals && i < field_count(signature); ++i)
    if (formals[i].property & back && (called_there || is_part_of_component(argv[i])))
      refuse_effect(type_name(type));
}

}  // namespace

void end_calls(Task& task) {
  const size_t frames = task.frames.size(), blocks = task.blocks.size();
  auto is_over = [&](const OpenCall& call) {
    return call.frames > frames || (call.frames == frames && call.blocks >= blocks);
  };
  for (; !task.calls.empty() && is_over(task.calls.back()); task.calls.pop_back()) end_call(task.calls.back());
}

void enter_alternatives(Task& task) {
  end_calls(task);
  if (!task.called.signature) return;
  task.calls.push_back({task.called.signature, task.called.timer, task.frames.size(), task.blocks.size()});
  task.called = {};
}

namespace {
const bool behaviour_hooks_are_set =
    (hooks.enter_alternatives = enter_alternatives, hooks.end_calls = end_calls, true);
}  // namespace

OpenCall open_call(const Task& task) {
  for (size_t i = task.calls.size(); i-- > 0;)
    if (task.calls[i].frames == task.frames.size() && task.calls[i].blocks == task.blocks.size())
      return task.calls[i];
  return {};
}

}  // namespace lumos

using namespace lumos;

void lumo_call_function(lumo_function_t function, lumo_type_t type, unsigned long argc, lumo_value_t argv[],
                        lumo_context_t) {
  if (!function) fault("function '%s' has no behaviour", type_name(type));
  check_stack();
  if (current_task->defining) check_directions(type, argv);
  Arguments arguments(type, argc, argv);
  function(argc, argv, current_task);
  check_results(type, argv);
  arguments.end();
}

lumo_test_step_result_t lumo_call_altstep(lumo_test_step_t altstep, lumo_type_t type, unsigned long argc,
                                          lumo_value_t argv[], lumo_context_t) {
  if (!altstep) fault("altstep '%s' has no behaviour", type_name(type));
  check_stack();
  Arguments arguments(type, argc, argv);
  lumo_test_step_result_t result = altstep(argc, argv, current_task);
  arguments.end();
  return result;
}

void lumo_call_external_function(lumo_type_t signature, lumo_value_t argv[], lumo_context_t) {
  current_task->statement_roots = SIZE_MAX;  // what a function in C makes it may go on to use
  outside_external_function(signature, argv);
}

void lumo_external_function_result(lumo_value_t slot, lumo_value_t returned, lumo_context_t context) {
  const bool is_value = returned && returned != lumo_no_value_c && returned != lumo_illegal_value_c &&
                        returned != lumo_value_no_return_c;
  if (is_value && returned != slot) lumo_value_assign(slot, returned, context);
  if (!is_complete(slot)) fault("the external function returned no value");
}

void lumo_report_error(const char* position, lumo_wide_string_t text, lumo_context_t) {
  static char message[1024];
  {
    std::string narrow = text ? narrow_text(text->text) : std::string("error");
    std::strncpy(message, narrow.c_str(), sizeof message - 1);
  }
  if (position && *position) return refuse("%s: %s", position, message);
  refuse("%s", message);
}

void lumo__report_error_at(int line, const char* file, lumo_wide_string_t text, lumo_context_t context) {
  static char position[256];
  std::snprintf(position, sizeof position, "%s:%d", file, line);
  lumo_report_error(position, text, context);
}
