/* The packed encoding rules, basic, in their aligned and unaligned variants. */
#include <stdlib.h>
#include <string.h>

#include "home.h"

enum { FRAGMENT = 16384, MOST_FRAGMENTS = 4, SMALL_LENGTH = 128, BOUNDED_LENGTH = 65536, SMALL_NUMBER = 64 };
enum { MOST_UNPAID = 1 << 21, UNPAID_ELEMENT = 16 };
static const sint64 kNoBound = INT64_MAX;

static BOOLE fail(ASNPERG* codg, const char* text) {
  if (codg->error == NULL) codg->error = text;
  return FALSE;
}

/* The bits that `count` different values need. */
static int bits_for(uint64_t count) {
  int bits = 0;
  while (bits < 64 && (count - 1) >> bits != 0) ++bits;
  return bits;
}

static int octets_for(uint64_t number) {
  int octets = 1;
  while (octets < 8 && number >> (8 * octets) != 0) ++octets;
  return octets;
}

/* ---------------------------------------------------------------- bits */

static BOOLE put_bits(ASNPERG* codg, uint64_t number, int bits) {
  while (bits > 0) {
    const int used = (int)(codg->at_bit % 8);
    if (used == 0) {
      const BYTE_TYPE zero = 0;
      if (!appendToFrame(codg->frame, &zero, 1)) return fail(codg, "out of memory");
    }
    const int take = bits < 8 - used ? bits : 8 - used;
    const uint64_t part = number >> (bits - take) & ((1u << take) - 1);
    codg->frame->octets[codg->frame->n - 1] |= (BYTE_TYPE)(part << (8 - used - take));
    codg->at_bit += (size_t)take;
    bits -= take;
  }
  return TRUE;
}

static BOOLE put_align(ASNPERG* codg) {
  return codg->aligned ? put_bits(codg, 0, (int)((8 - codg->at_bit % 8) % 8)) : TRUE;
}

static BOOLE put_octets(ASNPERG* codg, const BYTE_TYPE* octets, size_t n) {
  if (codg->at_bit % 8 == 0) {
    if (!appendToFrame(codg->frame, octets, n)) return fail(codg, "out of memory");
    codg->at_bit += n * 8;
    return TRUE;
  }
  for (size_t i = 0; i < n; ++i)
    if (!put_bits(codg, octets[i], 8)) return FALSE;
  return TRUE;
}

static BOOLE take_bits(ASNPERG* codg, int bits, uint64_t* number) {
  if (codg->bits - codg->at_bit < (size_t)bits) return fail(codg, "an encoding ends too early");
  *number = 0;
  while (bits > 0) {
    const int used = (int)(codg->at_bit % 8);
    const int take = bits < 8 - used ? bits : 8 - used;
    const unsigned part = (unsigned)codg->octets[codg->at_bit / 8] >> (8 - used - take) & ((1u << take) - 1);
    *number = *number << take | part;
    codg->at_bit += (size_t)take;
    bits -= take;
  }
  return TRUE;
}

static BOOLE take_align(ASNPERG* codg) {
  uint64_t ignored;
  return codg->aligned ? take_bits(codg, (int)((8 - codg->at_bit % 8) % 8), &ignored) : TRUE;
}

/* Elements and characters may take no bit of the input: what they take of memory must not grow without end by
 * a few octets of lengths. The limit is the same for every encoding of a value. */
static BOOLE take_unpaid(ASNPERG* codg, size_t octets) {
  codg->unpaid += octets;
  return codg->unpaid <= MOST_UNPAID || fail(codg, "a length is faulty");
}

/* ---------------------------------------------------------------- numbers */

/* A number from 0 to count - 1. */
static BOOLE put_constrained(ASNPERG* codg, uint64_t number, uint64_t count) {
  if (count == 1) return TRUE;
  if (!codg->aligned || (count != 0 && count <= 255))
    return put_bits(codg, number, count == 0 ? 64 : bits_for(count));
  if (count == 256) return put_align(codg) && put_bits(codg, number, 8);
  if (count != 0 && count <= 65536) return put_align(codg) && put_bits(codg, number, 16);
  const int most = count == 0 ? 8 : octets_for(count - 1), octets = octets_for(number);
  return put_constrained(codg, (uint64_t)octets - 1, (uint64_t)most) && put_align(codg) &&
         put_bits(codg, number, octets * 8);
}

static BOOLE take_constrained(ASNPERG* codg, uint64_t count, uint64_t* number) {
  *number = 0;
  if (count == 1) return TRUE;
  if (!codg->aligned || (count != 0 && count <= 255))
    return take_bits(codg, count == 0 ? 64 : bits_for(count), number);
  if (count == 256) return take_align(codg) && take_bits(codg, 8, number);
  if (count != 0 && count <= 65536) return take_align(codg) && take_bits(codg, 16, number);
  uint64_t octets;
  if (!take_constrained(codg, (uint64_t)(count == 0 ? 8 : octets_for(count - 1)), &octets)) return FALSE;
  return take_align(codg) && take_bits(codg, (int)(octets + 1) * 8, number);
}

/* The length of a part: at most 64 K in a field of its bounds, else in the general form. `*more` says that
 * another part follows. Returns the length that was put. */
