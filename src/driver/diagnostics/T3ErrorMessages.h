// The catalogue of semantic messages, by level. Included by T3Error.h.
#pragma once

// clang-format off
// sev_unsupported
inline constexpr _vexa_error_message_t ERR_multidimensional_port_arr{"multi-dimensional port array are not supported, have not been considered in the TRI specs and probably will be removed from the language", vexa_error_severity_t::sev_unsupported, 0};
// sev_syntax
inline constexpr _vexa_error_message_t ERR_mixed_notation{"mixing assignment and valuelist notation in compound value", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_nested_except{"'except' may not be nested inside import statement", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_not_allowed_as_call{"Operation '%s' is not allowed as a call statement", vexa_error_severity_t::sev_syntax, 1};
inline constexpr _vexa_error_message_t ERR_call_nowait_with_body{"call with nowait must not have a body", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_call_blocking_wo_body{"blocking call statement must have a body", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_call_catch_wo_timeout{"'catch(timeout)' only allowed in body of call statement with explicit timeout", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_mixed_subtypes{"charstring and universal charstring subtype definitions must not mix values and ranges", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_catch_timeout_wo_call{"'catch(timeout)' requires corresponding call", vexa_error_severity_t::sev_syntax, 0};
inline constexpr _vexa_error_message_t ERR_expected{"%s expected", vexa_error_severity_t::sev_syntax, 1};
// sev_import
inline constexpr _vexa_error_message_t ERR_import_not_found{"could not locate \"%s\" in module \"%s\"", vexa_error_severity_t::sev_import, 2};
inline constexpr _vexa_error_message_t ERR_reimport{"trying to import imported %s \"%s\" from module \"%s\"", vexa_error_severity_t::sev_import, 3};
inline constexpr _vexa_error_message_t ERR_import_kind{"trying to import %s \"%s\" from module \"%s\" as %s", vexa_error_severity_t::sev_import, 4};
inline constexpr _vexa_error_message_t ERR_import_ambiguous_group{"group identifier \"%s\" is ambiguous in module \"%s\"", vexa_error_severity_t::sev_import, 2};
// sev_undefined
inline constexpr _vexa_error_message_t ERR_undefined{"no declaration for \"%s\"", vexa_error_severity_t::sev_undefined, 1};
inline constexpr _vexa_error_message_t ERR_undefined_port{"unknown port in \"%s\"", vexa_error_severity_t::sev_undefined, 1};
inline constexpr _vexa_error_message_t ERR_undefined_with_mod{"no declaration for \"%s.%s\"", vexa_error_severity_t::sev_undefined, 2};
inline constexpr _vexa_error_message_t ERR_invalid_goto{"goto to \"%s\" not allowed from here or label not declared", vexa_error_severity_t::sev_undefined, 1};
// sev_unknown_field
inline constexpr _vexa_error_message_t ERR_unknown_field_for_attr{"attribute for unknown field \"%s\"", vexa_error_severity_t::sev_unknown_field, 1};
inline constexpr _vexa_error_message_t ERR_anytype_unknown_field{"%s.%s has no field %s.%s", vexa_error_severity_t::sev_unknown_field, 4};
inline constexpr _vexa_error_message_t ERR_type_unknown_field{"underlying type has no field \"%s\"", vexa_error_severity_t::sev_unknown_field, 1};
// sev_duplicate
inline constexpr _vexa_error_message_t ERR_conflicting_local_defs{"multiple local declarations for \"%s\"", vexa_error_severity_t::sev_duplicate, 1};
inline constexpr _vexa_error_message_t ERR_conflicting_imported_defs{"multiple imported declarations for \"%s\", use qualified notation", vexa_error_severity_t::sev_duplicate, 1};
inline constexpr _vexa_error_message_t ERR_name_duplicate_enum{"duplicate literal \"%s\" in enumeration", vexa_error_severity_t::sev_duplicate, 1};
inline constexpr _vexa_error_message_t ERR_name_duplicate_field{"duplicate field \"%s\" in body of structured type or signature", vexa_error_severity_t::sev_duplicate, 1};
inline constexpr _vexa_error_message_t ERR_name_duplicate_label{"duplicate label \"%s\"", vexa_error_severity_t::sev_duplicate, 1};
inline constexpr _vexa_error_message_t ERR_type_address_multiple{"conflicting address type definition (local or imported) in module \"%s\"", vexa_error_severity_t::sev_duplicate, 1};
// sev_cycle
inline constexpr _vexa_error_message_t ERR_cycle_const{"cycle in constant definition", vexa_error_severity_t::sev_cycle, 0};
inline constexpr _vexa_error_message_t ERR_cycle_template{"cycle in template definition", vexa_error_severity_t::sev_cycle, 0};
inline constexpr _vexa_error_message_t ERR_cycle_subtype{"cycle in subtype definition", vexa_error_severity_t::sev_cycle, 0};
inline constexpr _vexa_error_message_t ERR_cycle_modifies{"cyclic dependencies in chain of template modifications", vexa_error_severity_t::sev_cycle, 0};
// sev_template_type
inline constexpr _vexa_error_message_t ERR_type_template_check_port{"unable to determine the type of the template - check the port declaration for valid types", vexa_error_severity_t::sev_template_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_ambiguous{"unable to determine the type of the template - ambiguous type", vexa_error_severity_t::sev_template_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_modifies_nonconst_union{"Modify template within nonconstant union value may cause error during run time", vexa_error_severity_t::sev_template_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_modifies_nonconst_homogeneous_type{"Modify template within nonconstant array value may cause error during run time", vexa_error_severity_t::sev_template_type, 0};
// sev_type
inline constexpr _vexa_error_message_t ERR_type{"the type of \"%s\" is not correct", vexa_error_severity_t::sev_type, 1};
inline constexpr _vexa_error_message_t ERR_type_na{"the type is not correct", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_ambiguous{"ambiguous type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_import{"the type import of \"%s\" from module \"%s\" is incorrect", vexa_error_severity_t::sev_type, 2};
inline constexpr _vexa_error_message_t ERR_type_import_na{"the type import is incorrect", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_decl{"the declared type of \"%s\" does not match the type of the initializer", vexa_error_severity_t::sev_type, 1};
inline constexpr _vexa_error_message_t ERR_type_decl_with_mod{"the declared type of \"%s.%s\" does not match the type of the initializer", vexa_error_severity_t::sev_type, 2};
inline constexpr _vexa_error_message_t ERR_type_param{"the type of the actual parameter does not match the declared formal parameter", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template{"unable to determine the type of the template", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_modifies{"the type of the modifies template does not match the parent type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_modifies_permutated{"unable to modify permutated field", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_modifies_nonconst{"unable to modify template with nonconstant field indexes", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_template_changing{"changing type of explicit template is not allowed", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_ports_incompatible{"incompatible ports - %s  does not accept %s", vexa_error_severity_t::sev_type, 2};
inline constexpr _vexa_error_message_t ERR_type_not_a_type{"is not a type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_not_a_type_with_name{"\"%s\" is not a type", vexa_error_severity_t::sev_type, 1};
inline constexpr _vexa_error_message_t ERR_type_signature_in_subtype{"signature in subtype definition", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_deactivate_wo_def_ref{"'deactivate' requires default reference", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_execute_wo_testcase{"execute requires testcase argument", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_signature_not_allowed{"signature types are not allowed here", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_timer_array_init{"array of timers must be initialized with an array of default timeout values", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_not_allowed_in_template{"%s not allowed in %s template", vexa_error_severity_t::sev_type, 2};
inline constexpr _vexa_error_message_t ERR_port_kind{"using %s on %s-based port", vexa_error_severity_t::sev_type, 2};
inline constexpr _vexa_error_message_t ERR_start_wo_function{"argument to component.start must be a function invocation", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_param_count_in_redir{"incorrect parameter count in parameter redirection", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch{"both arguments have to be of the same type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch_bounds{"bounds have to be of the same type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch_arith{"both arguments have to be of the same type, and either integer or float", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch_bin_string{"both arguments have to be of the same binary string type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch_char_string{"both arguments have to be of the same character string type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_mismatch_replace{"first and last arguments have to be of the same string type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_integer_required{"integer type required", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_boolean_required{"boolean type required", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_malformed_utf8{"malformed UTF-8 string", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_range_subtype{"value ranges are not allowed in subtyping this type", vexa_error_severity_t::sev_type, 0};
inline constexpr _vexa_error_message_t ERR_type_valuelist{"all the members of the value list have to have the same type", vexa_error_severity_t::sev_type, 0};
// sev_value
inline constexpr _vexa_error_message_t ERR_rvalue{"not a valid value in this context - rvalue required", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_rvalue_ext{"not a valid value in this context - rvalue required (use expr == true notation)", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_lvalue{"not a valid value in this context - assignable value required", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_const{"not a valid value in this context - constant value required", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_negative_value{"not a valid value in this context - non-negative value required", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_positive_value{"not a valid value in this context - positive value required", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_invalid_comp_ref{"not a valid component reference", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_invalid_timer{"not a valid timer", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_invalid_port{"not a valid port reference", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_invalid_address_ref{"not a valid address reference", vexa_error_severity_t::sev_value, 0};
inline constexpr _vexa_error_message_t ERR_invalid_port_with_name{"\"%s\" is not a valid port reference", vexa_error_severity_t::sev_value, 1};
inline constexpr _vexa_error_message_t ERR_type_not_a_port{"the declaration of \"%s\" does not specify a port type", vexa_error_severity_t::sev_value, 1};
inline constexpr _vexa_error_message_t ERR_invalid_in_template{"illegal reference in template", vexa_error_severity_t::sev_value, 0};
// sev_semantic
inline constexpr _vexa_error_message_t ERR_conflicting_unqual_attr{"conflicting unqualified attribute specification", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_conflicting_attr{"conflicting qualified attribute specification for \"%s\"", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_enum_duplicate{"duplicate value assigned to enumeration literal", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_template_underdefined{"template is not sufficiently defined", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_template_ambiguous{"template contains matching expressions", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_param_redirect{"redirection of %s-parameter in %s", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_alt_illegal_guard{"illegal guard expression", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_alt_else{"[else] must be the last alternative in an alt statement", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_alt_illegal_something{"illegal %s expression in (implicit) alt statement", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_div_by_zero{"division by zero", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_uninitialized{"accessing uninitialized value \"%s\"", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_interleave_illegal_construct{"%s not allowed inside an interleave statement", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_control_illegal_construct{"%s not allowed inside module control part", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_illegal_runs_on{"illegal argument for runs on", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_illegal_ispresent{"ispresent requires an optional field reference", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_illegal_mandatory{"\"%s\" is not allowed for mandatory fields of a structured type", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_parlist_length{"length of actual parameter list does not match length of formal parameter list", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_start_wo_runs_on{"started function misses a runs on clause", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_runs_on{"invocation of a function, altstep or activating altstep as default with runs on clause from a function without one", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_incompatible_runs_on{"invocation of a function, altstep or activating altstep as default that runs on component of incompatible type", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_incompatible_start{"Functions started by using the \"start\" test component operation must run one the component compatible with the newly created one", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_testcase_invocation{"calling a testcase is not allowed, use execute instead", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_setverdict_error{"\"setverdict(error)\" is not allowed", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_odd_octetstring{"octetstring literal must have even length", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_illegal_operation_for_arr{"array is not allowed for \"%s\"", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_not_allowed_here{"\"%s\" is not allowed here", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_not_allowed_for{"%s is not allowed for %s", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_function_wo_return{"execution may reach end of function without return", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_valueof_for_signature{"calling valueof for signature template", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_no_return{"%s doesn't return value", vexa_error_severity_t::sev_semantic, 1};
inline constexpr _vexa_error_message_t ERR_arr_bounds{"upper bound is smaller than lower bound", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_arr_out_of_bounds{"array or list index out of bounds", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_arr_initializer{"size of value list does not match array bounds", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_negative_bound{"negative bound", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_noblock_param{"noblock signature allows only in parameters", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_exception_type{"only types allowed as exceptions", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_signature_on_msg_port{"sending or receiving signatures on message-based port", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_message_on_proc_port{"sending or receiving messages on procedure-based port", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_call_noblock_with_timeout{"a noblock signature must not be called with nowait or timeout", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_call_noblock_with_body{"call for noblock signature must not have a body", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_connect_system_port{"(dis-)connect for system port", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_wrong_portarr_subscription{"subscription depth of port reference does not match port array dimension", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_wrong_parameter_kind{"%s must not have %s parameter(s)", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_port_passed_not_by_ref{"port parameters must be passed by reference", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_quadruple_range{"quadruple %s value must be between 0 and %s", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_illegal_argument{"illegal argument to %s, must be %s", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_illegal_conversion_size{"value %s requires %s digits", vexa_error_severity_t::sev_semantic, 2};
inline constexpr _vexa_error_message_t ERR_negative_duration{"negative timer duration", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_template_modified_parlist{"formal parameter list of the modifies template does not match parent's parameter list", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_wildcard_in_anyport{"using a wild card template when receiving from 'any port'", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_call_mismatch{"mismatch between call statement and body alternative", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_template_exception_wo_signature{"no exception template allowed when omitting signature type", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_permutation_type{"'permutation' may be used only with 'record of' types", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_permutation_illegal{"not a valid permutation definition", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_mixing_decl_and_stmt{"mixing declarations with behavioural statements is not allowed", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_omit_param_illegal{"'omit' expression is not allowed as parameter value", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_omit_to_mandatory_field{"'omit' assined to mandatory field", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_omit_to_union_field{"'omit' assined to union field", vexa_error_severity_t::sev_semantic, 0};
inline constexpr _vexa_error_message_t ERR_omit_assign_illegal{"'Omit' cannot be assigned", vexa_error_severity_t::sev_semantic, 0};
// sev_subtype
inline constexpr _vexa_error_message_t ERR_subtype{"expression is not among its subtype's possible values", vexa_error_severity_t::sev_subtype, 0};
inline constexpr _vexa_error_message_t ERR_subtype_charset{"expression contains characters not allowed by its subtype", vexa_error_severity_t::sev_subtype, 0};
inline constexpr _vexa_error_message_t ERR_subtype_length{"expression violates its subtype's length restriction; actual length is %s - should be between %s and %s", vexa_error_severity_t::sev_subtype, 3};
// clang-format on
