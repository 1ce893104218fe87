/* The basic encoding rules, with definite lengths or, for constructed encodings, indefinite ones. */
#include <stdio.h>
#include <string.h>

#include "home.h"

enum { CONSTRUCTED = 0x20, LONG_TAG = 0x1f, LONG_LENGTH = 0x80, CONTENTS_LIMIT = 0x7f };

static BOOLE fail(ASNCODG* codg, const char* text) {
  if (codg->error == NULL) codg->error = text;
  return FALSE;
}

static BOOLE put(FRAME_PTR frame, const void* octets, size_t n) {
  return appendToFrame(frame, octets, n);
}

/* ---------------------------------------------------------------- encoding */

static BOOLE put_tag(FRAME_PTR frame, const asn_tag* tag, int constructed) {
  BYTE_TYPE octets[8];
  int n = 0;
  const BYTE_TYPE head = (BYTE_TYPE)(tag->tag_class << 6 | (constructed ? CONSTRUCTED : 0));
  if (tag->number < LONG_TAG) {
    octets[n++] = (BYTE_TYPE)(head | tag->number);
  } else {
    octets[n++] = head | LONG_TAG;
    int groups = 1;
    while (tag->number >> (7 * groups) != 0) ++groups;
    for (int i = groups - 1; i >= 0; --i)
      octets[n++] = (BYTE_TYPE)((tag->number >> (7 * i) & 0x7f) | (i > 0 ? 0x80 : 0));
  }
  return put(frame, octets, (size_t)n);
}

static BOOLE put_length(FRAME_PTR frame, size_t length) {
  BYTE_TYPE octets[9];
  int n = 0;
  if (length <= CONTENTS_LIMIT) {
    octets[n++] = (BYTE_TYPE)length;
  } else {
    int count = 1;
    while (count < 8 && length >> (8 * count) != 0) ++count;
    octets[n++] = (BYTE_TYPE)(LONG_LENGTH | count);
    for (int i = count - 1; i >= 0; --i) octets[n++] = (BYTE_TYPE)(length >> (8 * i));
  }
  return put(frame, octets, (size_t)n);
}

static BOOLE encode(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int depth);

static BOOLE put_integer(FRAME_PTR frame, sint64 number) {
  BYTE_TYPE octets[8];
  int n = 8;
  for (int i = 0; i < 8; ++i) octets[i] = (BYTE_TYPE)((uint64_t)number >> (8 * (7 - i)));
  int at = 0;
  while (n > 1 &&
         ((octets[at] == 0 && octets[at + 1] < 0x80) || (octets[at] == 0xff && octets[at + 1] >= 0x80))) {
    ++at;
    --n;
  }
  return put(frame, octets + at, (size_t)n);
}

static BOOLE put_bits(FRAME_PTR frame, const DYNSTR* bits) {
  const size_t n = ((size_t)bits->n + 7) / 8;
  const BYTE_TYPE unused = (BYTE_TYPE)(n * 8 - bits->n);
  return put(frame, &unused, 1) && put(frame, bits->s, n);
}

static BOOLE put_structure(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame,
                           int depth) {
  for (int i = 0; i < type->comp_count; ++i) {
    if (asnIsLacking(type, home, i)) return fail(codg, "a component is missing");
    if (!asnIsPresent(type, home, i)) continue;
    const void* component = asnComponent(&type->comps[i], home);
    if (component == NULL) return fail(codg, "a component has no value");
    if (!encode(codg, type->comps[i].type, component, frame, depth + 1)) return FALSE;
  }
  return TRUE;
}

static BOOLE put_list(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int depth) {
  const asn_list* list = home;
  const asn_type* element = type->comps[0].type;
  for (uint32 i = 0; i < list->n; ++i)
    if (!encode(codg, element, (const BYTE_TYPE*)list->elem + i * element->size, frame, depth + 1))
      return FALSE;
  return TRUE;
}