static BOOLE put_general_length(ASNPERG* codg, size_t length, size_t* part, int* more) {
  *more = 0;
  *part = length;
  if (!put_align(codg)) return FALSE;
  if (length < SMALL_LENGTH) return put_bits(codg, length, 8);
  if (length < FRAGMENT) return put_bits(codg, 0x8000 | length, 16);
  const size_t fragments = length / FRAGMENT < MOST_FRAGMENTS ? length / FRAGMENT : MOST_FRAGMENTS;
  *part = fragments * FRAGMENT;
  *more = 1;
  return put_bits(codg, 0xc0 | fragments, 8);
}

static BOOLE take_general_length(ASNPERG* codg, size_t* part, int* more) {
  uint64_t head, low;
  *more = 0;
  if (!take_align(codg) || !take_bits(codg, 8, &head)) return FALSE;
  if (head < 0x80) {
    *part = (size_t)head;
    return TRUE;
  }
  if (head < 0xc0) {
    if (!take_bits(codg, 8, &low)) return FALSE;
    *part = (size_t)((head & 0x3f) << 8 | low);
    return TRUE;
  }
  *part = (size_t)(head & 0x3f) * FRAGMENT;
  *more = 1;
  return ((head & 0x3f) >= 1 && (head & 0x3f) <= MOST_FRAGMENTS) || fail(codg, "a length is faulty");
}

/* Octets behind their length in the general form. */
static BOOLE put_counted(ASNPERG* codg, const BYTE_TYPE* octets, size_t n) {
  for (int more = 1; more;) {
    size_t part;
    if (!put_general_length(codg, n, &part, &more) || !put_octets(codg, octets, part)) return FALSE;
    octets += part;
    n -= part;
  }
  return TRUE;
}

static BOOLE take_octets(ASNPERG* codg, size_t n, FRAME_PTR into) {
  if ((codg->bits - codg->at_bit) / 8 < n) return fail(codg, "an encoding ends too early");
  for (size_t i = 0; i < n; ++i) {
    uint64_t octet;
    if (!take_bits(codg, 8, &octet)) return FALSE;
    const BYTE_TYPE one = (BYTE_TYPE)octet;
    if (!appendToFrame(into, &one, 1)) return fail(codg, "out of memory");
  }
  return TRUE;
}

static BOOLE take_counted(ASNPERG* codg, FRAME_PTR into) {
  for (int more = 1; more;) {
    size_t part;
    if (!take_general_length(codg, &part, &more) || !take_octets(codg, part, into)) return FALSE;
  }
  return TRUE;
}

static BOOLE put_small(ASNPERG* codg, uint64_t number) {
  if (number < SMALL_NUMBER) return put_bits(codg, 0, 1) && put_bits(codg, number, 6);
  BYTE_TYPE octets[8];
  const int n = octets_for(number);
  for (int i = 0; i < n; ++i) octets[i] = (BYTE_TYPE)(number >> (8 * (n - 1 - i)));
  return put_bits(codg, 1, 1) && put_counted(codg, octets, (size_t)n);
}

static BOOLE number_from(ASNPERG* codg, int is_signed, sint64* number) {
  FRAME_PTR octets = createFrame(8);
  BOOLE good = take_counted(codg, octets);
  if (good && (octets->n == 0 || octets->n > 9 || (octets->n == 9 && (is_signed || octets->octets[0] != 0))))
    good = fail(codg, "an integer has a length that is not supported");
  if (good) {
    uint64_t value = is_signed && (octets->octets[0] & 0x80) != 0 ? UINT64_MAX : 0;
    for (uint32 i = 0; i < octets->n; ++i) value = value << 8 | octets->octets[i];
    *number = (sint64)value;
  }
  deleteFrame(octets);
  return good;
}

static BOOLE take_small(ASNPERG* codg, uint64_t* number) {
  uint64_t large;
  if (!take_bits(codg, 1, &large)) return FALSE;
  if (!large) return take_bits(codg, 6, number);
  sint64 value;
  if (!number_from(codg, 0, &value)) return FALSE;
  *number = (uint64_t)value;
  return TRUE;
}

static BOOLE put_unconstrained(ASNPERG* codg, sint64 number) {
  BYTE_TYPE octets[8];
  int at = 0;
  for (int i = 0; i < 8; ++i) octets[i] = (BYTE_TYPE)((uint64_t)number >> (8 * (7 - i)));
  while (at < 7 &&
         ((octets[at] == 0 && octets[at + 1] < 0x80) || (octets[at] == 0xff && octets[at + 1] >= 0x80)))
    ++at;
  return put_counted(codg, octets + at, (size_t)(8 - at));
}

static BOOLE put_semi_constrained(ASNPERG* codg, uint64_t offset) {
  BYTE_TYPE octets[8];
  const int n = octets_for(offset);
  for (int i = 0; i < n; ++i) octets[i] = (BYTE_TYPE)(offset >> (8 * (n - 1 - i)));
  return put_counted(codg, octets, (size_t)n);
}

/* Numbers whose bounds go beyond 64 bits. The number itself fits them. */
typedef unsigned __int128 wide;

static wide wide_of(const uint64_t halves[2]) {
  return (wide)halves[0] << 64 | halves[1];
}

static int wide_bits(wide number) {
  return number >> 64 != 0 ? 64 + bits_for((uint64_t)(number >> 64) + 1)
                           : number == UINT64_MAX ? 64 : bits_for((uint64_t)number + 1);
}

static int wide_octets(wide number) {
  const int bits = wide_bits(number);
  return bits == 0 ? 1 : (bits + 7) / 8;
}

