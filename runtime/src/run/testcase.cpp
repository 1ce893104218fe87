// Test cases: from execute to the verdict.
#include <algorithm>

#include "run/component.h"
#include "run/defaults.h"
#include "value/error.h"
#include "text/log.h"
#include "text/log_file.h"
#include "ports/outside.h"
#include "run/ending.h"
#include "run/scheduler.h"
#include "value/memory.h"
#include "template/templates.h"
#include "value/scratch.h"
#include "value/symbols.h"
#include "value/types.h"

namespace lumos {

TestCase* test_case = nullptr;

namespace {

void end_all_components() {
  for (auto& c : test_case->components) {
    if (!c) continue;
    take_verdict(*c);
    c->state = State::ended;
  }
  for (auto& c : test_case->components)
    if (c) release_component(*c);
  clear_schedule();
}

lumo_type_t testcase_clause(lumo_symbol_entry_t row, size_t which) {
  if (!row->type_descriptor || field_count(row->type_descriptor) <= which) return nullptr;
  return field_info(row->type_descriptor)[which].type;
}

void check_not_running(const char* what) {
  if (test_case) fault("%s inside of a test case", what);
}

// Code of the user that unwinds the stack, as pthread_exit() does, must not take the test case with it.
void run_test_case(TestCase& tc, lumo_symbol_entry_t row, unsigned long argc, lumo_value_t argv[]) noexcept {
  lumo_type_t runs_on = testcase_clause(row, 1);
  tc.mtc = &add_component(runs_on, "mtc", false);
  tc.maps_by_itself = !testcase_clause(row, 2);
  tc.system_type = testcase_clause(row, 2) ? testcase_clause(row, 2) : runs_on;
  tc.system = &add_component(tc.system_type, "system", false);
  set_behaviour(*tc.mtc, row, argc, argv);
  outside_test_case_begins(tc.module.c_str(), tc.name.c_str());
  if (!start_fiber(*tc.mtc)) {
    end_test_case(lumo_verdict_error_c, "there is no memory for the stack of the test case");
  } else {
    make_ready(*tc.mtc);
  }
  schedule();
  leave_copy_of_run();
  end_all_components();
  outside_test_case_ends();
}

// The arguments of a test case for whom it hands values back; the others end.
void keep_results(TestCase& tc, const lumo_field_info_t* formals, unsigned long argc, Value* kept) {
  constexpr unsigned back = lumo_type_parameter_out_c | lumo_type_parameter_inout_c;
  for (unsigned long i = 0; i < tc.arguments.size(); ++i) {
    Value argument = tc.arguments[i];
    if (!argument) continue;
    const bool comes_back = formals && i < argc && formals[i].property & back;
    if (comes_back) kept[i] = copy_value(argument, lumo_temp_alloc_c);
    destroy(argument);
  }
  tc.arguments.clear();
}

void hand_back(unsigned long argc, lumo_value_t argv[], Value* kept) {
  for (unsigned long i = 0; i < argc; ++i) {
    if (!kept[i] || !argv[i] || argv[i]->life == Life::fixed) continue;
    if (!is_blank(kept[i])) {
      // The test case has ended with an error for what does not belong to the variable's type.
      if (argv[i]->dynamic || lumo_type_check(argv[i]->type, kept[i], current_task))
        lumo_value_assign(argv[i], kept[i], current_task);
    } else if (!argv[i]->pending) {
      clear_contents(argv[i]);
      shape_fresh(argv[i]);
    }
  }
}

lumo_verdict_t verdict_of(lumo_symbol_entry_t row, TestCase& tc, unsigned long argc, lumo_value_t argv[],
                          Value* kept) {
  log_format(lumo_log_msg_info_c, "test case %s started", tc.full_own_name().c_str());
  if (testcase_seed) set_random_seed(*testcase_seed ^ std::hash<std::string>()(tc.module + "." + tc.name));
  tell_begin(tc);
  test_case = &tc;
  const DefaultNumbers numbers;
  watch_test_case(true);
  watch_deadline(tc.deadline);
  run_test_case(tc, row, argc, argv);
  watch_deadline(control_deadline());
  lumo_type_t signature = testcase_clause(row, 0);
  keep_results(tc, signature ? field_info(signature) : nullptr, argc, kept);
  conclude_test_case();
  return results().back().verdict;
}

}  // namespace

lumo_value_t (*execute_instead)(lumo_symbol_entry_t, const char*, const char*, unsigned long, lumo_value_t[],
                                double) = nullptr;
std::optional<uint64_t> testcase_seed;
void (*result_listener)(Result& result) = nullptr;

Results& results() {
  static auto& all = *new Results;
  return all;
}

void end_test_case(lumo_verdict_t verdict, const char* reason) {
  if (verdict > test_case->verdict) {
    test_case->verdict = verdict;
    test_case->reason = reason;
    const Component* c = current_task->component ? current_task->component : test_case->mtc;
    test_case->place = place_of(c ? c->task : *current_task);
  }
  if (!test_case->ended && !current_task->component) log_line(lumo_log_msg_error_c, reason);
  test_case->ended = true;
}

namespace {

// Why the verdict cannot stand although the test case itself has come to its end; empty if it can.
std::string objection() {
  if (const char* why = log_failure()) return std::string("the log cannot be written: ") + why;
  return ending_reason() ? ending_reason() : "";
}

}  // namespace

void conclude_test_case() {
  leave_copy_of_run();
  Undisturbed until_told;
  TestCase& tc = *test_case;
  flush_log();
  if (const std::string why = objection(); !why.empty() && tc.verdict != lumo_verdict_error_c) {
    tc.verdict = lumo_verdict_error_c;
    tc.reason = why;
  }
  const Time duration = now() - tc.begin;
  results().push_back({tc, tc.verdict, tc.reason, tc.place, duration});
  log_result(results().back());
  flush_log();
  test_case = nullptr;
  watch_test_case(false);
  if (result_listener) result_listener(results().back());
  tell_end(results().back());
}

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_component_execute(const char* module, const char* testcase, unsigned long argc,
                                    lumo_value_t argv[], double timeout, lumo_context_t context) {
  check_not_running("execute");
  check_run_goes_on();
  lumo_symbol_entry_t row = checked_row(module, testcase);
  if (!row->function_ptr) fault("'%s.%s' is no test case", module, testcase);
  const bool is_limited = timeout != lumo_duration_forever_c;
  if (is_limited && !(timeout >= 0)) fault("test case '%s.%s' is executed for a negative duration", module, testcase);
  if (execute_instead) return execute_instead(row, module, testcase, argc, argv, timeout);
  Scratch<Value> kept(argc);
  lumo_verdict_t verdict;
  {
    TestCase tc;
    tc.module = module;
    tc.name = testcase;
    tc.scheduler = current_fiber();
    tc.caller = current_task;
    tc.begin = now();
    tc.seed = explored_seed();
    tc.deadline = control_deadline();
    if (is_limited) tc.deadline = std::min(tc.deadline, tc.begin + duration_of(timeout));
    verdict = verdict_of(row, tc, argc, argv, kept.data());
  }
  check_run_goes_on();
  hand_back(argc, argv, kept.data());
  return lumo_value_set_verdict(make_root(lumo_verdicttype_type, lumo_temp_alloc_c), verdict, context);
}
