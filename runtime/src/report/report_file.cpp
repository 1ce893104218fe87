#include "report/report_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace lumos {

namespace {

bool some_failed = false;

bool asks_for_end() {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, SIGINT) || sigismember(&pending, SIGTERM) || sigismember(&pending, SIGHUP);
}

// A pipe that nobody reads yet is waited for, but not by a call that no signal ends while they are held.
FILE* open_in_place(const std::string& path) {
  struct stat status;
  const bool is_pipe = stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
  for (int fd; is_pipe; usleep(10000)) {
    fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd >= 0) fcntl(fd, F_SETFL, O_WRONLY);
    if (fd >= 0) return fdopen(fd, "w");
    if (errno != ENXIO) return nullptr;
    errno = EINTR;
    if (asks_for_end()) return nullptr;
  }
  return std::fopen(path.c_str(), "we");
}

// What a run writes to is locked by it, so what nobody has locked was left by one that was killed.
bool is_left_behind(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (descriptor < 0) return false;
  const bool is_free = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  close(descriptor);
  return is_free;
}

// "report.xml.1234.part"
bool is_part_of(const std::string& name, const std::string& report) {
  const size_t begin = report.size() + 1, end = name.size() - std::min<size_t>(name.size(), 5);
  return begin < end && !name.compare(0, begin, report + ".") && !name.compare(end, 5, ".part") &&
         std::all_of(name.begin() + static_cast<long>(begin), name.begin() + static_cast<long>(end),
                     [](char c) { return c >= '0' && c <= '9'; });
}

void remove_left_behind(const std::string& path) {
  std::error_code error;
  const std::filesystem::path report(path);
  const auto folder = report.has_parent_path() ? report.parent_path() : std::filesystem::path(".");
  std::vector<std::string> left;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    const std::string name = at->path().filename();
    if (is_part_of(name, report.filename()) && is_left_behind(at->path())) left.push_back(at->path());
  }
  for (const std::string& part : left) unlink(part.c_str());
}

}  // namespace

bool is_standard_output(const std::string& path) {
  return path.empty() || path == "-" || path == "/dev/stdout" || path == "/dev/fd/1" || path == "/proc/self/fd/1";
}

bool is_special_place(const std::string& path) {
  struct stat status;
  const bool is_of_system = path.starts_with("/dev/") || path.starts_with("/proc/");
  return stat(path.c_str(), &status) == 0 && (is_of_system || !S_ISREG(status.st_mode));
}

std::string place_behind_links(const std::string& path) {
  std::error_code error;
  const auto place = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  return error ? path : place.string();
}

ReportFile::ReportFile(const std::string& path) : path_(path) {
  if (is_standard_output(path)) {
    file_ = stdout;
    return;
  }
  if (!is_special_place(path)) {
    place_ = place_behind_links(path);
    beside_ = place_ + "." + std::to_string(getpid()) + ".part";
    remove_left_behind(place_);
  }
  file_ = beside_.empty() ? open_in_place(path) : std::fopen(beside_.c_str(), "we");
  is_owned_ = true;
  if (file_ && !beside_.empty()) flock(fileno(file_), LOCK_EX | LOCK_NB);
  if (file_) std::setvbuf(file_, nullptr, _IOFBF, 1 << 16);
}

ReportFile::~ReportFile() {
  if (!file_ || !is_owned_) return;
  std::fclose(file_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

void ReportFile::fail() {
  if (!is_failed_)
    std::fprintf(stderr, "report '%s' cannot be written: %s\n", is_owned_ ? path_.c_str() : "standard output",
                 std::strerror(errno));
  is_failed_ = some_failed = true;
}

void ReportFile::write(std::string_view text) {
  if (is_failed_) return;
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size() || (!is_begun_ && std::fflush(file_)))
    fail();
  is_begun_ = true;
}

void ReportFile::format(const char* format, ...) {
  char text[1024];
  va_list list;
  va_start(list, format);
  std::vsnprintf(text, sizeof text, format, list);
  va_end(list);
  write(text);
}

void ReportFile::complete() {
  errno = 0;
  FILE* file = file_;
  if (!is_owned_) {
    if (std::fflush(file)) fail();
    return;
  }
  file_ = nullptr;
  const bool is_closed = std::fclose(file) == 0;
  if (!is_closed || is_failed_) {
    fail();
    if (!beside_.empty()) unlink(beside_.c_str());
  } else if (!beside_.empty() && std::rename(beside_.c_str(), place_.c_str()) != 0) {
    fail();
    unlink(beside_.c_str());
  }
}

StoredText::~StoredText() {
  if (file_) std::fclose(file_);
}

void StoredText::put(std::string_view text) {
  constexpr size_t most_in_memory = 1 << 20;
  text_ += text;
  if (text_.size() < most_in_memory) return;
  if (!file_) file_ = std::tmpfile();
  if (file_) text_.erase(0, std::fwrite(text_.data(), 1, text_.size(), file_));
}

void StoredText::write_to(ReportFile& report) {
  char block[1 << 12];
  if (file_) std::rewind(file_);
  for (size_t n; file_ && (n = std::fread(block, 1, sizeof block, file_)) > 0;) report.write({block, n});
  report.write(text_);
}

bool reports_failed() {
  return some_failed;
}

}  // namespace lumos
