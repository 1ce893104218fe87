// Test cases whose behaviours are written in tests, with the calls that generated code makes.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "value/clock.h"
#include "ports/outside.h"
#include "support.h"

namespace lumos::testing {

constexpr lumo_context_t ctx = lumo_no_context_c;

// An alt as it is generated: takes a snapshot, tries, asks the defaults, waits.
template <class Try>
void alt(Try branches, bool volatile_guards = false) {
  lumo_memory_scope_t scope;
  lumo_memory_temp_begin(&scope, ctx);
  bool repeat;
  do {
    repeat = false;
    while (true) {
      lumo_memory_temp_clear(&scope, ctx);
      lumo_component_snapshot(ctx);
      if (branches(repeat)) break;
      lumo_activation_list_result_t result = lumo_activation_list_invoke(ctx);
      if (result == lumo_activation_list_successful_proceed_c) break;
      if (result == lumo_activation_list_successful_repeat_c) {
        repeat = true;
        break;
      }
      lumo_component_wait(volatile_guards, ctx);
    }
  } while (repeat);
  lumo_memory_temp_end(&scope, ctx);
}

inline Value element(const char* name) {
  return lumo_component_element(name, ctx);
}

inline void set_verdict(lumo_verdict_t verdict) {
  lumo_component_set_local_verdict(
      lumo_value_set_verdict(make_root(lumo_verdicttype_type, lumo_temp_alloc_c), verdict, ctx), nullptr,
      ctx);
}

inline bool try_receive(const char* port, Value pattern, Value into = lumo_value_no_return_c) {
  return lumo_port_try_receive(element(port), pattern, lumo_no_value_c, false, into, lumo_value_no_return_c,
                               ctx);
}

inline void send(const char* port, Value v) {
  lumo_port_send(element(port), v, lumo_no_value_c, ctx);
}

inline Value any_integer() {
  Value t = dynamic(lumo_integer_type);
  lumo_template_set_value(t, lumo_anyone_value_c, false, ctx);
  return t;
}

inline std::string trace;  // what behaviours leave for the test

// The types of the components and the symbol table of module "Test".
struct Suite {
  TypeTable port_record{
      "P", lumo_type_kind_port, {{"", lumo_field_property_inout_value_c, lumo_integer_type, nullptr}}};
  TypeTable port{"P", lumo_type_kind_port_ref, {{"<port record>", 0, port_record, nullptr}}};
  TypeTable ports{
      "Ports",
      lumo_type_kind_array,
      {mandatory(lumo_type_array_contained_type_c, port_record), mandatory("", lumo_integer_type)},
      {{lumo_type_array_length_c, 3}, {lumo_type_array_base_index_c, 1}}};
  std::vector<lumo_field_info_t> elements{
      {"p", 0, port_record, nullptr},     {"q", 0, port_record, nullptr},
      {"many", 0, ports, nullptr},        {"t", 0, lumo_timer_type, nullptr},
      {"u", 0, lumo_timer_type, nullptr}, {"n", 0, lumo_integer_type, nullptr}};
  lumo_type_info_struct_t record_info{"C",
                                      "Test",
                                      lumo_type_kind_component,
                                      nullptr,
                                      true,
                                      nullptr,
                                      reinterpret_cast<void*>(post_process),
                                      nullptr,
                                      nullptr,
                                      0,
                                      nullptr,
                                      reinterpret_cast<lumo_enum_or_array_info_t*>(elements.size()),
                                      elements.data()};
  lumo_type_struct_t record{nullptr, nullptr, nullptr, nullptr,     nullptr,
                            nullptr, nullptr, nullptr, &record_info};
  TypeTable component{"C", lumo_type_kind_component_ref, {{"<component record>", 0, &record, nullptr}}};
  TypeTable signature{"none", lumo_type_kind_signature};
  TypeTable returning{
      "r", lumo_type_kind_signature, {{"", lumo_field_property_return_value_c, lumo_integer_type, nullptr}}};
  TypeTable one_parameter{
      "f", lumo_type_kind_signature, {{"n", lumo_type_parameter_in_c, lumo_integer_type, nullptr}}};
  TypeTable testcase{"tc",
                     lumo_type_kind_test_case,
                     {{"", 0, signature, nullptr}, {"", 0, component, nullptr}, {"", 0, component, nullptr}}};
  TypeTable function{"f", lumo_type_kind_function, {{"", 0, one_parameter, nullptr}}};
  // A remote procedure: in, out, inout, and a result.
  TypeTable procedure{"Proc",
                      lumo_type_kind_signature,
                      {{"a", lumo_type_parameter_in_c, lumo_integer_type, nullptr},
                       {"b", lumo_type_parameter_out_c, lumo_integer_type, nullptr},
                       {"c", lumo_type_parameter_inout_c, lumo_integer_type, nullptr},
                       {"", lumo_field_property_return_value_c, lumo_integer_type, nullptr}}};
  std::vector<lumo_symbol_entry_struct_t> rows;

