#include <gtest/gtest.h>

#include "support.h"
#include "run/task.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

struct Values : ::testing::Test, Types {
  TempScope scope;
};

TEST_F(Values, NotationIsReadAndWritten) {
  struct Case {
    lumo_type_t type;
    const char* text;
    const char* shown;  // null: as read
  } cases[] = {
      {lumo_integer_type, "-42", nullptr},
      {lumo_integer_type, "9223372036854775807", nullptr},
      {lumo_float_type, "1.0e100", "1.0E100"},
      {lumo_float_type, "0.1", nullptr},
      {lumo_float_type, "-infinity", nullptr},
      {lumo_float_type, "3.0", nullptr},
      {lumo_boolean_type, "true", nullptr},
      {lumo_verdicttype_type, "inconc", nullptr},
      {lumo_bitstring_type, "'01 10'B", "'0110'B"},
      {lumo_hexstring_type, "'aF9'H", "'AF9'H"},
      {lumo_octetstring_type, "''O", nullptr},
      {lumo_charstring_type, "\"say \"\"a\"\"\"", nullptr},
      {lumo_charstring_type, "\"\"", nullptr},
      {lumo_charstring_type, "\"a\" & char(0, 0, 0, 10) & \"b\"", nullptr},
      {lumo_universal_charstring_type, "char(0, 0, 3, 177) & \"x\"", nullptr},
      {lumo_universal_char_type, "char(0, 0, 3, 177)", nullptr},
      {lumo_objectidentifier_type, "objid { 1 3 6 }", nullptr},
      {color, "green", nullptr},
      {list, "{ 1, 2, 3 }", nullptr},
      {list, "{}", nullptr},
      {array, "{ 1, 2, 3 }", nullptr},
      {inner, "{ n := 1, s := omit }", nullptr},
      {inner, "{ 1, \"x\" }", "{ n := 1, s := \"x\" }"},
      {inner, "{ s := \"x\", n := 1 }", "{ n := 1, s := \"x\" }"},
      {choice, "{ r := { n := 1, s := omit } }", nullptr},
      {outer, "{ { n := 1 }, { 7 }, { i := 2 } }",
       "{ in := { n := 1, s := omit }, l := { 7 }, c := { i := 2 } }"},
  };
  for (const Case& c : cases) {
    Value v = value(c.type, c.text);
    ASSERT_TRUE(v) << c.text;
    EXPECT_EQ(render(v), c.shown ? c.shown : c.text);
  }
}

TEST_F(Values, NotationThatIsWrongIsRefused) {
  struct Case {
    lumo_type_t type;
    const char* text;
    const char* error;
  } cases[] = {
      {lumo_integer_type, "", "an integer is missing at character 1"},
      {lumo_integer_type, "12x", "text is left behind the value at character 3"},
      {lumo_integer_type, "92233720368547758070", "the integer is too large at character 21"},
      {lumo_octetstring_type, "'ABC'O", "the number of digits is odd at character 7"},
      {lumo_bitstring_type, "'012'B", "a digit is expected at character 5"},
      {lumo_charstring_type, "\"open", "the end of the text is missing at character 6"},
      {color, "yellow", "a name of the enumeration is missing at character 7"},
      {inner, "{ 1, \"a\", 3 }", "there are too many fields at character 10"},
      {inner, "{ omit }", "a mandatory field cannot be omitted at character 7"},
      {inner, "{ x := 1 }", "the type has no such field at character 7"},
      {array, "{ 1, 2, 3, 4 }", "there are too many elements at character 11"},
      {choice, "{ 5 }", "the name of an alternative is missing at character 3"},
  };
  for (const Case& c : cases) {
    std::string error;
    EXPECT_FALSE(read_value(make_root(c.type, lumo_temp_alloc_c), c.text, error)) << c.text;
    EXPECT_EQ(error, c.error) << c.text;
  }
}

TEST_F(Values, NestedNotationEndsOrderly) {
  TypeTable tree{"Tree", lumo_type_kind_recordof, {mandatory(lumo_type_array_contained_type_c, nullptr)}};
  tree.info().field_info[0].type = tree;
  std::string error;
  EXPECT_FALSE(read_value(make_root(tree, lumo_temp_alloc_c), std::string(100000, '{'), error));
  EXPECT_EQ(error.substr(0, 33), "the value is nested too deeply at");
}

TEST_F(Values, DeepValuesAreEndedAndFaultWhereTheyCannotBeCopied) {
  TypeTable node{"Node", lumo_type_kind_record, {optional("next", nullptr)}};
  node.info().field_info[0].type = node;
  Value v = make_root(node, lumo_perm_alloc_c);
  Value last = v;
  for (int i = 0; i < 1000000; ++i) last = lumo_value_field_by_index_lhs(last, 0, nullptr);
  lumo_value_set_omit(last, 0, nullptr);
  EXPECT_EQ(fault_of([&] { lumo_value_copy(v, lumo_temp_alloc_c, nullptr); }),
            "the calls or the value are nested too deeply");
  lumo_value_delete(&v, nullptr);
  EXPECT_EQ(v, nullptr);
}

TEST_F(Values, UseBeforeInitializationIsAFault) {
  Value v = lumo_type_instantiate_named_value(lumo_integer_type, "counter", lumo_temp_alloc_c, nullptr);
  EXPECT_EQ(fault_of([&] { lumo_value_get_integer(v, nullptr); }),
            "use of an integer that is not initialized: counter");
  EXPECT_EQ(fault_of([&] { lumo_value_assign(integer(1), v, nullptr); }),
            "use of a value that is not initialized");
  EXPECT_EQ(fault_of([&] { lumo_value_get_integer(lumo_illegal_value_c, nullptr); }),
            "use of an integer that is not initialized");
  EXPECT_EQ(fault_of([&] { lumo_value_set_integer(lumo_illegal_value_c, 1, nullptr); }),
            "assignment to something that is no variable");
  EXPECT_EQ(fault_of([&] { lumo_value_get_integer(nullptr, nullptr); }),
            "use of a value that is not initialized");
  EXPECT_EQ(fault_of([&] { lumo_value_get_integer(text("x"), nullptr); }),
            "an integer is needed, not a value of type 'charstring'");
  EXPECT_EQ(fault_of([&] { lumo_value_assign(integer(1), text("x"), nullptr); }),
            "a value of type 'charstring' cannot be assigned to a value of type 'integer'");
}

TEST_F(Values, ScopesEndTheirValues) {
  size_t before = current_task->roots.size();
  lumo_memory_scope_t outer_scope, inner_scope;
  lumo_memory_temp_begin(&outer_scope, nullptr);
  Value kept = integer(1);
  lumo_memory_temp_begin(&inner_scope, nullptr);
  for (int i = 0; i < 100; ++i) integer(i);
  lumo_memory_temp_clear(&inner_scope, nullptr);
  EXPECT_EQ(current_task->roots.size(), before + 1);
  EXPECT_EQ(lumo_value_get_integer(kept, nullptr), 1);
  lumo_memory_temp_end(&inner_scope, nullptr);
  lumo_memory_temp_end(&outer_scope, nullptr);
  EXPECT_EQ(current_task->roots.size(), before);
}

TEST_F(Values, PartsThatAreTakenAwayLiveToTheEndOfTheScope) {
  Value v = value(list, "{ 1, 2, 3 }");
  Value third = lumo_value_field_by_index(v, 2, nullptr);
  lumo_value_set_vector_size(v, 1, nullptr);
  EXPECT_EQ(lumo_value_get_integer(third, nullptr), 3);
}

}  // namespace
