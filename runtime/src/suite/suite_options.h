// The command line of an executable test suite.
#pragma once

#include <string>
#include <vector>

namespace lumos {

struct SuiteOptions {
  bool help = false;
  bool list = false;
  std::vector<std::string> testcases;  // "name" or "module.name", in the order of running
  double timeout = -1;                 // for those test cases
};

// Reads the command line and sets what is global: log, clock, parameters and the like.
// False after a message to standard error.
bool read_suite_options(int argc, char* argv[], SuiteOptions& options);
void print_suite_help(const char* program);

}  // namespace lumos
