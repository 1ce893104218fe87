// A stream that arrives in pieces is cut into the same messages as when it arrives at once, and what is
// framed is cut again. The first octet chooses the framing, the second the size of the pieces.
#include <cstdlib>
#include <vector>

#include "transport/framing.h"

using namespace lumos;

static std::vector<std::string> messages(const FramingSpec& framing, const std::string& octets,
                                         size_t piece) {
  std::vector<std::string> list;
  std::string stream, message;
  for (size_t at = 0; at < octets.size(); at += piece) {
    stream += octets.substr(at, piece);
    std::string_view rest = stream;
    Cut cut;
    while (!rest.empty() && (cut = cut_message(framing, rest, message)) == Cut::message)
      list.push_back(message);
    if (!rest.empty() && cut == Cut::wrong) break;
    stream = rest;
  }
  return list;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  if (size < 2) return 0;
  constexpr Framing kinds[] = {Framing::line, Framing::crlf, Framing::len16,  Framing::len32,
                               Framing::tpkt, Framing::ber,  Framing::length, Framing::varint};
  FramingSpec framing = kinds[data[0] % 8];
  framing.offset = data[0] / 8 % 4;
  framing.size = 1 + data[0] / 32 % 4;
  framing.added = data[0] / 128;
  const std::string octets(reinterpret_cast<const char*>(data + 2), size - 2);
  if (messages(framing, octets, 1 + data[1]) != messages(framing, octets, octets.size() + 1)) std::abort();
  std::string stream;
  const bool adds_length = data[0] % 8 >= 2 && data[0] % 8 <= 4;
  if (!adds_length || !frame_message(framing, octets, stream)) return 0;
  if (messages(framing, stream, stream.size() + 1) != std::vector<std::string>{octets}) std::abort();
  return 0;
}
