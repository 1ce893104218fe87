// UDP: each datagram is a message.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <linux/errqueue.h>

#include <cerrno>
#include <cstring>

#include "transport/channels.h"
#include "transport/sockets.h"

namespace lumos {

namespace {

class Datagrams : public Channel, public Polled {
 public:
  Datagrams(ChannelEvents events, int fd, int family, const SocketAddress& peer, bool has_peer)
      : events_(std::move(events)), fd_(fd), family_(family), peer_(peer), has_peer_(has_peer) {
    std::lock_guard<std::mutex> hold(poller_lock());
    add_polled(this);
  }
  ~Datagrams() override {
    std::lock_guard<std::mutex> hold(poller_lock());
    remove_polled(this);
    await_poller();
    close(fd_);
  }

  bool send(std::string_view message, std::string_view peer, std::string& error) override {
    std::lock_guard<std::mutex> hold(poller_lock());
    SocketAddress to = peer_;
    Endpoint endpoint;
    if (!peer.empty() &&
        (!read_endpoint(peer, endpoint) || !resolve(endpoint, SOCK_DGRAM, false, family_, to, error))) {
      if (error.empty()) error = "'" + std::string(peer) + "' is no address";
      return false;
    }
    if (to.length == 0) {
      error = "there is no peer to send to";
      return false;
    }
    // Where the buffer of the system is full, the network would lose the datagram as well; it is waited for a
    // moment.
    pollfd writable = {fd_, POLLOUT, 0};
    poll(&writable, 1, 100);
    // What became of an earlier datagram may be the answer to the first attempt.
    for (int attempt = 0; attempt < 2; ++attempt)
      if (sendto(fd_, message.data(), message.size(), MSG_NOSIGNAL, to.get(), to.length) ==
          static_cast<ssize_t>(message.size()))
        return true;
    error = system_text("sending to " + text_of(to));
    return false;
  }

  int descriptor() const override { return fd_; }
  short wanted() const override { return events_.pause() ? 0 : POLLIN; }

  void ready(short) override {
    static char octets[65536];
    tell_refusals();
    // Others have their turn after some.
    for (int i = 0; i < 64 && !events_.pause(); ++i) {
      SocketAddress from;
      from.length = sizeof from.storage;
      const ssize_t n = recvfrom(fd_, octets, sizeof octets, 0, from.get(), &from.length);
      if (n < 0 && (errno == EAGAIN || errno == EINTR || tell_refusals())) return;
      if (n < 0) return events_.fault(system_text("receiving from " + text_of(peer_)), Trouble::some);
      if (!has_peer_) peer_ = from;
      events_.message(std::string(octets, static_cast<size_t>(n)), text_of(from));
    }
  }

 private:
  // What the network says of datagrams that were sent; whether it says anything.
  bool tell_refusals() {
    const int error = errno;
    bool is_told = false;
    for (SocketAddress to;; is_told = true) {
      alignas(cmsghdr) char control[512];
      msghdr message = {};
      message.msg_name = to.get();
      message.msg_namelen = sizeof to.storage;
      message.msg_control = control;
      message.msg_controllen = sizeof control;
      if (recvmsg(fd_, &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) break;
      to.length = message.msg_namelen;
      for (cmsghdr* part = CMSG_FIRSTHDR(&message); part; part = CMSG_NXTHDR(&message, part)) {
        sock_extended_err said;
        if (part->cmsg_len < CMSG_LEN(sizeof said)) continue;
        std::memcpy(&said, CMSG_DATA(part), sizeof said);
        errno = static_cast<int>(said.ee_errno);
        events_.fault(system_text("a datagram for " + text_of(to)), Trouble::some);
      }
    }
    errno = error;
    return is_told;
  }
  ChannelEvents events_;
  int fd_, family_;
  SocketAddress peer_;
  bool has_peer_;
};

}  // namespace

std::unique_ptr<Channel> open_datagrams(const LinkSpec& spec, ChannelEvents events, std::string& error) {
  SocketAddress peer, local;
  const bool has_peer = !spec.peer.port.empty(), has_local = !spec.local.port.empty();
  // An address that is given without a host is one of the other's family.
  const bool peer_first = has_peer && !spec.peer.host.empty();
  int family = AF_UNSPEC;
  for (const bool is_peer : {peer_first, !peer_first}) {
    if (!(is_peer ? has_peer : has_local)) continue;
    SocketAddress& address = is_peer ? peer : local;
    if (!resolve(is_peer ? spec.peer : spec.local, SOCK_DGRAM, !is_peer, family, address, error))
      return nullptr;
    family = address.family();
  }
  const int fd = open_socket(family, SOCK_DGRAM, has_local ? &local : nullptr, error);
  if (fd < 0) return nullptr;
  const int yes = 1;
  family == AF_INET6 ? setsockopt(fd, IPPROTO_IPV6, IPV6_RECVERR, &yes, sizeof yes)
                     : setsockopt(fd, IPPROTO_IP, IP_RECVERR, &yes, sizeof yes);
  return std::make_unique<Datagrams>(std::move(events), fd, family, peer, has_peer);
}

}  // namespace lumos