static BOOLE put_wide_bits(ASNPERG* codg, wide number, int bits) {
  if (bits > 64 && !put_bits(codg, (uint64_t)(number >> 64), bits - 64)) return FALSE;
  return put_bits(codg, (uint64_t)number, bits > 64 ? 64 : bits);
}

static BOOLE take_wide_bits(ASNPERG* codg, int bits, wide* number) {
  uint64_t high = 0, low;
  if (bits > 64 && !take_bits(codg, bits - 64, &high)) return FALSE;
  if (!take_bits(codg, bits > 64 ? 64 : bits, &low)) return FALSE;
  *number = (wide)high << 64 | low;
  return TRUE;
}

static BOOLE put_wide(ASNPERG* codg, const asn_wide* bounds, sint64 value) {
  const wide offset = (wide)(__int128)value - wide_of(bounds->low), range = wide_of(bounds->range);
  if ((__int128)value < (__int128)wide_of(bounds->low) || (bounds->has_high && offset > range))
    return fail(codg, "an integer is out of its bounds");
  const int octets = wide_octets(offset);
  if (bounds->has_high && !codg->aligned) return put_wide_bits(codg, offset, wide_bits(range));
  if (bounds->has_high && !put_constrained(codg, (uint64_t)octets - 1, (uint64_t)wide_octets(range))) return FALSE;
  if (!put_align(codg)) return FALSE;
  if (!bounds->has_high && !put_bits(codg, (uint64_t)octets, 8)) return FALSE;
  return put_wide_bits(codg, offset, octets * 8);
}

static BOOLE take_wide(ASNPERG* codg, const asn_wide* bounds, sint64* value) {
  const wide range = wide_of(bounds->range);
  wide offset;
  int bits = wide_bits(range);
  if (!bounds->has_high || codg->aligned) {
    uint64_t octets;
    if (bounds->has_high ? !take_constrained(codg, (uint64_t)wide_octets(range), &octets) || !take_align(codg)
                         : !take_align(codg) || !take_bits(codg, 8, &octets))
      return FALSE;
    octets += bounds->has_high;
    if (octets == 0 || octets > sizeof offset) return fail(codg, "an integer has a length that is not supported");
    bits = (int)octets * 8;
  }
  if (!take_wide_bits(codg, bits, &offset)) return FALSE;
  if (bounds->has_high && offset > range) return fail(codg, "an integer is out of its bounds");
  const wide number = wide_of(bounds->low) + offset;
  *value = (sint64)(uint64_t)number;
  return (wide)(__int128)*value == number || fail(codg, "an integer does not fit");
}

static uint64_t count_of(const asn_type* type) {
  return (uint64_t)type->high - (uint64_t)type->low + 1;
}

static int in_bounds(const asn_type* type, sint64 number) {
  return (!type->has_low || number >= type->low) && (!type->has_high || number <= type->high);
}

static BOOLE put_integer(ASNPERG* codg, const asn_type* type, sint64 number) {
  int bounded = in_bounds(type, number);
  if (type->extensible) {
    if (!put_bits(codg, !bounded, 1)) return FALSE;
    if (!bounded) return put_unconstrained(codg, number);
  } else if (!bounded) {
    return fail(codg, "an integer is out of its bounds");
  }
  if (type->wide != NULL) return put_wide(codg, type->wide, number);
  if (type->has_low && type->has_high)
    return put_constrained(codg, (uint64_t)number - (uint64_t)type->low, count_of(type));
  return type->has_low ? put_semi_constrained(codg, (uint64_t)number - (uint64_t)type->low)
                       : put_unconstrained(codg, number);
}

static BOOLE take_integer(ASNPERG* codg, const asn_type* type, void* home) {
  uint64_t beyond = 0, offset = 0;
  sint64 number = 0;
  if (type->extensible && !take_bits(codg, 1, &beyond)) return FALSE;
  if (!beyond && type->wide != NULL) {
    if (!take_wide(codg, type->wide, &number)) return FALSE;
  } else if (beyond || !type->has_low) {
    if (!number_from(codg, 1, &number)) return FALSE;
  } else if (type->has_high) {
    if (!take_constrained(codg, count_of(type), &offset)) return FALSE;
    if (offset > (uint64_t)type->high - (uint64_t)type->low)
      return fail(codg, "an integer is out of its bounds");
    number = (sint64)((uint64_t)type->low + offset);
  } else {
    if (!number_from(codg, 0, &number)) return FALSE;
    if ((uint64_t)number > (uint64_t)INT64_MAX - (uint64_t)type->low)
      return fail(codg, "an integer does not fit");
    number = (sint64)((uint64_t)type->low + (uint64_t)number);
  }
  if (!beyond && !in_bounds(type, number)) return fail(codg, "an integer is out of its bounds");
  return asnSetInteger(type, home, number) || fail(codg, "an integer does not fit");
}

/* ---------------------------------------------------------------- strings */

/* What the units of a string are: bits of a BIT STRING, octets, characters. */
typedef struct {
  int bits;             /* of a unit */
  const char* alphabet; /* by which characters are numbered, or NULL */
  int characters;       /* of the alphabet */
  int known_multiplier; /* a size constraint counts */
} units;

static int rounded_bits(const ASNPERG* codg, int bits) {
  int rounded = 1;
  if (!codg->aligned) return bits;
  while (rounded < bits) rounded *= 2;
  return bits == 0 ? 0 : rounded;
}

