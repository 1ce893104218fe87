/*
 * lumos.h - the interface between generated test suites and the run-time library.
 *
 * Generated modules describe their types in static tables, register a symbol table,
 * and call the functions below. A value is a lumo_value_t handle; the context is the
 * last argument of almost every call and may be lumo_no_context_c outside generated
 * code. Run-time faults of a test case end that test case with verdict error; these
 * functions then do not return to the caller. The header is plain C11, also for C++.
 */
#ifndef LUMOS_H
#define LUMOS_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __TINYC__
/* This compiler does not say of itself that its objects need no executable stack. */
__asm__(".pushsection .note.GNU-stack,\"\",@progbits\n\t.popsection");
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Links only with the library made for the same version of the compiler. */
extern const void* RTS_MAGIC_NUMBER_3_3_0_2_17499;

/* ------------------------------------------------------------------ basic types */

typedef bool lumo_boolean_t;
typedef long long lumo_long_integer_t;
#define lumo_long_integer_literal(digits) lumo_long_integer_literal_(digits)
#define lumo_long_integer_literal_(digits) digits##LL

/* One character of ISO 10646 by group, plane, row and cell. */
typedef struct {
  unsigned char group;
  unsigned char plane;
  unsigned char row;
  unsigned char cell;
} lumo_wide_char_t;

typedef struct lumo_value_struct* lumo_value_t;
typedef struct lumo_context_struct* lumo_context_t;
typedef struct lumo_wide_string_struct* lumo_wide_string_t;
typedef struct lumo_binary_string_struct* lumo_binary_string_t;
typedef struct lumo_binary_string_iter_struct lumo_binary_string_iter_t;
typedef struct lumo_type_struct_s lumo_type_struct_t;
typedef struct lumo_type_info_struct_s lumo_type_info_struct_t;
typedef lumo_type_struct_t* lumo_type_t;

#define lumo_no_context_c ((lumo_context_t)0)

/* How long a new value lives: to the end of the innermost memory scope, until it is
   deleted, or for the whole run. */
typedef enum { lumo_temp_alloc_c, lumo_perm_alloc_c, lumo_static_alloc_c } lumo_alloc_strategy_t;

typedef enum {
  lumo_verdict_none_c,
  lumo_verdict_pass_c,
  lumo_verdict_inconc_c,
  lumo_verdict_fail_c,
  lumo_verdict_error_c
} lumo_verdict_t;
#define lumo_value_verdict_none_c lumo_verdict_none_c
#define lumo_value_verdict_pass_c lumo_verdict_pass_c
#define lumo_value_verdict_inconc_c lumo_verdict_inconc_c
#define lumo_value_verdict_fail_c lumo_verdict_fail_c
#define lumo_value_verdict_error_c lumo_verdict_error_c

typedef enum { lumo_codecs_result_succeeded_c, lumo_codecs_result_failed_c } lumo_codecs_result_t;

/* Encoders append to encoded_data; decoders make a value by the given strategy and
   leave the iterator behind what they read. */
typedef lumo_codecs_result_t (*lumo_encoder_t)(lumo_value_t value, lumo_binary_string_t encoded_data,
                                               lumo_context_t context);
typedef lumo_codecs_result_t (*lumo_decoder_t)(lumo_binary_string_iter_t* encoded_data, lumo_type_t type,
                                               lumo_alloc_strategy_t strategy, lumo_value_t* decoded_value,
                                               lumo_context_t context);

/* ------------------------------------------------------- descriptions of types */

typedef enum {
  lumo_type_kind_undefined,
  lumo_type_kind_integer,
  lumo_type_kind_float,
  lumo_type_kind_boolean,
  lumo_type_kind_objectidentifier,
  lumo_type_kind_verdicttype,
  lumo_type_kind_bitstring,
  lumo_type_kind_hexstring,
  lumo_type_kind_octetstring,
  lumo_type_kind_charstring,
  lumo_type_kind_universal_charstring,
  lumo_type_kind_record,
  lumo_type_kind_recordof,
  lumo_type_kind_set,
  lumo_type_kind_setof,
  lumo_type_kind_enumerated,
  lumo_type_kind_union,
  lumo_type_kind_address,
  lumo_type_kind_port,
  lumo_type_kind_component,
  lumo_type_kind_array,
  lumo_type_kind_template,
  lumo_type_kind_timer,
  lumo_type_kind_signature,
  lumo_type_kind_char,
  lumo_type_kind_universal_char,
  lumo_type_kind_default,
  lumo_type_kind_component_ref,
  lumo_type_kind_port_ref,
  lumo_type_kind_function,
  lumo_type_kind_test_case,
  lumo_type_kind_test_step
} lumo_type_kind_t;

/* A field property is a set of these bits. */
#define lumo_field_no_property_c 0
#define lumo_field_property_mandatory_c 0x0001
#define lumo_field_property_optional_c 0x0002
#define lumo_field_property_in_value_c 0x0010
#define lumo_field_property_out_value_c 0x0020
#define lumo_field_property_inout_value_c 0x0040
#define lumo_field_property_return_value_c 0x0080
#define lumo_field_property_template_c 0x0100
#define lumo_field_property_none_templ_restr_c 0x0000
#define lumo_field_property_omit_templ_restr_c 0x1000
#define lumo_field_property_value_templ_restr_c 0x2000
#define lumo_field_property_present_templ_restr_c 0x4000
#define lumo_type_parameter_in_c lumo_field_property_in_value_c
#define lumo_type_parameter_out_c lumo_field_property_out_value_c
#define lumo_type_parameter_inout_c lumo_field_property_inout_value_c

/* Names of the rows that describe elements and bounds of lists and arrays. */
#define lumo_type_array_contained_type_c "<contained type>"
#define lumo_type_array_length_c "<length>"
#define lumo_type_array_base_index_c "<base index>"

typedef struct {
  const char* name;
  int property;
  lumo_type_t type;
  lumo_value_t default_value;
} lumo_field_info_t;

typedef struct {
  const char* name;
  long number;
} lumo_enum_or_array_info_t;

/* An attribute of a "with" statement; field_name is set where it goes to a field. */
typedef struct {
  const char* text;
  lumo_boolean_t is_override;
  const char* field_name;
} lumo_encoding_attr_struct_t;

/* The thirteen members of a type's description. A component's record type has the
   post-process function as check_function, its number of declarations as
   enum_or_array_info and its field table as reserved_last. */
struct lumo_type_info_struct_s {
  const char* name;
  const char* module;
  lumo_type_kind_t kind;
  lumo_type_t parent_type;
  lumo_boolean_t resolved;
  void* reserved_first;
  void* check_function;
  void* constraintof_function;
  void* template_info;
  long number_of_fields;
  lumo_field_info_t* field_info;
  lumo_enum_or_array_info_t* enum_or_array_info;
  void* reserved_last;
};

struct lumo_type_struct_s {
  const char* module;
  const char* name;
  lumo_encoding_attr_struct_t* display_attributes;
  lumo_encoding_attr_struct_t* encode_attributes;
  lumo_encoding_attr_struct_t* variant_attributes;
  lumo_encoding_attr_struct_t* extension_attributes;
  lumo_encoder_t encoder;
  lumo_decoder_t decoder;
  lumo_type_info_struct_t* type_info;
};

