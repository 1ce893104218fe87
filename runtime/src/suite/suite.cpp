#include "suite/suite.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "report/coverage.h"
#include "report/report_file.h"
#include "report/reports.h"
#include "run/ending.h"
#include "run/scheduler.h"
#include "suite/explore.h"
#include "suite/jobs.h"
#include "suite/params.h"
#include "suite/port_names.h"
#include "suite/plan.h"
#include "suite/selection.h"
#include "suite/supervisor.h"
#include "ports/outside.h"
#include "text/log.h"
#include "text/log_file.h"
#include "value/error.h"
#include "value/symbols.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr int start_fault = 2;

struct Registration {
  lumo_register_function_t function;
};

void call_register(void* argument) {
  static_cast<Registration*>(argument)->function(true, current_task);
}

void execute_selected(void* argument) {
  const Selected& s = *static_cast<const Selected*>(argument);
  std::vector<lumo_value_t> arguments = s.arguments;
  arguments.push_back(nullptr);
  lumo_component_execute(s.module.c_str(), s.name.c_str(), s.arguments.size(), arguments.data(), s.timeout,
                         current_task);
}

// What is done when the process cannot go on: each step at most once, also if one of them fails.
void conclude_in_error(const char* reason) {
  if (!test_case) return;
  end_test_case(lumo_verdict_error_c, reason);
  conclude_test_case();
  outside_test_case_ends();
}

bool is_started = false;  // modules and adapter are initialized

void tell_start_fault(const char* reason) {
  std::fprintf(stderr, "the suite could not be started: %s\n", reason);
  cancel_reporters();
}

void abandon(const char* reason) {
  if (!is_started) {
    tell_start_fault(reason);
    _exit(start_fault);
  }
  static void (*const steps[])(const char*) = {
      conclude_in_error, [](const char*) { tell_run_ends(results()); }, [](const char*) { print_summary(); },
      [](const char*) { status_of_results(); }, [](const char*) { close_log_files(); }};
  static size_t next = 0;
  while (next < std::size(steps)) steps[next++](reason);
}

// In a copy of the process, which has no part in what the run tells.
void leave_to_original() {
  drop_reporters();
  let_log_wait(nullptr);
}

bool open_reports(const SuiteOptions& options) {
  bool to_output = true;
  for (const auto& [make, path, place] : options.reports) {
    errno = 0;
    std::unique_ptr<Reporter> reporter = make(path);
    if (!reporter) {
      std::fprintf(stderr, "%scould not open '%s': %s\n", place.c_str(), path.c_str(), std::strerror(errno));
      cancel_reporters();
      return false;
    }
    to_output = to_output && !is_standard_output(path);
    add_reporter(std::move(reporter));
  }
  tell_results(to_output);
  return true;
}

// Sets a limit to what is not a test case.
void limit_time(const SuiteOptions& options, const char* what) {
  set_control_deadline(options.timeout < 0 ? never : now() + duration_of(options.timeout), what);
}
class TimeLimit {
 public:
  TimeLimit(const SuiteOptions& options, const char* what) { limit_time(options, what); }
  ~TimeLimit() { set_control_deadline(never); }
  TimeLimit(const TimeLimit&) = delete;
};

// The test cases of the run; whether the control part is run itself; whether that turned out to be missing,
// with nothing that can be run in its place.
struct Program {
  std::vector<Selected> testcases;
  bool runs_control_part = false, is_empty = false;
  bool is_planned = false;  // the control part's test cases, whose time is that of all together
};

bool needs_testcases(const SuiteOptions& o) {
  return o.jobs > 1 || o.shards || o.shuffle || o.explore;
}

// What is run where there is no control part. False if there is nothing.
bool take_all_testcases(const SuiteOptions& options, Program& program) {
  program.runs_control_part = false;
  for (const std::string& name : testcase_names(true))
    if (!select_testcases({name}, options.timeout, program.testcases)) return false;
  program.is_empty = program.testcases.empty();
  if (program.is_empty)
    std::fprintf(
        stderr,
        "the root module has neither a control part nor test cases without parameters; -t chooses test "
        "cases of other modules\n");
  return !program.is_empty;
}

