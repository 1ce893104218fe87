#include "suite/suite_options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "value/clock.h"
#include "run/fiber.h"
#include "text/log.h"
#include "template/match.h"
#include "ports/outside.h"
#include "suite/params.h"
#include "transport/link_spec.h"

namespace lumos {

namespace {

bool set_testcases(SuiteOptions& options, const std::string& list) {
  for (size_t start = 0; start <= list.size();) {
    size_t comma = list.find(',', start);
    if (comma == std::string::npos) comma = list.size();
    if (comma > start) options.testcases.push_back(list.substr(start, comma - start));
    start = comma + 1;
  }
  return !options.testcases.empty();
}

bool set_timeout(SuiteOptions& options, const std::string& text) {
  char* end;
  options.timeout = std::strtod(text.c_str(), &end);
  return !text.empty() && !*end && options.timeout >= 0;
}

bool set_stack(SuiteOptions&, const std::string& text) {
  char* end;
  long kilobytes = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end || kilobytes < 128 || kilobytes > 1024 * 1024) return false;
  set_fiber_stack_size(static_cast<size_t>(kilobytes) * 1024);
  return true;
}

bool set_parameter_file(SuiteOptions&, const std::string& path) {
  std::string error;
  if (read_parameter_file(path, error)) return true;
  std::fprintf(stderr, "%s\n", error.c_str());
  return false;
}

struct Option {
  char letter;
  const char* word;
  const char* argument;  // null for none
  const char* help;
  bool (*set)(SuiteOptions&, const std::string&);
};

const Option table[] = {
    {'h', "help", nullptr, "print this and end",
     [](SuiteOptions& o, const std::string&) { return o.help = true; }},
    {'l', "list", nullptr, "print modules and test cases and end",
     [](SuiteOptions& o, const std::string&) { return o.list = true; }},
    {'t', "testcase", "NAME,...", "run these test cases instead of the control part", set_testcases},
    {'T', "timeout", "SECONDS", "time for each of them", set_timeout},
    {'p', "param", "NAME=VALUE", "set a module parameter: [module.]name, value in TTCN-3",
     [](SuiteOptions&, const std::string& text) { return add_parameter(text); }},
    {'P', "params", "FILE", "set module parameters from the lines of a file", set_parameter_file},
    {'L', "log", "FILE", "log to a file instead of standard error",
     [](SuiteOptions&, const std::string& path) { return open_log(path); }},
    {'v', "verbose", "KINDS", "log these: info, ttcn3, warning, error, debug, event; all; none",
     [](SuiteOptions&, const std::string& list) { return set_log_kinds(list); }},
    {'n', "no-times", nullptr, "log without time stamps",
     [](SuiteOptions&, const std::string&) {
       set_log_times(false);
       return true;
     }},
    {'s', "simulated-time", nullptr, "timers run on a clock that jumps to the next event",
     [](SuiteOptions&, const std::string&) {
       set_simulated(true);
       return true;
     }},
    {'b', "loopback", nullptr, "what is sent to the system comes back to the sender",
     [](SuiteOptions&, const std::string&) {
       set_loopback(true);
       return true;
     }},
    {'o', "port", "NAME=ADDRESS", "link a port of the system: udp:HOST:PORT, tcp:HOST:PORT and others",
     [](SuiteOptions&, const std::string& text) { return add_link(text); }},
    {'m', "all-mismatches", nullptr, "matching goes on behind the first mismatch, to log all",
     [](SuiteOptions&, const std::string&) { return match_continues_on_fail = true; }},
    {'S', "stack", "KILOBYTES", "stack of each component, 128 to 1048576 (default 1024)", set_stack},
};

const Option* find(const std::string& argument, std::string& value, bool& has_value) {
  has_value = false;
  if (argument.size() > 2 && argument.compare(0, 2, "--") == 0) {
    size_t equals = argument.find('=');
    std::string word = argument.substr(2, equals == std::string::npos ? equals : equals - 2);
    has_value = equals != std::string::npos;
    if (has_value) value = argument.substr(equals + 1);
    for (const Option& o : table)
      if (word == o.word) return &o;
    return nullptr;
  }
  if (argument.size() < 2 || argument[0] != '-') return nullptr;
  has_value = argument.size() > 2;
  value = argument.substr(2);
  for (const Option& o : table)
    if (argument[1] == o.letter) return &o;
  return nullptr;
}

bool usage_fault(const std::string& message) {
  std::fprintf(stderr, "%s (--help tells the options)\n", message.c_str());
  return false;
}

}  // namespace

bool read_suite_options(int argc, char* argv[], SuiteOptions& options) {
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i], value;
    bool has_value;
    const Option* option = find(argument, value, has_value);
    if (!option) return usage_fault("unknown option '" + argument + "'");
    if (!option->argument && has_value) return usage_fault("option '" + argument + "' takes no value");
    if (option->argument && !has_value) {
      if (i + 1 >= argc) return usage_fault("option '" + argument + "' needs a value");
      value = argv[++i];
    }
    if (!option->set(options, value))
      return usage_fault("'" + value + "' is no value for option '" + argument + "'");
  }
  return true;
}

void print_suite_help(const char* program) {
  std::printf("Usage: %s [options]\n\nRuns the control part of the root module, or the test cases named.\n\n",
              program);
  for (const Option& o : table) {
    std::string names = std::string("-") + o.letter + ", --" + o.word;
    if (o.argument) names += std::string(" ") + o.argument;
    std::printf("  %-26s %s\n", names.c_str(), o.help);
  }
  std::printf(
      "\nA line \"<module>.<test case>: <verdict>\" for each test case, and a summary, go to standard "
      "output.\n"
      "Exit status: 0 when all verdicts are pass or none, 1 otherwise, 2 for a usage or start fault.\n");
}

}  // namespace lumos
