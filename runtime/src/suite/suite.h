// Running a suite from its command line.
#pragma once

#include "run/component.h"
#include "suite/results.h"
#include "suite/suite_options.h"

namespace lumos {

// Registers the root module and through it its imports; false after a fault.
bool register_root(lumo_register_function_t function);
// From initialization to summary; returns the exit status.
int run_registered(const SuiteOptions& options, const char* control_part);
void list_modules();
// Runs a test case from beginning to end; false if that ends the run.
struct Selected;
bool execute(const Selected& selected);

}  // namespace lumos
