/*
 * The exchange: an adapter that answers like a system under test, octet by octet. The alternatives of Message
 * have the tags A0 setup, A1 alerting, A2 connect, A3 release; the first component of each is the call, 80 01
 * and one octet.
 */
#include <string.h>

#include "tri.h"

enum { SETUP = 0xA0, ALERTING = 0xA1, CONNECT = 0xA2, RELEASE = 0xA3, USER_BUSY = 17 };

static void answer(const TriPortId* port, const TriComponentId* component, const unsigned char* octets,
                   long length) {
  TriMessage message = {(unsigned char*)octets, length * 8, NULL};
  triEnqueueMsg(port, NULL, component, &message);
}

/* Whether the party that is called, the second component, is the number "0". */
static int is_operator(const unsigned char* octets, long length) {
  static const unsigned char operator_number[] = {0xA1, 0x03, 0x80, 0x01, '0'};
  for (long i = 0; i + (long)sizeof operator_number <= length; ++i)
    if (memcmp(octets + i, operator_number, sizeof operator_number) == 0) return 1;
  return 0;
}

TriStatus triSend(const TriComponentId* component, const TriPortId* port, const TriAddress* address,
                  const TriMessage* message) {
  const unsigned char* octets = message->data;
  const long length = message->bits / 8;
  (void)address;
  if (length < 5 || octets[2] != 0x80 || octets[3] != 1) return TRI_ERROR;
  const unsigned char call = octets[4];
  if (octets[0] == SETUP && is_operator(octets, length)) {
    const unsigned char busy[] = {RELEASE, 6, 0x80, 1, call, 0x81, 1, USER_BUSY};
    answer(port, component, busy, sizeof busy);
  } else if (octets[0] == SETUP) {
    const unsigned char alerting[] = {ALERTING, 7, 0x80, 1, call, 0x81, 2, 'o', 'k'};
    const unsigned char connect[] = {CONNECT, 3, 0x80, 1, call};
    answer(port, component, alerting, sizeof alerting);
    answer(port, component, connect, sizeof connect);
  } else if (octets[0] == RELEASE) {
    const unsigned char release[] = {RELEASE, 3, 0x80, 1, call};
    answer(port, component, release, sizeof release);
  }
  return TRI_OK;
}