// False if there is nothing to be run.
bool make_program(const SuiteOptions& options, const char* control_part, Program& program) {
  if (!program.testcases.empty()) return true;
  program.runs_control_part = true;
  if (!has_control_part(control_part)) return take_all_testcases(options, program);
  if (!needs_testcases(options)) return true;
  std::string why;
  TimeLimit limit(options, "control part");
  program.runs_control_part = !plan_control_part(control_part, program.testcases, why);
  if (program.runs_control_part)
    std::fprintf(stderr, "the control part is run as a whole, in one process%s: %s\n",
                 options.explore ? ", and no other schedule is explored" : "", why.c_str());
  program.is_planned = !program.runs_control_part && !options.explore;
  // Each schedule begins anew.
  for (Selected& s : program.testcases)
    if (options.explore && s.timeout < 0) s.timeout = options.timeout;
  if (control_part_is_missing) return take_all_testcases(options, program);
  return true;
}

void arrange(const SuiteOptions& options, Program& program) {
  if (options.shards && program.runs_control_part) {
    program.runs_control_part = options.shard == 1;
  } else if (options.shards) {
    keep_shard(program.testcases, options.shard, options.shards);
  }
  if (options.shuffle) shuffle(program.testcases, options.seed);
  set_planned(program.runs_control_part ? 0 : program.testcases.size() * static_cast<size_t>(options.repeat));
}

bool some_failed() {
  return results().bad() > 0;
}

bool run_control_part(const SuiteOptions& options, const char* control_part) {
  TimeLimit limit(options, "control part");
  return lumo_execute_control_part(control_part, lumo_no_context_c);
}

bool run_once(const SuiteOptions& options, Program& program, const char* control_part) {
  if (program.runs_control_part) {
    if (!run_control_part(options, control_part)) return false;
    if (!control_part_is_missing) return true;
    if (!take_all_testcases(options, program)) return false;
    arrange(options, program);
  }
  if (options.explore) return explore(program.testcases, options);
  const double together = program.is_planned ? options.timeout : lumo_duration_forever_c;
  if (options.jobs > 1)
    return run_in_processes(program.testcases, options.jobs, options.until_fail, together);
  if (program.is_planned) limit_time(options, "control part");
  for (const Selected& s : program.testcases)
    if (!execute(s) || (options.until_fail && some_failed())) return false;
  return true;
}

bool run_program(const SuiteOptions& options, Program& program, const char* control_part) {
  if (run_start().seed) {
    const std::string text = "seed " + std::to_string(options.seed);
    print_remark(text + "\n");
    log_line(lumo_log_msg_info_c, text);
  }
  if (options.has_seed) testcase_seed = options.seed;
  bool good = true;
  const bool forever = options.until_fail && options.repeat == 1;
  for (long round = 0; (forever || round < options.repeat) && !ending_reason(); ++round) {
    good = run_once(options, program, control_part) && good;
    if (options.until_fail && (!good || some_failed())) break;
  }
  return good;
}

bool initialize(const SuiteOptions& options) {
  TimeLimit limit(options, "start of the suite");
  lumo_pre_initialize(lumo_no_context_c);
  const bool is_good = lumo_initialize(lumo_no_context_c);
  if (!is_good && ending_reason()) tell_start_fault(ending_reason());
  return is_good;
}

int run_initialized(const SuiteOptions& options, Program& program, const char* control_part) {
  if (!all_parameters_known() || !all_links_known() || !make_program(options, control_part, program))
    return start_fault;
  is_started = true;
  tell_run_begins();
  clear_counts();  // what initialization reached tells nothing about the test cases
  arrange(options, program);
  show_progress();
  bool good = run_program(options, program, control_part);
  limit_time(options, "end of the suite");
  good = lumo_finalize(lumo_no_context_c) && good;
  if (program.is_empty) return start_fault;
  tell_run_ends(results());
  print_summary();
  const int status = status_of_results();
  return good ? status : 1;
}

}  // namespace

