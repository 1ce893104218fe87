#include <gtest/gtest.h>

#include "support.h"
#include "value/task.h"

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

TEST_F(Values, AssignmentCopiesAndKeepsParts) {
  Value a = value(outer, "{ { n := 1 }, { 7, 8 }, { i := 2 } }");
  Value b = value(outer, "{ { n := 5, s := \"x\" }, { 9 }, omit }");
  Value field = lumo_value_field_by_index(lumo_value_field_by_index(a, 0, nullptr), 0, nullptr);
  lumo_value_assign(a, b, nullptr);
  EXPECT_TRUE(lumo_is_equal(a, b, nullptr));
  EXPECT_EQ(lumo_value_get_integer(field, nullptr), 5) << "a handle to a field follows the field";
  lumo_value_set_integer(field, 6, nullptr);
  EXPECT_FALSE(lumo_is_equal(a, b, nullptr));
  EXPECT_EQ(render(b), "{ in := { n := 5, s := \"x\" }, l := { 9 }, c := omit }");
}

TEST_F(Values, ValueCanBeAssignedFromItsOwnPart) {
  TypeTable node{
      "Node", lumo_type_kind_record, {mandatory("n", lumo_integer_type), optional("next", nullptr)}};
  node.info().field_info[1].type = node;
  Value v = value(node, "{ 1, { 2, { 3, omit } } }");
  lumo_value_assign(v, lumo_value_field_by_name(v, "next", nullptr), nullptr);
  EXPECT_EQ(render(v), "{ n := 2, next := { n := 3, next := omit } }");
  lumo_value_assign_vector_element(v, 1, v, nullptr);
  EXPECT_EQ(render(v), "{ n := 2, next := { n := 2, next := { n := 3, next := omit } } }");
}

TEST_F(Values, DeepValuesAreEndedAndFaultWhereTheyCannotBeCopied) {
  TypeTable node{"Node", lumo_type_kind_record, {optional("next", nullptr)}};
  node.info().field_info[0].type = node;
  Value v = make_root(node, lumo_perm_alloc_c);
  Value last = v;
  for (int i = 0; i < 1000000; ++i) last = lumo_value_field_by_index_lhs(last, 0, nullptr);
  EXPECT_EQ(fault_of([&] { lumo_value_copy(v, lumo_temp_alloc_c, nullptr); }),
            "the calls or the value are nested too deeply");
  lumo_value_delete(&v, nullptr);
  EXPECT_EQ(v, nullptr);
}

TEST_F(Values, OptionalFields) {
  Value v = make_root(inner, lumo_temp_alloc_c);
  EXPECT_EQ(lumo_value_field_by_index(v, 1, nullptr), lumo_omit_value_c);
  EXPECT_FALSE(lumo_ispresent(v, 1, nullptr));
  EXPECT_FALSE(lumo_value_is_initialized(v, nullptr));
  lumo_value_assign_vector_element(v, 0, integer(1), nullptr);
  EXPECT_TRUE(lumo_value_is_initialized(v, nullptr));
  lumo_value_assign_vector_element(v, 1, text("x"), nullptr);
  EXPECT_TRUE(lumo_ispresent(v, 1, nullptr));
  lumo_value_assign_vector_element(v, 1, lumo_not_used_value_c, nullptr);
  EXPECT_EQ(render(v), "{ n := 1, s := \"x\" }");
  lumo_value_assign_vector_element(v, 1, lumo_omit_value_c, nullptr);
  EXPECT_EQ(render(v), "{ n := 1, s := omit }");
  Value slot = lumo_value_instantiate_omitted_field_value(v, 1, nullptr);
  lumo_value_set_string(slot, "new", nullptr);
  EXPECT_EQ(render(v), "{ n := 1, s := \"new\" }");
  EXPECT_NE(fault_of([&] { lumo_value_assign_vector_element(v, 0, lumo_omit_value_c, nullptr); }), "");
}

TEST_F(Values, ListsGrowWhereAnElementIsWritten) {
  TypeTable rows{"Rows", lumo_type_kind_recordof, {mandatory(lumo_type_array_contained_type_c, inner)}};
  Value v = make_root(rows, lumo_temp_alloc_c);
  lumo_value_set_vector_empty(v, nullptr);
  EXPECT_NE(fault_of([&] { lumo_value_get_integer(lumo_value_field_by_index(v, 3, nullptr), nullptr); }), "");
  EXPECT_EQ(lumo_value_vector_size(v, nullptr), 0u) << "reading behind the end leaves the list";
  Value element = lumo_value_field_by_index(v, 1, nullptr);
  lumo_value_assign_vector_element(element, 0, integer(5), nullptr);
  EXPECT_EQ(render(v), "{ -, { n := 5, s := omit } }");
  lumo_value_set_integer(lumo_value_field_by_index_lhs(lumo_value_field_by_index(v, 0, nullptr), 0, nullptr),
                         4, nullptr);
  EXPECT_EQ(render(v), "{ { n := 4, s := omit }, { n := 5, s := omit } }");
  EXPECT_EQ(lumo_value_try_field_by_index(v, 7, nullptr), lumo_omit_value_c);
}

TEST_F(Values, ArraysCountFromTheirBase) {
  Value v = make_root(array, lumo_temp_alloc_c);
  lumo_value_assign_vector_element_partial(v, 5, integer(1), nullptr);
  lumo_value_assign_vector_element_partial(v, 7, integer(3), nullptr);
  EXPECT_EQ(render(v), "{ 1, -, 3 }");
  EXPECT_EQ(lumo_value_get_integer(lumo_value_field_by_index(v, 7, nullptr), nullptr), 3);
  EXPECT_EQ(fault_of([&] { lumo_value_field_by_index(v, 8, nullptr); }),
            "index 8 is outside of the array 'Array'");
  EXPECT_EQ(fault_of([&] { lumo_value_field_by_index(v, 0, nullptr); }),
            "index 0 is outside of the array 'Array'");
  EXPECT_EQ(lumo_sizeoftype(v, nullptr), 3u);
}

