#include <gtest/gtest.h>

#include "text/codec.h"
#include "support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct TypeTables : ::testing::Test, Types {
  TempScope scope;
};

TEST_F(TypeTables, CyclicTablesEnd) {
  TypeTable a{"A", lumo_type_kind_integer}, b{"B", lumo_type_kind_integer};
  a.make_subtype_of(b, nullptr);
  b.make_subtype_of(a, nullptr);
  EXPECT_EQ(base_kind(a), lumo_type_kind_integer);
  EXPECT_FALSE(has_check(a));
  EXPECT_NE(root_of(a), nullptr);
}

// --- values and codecs of the user

lumo_codecs_result_t encode_one_octet(lumo_value_t v, lumo_binary_string_t data, lumo_context_t c) {
  lumo_long_integer_t number = lumo_value_get_integer(v, c);
  if (number < 0 || number > 255) return lumo_codecs_result_failed_c;
  auto octet = static_cast<unsigned char>(number);
  lumo_binary_string_append(data, &octet, 1, c);
  return lumo_codecs_result_succeeded_c;
}

lumo_codecs_result_t decode_one_octet(lumo_binary_string_iter_t* data, lumo_type_t type,
                                      lumo_alloc_strategy_t strategy, lumo_value_t* v, lumo_context_t c) {
  if (lumo_binary_string_iter_remaining(data) == 0) return lumo_codecs_result_failed_c;
  *v = lumo_value_set_integer(lumo_type_instantiate_value(type, strategy, c),
                              *lumo_binary_string_iter_octets(data), c);
  lumo_binary_string_iter_advance(data, 1);
  return lumo_codecs_result_succeeded_c;
}

TEST_F(TypeTables, CodecsOfATypeServeItsSubtypes) {
  TypeTable byte{"Byte", lumo_type_kind_integer}, sub{"SubByte", lumo_type_kind_integer};
  byte.make_subtype_of(lumo_integer_type, nullptr);
  sub.make_subtype_of(byte, nullptr);
  lumo_type_set_encoder(byte, encode_one_octet, nullptr);
  lumo_type_set_decoder(byte, decode_one_octet, nullptr);
  EXPECT_EQ(lumo_type_get_encoder(byte, nullptr), encode_one_octet);
  Value v = lumo_value_set_integer(make_root(sub, lumo_temp_alloc_c), 65, nullptr);
  std::string octets, fault;
  EXPECT_TRUE(encode_value(v, octets, fault));
  EXPECT_EQ(octets, "A");
  lumo_value_set_integer(v, 300, nullptr);
  EXPECT_FALSE(encode_value(v, octets, fault));
  EXPECT_EQ(octets, "A") << "a codec that fails leaves nothing behind";
  EXPECT_EQ(decode_value(sub, "AB", nullptr, fault), nullptr) << "octets are left";
  size_t taken = 0;
  EXPECT_EQ(render(decode_value(sub, "AB", &taken, fault)), "65");
  EXPECT_EQ(taken, 1u);
  EXPECT_EQ(decode_value(sub, "", &taken, fault), nullptr);
}

TEST_F(TypeTables, PlainCodecs) {
  struct Case {
    lumo_type_t type;
    const char* notation;
    std::string octets;
  } cases[] = {
      {lumo_charstring_type, "\"a\" & char(0, 0, 0, 10)", "a\n"},
      {lumo_universal_charstring_type, "char(0, 0, 3, 177)", "\xCE\xB1"},
      {lumo_universal_charstring_type, "char(0, 1, 246, 0)", "\xF0\x9F\x98\x80"},
      {lumo_universal_charstring_type, "char(127, 255, 255, 255)", "\xFD\xBF\xBF\xBF\xBF\xBF"},
      {lumo_octetstring_type, "'00FF'O", std::string("\0\xFF", 2)},
      {lumo_bitstring_type, "'101'B", "'101'B"},
      {inner, "{ n := 1, s := omit }", "{ n := 1, s := omit }"},
  };
  for (const Case& c : cases) {
    std::string octets, fault;
    EXPECT_TRUE(encode_value(value(c.type, c.notation), octets, fault));
    EXPECT_EQ(octets, c.octets) << c.notation;
    Value back = decode_value(c.type, c.octets, nullptr, fault);
    ASSERT_TRUE(back) << c.notation;
    EXPECT_EQ(render(back), c.notation);
  }
  std::string fault;
  for (const char* broken : {"\x80", "\xC3", "\xE2\x82", "\xC3\x28"})
    EXPECT_EQ(decode_value(lumo_universal_charstring_type, broken, nullptr, fault), nullptr);
  EXPECT_EQ(decode_value(inner, "{ n := x }", nullptr, fault), nullptr);
}

}  // namespace
