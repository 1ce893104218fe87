/* Runs the life cycle of a generated module by hand, twice. */
#include <stdio.h>

#include "life_cycle.h"

static void twice(void (*function)(lumo_context_t vexa_context)) {
  function(lumo_no_context_c);
  function(lumo_no_context_c);
}

int main(void) {
  for (int i = 0; i < 2; ++i) {
    vexa_life_cycle_register(true, lumo_no_context_c);
    vexa_life_cycle_register(true, lumo_no_context_c);
    lumo_symbol_entry_t row =
        lumo_find_element("life_cycle", "control part function", lumo_no_context_c);
    fprintf(stderr, "cycle, control part %s\n", row && row->function_ptr ? "found" : "missing");
    twice(vexa_life_cycle_initialize);
    twice(vexa_life_cycle_params_initialize);
    twice(vexa_life_cycle_finalize);
  }
  return 0;
}
