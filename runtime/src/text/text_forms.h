// Text in the forms that reports and logs have: XML, JSON, hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

namespace lumos {

// Text as content or attribute of XML and HTML; characters that XML does not have become "?".
std::string xml_text(std::string_view text);
// A string of JSON with its quotes, in ASCII; octets that are no UTF-8 become U+FFFD.
std::string json_text(std::string_view text);
std::string hex_text(std::string_view octets);

}  // namespace lumos
