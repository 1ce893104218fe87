#include "transport/stream.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "text/log.h"
#include "transport/sockets.h"

namespace lumos {

namespace {
// What may wait for a peer that takes nothing.
constexpr size_t most_waiting = 4 * longest_message;
}  // namespace

Stream::Stream(const ChannelEvents& events, const FramingSpec& framing, int input, int output,
               std::string peer, StreamKind kind)
    : events_(events),
      framing_(framing),
      input_(input),
      output_(output),
      peer_(std::move(peer)),
      connecting_(kind == StreamKind::connecting),
      answers_(kind == StreamKind::answers || output != input) {
  add_polled(this);
  if (output_ != input_) add_polled(&output_side_);
}

Stream::~Stream() {
  remove_polled(this);
  remove_polled(&output_side_);
  send_rest();
  if (output_ >= 0 && output_ != input_) close(output_);
  if (input_ >= 0) close(input_);
}

void Stream::send_rest() {
  constexpr int looks = 10, milliseconds = 50;
  for (int i = 0; i < looks && output_ >= 0 && !waiting_.empty(); ++i) {
    pollfd fd = {output_, POLLOUT, 0};
    if (poll(&fd, 1, milliseconds) > 0) connecting_ ? finish_connecting() : write_some();
  }
  if (output_ >= 0 && !waiting_.empty())
    log_line(lumo_log_msg_warning_c, std::to_string(waiting_.size() - written_) + " octets for " + peer_ +
                                         " are lost: it did not take them");
}

void Stream::end(const std::string& fault) {
  const bool lost = !waiting_.empty() || has_answered_;
  finish_reading(fault.empty());
  events_.fault(fault.empty() ? "the connection with " + peer_ + " ended" : fault, lost ? Trouble::lost
                                                                                   : fault.empty()
                                                                                       ? Trouble::none
                                                                                       : Trouble::some);
  arrived_.clear();
  waiting_.clear();
  written_ = 0;
  if (output_ != input_) close(output_);
  close(input_);
  input_ = output_ = -1;
}

short Stream::Output::wanted() const {
  return POLLOUT;
}

short Stream::wanted() const {
  if (connecting_) return POLLOUT;
  const bool writes = !waiting_.empty() && output_ == input_;
  // A reset shows without being asked for.
  if (has_ended_) return writes ? POLLOUT : POLLPRI;
  return static_cast<short>((events_.pause() ? 0 : POLLIN) | (writes ? POLLOUT : 0));
}

// What the socket says went wrong; empty where nothing did.
std::string status_of(int socket, const std::string& action) {
  int status = 0;
  socklen_t size = sizeof status;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &status, &size);
  return status == 0 ? "" : action + ": " + std::strerror(status);
}

void Stream::finish_connecting() {
  const std::string fault = status_of(input_, "connecting to " + peer_);
  if (!fault.empty()) {
    const int other = reconnect ? reconnect(peer_) : -1;
    if (other < 0) return end(fault);
    close(input_);
    input_ = output_ = other;
    return;
  }
  connecting_ = false;
  write_some();
}

void Stream::ready(short events) {
  if (connecting_) return finish_connecting();
  if (events & POLLOUT) write_some();
  if (has_ended_) {
    if (input_ >= 0 && events & (POLLHUP | POLLERR)) end(status_of(input_, "sending to " + peer_));
    return;
  }
  if (input_ >= 0 && events & (POLLIN | POLLHUP | POLLERR)) read_some();
}

void Stream::write_some() {
  while (written_ < waiting_.size() && output_ >= 0) {
    const ssize_t n = write(output_, waiting_.data() + written_, waiting_.size() - written_);
    if (n < 0 && errno != EAGAIN && errno != EINTR) return end(system_text("sending to " + peer_));
    if (n < 0) break;
    written_ += static_cast<size_t>(n);
    has_answered_ = has_ended_;
  }
  // What was written goes at once where all was, else when it is most of it.
  if (written_ * 2 < waiting_.size()) return;
  waiting_.erase(0, written_);
  written_ = 0;
}

void Stream::deliver() {
  std::string_view rest = arrived_;
  std::string message;
  Cut cut = Cut::more;
  while (!rest.empty() && (cut = cut_message(framing_, rest, message)) == Cut::message)
    events_.message(std::move(message), peer_);
  arrived_.erase(0, arrived_.size() - rest.size());
  if (cut == Cut::wrong) end("what arrived from " + peer_ + " is no message of the framing");
}

// The peer sends no more, but may still take what it is sent.
void Stream::finish_reading(bool is_good) {
  has_ended_ = true;
  if (framing_.kind == Framing::close && is_good && !arrived_.empty())
    events_.message(std::move(arrived_), peer_);
  else if (!arrived_.empty())
    events_.fault("the connection with " + peer_ + " ended within a message", Trouble::some);
  arrived_.clear();
}

void Stream::read_some() {
  static char octets[65536];
  for (int i = 0; i < 16 && input_ >= 0 && !events_.pause(); ++i) {
    const ssize_t n = read(input_, octets, sizeof octets);
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (n < 0) return end(system_text("receiving from " + peer_));
    if (n == 0 && !answers_) return end("");
    if (n == 0) {
      finish_reading(true);
      return events_.fault(peer_ + " sends no more", Trouble::none);
    }
    arrived_.append(octets, static_cast<size_t>(n));
    deliver();
  }
}

bool Stream::send(std::string_view message, std::string& error) {
  const size_t waits = waiting_.size() - written_;
  if (waits + message.size() > most_waiting) {
    error = "sending to " + peer_ + ": " + std::to_string(waits) + " octets wait, the peer takes nothing";
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
