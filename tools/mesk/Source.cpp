#include "mesk/Source.h"

#include <cstdio>

namespace mesk {

namespace {
constexpr int kErrorLimit = 100;
constexpr size_t kLargestFile = 64u << 20;
}  // namespace

namespace {
void appendUtf8(std::string& text, unsigned code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  if (code >= 0x800) text += static_cast<char>(0xE0 | (code >> 12));
  text += static_cast<char>(code >= 0x800 ? 0x80 | ((code >> 6) & 0x3F) : 0xC0 | (code >> 6));
  text += static_cast<char>(0x80 | (code & 0x3F));
}

/// Text in UTF-8 without a mark, from what begins with a byte-order mark or is plainly of two octets each.
void settleEncoding(std::string& text) {
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
    text.erase(0, 3);
    return;
  }
  const auto octet = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  if (text.size() < 2) return;
  const bool big = (octet(0) == 0xFE && octet(1) == 0xFF) || (octet(0) == 0 && octet(1) != 0);
  const bool little = (octet(0) == 0xFF && octet(1) == 0xFE) || (octet(0) != 0 && octet(1) == 0);
  if (!big && !little) return;
  std::string settled;
  for (size_t i = octet(0) >= 0xFE ? 2 : 0; i + 1 < text.size(); i += 2)
    appendUtf8(settled, big ? octet(i) << 8U | octet(i + 1) : octet(i + 1) << 8U | octet(i));
  text = std::move(settled);
}
}  // namespace

bool readFile(const std::string& path, std::string& text) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  text.clear();
  char buffer[1 << 16];
  size_t read;
  while ((read = std::fread(buffer, 1, sizeof buffer, file)) > 0 && text.size() <= kLargestFile) {
    text.append(buffer, read);
  }
  const bool good = !std::ferror(file) && text.size() <= kLargestFile;
  std::fclose(file);
  return good;
}

bool readSource(const std::string& path, std::string& text) {
  if (!readFile(path, text)) return false;
  settleEncoding(text);
  while (!text.empty() && text.back() == '\x1a') text.pop_back();  // where old systems end a text
  return true;
}

void Reporter::write(const std::string& line) {
  if (!prints_) {
    ++errors_;
    return;
  }
  if (!written_.insert(line).second) return;
  ++errors_;
  std::printf("%s\n", line.c_str());
  if (errors_ < kErrorLimit) return;
  std::printf("Error: more than %d errors, giving up\n", kErrorLimit - 1);
  throw TooManyErrors();
}

void Reporter::error(const Place& place, const std::string& text) {
  if (!place.file) return error(text);
  write(place.file->path + "(" + std::to_string(place.line) + "," + std::to_string(place.column) +
        "): Error: " + text);
}

void Reporter::error(const std::string& text) {
  write("Error: " + text);
}

}  // namespace mesk