  static lumo_value_t post_process(lumo_value_t value, lumo_context_t c) {
    lumo_value_set_integer(lumo_value_field_by_index(value, 5, c), 100, c);
    lumo_value_set_timer_default_duration(lumo_value_field_by_index(value, 3, c), 2.0, c);
    return value;
  }

  void add(const char* name, lumo_symbol_entry_kind_t kind, lumo_type_t type, void* function_ptr) {
    rows.push_back({name, kind, type, nullptr, function_ptr, nullptr, nullptr});
  }
};

inline Suite* suite = nullptr;

struct Components : ::testing::Test, Suite {
  TempScope scope;

  void SetUp() override {
    suite = this;
    trace.clear();
    set_simulated(true);
    results().clear();
  }
  void TearDown() override {
    set_simulated(false);
    set_loopback(false);
  }

  void behaviour(const char* name, lumo_function_t f) {
    add(name, lumo_symbol_entry_kind_function, function, reinterpret_cast<void*>(f));
  }
  void altstep(const char* name, lumo_test_step_t f) {
    add(name, lumo_symbol_entry_kind_test_step, function, reinterpret_cast<void*>(f));
  }

  // The verdict and reason of a test case with this behaviour of its MTC.
  std::string run(lumo_function_t mtc, double timeout = lumo_duration_forever_c) {
    if (!rows.empty() && !std::strcmp(rows.back().name, "tc")) rows.pop_back();
    add("tc", lumo_symbol_entry_kind_testcase, testcase, reinterpret_cast<void*>(mtc));
    lumo_module_register("Test", true, rows.data(), rows.size(), nullptr, ctx);
    std::string log;
    set_log_kinds("none");
    static double limit;
    limit = timeout;
    bool good = run_guarded(
        "control", [](void*) { lumo_component_execute("Test", "tc", 0, nullptr, limit, ctx); }, nullptr);
    if (!good || results().empty()) return "no result";
    const Result& r = results().back();
    return std::string(verdict_name(r.verdict)) + (r.reason.empty() ? "" : ": " + r.reason);
  }
};

inline Value create(const char* name = "", bool alive = false) {
  Value instance = lumo_type_instantiate_value(suite->component, lumo_temp_alloc_c, ctx);
  return lumo_component_create(instance, *name ? text(name) : lumo_no_value_c, alive, ctx);
}

inline void start(Value component, const char* function, lumo_long_integer_t argument = 0) {
  Value argv[] = {integer(argument), nullptr};
  lumo_component_start(component, "Test", function, 1, argv, ctx);
}

inline void connect(Value a, const char* p, Value b, const char* q) {
  lumo_component_connect_port(a, p, lumo_no_value_c, b, q, lumo_no_value_c, ctx);
}

inline Value self_ref() {
  return lumo_component_self(ctx);
}

inline void wait_done(Value component) {
  alt([&](bool&) { return lumo_component_try_done(component, ctx); });
}

}  // namespace lumos::testing
