// Text in the forms that reports and logs have: XML, JSON, hexadecimal digits.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace lumos {

// Text as content or attribute of XML and HTML; characters that XML does not have become "?".
std::string xml_text(std::string_view text);
// The beginning of a text that is too long for what shows it, with the number of octets that are left out.
std::string shortened(std::string_view text, size_t most);
// A string of JSON with its quotes, in ASCII; octets that are no UTF-8 become U+FFFD.
std::string json_text(std::string_view text);
void append_json(std::string& out, std::string_view text);
std::string hex_text(std::string_view octets);
void append_hex(std::string& out, std::string_view octets);
void append_number(std::string& out, uint64_t number);
// Nanoseconds as seconds with nine decimals.
void append_seconds(std::string& out, int64_t nanoseconds);

}  // namespace lumos