typedef lumo_boolean_t (*lumo_check_function_t)(lumo_type_t vexa_type, lumo_value_t vexa_value,
                                                lumo_context_t vexa_context);
typedef lumo_boolean_t (*lumo_match_function_t)(lumo_type_t vexa_type, lumo_value_t vexa_argv[],
                                                lumo_value_t vexa_value, lumo_context_t vexa_context);
typedef lumo_value_t (*lumo_valueof_function_t)(lumo_type_t vexa_type, lumo_value_t vexa_argv[],
                                                lumo_alloc_strategy_t vexa_alloc_strategy,
                                                lumo_context_t vexa_context);
typedef lumo_value_t (*lumo_constraintof_function_t)(lumo_type_t vexa_type, lumo_value_t vexa_argv[],
                                                     lumo_alloc_strategy_t vexa_alloc_strategy,
                                                     lumo_context_t vexa_context);
typedef unsigned long (*lumo_sizeof_function_t)(lumo_type_t vexa_type, lumo_value_t vexa_argv[],
                                                lumo_context_t vexa_context);
typedef lumo_value_t (*lumo_postprocess_function_t)(lumo_value_t value, lumo_context_t vexa_context);

typedef struct {
  lumo_type_t base_type;
  void* reserved;
  const char* description;
  lumo_valueof_function_t valueof_function;
  lumo_valueof_function_t call_valueof_function;
  lumo_valueof_function_t reply_valueof_function;
  lumo_sizeof_function_t sizeof_function;
  lumo_match_function_t match_function;
  lumo_match_function_t call_match_function;
  lumo_match_function_t reply_match_function;
} lumo_template_info_t;

/* The types of the language. The plain word is the handle; the STATIC word is the same
   as a constant expression for tables. */
extern lumo_type_struct_t lumo_illegal_type_struct, lumo_undefined_type_struct, lumo_integer_type_struct,
    lumo_float_type_struct, lumo_boolean_type_struct, lumo_objectidentifier_type_struct,
    lumo_verdicttype_type_struct, lumo_bitstring_type_struct, lumo_hexstring_type_struct,
    lumo_octetstring_type_struct, lumo_charstring_type_struct, lumo_universal_charstring_type_struct,
    lumo_char_type_struct, lumo_universal_char_type_struct, lumo_address_type_struct, lumo_array_type_struct,
    lumo_default_type_struct, lumo_timer_type_struct, lumo_binary_string_type_struct,
    lumo_template_as_field_type_struct, t3asn_asn_1_null_type_struct;
extern lumo_type_info_struct_t lumo_illegal_type_info_struct, lumo_undefined_type_info_struct,
    lumo_integer_type_info_struct, lumo_float_type_info_struct, lumo_boolean_type_info_struct,
    lumo_objectidentifier_type_info_struct, lumo_verdicttype_type_info_struct,
    lumo_bitstring_type_info_struct, lumo_hexstring_type_info_struct, lumo_octetstring_type_info_struct,
    lumo_charstring_type_info_struct, lumo_universal_charstring_type_info_struct, lumo_char_type_info_struct,
    lumo_universal_char_type_info_struct, lumo_address_type_info_struct, lumo_array_type_info_struct,
    lumo_default_type_info_struct, lumo_timer_type_info_struct, lumo_binary_string_type_info_struct,
    lumo_template_as_field_type_info_struct;
extern const lumo_type_t t3asn_asn_1_null_type;
/* To the letter as generated headers have it. */
/* clang-format off */
#define t3asn_STATIC_asn_1_null_type (lumo_type_t)&t3asn_asn_1_null_type_struct
/* clang-format on */

#define lumo_STATIC_undefined_type (&lumo_undefined_type_struct)
#define lumo_STATIC_integer_type (&lumo_integer_type_struct)
#define lumo_STATIC_float_type (&lumo_float_type_struct)
#define lumo_STATIC_boolean_type (&lumo_boolean_type_struct)
#define lumo_STATIC_objectidentifier_type (&lumo_objectidentifier_type_struct)
#define lumo_STATIC_verdicttype_type (&lumo_verdicttype_type_struct)
#define lumo_STATIC_bitstring_type (&lumo_bitstring_type_struct)
#define lumo_STATIC_hexstring_type (&lumo_hexstring_type_struct)
#define lumo_STATIC_octetstring_type (&lumo_octetstring_type_struct)
#define lumo_STATIC_charstring_type (&lumo_charstring_type_struct)
#define lumo_STATIC_universal_charstring_type (&lumo_universal_charstring_type_struct)
#define lumo_STATIC_char_type (&lumo_char_type_struct)
#define lumo_STATIC_universal_char_type (&lumo_universal_char_type_struct)
#define lumo_STATIC_address_type (&lumo_address_type_struct)
#define lumo_STATIC_default_type (&lumo_default_type_struct)
#define lumo_STATIC_timer_type (&lumo_timer_type_struct)
#define lumo_STATIC_binary_string_type (&lumo_binary_string_type_struct)
#define lumo_STATIC_template_as_field_type (&lumo_template_as_field_type_struct)
#define lumo_illegal_type (&lumo_illegal_type_struct)
#define lumo_undefined_type lumo_STATIC_undefined_type
#define lumo_integer_type lumo_STATIC_integer_type
#define lumo_float_type lumo_STATIC_float_type
#define lumo_boolean_type lumo_STATIC_boolean_type
#define lumo_objectidentifier_type lumo_STATIC_objectidentifier_type
#define lumo_verdicttype_type lumo_STATIC_verdicttype_type
#define lumo_bitstring_type lumo_STATIC_bitstring_type
#define lumo_hexstring_type lumo_STATIC_hexstring_type
#define lumo_octetstring_type lumo_STATIC_octetstring_type
#define lumo_charstring_type lumo_STATIC_charstring_type
#define lumo_universal_charstring_type lumo_STATIC_universal_charstring_type
#define lumo_char_type lumo_STATIC_char_type
#define lumo_universal_char_type lumo_STATIC_universal_char_type
#define lumo_address_type lumo_STATIC_address_type
#define lumo_array_type (&lumo_array_type_struct)
#define lumo_default_type lumo_STATIC_default_type
#define lumo_timer_type lumo_STATIC_timer_type

lumo_boolean_t lumo_type_is_equal(lumo_type_t a, lumo_type_t b, lumo_context_t context);
lumo_type_kind_t lumo_type_kind(lumo_type_t type, lumo_context_t context);
const char* lumo_type_definition_module(lumo_type_t type, lumo_context_t context);
const char* lumo_type_definition_name(lumo_type_t type, lumo_context_t context);
/* The type that a template type is a template of; the type itself if it is none. */
lumo_type_t lumo_type_template_base_type(lumo_type_t type, lumo_context_t context);
/* Both return -1 for a name that the type does not have. */
long lumo_type_enum_number_by_name(lumo_type_t type, const char* name, lumo_context_t context);
long lumo_type_field_index(lumo_type_t type, const char* name, lumo_context_t context);
lumo_value_t lumo_type_field_default_value(lumo_type_t type, unsigned long index, lumo_context_t context);
/* Takes number and tables of fields over from the parent of a subtype. */
void lumo__type_resolve_parent_info(lumo_type_t type, lumo_context_t context);
/* Tells how many attributes stand in a table of a type's description. */
void lumo_attributes_register(const lumo_encoding_attr_struct_t* attributes, unsigned long count,
                              lumo_context_t context);
