#include "text/text_forms.h"

#include <algorithm>
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

// How many of eight octets are printable characters of ASCII, but for some, before the first that is not; all
// are looked at together.
template <char... But>
size_t plain_octets(uint64_t octets) {
  constexpr uint64_t each = 0x0101010101010101, high = 0x80 * each;
  if constexpr (std::endian::native == std::endian::big) octets = __builtin_bswap64(octets);
  uint64_t found = octets | (octets - 32 * each);
  for (const uint64_t c : {uint64_t{0x7F}, uint64_t{But}...}) found |= (octets ^ c * each) - each;
  found &= high;  // the first is found for certain: what is borrowed goes to those behind it
  return found ? static_cast<size_t>(std::countr_zero(found)) / 8 : 8;
}

// The text, whose octets stand for themselves but for those that the function takes the character of.
template <char... But, class Escape>
char* write_plain(char* out, std::string_view text, Escape escape) {
  for (size_t i = 0; i < text.size();) {
    const uint64_t octets = eight_octets(text, i);  // what is too much of it is written over
    const size_t left = std::min<size_t>(text.size() - i, 8);
    const size_t n = std::min(plain_octets<But...>(octets), left);
    std::memcpy(out, &octets, 8);
    out += n;
    i += n;
    if (n < left) out = escape(out, i);
  }
  return out;
}

char* write_json_escape(char* out, char32_t c) {
  if (c != '"' && c != '\\' && c != '\n') return write_escape(out, c);
  *out++ = '\\';
  *out++ = c == '\n' ? 'n' : static_cast<char>(c);
  return out;
}

}  // namespace

std::string_view beginning(std::string_view text, size_t most) {
  if (text.size() <= most) return text;
  while (most && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return text.substr(0, most);
}

std::string shortened(std::string_view text, size_t most) {
  if (text.size() <= most) return std::string(text);
  const std::string_view shown = beginning(text, most);
  return std::string(shown) + " ... and " + std::to_string(text.size() - shown.size()) + " octets more";
}

std::string xml_text(std::string_view text) {
  std::string out(6 * text.size() + 8, ' ');
  char* end = write_plain<'&', '<', '>', '"'>(out.data(), text, [&](char* at, size_t& i) {
    const size_t begin = i;
    const char32_t c = next_character(text, i);
    if (c == '&') return written(at, "&amp;");
    if (c == '<') return written(at, "&lt;");
    if (c == '>') return written(at, "&gt;");
    if (c == '"') return written(at, "&quot;");
    if (c == '\n' || c == '\t' || c == '\r') return written(write_number(written(at, "&#"), c), ";");
    if (c < 32 || c == 0xFFFD || c == 0xFFFE || c == 0xFFFF) return written(at, "?");
    return written(at, text.substr(begin, i - begin));
  });
  out.resize(static_cast<size_t>(end - out.data()));
  return out;
}

char* write_json(char* out, std::string_view text) {
  *out++ = '"';
  // In a page "</script>" would end a script.
  out = write_plain<'"', '\\', '<'>(
      out, text, [&](char* at, size_t& i) { return write_json_escape(at, next_character(text, i)); });
  *out++ = '"';
  return out;
}

// Beyond ASCII: what reads lines may take them for ends of one.
static bool is_line_end(char32_t c) {
  return c == 0x2028 || c == 0x2029;
}

char* write_line(char* out, std::string_view text) {
  return write_plain(out, text, [&](char* at, size_t& i) {
    const size_t begin = i;
    const char32_t c = next_character(text, i);
    const std::string_view octets = text.substr(begin, i - begin);
    const bool is_text = c == '\t' || (c >= ' ' && (c < 0x7F || c >= 0xA0) && !is_line_end(c) &&
                                       (c != 0xFFFD || octets.size() == 3));
    if (is_text) return written(at, octets);
    if (c == '\n' || c == '\r') {
      *at++ = '\\';
      *at++ = c == '\n' ? 'n' : 'r';
      return at;
    }
    for (const char octet : octets) {
      *at++ = '\\';
      *at++ = 'x';
      at = write_hex(at, {&octet, 1});
    }
    return at;
  });
}

std::string line_text(std::string_view text) {
  std::string out(line_room(text.size()), ' ');
  out.resize(static_cast<size_t>(write_line(out.data(), text) - out.data()));
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

std::string six_decimals(int64_t nanoseconds) {
  char text[seconds_room];
  return {text, static_cast<size_t>(write_seconds(text, (nanoseconds + 500) / 1000 * 1000) - text) - 3};
}

size_t quotable_octets(std::string_view text) {
  for (size_t i = 0; i < text.size(); i += 8) {
    const size_t n = plain_octets<'"'>(eight_octets(text, i));
    if (n < 8) return std::min(i + n, text.size());
  }
  return text.size();
}

std::string_view base_name(std::string_view path) {
  const void* slash = path.empty() ? nullptr : memrchr(path.data(), '/', path.size());
  return slash ? path.substr(static_cast<size_t>(static_cast<const char*>(slash) - path.data()) + 1) : path;
}

}  // namespace lumos
