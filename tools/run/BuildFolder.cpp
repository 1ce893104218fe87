#include "run/BuildFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace run {

namespace {

constexpr const char* kLock = "orvane-run.lock";
constexpr const char* kRecord = "orvane-run.record";
/// Stands between the setup and the times of a record.
constexpr const char* kTimes = "times\n";

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  return whole.str();
}

/// True when a file changed within the second of its last change: stamps of the compiler do not tell that.
bool ChangedWithinSecond(const std::string& old_times, const std::string& new_times) {
  std::istringstream old_lines(old_times), new_lines(new_times);
  for (std::string before, now; std::getline(old_lines, before) && std::getline(new_lines, now);)
    if (before != now && before.substr(0, before.find(' ')) == now.substr(0, now.find(' '))) return true;
  return false;
}

}  // namespace

BuildFolder::BuildFolder(const std::filesystem::path& path) : path_(path), lock_(-1) {
  std::error_code error, not_made;
  std::filesystem::create_directories(path_, not_made);
  const std::filesystem::path lock = path_ / kLock;
  if (!std::filesystem::exists(lock, error) && !std::filesystem::is_empty(path_, error) && !error)
    throw path_.string() + " holds something else; name an empty folder with -d";
  lock_ = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (lock_ < 0 || flock(lock_, LOCK_EX) != 0)
    throw "cannot build in " + path_.string() + ": " + (not_made ? not_made.message() : std::strerror(errno));
}

BuildFolder::~BuildFolder() {
  close(lock_);
}

void BuildFolder::Prepare(const std::string& setup, const std::string& times) {
  const std::string old = ReadFile(path_ / kRecord);
  record_ = setup + kTimes + times;
  std::filesystem::remove(path_ / kRecord);
  if (!old.starts_with(setup + kTimes)) return Clear("");
  if (ChangedWithinSecond(old.substr(setup.size() + std::strlen(kTimes)), times)) Clear(".t3a");
  DropStampsWithoutCode();
}

// Those of ASN.1's own files, which have two extensions, stand for no code.
void BuildFolder::DropStampsWithoutCode() const {
  std::vector<std::filesystem::path> stamps;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    if (entry.path().extension() == ".t3a" && !entry.path().stem().has_extension())
      stamps.push_back(entry.path());
  for (const std::filesystem::path& stamp : stamps)
    for (const char* code : {".c", ".h"})
      if (!std::filesystem::exists(std::filesystem::path(stamp).replace_extension(code)))
        std::filesystem::remove(stamp);
}

void BuildFolder::Clear(const std::string& extension) const {
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    const std::filesystem::path& file = entry.path();
    if (file.filename() != kLock && (extension.empty() || file.extension() == extension))
      std::filesystem::remove_all(file);
  }
}

void BuildFolder::Settle() const {
  std::ofstream(path_ / kRecord, std::ios::binary) << record_;
}

}  // namespace run
