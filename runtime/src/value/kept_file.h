// A file that is written by its descriptor, which code of the user may have closed, and opened something else
// under its number.
#pragma once

#include <sys/stat.h>

#include <string>

namespace lumos {

class KeptFile {
 public:
  KeptFile() = default;
  // Does not own the descriptor; -1 for none.
  explicit KeptFile(int descriptor);
  // What another process, which made it and lives on, has under its number is found again there.
  KeptFile(int descriptor, long owner);
  int descriptor() const { return descriptor_; }
  bool is_regular() const { return S_ISREG(status_.st_mode); }
  bool is_socket() const { return S_ISSOCK(status_.st_mode); }
  // False with an error number if it is another by now, or none.
  bool is_there() const;
  // The same, behind an attempt to find it again.
  bool find();

 private:
  int descriptor_ = -1;
  struct stat status_ = {};
  std::string path_;
};

}  // namespace lumos