static units units_of(const ASNPERG* codg, const asn_type* type) {
  units result = {8, NULL, 0, 1};
  switch (type->kind) {
    case ASN_BIT_STRING:
      result.bits = 1;
      return result;
    case ASN_OCTET_STRING:
      return result;
    case ASN_NUMERIC_STRING:
    case ASN_PRINTABLE_STRING:
    case ASN_VISIBLE_STRING:
    case ASN_IA5_STRING:
    case ASN_GENERALIZED_TIME:
    case ASN_UTC_TIME: /* encoded as a VisibleString */
      break;
    default:
      result.known_multiplier = 0;
      return result;
  }
  result.alphabet = type->alphabet != NULL ? type->alphabet : asnCharacters(type);
  /* A VisibleString has 95 characters, an IA5String 128: seven bits each. */
  result.characters = type->alphabet != NULL   ? type->alphabet_size
                      : result.alphabet != NULL ? (int)strlen(result.alphabet)
                                                : 128;
  const int highest = result.alphabet != NULL ? (BYTE_TYPE)result.alphabet[result.characters - 1] : 127;
  result.bits = rounded_bits(codg, bits_for((uint64_t)result.characters));
  /* Where the characters' own numbers fit, they stand for themselves. */
  if (highest < 1 << (result.bits < 8 ? result.bits : 8)) result.alphabet = NULL;
  return result;
}

/* Whether a string of one size takes no alignment. */
static int is_short(const asn_type* type, const units* unit) {
  return type->has_high && (uint64_t)type->high * (uint64_t)unit->bits <= 16;
}

static BOOLE put_units(ASNPERG* codg, const asn_type* type, const units* unit, const DYNSTR* string,
                       size_t from, size_t n) {
  if (unit->bits == 8 && unit->alphabet == NULL) return put_octets(codg, string->s + from, n);
  for (size_t i = from; i < from + n; ++i) {
    uint64_t number;
    if (type->kind == ASN_BIT_STRING) {
      number = string->s[i / 8] >> (7 - i % 8) & 1u;
    } else if (unit->alphabet != NULL) {
      const char* found = memchr(unit->alphabet, string->s[i], (size_t)unit->characters);
      if (found == NULL) return fail(codg, "a character is not permitted");
      number = (uint64_t)(found - unit->alphabet);
    } else {
      number = string->s[i];
      if (number >> unit->bits != 0) return fail(codg, "a character is not permitted");
    }
    if (!put_bits(codg, number, unit->bits)) return FALSE;
  }
  return TRUE;
}

static BOOLE take_units(ASNPERG* codg, const asn_type* type, const units* unit, DYNSTR* string, size_t n,
                        FRAME_PTR into) {
  if (unit->bits > 0 && (codg->bits - codg->at_bit) / (size_t)unit->bits < n)
    return fail(codg, "an encoding ends too early");
  if (unit->bits == 0 && !take_unpaid(codg, n)) return FALSE;
  for (size_t i = 0; i < n; ++i) {
    uint64_t number;
    if (!take_bits(codg, unit->bits, &number)) return FALSE;
    BYTE_TYPE octet = (BYTE_TYPE)number;
    if (type->kind == ASN_BIT_STRING) {
      if (string->n % 8 == 0) {
        const BYTE_TYPE zero = 0;
        if (!appendToFrame(into, &zero, 1)) return fail(codg, "out of memory");
      }
      into->octets[into->n - 1] |= (BYTE_TYPE)(number << (7 - string->n % 8));
    } else {
      if (unit->alphabet != NULL) {
        if (number >= (uint64_t)unit->characters) return fail(codg, "a character is not permitted");
        octet = (BYTE_TYPE)unit->alphabet[number];
      }
      if (!appendToFrame(into, &octet, 1)) return fail(codg, "out of memory");
    }
    ++string->n;
  }
  return TRUE;
}

/* The bounds of a size, where they count in this form. */
typedef struct {
  sint64 low, high; /* high kNoBound without one */
} bounds;

static bounds size_bounds(const asn_type* type, int known, int beyond) {
  bounds result = {0, kNoBound};
  if (beyond || !known) return result;
  if (type->has_low) result.low = type->low;
  if (type->has_high) result.high = type->high;
  return result;
}

/* Puts the extension bit of a size; `*beyond` says that the bounds do not hold. */
static BOOLE put_size_extension(ASNPERG* codg, const asn_type* type, int known, sint64 n, int* beyond) {
  *beyond = known && !in_bounds(type, n);
  if (!known) return TRUE;
  if (type->extensible) return put_bits(codg, (uint64_t)*beyond, 1);
  return !*beyond || fail(codg, "a size is out of its bounds");
}

static BOOLE take_size_extension(ASNPERG* codg, const asn_type* type, int known, int* beyond) {
  uint64_t bit = 0;
  if (known && type->extensible && !take_bits(codg, 1, &bit)) return FALSE;
  *beyond = bit != 0;
  return TRUE;
}