static BOOLE put_external(const EXTERNAL* external, FRAME_PTR frame) {
  static const asn_tag objid = {0, 0, 6}, integer = {0, 0, 2}, descriptor = {0, 0, 7};
  static const asn_tag encodings[] = {{2, 1, 0}, {2, 0, 1}, {2, 0, 2}};
  FRAME_PTR part = createFrame(DB_SIZE);
  BOOLE good = TRUE;
  if (is_direct_EXTERNAL(*external))
    good = asnObjidToOctets(&external->direct, part) && put_tag(frame, &objid, 0) &&
           put_length(frame, part->n) && put(frame, part->octets, part->n);
  if (good && is_indirect_EXTERNAL(*external)) {
    part->n = 0;
    good = put_integer(part, external->indirect) && put_tag(frame, &integer, 0) &&
           put_length(frame, part->n) && put(frame, part->octets, part->n);
  }
  if (good && is_descr_EXTERNAL(*external))
    good = put_tag(frame, &descriptor, 0) && put_length(frame, external->descr.n) &&
           put(frame, external->descr.s, external->descr.n);
  if (good) {
    const asn_tag* tag = &encodings[external->choice >= 0 && external->choice < 3 ? external->choice : 1];
    part->n = 0;
    good = external->choice == 2 ? put_bits(part, &external->data)
                                 : put(part, external->data.s, external->data.n);
    good = good && put_tag(frame, tag, tag->constructed) && put_length(frame, part->n) &&
           put(frame, part->octets, part->n);
  }
  deleteFrame(part);
  return good;
}

/* What stands behind the innermost tag and length. */
static BOOLE put_contents(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int depth) {
  switch (type->form) {
    case ASN_BOOL: {
      const BYTE_TYPE octet = *(const BYTE_TYPE*)home != 0 ? 0xff : 0;
      return put(frame, &octet, 1);
    }
    case ASN_UI32:
    case ASN_I32:
    case ASN_I64:
      return put_integer(frame, asnGetInteger(type, home));
    case ASN_REAL: {
      BYTE_TYPE octets[24];
      return put(frame, octets, asnRealToOctets(*(const REAL*)home, octets));
    }
    case ASN_DYNS: {
      const DYNSTR string = asnSignificant(type, home);
      if (!asnHasCharacters(type, &string)) return fail(codg, "a character is not permitted");
      return type->kind == ASN_BIT_STRING ? put_bits(frame, &string) : put(frame, string.s, string.n);
    }
    case ASN_OBJI:
      return asnObjidToOctets(home, frame) || fail(codg, "an object identifier has no encoding");
    case ASN_NULL:
      return TRUE;
    case ASN_LIST:
      return put_list(codg, type, home, frame, depth);
    case ASN_STRU:
      return put_structure(codg, type, home, frame, depth);
    case ASN_EXTERNAL:
      return put_external(home, frame) || fail(codg, "an EXTERNAL has no encoding");
    default:
      return fail(codg, "a type has no encoding");
  }
}

static BOOLE put_frame(ASNCODG* codg, const void* home, FRAME_PTR frame) {
  const FRAME_PTR inner = *(FRAME_PTR const*)home;
  if (inner == NULL) return fail(codg, "an open type has no value");
  return put(frame, inner->octets, inner->n);
}

static BOOLE put_untagged(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int depth) {
  if (type->form == ASN_FRM) return put_frame(codg, home, frame);
  if (type->kind != ASN_CHOICE) return put_contents(codg, type, home, frame, depth);
  const int alternative = asnAlternative(type, home);
  if (alternative < 0) return fail(codg, "a CHOICE has no alternative");
  const void* component = asnComponent(&type->comps[alternative], home);
  if (component == NULL) return fail(codg, "a CHOICE has no alternative");
  return encode(codg, type->comps[alternative].type, component, frame, depth + 1);
}

static BOOLE put_tagged(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int tag,
                        int depth) {
  if (tag == type->tag_count) return put_untagged(codg, type, home, frame, depth);
  FRAME_PTR inner = createFrame(DB_SIZE);
  BOOLE good = put_tagged(codg, type, home, inner, tag + 1, depth);
  const int constructed = type->tags[tag].constructed;
  const int indefinite = constructed && codg->indefinite;
  static const BYTE_TYPE begin = 0x80, end[] = {0, 0};
  good = good && put_tag(frame, &type->tags[tag], constructed);
  good = good && (indefinite ? put(frame, &begin, 1) : put_length(frame, inner->n));
  good = good && put(frame, inner->octets, inner->n) && (!indefinite || put(frame, end, sizeof end));
  deleteFrame(inner);
  return good || fail(codg, "out of memory");
}

