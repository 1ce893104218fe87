/* module Main {
     import from Base all;
     type component C { var integer count := 5; timer t := 0.5 }
     testcase tc_good() runs on C { log("twice 21 is ", twice(), " limit ", limit); setverdict(pass) }
     testcase tc_wrong() runs on C { setverdict(fail, "on purpose ", count) }
     testcase tc_error() runs on C { var Small s := 8; s := s + limit }
     testcase tc_param(integer i) runs on C { setverdict(pass) }
     control { execute(tc_good()); execute(tc_wrong()); execute(tc_error()) }
   } */
#include "Main.h"

static lumo_symbol_entry_struct_t vexa_symbol_table[13];
static bool vexa_Main_is_registered = false;
static bool vexa_Main_is_initialized = false;
static bool vexa_Main_mod_params_initialized = false;
static bool vexa_Main_is_finalized = false;
static lumo_function_t vexa_imp_func_Base_twice;
static lumo_value_t vexa_imp_const_Base_limit;
static const void *RTS_MAGIC_NUMBER_CHECK = &(RTS_MAGIC_NUMBER_3_3_0_2_17499);

static lumo_type_struct_t vexa_imp_type_Main_Base_Small = {"Base", "Small", NULL, NULL, NULL, NULL, NULL, NULL, NULL};

static lumo_value_t vexa_C_postprocess_func(lumo_value_t value, lumo_context_t vexa_context) {
  lumo_source_location_push("Main", "C def", NULL, lumo_scope_undefined_c, "Main.ttcn", 3, vexa_context);
  lumo_value_set_integer(lumo_value_field_by_index(value, 0, vexa_context), lumo_long_integer_literal(5), vexa_context);
  lumo_value_set_timer_default_duration(lumo_value_field_by_index(value, 1, vexa_context), 0.5, vexa_context);
  lumo_source_location_pop(vexa_context);
  return value;
}

static lumo_field_info_t vexa_C_component_field_info[] = {
    {"count", lumo_field_no_property_c, lumo_STATIC_integer_type, NULL},
    {"t", lumo_field_no_property_c, lumo_STATIC_timer_type, NULL}};
static lumo_type_info_struct_t vexa_C_component_record_info_struct = {
    "C", "Main", lumo_type_kind_component, NULL, true, NULL, ((void *)vexa_C_postprocess_func), NULL, NULL, 0,
    NULL, 2, vexa_C_component_field_info};
static lumo_type_struct_t vexa_Main_C_component_record_type = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_C_component_record_info_struct)};
static lumo_field_info_t vexa_C_field_info[] = {
    {"<component record>", lumo_field_no_property_c, &(vexa_Main_C_component_record_type), NULL}};
static lumo_type_info_struct_t vexa_C_type_info_struct = {
    "C", "Main", lumo_type_kind_component_ref, NULL, true, NULL, NULL, NULL, NULL, 1, vexa_C_field_info, NULL, NULL};
lumo_type_struct_t vexa_Main_C_type_struct = {NULL, NULL, NULL, NULL, NULL, NULL,
                                              NULL, NULL, &(vexa_C_type_info_struct)};

static lumo_type_info_struct_t vexa_Main_tc_signature_info_struct = {
    "tc", "Main", lumo_type_kind_signature, NULL, true, NULL, NULL, NULL, NULL, 0, NULL, NULL, NULL};
static lumo_type_struct_t vexa_Main_tc_signature_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Main_tc_signature_info_struct)};
static lumo_field_info_t vexa_Main_tc_param_signature_field_info[] = {
    {"i", lumo_type_parameter_in_c, lumo_STATIC_integer_type, NULL}};
static lumo_type_info_struct_t vexa_Main_tc_param_signature_info_struct = {
    "tc_param", "Main", lumo_type_kind_signature, NULL, true, NULL, NULL, NULL, NULL, 1,
    vexa_Main_tc_param_signature_field_info, NULL, NULL};
static lumo_type_struct_t vexa_Main_tc_param_signature_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Main_tc_param_signature_info_struct)};
static lumo_field_info_t vexa_Main_tc_field_info[] = {
    {"", lumo_field_no_property_c, &(vexa_Main_tc_signature_struct), NULL},
    {"", lumo_field_no_property_c, &(vexa_Main_C_type_struct), NULL},
    {"", lumo_field_no_property_c, NULL, NULL}};
static lumo_field_info_t vexa_Main_tc_param_field_info[] = {
    {"", lumo_field_no_property_c, &(vexa_Main_tc_param_signature_struct), NULL},
    {"", lumo_field_no_property_c, &(vexa_Main_C_type_struct), NULL},
    {"", lumo_field_no_property_c, NULL, NULL}};
