#include "transport/sockets.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace lumos {

std::string system_text(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

namespace {
bool is_loopback_of_ipv6(const SocketAddress& address) {
  return address.family() == AF_INET6 &&
         IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6*>(address.get())->sin6_addr);
}
}  // namespace

bool resolve_all(const Endpoint& endpoint, int type, bool listens, int family,
                 std::vector<SocketAddress>& addresses, std::string& error) {
  addrinfo hints = {}, *found = nullptr;
  hints.ai_socktype = type;
  hints.ai_family = family;
  hints.ai_flags = AI_NUMERICSERV | (listens ? AI_PASSIVE : 0);
  const char* host = endpoint.host.empty() ? nullptr : endpoint.host.c_str();
  if (!host && family == AF_UNSPEC) hints.ai_family = AF_INET;
  const int status = getaddrinfo(host, endpoint.port.c_str(), &hints, &found);
  if (status != 0) {
    error = "address " + endpoint.host + ":" + endpoint.port + ": " + gai_strerror(status);
    return false;
  }
  for (const addrinfo* at = found; at; at = at->ai_next) {
    SocketAddress& address = addresses.emplace_back();
    std::memcpy(&address.storage, at->ai_addr, at->ai_addrlen);
    address.length = at->ai_addrlen;
  }
  freeaddrinfo(found);
  std::stable_partition(addresses.begin(), addresses.end(),
                        [](const SocketAddress& a) { return !is_loopback_of_ipv6(a); });
  return true;
}

bool resolve(const Endpoint& endpoint, int type, bool listens, int family, SocketAddress& address,
             std::string& error) {
  std::vector<SocketAddress> all;
  if (!resolve_all(endpoint, type, listens, family, all, error)) return false;
  address = all[0];
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
  // Connections that ended do not keep the address; sockets for datagrams would share it.
  if (local && type == SOCK_STREAM) setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  if (local && bind(fd, local->get(), local->length) != 0) {
    error = system_text("address " + text_of(*local));
    close(fd);
    return -1;
  }
  return fd;
}

}  // namespace lumos
