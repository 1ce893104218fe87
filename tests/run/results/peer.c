/* An adapter that does what the first word of a message asks for; all others come back. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "tri.h"

static int turns;

static int is_word(const TriMessage *message, const char *word) {
  return message->bits == (long)strlen(word) * 8 && !memcmp(message->data, word, strlen(word));
}

TriStatus triMap(const TriPortId *compPortId, const TriPortId *tsiPortId) {
  (void)compPortId, (void)tsiPortId;
  return TRI_OK;
}

TriStatus triSend(const TriComponentId *componentId, const TriPortId *tsiPortId, const TriAddress *sutAddress,
                  const TriMessage *sendMessage) {
  (void)sutAddress;
  if (is_word(sendMessage, "crash")) *(volatile int *)8 = 1;
  if (is_word(sendMessage, "abort")) abort();
  if (is_word(sendMessage, "exit")) exit(0);
  if (is_word(sendMessage, "end")) _exit(0);
  while (is_word(sendMessage, "block")) pause();
  while (is_word(sendMessage, "spin")) ++*(volatile int *)&turns;
  triEnqueueMsg(tsiPortId, 0, componentId, sendMessage);
  return TRI_OK;
}

TriStatus triEndTestCase(void) {
  const char *path = getenv("PEER_ENDS");
  FILE *file = path ? fopen(path, "a") : NULL;
  if (file) fputs("end\n", file), fclose(file);
  return TRI_OK;
}
