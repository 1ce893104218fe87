#include "suite/suite.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "value/error.h"
#include "text/log.h"
#include "suite/suite_options.h"
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

struct Selected {
  std::string module, name;
  double timeout;
};

void execute_selected(void* argument) {
  auto* selected = static_cast<Selected*>(argument);
  lumo_component_execute(selected->module.c_str(), selected->name.c_str(), 0, nullptr, selected->timeout,
                         current_task);
}

size_t parameter_count(const lumo_symbol_entry_struct_t& row) {
  const lumo_field_info_t* fields = row.type_descriptor ? field_info(row.type_descriptor) : nullptr;
  return fields && fields[0].type ? field_count(fields[0].type) : 0;
}

bool is_own_testcase(const lumo_symbol_entry_struct_t& row) {
  return row.kind == lumo_symbol_entry_kind_testcase && row.function_ptr && !std::strchr(row.name, '.');
}

// A test case of the module named, or of any module, the root first.
bool find_testcase(const std::string& name, Selected& selected) {
  size_t point = name.find('.');
  std::vector<Module> modules = registered_modules();
  for (int round = 0; round < 2; ++round) {
    for (const Module& m : modules) {
      if ((round == 0) != m.is_root) continue;
      if (point != std::string::npos && name.compare(0, point, m.name) != 0) continue;
      std::string wanted = point == std::string::npos ? name : name.substr(point + 1);
      for (unsigned long i = 0; i < m.row_count; ++i) {
        if (!is_own_testcase(m.rows[i]) || wanted != m.rows[i].name) continue;
        if (parameter_count(m.rows[i])) {
          std::fprintf(stderr, "test case '%s' has parameters and can only be run by the control part\n",
                       name.c_str());
          return false;
        }
        selected.module = m.name;
        selected.name = wanted;
        return true;
      }
    }
  }
  std::fprintf(stderr, "there is no test case '%s'\n", name.c_str());
  return false;
}

bool select_testcases(const SuiteOptions& options, std::vector<Selected>& list) {
  for (const std::string& name : options.testcases) {
    Selected selected;
    selected.timeout = options.timeout < 0 ? lumo_duration_forever_c : options.timeout;
    if (!find_testcase(name, selected)) return false;
    list.push_back(selected);
  }
  return true;
}

}  // namespace

void list_modules() {
  for (const Module& m : registered_modules()) {
    std::printf("module %s%s\n", m.name, m.is_root ? " (root)" : "");
    for (unsigned long i = 0; i < m.row_count; ++i)
      if (is_own_testcase(m.rows[i])) std::printf("  testcase %s.%s\n", m.name, m.rows[i].name);
  }
}

void report_verdict(const Result& result) {
  std::printf("%s.%s: %s\n", result.module.c_str(), result.name.c_str(), verdict_name(result.verdict));
  std::fflush(stdout);
}

namespace {
const bool listens = (result_listener = report_verdict, true);
}  // namespace

void print_summary() {
  if (results().empty()) return;
  size_t counts[5] = {};
  for (const Result& r : results()) ++counts[r.verdict];
  std::printf("%zu test case%s: %zu pass, %zu none, %zu inconc, %zu fail, %zu error\n", results().size(),
              results().size() == 1 ? "" : "s", counts[lumo_verdict_pass_c], counts[lumo_verdict_none_c],
              counts[lumo_verdict_inconc_c], counts[lumo_verdict_fail_c], counts[lumo_verdict_error_c]);
  std::fflush(stdout);
}

int status_of_results() {
  for (const Result& r : results())
    if (r.verdict != lumo_verdict_pass_c && r.verdict != lumo_verdict_none_c) return 1;
  return 0;
}

bool register_root(lumo_register_function_t function) {
  Registration registration{function};
  return run_guarded("", call_register, &registration);
}

int run_registered(const SuiteOptions& options, const char* control_part) {
  std::vector<Selected> selected;
  if (!select_testcases(options, selected)) return start_fault;
  lumo_pre_initialize(lumo_no_context_c);
  if (!lumo_initialize(lumo_no_context_c)) return start_fault;
  bool good = true;
  for (Selected& s : selected) good = run_guarded("control", execute_selected, &s) && good;
  if (selected.empty()) good = lumo_execute_control_part(control_part, lumo_no_context_c);
  good = lumo_finalize(lumo_no_context_c) && good;
  print_summary();
  return good ? status_of_results() : 1;
}

}  // namespace lumos

using namespace lumos;

int lumo_run_test_suite_status(int argc, char* argv[], lumo_register_function_t register_function,
                               const char* control_part) {
  SuiteOptions options;
  if (!read_suite_options(argc, argv, options)) return start_fault;
  if (options.help) {
    print_suite_help(argc > 0 ? argv[0] : "suite");
    return 0;
  }
  if (!register_root(register_function)) return start_fault;
  if (options.list) {
    list_modules();
    return 0;
  }
  int status = run_registered(options, control_part);
  close_log();
  return status;
}

void lumo_run_test_suite(int argc, char* argv[], lumo_register_function_t register_function,
                         const char* control_part) {
  int status = lumo_run_test_suite_status(argc, argv, register_function, control_part);
  std::fflush(stdout);
  std::exit(status);
}