static BOOLE encode(ASNCODG* codg, const asn_type* type, const void* home, FRAME_PTR frame, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the value is nested too deeply");
  return put_tagged(codg, type, home, frame, 0, depth);
}

BOOLE asnEncodeBer(ASNCODG* codg, const asn_type* type, const void* home) {
  codg->error = NULL;
  return encode(codg, type, home, codg->frame, 0);
}

/* ---------------------------------------------------------------- decoding */

typedef struct {
  const BYTE_TYPE *at, *end;
} input;

typedef struct {
  BYTE_TYPE tag_class, constructed;
  uint32 number;
  input contents; /* up to the end of contents, which is left out */
  const BYTE_TYPE* next;
} element;

static BOOLE take_element(ASNCODG* codg, input in, element* result, int depth);

static BOOLE take_tag(input* in, element* result) {
  if (in->at == in->end) return FALSE;
  const BYTE_TYPE head = *in->at++;
  result->tag_class = head >> 6;
  result->constructed = (head & CONSTRUCTED) != 0;
  result->number = head & LONG_TAG;
  if (result->number != LONG_TAG) return TRUE;
  result->number = 0;
  for (int n = 0; n < 5 && in->at != in->end; ++n) {
    const BYTE_TYPE octet = *in->at++;
    if (result->number >> (32 - 7) != 0) return FALSE;
    result->number = result->number << 7 | (octet & 0x7f);
    if ((octet & 0x80) == 0) return TRUE;
  }
  return FALSE;
}

/* The end of an indefinite encoding: behind it there are two zeros. */
static BOOLE find_end(ASNCODG* codg, input in, const BYTE_TYPE** end, int depth) {
  for (;;) {
    if (in.end - in.at < 2) return fail(codg, "an encoding ends too early");
    if (in.at[0] == 0 && in.at[1] == 0) {
      *end = in.at;
      return TRUE;
    }
    element inner;
    if (!take_element(codg, in, &inner, depth + 1)) return FALSE;
    in.at = inner.next;
  }
}

static BOOLE take_element(ASNCODG* codg, input in, element* result, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the encoding is nested too deeply");
  if (!take_tag(&in, result) || in.at == in.end) return fail(codg, "an encoding ends within a tag");
  if (result->tag_class == 0 && result->number == 0) return fail(codg, "an end stands where nothing began");
  const BYTE_TYPE head = *in.at++;
  size_t length = head;
  if (head == LONG_LENGTH) {
    if (!result->constructed) return fail(codg, "a primitive encoding has no length");
    result->contents.at = in.at;
    if (!find_end(codg, in, &result->contents.end, depth)) return FALSE;
    result->next = result->contents.end + 2;
    return TRUE;
  }
  if (head > LONG_LENGTH) {
    length = 0;
    const int count = head & 0x7f;
    if (count > in.end - in.at) return fail(codg, "an encoding ends within a length");
    for (int i = 0; i < count; ++i) {
      if (length >> (8 * (sizeof length - 1)) != 0) return fail(codg, "a length is too large");
      length = length << 8 | *in.at++;
    }
  }
  if (length > (size_t)(in.end - in.at)) return fail(codg, "an encoding is longer than the data");
  result->contents.at = in.at;
  result->contents.end = result->next = in.at + length;
  return TRUE;
}

static BOOLE decode(ASNCODG* codg, const asn_type* type, void* home, input* in, int depth);

static int has_tag(const element* element, const asn_tag* tag) {
  return element->tag_class == tag->tag_class && element->number == tag->number;
}

/* Whether an element can be the beginning of a type's encoding. */
static int begins(const asn_type* type, const element* first, int depth) {
  if (type->tag_count > 0) return has_tag(first, &type->tags[0]);
  if (type->kind != ASN_CHOICE) return 1;
  for (int i = 0; i < type->comp_count && depth < ASN_DEEPEST; ++i)
    if (begins(type->comps[i].type, first, depth + 1)) return 1;
  return 0;
}

