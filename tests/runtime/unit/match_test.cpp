#include <gtest/gtest.h>

#include "support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Matching : ::testing::Test, Types {
  TempScope scope;

  bool matches(Value pattern, Value v) { return lumo_match(pattern, v, nullptr); }

  Value range(Value lower, Value upper) {
    Value t = dynamic(lumo_integer_type);
    lumo_template_set_value_range(t, lower, upper, false, nullptr);
    return t;
  }

  Value one_of(lumo_type_t type, lumo_value_list_kind_t kind, std::vector<Value> items) {
    Value t = dynamic(type);
    items.push_back(nullptr);
    lumo_template_set_value_list(t, kind, items.data(), false, nullptr);
    return t;
  }

  // A list template of the items, as a compound value is filled.
  Value items(lumo_type_t type, std::vector<Value> parts) {
    Value t = dynamic(type);
    lumo_value_set_vector_size(t, parts.size(), nullptr);
    for (size_t i = 0; i < parts.size(); ++i) lumo_value_assign_vector_element(t, i, parts[i], nullptr);
    return t;
  }

  void set_length(Value t, lumo_long_integer_t lower, Value upper) {
    lumo_template_set_length_constraint(t, integer(lower), upper, nullptr);
  }
};

TEST_F(Matching, SimpleMechanisms) {
  EXPECT_TRUE(matches(lumo_anyone_value_c, integer(1)));
  EXPECT_FALSE(matches(lumo_anyone_value_c, lumo_omit_value_c));
  EXPECT_TRUE(matches(lumo_anyornone_value_c, lumo_omit_value_c));
  EXPECT_TRUE(matches(lumo_omit_value_c, lumo_omit_value_c));
  EXPECT_FALSE(matches(lumo_omit_value_c, integer(1)));
  EXPECT_FALSE(matches(integer(1), lumo_omit_value_c));
  Value limits = range(integer(2), lumo_value_infinity_c);
  EXPECT_TRUE(matches(limits, integer(2)));
  EXPECT_FALSE(matches(limits, integer(1)));
  EXPECT_FALSE(matches(limits, lumo_omit_value_c));
  Value letters = dynamic(lumo_charstring_type);
  lumo_template_set_value_range(letters, text("a"), text("f"), false, nullptr);
  EXPECT_TRUE(matches(letters, text("face")));
  EXPECT_FALSE(matches(letters, text("fog")));
  EXPECT_EQ(fault_of([&] { matches(dynamic(lumo_integer_type), integer(1)); }),
            "use of a template that is not initialized");
}

TEST_F(Matching, ListsOfValues) {
  Value one_or_big =
      one_of(lumo_integer_type, lumo_value_list_normal_c, {integer(1), range(integer(10), integer(20))});
  EXPECT_TRUE(matches(one_or_big, integer(1)));
  EXPECT_TRUE(matches(one_or_big, integer(15)));
  EXPECT_FALSE(matches(one_or_big, integer(2)));
  Value other = one_of(lumo_integer_type, lumo_value_list_complement_c, {integer(1), integer(2)});
  EXPECT_FALSE(matches(other, integer(1)));
  EXPECT_TRUE(matches(other, integer(3)));
  EXPECT_FALSE(matches(other, lumo_omit_value_c));
}

TEST_F(Matching, PresenceAndLength) {
  Value t = dynamic(lumo_charstring_type);
  lumo_template_set_value(t, lumo_anyone_value_c, true, nullptr);
  EXPECT_TRUE(matches(t, lumo_omit_value_c));
  EXPECT_TRUE(matches(t, text("x")));
  set_length(t, 2, integer(3));
  EXPECT_TRUE(matches(t, lumo_omit_value_c));
  EXPECT_FALSE(matches(t, text("x")));
  EXPECT_TRUE(matches(t, text("xyz")));
  EXPECT_EQ(render(t), "? length(2 .. 3) ifpresent");
  Value open = dynamic(list);
  lumo_template_set_value(open, lumo_anyornone_value_c, false, nullptr);
  set_length(open, 2, lumo_value_infinity_c);
  EXPECT_FALSE(matches(open, value(list, "{ 1 }")));
  EXPECT_TRUE(matches(open, value(list, "{ 1, 2, 3 }")));
}

