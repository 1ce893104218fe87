// TCP, as client and as server, and files.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <list>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "transport/sockets.h"
#include "transport/stream.h"

namespace lumos {

namespace {

// A peer that is gone shows in the status of writing.
void ignore_broken_pipes() {
  struct sigaction now = {};
  sigaction(SIGPIPE, nullptr, &now);
  if (now.sa_handler == SIG_DFL) std::signal(SIGPIPE, SIG_IGN);
}

void send_at_once(int fd) {
  const int yes = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

class Client : public Channel {
 public:
  Client(const LinkSpec& spec, ChannelEvents events, std::vector<SocketAddress> peers)
      : events_(std::move(events)), spec_(spec), peers_(std::move(peers)) {}
  ~Client() override {
    std::lock_guard<std::mutex> hold(poller_lock());
    stream_.reset();
  }

  // With the lock held. What comes of it shows later.
  bool connect(std::string& error) {
    tried_ = 0;
    const int fd = connect_next(error);
    if (fd < 0) return false;
    stream_.reset();
    stream_ = std::make_unique<Stream>(events_, spec_.framing, fd, fd, text_of(peers_[tried_ - 1]),
                                       StreamKind::connecting);
    stream_->reconnect = [this](std::string& peer) {
      std::string ignored;
      const int other = connect_next(ignored);
      if (other >= 0) peer = text_of(peers_[tried_ - 1]);
      return other;
    };
    return true;
  }

  bool send(std::string_view message, std::string_view peer, std::string& error) override {
    std::lock_guard<std::mutex> hold(poller_lock());
    const auto is_meant = [peer](const SocketAddress& a) { return text_of(a) == peer; };
    if (!peer.empty() && std::none_of(peers_.begin(), peers_.end(), is_meant)) {
      error = "the port is linked to " + text_of(peers_[0]) + ", not to " + std::string(peer);
      return false;
    }
    // A peer that has closed its connection gets a new one.
    if ((!stream_ || !stream_->is_open()) && !connect(error)) return false;
    return stream_->send(message, error);
  }

 private:
  // A descriptor on its way to the next of the addresses that takes it; -1 behind the last one.
  int connect_next(std::string& error) {
    while (tried_ < peers_.size()) {
      const SocketAddress& peer = peers_[tried_++];
      SocketAddress local;
      const bool has_local = !spec_.local.port.empty();
      if (has_local && !resolve(spec_.local, SOCK_STREAM, true, peer.family(), local, error)) continue;
      const int fd = open_socket(peer.family(), SOCK_STREAM, has_local ? &local : nullptr, error);
      if (fd < 0) continue;
      send_at_once(fd);
      if (::connect(fd, peer.get(), peer.length) == 0 || errno == EINPROGRESS) return fd;
      error = system_text("connecting to " + text_of(peer));
      close(fd);
    }
    return -1;
  }

  ChannelEvents events_;
  LinkSpec spec_;
  std::vector<SocketAddress> peers_;
  size_t tried_ = 0;  // of them, for this connection
  std::unique_ptr<Stream> stream_;
};

class Server : public Channel, public Polled {
 public:
  Server(const LinkSpec& spec, ChannelEvents events, int fd)
      : outer_(std::move(events)), framing_(spec.framing), fd_(fd) {
    events_ = outer_;
    events_.message = [this](std::string message, std::string peer) {
      heard_last_ = peer;
      outer_.message(std::move(message), std::move(peer));
    };
    std::lock_guard<std::mutex> hold(poller_lock());
    add_polled(this);
  }
  ~Server() override {
    std::lock_guard<std::mutex> hold(poller_lock());
    remove_polled(this);
    streams_.clear();
    await_poller();
    close(fd_);
  }

  int descriptor() const override { return fd_; }
  short wanted() const override {
    const bool has_room =
        streams_.size() < most_connections ||
        std::any_of(streams_.begin(), streams_.end(), [](const auto& s) { return s->has_ended(); });
    return has_room && !events_.pause() ? POLLIN : 0;
  }

  void ready(short) override {
    streams_.remove_if([](const std::unique_ptr<Stream>& s) { return !s->is_open(); });
    // Peers that send no more make room for others, the oldest first.
    if (streams_.size() >= most_connections) {
      const auto ended =
          std::find_if(streams_.begin(), streams_.end(), [](const auto& s) { return s->has_ended(); });
      if (ended == streams_.end()) return;
      streams_.erase(ended);
    }
    SocketAddress from;
    from.length = sizeof from.storage;
    const int fd = accept4(fd_, from.get(), &from.length, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) return;
    send_at_once(fd);
    if (heard_last_.empty()) heard_last_ = text_of(from);
    streams_.push_back(
        std::make_unique<Stream>(events_, framing_, fd, fd, text_of(from), StreamKind::answers));
  }

  bool send(std::string_view message, std::string_view peer, std::string& error) override {
    std::lock_guard<std::mutex> hold(poller_lock());
    const std::string wanted = peer.empty() ? heard_last_ : std::string(peer);
    for (const auto& stream : streams_)
      if (stream->is_open() && stream->peer() == wanted) return stream->send(message, error);
    error = wanted.empty() ? "nobody has connected yet" : "there is no connection with " + wanted;
    return false;
  }

 private:
  static constexpr size_t most_connections = 500;

  ChannelEvents outer_, events_;
  FramingSpec framing_;
  int fd_;
  std::string heard_last_;
  std::list<std::unique_ptr<Stream>> streams_;
};

class File : public Channel {
 public:
  File(const LinkSpec& spec, ChannelEvents events, int input, int output) : events_(std::move(events)) {
    std::lock_guard<std::mutex> hold(poller_lock());
    stream_ = std::make_unique<Stream>(events_, spec.framing, input, output, spec.path, StreamKind::file);
  }
  ~File() override {
    std::lock_guard<std::mutex> hold(poller_lock());
    stream_.reset();
  }
  bool send(std::string_view message, std::string_view, std::string& error) override {
    std::lock_guard<std::mutex> hold(poller_lock());
    if (stream_->is_open()) return stream_->send(message, error);
    error = "the file " + stream_->peer() + " has ended";
    return false;
  }

 private:
  ChannelEvents events_;
  std::unique_ptr<Stream> stream_;
};

int open_path(const std::string& path, int flags, std::string& error) {
  const int fd = open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
  if (fd < 0) error = system_text("file " + path);
  // A serial line hands over octets as they are.
  termios line;
  if (fd >= 0 && isatty(fd) && tcgetattr(fd, &line) == 0) {
    cfmakeraw(&line);
    tcsetattr(fd, TCSANOW, &line);
  }
  return fd;
}

}  // namespace

std::unique_ptr<Channel> open_client(const LinkSpec& spec, ChannelEvents events, std::string& error) {
  std::vector<SocketAddress> peers;
  if (!resolve_all(spec.peer, SOCK_STREAM, false, AF_UNSPEC, peers, error)) return nullptr;
  auto client = std::make_unique<Client>(spec, std::move(events), std::move(peers));
  bool good;
  {
    std::lock_guard<std::mutex> hold(poller_lock());
    good = client->connect(error);
  }
  if (!good) client.reset();
  return client;
}

std::unique_ptr<Channel> open_server(const LinkSpec& spec, ChannelEvents events, std::string& error) {
  SocketAddress local;
  if (!resolve(spec.peer, SOCK_STREAM, true, AF_UNSPEC, local, error)) return nullptr;
  const int fd = open_socket(local.family(), SOCK_STREAM, &local, error);
  if (fd < 0) return nullptr;
  if (listen(fd, 64) == 0) return std::make_unique<Server>(spec, std::move(events), fd);
  error = system_text("listening at " + text_of(local));
  close(fd);
  return nullptr;
}

std::unique_ptr<Channel> open_file(const LinkSpec& spec, ChannelEvents events, std::string& error) {
  const int input = open_path(spec.path, spec.output.empty() ? O_RDWR : O_RDONLY, error);
  if (input < 0) return nullptr;
  const int output = spec.output.empty() ? input : open_path(spec.output, O_RDWR | O_CREAT | O_APPEND, error);
  if (output >= 0) return std::make_unique<File>(spec, std::move(events), input, output);
  close(input);
  return nullptr;
}

namespace {

class Loopback : public Channel {
 public:
  explicit Loopback(ChannelEvents events) : events_(std::move(events)) {}
  bool send(std::string_view message, std::string_view peer, std::string&) override {
    events_.message(std::string(message), std::string(peer));
    return true;
  }

 private:
  ChannelEvents events_;
};

}  // namespace

std::unique_ptr<Channel> open_channel(const LinkSpec& spec, ChannelEvents events, std::string& error) {
  ignore_broken_pipes();
  switch (spec.kind) {
    case LinkKind::udp:
      return open_datagrams(spec, std::move(events), error);
    case LinkKind::tcp:
      return open_client(spec, std::move(events), error);
    case LinkKind::tcp_listen:
      return open_server(spec, std::move(events), error);
    case LinkKind::file:
      return open_file(spec, std::move(events), error);
    default:
      return std::make_unique<Loopback>(std::move(events));
  }
}

}  // namespace lumos
