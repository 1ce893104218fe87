#include "transport/sockets.h"

#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace lumos {

std::string system_text(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

bool resolve(const Endpoint& endpoint, int type, bool listens, SocketAddress& address, std::string& error) {
  addrinfo hints = {}, *found = nullptr;
  hints.ai_socktype = type;
  hints.ai_flags = AI_NUMERICSERV | (listens ? AI_PASSIVE : 0);
  const char* host = endpoint.host.empty() ? nullptr : endpoint.host.c_str();
  if (!host && listens) hints.ai_family = AF_INET;
  const int status = getaddrinfo(host, endpoint.port.c_str(), &hints, &found);
  if (status != 0) {
    error = "address " + endpoint.host + ":" + endpoint.port + ": " + gai_strerror(status);
    return false;
  }
  std::memcpy(&address.storage, found->ai_addr, found->ai_addrlen);
  address.length = found->ai_addrlen;
  freeaddrinfo(found);
  return true;
}

std::string text_of(const SocketAddress& address) {
  char host[NI_MAXHOST], port[NI_MAXSERV];
  if (getnameinfo(address.get(), address.length, host, sizeof host, port, sizeof port,
                  NI_NUMERICHOST | NI_NUMERICSERV))
    return {};
  const bool is_long = address.family() == AF_INET6;
  return (is_long ? "[" : "") + std::string(host) + (is_long ? "]:" : ":") + port;
}

int open_socket(int family, int type, const SocketAddress* local, std::string& error) {
  const int fd = socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    error = system_text("socket");
    return -1;
  }
  const int yes = 1;
  if (local) setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  if (local && bind(fd, local->get(), local->length) != 0) {
    error = system_text("address " + text_of(*local));
    close(fd);
    return -1;
  }
  return fd;
}

}  // namespace lumos
