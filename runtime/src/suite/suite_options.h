// The command line of an executable test suite, and its configuration files, which know the same words.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "lumos.h"

namespace lumos {

class Reporter;

struct SuiteOptions {
  bool help = false;
  bool list = false;
  bool version = false;
  std::vector<std::string> testcases;  // "name" or "module.name", patterns, "!" for what is left out
  bool testcases_of_file = false;      // they stand in a configuration file
  double timeout = lumo_duration_forever_c;  // for each of them, or the whole control part
  long repeat = 1;
  bool until_fail = false;
  bool shuffle = false;
  bool has_seed = false;
  uint64_t seed = 1;
  long explore = 0;  // schedules of each test case
  long jobs = 1;
  long shard = 0, shards = 0;
  struct Report {
    std::unique_ptr<Reporter> (*make)(const std::string& path);
    std::string path;
    std::string place;  // in a file, as messages begin with it
  };
  std::vector<Report> reports;
  std::string program;
  bool is_supervised = false;  // the run is all that the process does
};

// Reads the command line and sets what is global: log, clock, parameters and the like.
// False after a message to standard error.
bool read_suite_options(int argc, char* argv[], SuiteOptions& options);
void print_suite_help(const char* program);
// A line for each option: letter, word, argument and help, with tabs between them.
void describe_suite_options();

}  // namespace lumos