static BOOLE put_string(ASNPERG* codg, const asn_type* type, const DYNSTR* given) {
  const DYNSTR sent = asnSignificant(type, given), *string = &sent;
  const units unit = units_of(codg, type);
  int beyond = 0, more = 0;
  if (!asnHasCharacters(type, string)) return fail(codg, "a character is not permitted");
  if (!put_size_extension(codg, type, unit.known_multiplier, string->n, &beyond)) return FALSE;
  const bounds size = size_bounds(type, unit.known_multiplier, beyond);
  if (size.high < BOUNDED_LENGTH) {
    const int fixed = size.low == size.high;
    if (!fixed &&
        !put_constrained(codg, (uint64_t)(string->n - size.low), (uint64_t)(size.high - size.low + 1)))
      return FALSE;
    if (string->n == 0) return TRUE;
    const int characters = type->kind != ASN_BIT_STRING && type->kind != ASN_OCTET_STRING;
    /* A varying size aligns bits and octets always, characters only where they may take more than two octets.
     */
    const int unaligned =
        characters ? (fixed ? is_short(type, &unit) : (uint64_t)size.high * (uint64_t)unit.bits < 16)
                   : fixed && is_short(type, &unit);
    if (!unaligned && !put_align(codg)) return FALSE;
    return put_units(codg, type, &unit, string, 0, string->n);
  }
  size_t from = 0;
  do {
    size_t part;
    if (!put_general_length(codg, string->n - from, &part, &more)) return FALSE;
    if (part > 0 && !put_align(codg)) return FALSE;
    if (!put_units(codg, type, &unit, string, from, part)) return FALSE;
    from += part;
  } while (more);
  return TRUE;
}

static BOOLE take_string_units(ASNPERG* codg, const asn_type* type, DYNSTR* string, FRAME_PTR into) {
  const units unit = units_of(codg, type);
  int beyond = 0, more = 0;
  if (!take_size_extension(codg, type, unit.known_multiplier, &beyond)) return FALSE;
  const bounds size = size_bounds(type, unit.known_multiplier, beyond);
  if (size.high < BOUNDED_LENGTH) {
    const int fixed = size.low == size.high;
    uint64_t n = 0;
    if (!fixed && !take_constrained(codg, (uint64_t)(size.high - size.low + 1), &n)) return FALSE;
    n += (uint64_t)size.low;
    if (n == 0) return TRUE;
    if (n > (uint64_t)size.high) return fail(codg, "a size is out of its bounds");
    const int characters = type->kind != ASN_BIT_STRING && type->kind != ASN_OCTET_STRING;
    const int unaligned =
        characters ? (fixed ? is_short(type, &unit) : (uint64_t)size.high * (uint64_t)unit.bits < 16)
                   : fixed && is_short(type, &unit);
    if (!unaligned && !take_align(codg)) return FALSE;
    return take_units(codg, type, &unit, string, (size_t)n, into);
  }
  do {
    size_t part;
    if (!take_general_length(codg, &part, &more)) return FALSE;
    if (part > 0 && !take_align(codg)) return FALSE;
    if (!take_units(codg, type, &unit, string, part, into)) return FALSE;
  } while (more);
  return string->n >= size.low || fail(codg, "a size is out of its bounds");
}

static BOOLE take_string(ASNPERG* codg, const asn_type* type, DYNSTR* string) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  string->n = 0;
  const BOOLE good = take_string_units(codg, type, string, octets);
  if (good) {
    string->s = allocAsn(NULL, MB_STG, (size_t)octets->n + 1);
    if (octets->n > 0) memcpy(string->s, octets->octets, octets->n);
  }
  deleteFrame(octets);
  if (!good) return FALSE;
  return asnHasCharacters(type, string) || fail(codg, "a character is not permitted");
}

/* ---------------------------------------------------------------- structures */

static BOOLE put_value(ASNPERG* codg, const asn_type* type, const void* home, int depth);
static BOOLE take_value(ASNPERG* codg, const asn_type* type, void* home, int depth);

/* An encoding of its own within this one. */
static ASNPERG inner_of(const ASNPERG* codg) {
  ASNPERG inner = *codg;
  inner.at_bit = 0;
  return inner;
}

static BOOLE put_open(ASNPERG* codg, const asn_type* type, const void* home, int depth) {
  ASNPERG inner = inner_of(codg);
  inner.frame = createFrame(DB_SIZE);
  static const BYTE_TYPE nothing = 0;
  BOOLE good = put_value(&inner, type, home, depth + 1);
  if (good && inner.frame->n == 0) good = appendToFrame(inner.frame, &nothing, 1);
  good = good && put_counted(codg, inner.frame->octets, inner.frame->n);
  if (inner.error != NULL) codg->error = inner.error;
  deleteFrame(inner.frame);
  return good;
}

static BOOLE take_open(ASNPERG* codg, const asn_type* type, void* home, int depth) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  BOOLE good = take_counted(codg, octets);
  if (good) {
    ASNPERG inner = inner_of(codg);
    inner.octets = octets->octets;
    inner.bits = (size_t)octets->n * 8;
    good = take_value(&inner, type, home, depth + 1);
    if (inner.error != NULL) codg->error = inner.error;
    codg->unpaid = inner.unpaid;
  }
  deleteFrame(octets);
  return good;
}

static BOOLE skip_open(ASNPERG* codg) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  const BOOLE good = take_counted(codg, octets);
  deleteFrame(octets);
  return good;
}

/* The i-th component in the order of the encoding. */
static int ordered(const asn_type* type, int i) {
  return type->order != NULL ? type->order[i] : i;
}

static int last_addition(const asn_type* type) {
  int last = 0;
  for (int i = 0; i < type->comp_count; ++i)
    if (type->comps[i].addition > last) last = type->comps[i].addition;
  return last;
}

static int addition_present(const asn_type* type, const void* home, int addition) {
  for (int i = 0; i < type->comp_count; ++i)
    if (type->comps[i].addition == addition && asnIsPresent(type, home, i)) return 1;
  return 0;
}

