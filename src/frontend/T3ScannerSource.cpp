#include "frontend/T3ScannerSource.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

int T3Scanner_BeginSourceFile(const char* path) {
  return open(path, O_RDONLY | O_CLOEXEC);
}

size_t T3Scanner_GetLine(int handle, char* buffer, size_t size) {
  ssize_t count;
  do {
    count = read(handle, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count < 0 ? 0 : static_cast<size_t>(count);
}

void T3Scanner_CloseSource(int handle) {
  close(handle);
}