TEST_F(Matching, Records) {
  Value t = dynamic(inner);
  lumo_value_assign_vector_element(t, 0, range(integer(1), integer(5)), nullptr);
  lumo_value_assign_vector_element(t, 1, lumo_anyornone_value_c, nullptr);
  EXPECT_TRUE(matches(t, value(inner, "{ 3, omit }")));
  EXPECT_TRUE(matches(t, value(inner, "{ 3, \"x\" }")));
  EXPECT_FALSE(matches(t, value(inner, "{ 6, \"x\" }")));
  lumo_value_assign_vector_element(t, 1, lumo_omit_value_c, nullptr);
  EXPECT_FALSE(matches(t, value(inner, "{ 3, \"x\" }")));
  Value all = dynamic(inner);
  lumo_value_assign(all, lumo_anyone_value_c, nullptr);
  EXPECT_EQ(lumo_value_field_by_index(all, 0, nullptr), lumo_anyone_value_c);
  EXPECT_EQ(lumo_value_field_by_index(all, 1, nullptr), lumo_anyornone_value_c);
  lumo_value_assign_vector_element(all, 0, integer(1), nullptr);
  EXPECT_EQ(render(all), "{ n := 1, s := * }") << "the other fields stay open";
  Value u = dynamic(choice);
  lumo_value_assign(lumo_value_set_union_alternative_by_index(u, 0, nullptr), lumo_anyone_value_c, nullptr);
  EXPECT_TRUE(matches(u, value(choice, "{ i := 3 }")));
  EXPECT_FALSE(matches(u, value(choice, "{ r := { n := 3 } }")));
}

TEST_F(Matching, ListsWithWildcards) {
  Value star = lumo_anyornone_value_c, any = lumo_anyone_value_c;
  Value t = items(list, {integer(1), star, integer(9)});
  EXPECT_TRUE(matches(t, value(list, "{ 1, 9 }")));
  EXPECT_TRUE(matches(t, value(list, "{ 1, 5, 9, 9 }")));
  EXPECT_FALSE(matches(t, value(list, "{ 1, 9, 5 }")));
  EXPECT_FALSE(matches(t, value(list, "{ 1 }")));
  EXPECT_TRUE(matches(items(list, {star}), value(list, "{}")));
  EXPECT_TRUE(matches(items(list, {any, any}), value(list, "{ 4, 5 }")));
  EXPECT_FALSE(matches(items(list, {any, any}), value(list, "{ 4 }")));
  Value two_or_three = dynamic(lumo_integer_type);
  lumo_template_set_value(two_or_three, star, false, nullptr);
  set_length(two_or_three, 2, integer(3));
  Value bounded = items(list, {integer(1), two_or_three, integer(9)});
  EXPECT_FALSE(matches(bounded, value(list, "{ 1, 5, 9 }")));
  EXPECT_TRUE(matches(bounded, value(list, "{ 1, 5, 5, 9 }")));
  EXPECT_FALSE(matches(bounded, value(list, "{ 1, 5, 5, 5, 5, 9 }")));
}

TEST_F(Matching, Permutations) {
  Value star = lumo_anyornone_value_c;
  Value t = items(list, {integer(1), integer(2), integer(3), integer(9)});
  lumo_template_set_permutation(t, 0, 2, nullptr);
  EXPECT_TRUE(matches(t, value(list, "{ 3, 1, 2, 9 }")));
  EXPECT_FALSE(matches(t, value(list, "{ 3, 1, 1, 9 }")));
  EXPECT_FALSE(matches(t, value(list, "{ 9, 3, 1, 2 }")));
  Value open = items(list, {integer(1), star, integer(2), integer(7)});
  lumo_template_set_permutation(open, 0, 2, nullptr);
  EXPECT_TRUE(matches(open, value(list, "{ 5, 2, 6, 1, 7 }")));
  EXPECT_TRUE(matches(open, value(list, "{ 2, 1, 7 }")));
  EXPECT_FALSE(matches(open, value(list, "{ 2, 5, 7 }")));
  Value two = items(list, {integer(1), integer(2), integer(3), integer(4)});
  lumo_template_set_permutation(two, 0, 1, nullptr);
  lumo_template_set_permutation(two, 2, 3, nullptr);
  EXPECT_TRUE(matches(two, value(list, "{ 2, 1, 4, 3 }")));
  EXPECT_FALSE(matches(two, value(list, "{ 3, 1, 4, 2 }")));
  // The call of generated match functions takes kinds and lengths as arrays.
  Value templates[] = {integer(1), integer(2), star, nullptr};
  lumo_permutation_kind_t kinds[] = {lumo_permutation_head_c, lumo_permutation_tail_c, lumo_not_permutated_c};
  lumo_length_constraint_t lengths[] = {{0, -1}, {0, -1}, {1, 2}};
  auto match_arrays = [&](const char* v) {
    return lumo_recordof_match(value(list, v), templates, kinds, lengths, 3, nullptr);
  };
  EXPECT_TRUE(match_arrays("{ 2, 1, 5 }"));
  EXPECT_TRUE(match_arrays("{ 1, 2, 5, 5 }"));
  EXPECT_FALSE(match_arrays("{ 1, 2 }"));
  EXPECT_FALSE(match_arrays("{ 1, 2, 5, 5, 5 }"));
  kinds[0] = lumo_permutation_head_tail_c;
  kinds[1] = lumo_permutation_head_tail_c;
  EXPECT_FALSE(match_arrays("{ 2, 1, 5 }")) << "two permutations of one item each";
  EXPECT_TRUE(match_arrays("{ 1, 2, 5 }"));
}

