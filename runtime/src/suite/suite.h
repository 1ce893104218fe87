// Running a suite from its command line.
#pragma once

#include "run/component.h"
#include "suite/suite_options.h"

namespace lumos {

// Registers the root module and through it its imports; false after a fault.
bool register_root(lumo_register_function_t function);
// From initialization to summary; returns the exit status.
int run_registered(const SuiteOptions& options, const char* control_part);
void list_modules();
// Tells the user about the verdict of a test case that ended.
void report_verdict(const Result& result);
void print_summary();
// The status that the verdicts so far ask for: 0 all pass or none, 1 otherwise.
int status_of_results();

}  // namespace lumos
