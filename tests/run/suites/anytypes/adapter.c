/* Prints what is sent and sends it back. From the second test case on ANY has a codec, which knows the type
 * Blob. */
#include <stdio.h>
#include <string.h>

#include "Any_Protocol.h"
#include "tri.h"

static const char kBlob[] = "Any_Protocol.Blob";

static int digit(char c) {
  return c <= '9' ? c - '0' : c - 'A' + 10;
}

static lumo_codecs_result_t encode_any(lumo_value_t value, lumo_binary_string_t data,
                                       lumo_context_t context) {
  unsigned char octets[130] = {4};
  lumo_value_t blob = lumo_value_union_value(value, context);
  if (lumo_type_kind(lumo_value_type(blob, context), context) != lumo_type_kind_octetstring)
    return lumo_codecs_result_failed_c;
  const char* digits = lumo_value_get_octetstring(blob, context);
  unsigned long n = 0;
  for (; digits[2 * n] != '\0' && n < 127; ++n)
    octets[2 + n] = (unsigned char)(digit(digits[2 * n]) << 4 | digit(digits[2 * n + 1]));
  octets[1] = (unsigned char)n;
  lumo_binary_string_append(data, octets, n + 2, context);
  return lumo_codecs_result_succeeded_c;
}

static lumo_codecs_result_t decode_any(lumo_binary_string_iter_t* data, lumo_type_t type,
                                       lumo_alloc_strategy_t strategy, lumo_value_t* decoded,
                                       lumo_context_t context) {
  const unsigned char* octets = lumo_binary_string_iter_octets(data);
  const unsigned long size = lumo_binary_string_iter_remaining(data);
  char digits[256] = "";
  if (size < 2 || octets[0] != 4 || octets[1] > 120 || octets[1] + 2ul > size)
    return lumo_codecs_result_failed_c;
  for (int i = 0; i < octets[1]; ++i) sprintf(digits + 2 * i, "%02X", octets[2 + i]);
  *decoded = lumo_type_instantiate_value(type, strategy, context);
  lumo_value_set_octetstring(lumo_value_set_union_alternative_by_name(*decoded, kBlob, context), digits,
                             context);
  lumo_binary_string_iter_advance(data, octets[1] + 2ul);
  return lumo_codecs_result_succeeded_c;
}

TriStatus triUnmap(const TriPortId* component_port, const TriPortId* system_port) {
  (void)component_port;
  (void)system_port;
  lumo_type_set_encoder(&vexa_Any_Protocol_ANY_type_struct, encode_any, NULL);
  lumo_type_set_decoder(&vexa_Any_Protocol_ANY_type_struct, decode_any, NULL);
  return TRI_OK;
}

TriStatus triSend(const TriComponentId* component, const TriPortId* port, const TriAddress* address,
                  const TriMessage* message) {
  printf("sent");
  for (long i = 0; i < message->bits / 8; ++i) printf(" %02X", message->data[i]);
  printf("\n");
  fflush(stdout);
  /* Without a codec nothing was sent for the ANY; the answer has something there. */
  static unsigned char full[] = {0x30, 0x09, 0x02, 0x01, 0x01, 0xA1, 0x04, 0x04, 0x02, 0x01, 0xFF};
  TriMessage answer = *message;
  if (lumo_type_get_encoder(&vexa_Any_Protocol_ANY_type_struct, NULL) == NULL) {
    answer.data = full;
    answer.bits = 8 * sizeof full;
  }
  triEnqueueMsg(port, address, component, &answer);
  return TRI_OK;
}
