// The registry of a test suite's modules, ts_modules.h and ts_modules.c: by it the run-time system finds
// the modules that the executable holds.
#pragma once

/// Writes both files to the output directory of the command line's first module; nothing without modules.
/// Throws internal_exception or std::string when they cannot be written.
void tci_generate_modules_info();