/* The components of the root, or of one group of additions: the bits of the optional ones, then all. */
static BOOLE put_components(ASNPERG* codg, const asn_type* type, const void* home, int addition, int depth) {
  for (int i = 0; i < type->comp_count; ++i) {
    const int c = ordered(type, i);
    if (type->comps[c].addition != addition || type->comps[c].presence == ASN_MANDATORY) continue;
    if (!put_bits(codg, asnIsPresent(type, home, c), 1)) return FALSE;
  }
  for (int i = 0; i < type->comp_count; ++i) {
    const int c = ordered(type, i);
    if (type->comps[c].addition != addition) continue;
    if (asnIsLacking(type, home, c)) return fail(codg, "a component is missing");
    if (type->comps[c].presence != ASN_MANDATORY && !asnIsPresent(type, home, c)) continue;
    const void* component = asnComponent(&type->comps[c], home);
    if (component == NULL) return fail(codg, "a component has no value");
    if (!put_value(codg, type->comps[c].type, component, depth + 1)) return FALSE;
  }
  return TRUE;
}

static BOOLE take_components(ASNPERG* codg, const asn_type* type, void* home, int addition, int depth) {
  for (int i = 0; i < type->comp_count; ++i) {
    const int c = ordered(type, i);
    if (type->comps[c].addition != addition) continue;
    uint64_t present = 1;
    if (type->comps[c].presence != ASN_MANDATORY && !take_bits(codg, 1, &present)) return FALSE;
    if (present) {
      asnMakeComponent(&type->comps[c], home);
      asnSetPresent(type, home, c);
    }
  }
  for (int i = 0; i < type->comp_count; ++i) {
    const int c = ordered(type, i);
    if (type->comps[c].addition != addition) continue;
    if (type->comps[c].presence != ASN_MANDATORY && !asnIsPresent(type, home, c)) continue;
    if (!take_value(codg, type->comps[c].type, asnMakeComponent(&type->comps[c], home), depth + 1))
      return FALSE;
  }
  return TRUE;
}

static BOOLE put_group(ASNPERG* codg, const asn_type* type, const void* home, int addition, int depth) {
  int first = 0;
  while (type->comps[first].addition != addition) ++first;
  if (!type->comps[first].grouped) {
    const void* component = asnComponent(&type->comps[first], home);
    return component != NULL ? put_open(codg, type->comps[first].type, component, depth)
                             : fail(codg, "a component has no value");
  }
  ASNPERG inner = inner_of(codg);
  inner.frame = createFrame(DB_SIZE);
  BOOLE good = put_components(&inner, type, home, addition, depth + 1);
  static const BYTE_TYPE nothing = 0;
  if (good && inner.frame->n == 0) good = appendToFrame(inner.frame, &nothing, 1);
  good = good && put_counted(codg, inner.frame->octets, inner.frame->n);
  if (inner.error != NULL) codg->error = inner.error;
  deleteFrame(inner.frame);
  return good;
}

static BOOLE take_group(ASNPERG* codg, const asn_type* type, void* home, int addition, int depth) {
  int first = 0;
  while (first < type->comp_count && type->comps[first].addition != addition) ++first;
  if (first == type->comp_count) return skip_open(codg); /* of a later version */
  if (!type->comps[first].grouped) {
    void* component = asnMakeComponent(&type->comps[first], home);
    asnSetPresent(type, home, first);
    return take_open(codg, type->comps[first].type, component, depth);
  }
  FRAME_PTR octets = createFrame(DB_SIZE);
  BOOLE good = take_counted(codg, octets);
  if (good) {
    ASNPERG inner = inner_of(codg);
    inner.octets = octets->octets;
    inner.bits = (size_t)octets->n * 8;
    good = take_components(&inner, type, home, addition, depth + 1);
    if (inner.error != NULL) codg->error = inner.error;
    codg->unpaid = inner.unpaid;
  }
  deleteFrame(octets);
  return good;
}

static BOOLE put_addition_bits(ASNPERG* codg, const asn_type* type, const void* home, int last) {
  if (last <= SMALL_NUMBER) {
    if (!put_bits(codg, 0, 1) || !put_bits(codg, (uint64_t)last - 1, 6)) return FALSE;
  } else {
    size_t part;
    int more;
    if (!put_bits(codg, 1, 1) || !put_general_length(codg, (size_t)last, &part, &more)) return FALSE;
  }
  for (int addition = 1; addition <= last; ++addition)
    if (!put_bits(codg, (uint64_t)addition_present(type, home, addition), 1)) return FALSE;
  return TRUE;
}

static BOOLE put_structure(ASNPERG* codg, const asn_type* type, const void* home, int depth) {
  const int last = last_addition(type);
  int any = 0;
  for (int addition = 1; addition <= last; ++addition) any = any || addition_present(type, home, addition);
  if (type->extensible && !put_bits(codg, (uint64_t)any, 1)) return FALSE;
  if (!put_components(codg, type, home, 0, depth)) return FALSE;
  if (!any) return TRUE;
  if (!put_addition_bits(codg, type, home, last)) return FALSE;
  for (int addition = 1; addition <= last; ++addition)
    if (addition_present(type, home, addition) && !put_group(codg, type, home, addition, depth)) return FALSE;
  return TRUE;
}