static BOOLE take_integer(ASNCODG* codg, const asn_type* type, void* home, input in) {
  const size_t n = (size_t)(in.end - in.at);
  if (n == 0 || n > 8) return fail(codg, "an integer has a length that is not supported");
  uint64_t number = (in.at[0] & 0x80) != 0 ? UINT64_MAX : 0;
  for (size_t i = 0; i < n; ++i) number = number << 8 | in.at[i];
  return asnSetInteger(type, home, (sint64)number) || fail(codg, "an integer does not fit");
}

static BOOLE take_enumerated(ASNCODG* codg, const asn_type* type, void* home, input in) {
  if (!take_integer(codg, type, home, in)) return FALSE;
  const sint64 number = asnGetInteger(type, home);
  for (int i = 0; i < type->item_count + type->addition_items; ++i)
    if (type->items[i] == number) return TRUE;
  return type->extensible || fail(codg, "an enumerated value is unknown");
}

/* Strings may come in segments, which may come in segments. */
static BOOLE take_segments(ASNCODG* codg, const asn_type* type, const element* part, DYNSTR* string,
                           FRAME_PTR into, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the encoding is nested too deeply");
  if (!part->constructed) {
    input in = part->contents;
    if (type->kind == ASN_BIT_STRING) {
      if (in.at == in.end || *in.at > 7 || (string->n % 8) != 0) return fail(codg, "a bit string is faulty");
      const BYTE_TYPE unused = *in.at++;
      const size_t octets = (size_t)(in.end - in.at);
      if (octets == 0 && unused != 0) return fail(codg, "a bit string is faulty");
      if (octets > (UINT32_MAX - string->n) / 8) return fail(codg, "a string is too long");
      string->n += (uint32)(octets * 8 - unused);
      if (!put(into, in.at, octets)) return fail(codg, "out of memory");
      /* What stands in the unused bits is no part of the value. */
      if (octets > 0) into->octets[into->n - 1] &= (BYTE_TYPE)(0xff << unused);
      return TRUE;
    }
    const size_t octets = (size_t)(in.end - in.at);
    if (octets > UINT32_MAX - string->n) return fail(codg, "a string is too long");
    string->n += (uint32)octets;
    return put(into, in.at, octets) || fail(codg, "out of memory");
  }
  static const asn_tag bits = {0, 0, 3}, octets = {0, 0, 4};
  for (input in = part->contents; in.at != in.end;) {
    element segment;
    if (!take_element(codg, in, &segment, depth)) return FALSE;
    if (!has_tag(&segment, type->kind == ASN_BIT_STRING ? &bits : &octets))
      return fail(codg, "a segment of a string has another tag");
    if (!take_segments(codg, type, &segment, string, into, depth + 1)) return FALSE;
    in.at = segment.next;
  }
  return TRUE;
}

static BOOLE take_string(ASNCODG* codg, const asn_type* type, DYNSTR* string, const element* part,
                         int depth) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  string->n = 0;
  const BOOLE good = take_segments(codg, type, part, string, octets, depth);
  if (good) {
    string->s = allocAsn(NULL, MB_STG, (size_t)octets->n + 1);
    if (octets->n > 0) memcpy(string->s, octets->octets, octets->n);
  }
  deleteFrame(octets);
  if (!good) return FALSE;
  return asnHasCharacters(type, string) || fail(codg, "a character is not permitted");
}

static BOOLE take_list(ASNCODG* codg, const asn_type* type, void* home, input in, int depth) {
  asn_list* list = home;
  uint32 room = 0;
  list->n = 0;
  list->elem = NULL;
  while (in.at != in.end)
    if (!decode(codg, type->comps[0].type, asnAddElement(type, home, &room), &in, depth + 1)) return FALSE;
  return TRUE;
}

/* Where components of the root follow the extensions; `comp_count` without any. */
static int second_root(const asn_type* type) {
  int i = type->marker;
  while (i < type->comp_count && type->comps[i].addition != 0) ++i;
  return i;
}

