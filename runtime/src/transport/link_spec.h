// What a port of the system is linked to, as the user writes it: "dns=udp:127.0.0.1:5353", or with a blank.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "transport/framing.h"

namespace lumos {

enum class LinkKind { udp, tcp, tcp_listen, file, loopback };

struct Endpoint {
  std::string host, port;
};

struct LinkSpec {
  std::string name;  // of the system port, "name" or "name[index]"
  LinkKind kind = LinkKind::udp;
  Endpoint peer;       // or where to listen; both empty for udp without a peer
  Endpoint local;      // empty: any
  std::string path;    // of a file
  std::string output;  // of a file that is written to, where it is another one
  FramingSpec framing;
};

// "host:port", the host of IPv6 in brackets.
bool read_endpoint(std::string_view text, Endpoint& endpoint);
bool read_link_spec(std::string_view text, LinkSpec& spec);

// Links that the command line gave; a later one for a port replaces an earlier one.
bool add_link(const std::string& text);
bool has_links();
// The names in them.
std::vector<std::string> linked_ports();
// Null if the port has none.
const LinkSpec* link_for(std::string_view port, long index);

}  // namespace lumos