void lumo_type_set_encoder(lumo_type_t type, lumo_encoder_t encoder, lumo_context_t context);
void lumo_type_set_decoder(lumo_type_t type, lumo_decoder_t decoder, lumo_context_t context);
lumo_encoder_t lumo_type_get_encoder(lumo_type_t type, lumo_context_t context);
lumo_decoder_t lumo_type_get_decoder(lumo_type_t type, lumo_context_t context);

/* Whether the value belongs to the type: of its kind and accepted by the checks of the
   type and of all its parents. The builtin form looks at the kind alone. */
lumo_boolean_t lumo_type_check(lumo_type_t type, lumo_value_t value, lumo_context_t context);
lumo_boolean_t lumo_type_check_builtin(lumo_type_t type, lumo_value_t value, lumo_context_t context);
/* Whether each character lies in one of the ranges; the array holds pairs of bounds. */
lumo_boolean_t lumo_type_check_char_range(lumo_value_t value, const char* bounds,
                                          unsigned long number_of_bounds, lumo_context_t context);
lumo_boolean_t lumo_type_check_universal_char_range(lumo_value_t value, const lumo_wide_char_t* bounds,
                                                    unsigned long number_of_bounds, lumo_context_t context);

/* ------------------------------------------------------ symbol tables and modules */

typedef void (*lumo_function_t)(unsigned long vexa_argc, lumo_value_t vexa_argv[],
                                lumo_context_t vexa_context);
typedef lumo_function_t lumo_test_case_t;
typedef enum {
  lumo_test_step_unsuccessful_c,
  lumo_test_step_successful_proceed_c,
  lumo_test_step_successful_repeat_c
} lumo_test_step_result_t;
typedef lumo_test_step_result_t (*lumo_test_step_t)(unsigned long vexa_argc, lumo_value_t vexa_argv[],
                                                    lumo_context_t vexa_context);
typedef enum {
  lumo_activation_list_unsuccessful_c,
  lumo_activation_list_successful_proceed_c,
  lumo_activation_list_successful_repeat_c
} lumo_activation_list_result_t;

typedef enum {
  lumo_symbol_entry_kind_module,
  lumo_symbol_entry_kind_imported_module,
  lumo_symbol_entry_kind_group,
  lumo_symbol_entry_kind_userdefined_type,
  lumo_symbol_entry_kind_signature_type,
  lumo_symbol_entry_kind_template_type,
  lumo_symbol_entry_kind_port_record_type,
  lumo_symbol_entry_kind_component_record_type,
  lumo_symbol_entry_kind_constant,
  lumo_symbol_entry_kind_module_parameter,
  lumo_symbol_entry_kind_external_constant,
  lumo_symbol_entry_kind_control_part_function,
  lumo_symbol_entry_kind_function,
  lumo_symbol_entry_kind_register_function,
  lumo_symbol_entry_kind_initialize_function,
  lumo_symbol_entry_kind_finalize_function,
  lumo_symbol_entry_kind_external_function,
  lumo_symbol_entry_kind_test_step,
  lumo_symbol_entry_kind_testcase
} lumo_symbol_entry_kind_t;

typedef struct {
  const char* name;
  lumo_symbol_entry_kind_t kind;
  lumo_type_t type_descriptor;
  lumo_value_t value_descriptor;
  void* function_ptr;
  void* reserved_first;
  void* reserved_last;
} lumo_symbol_entry_struct_t;
typedef lumo_symbol_entry_struct_t* lumo_symbol_entry_t;

/* A row of the registry of all modules of a suite; a row of two NULLs ends it. */
typedef struct {
  const char* name;
  void* register_function;
} lumo_module_entry_struct_t;
typedef lumo_module_entry_struct_t* lumo_module_entry_t;

typedef void (*lumo_register_function_t)(lumo_boolean_t is_root, lumo_context_t vexa_context);

/* Enters a module, or replaces it where the name is known. The table stays with the
   caller and must live on. */
void lumo_module_register(const char* name, lumo_boolean_t is_root, lumo_symbol_entry_t symbol_table,
                          unsigned long number_of_rows, const char* language, lumo_context_t context);
/* The row of an entity, NULL if there is none. A name may be "<module>.<name>"; a row of
   an import whose column is still empty leads to the row of origin. */
lumo_symbol_entry_t lumo_find_element(const char* module, const char* name, lumo_context_t context);
/* The same, but a missing entity is a fault of the suite. What was found once is known by the addresses of
   the names, which must live on unchanged, as literals do. */
lumo_symbol_entry_t lumo_find_element_with_check(const char* module, const char* name,
                                                 lumo_context_t context);

/* Life cycle of all registered modules, in the order: pre-initialize (clears what an
   earlier cycle left), initialize (constants, then module parameters), control part,
   finalize. A module's own functions go into its imports first. Each returns false
   after a fault, which is logged. */
lumo_boolean_t lumo_pre_initialize(lumo_context_t context);
lumo_boolean_t lumo_initialize(lumo_context_t context);
lumo_boolean_t lumo_execute_control_part(const char* module, lumo_context_t context);
lumo_boolean_t lumo_finalize(lumo_context_t context);

/* Sets the value from the test system's module parameters; false if there is none. */
lumo_boolean_t lumo_retrieve_module_parameter(const char* module, const char* name, lumo_value_t location,
                                              lumo_context_t context);
/* Whether matching goes on after the first mismatch, to log them all. */
lumo_boolean_t lumo_match_continue_on_fail(lumo_context_t context);

/* The control part of the root module, for lumo_run_test_suite. */
#define lumo_root_control_part_c ((const char*)0)
/* Runs a test suite by its command line (--help tells it) and ends the process: with
   status 0 when all verdicts are pass or none, 1 otherwise, 2 for a usage or start
   fault. control_part names a module, or is lumo_root_control_part_c. */
void lumo_run_test_suite(int argc, char* argv[], lumo_register_function_t register_function,
                         const char* control_part);
/* The same without ending the process: returns the status. */
int lumo_run_test_suite_status(int argc, char* argv[], lumo_register_function_t register_function,
                               const char* control_part);

/* ----------------------------------------------------------------- special values */

extern struct lumo_value_struct lumo_STATIC_no_value, lumo_STATIC_illegal_value, lumo_STATIC_omit_value,
    lumo_STATIC_not_used_value, lumo_STATIC_anyone_value, lumo_STATIC_anyornone_value, lumo_STATIC_any_value,
    lumo_STATIC_all_value, lumo_STATIC_true_value, lumo_STATIC_false_value, lumo_STATIC_no_return_value,
    lumo_STATIC_default_value, lumo_STATIC_null_component_reference_value,
    lumo_STATIC_null_default_reference_value, lumo_STATIC_null_address_value, lumo_STATIC_infinity_value;

