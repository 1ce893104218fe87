// Text in the forms that reports and logs have: XML, JSON, hexadecimal digits.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace lumos {

// Text as content or attribute of XML and HTML; characters that XML does not have become "?".
std::string xml_text(std::string_view text);
// The beginning of a text that is too long for what shows it, with the number of octets that are left out.
std::string shortened(std::string_view text, size_t most);
// A string of JSON with its quotes, in ASCII; octets that are no UTF-8 become U+FFFD.
std::string json_text(std::string_view text);
// The same written to a place that has json_room for it; the end of what was written.
char* write_json(char* out, std::string_view text);
inline size_t json_room(size_t octets) {
  return 6 * octets + 10;
}
std::string hex_text(std::string_view octets);
char* write_hex(char* out, std::string_view octets);
// These take at most number_room and seconds_room.
char* write_number(char* out, uint64_t number);
// Nanoseconds as seconds with nine decimals.
char* write_seconds(char* out, int64_t nanoseconds);
constexpr size_t number_room = 20, seconds_room = 31;
void append_number(std::string& out, uint64_t number);
// The octets of the text from there on, at most eight, as they lie in memory; zeros behind its end.
inline uint64_t eight_octets(std::string_view text, size_t begin) {
  uint64_t octets = 0;
  const size_t left = text.size() - begin;
  left >= 8 ? std::memcpy(&octets, text.data() + begin, 8) : std::memcpy(&octets, text.data() + begin, left);
  return octets;
}
// A path without its folders.
std::string_view base_name(std::string_view path);

}  // namespace lumos
