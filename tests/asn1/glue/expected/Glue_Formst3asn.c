/****************************************************************
 * Processed by ASN2T3 1.00
 * Syntax file processed by MESK 2.13
 * ASN.1 module = Glue-Forms
 * FILE = Glue_Formst3asn.c
 ****************************************************************/
#include <limits.h>
#include "asncnf.cnf"
#include "asnutils.ext"
#include "asncodec.ext"
#include "memory.ext"
#include "Glue_Forms.typ"
#include "Glue_Formscod.ext"
#define GLUE_FORMSBI_TYP
#include "Glue_Formsbicod.ext"
#include "Glue_Formsper.ext"
#include "Glue_Formspec.ext"
#include "Glue_Formspdc.ext"
#include "lumos.h"
#include "Glue_Forms.h"
#ifdef bool
#undef bool
#endif
#ifdef true
#undef true
#endif
#ifdef false
#undef false
#endif
#include "asn2lumos.h"
#include "Glue_Formst3asn.h"

int t3asn_Glue_Forms_chck_t3_Glue_FormsNumber (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_integer )
    return FALSE;
  {
    const lumo_long_integer_t home = lumo_value_get_integer(v0, context);

    if ( !( ( (lumo_long_integer_literal(1) <= home && home <=
        lumo_long_integer_literal(5) )
       || (lumo_long_integer_literal(7) < home && home <=
        lumo_long_integer_literal(9) )
       )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsRatio (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_float )
    return FALSE;
  {
    const double home = lumo_value_get_float(v0, context);

    if ( !( (0.0 <= home && home <10.0 )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsTruth (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_boolean )
    return FALSE;
  {
    const int home = (int) lumo_value_get_boolean(v0, context);

    if ( !( ( home ==TRUE )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsName (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_charstring )
    return FALSE;
  {
    const long size = (long) lumo_value_string_length (v0, context);
    const char *home = lumo_value_get_string (v0, context);
    if ( !(
      strspn (lumo_value_get_string(v0, context), "abcd") == 
        lumo_lengthof(v0, context) && (1 <=size )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsWord (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_charstring )
    return FALSE;
  {
    const char *home = lumo_value_get_string (v0, context);
    if ( !( ( ((strcmp (home,"yes") == 0) )
       || ((strcmp (home,"no") == 0) )
       )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsOctets (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_octetstring )
    return FALSE;
  {
    const long size = (long) lumo_value_string_length (v0, context);
    if ( !( ( (size ==2 )
       ||  (size ==4 )
       )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsFlags (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_bitstring )
    return FALSE;
  {
    const long size = (long) lumo_value_string_length (v0, context);
    if ( !( (size ==3 )
         )
       )
      return FALSE;
  }

    return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsList (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( !lumo_value_is_initialized (v0, context) )
    return TRUE;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_recordof) )
    return FALSE;
  {
    const long size = (long) lumo_value_vector_size (v0, context);

    if ( !( (0 <=size &&size <=3 )
         )
       )
      return FALSE;
  }

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsBag (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( !lumo_value_is_initialized (v0, context) )
    return TRUE;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_setof) )
    return FALSE;

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsEmpty (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_record )
    return FALSE;

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsRecord (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  t3_Glue_FormsRecord homeval, *home = &homeval;

  home->compmask = 0;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_record )
    return FALSE;

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsGroup (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  t3_Glue_FormsGroup homeval, *home = &homeval;

  home->compmask = 0;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_set )
    return FALSE;

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsLater (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_record )
    return FALSE;

  return TRUE;
}

int t3asn_Glue_Forms_chck_t3_Glue_FormsSelf (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_union )
    return FALSE;
  t3_Glue_FormsSelf home_val, *home = &home_val;

  home->choice = -1;
  home->choice = (sint32) lumo_value_union_index(v0, context);
  switch (home->choice){
    /* Following close braces intentionally commented out }
}
*/
  }

  return TRUE;
}

/* Synonym type check function */
int t3asn_Glue_Forms_chck_t3_Glue_FormsPart_Number (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if (!t3asn_Glue_Forms_chck_t3_Glue_FormsNumber ( lumo_value_type (v0,context), v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  {
    const lumo_long_integer_t home = lumo_value_get_integer(v0, context);

    if ( !( ! ( home == lumo_long_integer_literal(2) )
         )
       )
      return FALSE;
  }

  return TRUE;
}

/* Synonym type check function */
int t3asn_Glue_Forms_chck_t3_Glue_FormsShort (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  {
    const long home = lumo_value_get_enum_number(v0, context);

    if ( !( ( home == lumo_long_integer_literal(3) )
         )
       )
      return FALSE;
  }

  return TRUE;
}

/* Synonym type check function */
int t3asn_Glue_Forms_chck_t3_Glue_FormsSynonym_List (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if (!t3asn_Glue_Forms_chck_t3_Glue_FormsList ( lumo_value_type (v0,context), v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  {
    const long size = (long) lumo_value_vector_size (v0, context);

    if ( !( (size ==1 )
         )
       )
      return FALSE;
  }

  return TRUE;
}

/* inlined type check function */
int t3asn_Glue_Forms_chck_Bag_expl_agg (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( !lumo_value_is_initialized (v0, context) )
    return TRUE;
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_recordof) )
    return FALSE;
  {
    const long size = (long) lumo_value_vector_size (v0, context);

    if ( !( (size ==2 )
         )
       )
      return FALSE;
  }

  return TRUE;
}

/* inlined type check function */
int t3asn_Glue_Forms_chck_Record_expl_type_ (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_integer )
    return FALSE;
  {
    const lumo_long_integer_t home = lumo_value_get_integer(v0, context);

    if ( !( (lumo_long_integer_literal(0) <= home && home <=
        lumo_long_integer_literal(9) )
         )
       )
      return FALSE;
  }

    return TRUE;
}

/* inlined type check function */
int t3asn_Glue_Forms_chck_Group_expl_id (lumo_type_t type, 
  lumo_value_t v0, lumo_context_t context)
{
  if ( t3asn_lumo_value_is_special_value (v0, context) )
    return FALSE;
  if ( t3asn_lumo_value_is_external_value (v0, context) )
    return TRUE;
  if ( lumo_type_kind ( lumo_value_type (v0, context),context) != lumo_type_kind_integer )
    return FALSE;
  {
    const lumo_long_integer_t home = lumo_value_get_integer(v0, context);

    if ( !(TRUE     )
       )
      return FALSE;
  }

    return TRUE;
}

lumo_value_t t3asn_Glue_Forms_consof_t3_Glue_FormsList (
  lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context)
{
  lumo_value_t v0, vl, vh;
  v0 = lumo_type_instantiate_dynamic_template(&(vexa_Glue_Forms_t3_Glue_FormsList_type_struct), vexa_alloc_strategy, 0, vexa_context);
  vl = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  vh = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  lumo_value_set_integer(vl, lumo_long_integer_literal(0), vexa_context);
  lumo_value_set_integer(vh, lumo_long_integer_literal(3), vexa_context);
  lumo_template_set_value(v0, lumo_anyornone_value_c, 0, vexa_context);
  lumo_template_set_length_constraint(v0, vl, vh, vexa_context);
  return v0;
}

lumo_value_t t3asn_Glue_Forms_consof_Bag_expl_agg (lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context)
{
  lumo_value_t v0, vl, vh;
  v0 = lumo_type_instantiate_dynamic_template(&(vexa_Glue_Forms_Bag_expl_agg_type_struct), vexa_alloc_strategy, 0, vexa_context);
  vl = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  vh = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  lumo_value_set_integer(vl, lumo_long_integer_literal(2), vexa_context);
  lumo_value_set_integer(vh, lumo_long_integer_literal(2), vexa_context);
  lumo_template_set_value(v0, lumo_anyornone_value_c, 0, vexa_context);
  lumo_template_set_length_constraint(v0, vl, vh, vexa_context);
  return v0;
}

lumo_value_t t3asn_Glue_Forms_consof_t3_Glue_FormsSynonym_List (
  lumo_type_t vexa_type, 
  lumo_alloc_strategy_t vexa_alloc_strategy, lumo_context_t vexa_context)
{
  lumo_value_t v0, vl, vh;
  v0 = lumo_type_instantiate_dynamic_template(&(vexa_Glue_Forms_t3_Glue_FormsSynonym_List_type_struct), vexa_alloc_strategy, 0, vexa_context);
  vl = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  vh = lumo_type_instantiate_value(lumo_integer_type, vexa_alloc_strategy, vexa_context);
  lumo_value_set_integer(vl, lumo_long_integer_literal(1), vexa_context);
  lumo_value_set_integer(vh, lumo_long_integer_literal(1), vexa_context);
  lumo_template_set_value(v0, lumo_anyornone_value_c, 0, vexa_context);
  lumo_template_set_length_constraint(v0, vl, vh, vexa_context);
  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (
  t3_Glue_FormsNumber *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_integer(lumo_type_instantiate_value(&(vexa_Glue_Forms_t3_Glue_FormsNumber_type_struct),strategy, context), 
    (*home), context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsNumber (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  t3_Glue_FormsNumber *home = (t3_Glue_FormsNumber *) lumo_value_get_external_value ( v0, context );

  return t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (home, strategy, context);
}

/* synonym type */
lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsPart_Number (
  t3_Glue_FormsPart_Number *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_integer(lumo_type_instantiate_value(&(vexa_Glue_Forms_t3_Glue_FormsPart_Number_type_struct),strategy, context), 
    (*home), context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsState (
  t3_Glue_FormsState *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_enum (lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsState_type_struct), strategy, context), 
    (*home).value, context);

  return v0;
}

/* synonym type */
lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsShort (
  t3_Glue_FormsShort *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_enum (lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsShort_type_struct), strategy, context), 
    (*home).value, context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRatio (
  t3_Glue_FormsRatio *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_float (lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsRatio_type_struct), strategy, context), 
    (*home), context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsTruth (
  t3_Glue_FormsTruth *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_value_set_boolean(lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsTruth_type_struct), strategy, context), 
    (*home), context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsName (
  t3_Glue_FormsName *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsName_type_struct), strategy, context);
  asn2t3_IA5String ((*home), v0);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsWord (
  t3_Glue_FormsWord *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsWord_type_struct), strategy, context);
  asn2t3_VisibleString ((*home), v0);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsOctets (
  t3_Glue_FormsOctets *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsOctets_type_struct), strategy, context);
  asn2t3_OctetString ((*home), v0);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsFlags (
  t3_Glue_FormsFlags *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsFlags_type_struct), strategy, context);
  asn2t3_BitString ((*home), v0);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList (
  t3_Glue_FormsList *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsList_type_struct) , strategy, context);
  {
    uint32 tn0 = 0;
    for (; tn0 < home->n; ++ tn0) {
      v1 = lumo_value_set_integer(lumo_type_instantiate_value(&(vexa_Glue_Forms_t3_Glue_FormsNumber_type_struct),strategy, context), 
        home->elem [tn0], context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      if (home->n == (lumo_value_vector_size (v0, context) + 1))
        lumo_value_add_vector_element (v0, v1, context);
      else
        lumo_value_assign_vector_element_partial (v0, lumo_value_vector_size (v0, context), v1, context);
    }
  }
  if (home->n == 0)
    lumo_value_set_vector_empty (v0, context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsBag (
  t3_Glue_FormsBag *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsBag_type_struct) , strategy, context);
  {
    uint32 tn0 = 0;
    for (; tn0 < home->n; ++ tn0) {
      {
        lumo_value_t v2;

        v1 = lumo_type_instantiate_value (&(vexa_Glue_Forms_Bag_expl_agg_type_struct) , strategy, context);
        {
          uint32 tn1 = 0;
          for (; tn1 < home->elem [tn0].n; ++ tn1) {
            v2 = lumo_value_set_boolean(lumo_type_instantiate_value (lumo_boolean_type, strategy, context), 
              home->elem [tn0].elem [tn1], context);
            if (v2 == lumo_illegal_value_c)
              return lumo_illegal_value_c;
            if (home->elem [tn0].n == (lumo_value_vector_size (v1, context) + 1))
              lumo_value_add_vector_element (v1, v2, context);
            else
              lumo_value_assign_vector_element_partial (v1, lumo_value_vector_size (v1, context), v2, context);
          }
        }
        if (home->elem [tn0].n == 0)
          lumo_value_set_vector_empty (v1, context);
      }
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      if (home->n == (lumo_value_vector_size (v0, context) + 1))
        lumo_value_add_vector_element (v0, v1, context);
      else
        lumo_value_assign_vector_element_partial (v0, lumo_value_vector_size (v0, context), v1, context);
    }
  }
  if (home->n == 0)
    lumo_value_set_vector_empty (v0, context);

  return v0;
}

/* synonym type */
lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSynonym_List (
  t3_Glue_FormsSynonym_List *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  v0 = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsList ((t3_Glue_FormsList
    *) home, strategy, context);
  t3asn_lumo_value_set_type (v0, &(vexa_Glue_Forms_t3_Glue_FormsSynonym_List_type_struct), context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsEmpty (
  t3_Glue_FormsEmpty *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsEmpty_type_struct) , strategy, context);
  /* empty struct */
  lumo_value_set_vector_empty(v0, context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (
  t3_Glue_FormsRecord *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsRecord_type_struct) , strategy, context);
  lumo_value_set_omit(v0, 2, context);
  lumo_value_set_omit(v0, 3, context);
  v1 = lumo_value_set_boolean(lumo_type_instantiate_value (lumo_boolean_type, strategy, context), 
    home->a, context);
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,0,v1,context);
  if (home->compmask & BITL(1)){
    v1 = lumo_value_set_integer(lumo_type_instantiate_value(lumo_integer_type,strategy, context), 
      home->type, context);
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,1,v1,context);
  }
  else
    lumo_value_assign_vector_element (v0,1,lumo_type_field_default_value(lumo_value_type(v0, context), 1, context),context);
  if (home->compmask & BITL(2)){
    {
      lumo_value_t v2;

      v1 = lumo_type_instantiate_value (&(vexa_Glue_Forms_Record_expl_inner_type_struct) , strategy, context);
      switch (home->inner.choice){
        case 0:
        {
          v2 = lumo_value_set_enum (lumo_type_instantiate_value (&(t3asn_asn_1_null_type_struct), strategy, context), 0, context);
          if (v2 == lumo_illegal_value_c)
            return lumo_illegal_value_c;
          lumo_value_set_union_alternative_by_index (v1,0,context);
          lumo_value_assign(lumo_value_union_value (v1,context),v2,context);
          break;
        }
        case 1:
        {
          v2 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsFlags_type_struct), strategy, context);
          asn2t3_BitString (home->inner.y, v2);
          if (v2 == lumo_illegal_value_c)
            return lumo_illegal_value_c;
          lumo_value_set_union_alternative_by_index (v1,1,context);
          lumo_value_assign(lumo_value_union_value (v1,context),v2,context);
          break;
        }
      }
    }
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,2,v1,context);
  }
  if (home->compmask & BITL(3)){
    v1 = lumo_type_instantiate_value (lumo_charstring_type, strategy, context);
    asn2t3_GeneralizedTimeDT (home->more, v1);
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,3,v1,context);
  }
  if (home->compmask & BITL(4)){
    v1 = lumo_value_set_float (lumo_type_instantiate_value (lumo_float_type, strategy, context), 
      home->last, context);
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,4,v1,context);
  }

  return v0;
}

lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsRecord (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  t3_Glue_FormsRecord *home = (t3_Glue_FormsRecord *) lumo_value_get_external_value ( v0, context );

  return t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (home, strategy, context);
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsAny (
  t3_Glue_FormsAny *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0;

  /* Needs a user defined decoding function for ANY type */
  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), strategy, context);
  if (lumo_type_get_decoder (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), context))
  {
    if (asnt3_frame ((*home), &(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), v0, strategy, context) != lumo_codecs_result_succeeded_c)
      return lumo_illegal_value_c;
  }
  else
  {
    /* No user registered codec */
    lumo_log_string_to_all (lumo_log_msg_error_c, "No user registered decoder for ASN.1 type Any", context);
    return lumo_illegal_value_c;
  }

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsGroup (
  t3_Glue_FormsGroup *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsGroup_type_struct) , strategy, context);
  lumo_value_set_omit(v0, 3, context);
  v1 = lumo_value_set_integer(lumo_type_instantiate_value(lumo_integer_type,strategy, context), 
    home->id, context);
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,0,v1,context);
  v1 = lumo_type_instantiate_value (&(vexa_Glue_Forms_ANY_type_struct), strategy, context);
  lumo_value_set_union_alternative_by_name(v1, t3asn_Glue_Forms_setfunc_Objects_id(home->id, "Value", context), context);
  if (asnt3_frame (home->value, &(vexa_Glue_Forms_ANY_type_struct), v1, strategy, context) != lumo_codecs_result_succeeded_c)
    return lumo_illegal_value_c;
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,1,v1,context);
  v1 = lumo_type_instantiate_value (lumo_objectidentifier_type , strategy, context);
  asn2t3_objidval (home->oid, v1, context);
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,2,v1,context);
  if (home->compmask & BITL(3)){
    v1 = lumo_type_instantiate_value (&(vexa_Glue_Forms_EXTERNAL_type_struct), strategy, context);
    if (is_direct_EXTERNAL(home->ext))
    {
      asn2t3_objidval (home->ext.direct, lumo_value_field_by_index_lhs(v1, 3, context), context);
    }
    else
      lumo_value_set_omit(v1, 3, context);
    if (is_indirect_EXTERNAL(home->ext))
    {
      lumo_value_set_integer(lumo_value_field_by_index_lhs(v1, 2, context), home->ext.indirect, context);
    }
    else
      lumo_value_set_omit(v1, 2, context);
    if (is_descr_EXTERNAL(home->ext))
    {
      asn2t3_DynObjectDescriptor(&(home->ext.descr), lumo_value_field_by_index_lhs(v1, 1, context));
    }
    else
      lumo_value_set_omit(v1, 1, context);
    /* Needs a user defined decoding function for 'encoding' field of EXTERNAL type */
    {
      lumo_value_t encoding_value = lumo_value_field_by_index_lhs(v1, 0, context);
      if (is_single_EXTERNAL(home->ext))
        return lumo_illegal_value_c;
      if (is_octet_EXTERNAL(home->ext))
        asn2t3_OctetString (home->ext.data, lumo_value_set_union_alternative_by_name(encoding_value, "octet_aligned", context));
      else
        asn2t3_BitString (home->ext.data, lumo_value_set_union_alternative_by_name(encoding_value, "arbitrary", context));
    }
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,3,v1,context);
  }
  /* Needs a user defined decoding function for ANY type */
  v1 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), strategy, context);
  if (lumo_type_get_decoder (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), context))
  {
    if (asnt3_frame (home->any, &(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), v1, strategy, context) != lumo_codecs_result_succeeded_c)
      return lumo_illegal_value_c;
  }
  else
  {
    /* No user registered codec */
    lumo_log_string_to_all (lumo_log_msg_error_c, "No user registered decoder for ASN.1 type any", context);
    return lumo_illegal_value_c;
  }
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,4,v1,context);

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsLater (
  t3_Glue_FormsLater *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsLater_type_struct) , strategy, context);
  v1 = lumo_value_set_enum (lumo_type_instantiate_value (&(t3asn_asn_1_null_type_struct), strategy, context), 0, context);
  if (v1 == lumo_illegal_value_c)
    return lumo_illegal_value_c;
  lumo_value_assign_vector_element (v0,0,v1,context);
  if (home->compmask & BITL(1)){
    v1 = lumo_value_set_boolean(lumo_type_instantiate_value (lumo_boolean_type, strategy, context), 
      home->b, context);
    if (v1 == lumo_illegal_value_c)
      return lumo_illegal_value_c;
    lumo_value_assign_vector_element (v0,1,v1,context);
  }

  return v0;
}