TEST_F(Values, UnionsHoldOneAlternative) {
  Value v = make_root(choice, lumo_temp_alloc_c);
  EXPECT_EQ(lumo_value_union_index(v, nullptr), -1);
  lumo_value_set_integer(lumo_value_set_union_alternative_by_index(v, 0, nullptr), 5, nullptr);
  Value kept = lumo_value_set_union_alternative_by_index(v, 0, nullptr);
  EXPECT_EQ(lumo_value_get_integer(kept, nullptr), 5) << "choosing again keeps the contents";
  EXPECT_TRUE(lumo_ischosen(v, 0, nullptr));
  lumo_value_set_integer(
      lumo_value_field_by_index_lhs(lumo_value_set_union_alternative_by_index(v, 1, nullptr), 0, nullptr), 7,
      nullptr);
  EXPECT_EQ(render(v), "{ r := { n := 7, s := omit } }");
  EXPECT_EQ(fault_of([&] { lumo_value_field_by_name(v, "i", nullptr); }),
            "alternative 'i' of union 'Choice' is not chosen, but 'r'");
}

TEST_F(Values, SubtypesAreCheckedWhereTheyAreWritten) {
  Value v = make_root(small, lumo_temp_alloc_c);
  lumo_value_set_integer(v, 9, nullptr);
  EXPECT_EQ(fault_of([&] { lumo_value_set_integer(v, 10, nullptr); }),
            "value 10 does not belong to type 'Small'");
  EXPECT_EQ(fault_of([&] { lumo_value_assign(v, integer(11), nullptr); }),
            "value 11 does not belong to type 'Small'");
  EXPECT_TRUE(lumo_type_check(small, integer(3), nullptr));
  EXPECT_FALSE(lumo_type_check(small, integer(30), nullptr));
  EXPECT_FALSE(lumo_type_check(small, text("x"), nullptr));
  EXPECT_TRUE(lumo_type_check(small, lumo_omit_value_c, nullptr));
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

TEST_F(Values, TextKindsAreConverted) {
  Value wide = make_root(lumo_universal_charstring_type, lumo_temp_alloc_c);
  lumo_value_assign(wide, text("abc"), nullptr);
  EXPECT_TRUE(lumo_is_equal(wide, text("abc"), nullptr));
  Value narrow = make_root(lumo_charstring_type, lumo_temp_alloc_c);
  lumo_value_assign(narrow, wide, nullptr);
  EXPECT_STREQ(lumo_value_get_charstring(narrow, nullptr), "abc");
  Value c = make_root(lumo_char_type, lumo_temp_alloc_c);
  lumo_value_assign(c, text("z"), nullptr);
  EXPECT_EQ(lumo_value_get_char(c, nullptr), 'z');
  EXPECT_NE(fault_of([&] { lumo_value_assign(c, text("zz"), nullptr); }), "");
}

TEST_F(Values, StringElements) {
  Value v = text("abc");
  EXPECT_EQ(render(lumo_value_string_element(v, 1, lumo_temp_alloc_c, nullptr)), "\"b\"");
  lumo_value_assign_string_element(v, 1, text("X"), nullptr);
  lumo_value_assign_string_element(v, 3, text("d"), nullptr);
  EXPECT_EQ(render(v), "\"aXcd\"");
  EXPECT_NE(fault_of([&] { lumo_value_assign_string_element(v, 9, text("d"), nullptr); }), "");
  Value octets = value(lumo_octetstring_type, "'0102FF'O");
  EXPECT_EQ(lumo_lengthof(octets, nullptr), 3u);
  EXPECT_EQ(render(lumo_value_string_element(octets, 2, lumo_temp_alloc_c, nullptr)), "'FF'O");
  lumo_value_assign_string_element(octets, 0, value(lumo_octetstring_type, "'AA'O"), nullptr);
  EXPECT_EQ(render(octets), "'AA02FF'O");
}

TEST_F(Values, EqualityAndOrder) {
  EXPECT_TRUE(lumo_is_equal(value(bag, "{ 1, 2, 2, 3 }"), value(bag, "{ 2, 3, 1, 2 }"), nullptr));
  EXPECT_FALSE(lumo_is_equal(value(bag, "{ 1, 1, 2 }"), value(bag, "{ 1, 2, 2 }"), nullptr));
  EXPECT_FALSE(lumo_is_equal(value(list, "{ 1, 2 }"), value(list, "{ 2, 1 }"), nullptr));
  EXPECT_FALSE(lumo_is_equal(value(inner, "{ 1, omit }"), value(inner, "{ 1, \"\" }"), nullptr));
  EXPECT_TRUE(lumo_is_equal(lumo_omit_value_c, lumo_omit_value_c, nullptr));
  EXPECT_FALSE(lumo_is_equal(lumo_omit_value_c, integer(1), nullptr));
  Value a = value(lumo_objectidentifier_type, "objid { 1 3 }"),
        b = value(lumo_objectidentifier_type, "objid { 1 3 6 }");
  EXPECT_TRUE(lumo_is_lesser(a, b, nullptr));
  EXPECT_TRUE(lumo_is_greater(b, a, nullptr));
  EXPECT_FALSE(lumo_is_greater(a, a, nullptr));
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
