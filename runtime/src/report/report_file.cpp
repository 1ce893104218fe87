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

int open_anew(const std::string& path) {
  return open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

// A pipe that nobody reads yet is waited for, but not by a call that no signal ends while they are held.
int open_in_place(const std::string& path) {
  struct stat status;
  const bool is_pipe = stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
  for (int descriptor; is_pipe; usleep(10000)) {
    descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor >= 0) fcntl(descriptor, F_SETFL, O_WRONLY);
    if (descriptor >= 0 || errno != ENXIO) return descriptor;
    errno = EINTR;
    if (asks_for_end()) return -1;
  }
  return open_anew(path);
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
    descriptor_ = STDOUT_FILENO;
    return;
  }
  if (!is_special_place(path)) {
    place_ = place_behind_links(path);
    beside_ = place_ + "." + std::to_string(getpid()) + ".part";
    remove_left_behind(place_);
  }
  descriptor_ = beside_.empty() ? open_in_place(path) : open_anew(beside_);
  is_owned_ = true;
  if (is_open() && !beside_.empty()) flock(descriptor_, LOCK_EX | LOCK_NB);
}

ReportFile::~ReportFile() {
  if (!is_open() || !is_owned_) return;
  close(descriptor_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

void ReportFile::fail() {
  if (!is_failed_)
    std::fprintf(stderr, "report '%s' cannot be written: %s\n", is_owned_ ? path_.c_str() : "standard output",
                 std::strerror(errno));
  is_failed_ = some_failed = true;
}

// A reader may not take it: what asks often enough for the end gets it.
void ReportFile::write_out(size_t size) {
  constexpr int most_signals = 4;
  if (!is_owned_) std::fflush(stdout);
  for (size_t done = 0; done < size && !is_failed_;) {
    const ssize_t n = ::write(descriptor_, rows_.text().data() + done, size - done);
    if (n > 0) done += static_cast<size_t>(n);
    if (n == 0) errno = ENOSPC;
    if (n <= 0 && (errno != EINTR || ++signals_ >= most_signals)) fail();
  }
  written_ += size;
  rows_.remove_begin(is_failed_ ? rows_.size() : size);
}

// Up to the end of a page of the file, which the system takes in half the time; at first all there is.
void ReportFile::write_waiting() {
  constexpr size_t page = 1 << 12;
  write_out(is_begun_ ? rows_.size() - (written_ + rows_.size()) % page : rows_.size());
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

// Where a report stands there already the two change places first: one that is renamed over another is
// written to the disk at once by many systems, which takes longer than all the rest.
void ReportFile::put_in_place() {
  const bool is_exchanged =
      renameat2(AT_FDCWD, beside_.c_str(), AT_FDCWD, place_.c_str(), RENAME_EXCHANGE) == 0;
  if (!is_exchanged && std::rename(beside_.c_str(), place_.c_str()) == 0) return;
  if (!is_exchanged) fail();
  unlink(beside_.c_str());
}

void ReportFile::complete() {
  write_out(rows_.size());
  if (!is_owned_) return;
  const bool is_closed = close(descriptor_) == 0;
  descriptor_ = -1;
  if (!is_closed) fail();
  if (beside_.empty()) return;
  if (is_failed_) {
    unlink(beside_.c_str());
  } else {
    put_in_place();
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
