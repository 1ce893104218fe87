/*
 * Datagrams: an adapter that sends each message to the peer by UDP, on the loopback address, and takes what comes back
 * as the answer. The environment variable SNMP_PORT holds the peer's port.
 */
#include <arpa/inet.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tri.h"

enum { LONGEST = 65536, NAME = 64 };

typedef struct {
  int socket;
  pthread_t reader;
  TriPortId port;
  char name[NAME];
} channel;
static channel open_channel = {.socket = -1};

static void* read_datagrams(void* argument) {
  channel* from = argument;
  unsigned char* octets = malloc(LONGEST);
  for (;;) {
    const ssize_t n = recv(from->socket, octets, LONGEST, 0);
    if (n <= 0) break;
    TriMessage message = {octets, (long)n * 8, NULL};
    triEnqueueMsg(&from->port, NULL, NULL, &message);
  }
  free(octets);
  return NULL;
}

static void close_channel(void) {
  if (open_channel.socket < 0) return;
  shutdown(open_channel.socket, SHUT_RDWR);
  pthread_join(open_channel.reader, NULL);
  close(open_channel.socket);
  open_channel.socket = -1;
}

TriStatus triMap(const TriPortId* component_port, const TriPortId* system_port) {
  (void)component_port;
  const char* number = getenv("SNMP_PORT");
  struct sockaddr_in peer = {.sin_family = AF_INET};
  peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  peer.sin_port = htons((uint16_t)(number != NULL ? atoi(number) : 0));
  close_channel();
  open_channel.port = *system_port;
  strncpy(open_channel.name, system_port->portName, NAME - 1);
  open_channel.port.portName = open_channel.name;
  open_channel.socket = socket(AF_INET, SOCK_DGRAM, 0);
  if (open_channel.socket < 0 ||
      connect(open_channel.socket, (struct sockaddr*)&peer, sizeof peer) != 0 ||
      pthread_create(&open_channel.reader, NULL, read_datagrams, &open_channel) != 0)
    return TRI_ERROR;
  return TRI_OK;
}

TriStatus triUnmap(const TriPortId* component_port, const TriPortId* system_port) {
  (void)component_port;
  (void)system_port;
  close_channel();
  return TRI_OK;
}

TriStatus triEndTestCase(void) {
  close_channel();
  return TRI_OK;
}

TriStatus triSend(const TriComponentId* component, const TriPortId* port, const TriAddress* address,
                  const TriMessage* message) {
  (void)component;
  (void)port;
  (void)address;
  const size_t octets = (size_t)message->bits / 8;
  return send(open_channel.socket, message->data, octets, 0) == (ssize_t)octets ? TRI_OK : TRI_ERROR;
}
