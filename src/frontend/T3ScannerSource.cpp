#include "frontend/T3ScannerSource.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// A file may say that it is larger than it is; no more than this is made room for before it is read.
constexpr off_t kBelievedSize = off_t{1} << 28;
}  // namespace

int T3Scanner_BeginSourceFile(const char* path) {
  return open(path, O_RDONLY | O_CLOEXEC);
}

size_t T3Scanner_SourceSize(int handle) {
  struct stat status;
  if (fstat(handle, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kBelievedSize) return 0;
  return static_cast<size_t>(status.st_size);
}

ssize_t T3Scanner_GetLine(int handle, char* buffer, size_t size) {
  ssize_t count;
  do {
    count = read(handle, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

void T3Scanner_CloseSource(int handle) {
  close(handle);
}
