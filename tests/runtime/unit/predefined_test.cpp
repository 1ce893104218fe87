#include <gtest/gtest.h>

#include "support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Predefined : ::testing::Test, Types {
  TempScope scope;
  Value bits(const char* d) { return value(lumo_bitstring_type, std::string("'") + d + "'B"); }
  Value hex(const char* d) { return value(lumo_hexstring_type, std::string("'") + d + "'H"); }
  Value oct(const char* d) { return value(lumo_octetstring_type, std::string("'") + d + "'O"); }
};

constexpr auto temp = lumo_temp_alloc_c;

TEST_F(Predefined, NumbersAndStrings) {
  EXPECT_EQ(render(lumo_bit2int(bits("101"), temp, nullptr)), "5");
  EXPECT_EQ(render(lumo_hex2int(hex("FF"), temp, nullptr)), "255");
  EXPECT_EQ(render(lumo_oct2int(oct("7FFFFFFFFFFFFFFF"), temp, nullptr)), "9223372036854775807");
  EXPECT_NE(fault_of([&] { lumo_oct2int(oct("FFFFFFFFFFFFFFFF"), temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_int2bit(5, 8, temp, nullptr)), "'00000101'B");
  EXPECT_EQ(render(lumo_int2hex(255, 4, temp, nullptr)), "'00FF'H");
  EXPECT_EQ(render(lumo_int2oct(256, 2, temp, nullptr)), "'0100'O");
  EXPECT_EQ(fault_of([&] { lumo_int2bit(4, 2, temp, nullptr); }), "int2bit: 4 does not fit in 2 elements");
  EXPECT_NE(fault_of([&] { lumo_int2hex(-1, 2, temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_int2str(-7, temp, nullptr)), "\"-7\"");
  EXPECT_EQ(render(lumo_str2int(text("-7"), temp, nullptr)), "-7");
  EXPECT_EQ(fault_of([&] { lumo_str2int(text("7x"), temp, nullptr); }), "str2int: \"7x\" is no integer");
  EXPECT_EQ(render(lumo_str2int_zero(text("7x"), temp, nullptr)), "0");
  EXPECT_EQ(render(lumo_str2float(text("1.5E2"), temp, nullptr)), "150.0");
  EXPECT_NE(fault_of([&] { lumo_str2float(text("0x10"), temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_float2int(-2.9, temp, nullptr)), "-2");
  EXPECT_NE(fault_of([&] { lumo_float2int(1e300, temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_int2float(3, temp, nullptr)), "3.0");
  EXPECT_EQ(render(lumo_char2int(text("A"), temp, nullptr)), "65");
  EXPECT_EQ(render(lumo_int2charstr(65, temp, nullptr)), "\"A\"");
  EXPECT_NE(fault_of([&] { lumo_int2charstr(128, temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_int2unicharstr(945, temp, nullptr)), "char(0, 0, 3, 177)");
  EXPECT_EQ(render(lumo_enum2int(value(color, "green"), temp, nullptr)), "5");
}

TEST_F(Predefined, BetweenBinaryStrings) {
  EXPECT_EQ(render(lumo_bit2hex(bits("111010111"), temp, nullptr)), "'1D7'H");
  EXPECT_EQ(render(lumo_bit2oct(bits("111010111"), temp, nullptr)), "'01D7'O");
  EXPECT_EQ(render(lumo_hex2oct(hex("1D7"), temp, nullptr)), "'01D7'O");
  EXPECT_EQ(render(lumo_hex2bit(hex("1D7"), temp, nullptr)), "'000111010111'B");
  EXPECT_EQ(render(lumo_oct2bit(oct("01D7"), temp, nullptr)), "'0000000111010111'B");
  EXPECT_EQ(render(lumo_oct2hex(oct("1D74"), temp, nullptr)), "'1D74'H");
  EXPECT_EQ(render(lumo_bit2str(bits("101"), temp, nullptr)), "\"101\"");
  EXPECT_EQ(render(lumo_oct2str(oct("4469707379"), temp, nullptr)), "\"4469707379\"");
  EXPECT_EQ(render(lumo_oct2char(oct("4469707379"), temp, nullptr)), "\"Dipsy\"");
  EXPECT_EQ(render(lumo_char2oct(text("Tinky"), temp, nullptr)), "'54696E6B79'O");
  EXPECT_EQ(render(lumo_str2oct(text("54696E"), temp, nullptr)), "'54696E'O");
  EXPECT_NE(fault_of([&] { lumo_str2oct(text("546"), temp, nullptr); }), "");
}

TEST_F(Predefined, OperatorsOnStrings) {
  EXPECT_EQ(render(lumo_and4b(bits("0011"), bits("0101"), temp, nullptr)), "'0001'B");
  EXPECT_EQ(render(lumo_or4b(hex("3C"), hex("A5"), temp, nullptr)), "'BD'H");
  EXPECT_EQ(render(lumo_xor4b(oct("3C"), oct("FF"), temp, nullptr)), "'C3'O");
  EXPECT_EQ(render(lumo_not4b(bits("10"), temp, nullptr)), "'01'B");
  EXPECT_NE(fault_of([&] { lumo_and4b(bits("1"), bits("11"), temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_shiftleft(bits("111001"), 2, temp, nullptr)), "'100100'B");
  EXPECT_EQ(render(lumo_shiftright(hex("12345"), 2, temp, nullptr)), "'00123'H");
  EXPECT_EQ(render(lumo_shiftleft(oct("AABB"), 5, temp, nullptr)), "'0000'O");
  EXPECT_EQ(render(lumo_rotateleft(bits("101110"), 2, temp, nullptr)), "'111010'B");
  EXPECT_EQ(render(lumo_rotateright(text("abcd"), 1, temp, nullptr)), "\"dabc\"");
  EXPECT_EQ(render(lumo_rotateleft(value(list, "{ 1, 2, 3 }"), 1, temp, nullptr)), "{ 2, 3, 1 }");
  EXPECT_EQ(render(lumo_concatenate(text("ab"), text("c"), temp, nullptr)), "\"abc\"");
  EXPECT_EQ(render(lumo_concatenate(value(list, "{ 1 }"), value(list, "{ 2 }"), temp, nullptr)), "{ 1, 2 }");
  EXPECT_EQ(render(lumo_concatenate(oct("01"), oct("02"), temp, nullptr)), "'0102'O");
  EXPECT_NE(fault_of([&] { lumo_concatenate(oct("01"), bits("1"), temp, nullptr); }), "");
}

TEST_F(Predefined, PartsOfStrings) {
  EXPECT_EQ(render(lumo_substr(text("abcdef"), 1, 3, temp, nullptr)), "\"bcd\"");
  EXPECT_EQ(render(lumo_substr(oct("010203"), 1, 2, temp, nullptr)), "'0203'O");
  EXPECT_EQ(render(lumo_substr(value(list, "{ 1, 2, 3 }"), 2, 1, temp, nullptr)), "{ 3 }");
  EXPECT_NE(fault_of([&] { lumo_substr(text("abc"), 2, 2, temp, nullptr); }), "");
  EXPECT_NE(fault_of([&] { lumo_substr(text("abc"), ~0ul, 2, temp, nullptr); }), "");
  EXPECT_EQ(render(lumo_replace(text("abcdef"), 1, 2, text("XYZ"), temp, nullptr)), "\"aXYZdef\"");
  EXPECT_EQ(render(lumo_decomp(value(lumo_objectidentifier_type, "objid { 1 2 3 4 }"), 1, 2, temp, nullptr)),
            "objid { 2 3 }");
  EXPECT_EQ(lumo_sizeof(value(inner, "{ 1, omit }"), nullptr), 1u);
  EXPECT_EQ(lumo_sizeof(value(list, "{ 1, 2 }"), nullptr), 2u);
}

TEST_F(Predefined, ModAndRem) {
  EXPECT_EQ(lumo_mod(-7, 3, nullptr), 2);
  EXPECT_EQ(lumo_rem(-7, 3, nullptr), -1);
  EXPECT_EQ(lumo_rem(-9223372036854775807LL - 1, -1, nullptr), 0);
  EXPECT_EQ(fault_of([] { lumo_mod(1, 0, nullptr); }), "mod by zero");
  EXPECT_EQ(fault_of([] { lumo_rem(1, 0, nullptr); }), "rem by zero");
}

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

TEST_F(Predefined, IsValue) {
  EXPECT_TRUE(lumo_isvalue(integer(1), nullptr));
  EXPECT_FALSE(lumo_isvalue(make_root(lumo_integer_type, temp), nullptr));
  EXPECT_FALSE(lumo_isvalue(lumo_omit_value_c, nullptr));
  Value t = dynamic(inner);
  lumo_value_assign_vector_element(t, 0, lumo_anyone_value_c, nullptr);
  EXPECT_FALSE(lumo_isvalue(t, nullptr));
  lumo_value_assign_vector_element(t, 0, integer(3), nullptr);
  EXPECT_TRUE(lumo_isvalue(t, nullptr));
}

}  // namespace
