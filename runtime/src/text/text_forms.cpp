#include "text/text_forms.h"

#include <cstdio>

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

std::string json_text(std::string_view text) {
  std::string out = "\"";
  for (size_t i = 0; i < text.size();) {
    const char32_t c = next_character(text, i);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c == '\n') {
      out += "\\n";
    } else if (c < 32 || c >= 127 || c == '<') {  // in a page "</script>" would end a script
      put_escape(out, c);
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + '"';
}

std::string hex_text(std::string_view octets) {
  static const char digits[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : octets) {
    out += digits[c >> 4];
    out += digits[c & 15];
  }
  return out;
}

}  // namespace lumos
