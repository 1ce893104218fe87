/* Prints what is sent and sends it back; instead of a message with the octets DEADBEEF it sends these alone.
 */
#include <stdio.h>
#include <string.h>

#include "tri.h"

TriStatus triSend(const TriComponentId* component, const TriPortId* port, const TriAddress* address,
                  const TriMessage* message) {
  static unsigned char nothing[] = {0xDE, 0xAD, 0xBE, 0xEF};
  const size_t n = (size_t)message->bits / 8;
  printf("sent");
  for (size_t i = 0; i < n; ++i) printf(" %02X", message->data[i]);
  printf("\n");
  fflush(stdout);
  TriMessage answer = *message;
  for (size_t i = 0; i + 4 <= n; ++i)
    if (memcmp(message->data + i, nothing, 4) == 0) {
      answer.data = nothing;
      answer.bits = 32;
    }
  triEnqueueMsg(port, address, component, &answer);
  return TRI_OK;
}