#define lumo_no_value_c (&lumo_STATIC_no_value)
#define lumo_illegal_value_c (&lumo_STATIC_illegal_value)
#define lumo_omit_value_c (&lumo_STATIC_omit_value)
#define lumo_not_used_value_c (&lumo_STATIC_not_used_value)
#define lumo_anyone_value_c (&lumo_STATIC_anyone_value)
#define lumo_anyornone_value_c (&lumo_STATIC_anyornone_value)
#define lumo_value_any_c (&lumo_STATIC_any_value)
#define lumo_value_all_c (&lumo_STATIC_all_value)
#define lumo_value_true_c (&lumo_STATIC_true_value)
#define lumo_value_false_c (&lumo_STATIC_false_value)
#define lumo_value_no_return_c (&lumo_STATIC_no_return_value)
#define lumo_value_default_c (&lumo_STATIC_default_value)
#define lumo_value_null_component_reference_c (&lumo_STATIC_null_component_reference_value)
#define lumo_value_null_default_reference_c (&lumo_STATIC_null_default_reference_value)
#define lumo_value_null_address_c (&lumo_STATIC_null_address_value)
#define lumo_value_infinity_c (&lumo_STATIC_infinity_value)

/* ---------------------------------------------------------------- memory of values */

/* Temporary values die at the clear or end of the scope in which they were made. */
typedef struct {
  unsigned long mark;
  unsigned long named; /* values with names, which are known until the scope is cleared */
} lumo_memory_scope_t;

void lumo_memory_temp_begin(lumo_memory_scope_t* scope, lumo_context_t context);
void lumo_memory_temp_clear(lumo_memory_scope_t* scope, lumo_context_t context);
void lumo_memory_temp_end(lumo_memory_scope_t* scope, lumo_context_t context);

/* -------------------------------------------------------------------------- values */

lumo_value_t lumo_type_instantiate_value(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                         lumo_context_t context);
lumo_value_t lumo_type_instantiate_named_value(lumo_type_t type, const char* name,
                                               lumo_alloc_strategy_t strategy, lumo_context_t context);
/* An instance of a declared template: argv is ended by NULL, or NULL for no arguments. */
lumo_value_t lumo_type_instantiate_template(lumo_type_t template_type, lumo_alloc_strategy_t strategy,
                                            lumo_value_t argv[], unsigned long restriction,
                                            lumo_context_t context);
/* A value of the type that may also hold matching mechanisms. */
lumo_value_t lumo_type_instantiate_dynamic_template(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                                    unsigned long restriction, lumo_context_t context);
lumo_value_t lumo_type_instantiate_named_dynamic_template(lumo_type_t type, const char* name,
                                                          lumo_alloc_strategy_t strategy,
                                                          unsigned long restriction, lumo_context_t context);
lumo_value_t lumo_type_valueof(lumo_type_t type, lumo_value_t value, lumo_alloc_strategy_t strategy,
                               lumo_context_t context);
lumo_value_t lumo_value_allocate_template(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                          lumo_context_t context);
lumo_value_t lumo_value_allocate_charstring(lumo_value_t value, unsigned long length, lumo_context_t context);

lumo_type_t lumo_value_type(lumo_value_t value, lumo_context_t context);
lumo_boolean_t lumo_value_is_initialized(lumo_value_t value, lumo_context_t context);
lumo_boolean_t lumo_value_is_dynamic_template(lumo_value_t value, lumo_context_t context);
/* Copies the contents of source into target; special values such as omit are stored
   where the target may hold them. */
void lumo_value_assign(lumo_value_t target, lumo_value_t source, lumo_context_t context);
lumo_value_t lumo_value_copy(lumo_value_t source, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* A value of the type, which may take more than that of the source. */
lumo_value_t lumo_value_copy_to_type(lumo_type_t type, lumo_value_t source, lumo_alloc_strategy_t strategy,
                                     lumo_context_t context);
/* The same for a template, which may be restricted. */
lumo_value_t lumo_template_copy_to_type(lumo_type_t type, lumo_value_t source, lumo_alloc_strategy_t strategy,
                                        unsigned long restriction, lumo_context_t context);
/* Deletes a value made with lumo_perm_alloc_c, or ends a timer; sets the handle NULL. */
void lumo_value_delete(lumo_value_t* value, lumo_context_t context);
lumo_value_t lumo_value_set_label(lumo_value_t value, const char* label, lumo_context_t context);
lumo_value_t lumo_value_set_type(lumo_value_t value, lumo_type_t type, lumo_context_t context);

/* Setters return the value. */
lumo_value_t lumo_value_set_integer(lumo_value_t value, lumo_long_integer_t number, lumo_context_t context);
lumo_value_t lumo_value_set_float(lumo_value_t value, double number, lumo_context_t context);
/* A number of ASN.1, which may be infinite; for one that was computed, that is a dynamic error. */
lumo_value_t lumo_value_set_real(lumo_value_t value, double number, lumo_context_t context);
lumo_value_t lumo_value_set_boolean(lumo_value_t value, lumo_boolean_t truth, lumo_context_t context);
lumo_value_t lumo_value_set_verdict(lumo_value_t value, lumo_verdict_t verdict, lumo_context_t context);
lumo_value_t lumo_value_set_enum(lumo_value_t value, long number, lumo_context_t context);
lumo_value_t lumo_value_set_char(lumo_value_t value, char character, lumo_context_t context);
lumo_value_t lumo_value_set_universal_char(lumo_value_t value, lumo_wide_char_t character,
                                           lumo_context_t context);
lumo_value_t lumo_value_set_universal_char_to_ascii(lumo_value_t value, char character,
                                                    lumo_context_t context);
/* Text of a charstring, digits of a bit-, hex- or octetstring, by the value's type. */
lumo_value_t lumo_value_set_string(lumo_value_t value, const char* text, lumo_context_t context);
lumo_value_t lumo_value_set_charstring(lumo_value_t value, const char* text, lumo_context_t context);
lumo_value_t lumo_value_set_bitstring(lumo_value_t value, const char* digits, lumo_context_t context);
lumo_value_t lumo_value_set_hexstring(lumo_value_t value, const char* digits, lumo_context_t context);
lumo_value_t lumo_value_set_octetstring(lumo_value_t value, const char* digits, lumo_context_t context);
lumo_value_t lumo_value_set_universal_charstring(lumo_value_t value, lumo_wide_string_t text,
                                                 lumo_context_t context);
lumo_value_t lumo_value_set_universal_charstring_to_ascii(lumo_value_t value, const char* text,
                                                          lumo_context_t context);
lumo_value_t lumo_value_set_universal_charstring_from_wchar_array(lumo_value_t value,
                                                                  const lumo_wide_char_t* characters,
                                                                  unsigned long count,
                                                                  lumo_context_t context);
lumo_value_t lumo_value_add_objectid_element(lumo_value_t value, lumo_long_integer_t number,
                                             lumo_context_t context);

/* Getters: a value that is not set, or of another kind, is a fault of the test case.
   Texts belong to the value. */
lumo_long_integer_t lumo_value_get_integer(lumo_value_t value, lumo_context_t context);
double lumo_value_get_float(lumo_value_t value, lumo_context_t context);
lumo_boolean_t lumo_value_get_boolean(lumo_value_t value, lumo_context_t context);
lumo_verdict_t lumo_value_get_verdict(lumo_value_t value, lumo_context_t context);
long lumo_value_get_enum_number(lumo_value_t value, lumo_context_t context);
char lumo_value_get_char(lumo_value_t value, lumo_context_t context);
lumo_wide_char_t lumo_value_get_universal_char(lumo_value_t value, lumo_context_t context);
const char* lumo_value_get_string(lumo_value_t value, lumo_context_t context);
const char* lumo_value_get_charstring(lumo_value_t value, lumo_context_t context);
const char* lumo_value_get_bitstring(lumo_value_t value, lumo_context_t context);
const char* lumo_value_get_hexstring(lumo_value_t value, lumo_context_t context);
const char* lumo_value_get_octetstring(lumo_value_t value, lumo_context_t context);
lumo_long_integer_t lumo_value_get_objectid_element(lumo_value_t value, unsigned long index,
                                                    lumo_context_t context);

/* Parts of values. Indices of arrays count from the array's base index. The plain forms
   read: an absent optional field is lumo_omit_value_c. The lhs form creates what is
   missing; the try form gives lumo_omit_value_c instead of a fault. */
lumo_value_t lumo_value_field_by_name(lumo_value_t value, const char* name, lumo_context_t context);
lumo_value_t lumo_value_field_by_index(lumo_value_t value, unsigned long index, lumo_context_t context);
lumo_value_t lumo_value_field_by_index_lhs(lumo_value_t value, unsigned long index, lumo_context_t context);
lumo_value_t lumo_value_try_field_by_index(lumo_value_t value, unsigned long index, lumo_context_t context);
lumo_value_t lumo_value_set_omit(lumo_value_t value, unsigned long index, lumo_context_t context);
lumo_value_t lumo_value_instantiate_omitted_field_value(lumo_value_t value, unsigned long index,
                                                        lumo_context_t context);
/* Chooses the alternative and returns the value that stands for it. */
lumo_value_t lumo_value_set_union_alternative_by_index(lumo_value_t value, unsigned long index,
                                                       lumo_context_t context);
lumo_value_t lumo_value_try_set_union_alternative_by_index(lumo_value_t value, unsigned long index,
                                                           lumo_context_t context);
lumo_value_t lumo_value_set_union_alternative_by_name(lumo_value_t value, const char* name,
                                                      lumo_context_t context);
lumo_value_t lumo_value_union_value(lumo_value_t value, lumo_context_t context);
/* The chosen alternative, -1 if none is chosen. */
long lumo_value_union_index(lumo_value_t value, lumo_context_t context);

void lumo_value_set_vector_size(lumo_value_t value, unsigned long size, lumo_context_t context);
void lumo_value_set_vector_empty(lumo_value_t value, lumo_context_t context);
unsigned long lumo_value_vector_size(lumo_value_t value, lumo_context_t context);
lumo_value_t lumo_value_vector_element(lumo_value_t value, unsigned long index, lumo_context_t context);
void lumo_value_add_vector_element(lumo_value_t value, lumo_value_t element, lumo_context_t context);
void lumo_value_assign_vector_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                      lumo_context_t context);
void lumo_value_assign_vector_element_partial(lumo_value_t value, unsigned long index, lumo_value_t element,
                                              lumo_context_t context);
