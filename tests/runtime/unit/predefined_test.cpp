#include <gtest/gtest.h>

#include "support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Predefined : ::testing::Test, Types {
  TempScope scope;
  Value bits(const char* d) { return value(lumo_bitstring_type, std::string("'") + d + "'B"); }
  Value oct(const char* d) { return value(lumo_octetstring_type, std::string("'") + d + "'O"); }
};

constexpr auto temp = lumo_temp_alloc_c;

TEST_F(Predefined, RandomNumbersFollowTheirSeed) {
  Value seed = lumo_value_set_float(make_root(lumo_float_type, temp), 0.25, nullptr);
  double first = lumo_value_get_float(lumo_rnd(seed, temp, nullptr), nullptr);
  double second = lumo_value_get_float(lumo_rnd(lumo_no_value_c, temp, nullptr), nullptr);
  EXPECT_EQ(lumo_value_get_float(lumo_rnd(seed, temp, nullptr), nullptr), first);
  EXPECT_NE(first, second);
  EXPECT_GE(first, 0.0);
  EXPECT_LT(first, 1.0);
}

TEST_F(Predefined, ValuesAreEncodedAndDecoded) {
  Value v = value(outer, "{ { n := 1, s := \"x\" }, { 7 }, { i := 2 } }");
  Value encoded = lumo_encvalue(v, temp, nullptr);
  Value more = lumo_concatenate(encoded, bits("00100000"), temp, nullptr);
  Value decoded = make_root(outer, temp);
  EXPECT_EQ(render(lumo_decvalue(more, decoded, temp, nullptr)), "0");
  EXPECT_TRUE(lumo_is_equal(v, decoded, nullptr));
  EXPECT_EQ(render(more), "'00100000'B") << "what was decoded is taken away";
  EXPECT_EQ(render(lumo_decvalue(more, make_root(list, temp), temp, nullptr)), "1");
  EXPECT_EQ(render(lumo_decvalue(bits("001"), make_root(list, temp), temp, nullptr)), "2");
  EXPECT_EQ(render(lumo_encvalue(oct("A5"), temp, nullptr)), "'10100101'B");
}

}  // namespace
