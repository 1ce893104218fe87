#include "run/Archives.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "run/FileStates.h"

namespace run {

namespace {

constexpr size_t kHeader = 60;
constexpr size_t kSizeInHeader = 48;
constexpr size_t kSizeLength = 10;

size_t BigEndian(const std::string& octets) {
  size_t number = 0;
  for (const char c : octets) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

}  // namespace

// The index is the first member: the number of names, as many places in the file, and the names.
std::vector<std::string> NamesInArchive(const std::filesystem::path& file) {
  const std::string text = ReadFile(file);
  const std::string magic = text.starts_with("!<thin>\n") ? "!<thin>\n" : "!<arch>\n";
  const bool is_wide = text.starts_with(magic + "/SYM64/ ");
  if (!is_wide && !text.starts_with(magic + "/ ")) return {};
  const size_t width = is_wide ? 8 : 4;
  const std::string size = text.substr(magic.size() + kSizeInHeader, kSizeLength);
  const std::string index =
      text.substr(std::min(magic.size() + kHeader, text.size()), std::strtoul(size.c_str(), nullptr, 10));
  const size_t count = BigEndian(index.substr(0, width));
  std::vector<std::string> names;
  if (count > index.size() / width) return names;
  std::istringstream words(index.substr(std::min((count + 1) * width, index.size())));
  for (std::string name; names.size() < count && std::getline(words, name, '\0');) names.push_back(name);
  return names;
}

}  // namespace run