void lumo_value_init_vector_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                    lumo_context_t context);
void lumo_value_init_vector_element_partial(lumo_value_t value, unsigned long index, lumo_value_t element,
                                            lumo_context_t context);

unsigned long lumo_value_string_length(lumo_value_t value, lumo_context_t context);
lumo_value_t lumo_value_string_element(lumo_value_t value, unsigned long index,
                                       lumo_alloc_strategy_t strategy, lumo_context_t context);
void lumo_value_assign_string_element(lumo_value_t value, unsigned long index, lumo_value_t element,
                                      lumo_context_t context);

/* Values of codecs that are translated when they are first looked at. */
lumo_value_t lumo_type_instantiate_external_value(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                                  lumo_context_t context);
void lumo_value_set_external_value(lumo_value_t value, void* home,
                                   lumo_value_t (*translate)(void*, lumo_alloc_strategy_t, lumo_context_t),
                                   void (*destroy)(void*, lumo_context_t), lumo_context_t context);
void* lumo_value_get_external_value(lumo_value_t value, lumo_context_t context);
lumo_boolean_t t3asn_lumo_value_is_special_value(lumo_value_t value, lumo_context_t context);
lumo_boolean_t t3asn_lumo_value_is_external_value(lumo_value_t value, lumo_context_t context);
void t3asn_lumo_value_set_type(lumo_value_t value, lumo_type_t type, lumo_context_t context);
/* The first encode attribute that an import of the module's types carries, with its quotes as written; where no
   module of the suite has such an import, that of the first ASN.1 module that imports it; NULL where none has. The
   variant is of the same imports. */
const char* t3asn_lumo_import_encoding(const char* module, lumo_context_t context);
const char* t3asn_lumo_import_variant(const char* module, lumo_context_t context);
/* The encoding of an open type's value, by the codecs of its type or else of its chosen alternative. The
   octets are the caller's, who frees them; NULL where there is no encoder or it fails. */
lumo_boolean_t t3asn_lumo_decode_octets(lumo_value_t value, const unsigned char* octets, unsigned long count,
                                        lumo_context_t context);
unsigned char* t3asn_lumo_encode_octets(lumo_value_t value, unsigned long* count, lumo_context_t context);
unsigned long t3asn_lumo_objectid_size(lumo_value_t value, lumo_context_t context);

/* -------------------------------------------------------------------- wide strings */

lumo_wide_string_t lumo_wide_string_allocate(unsigned long length, lumo_alloc_strategy_t strategy,
                                             lumo_context_t context);
void lumo_wide_string_deallocate(lumo_wide_string_t* text, lumo_context_t context);
void lumo_wide_string_set_element(lumo_wide_string_t text, unsigned long index, lumo_wide_char_t character,
                                  lumo_context_t context);
lumo_wide_string_t lumo_wide_string_construct_from_ascii(const char* text, lumo_alloc_strategy_t strategy,
                                                         lumo_context_t context);
lumo_wide_string_t lumo_wide_string_construct_from_wchar(const lumo_wide_char_t* characters,
                                                         unsigned long count, lumo_alloc_strategy_t strategy,
                                                         lumo_context_t context);
/* Below, equal to or above zero as a is before, equal to or behind b. */
int lumo_wchar_cmp(lumo_wide_char_t a, lumo_wide_char_t b);
/* The format's "%S" stands for a wide string, "%s" for characters, "%d" for an int. */
lumo_wide_string_t lumo_format_wide_string(const char* format, lumo_context_t context, ...);
#define LUMO__VAL_CHECK_VALUE_FAILURE_sname "length restriction of value '%S' is not met"
#define LUMO__ILLEGAL_OBJSET_ID "no object with the identifier %d in the object set '%s' by its field '%s'"
lumo_wide_string_t lumo__value_label_or_name(lumo_value_t value, lumo_context_t context);

/* ---------------------------------------------------------------------- expressions */

lumo_boolean_t lumo_is_equal(lumo_value_t a, lumo_value_t b, lumo_context_t context);
lumo_boolean_t lumo_is_greater(lumo_value_t a, lumo_value_t b, lumo_context_t context);
lumo_boolean_t lumo_is_lesser(lumo_value_t a, lumo_value_t b, lumo_context_t context);
/* The number itself, which must not be 0: what an integer, or a float, is divided by. */
lumo_long_integer_t lumo_divisor(lumo_long_integer_t number, lumo_context_t context);
double lumo_float_divisor(double number, lumo_context_t context);
lumo_long_integer_t lumo_mod(lumo_long_integer_t a, lumo_long_integer_t b, lumo_context_t context);
lumo_long_integer_t lumo_rem(lumo_long_integer_t a, lumo_long_integer_t b, lumo_context_t context);
double lumo_float_rem(double a, double b, lumo_context_t context);
#ifndef __cplusplus
#define lumo_rem(a, b, context) _Generic((a), double : lumo_float_rem, default : lumo_rem)(a, b, context)
#endif

