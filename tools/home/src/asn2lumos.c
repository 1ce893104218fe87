/* Between homes and the values of the run-time system. */
#include "asn2lumos.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---------------------------------------------------------------- which codec */

static T3asnRtsCodecSelector codec_of(const char* name, const char* variant) {
  if (name == NULL) return T3ASN_RTS_CODEC_NONE;
  if (strstr(name, "BER:1997-length-form-3") != NULL) return T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH;
  if (strstr(name, "BER:1997") != NULL)
    return variant != NULL && strstr(variant, "length form 3") != NULL ? T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH
                                                                       : T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH;
  if (strstr(name, "PER-BASIC-UNALIGNED:1997") != NULL) return T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED;
  if (strstr(name, "PER-BASIC-ALIGNED:1997") != NULL) return T3ASN_RTS_CODEC_PER_BASIC_ALIGNED;
  return strstr(name, "own") != NULL ? T3ASN_RTS_CODEC_OWN : T3ASN_RTS_CODEC_NONE;
}

T3asnRtsCodecSelector t3asn_get_module_encoding_directive(const char* module, lumo_context_t ctx) {
  const char* given = getenv("ORVANE_ASN1_CODEC");
  if (given != NULL && *given != '\0') return codec_of(given, NULL);
  return codec_of(t3asn_lumo_import_encoding(module, ctx), t3asn_lumo_import_variant(module, ctx));
}

/* ---------------------------------------------------------------- the run of a codec */

/* The fault of the codec that ran last. Encoders have no result of their own; they run one at a time. */
static const char** last_error;
/* What of the value that is being converted could not be encoded; NULL while all is well. */
static const char* not_converted;

void asn2t3_encode_set_frame(ASNCODG* codg, FRAME_PTR* buffer) {
  *buffer = createFrame(DB_SIZE);
  codg->frame = *buffer;
  codg->error = NULL;
  codg->indefinite = 0;
  last_error = &codg->error;
}

void asn2t3_encode_set_frame_per(ASNPERG* codg, FRAME_PTR* buffer) {
  *buffer = createFrame(DB_SIZE);
  codg->frame = *buffer;
  codg->error = NULL;
  last_error = &codg->error;
}

static void tell(const char* what, const char* error, lumo_context_t ctx) {
  char text[200];
  snprintf(text, sizeof text, "%s: %s", what, error);
  lumo_log_string_to_all(lumo_log_msg_error_c, text, ctx);
}

void asn2t3_encode_put_bstring(FRAME_PTR* buffer, lumo_codecs_result_t* result,
                               lumo_binary_string_t encoded_data, lumo_context_t ctx) {
  if (last_error != NULL && *last_error != NULL) {
    tell("ASN.1 encoder", *last_error, ctx);
    *result = lumo_codecs_result_failed_c;
  } else if (not_converted != NULL) {
    tell("ASN.1 encoder", not_converted, ctx);
    *result = lumo_codecs_result_failed_c;
  } else {
    lumo_binary_string_append(encoded_data, (*buffer)->octets, (*buffer)->n, ctx);
  }
  last_error = NULL;
  not_converted = NULL;
  deleteFrame(*buffer);
  *buffer = NULL;
}

static int decoded(BOOLE good, const char* error, size_t taken, lumo_codecs_result_t* result,
                   lumo_binary_string_iter_t* encoded_data, lumo_context_t ctx) {
  if (!good) {
    tell("ASN.1 decoder", error != NULL ? error : "failed", ctx);
    *result = lumo_codecs_result_failed_c;
    return FALSE;
  }
  lumo_binary_string_iter_advance(encoded_data, (unsigned long)taken);
  return TRUE;
}

int asn2t3_decode_set_buf_and_decode(ASNCODG* codg, FRAME_PTR* buffer, ERR_RET* error,
                                     lumo_codecs_result_t* result, lumo_binary_string_iter_t* encoded_data,
                                     asn2t3_ber_decoder decoder, void* home, lumo_context_t ctx) {
  *buffer = NULL;
  codg->at = lumo_binary_string_iter_octets(encoded_data);
  codg->rest = lumo_binary_string_iter_remaining(encoded_data);
  const size_t all = codg->rest;
  const BOOLE good = decoder(codg, home);
  error->text = codg->error;
  return decoded(good, codg->error, all - codg->rest, result, encoded_data, ctx);
}

int asn2t3_decode_set_buf_and_decode_per(ASNPERG* codg, FRAME_PTR* buffer, ERR_RET* error,
                                         lumo_codecs_result_t* result,
                                         lumo_binary_string_iter_t* encoded_data, asn2t3_per_decoder decoder,
                                         void* home, lumo_context_t ctx) {
  *buffer = NULL;
  codg->octets = lumo_binary_string_iter_octets(encoded_data);
  codg->bits = (size_t)lumo_binary_string_iter_remaining(encoded_data) * 8;
  const BOOLE good = decoder(codg, home);
  error->text = codg->error;
  /* A whole value takes one octet at least. */
  const size_t taken = codg->at_bit == 0 ? (codg->bits > 0) : (codg->at_bit + 7) / 8;
  return decoded(good, codg->error, taken, result, encoded_data, ctx);
}

/* ---------------------------------------------------------------- strings */

