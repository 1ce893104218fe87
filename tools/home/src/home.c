/* Access to homes. */
#include "home.h"

#include <stdlib.h>
#include <string.h>

sint64 asnGetInteger(const asn_type* type, const void* home) {
  switch (type->form) {
    case ASN_BOOL:
    case ASN_NULL:
      return *(const BYTE_TYPE*)home;
    case ASN_UI32:
      return *(const uint32*)home;
    case ASN_I64:
      return *(const sint64*)home;
    default:
      return *(const sint32*)home;
  }
}

BOOLE asnSetInteger(const asn_type* type, void* home, sint64 number) {
  switch (type->form) {
    case ASN_BOOL:
    case ASN_NULL:
      *(BYTE_TYPE*)home = number != 0;
      return TRUE;
    case ASN_UI32:
      *(uint32*)home = (uint32)number;
      return number >= 0 && number <= UINT32_MAX;
    case ASN_I64:
      *(sint64*)home = number;
      return TRUE;
    default:
      *(sint32*)home = (sint32)number;
      return number >= INT32_MIN && number <= INT32_MAX;
  }
}

BOOLE asnIsPresent(const asn_type* type, const void* home, int component) {
  if (type->comps[component].presence == ASN_MANDATORY && type->comps[component].addition == 0) return TRUE;
  const uint32* mask = home;
  return (mask[component / 32] >> (component % 32) & 1u) != 0;
}

BOOLE asnIsLacking(const asn_type* type, const void* home, int component) {
  const asn_comp* lacking = &type->comps[component];
  if (!lacking->grouped || lacking->presence != ASN_MANDATORY || asnIsPresent(type, home, component))
    return FALSE;
  for (int i = 0; i < type->comp_count; ++i)
    if (type->comps[i].addition == lacking->addition && asnIsPresent(type, home, i)) return TRUE;
  return FALSE;
}

void asnSetPresent(const asn_type* type, void* home, int component) {
  if (type->comps[component].presence == ASN_MANDATORY && type->comps[component].addition == 0) return;
  uint32* mask = home;
  mask[component / 32] |= 1u << (component % 32);
}

void asnInitSeen(const asn_type* type, asn_seen* seen) {
  seen->few = 0;
  seen->words = &seen->few;
  if (type->comp_count <= 64) return;
  seen->words = asnZeroed(((size_t)type->comp_count + 63) / 64 * sizeof *seen->words);
}

void asnFreeSeen(asn_seen* seen) {
  if (seen->words != &seen->few) free(seen->words);
}

BOOLE asnWasSeen(const asn_seen* seen, int component) {
  return (seen->words[component / 64] >> (component % 64) & 1u) != 0;
}

BOOLE asnNoteSeen(asn_seen* seen, int component) {
  if (asnWasSeen(seen, component)) return FALSE;
  seen->words[component / 64] |= (uint64_t)1 << (component % 64);
  return TRUE;
}

const void* asnComponent(const asn_comp* component, const void* home) {
  const void* at = (const BYTE_TYPE*)home + component->offset;
  return component->pointer ? *(void* const*)at : at;
}

void* asnMakeComponent(const asn_comp* component, void* home) {
  void* at = (BYTE_TYPE*)home + component->offset;
  if (!component->pointer) return at;
  void** pointer = at;
  if (*pointer == NULL) *pointer = allocAsn(NULL, MB_STG, component->type->size);
  return *pointer;
}

int asnAlternative(const asn_type* type, const void* home) {
  const sint32 choice = *(const sint32*)home;
  return choice >= 0 && choice < type->comp_count ? (int)choice : -1;
}

void* asnAddElement(const asn_type* type, void* home, uint32* room) {
  asn_list* list = home;
  const size_t size = type->comps[0].type->size;
  if (list->n == *room) {
    const uint32 larger = *room == 0 ? 4 : *room * 2;
    void* elements = allocAsn(NULL, MB_STG, larger * size);
    if (list->n > 0) memcpy(elements, list->elem, list->n * size);
    list->elem = elements;
    *room = larger;
  }
  return (BYTE_TYPE*)list->elem + list->n++ * size;
}

const char* asnCharacters(const asn_type* type) {
  if (type->kind == ASN_NUMERIC_STRING) return " 0123456789";
  return type->kind == ASN_PRINTABLE_STRING
             ? " '()+,-./0123456789:=?ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
             : NULL;
}

BOOLE asnHasCharacters(const asn_type* type, const DYNSTR* string) {
  if (type->kind == ASN_BIT_STRING || type->kind == ASN_OCTET_STRING) return TRUE;
  const BYTE_TYPE low = type->kind == ASN_IA5_STRING ? 0 : ' ',
                  high = type->kind == ASN_IA5_STRING ? 127 : '~';
  const char* characters = asnCharacters(type);
  const size_t size = characters != NULL ? strlen(characters) : 0;
  for (uint32 i = 0; i < string->n; ++i)
    if (characters != NULL ? memchr(characters, string->s[i], size) == NULL
                           : string->s[i] < low || string->s[i] > high)
      return FALSE;
  return TRUE;
}

DYNSTR asnSignificant(const asn_type* type, const DYNSTR* string) {
  DYNSTR result = *string;
  if (!type->named_bits) return result;
  const uint32 least = type->has_low ? (uint32)type->low : 0;
  while (result.n > least && (string->s[(result.n - 1) / 8] >> (7 - (result.n - 1) % 8) & 1) == 0) --result.n;
  return result;
}
