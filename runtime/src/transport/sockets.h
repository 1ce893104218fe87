// Addresses and sockets of the system.
#pragma once

#include <string>
#include <vector>

#include <sys/socket.h>

#include "transport/link_spec.h"

namespace lumos {

struct SocketAddress {
  sockaddr_storage storage = {};
  socklen_t length = 0;

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
  sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
  int family() const { return storage.ss_family; }
};

// The addresses that an endpoint's name stands for, at least one; of one family where that is not AF_UNSPEC.
// An empty host is any address of this machine where it is listened at, else its loopback address. Of the
// loopback addresses that of IPv4 comes first: most servers of this machine listen there.
bool resolve_all(const Endpoint& endpoint, int type, bool listens, int family,
                 std::vector<SocketAddress>& addresses, std::string& error);
// The first of them.
bool resolve(const Endpoint& endpoint, int type, bool listens, int family, SocketAddress& address,
             std::string& error);
// "host:port" in numbers, the host of IPv6 in brackets.
std::string text_of(const SocketAddress& address);
// A socket that does not block, bound where an address is given; -1 leaves the system's text in error.
int open_socket(int family, int type, const SocketAddress* local, std::string& error);
std::string system_text(const std::string& what);

}  // namespace lumos