static const char kDigits[] = "0123456789ABCDEF";

static char* text_of(size_t n) {
  char* text = malloc(n + 1);
  if (text == NULL) {
    fputs("ASN.1: out of memory\n", stderr);
    abort();
  }
  text[n] = '\0';
  return text;
}

void asn2t3_bits(const DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  char* digits = text_of(string->n);
  for (uint32 i = 0; i < string->n; ++i) digits[i] = (char)('0' + (string->s[i / 8] >> (7 - i % 8) & 1));
  lumo_value_set_bitstring(value, digits, context);
  free(digits);
}

void asn2t3_octets(const DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  char* digits = text_of((size_t)string->n * 2);
  for (uint32 i = 0; i < string->n; ++i) {
    digits[2 * i] = kDigits[string->s[i] >> 4];
    digits[2 * i + 1] = kDigits[string->s[i] & 15];
  }
  lumo_value_set_octetstring(value, digits, context);
  free(digits);
}

void asn2t3_characters(const DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  char* text = text_of(string->n);
  if (string->n > 0) memcpy(text, string->s, string->n);
  lumo_value_set_string(value, text, context);
  free(text);
}

void t32asn_bits(DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  const char* digits = lumo_value_get_bitstring(value, context);
  const size_t n = strlen(digits);
  string->n = (uint32)n;
  string->s = allocAsn(NULL, MB_STG, n / 8 + 1);
  for (size_t i = 0; i < n; ++i)
    if (digits[i] == '1') string->s[i / 8] |= (BYTE_TYPE)(1 << (7 - i % 8));
}

static int digit(char c) {
  return c <= '9' ? c - '0' : (c & ~0x20) - 'A' + 10;
}

void t32asn_octets(DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  const char* digits = lumo_value_get_octetstring(value, context);
  const size_t n = strlen(digits) / 2;
  string->n = (uint32)n;
  string->s = allocAsn(NULL, MB_STG, n + 1);
  for (size_t i = 0; i < n; ++i)
    string->s[i] = (BYTE_TYPE)(digit(digits[2 * i]) << 4 | digit(digits[2 * i + 1]));
}

void t32asn_characters(DYNSTR* string, lumo_value_t value, lumo_context_t context) {
  const char* text = lumo_value_get_string(value, context);
  const size_t n = lumo_value_string_length(value, context);
  string->n = (uint32)n;
  string->s = allocAsn(NULL, MB_STG, n + 1);
  memcpy(string->s, text, n);
}

void asn2t3_objid(const OBJID* id, lumo_value_t value, lumo_context_t context) {
  for (uint32 i = 0; i < id->n; ++i) lumo_value_add_objectid_element(value, id->arc[i], context);
}

void t32asn_objid(OBJID* id, lumo_value_t value, lumo_context_t context) {
  id->n = (uint32)t3asn_lumo_objectid_size(value, context);
  id->arc = allocAsn(NULL, MB_STG, (id->n + 1) * sizeof *id->arc);
  for (uint32 i = 0; i < id->n; ++i) id->arc[i] = lumo_value_get_objectid_element(value, i, context);
}

BOOLE t3asn_has_size(uint32 n, sint64 size, lumo_context_t context) {
  (void)context;
  if (n == size) return TRUE;
  not_converted = "a list of one size has another one";
  return FALSE;
}

/* ---------------------------------------------------------------- open types */

static lumo_codecs_result_t decode_open(const BYTE_TYPE* octets, uint32 n, lumo_value_t value, lumo_context_t context) {
  if (octets != NULL && t3asn_lumo_decode_octets(value, octets, n, context)) return lumo_codecs_result_succeeded_c;
  tell("ASN.1 decoder", "an open type was not decoded", context);
  return lumo_codecs_result_failed_c;
}

lumo_codecs_result_t asnt3_frame(FRAME_PTR frame, lumo_type_t type, lumo_value_t value,
                                 lumo_alloc_strategy_t strategy, lumo_context_t context) {
  (void)type;
  (void)strategy;
  return decode_open(frame != NULL ? frame->octets : NULL, frame != NULL ? frame->n : 0, value, context);
}

lumo_codecs_result_t asnt3_single(const DYNSTR* data, lumo_value_t value, lumo_context_t context) {
  return decode_open(data->s, data->n, value, context);
}

void t3asn_single(DYNSTR* data, lumo_value_t value, lumo_context_t context) {
  unsigned long n = 0;
  unsigned char* octets = t3asn_lumo_encode_octets(value, &n, context);
  data->n = (uint32)n;
  data->s = allocAsn(NULL, MB_STG, n + 1);
  if (octets != NULL)
    memcpy(data->s, octets, n);
  else
    not_converted = "an open type was not encoded";
  free(octets);
}

void t3asn_frame_octets(ASNUTIG* asnutigPtr, FRAME_PTR* frame, lumo_value_t value, lumo_context_t context) {
  *frame = createFrame(DB_SIZE);
  insertMemBlock(getHomeG(asnutigPtr), MB_FRM, (BYTE_TYPE*)*frame);
  unsigned long n = 0;
  unsigned char* octets = t3asn_lumo_encode_octets(value, &n, context);
  if (octets == NULL || !appendToFrame(*frame, octets, n)) not_converted = "an open type was not encoded";
  free(octets);
}