TEST_F(Matching, SetsSubsetsSupersets) {
  Value any = lumo_anyone_value_c, star = lumo_anyornone_value_c;
  // The greedy choice for `?` is the wrong one here.
  Value t = items(bag, {any, integer(1), range(integer(1), integer(2))});
  EXPECT_TRUE(matches(t, value(bag, "{ 1, 2, 7 }")));
  EXPECT_TRUE(matches(t, value(bag, "{ 7, 2, 1 }")));
  EXPECT_FALSE(matches(t, value(bag, "{ 7, 3, 1 }")));
  EXPECT_TRUE(matches(items(bag, {integer(1), star}), value(bag, "{ 5, 1, 6 }")));
  Value sub = one_of(bag, lumo_value_list_subset_c, {integer(1), integer(2), any});
  EXPECT_TRUE(matches(sub, value(bag, "{ 2, 9 }")));
  EXPECT_TRUE(matches(sub, value(bag, "{}")));
  EXPECT_FALSE(matches(sub, value(bag, "{ 8, 9 }")));
  Value super = one_of(bag, lumo_value_list_superset_c, {integer(1), any});
  EXPECT_TRUE(matches(super, value(bag, "{ 5, 1, 6 }")));
  EXPECT_FALSE(matches(super, value(bag, "{ 1 }")));
  EXPECT_FALSE(matches(super, value(bag, "{ 2, 3 }")));
}

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

TEST_F(Matching, ValueOfTemplates) {
  Value t = dynamic(outer);
  lumo_value_assign_vector_element(t, 0, value(inner, "{ 1, omit }"), nullptr);
  lumo_value_assign_vector_element(t, 1, value(list, "{ 2 }"), nullptr);
  lumo_value_assign_vector_element(t, 2, lumo_omit_value_c, nullptr);
  EXPECT_EQ(render(lumo_valueof(t, lumo_temp_alloc_c, nullptr)),
            "{ in := { n := 1, s := omit }, l := { 2 }, c := omit }");
  lumo_value_assign_vector_element(lumo_value_field_by_index_lhs(t, 0, nullptr), 0, lumo_anyone_value_c,
                                   nullptr);
  EXPECT_EQ(fault_of([&] { lumo_valueof(t, lumo_temp_alloc_c, nullptr); }),
            "valueof: template does not stand for one value");
  EXPECT_EQ(fault_of([&] {
              lumo_value_assign(make_root(lumo_integer_type, lumo_temp_alloc_c), lumo_anyone_value_c,
                                nullptr);
            }),
            "valueof: template does not stand for one value");
  Value wrapped = dynamic(lumo_integer_type);
  lumo_template_set_value(wrapped, integer(7), false, nullptr);
  EXPECT_EQ(lumo_value_get_integer(wrapped, nullptr), 7);
}

TEST_F(Matching, RestrictedVariables) {
  auto restricted_to = [](unsigned long restriction) {
    return lumo_type_instantiate_dynamic_template(lumo_integer_type, lumo_temp_alloc_c, restriction, nullptr);
  };
  Value omit = restricted_to(1), one = restricted_to(2), present = restricted_to(3);
  lumo_value_assign(omit, lumo_omit_value_c, nullptr);
  lumo_value_assign(one, integer(1), nullptr);
  lumo_value_assign(present, lumo_anyone_value_c, nullptr);
  EXPECT_EQ(render(omit) + render(one) + render(present), "omit1?");
  EXPECT_NE(fault_of([&] { lumo_value_assign(omit, lumo_anyone_value_c, nullptr); }), "");
  EXPECT_NE(fault_of([&] { lumo_value_assign(one, lumo_omit_value_c, nullptr); }), "");
  EXPECT_NE(fault_of([&] { lumo_value_assign(present, lumo_anyornone_value_c, nullptr); }), "");
  Value wrapped = dynamic(lumo_integer_type);
  lumo_template_set_value(wrapped, integer(7), false, nullptr);
  lumo_value_assign(one, wrapped, nullptr);
  EXPECT_EQ(one->form, Form::integer);
}

