/* An adapter that does what the first word of a message asks for; all others come back. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "tri.h"

static volatile int turns;

static void act_as(const char *word) {
  if (!strcmp(word, "crash")) *(volatile int *)8 = 1;
  if (!strcmp(word, "arith")) raise(SIGFPE);
  if (!strcmp(word, "abort")) abort();
  if (!strcmp(word, "exit")) exit(0);
  if (!strcmp(word, "end")) _exit(0);
  if (!strcmp(word, "kill")) raise(SIGKILL);
  if (!strcmp(word, "exec")) execlp("true", "true", (char *)0);
  for (int i = 3; i < 1024 && !strcmp(word, "close"); ++i) close(i);
  if (!strcmp(word, "mute")) close(1);
  if (!strcmp(word, "forg")) signal(SIGCHLD, SIG_IGN);
  for (int i = 3; i < 1024 && !strcmp(word, "repl"); ++i) dup2(0, i);
  if (!strcmp(word, "copy")) fork();
  while (!strcmp(word, "block")) pause();
  while (!strcmp(word, "spin")) ++turns;
}

void triInit(void) {
  if (getenv("PEER_INIT")) act_as(getenv("PEER_INIT"));
}

TriStatus triMap(const TriPortId *compPortId, const TriPortId *tsiPortId) {
  (void)compPortId, (void)tsiPortId;
  return TRI_OK;
}

TriStatus triSend(const TriComponentId *componentId, const TriPortId *tsiPortId, const TriAddress *sutAddress,
                  const TriMessage *sendMessage) {
  (void)sutAddress;
  char word[6] = "";
  if (sendMessage->bits < 6 * 8) memcpy(word, sendMessage->data, (size_t)sendMessage->bits / 8);
  act_as(word);
  triEnqueueMsg(tsiPortId, 0, componentId, sendMessage);
  return TRI_OK;
}

TriStatus triEndTestCase(void) {
  const char *path = getenv("PEER_ENDS");
  FILE *file = path ? fopen(path, "a") : NULL;
  if (file) fputs("end\n", file), fclose(file);
  return TRI_OK;
}
