/****************************************************************
 * Processed by ASN2T3 1.00
 * Syntax file processed by MESK 2.13
 * ASN.1 module = Glue-Forms
 * FILE = Glue_Formst3asn.h
 ****************************************************************/
#ifndef GLUE_FORMST3ASN_H
#define GLUE_FORMST3ASN_H
#include "asnmisc.typ"
#include "Glue_Forms.typ"
#include "lumos.h"

extern const lumo_type_t t3asn_asn_1_null_type;
#define t3asn_STATIC_asn_1_null_type (lumo_type_t)&t3asn_asn_1_null_type_struct
extern lumo_type_struct_t t3asn_asn_1_null_type_struct;


extern int t3asn_Glue_Forms_chck_t3_Glue_FormsNumber (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsRatio (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsTruth (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsName (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsWord (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsOctets (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsFlags (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsList (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsBag (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsEmpty (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsRecord (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsGroup (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsLater (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsSelf (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsPart_Number (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsShort (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_t3_Glue_FormsSynonym_List (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_Bag_expl_agg (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_Record_expl_type_ (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern int t3asn_Glue_Forms_chck_Group_expl_id (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_consof_t3_Glue_FormsList (
  lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context);

extern lumo_value_t t3asn_Glue_Forms_consof_Bag_expl_agg (
  lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context);

extern lumo_value_t t3asn_Glue_Forms_consof_t3_Glue_FormsSynonym_List (
  lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (
  t3_Glue_FormsNumber *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsNumber (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsPart_Number (
  t3_Glue_FormsPart_Number *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsState (
  t3_Glue_FormsState *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsShort (
  t3_Glue_FormsShort *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRatio (
  t3_Glue_FormsRatio *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsTruth (
  t3_Glue_FormsTruth *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsName (
  t3_Glue_FormsName *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsWord (
  t3_Glue_FormsWord *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsOctets (
  t3_Glue_FormsOctets *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsFlags (
  t3_Glue_FormsFlags *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList (
  t3_Glue_FormsList *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsBag (
  t3_Glue_FormsBag *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSynonym_List (
  t3_Glue_FormsSynonym_List *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsEmpty (
  t3_Glue_FormsEmpty *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (
  t3_Glue_FormsRecord *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsRecord (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsAny (
  t3_Glue_FormsAny *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsGroup (
  t3_Glue_FormsGroup *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsLater (
  t3_Glue_FormsLater *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (
  t3_Glue_FormsSelf *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsSelf (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);
/* setfunc */
extern const char* t3asn_Glue_Forms_setfunc_Objects_id(sint32 id, const char *fieldname, lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsNumber *home
  , lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsNumber (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsPart_Number (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsPart_Number *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsState (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsState *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsShort (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsShort *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRatio (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsRatio *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsTruth (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsTruth *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsName (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsName *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsWord (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsWord *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsOctets (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsOctets *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsFlags (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsFlags *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsList (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsList *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsBag (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsBag *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSynonym_List (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsSynonym_List *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsEmpty (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsEmpty *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsRecord *home
  , lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsRecord (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsAny (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsAny *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsGroup (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsGroup *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsLater (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsLater *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsSelf *home
  , lumo_context_t context);

extern lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsSelf (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsNumber (t3_Glue_FormsNumber
  *home, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsPart_Number (
  t3_Glue_FormsPart_Number *home, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsState (t3_Glue_FormsState *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsShort (t3_Glue_FormsShort *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsRatio (t3_Glue_FormsRatio *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsTruth (t3_Glue_FormsTruth *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsName (t3_Glue_FormsName *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsWord (t3_Glue_FormsWord *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsOctets (t3_Glue_FormsOctets
  *home, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsFlags (t3_Glue_FormsFlags *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsList (t3_Glue_FormsList *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsBag (t3_Glue_FormsBag *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsSynonym_List (
  t3_Glue_FormsSynonym_List *home, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsEmpty (t3_Glue_FormsEmpty *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsRecord (t3_Glue_FormsRecord
  *home, lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsAny (t3_Glue_FormsAny *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsGroup (t3_Glue_FormsGroup *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsLater (t3_Glue_FormsLater *home
  , lumo_context_t context);

extern void t3asn_Glue_Forms_dest_t3_Glue_FormsSelf (t3_Glue_FormsSelf *home
  , lumo_context_t context);
extern lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx);

extern lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx);

/* codecs registration */
void t3asn_Glue_Forms_register_codecs (lumo_context_t ctx);

#endif /*GLUE_FORMST3ASN_H*/
