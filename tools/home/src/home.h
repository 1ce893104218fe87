/* Access to homes by the descriptions of their types; what both codecs need. */
#ifndef ASN_HOME_H
#define ASN_HOME_H

#include "asncodec.ext"

enum { ASN_DEEPEST = 400 }; /* nesting of types in an encoding */

/* A list's or string's home. */
typedef struct {
  uint32 n;
  void* elem;
} asn_list;

sint64 asnGetInteger(const asn_type* type, const void* home);
/* FALSE when the number does not fit the home's form. */
BOOLE asnSetInteger(const asn_type* type, void* home, sint64 number);
/* Whether a component is there; a mandatory one always is. */
BOOLE asnIsPresent(const asn_type* type, const void* home, int component);
/* Whether a component that must be there with the others of its group of additions is not. */
BOOLE asnIsLacking(const asn_type* type, const void* home, int component);
void asnSetPresent(const asn_type* type, void* home, int component);
/* The components of a structure that were met, a bit for each. */
typedef struct {
  uint64_t few, *words;
} asn_seen;
void asnInitSeen(const asn_type* type, asn_seen* seen);
void asnFreeSeen(asn_seen* seen);
/* Notes a component; FALSE where it was met before. */
BOOLE asnNoteSeen(asn_seen* seen, int component);
BOOLE asnWasSeen(const asn_seen* seen, int component);
/* The home of a component; NULL where a pointer to one was not set. */
const void* asnComponent(const asn_comp* component, const void* home);
/* The same to write to; allocates what a pointer needs. */
void* asnMakeComponent(const asn_comp* component, void* home);
/* The alternative of a CHOICE, or -1. */
int asnAlternative(const asn_type* type, const void* home);
/* What of a string is sent: named bits as far as the last one that is set, or as the size asks. */
DYNSTR asnSignificant(const asn_type* type, const DYNSTR* string);
/* The characters of a type in ascending order, whatever constraints leave of them; NULL where they are a
 * range. */
const char* asnCharacters(const asn_type* type);
/* Whether a string has characters of its type only. */
BOOLE asnHasCharacters(const asn_type* type, const DYNSTR* string);
/* Zeroed memory that belongs to no home. */
void* asnZeroed(size_t size);
/* Gives a list one more element, zeroed. */
void* asnAddElement(const asn_type* type, void* home, uint32* room);

#endif
