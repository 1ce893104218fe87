#include <gtest/gtest.h>

#include <algorithm>

#include "support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Matching : ::testing::Test, Types {
  TempScope scope;

  bool matches(Value pattern, Value v) { return lumo_match(pattern, v, nullptr); }

  // A list template of the items, as a compound value is filled.
  Value items(lumo_type_t type, std::vector<Value> parts) {
    Value t = dynamic(type);
    lumo_value_set_vector_size(t, parts.size(), nullptr);
    for (size_t i = 0; i < parts.size(); ++i) lumo_value_assign_vector_element(t, i, parts[i], nullptr);
    return t;
  }
};

TEST_F(Matching, HardListsStayFast) {
  std::vector<Value> stars;
  for (int i = 0; i < 30; ++i) {
    stars.push_back(lumo_anyornone_value_c);
    stars.push_back(integer(1));
  }
  stars.push_back(integer(2));
  std::string many = "{ 1";
  for (int i = 0; i < 200; ++i) many += ", 1";
  EXPECT_FALSE(matches(items(list, stars), value(list, many + " }")));
  EXPECT_TRUE(matches(items(list, stars), value(list, many + ", 2 }")));
}

// Against all orders of the elements, one after the other.
TEST_F(Matching, PartnersAreFoundWhereThereAreAny) {
  unsigned state = 1;
  const auto chance = [&] { return (state = state * 1103515245 + 12345) >> 16 & 1; };
  for (int round = 0; round < 2000; ++round) {
    const size_t size = 2 + static_cast<size_t>(round) % 5;
    TempScope inner;
    std::vector<std::vector<bool>> takes(size, std::vector<bool>(size));
    std::vector<Value> parts;
    std::vector<size_t> order(size);
    std::string elements;
    for (size_t i = 0; i < size; ++i) {
      order[i] = i;
      elements += (i ? ", " : "{ ") + std::to_string(i);
      std::vector<lumo_value_t> choices{integer(-1)};
      for (size_t e = 0; e < size; ++e)
        if ((takes[i][e] = chance())) choices.push_back(integer(static_cast<lumo_long_integer_t>(e)));
      choices.push_back(nullptr);
      parts.push_back(dynamic(lumo_integer_type));
      lumo_template_set_value_list(parts[i], lumo_value_list_normal_c, choices.data(), false, nullptr);
    }
    bool expected = false;
    do {
      bool all = true;
      for (size_t i = 0; i < size; ++i) all = all && takes[i][order[i]];
      expected = expected || all;
    } while (!expected && std::next_permutation(order.begin(), order.end()));
    Value pattern = items(list, parts);
    lumo_template_set_permutation(pattern, 0, size - 1, nullptr);
    ASSERT_EQ(matches(pattern, value(list, elements + " }")), expected) << round;
    ASSERT_EQ(matches(items(bag, parts), value(bag, elements + " }")), expected) << round;
  }
}

TEST(Patterns, OfCharstrings) {
  TempScope scope;
  struct Case {
    const char* pattern;
    const char* text;
    bool matches;
  } cases[] = {
      {"", "", true},
      {"abc", "abc", true},
      {"abc", "abcd", false},
      {"a?c", "axc", true},
      {"a*", "a", true},
      {"*b*", "aaabaa", true},
      {"*b*", "aaaa", false},
      {"\\d\\d", "42", true},
      {"\\d\\d", "4x", false},
      {"\\w+", "ab_9", false},
      {"\\w+", "ab9", true},
      {"\\?\\*", "?*", true},
      {"[a-c]#(2,3)", "ab", true},
      {"[a-c]#(2,3)", "abca", false},
      {"[^0-9]#3", "abc", true},
      {"[^0-9]#3", "ab1", false},
      {"[a\\-z]+", "-az", true},
      {"x#(,2)y", "y", true},
      {"x#(,2)y", "xxy", true},
      {"x#(,2)y", "xxxy", false},
      {"x#(2,)", "xxxx", true},
      {"x#(2,)", "x", false},
      {"x#(3)", "xxx", true},
      {"a|b|cd", "cd", true},
      {"a|b|cd", "c", false},
      {"(a|b)#(2)c", "abc", true},
      {"(a|(b|c)+)d", "bcbd", true},
      {"(ab)+", "ababab", true},
      {"(ab)+", "aba", false},
      {"(a|)b", "b", true},
      {"\\q{0,0,0,65}B", "AB", true},
      {"[\\q{0,0,0,65}-C]", "B", true},
      {"\\t|\\r", "\t", true},
      {"a\\{b", "a{b", true},
      {"((a#(0,)))#(0,)b", "aaab", true},
  };
  for (auto& c : cases)
    EXPECT_EQ(lumo_regexp_match(text(c.pattern), text(c.text), nullptr), c.matches)
        << c.pattern << " on " << c.text;
}