/* Whether an element that is none of the components from `next` on may be an extension of a later version. These
 * stand behind the components of the root in front of the marker, from whose last optional ones they differ, and
 * before those behind it. */
static int may_be_extension(const asn_type* type, const element* unknown, int next) {
  if (!type->extensible || type->kind == ASN_SET) return type->extensible;
  for (int i = type->marker - 1; i >= 0; --i) {
    if (i >= next && type->comps[i].presence == ASN_MANDATORY) return 0;
    if (type->comps[i].presence == ASN_MANDATORY) break;
    if (begins(type->comps[i].type, unknown, 0)) return 0;
  }
  return next <= second_root(type);
}

/* The component that an element belongs to, from `from` on; -1 for none. */
static int component_of(const asn_type* type, const element* first, int from) {
  for (int i = from; i < type->comp_count; ++i) {
    if (begins(type->comps[i].type, first, 0)) return i;
    if (type->kind == ASN_SEQUENCE && type->comps[i].presence == ASN_MANDATORY &&
        type->comps[i].addition == 0)
      return -1;
  }
  return -1;
}

/* The elements of a structure in their order; `seen` notes the components. */
static BOOLE take_components(ASNCODG* codg, const asn_type* type, void* home, input in, asn_seen* seen,
                             int depth) {
  int next = 0;
  while (in.at != in.end) {
    element first;
    if (!take_element(codg, in, &first, depth)) return FALSE;
    const int i = component_of(type, &first, type->kind == ASN_SET ? 0 : next);
    if (i < 0) {
      if (!may_be_extension(type, &first, next)) return fail(codg, "an element belongs to no component");
      in.at = first.next;
      if (next < type->marker && type->kind != ASN_SET) next = type->marker;
      continue;
    }
    if (!asnNoteSeen(seen, i)) return fail(codg, "a component is there twice");
    if (!decode(codg, type->comps[i].type, asnMakeComponent(&type->comps[i], home), &in, depth + 1))
      return FALSE;
    asnSetPresent(type, home, i);
    next = i + 1;
  }
  for (int i = 0; i < type->comp_count; ++i)
    if ((type->comps[i].presence == ASN_MANDATORY && type->comps[i].addition == 0 && !asnWasSeen(seen, i)) ||
        asnIsLacking(type, home, i))
      return fail(codg, "a component is missing");
  return TRUE;
}

static BOOLE take_structure(ASNCODG* codg, const asn_type* type, void* home, input in, int depth) {
  asn_seen seen;
  asnInitSeen(type, &seen);
  const BOOLE good = take_components(codg, type, home, in, &seen, depth);
  asnFreeSeen(&seen);
  return good;
}

static BOOLE take_external(ASNCODG* codg, EXTERNAL* external, input in, int depth) {
  int has_data = 0;
  static const asn_type octets = {.kind = ASN_OCTET_STRING, .form = ASN_DYNS};
  static const asn_type bits = {.kind = ASN_BIT_STRING, .form = ASN_DYNS};
  static const asn_type integer = {.kind = ASN_INTEGER, .form = ASN_I32};
  while (in.at != in.end) {
    element part;
    if (!take_element(codg, in, &part, depth)) return FALSE;
    const int is_universal = part.tag_class == 0;
    BOOLE good = TRUE;
    if (is_universal && part.number == 6) {
      set_direct_EXTERNAL(*external);
      good = asnObjidFromOctets(part.contents.at, (size_t)(part.contents.end - part.contents.at),
                                &external->direct);
    } else if (is_universal && part.number == 2) {
      set_indirect_EXTERNAL(*external);
      good = take_integer(codg, &integer, &external->indirect, part.contents);
    } else if (is_universal && part.number == 7) {
      set_descr_EXTERNAL(*external);
      good = take_string(codg, &octets, &external->descr, &part, depth);
    } else if (part.tag_class == 2 && part.number <= 2) {
      has_data = 1;
      external->choice = (sint32)part.number;
      if (part.number == 0) part.constructed = 0; /* as it stands, not as segments */
      good = take_string(codg, part.number == 2 ? &bits : &octets, &external->data, &part, depth);
    } else {
      good = FALSE;
    }
    if (!good) return fail(codg, "an EXTERNAL is faulty");
    in.at = part.next;
  }
  return has_data || fail(codg, "an EXTERNAL is faulty");
}

