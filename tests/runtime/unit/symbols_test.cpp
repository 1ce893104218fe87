#include "value/symbols.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "component_support.h"
#include "suite/params.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

TEST(Symbols, ImportsLeadToTheirOrigin) {
  TempScope scope;
  static Value seven = copy_value(integer(7), lumo_perm_alloc_c);
  auto function = reinterpret_cast<void*>(+[](unsigned long, lumo_value_t[], lumo_context_t) {});
  static lumo_symbol_entry_struct_t base[] = {
      {"Base", lumo_symbol_entry_kind_module, nullptr, nullptr, nullptr, nullptr, nullptr},
      {"c", lumo_symbol_entry_kind_constant, lumo_integer_type, seven, nullptr, nullptr, nullptr},
      {"f", lumo_symbol_entry_kind_function, nullptr, nullptr, function, nullptr, nullptr},
  };
  static lumo_symbol_entry_struct_t user[] = {
      {"User", lumo_symbol_entry_kind_module, nullptr, nullptr, nullptr, nullptr, nullptr},
      {"Base", lumo_symbol_entry_kind_imported_module, nullptr, nullptr, nullptr, nullptr, nullptr},
      {"Base.c", lumo_symbol_entry_kind_constant, lumo_integer_type, nullptr, nullptr, nullptr, nullptr},
      {"Base.f", lumo_symbol_entry_kind_function, nullptr, nullptr, nullptr, nullptr, nullptr},
      {"User", lumo_symbol_entry_kind_userdefined_type, lumo_boolean_type, nullptr, nullptr, nullptr,
       nullptr},
  };
  lumo_module_register("Base", false, base, 3, nullptr, nullptr);
  lumo_module_register("User", true, user, 5, "TTCN-3:2005", nullptr);
  EXPECT_EQ(lumo_find_element("User", "Base.c", nullptr)->value_descriptor, seven);
  EXPECT_EQ(lumo_find_element("User", "Base.f", nullptr)->function_ptr, function);
  EXPECT_EQ(lumo_find_element("User", "Base.c", nullptr)->type_descriptor, lumo_integer_type);
  EXPECT_EQ(lumo_find_element("User", "User", nullptr)->type_descriptor, lumo_boolean_type)
      << "a type may bear the name of its module";
  EXPECT_EQ(lumo_find_element("User", "c", nullptr), nullptr);
  EXPECT_EQ(lumo_find_element("Nowhere", "c", nullptr), nullptr);
  EXPECT_EQ(fault_of([] { lumo_find_element_with_check("User", "x", nullptr); }),
            "module 'User' has no element 'x'");
  user[2].value_descriptor = lumo_value_true_c;
  EXPECT_EQ(lumo_find_element("User", "Base.c", nullptr)->value_descriptor, lumo_value_true_c);
  size_t modules = registered_modules().size();
  lumo_module_register("User", true, user, 1, nullptr, nullptr);
  EXPECT_EQ(registered_modules().size(), modules) << "a module that registers again replaces itself";
  EXPECT_EQ(lumo_find_element("User", "Base.c", nullptr), lumo_find_element("Base", "c", nullptr));
  lumo_value_delete(&seven, nullptr);
  base[1].value_descriptor = nullptr;
}

TEST(Parameters, ComeFromTextsAndFiles) {
  TempScope scope;
  std::string path = ::testing::TempDir() + "lumos_parameters", error;
  std::ofstream(path) << "# comment\n\n  M.a = 1  \r\nb := { 1, 2 }\n";
  EXPECT_TRUE(read_parameter_file(path, error)) << error;
  EXPECT_TRUE(add_parameter("M.a=3"));
  EXPECT_FALSE(add_parameter("M.a"));
  EXPECT_FALSE(add_parameter("=3"));
  Types types;
  Value a = make_root(lumo_integer_type, lumo_temp_alloc_c), b = make_root(types.list, lumo_temp_alloc_c);
  EXPECT_TRUE(lumo_retrieve_module_parameter("M", "a", a, nullptr));
  EXPECT_TRUE(lumo_retrieve_module_parameter("Any", "b", b, nullptr));
  EXPECT_FALSE(lumo_retrieve_module_parameter("N", "a", a, nullptr));
  EXPECT_EQ(render(a) + render(b), "3{ 1, 2 }");
  EXPECT_EQ(fault_of([&] { lumo_retrieve_module_parameter("M", "b", a, nullptr); }),
            "module parameter M.b cannot be set to { 1, 2 }: an integer is missing at character 1");
  std::ofstream(path) << "fine = 1\nno equals sign\n";
  EXPECT_FALSE(read_parameter_file(path, error));
  EXPECT_EQ(error, path + ", line 2: '=' is missing");
  std::remove(path.c_str());
  EXPECT_FALSE(read_parameter_file(path, error));
  EXPECT_EQ(error, "could not open '" + path + "'");
}

struct ControlParts : Components {};

TEST_F(ControlParts, WaitForTheirTimers) {
  static bool timed_out;
  timed_out = false;
  EXPECT_EQ(fault_of([] {
              Value t = make_root(lumo_timer_type, lumo_perm_alloc_c);
              lumo_timer_start(t, 3.0, ctx);
              Time begin = now();
              alt([&](bool&) { return lumo_timer_try_timed_out(t, ctx); });
              timed_out = now() - begin == 3000000000;
              lumo_value_delete(&t, ctx);
              alt([](bool&) { return false; });
            }),
            "the control part waits and nothing can happen any more");
  EXPECT_TRUE(timed_out);
}

TEST_F(ControlParts, CannotDoWhatComponentsDo) {
  const std::string refused = "this needs a component and cannot be done in a control part";
  EXPECT_EQ(fault_of([] { lumo_component_self(ctx); }), refused);
  EXPECT_EQ(fault_of([] { set_verdict(lumo_verdict_pass_c); }), refused);
  EXPECT_EQ(fault_of([] { element("n"); }), refused);
  EXPECT_EQ(fault_of([] { lumo_component_kill(lumo_value_all_c, ctx); }), refused);
}

TEST_F(ControlParts, TestCasesDoNotNest) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              lumo_component_execute("Test", "tc", 0, nullptr, lumo_duration_forever_c, ctx);
            }),
            "error: execute inside of a test case");
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) { set_verdict(lumo_verdict_pass_c); }),
            "pass")
      << "the next test case runs";
}

// --- values of defaults are made by the callee and ended by the call

void take_default(unsigned long, lumo_value_t argv[], lumo_context_t c) {
  if (argv[0] == lumo_value_default_c) argv[0] = lumo_value_copy(integer(5), lumo_perm_alloc_c, c);
  lumo_value_set_integer(argv[1], lumo_value_get_integer(argv[0], c) + 1, c);
}

TEST_F(ControlParts, CallsLeaveDefaultsAsTheyFoundThem) {
  Value result = integer(0);
  Value argv[] = {lumo_value_default_c, result, nullptr};
  for (int i = 0; i < 3; ++i) lumo_call_function(take_default, function, 1, argv, ctx);
  EXPECT_EQ(argv[0], lumo_value_default_c);
  EXPECT_EQ(render(result), "6");
  Value given = integer(1);
  argv[0] = given;
  lumo_call_function(take_default, function, 1, argv, ctx);
  EXPECT_EQ(argv[0], given);
  EXPECT_EQ(render(result), "2");
  EXPECT_NE(fault_of([&] { lumo_call_function(nullptr, function, 0, nullptr, ctx); }), "");
}

}  // namespace