static BOOLE take_structure(ASNPERG* codg, const asn_type* type, void* home, int depth) {
  uint64_t any = 0, large = 0, count = 0;
  if (type->extensible && !take_bits(codg, 1, &any)) return FALSE;
  if (!take_components(codg, type, home, 0, depth)) return FALSE;
  if (!any) return TRUE;
  if (!take_bits(codg, 1, &large)) return FALSE;
  if (large) {
    size_t part;
    int more;
    if (!take_general_length(codg, &part, &more)) return FALSE;
    if (more) return fail(codg, "a length is faulty");
    count = part;
  } else {
    if (!take_bits(codg, 6, &count)) return FALSE;
    ++count;
  }
  if (codg->bits - codg->at_bit < count) return fail(codg, "an encoding ends too early");
  const size_t bits_at = codg->at_bit;
  codg->at_bit += (size_t)count;
  for (uint64_t i = 0; i < count; ++i) {
    const size_t bit = bits_at + (size_t)i;
    if ((codg->octets[bit / 8] >> (7 - bit % 8) & 1u) == 0) continue;
    if (i >= 255 ? !skip_open(codg) : !take_group(codg, type, home, (int)i + 1, depth)) return FALSE;
  }
  return TRUE;
}

/* The alternatives of the root come first in the order. */
static int root_alternatives(const asn_type* type) {
  int count = 0;
  for (int i = 0; i < type->comp_count; ++i) count += type->comps[i].addition == 0;
  return count;
}

static BOOLE put_choice(ASNPERG* codg, const asn_type* type, const void* home, int depth) {
  const int alternative = asnAlternative(type, home);
  if (alternative < 0) return fail(codg, "a CHOICE has no alternative");
  const asn_comp* component = &type->comps[alternative];
  const void* inner = asnComponent(component, home);
  if (inner == NULL) return fail(codg, "a CHOICE has no alternative");
  int index = 0;
  while (ordered(type, index) != alternative) ++index;
  const int root = root_alternatives(type);
  if (type->extensible && !put_bits(codg, component->addition != 0, 1)) return FALSE;
  if (component->addition != 0)
    return put_small(codg, (uint64_t)(index - root)) && put_open(codg, component->type, inner, depth);
  return put_constrained(codg, (uint64_t)index, (uint64_t)root) &&
         put_value(codg, component->type, inner, depth + 1);
}

static BOOLE take_choice(ASNPERG* codg, const asn_type* type, void* home, int depth) {
  uint64_t beyond = 0, index = 0;
  const int root = root_alternatives(type);
  if (type->extensible && !take_bits(codg, 1, &beyond)) return FALSE;
  if (beyond ? !take_small(codg, &index) : root == 0 || !take_constrained(codg, (uint64_t)root, &index))
    return FALSE;
  if (beyond) index += (uint64_t)root;
  if (index >= (uint64_t)type->comp_count || (!beyond && index >= (uint64_t)root))
    return fail(codg, "an alternative is unknown");
  const int alternative = ordered(type, (int)index);
  *(sint32*)home = alternative;
  void* inner = asnMakeComponent(&type->comps[alternative], home);
  return beyond ? take_open(codg, type->comps[alternative].type, inner, depth)
                : take_value(codg, type->comps[alternative].type, inner, depth + 1);
}

static BOOLE put_enumerated(ASNPERG* codg, const asn_type* type, sint64 number) {
  int index = 0;
  const int all = type->item_count + type->addition_items;
  while (index < all && type->items[index] != number) ++index;
  if (index == all) return fail(codg, "an enumerated value is unknown");
  const int addition = index >= type->item_count;
  if (type->extensible && !put_bits(codg, (uint64_t)addition, 1)) return FALSE;
  return addition ? put_small(codg, (uint64_t)(index - type->item_count))
                  : put_constrained(codg, (uint64_t)index, (uint64_t)type->item_count);
}

static BOOLE take_enumerated(ASNPERG* codg, const asn_type* type, void* home) {
  uint64_t addition = 0, index = 0;
  if (type->extensible && !take_bits(codg, 1, &addition)) return FALSE;
  if (addition ? !take_small(codg, &index) : !take_constrained(codg, (uint64_t)type->item_count, &index))
    return FALSE;
  const uint64_t count = (uint64_t)(addition ? type->addition_items : type->item_count);
  if (index >= count) return fail(codg, "an enumerated value is unknown");
  return asnSetInteger(type, home, type->items[index + (addition ? (uint64_t)type->item_count : 0)]);
}

static BOOLE put_list(ASNPERG* codg, const asn_type* type, const void* home, int depth) {
  const asn_list* list = home;
  const asn_type* element = type->comps[0].type;
  int beyond = 0, more = 0;
  if (!put_size_extension(codg, type, 1, list->n, &beyond)) return FALSE;
  const bounds size = size_bounds(type, 1, beyond);
  uint32 i = 0;
  do {
    size_t part = list->n - i;
    if (size.high < BOUNDED_LENGTH) {
      if (!put_constrained(codg, (uint64_t)(list->n - size.low), (uint64_t)(size.high - size.low + 1)))
        return FALSE;
    } else if (!put_general_length(codg, list->n - i, &part, &more)) {
      return FALSE;
    }
    for (const uint32 end = i + (uint32)part; i < end; ++i)
      if (!put_value(codg, element, (const BYTE_TYPE*)list->elem + i * element->size, depth + 1))
        return FALSE;
  } while (more);
  return TRUE;
}

