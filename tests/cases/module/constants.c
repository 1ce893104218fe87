/* Initializes the modules and shows the values that are named by the arguments, Module.name, a line each. */
#include <stdio.h>
#include <string.h>

#include "constants_users.h"

void constants_outside(lumo_value_t value, lumo_context_t vexa_context) {
  lumo_value_set_integer(value, 4711, vexa_context);
}

static void show(char* name) {
  char* dot = strchr(name, '.');
  *dot = '\0';
  lumo_symbol_entry_t row = lumo_find_element(name, dot + 1, lumo_no_context_c);
  lumo_value_t values[] = {row == NULL ? NULL : row->value_descriptor, NULL};
  fprintf(stderr, "%s = ", dot + 1);
  fflush(stderr);
  lumo_log_list_to_all(lumo_log_msg_info_c, values, lumo_no_context_c);
}

int main(int argc, char** argv) {
  vexa_constants_users_register(true, lumo_no_context_c);
  if (!lumo_pre_initialize(lumo_no_context_c) || !lumo_initialize(lumo_no_context_c)) return 1;
  for (int i = 1; i < argc; ++i) show(argv[i]);
  lumo_finalize(lumo_no_context_c);
  return 0;
}
