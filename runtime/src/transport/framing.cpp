#include "transport/framing.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <vector>

namespace lumos {

namespace {

constexpr std::string_view names[] = {"none", "line", "crlf",  "len16",  "len32",
                                      "tpkt", "ber",  "close", "length", "varint"};

unsigned octet(std::string_view text, size_t i) {
  return static_cast<unsigned char>(text[i]);
}

size_t number(std::string_view text, size_t at, size_t count) {
  size_t n = 0;
  for (size_t i = 0; i < count; ++i) n = n << 8 | octet(text, at + i);
  return n;
}

std::string octets_of(size_t n, size_t count) {
  std::string text;
  while (count-- > 0) text += static_cast<char>(n >> 8 * count & 0xFF);
  return text;
}

// A message and what stands before it.
struct Extent {
  Cut cut;
  size_t header = 0, length = 0;  // the length without the header
};

Extent counted(std::string_view s, size_t count) {
  if (s.size() < count) return {Cut::more};
  const size_t length = number(s, 0, count);
  return length > longest_message ? Extent{Cut::wrong} : Extent{Cut::message, count, length};
}

Extent tpkt(std::string_view s) {
  if (!s.empty() && octet(s, 0) != 3) return {Cut::wrong};
  if (s.size() < 4) return {Cut::more};
  const size_t length = number(s, 2, 2);
  return length < 4 ? Extent{Cut::wrong} : Extent{Cut::message, 4, length - 4};
}

// Identifier and length of a value; the identifier may go on over several octets.
Extent ber(std::string_view s) {
  size_t at = 1;
  if (!s.empty() && (octet(s, 0) & 0x1F) == 0x1F) {
    while (at < s.size() && octet(s, at) & 0x80) ++at;
    ++at;
    if (at > 6) return {Cut::wrong};
  }
  if (s.size() <= at) return {Cut::more};
  const unsigned first = octet(s, at++);
  if (first < 0x80) return {Cut::message, 0, at + first};
  const size_t count = first & 0x7F;
  // Without a length only the end of the contents would tell.
  if (count == 0 || count > 4) return {Cut::wrong};
  if (s.size() < at + count) return {Cut::more};
  const size_t length = number(s, at, count);
  return length > longest_message ? Extent{Cut::wrong} : Extent{Cut::message, 0, at + count + length};
}

Extent told(std::string_view s, const FramingSpec& framing) {
  const size_t header = framing.offset + framing.size;
  if (s.size() < header) return {Cut::more};
  const size_t length = number(s, framing.offset, framing.size) + framing.added;
  return length > longest_message || length < header ? Extent{Cut::wrong} : Extent{Cut::message, 0, length};
}

Extent varint(std::string_view s, size_t at) {
  size_t length = 0;
  for (unsigned shift = 0; shift < 28; shift += 7, ++at) {
    if (s.size() <= at) return {Cut::more};
    length |= static_cast<size_t>(octet(s, at) & 0x7F) << shift;
    if (octet(s, at) < 0x80)
      return length > longest_message ? Extent{Cut::wrong} : Extent{Cut::message, 0, at + 1 + length};
  }
  return {Cut::wrong};
}

Cut cut_line(std::string_view& stream, std::string& message) {
  const size_t end = stream.find('\n');
  if (end == std::string::npos) return stream.size() > longest_message ? Cut::wrong : Cut::more;
  message = stream.substr(0, end > 0 && stream[end - 1] == '\r' ? end - 1 : end);
  stream.remove_prefix(end + 1);
  return Cut::message;
}

}  // namespace

std::optional<FramingSpec> framing_named(std::string_view name) {
  const size_t colon = name.find(':');
  std::vector<size_t> numbers;
  for (size_t at = colon; at < name.size(); at = name.find(':', at + 1)) {
    size_t n = 0;
    const std::string_view digits = name.substr(at + 1, name.find(':', at + 1) - at - 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), n);
    if (error != std::errc() || end != digits.data() + digits.size() || n > 1000) return std::nullopt;
    numbers.push_back(n);
  }
  const auto* found = std::find(std::begin(names), std::end(names), name.substr(0, colon));
  if (found == std::end(names)) return std::nullopt;
  FramingSpec spec(static_cast<Framing>(found - std::begin(names)));
  const size_t least = spec.kind == Framing::length ? 2 : spec.kind == Framing::varint ? 1 : 0;
  const size_t most = spec.kind == Framing::length ? 3 : least;
  if (numbers.size() < least || numbers.size() > most) return std::nullopt;
  numbers.resize(3);
  spec.offset = numbers[0];
  spec.size = numbers[1];
  spec.added = numbers[2];
  return spec.kind == Framing::length && (spec.size < 1 || spec.size > 4) ? std::nullopt
                                                                          : std::optional(spec);
}

Cut cut_message(const FramingSpec& spec, std::string_view& stream, std::string& message) {
  const Framing framing = spec.kind;
  if (framing == Framing::line || framing == Framing::crlf) return cut_line(stream, message);
  if (framing == Framing::close) return stream.size() > longest_message ? Cut::wrong : Cut::more;
  if (stream.empty()) return Cut::more;
  const Extent extent = framing == Framing::len16    ? counted(stream, 2)
                        : framing == Framing::len32  ? counted(stream, 4)
                        : framing == Framing::tpkt   ? tpkt(stream)
                        : framing == Framing::ber    ? ber(stream)
                        : framing == Framing::length ? told(stream, spec)
                        : framing == Framing::varint ? varint(stream, spec.offset)
                                                     : Extent{Cut::message, 0, stream.size()};
  if (extent.cut != Cut::message) return extent.cut;
  if (stream.size() < extent.header + extent.length) return Cut::more;
  message = stream.substr(extent.header, extent.length);
  stream.remove_prefix(extent.header + extent.length);
  return Cut::message;
}

bool frame_message(const FramingSpec& spec, std::string_view message, std::string& stream) {
  const Framing framing = spec.kind;
  const size_t n = message.size();
  if (n > longest_message || (framing == Framing::len16 && n > 0xFFFF) ||
      (framing == Framing::tpkt && n > 0xFFFF - 4))
    return false;
  if (framing == Framing::len16) stream += octets_of(n, 2);
  if (framing == Framing::len32) stream += octets_of(n, 4);
  if (framing == Framing::tpkt) stream += octets_of(0x0300, 2) + octets_of(n + 4, 2);
  stream += message;
  if (framing == Framing::crlf) stream += '\r';
  if (framing == Framing::line || framing == Framing::crlf) stream += '\n';
  return true;
}

}  // namespace lumos