static lumo_type_info_struct_t vexa_Main_tc_info_struct = {
    "tc", "Main", lumo_type_kind_test_case, NULL, true, NULL, NULL, NULL, NULL, 3, vexa_Main_tc_field_info, NULL, NULL};
static lumo_type_struct_t vexa_Main_tc_type_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Main_tc_info_struct)};
static lumo_type_info_struct_t vexa_Main_tc_param_info_struct = {
    "tc_param", "Main", lumo_type_kind_test_case, NULL, true, NULL, NULL, NULL, NULL, 3,
    vexa_Main_tc_param_field_info, NULL, NULL};
static lumo_type_struct_t vexa_Main_tc_param_type_struct = {
    NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, &(vexa_Main_tc_param_info_struct)};

static void begin_testcase(const char *name, unsigned long line, lumo_context_t vexa_context) {
  lumo_source_location_push("Main", name, NULL, lumo_scope_testcase_c, "Main.ttcn", line, vexa_context);
  lumo_component_set_system_component_type(&(vexa_Main_C_type_struct), vexa_context);
}

static void end_testcase(lumo_context_t vexa_context) {
  lumo_source_location_pop(vexa_context);
  lumo_component_stop(lumo_no_value_c, vexa_context);
}

static lumo_value_t text(const char *content, lumo_context_t vexa_context) {
  lumo_value_t v = lumo_type_instantiate_value(lumo_charstring_type, lumo_temp_alloc_c, vexa_context);
  return lumo_value_set_string(v, content, vexa_context);
}

static void set_verdict(lumo_verdict_t verdict, lumo_value_t reasons[], lumo_context_t vexa_context) {
  lumo_value_t v = lumo_type_instantiate_value(lumo_verdicttype_type, lumo_temp_alloc_c, vexa_context);
  lumo_value_set_verdict(v, verdict, vexa_context);
  lumo_component_set_local_verdict(v, reasons, vexa_context);
}

static void vexa_tc_good_testcase(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc, (void)vexa_argv;
  begin_testcase("tc_good", 4, vexa_context);
  lumo_value_t result = lumo_type_instantiate_value(lumo_integer_type, lumo_temp_alloc_c, vexa_context);
  lumo_value_t v0[3] = {lumo_value_default_c, result, NULL};
  lumo_call_function((*vexa_imp_func_Base_twice),
                     lumo_find_element_with_check("Base", "twice", vexa_context)->type_descriptor, 1, v0, vexa_context);
  lumo_value_t v1[5] = {text("twice 21 is ", vexa_context), result, text(" limit ", vexa_context),
                        vexa_imp_const_Base_limit, NULL};
  lumo_log_list_to_all(lumo_log_msg_ttcn3_c, v1, vexa_context);
  set_verdict(lumo_value_verdict_pass_c, NULL, vexa_context);
  end_testcase(vexa_context);
}

static void vexa_tc_wrong_testcase(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc, (void)vexa_argv;
  begin_testcase("tc_wrong", 5, vexa_context);
  lumo_value_t reasons[3] = {text("on purpose ", vexa_context), lumo_component_element("count", vexa_context), NULL};
  set_verdict(lumo_value_verdict_fail_c, reasons, vexa_context);
  end_testcase(vexa_context);
}

static void vexa_tc_error_testcase(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc, (void)vexa_argv;
  begin_testcase("tc_error", 6, vexa_context);
  lumo_value_t s = lumo_type_instantiate_named_value(&(vexa_imp_type_Main_Base_Small), "s", lumo_temp_alloc_c, vexa_context);
  lumo_value_set_integer(s, lumo_long_integer_literal(8), vexa_context);
  lumo_value_set_integer(
      s, (lumo_value_get_integer(s, vexa_context) + lumo_value_get_integer(vexa_imp_const_Base_limit, vexa_context)),
      vexa_context);
  set_verdict(lumo_value_verdict_pass_c, NULL, vexa_context);
  end_testcase(vexa_context);
}

static void vexa_tc_param_testcase(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc, (void)vexa_argv;
  begin_testcase("tc_param", 7, vexa_context);
  end_testcase(vexa_context);
}

static void control_part_func(unsigned long vexa_argc, lumo_value_t vexa_argv[], lumo_context_t vexa_context) {
  (void)vexa_argc, (void)vexa_argv;
  lumo_source_location_push("Main", "control", NULL, lumo_scope_control_part_c, "Main.ttcn", 8, vexa_context);
  lumo_component_execute("Main", "tc_good", 0, NULL, lumo_duration_forever_c, vexa_context);
  lumo_component_execute("Main", "tc_wrong", 0, NULL, lumo_duration_forever_c, vexa_context);
  lumo_component_execute("Main", "tc_error", 0, NULL, lumo_duration_forever_c, vexa_context);
  lumo_source_location_pop(vexa_context);
}

