/*
 * A connection: an adapter that sends messages to the peer by TCP, on the loopback address, and cuts what comes back into
 * messages by their lengths. The environment variable LDAP_PORT holds the peer's port. Each mapping is a connection.
 */
#include <arpa/inet.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tri.h"

enum { LONGEST = 1 << 20, NAME = 64 };

typedef struct {
  int socket;
  pthread_t reader;
  TriPortId port;
  char name[NAME];
} channel;
static channel open_channel = {.socket = -1};

/* The length of the message at the beginning of n octets; 0 while more are needed, -1 for what is none. */
static long message_length(const unsigned char* octets, size_t n) {
  if (n < 2) return 0;
  if (octets[0] != 0x30) return -1;
  if (octets[1] < 0x80) return octets[1] + 2;
  const size_t count = octets[1] & 0x7f;
  long length = 0;
  if (count == 0 || count > 3) return -1;
  if (n < count + 2) return 0;
  for (size_t i = 0; i < count; ++i) length = length << 8 | octets[2 + i];
  length += (long)count + 2;
  return length <= LONGEST ? length : -1;
}

static void* read_messages(void* argument) {
  channel* from = argument;
  unsigned char* octets = malloc(LONGEST);
  size_t n = 0;
  for (ssize_t more; (more = recv(from->socket, octets + n, LONGEST - n, 0)) > 0;) {
    n += (size_t)more;
    long length = 0;
    while ((length = message_length(octets, n)) > 0 && (size_t)length <= n) {
      TriMessage message = {octets, length * 8, NULL};
      triEnqueueMsg(&from->port, NULL, NULL, &message);
      n -= (size_t)length;
      memmove(octets, octets + length, n);
    }
    if (length < 0) break;
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
  const char* number = getenv("LDAP_PORT");
  struct sockaddr_in peer = {.sin_family = AF_INET};
  peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  peer.sin_port = htons((uint16_t)(number != NULL ? atoi(number) : 0));
  close_channel();
  open_channel.port = *system_port;
  strncpy(open_channel.name, system_port->portName, NAME - 1);
  open_channel.port.portName = open_channel.name;
  open_channel.socket = socket(AF_INET, SOCK_STREAM, 0);
  if (open_channel.socket < 0 ||
      connect(open_channel.socket, (struct sockaddr*)&peer, sizeof peer) != 0 ||
      pthread_create(&open_channel.reader, NULL, read_messages, &open_channel) != 0)
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
  return send(open_channel.socket, message->data, octets, MSG_NOSIGNAL) == (ssize_t)octets ? TRI_OK : TRI_ERROR;
}
