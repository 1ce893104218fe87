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
  tpkt,    // in packets of ISO transport over TCP: four octets before it, with the length of both
  ber,     // values of ASN.1 by the basic encoding rules, which tell their length themselves
  close,   // all that arrives until the connection is closed
  length,  // messages whose own header tells their length, in octets of a certain place, in network order
  varint   // the same in seven bits of each octet, the least significant first; it counts what stands behind
           // it
};

struct FramingSpec {
  Framing kind = Framing::none;
  size_t offset = 0, size = 0;  // of the octets that tell a length
  size_t added = 0;             // that the length does not count

  FramingSpec(Framing k = Framing::none) : kind(k) {}
};

// The framing of that name, "length:OFFSET:SIZE", "length:OFFSET:SIZE:ADDED" and "varint:OFFSET" with their
// numbers.
std::optional<FramingSpec> framing_named(std::string_view name);

constexpr size_t longest_message = 1u << 24;

enum class Cut { message, more, wrong };

// Takes the next message off the beginning of a stream. `more` when its end has not arrived; `wrong` for
// octets that cannot begin a message or begin one that is too long.
Cut cut_message(const FramingSpec& framing, std::string_view& stream, std::string& message);
// The message as it goes into the stream; false where it is too long for the framing.
bool frame_message(const FramingSpec& framing, std::string_view message, std::string& stream);

}  // namespace lumos