static BOOLE take_contents(ASNCODG* codg, const asn_type* type, void* home, const element* part, int depth) {
  const input in = part->contents;
  const size_t n = (size_t)(in.end - in.at);
  switch (type->form) {
    case ASN_BOOL:
      if (n != 1) return fail(codg, "a boolean has not one octet");
      return asnSetInteger(type, home, *in.at != 0);
    case ASN_UI32:
    case ASN_I32:
    case ASN_I64:
      return type->kind == ASN_ENUMERATED ? take_enumerated(codg, type, home, in)
                                          : take_integer(codg, type, home, in);
    case ASN_REAL:
      return asnRealFromOctets(in.at, n, home) || fail(codg, "a real number is faulty");
    case ASN_DYNS:
      return take_string(codg, type, home, part, depth);
    case ASN_OBJI:
      return asnObjidFromOctets(in.at, n, home) || fail(codg, "an object identifier is faulty");
    case ASN_NULL:
      return n == 0 || fail(codg, "a NULL has contents");
    case ASN_LIST:
      return take_list(codg, type, home, in, depth);
    case ASN_STRU:
      return take_structure(codg, type, home, in, depth);
    case ASN_EXTERNAL:
      return take_external(codg, home, in, depth);
    default:
      return fail(codg, "a type has no encoding");
  }
}

static BOOLE take_choice(ASNCODG* codg, const asn_type* type, void* home, input* in, int depth) {
  element first;
  if (!take_element(codg, *in, &first, depth)) return FALSE;
  for (int i = 0; i < type->comp_count; ++i) {
    if (!begins(type->comps[i].type, &first, 0)) continue;
    *(sint32*)home = i;
    return decode(codg, type->comps[i].type, asnMakeComponent(&type->comps[i], home), in, depth + 1);
  }
  return fail(codg, "an element belongs to no alternative");
}

static BOOLE take_untagged(ASNCODG* codg, const asn_type* type, void* home, input* in, int depth) {
  if (type->form != ASN_FRM) return take_choice(codg, type, home, in, depth);
  element whole;
  if (!take_element(codg, *in, &whole, depth)) return FALSE;
  FRAME_PTR frame = createFrame((size_t)(whole.next - in->at));
  insertMemBlock(NULL, MB_FRM, (BYTE_TYPE*)frame);
  put(frame, in->at, (size_t)(whole.next - in->at));
  *(FRAME_PTR*)home = frame;
  in->at = whole.next;
  return TRUE;
}

static BOOLE decode(ASNCODG* codg, const asn_type* type, void* home, input* in, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the encoding is nested too deeply");
  if (type->tag_count == 0) return take_untagged(codg, type, home, in, depth);
  input at = *in;
  element part;
  for (int tag = 0; tag < type->tag_count; ++tag) {
    if (!take_element(codg, at, &part, depth)) return FALSE;
    if (!has_tag(&part, &type->tags[tag])) return fail(codg, "a tag is not the expected one");
    if (type->tags[tag].constructed && !part.constructed) return fail(codg, "an encoding is not constructed");
    if (tag == 0) in->at = part.next;
    at = part.contents;
  }
  if (type->kind == ASN_CHOICE || type->form == ASN_FRM) {
    if (!take_untagged(codg, type, home, &at, depth)) return FALSE;
    return at.at == at.end || fail(codg, "an encoding is longer than its type");
  }
  /* Strings alone may come in segments. */
  if (part.constructed && !type->tags[type->tag_count - 1].constructed && type->form != ASN_DYNS)
    return fail(codg, "an encoding is not primitive");
  return take_contents(codg, type, home, &part, depth);
}

BOOLE asnDecodeBer(ASNCODG* codg, const asn_type* type, void* home) {
  codg->error = NULL;
  input in = {codg->at, codg->at};
  if (codg->rest > 0) in.end += codg->rest; /* no octets may have no place */
  const BOOLE good = decode(codg, type, home, &in, 0);
  codg->rest -= (size_t)(in.at - codg->at);
  codg->at = in.at;
  return good;
}
