#include "text/text_forms.h"

#include <array>
#include <charconv>
#include <cstdio>
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

void put_escape(std::string& out, char32_t c) {
  char text[16];
  if (c >= 0x10000) {
    put_escape(out, 0xD7C0 + (c >> 10));
    c = 0xDC00 + (c & 0x3FF);
  }
  std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(c));
  out += text;
}

// Octets that stand for themselves in a string of JSON. "<" does not: in a page "</script>" would end a
// script.
constexpr auto plain = [] {
  std::array<bool, 256> table{};
  for (size_t c = 32; c < 127; ++c) table[c] = c != '"' && c != '\\' && c != '<';
  return table;
}();

// Whether eight octets are all plain, a bit of each told at once.
bool all_plain(const char* text) {
  constexpr uint64_t each = 0x0101010101010101, high = 0x80 * each;
  uint64_t octets, found;
  std::memcpy(&octets, text, sizeof octets);
  found = octets | (octets - 32 * each);
  for (const uint64_t c : {0x7FU, unsigned{'"'}, unsigned{'\\'}, unsigned{'<'}})
    found |= (octets ^ c * each) - each;
  return !(found & high);
}

void put_json_escape(std::string& out, char32_t c) {
  if (c == '"' || c == '\\') {
    out += {'\\', static_cast<char>(c)};
  } else if (c == '\n') {
    out += "\\n";
  } else {
    put_escape(out, c);
  }
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

void append_json(std::string& out, std::string_view text) {
  out += '"';
  for (size_t i = 0; i < text.size();) {
    const size_t begin = i;  // what is plain goes in one piece
    while (i + 8 <= text.size() && all_plain(text.data() + i)) i += 8;
    while (i < text.size() && plain[static_cast<unsigned char>(text[i])]) ++i;
    out.append(text.data() + begin, i - begin);
    if (i < text.size()) put_json_escape(out, next_character(text, i));
  }
  out += '"';
}

std::string json_text(std::string_view text) {
  std::string out;
  append_json(out, text);
  return out;
}

void append_hex(std::string& out, std::string_view octets) {
  static const char digits[] = "0123456789ABCDEF";
  for (unsigned char c : octets) out += {digits[c >> 4], digits[c & 15]};
}

std::string hex_text(std::string_view octets) {
  std::string out;
  append_hex(out, octets);
  return out;
}

void append_number(std::string& out, uint64_t number) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void append_seconds(std::string& out, int64_t nanoseconds) {
  if (nanoseconds < 0) out += '-';
  uint64_t rest = nanoseconds < 0 ? -static_cast<uint64_t>(nanoseconds) : static_cast<uint64_t>(nanoseconds);
  append_number(out, rest / 1000000000);
  char decimals[10] = ".";
  rest %= 1000000000;
  for (int i = 9; i > 0; --i, rest /= 10) decimals[i] = static_cast<char>('0' + rest % 10);
  out.append(decimals, sizeof decimals);
}

}  // namespace lumos