lumo_value_t lumo_not4b(lumo_value_t a, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_and4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy,
                        lumo_context_t context);
lumo_value_t lumo_or4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy,
                       lumo_context_t context);
lumo_value_t lumo_xor4b(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy,
                        lumo_context_t context);
lumo_value_t lumo_concatenate(lumo_value_t a, lumo_value_t b, lumo_alloc_strategy_t strategy,
                              lumo_context_t context);
lumo_value_t lumo_shiftleft(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                            lumo_context_t context);
lumo_value_t lumo_shiftright(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                             lumo_context_t context);
lumo_value_t lumo_rotateleft(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                             lumo_context_t context);
lumo_value_t lumo_rotateright(lumo_value_t a, lumo_long_integer_t count, lumo_alloc_strategy_t strategy,
                              lumo_context_t context);

/* Predefined functions: strings and other values as values, numbers as C numbers; the
   result is a value of the function's type. */
lumo_value_t lumo_bit2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_hex2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_oct2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_str2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* The zero forms give 0 for a text that is no number; the plain ones are a fault. */
lumo_value_t lumo_str2int_zero(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_str2float(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_str2float_zero(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_char2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_unichar2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_enum2int(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_float2int(double number, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_int2float(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                            lumo_context_t context);
lumo_value_t lumo_int2bit(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_int2hex(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_int2oct(lumo_long_integer_t number, lumo_long_integer_t length,
                          lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_int2str(lumo_long_integer_t number, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* char forms: a value of the types char and universal char; charstr: strings of one. */
lumo_value_t lumo_int2char(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                           lumo_context_t context);
lumo_value_t lumo_int2charstr(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                              lumo_context_t context);
lumo_value_t lumo_int2unichar(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                              lumo_context_t context);
lumo_value_t lumo_int2unicharstr(lumo_long_integer_t number, lumo_alloc_strategy_t strategy,
                                 lumo_context_t context);
lumo_value_t lumo_bit2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_hex2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_oct2str(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_str2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_oct2char(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_char2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_bit2hex(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_bit2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_hex2bit(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_hex2oct(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_oct2bit(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_oct2hex(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* A random float in [0, 1); seed is a float value, or lumo_no_value_c to go on. */
lumo_value_t lumo_rnd(lumo_value_t seed, lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_substr(lumo_value_t v, unsigned long index, unsigned long count,
                         lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_decomp(lumo_value_t v, unsigned long index, unsigned long count,
                         lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_replace(lumo_value_t v, unsigned long index, unsigned long length, lumo_value_t by,
                          lumo_alloc_strategy_t strategy, lumo_context_t context);
/* The text of the numbered group of the pattern, counted from 0; empty if no match. */
lumo_value_t lumo_regexp_regexp(lumo_value_t text, lumo_value_t pattern, lumo_long_integer_t group,
                                lumo_alloc_strategy_t strategy, lumo_context_t context);
lumo_value_t lumo_encvalue(lumo_value_t v, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* 0: decoded and removed from encoded; 1: not decodable; 2: more data needed. */
lumo_value_t lumo_decvalue(lumo_value_t encoded, lumo_value_t decoded, lumo_alloc_strategy_t strategy,
                           lumo_context_t context);
unsigned long lumo_lengthof(lumo_value_t v, lumo_context_t context);
unsigned long lumo_sizeof(lumo_value_t v, lumo_context_t context);
unsigned long lumo_sizeoftype(lumo_value_t v, lumo_context_t context);
lumo_boolean_t lumo_ispresent(lumo_value_t parent, unsigned long index, lumo_context_t context);
lumo_boolean_t lumo_ischosen(lumo_value_t parent, unsigned long index, lumo_context_t context);
lumo_boolean_t lumo_isvalue(lumo_value_t v, lumo_context_t context);

/* ----------------------------------------------------------- templates and matching */

typedef enum {
  lumo_value_list_normal_c,
  lumo_value_list_complement_c,
  lumo_value_list_subset_c,
  lumo_value_list_superset_c
} lumo_value_list_kind_t;

typedef enum {
  lumo_not_permutated_c,
  lumo_permutation_head_c,
  lumo_permutation_body_c,
  lumo_permutation_tail_c,
  lumo_permutation_head_tail_c
} lumo_permutation_kind_t;

/* How many elements a "*" of a list stands for. */
typedef struct {
  lumo_long_integer_t lower;
  lumo_long_integer_t upper;
} lumo_length_constraint_t;
#define lumo_length_infinity_c (-1)

/* Each sets what the dynamic template holds. Lists are ended by NULL. if_present adds
   that an omitted value matches as well. */
void lumo_template_set_value(lumo_value_t location, lumo_value_t inner, lumo_boolean_t if_present,
                             lumo_context_t context);
void lumo_template_set_value_range(lumo_value_t location, lumo_value_t lower, lumo_value_t upper,
                                   lumo_boolean_t if_present, lumo_context_t context);
void lumo_template_set_value_list(lumo_value_t location, lumo_value_list_kind_t kind, lumo_value_t values[],
                                  lumo_boolean_t if_present, lumo_context_t context);
void lumo_template_set_string_pattern(lumo_value_t location, lumo_value_t pattern, lumo_boolean_t if_present,
                                      lumo_context_t context);
/* Adds to what the template holds. */
void lumo_template_set_length_constraint(lumo_value_t location, lumo_value_t lower, lumo_value_t upper,
                                         lumo_context_t context);
void lumo_template_set_permutation(lumo_value_t location, unsigned long head, unsigned long tail,
                                   lumo_context_t context);
/* The template itself where a template was assigned to a field, to be changed in place. */
lumo_value_t lumo_templateof(lumo_value_t value, lumo_alloc_strategy_t strategy, lumo_context_t context);

lumo_boolean_t lumo_match(lumo_value_t template_value, lumo_value_t value, lumo_context_t context);
lumo_boolean_t lumo_match_signature(lumo_value_t template_value, lumo_value_t value, lumo_boolean_t is_call,
                                    lumo_context_t context);
lumo_boolean_t lumo_recordof_match(lumo_value_t value, lumo_value_t templates[],
                                   lumo_permutation_kind_t permutations[], lumo_length_constraint_t lengths[],
                                   unsigned long count, lumo_context_t context);
lumo_boolean_t lumo_setof_match(lumo_value_t value, lumo_value_t templates[],
                                lumo_permutation_kind_t permutations[], lumo_length_constraint_t lengths[],
                                unsigned long count, lumo_context_t context);
lumo_boolean_t lumo_subset_match(lumo_value_t value, lumo_value_t templates[], unsigned long count,
                                 lumo_context_t context);
lumo_boolean_t lumo_superset_match(lumo_value_t value, lumo_value_t templates[], unsigned long count,
                                   lumo_context_t context);
lumo_boolean_t lumo_regexp_match(lumo_value_t pattern, lumo_value_t value, lumo_context_t context);
lumo_value_t lumo_valueof(lumo_value_t template_value, lumo_alloc_strategy_t strategy,
                          lumo_context_t context);
lumo_value_t lumo_valueof_signature(lumo_value_t template_value, lumo_boolean_t is_call,
                                    lumo_alloc_strategy_t strategy, lumo_context_t context);

/* ------------------------------------------------------- behaviour and source places */

typedef enum {
  lumo_scope_undefined_c,
  lumo_scope_function_c,
  lumo_scope_external_function_c,
  lumo_scope_testcase_c,
  lumo_scope_teststep_c,
  lumo_scope_control_part_c
} lumo_scope_t;

void lumo_source_location_push(const char* module, const char* name, lumo_value_t argv[], lumo_scope_t scope,
                               const char* file, unsigned long line, lumo_context_t context);
void lumo_source_location_pop(lumo_context_t context);
void lumo_source_location_push_block(lumo_context_t context);
void lumo_source_location_pop_block(lumo_context_t context);
void lumo_source_location_set_line(unsigned long line, lumo_context_t context);
/* The same, said with the place in the code: what shares a line of the source does not share one there. */
void lumo_source_location_push_block_at(const char* code, unsigned long code_line, lumo_context_t context);
void lumo_source_location_set_line_at(unsigned long line, const char* code, unsigned long code_line,
                                      lumo_context_t context);
/* The file that is being compiled, by one text for all its calls. */
static const char lumo_code_file[] = __BASE_FILE__;
#define lumo_source_location_push_block(context) \
  lumo_source_location_push_block_at(lumo_code_file, __LINE__, context)
#define lumo_source_location_set_line(line, context) \
  lumo_source_location_set_line_at(line, lumo_code_file, __LINE__, context)
void lumo_source_tracking_register_value(lumo_value_t value, lumo_boolean_t in_component,
                                         lumo_context_t context);
/* From now on the value is found by the name, to the end of the block. */
void lumo_source_tracking_name_value(const char* name, lumo_value_t value, lumo_context_t context);
/* The value of that name that is visible where the calling behaviour stands. */
lumo_value_t lumo_source_tracking_find_value(const char* name, lumo_context_t context);
/* Places in codecs written in C. */
void lumo_targetcode_location_push(const char* function, const char* file, unsigned long line,
                                   lumo_context_t context);
void lumo_targetcode_location_pop(lumo_context_t context);
void lumo_targetcode_location_set_line(unsigned long line, lumo_context_t context);

/* Argument vectors hold the formals in order, the place for a result, and NULL. */
void lumo_call_function(lumo_function_t function, lumo_type_t function_type, unsigned long argc,
                        lumo_value_t argv[], lumo_context_t context);
lumo_test_step_result_t lumo_call_altstep(lumo_test_step_t altstep, lumo_type_t altstep_type,
                                          unsigned long argc, lumo_value_t argv[], lumo_context_t context);
void lumo_call_external_function(lumo_type_t signature, lumo_value_t argv[], lumo_context_t context);
/* Ends the test case with verdict error and the text; position is "file:line" or NULL. */
void lumo_report_error(const char* position, lumo_wide_string_t text, lumo_context_t context);
void lumo__report_error_at(int line, const char* file, lumo_wide_string_t text, lumo_context_t context);
#ifndef __cplusplus
/* In C the position may be a line and a file, in front of the other arguments. */
#define lumo_report_error(...) \
  LUMO__FIFTH(__VA_ARGS__, lumo__report_error_at, lumo_report_error, unused)(__VA_ARGS__)
#define LUMO__FIFTH(a, b, c, d, e, ...) e
#endif

lumo_value_t lumo_activate(const char* module, const char* name, unsigned long argc, lumo_value_t argv[],
                           lumo_alloc_strategy_t strategy, lumo_context_t context);
/* lumo_value_all_c deactivates all defaults of the component. */
void lumo_deactivate(lumo_value_t default_reference, lumo_context_t context);
lumo_activation_list_result_t lumo_activation_list_invoke(lumo_context_t context);

/* ---------------------------------------------------------- components and test cases */

/* instance is a fresh value of the component's type and becomes the reference. */
lumo_value_t lumo_component_create(lumo_value_t instance, lumo_value_t name, lumo_boolean_t alive,
                                   lumo_context_t context);
void lumo_component_start(lumo_value_t component, const char* module, const char* function,
                          unsigned long argc, lumo_value_t argv[], lumo_context_t context);
/* lumo_no_value_c is the calling component; lumo_value_all_c all parallel ones. */
void lumo_component_stop(lumo_value_t component, lumo_context_t context);
void lumo_component_kill(lumo_value_t component, lumo_context_t context);
lumo_boolean_t lumo_component_is_running(lumo_value_t component, lumo_context_t context);
lumo_boolean_t lumo_component_is_alive(lumo_value_t component, lumo_context_t context);
lumo_boolean_t lumo_component_try_done(lumo_value_t component, lumo_context_t context);
lumo_boolean_t lumo_component_try_killed(lumo_value_t component, lumo_context_t context);
lumo_boolean_t lumo_component_try_else(lumo_context_t context);
lumo_boolean_t lumo_try_else(lumo_context_t context);
/* What an external function of the user returned becomes the result, unless the function has written that
 * into its slot; a fault where there is neither. */
void lumo_external_function_result(lumo_value_t slot, lumo_value_t returned, lumo_context_t context);
/* Stands before and behind local definitions of an altstep that call what may have an effect: a fault then.
 */
void lumo_altstep_definitions(lumo_boolean_t begin, lumo_context_t context);
lumo_value_t lumo_component_self(lumo_context_t context);
lumo_value_t lumo_component_mtc(lumo_context_t context);
lumo_value_t lumo_component_system(lumo_context_t context);
/* A variable, constant, timer or port of the calling component. It is known by the address of the name, which
   must live on unchanged, as a literal does. */
lumo_value_t lumo_component_element(const char* name, lumo_context_t context);
/* reasons is ended by NULL, or NULL for none. */
void lumo_component_set_local_verdict(lumo_value_t verdict, lumo_value_t reasons[], lumo_context_t context);
lumo_value_t lumo_component_get_local_verdict(lumo_context_t context);
void lumo_component_set_system_component_type(lumo_type_t type, lumo_context_t context);
void lumo_component_map_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                             lumo_value_t component2, const char* port2, lumo_value_t index2,
                             lumo_context_t context);
void lumo_component_unmap_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                               lumo_value_t component2, const char* port2, lumo_value_t index2,
                               lumo_context_t context);
void lumo_component_connect_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                                 lumo_value_t component2, const char* port2, lumo_value_t index2,
                                 lumo_context_t context);
void lumo_component_disconnect_port(lumo_value_t component1, const char* port1, lumo_value_t index1,
                                    lumo_value_t component2, const char* port2, lumo_value_t index2,
                                    lumo_context_t context);
/* Runs a test case and returns its verdict; timeout in seconds or a lumo_duration word. */
lumo_value_t lumo_component_execute(const char* module, const char* testcase, unsigned long argc,
                                    lumo_value_t argv[], double timeout, lumo_context_t context);
void lumo_component_snapshot(lumo_context_t context);
/* Returns when the alternatives are to be tried again: after an event of the component,
   or, where volatile_guards says that guards may change without one, after a while. */
void lumo_component_wait(lumo_boolean_t volatile_guards, lumo_context_t context);
/* A point at which other components may run and at which the caller may be ended. */
void lumo_component_control(lumo_context_t context);

#define lumo_duration_nowait_c (-1.0)
#define lumo_duration_forever_c (-2.0)
#define lumo_duration_default_c (-3.0)

/* ---------------------------------------------------------------------------- timers */

void lumo_timer_start(lumo_value_t timer, double duration, lumo_context_t context);
void lumo_timer_stop(lumo_value_t timer, lumo_context_t context);
double lumo_timer_read(lumo_value_t timer, lumo_context_t context);
lumo_boolean_t lumo_timer_is_running(lumo_value_t timer, lumo_context_t context);
lumo_boolean_t lumo_timer_try_timed_out(lumo_value_t timer, lumo_context_t context);
void lumo_value_set_timer_default_duration(lumo_value_t timer, double duration, lumo_context_t context);
void lumo_value_set_timer_in_array_default_duration(lumo_value_t timers, unsigned long index, double duration,
                                                    lumo_context_t context);

/* ----------------------------------------------------------------------------- ports */

/* recipient and sender are lumo_no_value_c where the statement has no to or from clause;
   a template of lumo_no_value_c takes anything. A redirect of lumo_value_no_return_c
   stores nothing. The try forms return true when they took (or with check: found) an
   event at the head of the queue. */
void lumo_port_send(lumo_value_t port, lumo_value_t value, lumo_value_t recipient, lumo_context_t context);
void lumo_port_call(lumo_value_t port, lumo_value_t template_value, double timeout, lumo_value_t recipient,
                    lumo_context_t context);
void lumo_port_reply(lumo_value_t port, lumo_value_t template_value, lumo_value_t result,
                     lumo_value_t recipient, lumo_context_t context);
/* Tells the signature of the call that the next raise answers. */
void lumo_port_answers(lumo_type_t signature, lumo_context_t context);
void lumo_port_raise(lumo_value_t port, lumo_type_t exception_type, lumo_value_t exception,
                     lumo_value_t recipient, lumo_context_t context);
lumo_boolean_t lumo_port_try_receive(lumo_value_t port, lumo_value_t template_value, lumo_value_t sender,
                                     lumo_boolean_t check, lumo_value_t value_redirect,
                                     lumo_value_t sender_redirect, lumo_context_t context);
lumo_boolean_t lumo_port_try_getcall(lumo_value_t port, lumo_value_t template_value, lumo_value_t sender,
                                     lumo_boolean_t check, unsigned long redirect_count,
                                     lumo_value_t redirects[], lumo_value_t sender_redirect,
                                     lumo_context_t context);
lumo_boolean_t lumo_port_try_getreply(lumo_value_t port, lumo_value_t template_value,
                                      lumo_value_t result_template, lumo_value_t sender, lumo_boolean_t check,
                                      lumo_value_t value_redirect, unsigned long redirect_count,
                                      lumo_value_t redirects[], lumo_value_t sender_redirect,
                                      lumo_context_t context);
lumo_boolean_t lumo_port_try_catch(lumo_value_t port, lumo_type_t signature, lumo_value_t template_value,
                                   lumo_value_t sender, lumo_boolean_t check, lumo_value_t value_redirect,
                                   lumo_value_t sender_redirect, lumo_context_t context);
lumo_boolean_t lumo_port_try_catch_timeout(lumo_value_t port, lumo_context_t context);
void lumo_port_clear(lumo_value_t port, lumo_context_t context);
void lumo_port_halt(lumo_value_t port, lumo_context_t context);
void lumo_port_start(lumo_value_t port, lumo_context_t context);
void lumo_port_stop(lumo_value_t port, lumo_context_t context);
void lumo_port_sut_action(lumo_value_t action, lumo_context_t context);

/* --------------------------------------------------------------------------- logging */

typedef enum {
  lumo_log_msg_info_c,
  lumo_log_msg_ttcn3_c,
  lumo_log_msg_warning_c,
  lumo_log_msg_error_c,
  lumo_log_msg_debug_c,
  lumo_log_msg_event_c
} lumo_log_message_kind_t;
typedef lumo_log_message_kind_t lumo_log_event_kind_t;
#define lumo_log_kind_msg_warning_c lumo_log_msg_warning_c

void lumo_log_string(lumo_log_message_kind_t kind, const char* text, lumo_context_t context);
void lumo_log_string_to_all(lumo_log_message_kind_t kind, const char* text, lumo_context_t context);
void lumo_log_wide_string_to_all(lumo_log_message_kind_t kind, lumo_wide_string_t text,
                                 lumo_context_t context);
void lumo_log_list_to_all(lumo_log_message_kind_t kind, lumo_value_t values[], lumo_context_t context);
void lumo_log(lumo_value_t values[], lumo_context_t context);
void lumo_log_variable_modified_event(lumo_value_t value, lumo_context_t context);
void lumo_log_element_modified_event(lumo_value_t value, unsigned long index, lumo_context_t context);
/* The source text of what the next mismatch expected, where no value tells it; kept by the caller. */
void lumo_log_template_expected(const char* text, lumo_context_t context);
void lumo_log_template_mismatch_by_name_event(const char* field, const char* reason, lumo_value_t actual,
                                              lumo_value_t expected, lumo_context_t context);
void lumo_log_template_mismatch_by_index_event(unsigned long index, const char* reason, lumo_value_t actual,
                                               lumo_value_t expected, lumo_context_t context);
void lumo_log_template_mismatch_event(const char* reason, lumo_value_t actual, lumo_value_t expected,
                                      lumo_context_t context);
void lumo_log_alt_entered_event(lumo_context_t context);
void lumo_log_alt_left_event(lumo_context_t context);
void lumo_log_alt_rejected_event(lumo_context_t context);
void lumo_log_alt_else_event(lumo_context_t context);
void lumo_log_alt_defaults_event(lumo_context_t context);
void lumo_log_alt_repeat_event(lumo_context_t context);
void lumo_log_alt_wait_event(lumo_context_t context);

/* ---------------------------------------------------------------------------- codecs */

/* Octets that an encoder appends to. */
void lumo_binary_string_append(lumo_binary_string_t data, const unsigned char* octets, unsigned long count,
                               lumo_context_t context);
unsigned long lumo_binary_string_length(lumo_binary_string_t data, lumo_context_t context);
const unsigned char* lumo_binary_string_octets(lumo_binary_string_t data, lumo_context_t context);
/* What a decoder has still to read; advance tells how much it took. */
unsigned long lumo_binary_string_iter_remaining(const lumo_binary_string_iter_t* iter);
const unsigned char* lumo_binary_string_iter_octets(const lumo_binary_string_iter_t* iter);
void lumo_binary_string_iter_advance(lumo_binary_string_iter_t* iter, unsigned long count);
/* Sets the codec of a type for all modules that use it, also when it has an encode attribute. A type that no
   module declares is a fault of the suite. A function may be NULL: the type then has the codec of that
   direction that its attributes ask for. Where the user defines the function `triInit`, it is called when the
   modules are initialized and before codecs are looked for: the place for these calls. */
void lumo_codec_for(const char* module, const char* type, lumo_encoder_t encoder, lumo_decoder_t decoder);
/* init runs once at registration, setup once for each type of the registered modules. */
void lumo_codecs_register(void (*init)(lumo_context_t context),
                          void (*setup)(lumo_type_t type, lumo_context_t context), lumo_context_t context);

#ifdef __cplusplus
}
#endif

#endif
