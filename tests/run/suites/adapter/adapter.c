/* Tells what it is asked for, answers numbers with a digit more from threads, and does not map for
 * TC_refused. */
#define _POSIX_C_SOURCE 200809L
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "tri.h"

typedef struct {
  char port[20];
  char octets[40];
} answer_t;

static int refuse;

static BinaryString binary(char* text) {
  BinaryString string = {(unsigned char*)text, (long)strlen(text) * 8, NULL};
  return string;
}

static void* answer(void* argument) {
  answer_t* given = argument;
  TriPortId port = {.portName = given->port, .portIndex = -1};
  TriAddress from = binary("host:9");
  TriMessage message = binary(given->octets);
  nanosleep(&(struct timespec){0, 20000000}, NULL);
  triEnqueueMsg(&port, &from, NULL, &message);
  free(given);
  return NULL;
}

TriStatus triExecuteTestcase(const TriTestCaseId* test_case, const TriPortIdList* ports) {
  refuse = strcmp(test_case->objectName, "TC_refused") == 0;
  return TRI_OK;
}

TriStatus triMap(const TriPortId* port, const TriPortId* system) {
  fprintf(stderr, "told: map %s:%s %s\n", port->compInst.compName, port->portName, system->portName);
  return refuse ? TRI_ERROR : TRI_OK;
}

TriStatus triSend(const TriComponentId* component, const TriPortId* system, const TriAddress* to,
                  const TriMessage* message) {
  const char* text = (const char*)message->data;
  const int n = (int)message->bits / 8;
  answer_t* given = calloc(1, sizeof *given);
  pthread_t thread;
  fprintf(stderr, "told: send %.*s to %.*s\n", n, text, to ? (int)to->bits / 8 : 0,
          to ? (const char*)to->data : "");
  if (n == 5 && memcmp(text, "quiet", 5) == 0) return free(given), TRI_OK;
  strcpy(given->port, system->portName);
  if (n == 7 && memcmp(text, "garbage", 7) == 0)
    strcpy(given->octets, "no integer");
  else
    snprintf(given->octets, sizeof given->octets, "%.*s0", n, text);
  pthread_create(&thread, NULL, answer, given);
  pthread_detach(thread);
  return TRI_OK;
}

TriStatus triSUTactionInformal(const char* description) {
  fprintf(stderr, "told: action %s\n", description);
  return TRI_OK;
}

/* Gives what goes out a digit more, its number, and returns how many parameters there were. */
TriStatus triExternalFunction(const TriFunctionId* function, TriParameterList* parameters,
                              TriParameter* result) {
  static char octets[4][24];
  if (strcmp(function->objectName, "xf_digits") != 0) return TRI_ERROR;
  for (int i = 0; i < parameters->length; ++i) {
    TriParameter* p = parameters->parList[i];
    snprintf(octets[i], sizeof octets[i], "%.*s%d", (int)p->par.bits / 8, (const char*)p->par.data, i);
    if (p->mode != TRI_IN) p->par = binary(octets[i]);
  }
  snprintf(octets[3], sizeof octets[3], "%ld", parameters->length);
  result->par = binary(octets[3]);
  return TRI_OK;
}
