// The file that long sections move to, all into the same one: a module has several of them, and what costs is
// to make a file and to remove it. It lies in the current directory and is removed with the last section that
// has text in it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "support/TemporaryFiles.h"

/// Removes a file; a failure is told on standard error and otherwise passed over.
void RemoveGeneratedFile(const std::string& path);

class CSpillFile {
 public:
  /// A piece of text in the file.
  struct Extent {
    size_t offset;
    size_t size;
  };

  /// The file that is in use, or a new one. Throws internal_exception when there can be none.
  static std::shared_ptr<CSpillFile> shared();
  CSpillFile();
  CSpillFile(const CSpillFile&) = delete;
  CSpillFile& operator=(const CSpillFile&) = delete;
  ~CSpillFile();

  /// Writes a text behind the last one. Throws internal_exception when that fails.
  Extent append(std::string_view text);
  /// Hands a text that was written over, piece by piece. Throws internal_exception when it cannot be read.
  template <class Take>
  void read(Extent extent, const Take& take) const {
    char buffer[kCopyBuffer];
    while (extent.size > 0) {
      const size_t read = readPiece(extent, buffer);
      take(std::string_view(buffer, read));
      extent = {extent.offset + read, extent.size - read};
    }
  }

 private:
  static constexpr size_t kCopyBuffer = 0x1000;

  /// At least one character.
  size_t readPiece(Extent extent, char* buffer) const;

  TemporaryFile file_;
  int descriptor_ = -1;
  size_t size_ = 0;
};
