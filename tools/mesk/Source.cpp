#include "mesk/Source.h"

#include <cstdio>

namespace mesk {

namespace {
constexpr int kErrorLimit = 100;
constexpr size_t kLargestFile = 64u << 20;
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
