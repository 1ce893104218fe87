// Calls of behaviours, and faults that generated code reports.
#include <cstdio>
#include <cstring>

#include "run/arguments.h"
#include "run/component.h"
#include "value/error.h"
#include "ports/outside.h"
#include "value/types.h"
#include "value/wide_string.h"

using namespace lumos;

void lumo_call_function(lumo_function_t function, lumo_type_t type, unsigned long argc, lumo_value_t argv[],
                        lumo_context_t) {
  if (!function) fault("function '%s' has no behaviour", type_name(type));
  check_stack();
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
  outside_external_function(signature, argv);
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
