#include "text/text_forms.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>

namespace lumos {

namespace {

// The character that begins at the place, which moves behind it; 0xFFFD for octets that are none.
char32_t next_character(std::string_view text, size_t& place) {
  const auto octet = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = octet(place++);
  if (first < 0x80) return first;
  const int more = first >= 0xF0 && first < 0xF5   ? 3
                   : first >= 0xE0 && first < 0xF0 ? 2
                   : first >= 0xC2 && first < 0xE0 ? 1
                                                   : 0;
  if (!more || place + static_cast<size_t>(more) > text.size()) return 0xFFFD;
  char32_t c = first & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    if ((octet(place + static_cast<size_t>(i)) & 0xC0) != 0x80) return 0xFFFD;
    c = c << 6 | (octet(place + static_cast<size_t>(i)) & 0x3F);
  }
  const char32_t least[] = {0, 0x80, 0x800, 0x10000};
  if (c < least[more] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return 0xFFFD;
  place += static_cast<size_t>(more);
  return c;
}

char* write_escape(char* out, char32_t c) {
  if (c >= 0x10000) {
    out = write_escape(out, 0xD7C0 + (c >> 10));
    c = 0xDC00 + (c & 0x3FF);
  }
  *out++ = '\\';
  *out++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4) *out++ = "0123456789abcdef"[c >> shift & 15];
  return out;
}

// How many of eight octets stand for themselves in a string of JSON before the first that does not; all are
// looked at together. "<" does not: in a page "</script>" would end a script.
size_t plain_octets(uint64_t octets) {
  constexpr uint64_t each = 0x0101010101010101, high = 0x80 * each;
  if constexpr (std::endian::native == std::endian::big) octets = __builtin_bswap64(octets);
  uint64_t found = octets | (octets - 32 * each);
  for (const uint64_t c : {0x7FU, unsigned{'"'}, unsigned{'\\'}, unsigned{'<'}})
    found |= (octets ^ c * each) - each;
  found &= high;  // the first is found for certain: what is borrowed goes to those behind it
  return found ? static_cast<size_t>(std::countr_zero(found)) / 8 : 8;
}

char* write_json_escape(char* out, char32_t c) {
  if (c != '"' && c != '\\' && c != '\n') return write_escape(out, c);
  *out++ = '\\';
  *out++ = c == '\n' ? 'n' : static_cast<char>(c);
  return out;
}

}  // namespace

std::string xml_text(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size();) {
    const size_t begin = i;
    const char32_t c = next_character(text, i);
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else if (c == '>') {
      out += "&gt;";
    } else if (c == '"') {
      out += "&quot;";
    } else if (c == '\n' || c == '\t' || c == '\r') {
      out += "&#" + std::to_string(c) + ";";
    } else if (c < 32 || c == 0xFFFD || c == 0xFFFE || c == 0xFFFF) {
      out += '?';
    } else {
      out += text.substr(begin, i - begin);
    }
  }
  return out;
}

std::string shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  while (most && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return std::string(text.substr(0, most)) + " ... and " + std::to_string(text.size() - most) +
         " octets more";
}

char* write_json(char* out, std::string_view text) {
  *out++ = '"';
  for (size_t i = 0; i < text.size();) {
    const uint64_t octets = eight_octets(text, i);  // what is too much of it is written over
    const size_t left = std::min<size_t>(text.size() - i, 8), n = std::min(plain_octets(octets), left);
    std::memcpy(out, &octets, 8);
    out += n;
    i += n;
    if (n < left) out = write_json_escape(out, next_character(text, i));
  }
  *out++ = '"';
  return out;
}

std::string json_text(std::string_view text) {
  std::string out(json_room(text.size()), ' ');
  out.resize(static_cast<size_t>(write_json(out.data(), text) - out.data()));
  return out;
}

char* write_hex(char* out, std::string_view octets) {
  static const char digits[] = "0123456789ABCDEF";
  for (unsigned char c : octets) {
    *out++ = digits[c >> 4];
    *out++ = digits[c & 15];
  }
  return out;
}

std::string hex_text(std::string_view octets) {
  std::string out(2 * octets.size(), ' ');
  write_hex(out.data(), octets);
  return out;
}

char* write_number(char* out, uint64_t number) {
  return std::to_chars(out, out + number_room, number).ptr;
}

void append_number(std::string& out, uint64_t number) {
  char text[number_room];
  out.append(text, write_number(text, number));
}

struct TwoDigits {
  char all[100][2];
  constexpr TwoDigits() : all() {
    for (int i = 0; i < 100; ++i) {
      all[i][0] = static_cast<char>('0' + i / 10);
      all[i][1] = static_cast<char>('0' + i % 10);
    }
  }
  constexpr const char* operator[](uint32_t number) const { return all[number]; }
};
constexpr TwoDigits two_digits;

char* write_seconds(char* out, int64_t nanoseconds) {
  if (nanoseconds < 0) *out++ = '-';
  uint64_t rest = nanoseconds < 0 ? -static_cast<uint64_t>(nanoseconds) : static_cast<uint64_t>(nanoseconds);
  out = write_number(out, rest / 1000000000);
  *out = '.';
  auto decimals = static_cast<uint32_t>(rest % 1000000000);
  for (int i = 8; i > 0; i -= 2, decimals /= 100) std::memcpy(out + i, two_digits[decimals % 100], 2);
  out[1] = static_cast<char>('0' + decimals);
  return out + 10;
}

std::string_view base_name(std::string_view path) {
  const void* slash = path.empty() ? nullptr : memrchr(path.data(), '/', path.size());
  return slash ? path.substr(static_cast<size_t>(static_cast<const char*>(slash) - path.data()) + 1) : path;
}

}  // namespace lumos