static BOOLE take_list(ASNPERG* codg, const asn_type* type, void* home, int depth) {
  int beyond = 0, more = 0;
  uint32 room = 0;
  ((asn_list*)home)->n = 0;
  if (!take_size_extension(codg, type, 1, &beyond)) return FALSE;
  const bounds size = size_bounds(type, 1, beyond);
  do {
    size_t part = 0;
    if (size.high < BOUNDED_LENGTH) {
      uint64_t n;
      if (!take_constrained(codg, (uint64_t)(size.high - size.low + 1), &n)) return FALSE;
      part = (size_t)n + (size_t)size.low;
      if (part > (size_t)size.high) return fail(codg, "a size is out of its bounds");
    } else if (!take_general_length(codg, &part, &more)) {
      return FALSE;
    }
    for (size_t i = 0; i < part; ++i) {
      const size_t before = codg->at_bit;
      if (!take_value(codg, type->comps[0].type, asnAddElement(type, home, &room), depth + 1)) return FALSE;
      if (codg->at_bit == before && !take_unpaid(codg, type->comps[0].type->size + UNPAID_ELEMENT))
        return FALSE;
    }
  } while (more);
  return ((asn_list*)home)->n >= size.low || fail(codg, "a size is out of its bounds");
}

/* ---------------------------------------------------------------- values */

static BOOLE put_objid(ASNPERG* codg, const OBJID* value) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  const BOOLE good = asnObjidToOctets(value, octets) ? put_counted(codg, octets->octets, octets->n)
                                                     : fail(codg, "an object identifier has no encoding");
  deleteFrame(octets);
  return good;
}

static BOOLE put_frame(ASNPERG* codg, const void* home) {
  const FRAME_PTR frame = *(FRAME_PTR const*)home;
  return frame != NULL ? put_counted(codg, frame->octets, frame->n) : fail(codg, "an open type has no value");
}

static BOOLE put_value(ASNPERG* codg, const asn_type* type, const void* home, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the value is nested too deeply");
  switch (type->form) {
    case ASN_BOOL:
      return put_bits(codg, *(const BYTE_TYPE*)home != 0, 1);
    case ASN_UI32:
    case ASN_I32:
    case ASN_I64:
      return type->kind == ASN_ENUMERATED ? put_enumerated(codg, type, asnGetInteger(type, home))
                                          : put_integer(codg, type, asnGetInteger(type, home));
    case ASN_REAL: {
      BYTE_TYPE octets[24];
      return put_counted(codg, octets, asnRealToOctets(*(const REAL*)home, octets));
    }
    case ASN_DYNS:
      return put_string(codg, type, home);
    case ASN_OBJI:
      return put_objid(codg, home);
    case ASN_NULL:
      return TRUE;
    case ASN_FRM:
      return put_frame(codg, home);
    case ASN_LIST:
      return put_list(codg, type, home, depth);
    case ASN_STRU:
      return type->kind == ASN_CHOICE ? put_choice(codg, type, home, depth)
                                      : put_structure(codg, type, home, depth);
    default:
      return fail(codg, "a type has no encoding");
  }
}

static BOOLE take_counted_value(ASNPERG* codg, const asn_type* type, void* home) {
  FRAME_PTR octets = createFrame(DB_SIZE);
  BOOLE good = take_counted(codg, octets);
  if (good && type->form == ASN_FRM) {
    insertMemBlock(NULL, MB_FRM, (BYTE_TYPE*)octets);
    *(FRAME_PTR*)home = octets;
    return TRUE;
  }
  if (good && type->form == ASN_REAL)
    good = asnRealFromOctets(octets->octets, octets->n, home) || fail(codg, "a real number is faulty");
  if (good && type->form == ASN_OBJI)
    good =
        asnObjidFromOctets(octets->octets, octets->n, home) || fail(codg, "an object identifier is faulty");
  deleteFrame(octets);
  return good;
}

static BOOLE take_value(ASNPERG* codg, const asn_type* type, void* home, int depth) {
  if (depth > ASN_DEEPEST) return fail(codg, "the encoding is nested too deeply");
  switch (type->form) {
    case ASN_BOOL: {
      uint64_t bit;
      return take_bits(codg, 1, &bit) && asnSetInteger(type, home, (sint64)bit);
    }
    case ASN_UI32:
    case ASN_I32:
    case ASN_I64:
      return type->kind == ASN_ENUMERATED ? take_enumerated(codg, type, home)
                                          : take_integer(codg, type, home);
    case ASN_REAL:
    case ASN_OBJI:
    case ASN_FRM:
      return take_counted_value(codg, type, home);
    case ASN_DYNS:
      return take_string(codg, type, home);
    case ASN_NULL:
      return TRUE;
    case ASN_LIST:
      return take_list(codg, type, home, depth);
    case ASN_STRU:
      return type->kind == ASN_CHOICE ? take_choice(codg, type, home, depth)
                                      : take_structure(codg, type, home, depth);
    default:
      return fail(codg, "a type has no encoding");
  }
}

BOOLE asnEncodePer(ASNPERG* codg, const asn_type* type, const void* home) {
  static const BYTE_TYPE nothing = 0;
  codg->error = NULL;
  codg->at_bit = 0;
  if (!put_value(codg, type, home, 0)) return FALSE;
  return codg->frame->n > 0 || appendToFrame(codg->frame, &nothing, 1);
}

BOOLE asnDecodePer(ASNPERG* codg, const asn_type* type, void* home) {
  codg->error = NULL;
  codg->at_bit = codg->unpaid = 0;
  return take_value(codg, type, home, 0);
}