lumo_value_t t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (
  t3_Glue_FormsSelf *home
  , lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  lumo_value_t v0,v1;

  v0 = lumo_type_instantiate_value (&(vexa_Glue_Forms_t3_Glue_FormsSelf_type_struct) , strategy, context);
  switch (home->choice){
    case 0:
    {
      v1 = lumo_value_set_enum (lumo_type_instantiate_value (&(t3asn_asn_1_null_type_struct), strategy, context), 0, context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      lumo_value_set_union_alternative_by_index (v0,0,context);
      lumo_value_assign(lumo_value_union_value (v0,context),v1,context);
      return v0;
    }
    case 1:
    {
      v1 = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf ((
        t3_Glue_FormsSelf *) home->more, strategy, context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      lumo_value_set_union_alternative_by_index (v0,1,context);
      lumo_value_assign(lumo_value_union_value (v0,context),v1,context);
      return v0;
    }
    case 2:
    {
      v1 = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord ((
        t3_Glue_FormsRecord *) &(home->record), strategy, context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      lumo_value_set_union_alternative_by_index (v0,2,context);
      lumo_value_assign(lumo_value_union_value (v0,context),v1,context);
      return v0;
    }
    case 3:
    {
      v1 = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsGroup ((
        t3_Glue_FormsGroup *) &(home->group), strategy, context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      lumo_value_set_union_alternative_by_index (v0,3,context);
      lumo_value_assign(lumo_value_union_value (v0,context),v1,context);
      return v0;
    }
    case 4:
    {
      v1 = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSynonym_List ((
        t3_Glue_FormsSynonym_List *) &(home->list), strategy, context);
      if (v1 == lumo_illegal_value_c)
        return lumo_illegal_value_c;
      lumo_value_set_union_alternative_by_index (v0,4,context);
      lumo_value_assign(lumo_value_union_value (v0,context),v1,context);
      return v0;
    }
    /* Following close braces intentionally commented out }
}
*/
  }
  return v0;
}

lumo_value_t t3asn_Glue_Forms_translate_asn_to_t3_t3_Glue_FormsSelf (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  t3_Glue_FormsSelf *home = (t3_Glue_FormsSelf *) lumo_value_get_external_value ( v0, context );

  return t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (home, strategy, context);
}
/* setfunc */
const char* t3asn_Glue_Forms_setfunc_Objects_id(sint32 id, const char *fieldname, lumo_context_t context)
{
  switch(id)
  {
    case 1:
    if(strcmp(fieldname, "Value") == 0)
    return("Glue_Forms.Number");
    break;
    case 2:
    if(strcmp(fieldname, "Value") == 0)
    return("Glue_Forms.Record");
    break;
    default:
    break;
  }
  lumo_report_error(__LINE__, __FILE__, lumo_format_wide_string(LUMO__ILLEGAL_OBJSET_ID, context, id, "Objects", "id"), context);
  return "";
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsNumber *home
  , lumo_context_t context)
{
  (*home) = (t3_Glue_FormsNumber) lumo_value_get_integer(v0, context);
}

lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsNumber (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  ASNHOME *handle = NULL;
  ASNUTIG utig;
  ASNUTIG *asnutig;
  t3_Glue_FormsNumber *home;lumo_value_t translated_value = lumo_type_instantiate_external_value ( &(vexa_Glue_Forms_t3_Glue_FormsNumber_type_struct), strategy, context );

  asnutig = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber (asnutig, v0, home, context);
  lumo_value_set_external_value ( translated_value, (void *) home, 
    (lumo_value_t (*)(void*,lumo_alloc_strategy_t,lumo_context_t)) t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber, 
    (void (*)(void*,lumo_context_t)) t3asn_Glue_Forms_dest_t3_Glue_FormsNumber, context );

  return translated_value;
}

/* synonym type */
void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsPart_Number (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsPart_Number *home
  , lumo_context_t context)
{
  (*home) = (t3_Glue_FormsPart_Number) lumo_value_get_integer(v0, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsState (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsState *home
  , lumo_context_t context)
{
  ((*home)).value = (sint32) lumo_value_get_enum_number(v0, context);
}

/* synonym type */
void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsShort (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsShort *home
  , lumo_context_t context)
{
  ((*home)).value = (sint32) lumo_value_get_enum_number(v0, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRatio (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsRatio *home
  , lumo_context_t context)
{
  (*home) = (t3_Glue_FormsRatio) lumo_value_get_float(v0, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsTruth (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsTruth *home
  , lumo_context_t context)
{
  (*home) = (t3_Glue_FormsTruth) lumo_value_get_boolean(v0, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsName (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsName *home
  , lumo_context_t context)
{
  t32asn_IA5String ((*home), v0);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsWord (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsWord *home
  , lumo_context_t context)
{
  t32asn_VisibleString ((*home), v0);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsOctets (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsOctets *home
  , lumo_context_t context)
{
  t32asn_OctetString ((*home), v0);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsFlags (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsFlags *home
  , lumo_context_t context)
{
  t32asn_BitString ((*home), v0);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsList (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsList *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  {
    uint32 tn0 = 0;
    home->n = (uint32) lumo_value_vector_size(v0, context);
    home->elem = (t3_Glue_FormsNumber *) allocAsn (NULL, MB_STG, home->n * sizeof(t3_Glue_FormsNumber));
    for (; tn0 < lumo_value_vector_size(v0, context); ++ tn0) {
      v1 = lumo_value_vector_element(v0, tn0, context);
      home->elem [tn0] = (t3_Glue_FormsNumber) lumo_value_get_integer(v1, context);
    }
  }
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsBag (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsBag *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  {
    uint32 tn0 = 0;
    home->n = (uint32) lumo_value_vector_size(v0, context);
    home->elem = (struct t_1_t3_Glue_FormsBag_elem *) allocAsn (NULL, MB_STG, 
      home->n * sizeof(struct t_1_t3_Glue_FormsBag_elem));
    for (; tn0 < lumo_value_vector_size(v0, context); ++ tn0) {
      v1 = lumo_value_vector_element(v0, tn0, context);
      {
        lumo_value_t v2;

        {
          uint32 tn1 = 0;
          home->elem [tn0].n = (uint32) lumo_value_vector_size(v1, context);
          home->elem [tn0].elem = (BOOLE *) allocAsn (NULL, MB_STG, 
            home->elem [tn0].n * sizeof(BOOLE));
          for (; tn1 < 2; ++ tn1) {
            v2 = lumo_value_vector_element(v1, tn1, context);
            home->elem [tn0].elem [tn1] = (BOOLE) lumo_value_get_boolean(v2, context);
          }
        }
      }
    }
  }
}

/* synonym type */
void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSynonym_List (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsSynonym_List *home
  , lumo_context_t context)
{
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsList (asnutigPtr, v0, 
    (t3_Glue_FormsList *) home, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsEmpty (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsEmpty *home
  , lumo_context_t context)
{
  lumo_value_t v1;

}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsRecord *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  v1 = lumo_value_field_by_name(v0, "a", context);
  home->a = (BOOLE) lumo_value_get_boolean(v1, context);
  if ((v1 = lumo_value_field_by_name(v0, "type_", context)) != lumo_omit_value_c && !lumo_is_equal(v1, lumo_type_field_default_value(lumo_value_type(v0, context), 1, context), context)){
    home->compmask |= BITL(1);
    home->type = (sint32) lumo_value_get_integer(v1, context);
  }
  if ((v1 = lumo_value_field_by_name(v0, "inner", context)) != lumo_omit_value_c){
    home->compmask |= BITL(2);
    {
      lumo_value_t v2;

      switch (lumo_value_union_index(v1, context)){
        case 0:
        {
          home->inner.choice = 0;
          v2 = lumo_value_union_value(v1, context);
          home->inner.x = 0;
          break;
        }
        case 1:
        {
          home->inner.choice = 1;
          v2 = lumo_value_union_value(v1, context);
          t32asn_BitString (home->inner.y, v2);
          break;
        }
      }
    }
  }
  if ((v1 = lumo_value_field_by_name(v0, "more", context)) != lumo_omit_value_c){
    home->compmask |= BITL(3);
    t32asn_GeneralizedTimeDT (home->more, v1);
  }
  v1 = lumo_value_field_by_name(v0, "last", context);
  home->compmask |= BITL(4);
  home->last = (REAL) lumo_value_get_float(v1, context);
}

lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsRecord (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  ASNHOME *handle = NULL;
  ASNUTIG utig;
  ASNUTIG *asnutig;
  t3_Glue_FormsRecord *home;lumo_value_t translated_value = lumo_type_instantiate_external_value ( &(vexa_Glue_Forms_t3_Glue_FormsRecord_type_struct), strategy, context );

  asnutig = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord (asnutig, v0, home, context);
  lumo_value_set_external_value ( translated_value, (void *) home, 
    (lumo_value_t (*)(void*,lumo_alloc_strategy_t,lumo_context_t)) t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord, 
    (void (*)(void*,lumo_context_t)) t3asn_Glue_Forms_dest_t3_Glue_FormsRecord, context );

  return translated_value;
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsAny (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsAny *home
  , lumo_context_t context)
{

  /* Needs a user defined encoding function for ANY/OPEN type */
  if (lumo_type_get_encoder (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), context)) {
    t3asn_frame (asnutig, (*home), v0, context);
  } else {
    /* No user registered codec */
    lumo_log_string_to_all (lumo_log_msg_error_c, "No user registered encoder for ASN.1 type Any", context);
    (*home) = createFrame(DB_SIZE);
    insertMemBlock (getHomeG (asnutig), MB_FRM, (BYTE_TYPE *)(*home));
  }
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsGroup (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsGroup *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  v1 = lumo_value_field_by_name(v0, "id", context);
  home->id = (sint64) lumo_value_get_integer(v1, context);
  v1 = lumo_value_field_by_name(v0, "value_", context);
  t3asn_frame (asnutig, home->value, v1, context);
  v1 = lumo_value_field_by_name(v0, "oid", context);
  t32asn_objidval (home->oid, v1, context);
  if ((v1 = lumo_value_field_by_name(v0, "ext", context)) != lumo_omit_value_c){
    home->compmask |= BITL(3);
    {
      lumo_value_t direct_ref_value = lumo_value_field_by_name(v1, "direct_reference", context);
      lumo_value_t indirect_ref_value = lumo_value_field_by_name(v1, "indirect_reference", context);
      lumo_value_t descr_value = lumo_value_field_by_name(v1, "data_value_descriptor", context);
      lumo_value_t encoding_value = lumo_value_field_by_name(v1, "encoding", context);
      rem_direct_EXTERNAL(home->ext);
      if (direct_ref_value != lumo_omit_value_c)
      {
        set_direct_EXTERNAL(home->ext);
        t32asn_objidval (home->ext.direct, direct_ref_value, context);
      }
      rem_indirect_EXTERNAL(home->ext);
      if (indirect_ref_value != lumo_omit_value_c)
      {
        set_indirect_EXTERNAL(home->ext);
        home->ext.indirect = (sint32) lumo_value_get_integer(indirect_ref_value, context);
      }
      rem_descr_EXTERNAL(home->ext);
      if (descr_value != lumo_omit_value_c)
      {
        set_descr_EXTERNAL(home->ext);
        t32asn_DynObjectDescriptor(&(home->ext.descr), descr_value);
      }
      if (lumo_value_union_index(encoding_value, context) == 1)
      {
        home->ext.choice = 1;
        t32asn_OctetString (home->ext.data, lumo_value_union_value(encoding_value, context));
      }
      else if (lumo_value_union_index(encoding_value, context) == 0)
      {
        home->ext.choice = 2;
        t32asn_BitString (home->ext.data, lumo_value_union_value(encoding_value, context));
      }
    }
  }
  v1 = lumo_value_field_by_name(v0, "any_", context);

  /* Needs a user defined encoding function for ANY/OPEN type */
  if (lumo_type_get_encoder (&(vexa_Glue_Forms_t3_Glue_FormsAny_type_struct), context)) {
    t3asn_frame (asnutig, home->any, v1, context);
  } else {
    /* No user registered codec */
    lumo_log_string_to_all (lumo_log_msg_error_c, "No user registered encoder for ASN.1 type any", context);
    home->any = createFrame(DB_SIZE);
    insertMemBlock (getHomeG (asnutig), MB_FRM, (BYTE_TYPE *)home->any);
  }
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsLater (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsLater *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  v1 = lumo_value_field_by_name(v0, "a", context);
  home->a = 0;
  v1 = lumo_value_field_by_name(v0, "b", context);
  home->compmask |= BITL(1);
  home->b = (BOOLE) lumo_value_get_boolean(v1, context);
}

void t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf (ASNG_F
  (ASNUTIG *asnutigPtr)lumo_value_t v0, t3_Glue_FormsSelf *home
  , lumo_context_t context)
{
  lumo_value_t v1;

  switch (lumo_value_union_index(v0, context)){
    case 0:
    {
      home->choice = 0;
      v1 = lumo_value_union_value(v0, context);
      home->none = 0;
      break;
    }
    case 1:
    {
      home->choice = 1;
      v1 = lumo_value_union_value(v0, context);
      home->more = (t3_Glue_FormsSelf *) allocAsn (NULL, MB_STG, sizeof(t3_Glue_FormsSelf));
      t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf (asnutigPtr, v1, 
        home->more, context);
      break;
    }
    case 2:
    {
      home->choice = 2;
      v1 = lumo_value_union_value(v0, context);
      t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord (asnutigPtr, v1, 
        &(home->record), context);
      break;
    }
    case 3:
    {
      home->choice = 3;
      v1 = lumo_value_union_value(v0, context);
      t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsGroup (asnutigPtr, v1, 
        &(home->group), context);
      break;
    }
    case 4:
    {
      home->choice = 4;
      v1 = lumo_value_union_value(v0, context);
      t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSynonym_List (asnutigPtr, v1, 
        &(home->list), context);
      break;
    }
  }
}

lumo_value_t t3asn_Glue_Forms_translate_t3_to_asn_t3_Glue_FormsSelf (
  lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)
{
  ASNHOME *handle = NULL;
  ASNUTIG utig;
  ASNUTIG *asnutig;
  t3_Glue_FormsSelf *home;lumo_value_t translated_value = lumo_type_instantiate_external_value ( &(vexa_Glue_Forms_t3_Glue_FormsSelf_type_struct), strategy, context );

  asnutig = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf (asnutig, v0, home, context);
  lumo_value_set_external_value ( translated_value, (void *) home, 
    (lumo_value_t (*)(void*,lumo_alloc_strategy_t,lumo_context_t)) t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf, 
    (void (*)(void*,lumo_context_t)) t3asn_Glue_Forms_dest_t3_Glue_FormsSelf, context );

  return translated_value;
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsNumber (t3_Glue_FormsNumber *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsNumber */
  asnwfree (home);
}

/* synonym type */
void t3asn_Glue_Forms_dest_t3_Glue_FormsPart_Number (t3_Glue_FormsPart_Number
  *home, lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsPart_Number */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsState (t3_Glue_FormsState *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsState */
}

/* synonym type */
void t3asn_Glue_Forms_dest_t3_Glue_FormsShort (t3_Glue_FormsShort *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsShort */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsRatio (t3_Glue_FormsRatio *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsRatio */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsTruth (t3_Glue_FormsTruth *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsTruth */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsName (t3_Glue_FormsName *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsName */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsWord (t3_Glue_FormsWord *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsWord */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsOctets (t3_Glue_FormsOctets *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsOctets */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsFlags (t3_Glue_FormsFlags *home
  , lumo_context_t context)
{
  /* Additional Normal Destruct Function t3_Glue_FormsFlags */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsList (t3_Glue_FormsList *home
  , lumo_context_t context)
{
  {
    uint32 tn0 = 0;
    for (tn0 = 0 ; tn0 < home->n ; tn0++){
    }
  }
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsBag (t3_Glue_FormsBag *home
  , lumo_context_t context)
{
  {
    uint32 tn0 = 0;
    for (tn0 = 0 ; tn0 < home->n ; tn0++){
      {
        uint32 tn1 = 0;
        for (tn1 = 0 ; tn1 < home->elem [tn0].n ; tn1++){
        }
      }
    }
  }
}

/* synonym type */
void t3asn_Glue_Forms_dest_t3_Glue_FormsSynonym_List (
  t3_Glue_FormsSynonym_List *home, lumo_context_t context)
{
  t3asn_Glue_Forms_dest_t3_Glue_FormsList ((t3_Glue_FormsList *) home, context);
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsEmpty (t3_Glue_FormsEmpty *home
  , lumo_context_t context)
{
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsRecord (t3_Glue_FormsRecord *home
  , lumo_context_t context)
{
  if (home->compmask & BITL(1)){
  }
  if (home->compmask & BITL(2)){
    switch (home->inner.choice){
      case 0:
      break;
      case 1:
      break;
    }
  }
  if (home->compmask & BITL(3)){
    /* Time */
  }
  if (home->compmask & BITL(4)){
  }
  asnwfree (home);
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsAny (t3_Glue_FormsAny *home
  , lumo_context_t context)
{
  /* Frame */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsGroup (t3_Glue_FormsGroup *home
  , lumo_context_t context)
{
  /* Frame */
  if (home->compmask & BITL(3)){
    /* Ext */
  }
  /* Frame */
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsLater (t3_Glue_FormsLater *home
  , lumo_context_t context)
{
  if (home->compmask & BITL(1)){
  }
}

void t3asn_Glue_Forms_dest_t3_Glue_FormsSelf (t3_Glue_FormsSelf *home
  , lumo_context_t context)
{
  switch (home->choice){
    case 0:
    break;
    case 1:
    t3asn_Glue_Forms_dest_t3_Glue_FormsSelf (home->more, context);
    break;
    case 2:
    t3asn_Glue_Forms_dest_t3_Glue_FormsRecord (&(home->record), context);
    break;
    case 3:
    t3asn_Glue_Forms_dest_t3_Glue_FormsGroup (&(home->group), context);
    break;
    case 4:
    t3asn_Glue_Forms_dest_t3_Glue_FormsSynonym_List (&(home->list), context);
    break;
  }
  asnwfree (home);
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_encode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  enct3_Glue_FormsNumber(&codg, (t3_Glue_FormsNumber*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_decode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&dect3_Glue_FormsNumber, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_encode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  enct3_Glue_FormsRecord(&codg, (t3_Glue_FormsRecord*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_decode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&dect3_Glue_FormsRecord, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  enct3_Glue_FormsSelf(&codg, (t3_Glue_FormsSelf*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_decode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&dect3_Glue_FormsSelf, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  bienct3_Glue_FormsNumber(&codg, (t3_Glue_FormsNumber*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&bidect3_Glue_FormsNumber, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  bienct3_Glue_FormsRecord(&codg, (t3_Glue_FormsRecord*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&bidect3_Glue_FormsRecord, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNCODG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf(&utig, value, home, ctx);
  asn2t3_encode_set_frame(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  bienct3_Glue_FormsSelf(&codg, (t3_Glue_FormsSelf*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNCODG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_ber_decoder)&bidect3_Glue_FormsSelf, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_uat3_Glue_FormsNumber(&codg, (t3_Glue_FormsNumber*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_uat3_Glue_FormsNumber, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_uat3_Glue_FormsRecord(&codg, (t3_Glue_FormsRecord*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_uat3_Glue_FormsRecord, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_uat3_Glue_FormsSelf(&codg, (t3_Glue_FormsSelf*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_uat3_Glue_FormsSelf, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsNumber(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsNumber(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_alt3_Glue_FormsNumber(&codg, (t3_Glue_FormsNumber*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsNumber(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsNumber *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsNumber",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsNumber));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_alt3_Glue_FormsNumber, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsNumber (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsRecord(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsRecord(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_alt3_Glue_FormsRecord(&codg, (t3_Glue_FormsRecord*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsRecord(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsRecord *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsRecord",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsRecord));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_alt3_Glue_FormsRecord, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsRecord (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsSelf(lumo_value_t value,
  lumo_binary_string_t encoded_data,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR encodingBuffer;
  ASNPERG codg;
  ASNUTIG utig;

  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  t3asn_Glue_Forms_trans_t3_to_asn_t3_Glue_FormsSelf(&utig, value, home, ctx);
  asn2t3_encode_set_frame_per(&codg, &encodingBuffer);
  lumo_targetcode_location_set_line(__LINE__, ctx);
  pec_alt3_Glue_FormsSelf(&codg, (t3_Glue_FormsSelf*) home);
  asn2t3_encode_put_bstring(&encodingBuffer, &codec_result,   encoded_data, ctx);
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);

  return codec_result;
}

lumo_codecs_result_t t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsSelf(lumo_binary_string_iter_t * encoded_data,
  lumo_type_t type,
  lumo_alloc_strategy_t strategy,
  lumo_value_t * decoded_value,
  lumo_context_t ctx)
{
  t3_Glue_FormsSelf *home;
  ASNHOME *handle = NULL;
  FRAME_PTR decodingBuffer;
  ERR_RET errorHandlerBuf;
  ASNPERG codg;
  ASNUTIG utig;
  lumo_codecs_result_t codec_result = lumo_codecs_result_succeeded_c;

  lumo_targetcode_location_push("t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsSelf",__FILE__, __LINE__, ctx);
  codg.asnuti = &utig;
  initStack (&utig);
  home = createHandle (NULL, &handle, sizeof (t3_Glue_FormsSelf));
  pushHome(&utig, handle);
  *decoded_value = lumo_illegal_value_c;
  if (asn2t3_decode_set_buf_and_decode_per(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,
    (asn2t3_per_decoder)&pdc_alt3_Glue_FormsSelf, home, ctx))
  {
    lumo_targetcode_location_set_line(__LINE__, ctx);
    *decoded_value = t3asn_Glue_Forms_trans_asn_to_t3_t3_Glue_FormsSelf (home, strategy, ctx);
    lumo_targetcode_location_set_line(__LINE__, ctx);
  }
  popHome (&utig);
  freeAsn (&handle, FREE_STG);
  lumo_targetcode_location_pop(ctx);
  if (*decoded_value == lumo_illegal_value_c)
    codec_result = lumo_codecs_result_failed_c;

  return codec_result;
}

#ifndef T3ASN_Glue_Forms_CODEC_REGISTER_BYPASS
void Glue_Forms_codecs_init_function(lumo_context_t ctx)
{
  return;
}

void Glue_Forms_codecs_setup_function(lumo_type_t type,
                                 lumo_context_t ctx)
{
  T3asnRtsCodecSelector codec_selector;
  lumo_targetcode_location_push("Glue_Forms_codecs_setup_function",__FILE__, __LINE__, ctx);
  if ( !lumo_type_definition_module (type, ctx) ) {
    lumo_targetcode_location_pop(ctx);
    return;
  }
  if (!strcmp(lumo_type_definition_module (type, ctx), "Glue_Forms")) {
    codec_selector = t3asn_get_module_encoding_directive ("Glue_Forms", ctx);
    if (codec_selector == T3ASN_RTS_CODEC_NONE) {
      codec_selector = t3asn_get_module_encoding_directive ("Glue-Forms", ctx);
      if (codec_selector == T3ASN_RTS_CODEC_NONE) {
        lumo_targetcode_location_pop(ctx);
        return;
      }
    }
    if ( !strcmp(lumo_type_definition_name (type, ctx), "Number") ) { 
      switch (codec_selector)
        { 
        case T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_encode_t3_Glue_FormsNumber, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_decode_t3_Glue_FormsNumber, ctx);
          break;
        case T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsNumber, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsNumber, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_ALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsNumber, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsNumber, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsNumber, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsNumber, ctx);
          break;
        default:
          break;
        }
      lumo_targetcode_location_pop(ctx);
      return;
    }
    if ( !strcmp(lumo_type_definition_name (type, ctx), "Record") ) { 
      switch (codec_selector)
        { 
        case T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_encode_t3_Glue_FormsRecord, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_decode_t3_Glue_FormsRecord, ctx);
          break;
        case T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsRecord, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsRecord, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_ALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsRecord, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsRecord, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsRecord, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsRecord, ctx);
          break;
        default:
          break;
        }
      lumo_targetcode_location_pop(ctx);
      return;
    }
    if ( !strcmp(lumo_type_definition_name (type, ctx), "Self") ) { 
      switch (codec_selector)
        { 
        case T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_encode_t3_Glue_FormsSelf, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_decode_t3_Glue_FormsSelf, ctx);
          break;
        case T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_ber_bi_encode_t3_Glue_FormsSelf, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_ber_bi_decode_t3_Glue_FormsSelf, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_ALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_al_encode_t3_Glue_FormsSelf, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_al_decode_t3_Glue_FormsSelf, ctx);
          break;
        case T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED:
          lumo_type_set_encoder (type, t3asn_Glue_Forms_per_ua_encode_t3_Glue_FormsSelf, ctx);
          lumo_type_set_decoder (type, t3asn_Glue_Forms_per_ua_decode_t3_Glue_FormsSelf, ctx);
          break;
        default:
          break;
        }
      lumo_targetcode_location_pop(ctx);
      return;
    }
  }
  lumo_targetcode_location_pop(ctx);
}

void t3asn_Glue_Forms_register_codecs (lumo_context_t ctx)
{
  lumo_codecs_register(Glue_Forms_codecs_init_function,
                       Glue_Forms_codecs_setup_function,
                       ctx);
}

#endif /* ifndef T3ASN_Glue_Forms_CODEC_REGISTER_BYPASS */