bool execute(const Selected& selected) {
  explore_schedule(selected.seed);
  if (selected.seed) testcase_seed = selected.seed;
  return run_guarded("control", execute_selected, const_cast<Selected*>(&selected));
}

void list_modules() {
  for (const Module& m : registered_modules()) {
    std::printf("module %s%s\n", m.name, m.is_root ? " (root)" : "");
    for (unsigned long i = 0; i < m.row_count; ++i)
      if (is_own_testcase(m.rows[i])) std::printf("  testcase %s.%s\n", m.name, m.rows[i].name);
  }
}

bool register_root(lumo_register_function_t function) {
  Registration registration{function};
  return run_guarded("", call_register, &registration);
}

int run_registered(const SuiteOptions& options, const char* control_part) {
  Program program;
  if (!options.testcases.empty() && !select_testcases(options.testcases, options.timeout, program.testcases))
    return start_fault;
  let_lost_output_be_told();
  run_start().seed.reset();
  if (options.has_seed || options.shuffle || options.explore) run_start().seed = options.seed;
  {
    HeldSignals held;  // what is begun beside a report goes away with the process
    if (!open_reports(options)) return start_fault;
    if (options.is_supervised) be_supervised(held);
    is_started = false;
    watch_process(abandon, leave_to_original);
  }
  int status = start_fault;
  if (initialize(options)) status = run_initialized(options, program, control_part);
  cancel_reporters();
  end_watch();
  return status;
}

}  // namespace lumos

using namespace lumos;

namespace {

// Those that the patterns choose, a name each.
int list_selected(const SuiteOptions& options) {
  std::vector<Selected> selected;
  if (!select_testcases(options.testcases, options.timeout, selected)) return start_fault;
  for (const Selected& s : selected) std::printf("%s\n", s.full_name().c_str());
  return 0;
}

void print_versions() {
  const Module* root = root_module();
  std::printf("%s, with the run-time library of Orvane %s\n", root ? root->name : "suite", ORVANE_VERSION);
  for (const Module& m : registered_modules())
    std::printf("module %s %s\n", m.name, m.language ? m.language : "");
}

}  // namespace

namespace {

// A standard stream that is closed stays one that cannot be written: otherwise a report would be opened under
// its number, and get the log between its lines.
void occupy_closed_descriptors() {
  for (int fd = 0; fd >= 0 && fd <= STDERR_FILENO;) {
    fd = open("/dev/null", O_RDONLY);
    if (fd > STDERR_FILENO) close(fd);
  }
}

int run_suite(int argc, char* argv[], lumo_register_function_t register_function, const char* control_part,
              bool is_supervised) {
  occupy_closed_descriptors();
  let_lost_output_be_told();
  SuiteOptions options;
  options.is_supervised = is_supervised;
  if (!read_suite_options(argc, argv, options)) return start_fault;
  if (options.help) {
    print_suite_help(options.program.c_str());
    return 0;
  }
  if (!register_root(register_function)) return start_fault;
  if (options.list && !options.testcases.empty()) return list_selected(options);
  if (options.list || options.version) {
    options.list ? list_modules() : print_versions();
    return 0;
  }
  int status = run_registered(options, control_part);
  close_log_files();
  if (status == 0 && log_failure()) status = status_of_results();
  return status;
}

}  // namespace

int lumo_run_test_suite_status(int argc, char* argv[], lumo_register_function_t register_function,
                               const char* control_part) {
  return run_suite(argc, argv, register_function, control_part, false);
}

void lumo_run_test_suite(int argc, char* argv[], lumo_register_function_t register_function,
                         const char* control_part) {
  int status = run_suite(argc, argv, register_function, control_part, true);
  if (std::fflush(stdout) != 0 && status == 0) status = 1;
  std::exit(status);
}
