/* A codec of the user for a type whose attribute names it: one octet, and its complement. */
#include "lumos.h"

static lumo_codecs_result_t encode(lumo_value_t value, lumo_binary_string_t data, lumo_context_t context) {
  unsigned char octet = (unsigned char)lumo_value_get_integer(value, context);
  unsigned char octets[2] = {octet, (unsigned char)~octet};
  lumo_binary_string_append(data, octets, 2, context);
  return lumo_codecs_result_succeeded_c;
}

static lumo_codecs_result_t decode(lumo_binary_string_iter_t* iter, lumo_type_t type, lumo_alloc_strategy_t strategy,
                                   lumo_value_t* result, lumo_context_t context) {
  const unsigned char* octets = lumo_binary_string_iter_octets(iter);
  if (lumo_binary_string_iter_remaining(iter) < 2 || (octets[0] ^ octets[1]) != 0xFF) return lumo_codecs_result_failed_c;
  *result = lumo_type_instantiate_value(type, strategy, context);
  lumo_value_set_integer(*result, octets[0], context);
  lumo_binary_string_iter_advance(iter, 2);
  return lumo_codecs_result_succeeded_c;
}

void triInit(void) {
  lumo_codec_for("Wire", "Own", encode, decode);
}
