/* module Base {
     type integer Small (0 .. 9);
     type record Pair { Small a, charstring b optional }
     const Small limit := 7;
     modulepar { integer step := 2 };
     function twice(in integer x := 21) return integer { return x * 2 }
   } */
#include "Base.h"

static lumo_symbol_entry_struct_t vexa_symbol_table[8];
static lumo_type_info_struct_t vexa_Small_type_info_struct;
static lumo_type_info_struct_t vexa_Pair_type_info_struct;
static lumo_field_info_t vexa_Pair_field_info[2];
static lumo_boolean_t vexa_Small_check(lumo_type_t vexa_type, lumo_value_t vexa_value, lumo_context_t vexa_context);
static void vexa_twice_func(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context);
static bool vexa_Base_is_registered = false;
static bool vexa_Base_is_initialized = false;
static bool vexa_Base_mod_params_initialized = false;
static bool vexa_Base_is_finalized = false;
static lumo_boolean_t vexa_template_continue_match;
static lumo_value_t vexa_loc_const_Base_limit;
static lumo_value_t vexa_loc_mod_par_Base_step;
static const void *RTS_MAGIC_NUMBER_CHECK = &(RTS_MAGIC_NUMBER_3_3_0_2_17499);

lumo_type_struct_t vexa_Base_Small_type_struct = {NULL, NULL, NULL, NULL, NULL, NULL,
                                                  NULL, NULL, &(vexa_Small_type_info_struct)};
lumo_type_struct_t vexa_Base_Pair_type_struct = {NULL, NULL, NULL, NULL, NULL, NULL,
                                                 NULL, NULL, &(vexa_Pair_type_info_struct)};
static lumo_type_info_struct_t vexa_Small_type_info_struct = {
    "Small", "Base", lumo_type_kind_integer,        lumo_STATIC_integer_type, false, NULL,
    ((void *)vexa_Small_check), NULL, NULL, -1, NULL, NULL, NULL};
static lumo_type_info_struct_t vexa_Pair_type_info_struct = {
    "Pair", "Base", lumo_type_kind_record, NULL, true, NULL, NULL, NULL, NULL, 2, vexa_Pair_field_info, NULL, NULL};
static lumo_field_info_t vexa_Pair_field_info[] = {
    {"a", lumo_field_property_mandatory_c, &(vexa_Base_Small_type_struct), NULL},
    {"b", lumo_field_property_optional_c, lumo_STATIC_charstring_type, NULL}};

static lumo_field_info_t vexa_Base_twice_local_signature_field_info[] = {
    {"x", lumo_type_parameter_in_c | lumo_field_property_none_templ_restr_c, lumo_STATIC_integer_type, NULL},
    {"", lumo_field_property_return_value_c, lumo_STATIC_integer_type, NULL}};
static lumo_type_info_struct_t vexa_Base_twice_local_signature_info_struct = {
    "twice", "Base", lumo_type_kind_signature, NULL, true, NULL, NULL, NULL, NULL, 2,
    vexa_Base_twice_local_signature_field_info, NULL, NULL};
static lumo_type_struct_t vexa_Base_twice_local_signature_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Base_twice_local_signature_info_struct)};
static lumo_field_info_t vexa_Base_twice_local_type_field_info[] = {
    {"", lumo_field_no_property_c, &(vexa_Base_twice_local_signature_struct), NULL}};
static lumo_type_info_struct_t vexa_Base_twice_local_type_info_struct = {
    "twice", "Base", lumo_type_kind_function, NULL, true, NULL, NULL, NULL, NULL, 1,
    vexa_Base_twice_local_type_field_info, NULL, NULL};
static lumo_type_struct_t vexa_Base_twice_local_type_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Base_twice_local_type_info_struct)};

static lumo_symbol_entry_struct_t vexa_symbol_table[] = {
    {"Base", lumo_symbol_entry_kind_module, NULL, NULL, NULL, NULL, NULL},
    {"module initialize", lumo_symbol_entry_kind_initialize_function, NULL, NULL, ((void *)vexa_Base_initialize),
     NULL, NULL},
    {"module params initialize", lumo_symbol_entry_kind_initialize_function, NULL, NULL,
     ((void *)vexa_Base_params_initialize), NULL, NULL},
    {"module finalize", lumo_symbol_entry_kind_finalize_function, NULL, NULL, ((void *)vexa_Base_finalize), NULL,
     NULL},
    {"Small", lumo_symbol_entry_kind_userdefined_type, &(vexa_Base_Small_type_struct), NULL, NULL, NULL},
    {"Pair", lumo_symbol_entry_kind_userdefined_type, &(vexa_Base_Pair_type_struct), NULL, NULL, NULL},
    {"limit", lumo_symbol_entry_kind_constant, &(vexa_Base_Small_type_struct), NULL, NULL, NULL, NULL},
    {"twice", lumo_symbol_entry_kind_function, &(vexa_Base_twice_local_type_struct), NULL,
     ((void *)vexa_twice_func), NULL, NULL}};

