#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "support.h"
#include "text/log_file.h"
#include "value/wide_string.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Log : ::testing::Test, Types {
  TempScope scope;
  std::string entries;

  void SetUp() override {
    set_log_times(false);
    set_log_kinds("all");
    // What is logged stays out of the output of the test.
    open_log_file("/dev/null");
    capture_log(&entries);
  }
  void TearDown() override {
    capture_log(nullptr);
    close_log_files();
    set_log_kinds("error");
  }
};

TEST_F(Log, EntryIsOneLineWithItsPlace) {
  lumo_source_location_push("M", "f", nullptr, lumo_scope_function_c, "/a/b/M.ttcn", 3, nullptr);
  lumo_source_location_set_line(17, nullptr);
  lumo_log_string_to_all(lumo_log_msg_ttcn3_c, "two\nlines\r", nullptr);
  lumo_source_location_pop(nullptr);
  lumo_log_string_to_all(lumo_log_msg_ttcn3_c, "outside", nullptr);
  EXPECT_EQ(entries, "ttcn3 M.ttcn:17 two\\nlines\\r\nttcn3 outside\n");
}

TEST_F(Log, GoesToAFile) {
  std::string path = ::testing::TempDir() + "lumos_log_test";
  ASSERT_TRUE(open_log_file(path));
  lumo_log_string_to_all(lumo_log_msg_info_c, "kept", nullptr);
  close_log_files();
  std::ifstream in(path);
  std::stringstream content;
  content << in.rdbuf();
  std::remove(path.c_str());
  EXPECT_EQ(content.str(), "info kept\n");
  EXPECT_FALSE(open_log_file("/nonexistent/log"));
}

TEST_F(Log, WideStringsAreFormatted) {
  Value v = lumo_type_instantiate_named_value(list, "queue", lumo_temp_alloc_c, nullptr);
  lumo_wide_string_t name = lumo__value_label_or_name(v, nullptr);
  lumo_log_wide_string_to_all(lumo_log_kind_msg_warning_c,
                              lumo_format_wide_string(LUMO__VAL_CHECK_VALUE_FAILURE_sname, nullptr, name),
                              nullptr);
  lumo_log_wide_string_to_all(lumo_log_kind_msg_warning_c,
                              lumo_format_wide_string("LUMO__VAL_CHECK_VALUE_FAILURE_sname", nullptr,
                                                      lumo__value_label_or_name(integer(1), nullptr)),
                              nullptr);
  EXPECT_EQ(entries,
            "warning length restriction of value 'queue' is not met\n"
            "warning length restriction of value 'integer' is not met\n");
  lumo_wide_string_t made = lumo_wide_string_allocate(2, lumo_perm_alloc_c, nullptr);
  lumo_wide_string_set_element(made, 0, {0, 0, 3, 177}, nullptr);
  lumo_wide_string_set_element(made, 9, {0, 0, 3, 177}, nullptr);
  EXPECT_EQ(made->text, U"\u03b1 ");
  lumo_wide_string_deallocate(&made, nullptr);
  EXPECT_EQ(made, nullptr);
  EXPECT_LT(lumo_wchar_cmp({0, 0, 3, 177}, {0, 0, 4, 0}), 0);
  EXPECT_EQ(lumo_wchar_cmp({1, 2, 3, 4}, {1, 2, 3, 4}), 0);
}

TEST_F(Log, ReportedErrorsTellTheirPlace) {
  lumo_wide_string_t what = lumo_wide_string_construct_from_ascii("no value", lumo_temp_alloc_c, nullptr);
  EXPECT_EQ(fault_of([&] { lumo_report_error("M.ttcn:3", what, nullptr); }), "M.ttcn:3: no value");
  EXPECT_EQ(fault_of([&] { lumo_report_error(nullptr, what, nullptr); }), "no value");
  what = lumo_format_wide_string(LUMO__ILLEGAL_OBJSET_ID, nullptr, 7, "Set", "id");
  EXPECT_EQ(fault_of([&] { lumo__report_error_at(5, "m.c", what, nullptr); }),
            "m.c:5: no object with the identifier 7 in the object set 'Set' by its field 'id'");
}

}  // namespace
