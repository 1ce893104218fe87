/* What the conversions between homes and values of the run-time system, and the wrappers of codecs, call. */
#ifndef ASN2LUMOS_H
#define ASN2LUMOS_H

#include <float.h>
#include <string.h>

#include "asncodec.ext"
#include "lumos.h"

/* Which codec the suite asks for, for the types of one ASN.1 module. */
typedef enum {
  T3ASN_RTS_CODEC_NONE,
  T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH,
  T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH,
  T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED,
  T3ASN_RTS_CODEC_PER_BASIC_ALIGNED,
  T3ASN_RTS_CODEC_OWN
} T3asnRtsCodecSelector;
/* The environment variable ORVANE_ASN1_CODEC comes first, with the name of an encoding as in an encode
 * attribute, or "own"; then the encode attribute of an import of the module. */
T3asnRtsCodecSelector t3asn_get_module_encoding_directive(const char* module, lumo_context_t ctx);

/* Encoding: a frame for the output, and its octets to the run-time system, which also tells a fault of the
 * codec. */
void asn2t3_encode_set_frame(ASNCODG* codg, FRAME_PTR* buffer);
void asn2t3_encode_set_frame_per(ASNPERG* codg, FRAME_PTR* buffer);
void asn2t3_encode_put_bstring(FRAME_PTR* buffer, lumo_codecs_result_t* result,
                               lumo_binary_string_t encoded_data, lumo_context_t ctx);

/* Decoding: TRUE when the home holds a value and the iterator stands behind it. */
typedef BOOLE (*asn2t3_ber_decoder)(ASNCODG* codg, void* home);
typedef BOOLE (*asn2t3_per_decoder)(ASNPERG* codg, void* home);
int asn2t3_decode_set_buf_and_decode(ASNCODG* codg, FRAME_PTR* buffer, ERR_RET* error,
                                     lumo_codecs_result_t* result, lumo_binary_string_iter_t* encoded_data,
                                     asn2t3_ber_decoder decoder, void* home, lumo_context_t ctx);
int asn2t3_decode_set_buf_and_decode_per(ASNPERG* codg, FRAME_PTR* buffer, ERR_RET* error,
                                         lumo_codecs_result_t* result,
                                         lumo_binary_string_iter_t* encoded_data, asn2t3_per_decoder decoder,
                                         void* home, lumo_context_t ctx);

/* Strings. `context` is the caller's. */
void asn2t3_bits(const DYNSTR* string, lumo_value_t value, lumo_context_t context);
void asn2t3_octets(const DYNSTR* string, lumo_value_t value, lumo_context_t context);
void asn2t3_characters(const DYNSTR* string, lumo_value_t value, lumo_context_t context);
void t32asn_bits(DYNSTR* string, lumo_value_t value, lumo_context_t context);
void t32asn_octets(DYNSTR* string, lumo_value_t value, lumo_context_t context);
void t32asn_characters(DYNSTR* string, lumo_value_t value, lumo_context_t context);
void asn2t3_objid(const OBJID* id, lumo_value_t value, lumo_context_t context);
void t32asn_objid(OBJID* id, lumo_value_t value, lumo_context_t context);

#define asn2t3_BitString(home, value) asn2t3_bits(&(home), value, context)
#define asn2t3_OctetString(home, value) asn2t3_octets(&(home), value, context)
#define asn2t3_NumericString(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_PrintableString(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_VisibleString(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_IA5String(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_GeneralizedTimeDT(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_UTCTimeDT(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_GeneralizedTimeCT(home, value) asn2t3_characters(&(home), value, context)
#define asn2t3_UTCTimeCT(home, value) asn2t3_characters(&(home), value, context)
#define t32asn_GeneralizedTimeCT(home, value) t32asn_characters(&(home), value, context)
#define t32asn_UTCTimeCT(home, value) t32asn_characters(&(home), value, context)
#define t32asn_BitString(home, value) t32asn_bits(&(home), value, context)
#define t32asn_OctetString(home, value) t32asn_octets(&(home), value, context)
#define t32asn_NumericString(home, value) t32asn_characters(&(home), value, context)
#define t32asn_PrintableString(home, value) t32asn_characters(&(home), value, context)
#define t32asn_VisibleString(home, value) t32asn_characters(&(home), value, context)
#define t32asn_IA5String(home, value) t32asn_characters(&(home), value, context)
#define t32asn_GeneralizedTimeDT(home, value) t32asn_characters(&(home), value, context)
#define t32asn_UTCTimeDT(home, value) t32asn_characters(&(home), value, context)
#define t32asn_DynObjectDescriptor(home, value) t32asn_characters(home, value, context)
#define asn2t3_DynObjectDescriptor(home, value) asn2t3_characters(home, value, context)
#define asn2t3_objidval(home, value, context) asn2t3_objid(&(home), value, context)
#define t32asn_objidval(home, value, context) t32asn_objid(&(home), value, context)

/* Whether a list has its one size; if not, the value is not encoded. */
BOOLE t3asn_has_size(uint32 n, sint64 size, lumo_context_t context);

/* Open types: by the codec that is registered for the type that was chosen, or for ANY. */
lumo_codecs_result_t asnt3_frame(FRAME_PTR frame, lumo_type_t type, lumo_value_t value,
                                 lumo_alloc_strategy_t strategy, lumo_context_t context);
void t3asn_frame_octets(ASNUTIG* asnutigPtr, FRAME_PTR* frame, lumo_value_t value, lumo_context_t context);
/* The same for the value of an EXTERNAL that is encoded as a single ASN.1 type. */
lumo_codecs_result_t asnt3_single(const DYNSTR* data, lumo_value_t value, lumo_context_t context);
void t3asn_single(DYNSTR* data, lumo_value_t value, lumo_context_t context);
#define t3asn_frame(utig, home, value, context) t3asn_frame_octets(utig, &(home), value, context)

/* Conversions have the argument asnutigPtr, and some of their text speaks of asnutig. */
#define asnutig asnutigPtr

#endif