TEST(Patterns, RunInLinearTime) {
  TempScope scope;
  std::string pattern, subject(30, 'a');
  for (int i = 0; i < 30; ++i) pattern += "(a|)";
  EXPECT_TRUE(lumo_regexp_match(text((pattern + subject).c_str()), text(subject.c_str()), nullptr));
  EXPECT_FALSE(lumo_regexp_match(text("(a#(0,))#(0,)b"), text(std::string(2000, 'a').c_str()), nullptr));
}

TEST(Patterns, ThatAreNotReadable) {
  TempScope scope;
  for (const char* pattern :
       {"(a", "a)", "[a", "a#", "a#(1", "a#(3,2)", "\\q{1,2}", "\\", "a#(100000)#(100000)"}) {
    std::string fault = fault_of([&] { lumo_regexp_match(text(pattern), text("a"), nullptr); });
    EXPECT_EQ(fault.substr(0, 24), "pattern is not readable:") << pattern;
  }
  std::string nested(100000, '(');
  EXPECT_NE(fault_of([&] { lumo_regexp_match(text(nested.c_str()), text("a"), nullptr); }), "");
}

TEST(Patterns, Groups) {
  TempScope scope;
  auto group = [](const char* subject, const char* pattern, int n) {
    return render(lumo_regexp_regexp(text(subject), text(pattern), n, lumo_temp_alloc_c, nullptr));
  };
  EXPECT_EQ(group("date: 15 aug 2003", "*date:[ \\t]#(1,)(\\d#(1,2)) (\\w#3) (\\d#4)", 0), "\"15\"");
  EXPECT_EQ(group("date: 15 aug 2003", "*date:[ \\t]#(1,)(\\d#(1,2)) (\\w#3) (\\d#4)", 1), "\"aug\"");
  EXPECT_EQ(group("date: 15 aug 2003", "*date:[ \\t]#(1,)(\\d#(1,2)) (\\w#3) (\\d#4)", 2), "\"2003\"");
  EXPECT_EQ(group("abc", "a(x)c", 0), "\"\"");
  EXPECT_EQ(group("abc", "(abc)", 5), "\"\"");
}

TEST(Patterns, OfBinaryStrings) {
  TempScope scope;
  struct Case {
    lumo_type_t type;
    const char* pattern;
    const char* digits;
    bool matches;
  } cases[] = {
      {lumo_bitstring_type, "10?1", "1001", true},     {lumo_bitstring_type, "10*", "10", true},
      {lumo_bitstring_type, "*01", "11001", true},     {lumo_bitstring_type, "*01", "11000", false},
      {lumo_hexstring_type, "a?c", "ABC", true},       {lumo_octetstring_type, "AB?CD", "AB12CD", true},
      {lumo_octetstring_type, "AB?CD", "ABCD", false}, {lumo_octetstring_type, "*12*", "0112", true},
      {lumo_octetstring_type, "*12*", "0120", false},
  };
  for (auto& c : cases) {
    Value v = lumo_value_set_string(make_root(c.type, lumo_temp_alloc_c), c.digits, nullptr);
    EXPECT_EQ(lumo_regexp_match(text(c.pattern), v, nullptr), c.matches) << c.pattern << " on " << c.digits;
  }
}

}  // namespace
