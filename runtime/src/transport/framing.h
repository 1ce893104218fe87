// How messages lie in a stream of octets.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumos {

enum class Framing {
  none,   // what arrives at once is a message
  line,   // ended by a line feed, which is no part of it; a carriage return before it goes too
  crlf,   // the same, but sent with both
  len16,  // behind their length in two or four octets, in network order, which are no part of them
  len32,
  tpkt,  // in packets of ISO transport over TCP: four octets before it, with the length of both
  ber,   // values of ASN.1 by the basic encoding rules, which tell their length themselves
  close  // all that arrives until the connection is closed
};

// The framing of that name.
std::optional<Framing> framing_named(std::string_view name);

constexpr size_t longest_message = 1u << 24;

enum class Cut { message, more, wrong };

// Takes the next message off the beginning of a stream. `more` when its end has not arrived; `wrong` for
// octets that cannot begin a message or begin one that is too long.
Cut cut_message(Framing framing, std::string_view& stream, std::string& message);
// The message as it goes into the stream; false where it is too long for the framing.
bool frame_message(Framing framing, std::string_view message, std::string& stream);

}  // namespace lumos
