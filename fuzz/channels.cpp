// The adapters for UDP and TCP against peers that the input plays: several connections, whose octets come in
// pieces of any size, that end, half end or are reset; datagrams of any size; answers to anybody. What
// arrives must be what was sent, cut as the stream as a whole is cut, and all that is opened must come to its
// end.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "transport/channel.h"

using namespace lumos;

namespace {

[[noreturn]] void refuse(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void reset_at_end(int fd) {
  const linger at_once = {1, 0};
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  close(fd);
}

struct Heard {
  std::mutex lock;
  std::map<std::string, std::vector<std::string>> messages;  // by peers
  std::set<std::string> ended;                               // peers, the last of what they do
  size_t count = 0;

  ChannelEvents events() {
    return {[this](std::string message, std::string peer) {
              std::lock_guard<std::mutex> hold(lock);
              messages[peer].push_back(std::move(message));
              ++count;
            },
            [this](const std::string& text, Trouble) {
              std::lock_guard<std::mutex> hold(lock);
              const size_t name = text.find("127.0.0.1:");
              if (text.find("ended within") == std::string::npos && name != std::string::npos)
                ended.insert(text.substr(name, text.find_first_of(": ", name + 10) - name));
            },
            [] { return false; }};
  }
  template <class Until>
  void wait(Until until, const char* what) {
    for (int i = 0; i < 50000; ++i, usleep(100)) {
      std::lock_guard<std::mutex> hold(lock);
      if (until()) return;
    }
    refuse(what);
  }
};

// A socket of the peer's and its name.
int peer_socket(int type, unsigned port, std::string& name) {
  const int fd = socket(AF_INET, type, 0);
  sockaddr_in to = {AF_INET, htons(static_cast<uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}}, own = {};
  socklen_t size = sizeof own;
  if (connect(fd, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) refuse("no connection");
  getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size);
  name = "127.0.0.1:" + std::to_string(ntohs(own.sin_port));
  return fd;
}

std::vector<std::string> cut(const FramingSpec& framing, std::string_view stream) {
  std::vector<std::string> list;
  std::string message;
  while (!stream.empty() && cut_message(framing, stream, message) == Cut::message) list.push_back(message);
  return list;
}

// Channels that live as long as the process, at the first ports that are free; one server for each framing.
struct Adapters {
  struct Server {
    unsigned port = 0;
    FramingSpec framing;
    Heard heard;
    std::unique_ptr<Channel> channel;
  };
  std::vector<Server> servers{10};
  Server datagrams;

  static void open(Server& s, LinkKind kind) {
    static unsigned next = 20000 + static_cast<unsigned>(getpid()) % 20000;
    std::string error;
    for (int i = 0; i < 1000 && !s.channel; ++i) {
      LinkSpec spec;
      spec.kind = kind;
      spec.framing = s.framing;
      (kind == LinkKind::udp ? spec.local : spec.peer) = {"127.0.0.1", std::to_string(s.port = ++next)};
      s.channel = open_channel(spec, s.heard.events(), error);
    }
    if (!s.channel) refuse(error.c_str());
  }
  Adapters() {
    for (size_t i = 0; i < servers.size(); ++i) {
      servers[i].framing = static_cast<Framing>(i);
      servers[i].framing.offset = 1;
      servers[i].framing.size = 2;
      open(servers[i], LinkKind::tcp_listen);
    }
    open(datagrams, LinkKind::udp);
  }
};

void try_datagrams(Adapters::Server& server, std::string_view input) {
  std::string name, error;
  const int fd = peer_socket(SOCK_DGRAM, server.port, name);
  std::vector<std::string> sent;
  while (!input.empty() && sent.size() < 20) {
    const size_t n = std::min<size_t>(input.size() - 1, static_cast<unsigned char>(input[0]) * 7u);
    sent.emplace_back(input.substr(1, n));
    if (send(fd, sent.back().data(), n, 0) < 0) refuse("a datagram is refused");
    input.remove_prefix(n + 1);
  }
  server.heard.wait([&] { return server.heard.count >= sent.size(); }, "datagrams are lost");
  if (server.heard.messages[name] != sent && !sent.empty()) refuse("other datagrams");
  char octets[2000];
  for (const std::string& message : sent)
    if (!server.channel->send(message, name, error) ||
        recv(fd, octets, sizeof octets, 0) != static_cast<ssize_t>(message.size()) ||
        message.compare(0, message.size(), octets, message.size()) != 0)
      refuse("another answer");
  close(fd);
}

struct Connection {
  int fd = -1;
  std::string name, stream;
  bool is_reset = false;
};

// An octet says which connection, and what: most often a piece to send, else an end, a half end, a reset or
// an answer.
void try_streams(Adapters::Server& server, std::string_view input) {
  std::vector<Connection> open(1 + static_cast<unsigned char>(input[0]) % 3);
  for (Connection& c : open) c.fd = peer_socket(SOCK_STREAM, server.port, c.name);
  std::vector<bool> over(open.size());
  for (input.remove_prefix(1); input.size() > 1;) {
    const auto act = static_cast<unsigned char>(input[0]);
    const size_t k = act % open.size();
    const size_t n = std::min<size_t>(input.size() - 1, act / 8);
    std::string error;
    if (act >= 248) {
      if (!over[k] && act >= 252) shutdown(open[k].fd, SHUT_WR);
      if (!over[k] && act < 252) {
        open[k].is_reset = true;
        reset_at_end(std::exchange(open[k].fd, -1));
      }
      over[k] = true;
    } else if (act >= 240) {
      server.channel->send(input.substr(1, n), act % 2 ? "127.0.0.1:1" : open[k].name, error);
    } else if (!over[k] && n > 0 &&
               send(open[k].fd, input.data() + 1, n, MSG_NOSIGNAL) == static_cast<ssize_t>(n)) {
      open[k].stream += input.substr(1, n);
    }
    input.remove_prefix(1 + (act < 248 ? n : 0));
  }
  for (Connection& c : open)
    if (c.fd >= 0) shutdown(c.fd, SHUT_WR);
  const auto has_ended = [&](const Connection& c) { return server.heard.ended.count(c.name) > 0; };
  server.heard.wait([&] { return std::all_of(open.begin(), open.end(), has_ended); },
                    "a connection does not end");
  for (Connection& c : open) {
    std::vector<std::string>& got = server.heard.messages[c.name];
    std::vector<std::string> wanted = cut(server.framing, c.stream);
    if (server.framing.kind == Framing::none || server.framing.kind == Framing::close) {
      std::string all;
      for (const std::string& part : got) all += part;
      if (!c.is_reset && all != c.stream && c.stream.size() < longest_message) refuse("other octets");
    } else if (c.is_reset ? got.size() > wanted.size() || !std::equal(got.begin(), got.end(), wanted.begin())
                          : got != wanted) {
      refuse("other messages");
    }
    if (c.fd >= 0) reset_at_end(c.fd);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  static auto* adapters = new Adapters;
  if (size < 3) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data + 1), size - 1);
  Adapters::Server& server = data[0] % 11 == 10 ? adapters->datagrams : adapters->servers[data[0] % 11];
  {
    std::lock_guard<std::mutex> hold(server.heard.lock);
    server.heard.messages.clear();
    server.heard.ended.clear();
    server.heard.count = 0;
  }
  data[0] % 11 == 10 ? try_datagrams(server, input) : try_streams(server, input);
  return 0;
}