static lumo_boolean_t vexa_Small_check(lumo_type_t vexa_type, lumo_value_t vexa_value, lumo_context_t vexa_context) {
  lumo_boolean_t v0 = true;
  if (!(lumo_type_check_builtin(vexa_type, vexa_value, vexa_context))) return false;
  lumo_long_integer_t v1 = lumo_value_get_integer(vexa_value, vexa_context);
  if (!(lumo_long_integer_literal(0) <= v1 && v1 <= lumo_long_integer_literal(9))) {
    lumo_log_template_mismatch_by_name_event("", "value outside range", vexa_value, lumo_no_value_c, vexa_context);
    return false;
  }
  return v0;
}

static void vexa_twice_func(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc;
  if (vexa_argv[0] == lumo_value_default_c) {
    lumo_value_t v0 = lumo_type_instantiate_value(lumo_integer_type, lumo_temp_alloc_c, vexa_context);
    lumo_value_set_integer(v0, lumo_long_integer_literal(21), vexa_context);
    vexa_argv[0] = lumo_value_copy(v0, lumo_perm_alloc_c, vexa_context);
  }
  lumo_source_location_push("Base", "twice", vexa_argv, lumo_scope_function_c, "Base.ttcn", 5, vexa_context);
  lumo_value_set_integer(vexa_argv[1],
                         (lumo_value_get_integer(vexa_argv[0], vexa_context) * lumo_long_integer_literal(2)),
                         vexa_context);
  lumo_source_location_pop(vexa_context);
}

void vexa_Base_register(lumo_boolean_t is_root, lumo_context_t vexa_context) {
  if (!(vexa_Base_is_registered)) {
    vexa_Base_is_registered = true;
    vexa_Base_is_initialized = false;
    vexa_Base_mod_params_initialized = false;
    vexa_Base_is_finalized = false;
    /* resolving subtype information from parent */
    lumo__type_resolve_parent_info(vexa_Base_Small_local_type, vexa_context);
    lumo_module_register("Base", is_root, vexa_symbol_table, 8, "TTCN-3:2003", vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Base registered", vexa_context);
  }
}

void vexa_Base_initialize(lumo_context_t vexa_context) {
  if (!(vexa_Base_is_initialized)) {
    vexa_Base_is_initialized = true;
    lumo_source_location_push("Base", "Base_module_initialization", NULL, lumo_scope_undefined_c, "Base.ttcn", 1,
                              vexa_context);
    vexa_template_continue_match = lumo_match_continue_on_fail(vexa_context);
    /* Base.ttcn - line 3 : T3ConstDecl */
    lumo_source_location_set_line(3, vexa_context);
    vexa_loc_const_Base_limit =
        lumo_type_instantiate_named_value(vexa_Base_Small_local_type, "limit", lumo_perm_alloc_c, vexa_context);
    lumo_value_set_integer(vexa_loc_const_Base_limit, lumo_long_integer_literal(7), vexa_context);
    (lumo_find_element_with_check("Base", "limit", vexa_context))->value_descriptor = vexa_loc_const_Base_limit;
    lumo_source_location_set_line(6, vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Base initialized", vexa_context);
    lumo_source_location_pop(vexa_context);
  }
}

void vexa_Base_params_initialize(lumo_context_t vexa_context) {
  if (!(vexa_Base_mod_params_initialized)) {
    vexa_Base_mod_params_initialized = true;
    lumo_source_location_push("Base", "Base_module_parameters_initialization", NULL, lumo_scope_undefined_c,
                              "Base.ttcn", 1, vexa_context);
    vexa_loc_mod_par_Base_step =
        lumo_type_instantiate_named_value(lumo_integer_type, "step", lumo_perm_alloc_c, vexa_context);
    if (!(lumo_retrieve_module_parameter("Base", "step", vexa_loc_mod_par_Base_step, vexa_context))) {
      lumo_value_set_integer(vexa_loc_mod_par_Base_step, lumo_long_integer_literal(2), vexa_context);
    }
    lumo_value_t shown[] = {vexa_loc_mod_par_Base_step, NULL};
    lumo_log_list_to_all(lumo_log_msg_ttcn3_c, shown, vexa_context);
    lumo_source_location_set_line(6, vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Base - module parameters initialized", vexa_context);
    lumo_source_location_pop(vexa_context);
  }
}

void vexa_Base_finalize(lumo_context_t vexa_context) {
  if (!(vexa_Base_is_finalized)) {
    vexa_Base_is_finalized = true;
    vexa_Base_is_initialized = false;
    vexa_Base_mod_params_initialized = false;
    lumo_value_delete(&(vexa_loc_const_Base_limit), vexa_context);
    vexa_loc_const_Base_limit = NULL;
    lumo_value_delete(&(vexa_loc_mod_par_Base_step), vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Base finalized", vexa_context);
  }
  (void)RTS_MAGIC_NUMBER_CHECK;
  (void)vexa_template_continue_match;
}