static lumo_symbol_entry_struct_t vexa_symbol_table[] = {
    {"Main", lumo_symbol_entry_kind_module, NULL, NULL, NULL, NULL, NULL},
    {"module initialize", lumo_symbol_entry_kind_initialize_function, NULL, NULL, ((void *)vexa_Main_initialize),
     NULL, NULL},
    {"module params initialize", lumo_symbol_entry_kind_initialize_function, NULL, NULL,
     ((void *)vexa_Main_params_initialize), NULL, NULL},
    {"module finalize", lumo_symbol_entry_kind_finalize_function, NULL, NULL, ((void *)vexa_Main_finalize), NULL,
     NULL},
    {"Base", lumo_symbol_entry_kind_imported_module, NULL, NULL, NULL, NULL, NULL},
    {"Base.twice", lumo_symbol_entry_kind_function, NULL, NULL, NULL, NULL, NULL},
    {"Base.limit", lumo_symbol_entry_kind_constant, &(vexa_imp_type_Main_Base_Small), NULL, NULL, NULL, NULL},
    {"C", lumo_symbol_entry_kind_userdefined_type, &(vexa_Main_C_type_struct), NULL, NULL, NULL},
    {"tc_good", lumo_symbol_entry_kind_testcase, &(vexa_Main_tc_type_struct), NULL, ((void *)vexa_tc_good_testcase),
     NULL, NULL},
    {"tc_wrong", lumo_symbol_entry_kind_testcase, &(vexa_Main_tc_type_struct), NULL,
     ((void *)vexa_tc_wrong_testcase), NULL, NULL},
    {"tc_error", lumo_symbol_entry_kind_testcase, &(vexa_Main_tc_type_struct), NULL,
     ((void *)vexa_tc_error_testcase), NULL, NULL},
    {"tc_param", lumo_symbol_entry_kind_testcase, &(vexa_Main_tc_param_type_struct), NULL,
     ((void *)vexa_tc_param_testcase), NULL, NULL},
    {"control part function", lumo_symbol_entry_kind_control_part_function, NULL, NULL, ((void *)control_part_func),
     NULL, NULL}};

void vexa_Main_register(lumo_boolean_t is_root, lumo_context_t vexa_context) {
  if (!(vexa_Main_is_registered)) {
    vexa_Main_is_registered = true;
    vexa_Main_is_initialized = false;
    vexa_Main_mod_params_initialized = false;
    vexa_Main_is_finalized = false;
    vexa_Base_register(false, vexa_context);
    /* setting type info struct for imported type */
    (vexa_imp_type_Main_Base_Small.type_info) =
        ((lumo_find_element_with_check("Base", "Small", vexa_context))->type_descriptor)->type_info;
    /* binding imported function */
    vexa_imp_func_Base_twice =
        (lumo_function_t)(lumo_find_element_with_check("Base", "twice", vexa_context))->function_ptr;
    lumo_module_register("Main", is_root, vexa_symbol_table, 13, NULL, vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Main registered", vexa_context);
  }
}

void vexa_Main_initialize(lumo_context_t vexa_context) {
  if (!(vexa_Main_is_initialized)) {
    vexa_Main_is_initialized = true;
    lumo_source_location_push("Main", "Main_module_initialization", NULL, lumo_scope_undefined_c, "Main.ttcn", 1,
                              vexa_context);
    vexa_Base_initialize(vexa_context);
    vexa_imp_const_Base_limit =
        (lumo_value_t)(lumo_find_element_with_check("Base", "limit", vexa_context))->value_descriptor;
    lumo_source_location_set_line(9, vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Main initialized", vexa_context);
    lumo_source_location_pop(vexa_context);
  }
}

void vexa_Main_params_initialize(lumo_context_t vexa_context) {
  if (!(vexa_Main_mod_params_initialized)) {
    vexa_Main_mod_params_initialized = true;
    lumo_source_location_push("Main", "Main_module_parameters_initialization", NULL, lumo_scope_undefined_c,
                              "Main.ttcn", 1, vexa_context);
    vexa_Base_params_initialize(vexa_context);
    lumo_source_location_set_line(9, vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Main - module parameters initialized", vexa_context);
    lumo_source_location_pop(vexa_context);
  }
}

void vexa_Main_finalize(lumo_context_t vexa_context) {
  if (!(vexa_Main_is_finalized)) {
    vexa_Main_is_finalized = true;
    vexa_Main_is_initialized = false;
    vexa_Main_mod_params_initialized = false;
    vexa_Base_finalize(vexa_context);
    lumo_log_string_to_all(lumo_log_msg_info_c, "Module Main finalized", vexa_context);
  }
  (void)RTS_MAGIC_NUMBER_CHECK;
}
