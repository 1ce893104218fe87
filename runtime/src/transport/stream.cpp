#include "transport/stream.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "transport/sockets.h"

namespace lumos {

namespace {
// What may wait for a peer that takes nothing.
constexpr size_t most_waiting = 4 * longest_message;
}  // namespace

Stream::Stream(const ChannelEvents& events, Framing framing, int input, int output, std::string peer,
               bool connecting)
    : events_(events),
      framing_(framing),
      input_(input),
      output_(output),
      peer_(std::move(peer)),
      connecting_(connecting) {
  add_polled(this);
}

Stream::~Stream() {
  remove_polled(this);
  if (output_ >= 0 && !connecting_) write_some();
  if (output_ >= 0 && output_ != input_) close(output_);
  if (input_ >= 0) close(input_);
}

void Stream::end(const std::string& fault) {
  const bool lost = !waiting_.empty();
  if (framing_ == Framing::close && !connecting_ && fault.empty() && !arrived_.empty())
    events_.message(std::move(arrived_), peer_);
  else if (!arrived_.empty())
    events_.fault("the connection with " + peer_ + " ended within a message", false);
  if (!fault.empty() || lost)
    events_.fault(fault.empty() ? "the connection with " + peer_ + " ended" : fault, lost);
  arrived_.clear();
  waiting_.clear();
  if (output_ != input_) close(output_);
  close(input_);
  input_ = output_ = -1;
}

short Stream::wanted() const {
  if (connecting_) return POLLOUT;
  const bool writes = !waiting_.empty() && output_ == input_;
  return static_cast<short>((events_.pause() ? 0 : POLLIN) | (writes ? POLLOUT : 0));
}

void Stream::finish_connecting() {
  int status = 0;
  socklen_t size = sizeof status;
  getsockopt(input_, SOL_SOCKET, SO_ERROR, &status, &size);
  if (status != 0) return end("connecting to " + peer_ + ": " + std::strerror(status));
  connecting_ = false;
  write_some();
}

void Stream::ready(short events) {
  if (connecting_) return finish_connecting();
  if (events & POLLOUT) write_some();
  if (input_ >= 0 && events & (POLLIN | POLLHUP | POLLERR)) read_some();
}

void Stream::write_some() {
  while (!waiting_.empty() && output_ >= 0) {
    const ssize_t n = write(output_, waiting_.data(), waiting_.size());
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (n < 0) return end(system_text("sending to " + peer_));
    waiting_.erase(0, static_cast<size_t>(n));
  }
}

void Stream::deliver() {
  std::string message;
  Cut cut = Cut::more;
  while (!arrived_.empty() && (cut = cut_message(framing_, arrived_, message)) == Cut::message)
    events_.message(std::move(message), peer_);
  if (cut == Cut::wrong) end("what arrived from " + peer_ + " is no message of the framing");
}

void Stream::read_some() {
  static char octets[65536];
  for (int i = 0; i < 16 && input_ >= 0 && !events_.pause(); ++i) {
    const ssize_t n = read(input_, octets, sizeof octets);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (n < 0) return end(system_text("receiving from " + peer_));
    if (n == 0) return end("");
    arrived_.append(octets, static_cast<size_t>(n));
    deliver();
  }
}

bool Stream::send(std::string_view message, std::string& error) {
  if (waiting_.size() + message.size() > most_waiting) {
    error = "sending to " + peer_ + ": " + std::to_string(waiting_.size()) +
            " octets wait, the peer takes nothing";
    return false;
  }
  if (!frame_message(framing_, message, waiting_)) {
    error = "the message of " + std::to_string(message.size()) + " octets is too long for its framing";
    return false;
  }
  if (!connecting_) write_some();
  if (!waiting_.empty()) wake_poller();
  return true;
}

}  // namespace lumos
