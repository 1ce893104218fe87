#include "support/TemporaryFiles.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>

namespace {
// The remembered names, in a list that a signal handler can walk at any moment: entries are never taken
// out, only emptied and used again.
struct Entry {
  std::atomic<char*> path{nullptr};
  Entry* next = nullptr;
};
std::atomic<Entry*> entries{nullptr};

void RemoveAll() {
  for (Entry* entry = entries.load(); entry != nullptr; entry = entry->next)
    if (const char* path = entry->path.load()) unlink(path);
}

void RemoveAtExitOnce() {
  static const bool registered = std::atexit(RemoveAll) == 0;
  static_cast<void>(registered);
}

void OnSignal(int signal_number) {
  RemoveAll();
  signal(signal_number, SIG_DFL);
  raise(signal_number);
}

std::string TryDirectory(const std::string& directory, const std::string& prefix) {
  std::string name = directory + '/' + prefix + "XXXXXX";
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) return {};
  close(descriptor);
  return name;
}

// The permissions that a newly made file gets.
mode_t FileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}
}  // namespace

std::string MakeTemporaryFile(const std::string& directory, const std::string& prefix) {
  std::string name = TryDirectory(directory, prefix);
  const char* elsewhere = std::getenv("TMPDIR");
  if (name.empty() && elsewhere != nullptr) name = TryDirectory(elsewhere, prefix);
  if (name.empty()) name = TryDirectory("/tmp", prefix);
  return name;
}

void RememberTemporaryFile(const std::string& path) {
  RemoveAtExitOnce();
  char* copy = strdup(path.c_str());
  for (Entry* entry = entries.load(); entry != nullptr; entry = entry->next) {
    char* free_place = nullptr;
    if (entry->path.compare_exchange_strong(free_place, copy)) return;
  }
  auto* entry = new Entry;
  entry->path = copy;
  entry->next = entries.load();
  entries = entry;
}

// The name's memory is kept until the place is empty, so that a signal never meets freed memory.
void ForgetTemporaryFile(const std::string& path) {
  for (Entry* entry = entries.load(); entry != nullptr; entry = entry->next) {
    char* name = entry->path.load();
    if (name == nullptr || path != name) continue;
    entry->path = nullptr;
    std::free(name);
    return;
  }
}

void CatchSignals() {
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigfillset(&action.sa_mask);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction before {};
    // A signal that whoever started us has turned off stays off.
    if (sigaction(number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      sigaction(number, &action, nullptr);
  }
  signal(SIGXFSZ, SIG_IGN);
}

TemporaryFile::TemporaryFile(const std::string& directory, const std::string& prefix) {
  Adopt(MakeTemporaryFile(directory, prefix));
}

void TemporaryFile::Adopt(const std::string& path) {
  Remove();
  if (path.empty()) return;
  RememberTemporaryFile(path);
  path_ = path;
}

void TemporaryFile::Take(TemporaryFile& other) noexcept {
  Remove();
  path_.swap(other.path_);
}

void TemporaryFile::Remove() {
  if (path_.empty()) return;
  unlink(path_.c_str());
  ForgetTemporaryFile(path_);
  path_.clear();
}

bool OutputFile::Open(const std::string& path) {
  Discard();
  path_ = path;
  place_ = path;
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    stream_ = std::fopen(path.c_str(), "w");
    return stream_ != nullptr;
  }
  if (exists) {
    // A protected file stays protected, and a link keeps pointing where it did.
    if (access(path.c_str(), W_OK) != 0) return false;
    char real[PATH_MAX];
    if (realpath(path.c_str(), real) != nullptr) place_ = real;
  }
  std::string beside = place_ + ".XXXXXX";
  const int descriptor = mkstemp(beside.data());
  if (descriptor < 0) return false;
  beside_.Adopt(beside);
  fchmod(descriptor, exists ? status.st_mode & 07777 : FileMode());
  stream_ = fdopen(descriptor, "w");
  if (stream_ == nullptr) {
    close(descriptor);
    beside_.Remove();
  }
  return stream_ != nullptr;
}

bool OutputFile::Commit() {
  if (stream_ == nullptr) return false;
  const bool written = std::ferror(stream_) == 0;
  const bool closed = std::fclose(stream_) == 0;
  stream_ = nullptr;
  bool done = written && closed;
  if (!beside_.path().empty()) {
    done = done && std::rename(beside_.path().c_str(), place_.c_str()) == 0;
    beside_.Remove();
  }
  return done;
}

void OutputFile::Discard() {
  if (stream_ != nullptr) std::fclose(stream_);
  stream_ = nullptr;
  beside_.Remove();
}

void OutputFile::RemoveOld() {
  if (!beside_.path().empty()) unlink(place_.c_str());
}

namespace {
/// The text of a file behind its first comment; nothing for a file that cannot be read.
std::optional<std::string> TextBehindComment(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  if (!in.is_open() || whole.bad()) return std::nullopt;
  const std::string text = whole.str();
  const size_t end = text.starts_with("/*") ? text.find("*/") : std::string::npos;
  return end == std::string::npos ? text : text.substr(end);
}
}  // namespace

bool OutputFile::IsLikeOld(bool (*is_same)(std::string_view, std::string_view)) {
  if (beside_.path().empty() || std::fflush(stream_) != 0) return false;
  const auto old = TextBehindComment(place_);
  const auto own = TextBehindComment(beside_.path());
  if (!old.has_value() || !own.has_value()) return false;
  return *old == *own || (is_same != nullptr && is_same(*old, *own));
}
