#include "report/report_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace lumos {

namespace {

bool some_failed = false;

// Whether something else than a file stands there.
bool is_special_place(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

bool is_standard_output(const std::string& path) {
  return path.empty() || path == "-" || path == "/dev/stdout" || path == "/dev/fd/1";
}

ReportFile::ReportFile(const std::string& path) : path_(path) {
  if (is_standard_output(path)) {
    file_ = stdout;
    return;
  }
  if (!is_special_place(path)) beside_ = path + "." + std::to_string(getpid()) + ".part";
  file_ = std::fopen(beside_.empty() ? path.c_str() : beside_.c_str(), "we");
  is_owned_ = true;
  if (file_) std::setvbuf(file_, nullptr, _IOFBF, 1 << 16);
}

ReportFile::~ReportFile() {
  if (!file_ || !is_owned_) return;
  std::fclose(file_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

void ReportFile::fail() {
  if (!is_failed_)
    std::fprintf(stderr, "report '%s' cannot be written: %s\n", path_.c_str(), std::strerror(errno));
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
  } else if (!beside_.empty() && std::rename(beside_.c_str(), path_.c_str()) != 0) {
    fail();
    unlink(beside_.c_str());
  }
}

bool reports_failed() {
  return some_failed;
}

}  // namespace lumos
