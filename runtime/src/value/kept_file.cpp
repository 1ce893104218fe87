#include "value/kept_file.h"

#include <fcntl.h>

#include <cerrno>

namespace lumos {

KeptFile::KeptFile(int descriptor) : descriptor_(descriptor) {
  fstat(descriptor, &status_);
}

KeptFile::KeptFile(int descriptor, long owner) : KeptFile(descriptor) {
  path_ = "/proc/" + std::to_string(owner) + "/fd/" + std::to_string(descriptor);
}

bool KeptFile::is_there() const {
  struct stat now;
  if (fstat(descriptor_, &now) != 0) return false;
  if (now.st_dev == status_.st_dev && now.st_ino == status_.st_ino) return true;
  errno = EBADF;
  return false;
}

bool KeptFile::find() {
  if (is_there()) return true;
  const int error = errno;
  if (!path_.empty()) descriptor_ = open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  errno = error;
  return !path_.empty() && is_there();
}

}  // namespace lumos