// --- declared templates, as generated code has them

lumo_value_t seen_argument;

lumo_boolean_t match_at_least(lumo_type_t, lumo_value_t argv[], lumo_value_t v, lumo_context_t c) {
  if (argv[0] == lumo_value_default_c) {
    lumo_value_t five = lumo_type_instantiate_value(lumo_integer_type, lumo_temp_alloc_c, c);
    lumo_value_set_integer(five, 5, c);
    argv[0] = lumo_value_copy(five, lumo_perm_alloc_c, c);
  }
  return lumo_value_get_integer(v, c) >= lumo_value_get_integer(argv[0], c);
}

lumo_value_t valueof_at_least(lumo_type_t, lumo_value_t argv[], lumo_alloc_strategy_t, lumo_context_t) {
  seen_argument = argv[0];
  return argv[0];
}

lumo_value_t constraintof_at_least(lumo_type_t type, lumo_value_t[], lumo_alloc_strategy_t s,
                                   lumo_context_t c) {
  lumo_value_t v = lumo_type_instantiate_dynamic_template(type, s, 0, c);
  lumo_value_assign(v, lumo_anyone_value_c, c);
  return v;
}

unsigned long sizeof_at_least(lumo_type_t, lumo_value_t[], lumo_context_t) {
  return 4;
}

struct Declared : Matching {
  lumo_template_info_t at_least_template{lumo_integer_type, nullptr, ">= x",          valueof_at_least,
                                         nullptr,           nullptr, sizeof_at_least, match_at_least,
                                         nullptr,           nullptr};
  TypeTable at_least{"at_least", lumo_type_kind_template, {mandatory("x", lumo_integer_type)}};
  Declared() {
    at_least.info().template_info = &at_least_template;
    at_least.info().constraintof_function = reinterpret_cast<void*>(constraintof_at_least);
  }
  Value instance(Value argument, lumo_alloc_strategy_t strategy = lumo_temp_alloc_c) {
    Value argv[] = {argument, nullptr};
    return lumo_type_instantiate_template(at_least, strategy, argv, 0, nullptr);
  }
};

TEST_F(Declared, InstancesMatchWithTheirArguments) {
  Value t = instance(integer(3));
  EXPECT_TRUE(matches(t, integer(3)));
  EXPECT_FALSE(matches(t, integer(2)));
  EXPECT_EQ(render(t), ">= x");
  EXPECT_TRUE(lumo_value_is_dynamic_template(t, nullptr));
  EXPECT_EQ(lumo_value_get_integer(lumo_valueof(t, lumo_temp_alloc_c, nullptr), nullptr), 3);
  EXPECT_EQ(lumo_sizeof(t, nullptr), 4u);
  Value missing = instance(lumo_value_default_c);
  EXPECT_TRUE(matches(missing, integer(5)));
  EXPECT_FALSE(matches(missing, integer(4)));
}

TEST_F(Declared, StoredInstancesOwnTheirArguments) {
  Value argument = integer(3);
  Value kept = dynamic(lumo_integer_type);
  lumo_value_assign(kept, instance(argument), nullptr);
  lumo_value_set_integer(argument, 100, nullptr);
  EXPECT_TRUE(matches(kept, integer(3)));
  Value permanent = instance(integer(4), lumo_perm_alloc_c);
  EXPECT_FALSE(matches(permanent, integer(3)));
  lumo_value_delete(&permanent, nullptr);
  Value in_list = items(list, {kept, kept});
  EXPECT_TRUE(matches(in_list, value(list, "{ 3, 4 }")));
  EXPECT_FALSE(matches(in_list, value(list, "{ 3, 2 }")));
}

TEST_F(Declared, TemplatesCanBeOpened) {
  Value t = dynamic(lumo_integer_type);
  lumo_value_assign(t, instance(integer(3)), nullptr);
  Value opened = lumo_templateof(t, lumo_temp_alloc_c, nullptr);
  EXPECT_TRUE(matches(opened, integer(0)));
  EXPECT_EQ(render(opened), "?");
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
