/* The user's external constants and functions, and codecs: a pair is two octets, 0 for what is omitted; an integer as well. */
#include "lumos.h"
#include "tri.h"

void Types_xk_limit(lumo_value_t value, lumo_context_t context) { lumo_value_set_integer(value, 42, context); }

void Types_xk_pair(lumo_value_t value, lumo_context_t context) {
  lumo_value_set_integer(lumo_value_field_by_index(value, 0, context), 7, context);
  lumo_value_set_integer(lumo_value_field_by_index_lhs(value, 1, context), 43, context);
}

lumo_value_t Types_xf_returns(unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  lumo_value_t pair = lumo_type_instantiate_value(lumo_find_element("Types", "Pair", context)->type_descriptor,
                                                  lumo_temp_alloc_c, context);
  lumo_value_assign(lumo_value_field_by_index(pair, 0, context), argv[0], context);
  lumo_value_init_vector_element(pair, 1, lumo_omit_value_c, context);
  return pair;
}

lumo_value_t Types_xf_writes(unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  lumo_long_integer_t number = lumo_value_get_integer(argv[0], context);
  lumo_long_integer_t first = lumo_value_get_integer(lumo_value_field_by_index(argv[1], 0, context), context);
  lumo_value_assign_vector_element(argv[1], 1, argv[0], context);
  lumo_value_set_integer(argv[2], number + first, context);
  lumo_value_set_integer(argv[3], number - first, context);
  return argv[3];
}

lumo_value_t Types_xf_nothing(unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  return NULL;
}

lumo_value_t Types_xf_small(unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  return argv[0];
}

lumo_value_t Types_xf_void(unsigned long argc, lumo_value_t argv[], lumo_context_t context) {
  lumo_value_set_integer(argv[0], lumo_value_get_integer(argv[0], context) + 1, context);
  return NULL;
}

static lumo_codecs_result_t put(lumo_long_integer_t a, lumo_long_integer_t b, lumo_binary_string_t data,
                                lumo_context_t context) {
  unsigned char octets[2] = {(unsigned char)a, (unsigned char)b};
  lumo_binary_string_append(data, octets, 2, context);
  return lumo_codecs_result_succeeded_c;
}

static lumo_codecs_result_t encode_pair(lumo_value_t pair, lumo_binary_string_t data, lumo_context_t context) {
  lumo_value_t second = lumo_value_field_by_index(pair, 1, context);
  return put(lumo_value_get_integer(lumo_value_field_by_index(pair, 0, context), context),
             second == lumo_omit_value_c ? 0 : lumo_value_get_integer(second, context), data, context);
}

static lumo_codecs_result_t encode_integer(lumo_value_t value, lumo_binary_string_t data, lumo_context_t context) {
  lumo_long_integer_t number = lumo_value_get_integer(value, context);
  return put(number >> 8, number & 255, data, context);
}

static lumo_codecs_result_t decode_pair(lumo_binary_string_iter_t* iter, lumo_type_t type,
                                        lumo_alloc_strategy_t strategy, lumo_value_t* result,
                                        lumo_context_t context) {
  const unsigned char* octets = lumo_binary_string_iter_octets(iter);
  if (lumo_binary_string_iter_remaining(iter) != 2) return lumo_codecs_result_failed_c;
  *result = lumo_type_instantiate_value(type, strategy, context);
  lumo_value_set_integer(lumo_value_field_by_index(*result, 0, context), octets[0], context);
  if (octets[1])
    lumo_value_set_integer(lumo_value_field_by_index_lhs(*result, 1, context), octets[1], context);
  else
    lumo_value_init_vector_element(*result, 1, lumo_omit_value_c, context);
  lumo_binary_string_iter_advance(iter, 2);
  return lumo_codecs_result_succeeded_c;
}

static lumo_codecs_result_t decode_integer(lumo_binary_string_iter_t* iter, lumo_type_t type,
                                           lumo_alloc_strategy_t strategy, lumo_value_t* result,
                                           lumo_context_t context) {
  const unsigned char* octets = lumo_binary_string_iter_octets(iter);
  if (lumo_binary_string_iter_remaining(iter) != 2) return lumo_codecs_result_failed_c;
  *result = lumo_type_instantiate_value(type, strategy, context);
  lumo_value_set_integer(*result, octets[0] * 256 + octets[1], context);
  lumo_binary_string_iter_advance(iter, 2);
  return lumo_codecs_result_succeeded_c;
}

TriStatus triMap(const TriPortId* component_port, const TriPortId* system_port) {
  lumo_type_t pair = lumo_find_element("Types", "Pair", NULL)->type_descriptor;
  lumo_type_set_encoder(pair, encode_pair, NULL);
  lumo_type_set_decoder(pair, decode_pair, NULL);
  lumo_type_set_encoder(lumo_integer_type, encode_integer, NULL);
  lumo_type_set_decoder(lumo_integer_type, decode_integer, NULL);
  return TRI_OK;
}
