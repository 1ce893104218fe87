#include "support/rFsearch.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr const char* kSeparators = "/\\";

std::string_view WithoutTrailingSeparators(std::string_view path) {
  const size_t last = path.find_last_not_of(kSeparators);
  return path.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool IsExecutable(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}
}  // namespace

std::string rBaseName(std::string_view path) {
  path = WithoutTrailingSeparators(path);
  const size_t separator = path.find_last_of(kSeparators);
  return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string rDirName(std::string_view path) {
  const bool from_root = !path.empty() && (path[0] == '/' || path[0] == '\\');
  std::string_view whole = WithoutTrailingSeparators(path);
  const size_t separator = whole.find_last_of(kSeparators);
  if (separator != std::string_view::npos) {
    whole = WithoutTrailingSeparators(whole.substr(0, separator));
    if (!whole.empty()) return std::string(whole);
  }
  return from_root ? std::string(path.substr(0, 1)) : ".";
}

std::string searchpath(const std::string& name, const std::string& path) {
  if (name.empty()) return {};
  if (name.find('/') != std::string::npos) return IsExecutable(name) ? name : std::string();
  for (size_t begin = 0; begin <= path.size();) {
    size_t end = path.find(':', begin);
    if (end == std::string::npos) end = path.size();
    const std::string directory = path.substr(begin, end - begin);
    const std::string candidate = (directory.empty() ? "." : directory) + '/' + name;
    if (IsExecutable(candidate)) return candidate;
    begin = end + 1;
  }
  return {};
}
