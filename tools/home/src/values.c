/* Content octets that the encoding rules have in common. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "asncodec.ext"

enum {
  REAL_BINARY = 0x80,
  REAL_NEGATIVE = 0x40,
  PLUS_INFINITY = 0x40,
  MINUS_INFINITY = 0x41,
  MINUS_ZERO = 0x43
};
enum { MANTISSA_BITS = 53, LONGEST_DECIMAL = 64 };

static size_t put_mantissa(uint64_t mantissa, BYTE_TYPE* octets) {
  size_t n = 1;
  for (uint64_t rest = mantissa >> 8; rest != 0; rest >>= 8) ++n;
  for (size_t i = 0; i < n; ++i) octets[i] = (BYTE_TYPE)(mantissa >> (8 * (n - 1 - i)));
  return n;
}

size_t asnRealToOctets(REAL value, BYTE_TYPE* octets) {
  if (value == 0) {
    if (!signbit(value)) return 0;
    octets[0] = MINUS_ZERO;
    return 1;
  }
  if (isinf(value)) {
    octets[0] = value > 0 ? PLUS_INFINITY : MINUS_INFINITY;
    return 1;
  }
  int exponent = 0;
  uint64_t mantissa = (uint64_t)ldexp(frexp(fabs(value), &exponent), MANTISSA_BITS);
  exponent -= MANTISSA_BITS;
  while ((mantissa & 1) == 0) {
    mantissa >>= 1;
    ++exponent;
  }
  const int two = exponent < -128 || exponent > 127;
  size_t n = 0;
  octets[n++] = (BYTE_TYPE)(REAL_BINARY | (value < 0 ? REAL_NEGATIVE : 0) | (two ? 1 : 0));
  if (two) octets[n++] = (BYTE_TYPE)(exponent >> 8);
  octets[n++] = (BYTE_TYPE)exponent;
  return n + put_mantissa(mantissa, octets + n);
}

static BOOLE decimal(const BYTE_TYPE* octets, size_t n, REAL* value) {
  char text[LONGEST_DECIMAL];
  if (n == 0 || n >= sizeof text) return FALSE;
  for (size_t i = 0; i < n; ++i) {
    /* Words for infinities and the like are none of ASN.1. */
    if (octets[i] == 0 || strchr(" +-.,0123456789Ee", octets[i]) == NULL) return FALSE;
    text[i] = octets[i] == ',' ? '.' : (char)octets[i];
  }
  text[n] = '\0';
  char* end = NULL;
  *value = strtod(text, &end);
  return end == text + n;
}

BOOLE asnRealFromOctets(const BYTE_TYPE* octets, size_t n, REAL* value) {
  *value = 0;
  if (n == 0) return TRUE;
  const BYTE_TYPE head = octets[0];
  if ((head & REAL_BINARY) == 0) {
    if (head == PLUS_INFINITY || head == MINUS_INFINITY || head == MINUS_ZERO) {
      *value = head == PLUS_INFINITY ? HUGE_VAL : head == MINUS_INFINITY ? -HUGE_VAL : -0.0;
      return n == 1;
    }
    return head >= 1 && head <= 3 && decimal(octets + 1, n - 1, value);
  }
  static const int bits_of_base[] = {1, 3, 4};
  const int base = (head >> 4) & 3;
  size_t length = (size_t)(head & 3) + 1, at = 1;
  if (length == 4) {
    if (n < 2) return FALSE;
    length = octets[at++];
  }
  if (base == 3 || length == 0 || length > 4 || at + length >= n) return FALSE;
  int64_t exponent = (signed char)octets[at];
  for (size_t i = 1; i < length; ++i) exponent = exponent * 256 + octets[at + i];
  at += length;
  REAL mantissa = 0;
  for (; at < n; ++at) mantissa = mantissa * 256 + octets[at];
  exponent = exponent * bits_of_base[base] + ((head >> 2) & 3);
  if (exponent > 100000 || exponent < -100000) exponent = exponent > 0 ? 100000 : -100000;
  *value = ldexp(mantissa, (int)exponent) * ((head & REAL_NEGATIVE) != 0 ? -1 : 1);
  return TRUE;
}

static BOOLE put_arc(uint64_t arc, FRAME_PTR octets) {
  BYTE_TYPE text[10];
  int n = 0;
  for (uint64_t rest = arc; n == 0 || rest != 0; rest >>= 7) text[n++] = (BYTE_TYPE)(rest & 0x7f);
  for (int i = n - 1; i >= 0; --i) {
    const BYTE_TYPE octet = (BYTE_TYPE)(text[i] | (i > 0 ? 0x80 : 0));
    if (!appendToFrame(octets, &octet, 1)) return FALSE;
  }
  return TRUE;
}

BOOLE asnObjidToOctets(const OBJID* value, FRAME_PTR octets) {
  if (value->n < 2 || value->arc[0] > 2 || (value->arc[0] < 2 && value->arc[1] > 39)) return FALSE;
  for (uint32 i = 0; i < value->n; ++i)
    if (value->arc[i] < 0) return FALSE;
  if (!put_arc((uint64_t)value->arc[0] * 40 + (uint64_t)value->arc[1], octets)) return FALSE;
  for (uint32 i = 2; i < value->n; ++i)
    if (!put_arc((uint64_t)value->arc[i], octets)) return FALSE;
  return TRUE;
}

BOOLE asnObjidFromOctets(const BYTE_TYPE* octets, size_t n, OBJID* value) {
  if (n == 0 || (octets[n - 1] & 0x80) != 0) return FALSE;
  uint32 arcs = 1;
  for (size_t i = 0; i < n; ++i) arcs += (octets[i] & 0x80) == 0;
  value->arc = allocAsn(NULL, MB_STG, arcs * sizeof *value->arc);
  value->n = 0;
  uint64_t arc = 0;
  for (size_t i = 0; i < n; ++i) {
    if (arc >> (64 - 7) != 0) return FALSE;
    arc = arc << 7 | (octets[i] & 0x7f);
    if ((octets[i] & 0x80) != 0) continue;
    if (value->n == 0) {
      const uint64_t first = arc < 80 ? arc / 40 : 2;
      value->arc[value->n++] = (sint64)first;
      arc -= first * 40;
    }
    if (arc > INT64_MAX) return FALSE;
    value->arc[value->n++] = (sint64)arc;
    arc = 0;
  }
  return TRUE;
}
