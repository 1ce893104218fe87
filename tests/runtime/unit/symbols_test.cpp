#include "value/symbols.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "support.h"
#include "suite/params.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

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

}  // namespace
