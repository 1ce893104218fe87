// Text in the forms that reports and logs have: XML, JSON, hexadecimal digits.
#pragma once

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace lumos {

// The end of what was written to the place.
inline char* written(char* place, std::string_view text) {
  if (!text.empty()) std::memcpy(place, text.data(), text.size());
  return place + text.size();
}
// Text as content or attribute of XML and HTML; characters that XML does not have become "?".
std::string xml_text(std::string_view text);
// At most so many octets of a text, which end with a character of UTF-8.
std::string_view beginning(std::string_view text, size_t most);
// The beginning of a text that is too long for what shows it, with the number of octets that are left out.
std::string shortened(std::string_view text, size_t most);
// A string of JSON with its quotes, in ASCII; octets that are no UTF-8 become U+FFFD.
std::string json_text(std::string_view text);
// The same written to a place that has json_room for it; the end of what was written.
char* write_json(char* out, std::string_view text);
inline size_t json_room(size_t octets) {
  return 6 * octets + 10;
}
// Text that stays in its line and steers no terminal, at a place that has line_room for it: control
// characters, but for tabs, become "\n", "\r" or the "\xNN" of their octets, and so do other ends of lines
// and octets that are no UTF-8.
char* write_line(char* out, std::string_view text);
inline size_t line_room(size_t octets) {
  return 4 * octets + 8;
}
std::string line_text(std::string_view text);
std::string hex_text(std::string_view octets);
char* write_hex(char* out, std::string_view octets);
// These take at most number_room and seconds_room.
inline char* write_number(char* out, uint64_t number) {
  if (number >= 10) return std::to_chars(out, out + 20, number).ptr;
  *out = static_cast<char>('0' + number);
  return out + 1;
}
// Nanoseconds as seconds with nine decimals.
char* write_seconds(char* out, int64_t nanoseconds);
// The same with six, rounded.
std::string six_decimals(int64_t nanoseconds);
constexpr size_t number_room = 20, seconds_room = 31;
void append_number(std::string& out, uint64_t number);
// The octets of the text from there on, at most eight, as they lie in memory; zeros behind its end.
inline uint64_t eight_octets(std::string_view text, size_t begin) {
  const char* from = text.data() + begin;
  const size_t left = text.size() - begin;
  uint64_t octets = 0;
  if (left >= 8) {
    std::memcpy(&octets, from, 8);
  } else if (std::endian::native == std::endian::big) {
    std::memcpy(&octets, from, left);
  } else if (left >= 4) {
    uint32_t first, last;  // which have octets in common
    std::memcpy(&first, from, 4);
    std::memcpy(&last, from + left - 4, 4);
    octets = first | uint64_t{last} << 8 * (left - 4);
  } else if (left) {
    for (const size_t i : {size_t{0}, left / 2, left - 1})
      octets |= uint64_t{static_cast<unsigned char>(from[i])} << 8 * i;
  }
  return octets;
}
// How many octets there are before the first that cannot stand between the quotes of a charstring.
size_t quotable_octets(std::string_view text);
// A path without its folders.
std::string_view base_name(std::string_view path);

}  // namespace lumos
