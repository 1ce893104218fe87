/* Asks the run-time library about the types of a generated module. */
#include "data_types.h"

#include <stdio.h>
#include <string.h>

#define CTX lumo_no_context_c

static lumo_type_t find(const char *name) {
  return lumo_find_element_with_check("data_types", name, CTX)->type_descriptor;
}

int main(void) {
  vexa_data_types_register(true, CTX);
  lumo_type_t small = find("Small");
  printf("small is %s of %s.%s\n",
         lumo_type_kind(small, CTX) == lumo_type_kind_integer ? "integer" : "nothing",
         lumo_type_definition_module(small, CTX), lumo_type_definition_name(small, CTX));
  lumo_type_t smaller = vexa_data_types_Smaller_local_type;
  printf("small of small is %s\n",
         lumo_type_kind(smaller, CTX) == lumo_type_kind_integer && smaller->type_info->resolved ? "small" : "?");
  printf("imported type is %s\n",
         lumo_type_is_equal(vexa_data_types_Far_imp_type, vexa_far_types_Far_local_type, CTX)
             ? "the type of origin"
             : "another");
  printf("field %ld is b, %s field z\n", lumo_type_field_index(find("R"), "b", CTX),
         lumo_type_field_index(find("R"), "z", CTX) < 0 ? "no" : "a");
  printf("green is %ld\n", lumo_type_enum_number_by_name(find("E"), "green", CTX));
  lumo_type_info_struct_t *array = find("A")->type_info;
  printf("array of %ld from %ld\n", array->enum_or_array_info[0].number, array->enum_or_array_info[1].number);
  printf("built-in copy is %s\n",
         lumo_type_is_equal(find("R_expl_c")->type_info->field_info[0].type, lumo_integer_type, CTX)
             ? "the built-in type"
             : "another");
  printf("address is %s\n",
         lumo_type_kind(find("R")->type_info->field_info[5].type, CTX) == lumo_type_kind_record ? "a record" : "?");
  return 0;
}
