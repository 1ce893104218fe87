// Where long sections move to, all into the same place: memory in which nothing moves, and a file for what goes
// beyond a few megabytes. It lies in the current directory and is removed with the last section that has text
// in it. A module of usual size makes none.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "FileAPI/CTextBlocks.h"
#include "support/TemporaryFiles.h"

/// Removes a file; a failure is told on standard error and otherwise passed over.
void RemoveGeneratedFile(const std::string& path);

class CSpillFile {
 public:
  /// A piece of text; `held` is where it lies in memory, null where it is in the file.
  struct Extent {
    const char* held;
    size_t offset;
    size_t size;
  };

  /// The one that is in use, or a new one.
  static std::shared_ptr<CSpillFile> shared();
  CSpillFile() = default;
  CSpillFile(const CSpillFile&) = delete;
  CSpillFile& operator=(const CSpillFile&) = delete;
  ~CSpillFile();

  /// Takes a text behind the last one. Throws internal_exception when it cannot be written.
  Extent append(std::string_view text);
  /// Hands a text that was written over, piece by piece. Throws internal_exception when it cannot be read.
  template <class Take>
  void read(Extent extent, const Take& take) const {
    if (extent.held != nullptr) return take(std::string_view(extent.held, extent.size));
    char buffer[kCopyBuffer];
    while (extent.size > 0) {
      const size_t read = readPiece(extent, buffer);
      take(std::string_view(buffer, read));
      extent.offset += read;
      extent.size -= read;
    }
  }

 private:
  static constexpr size_t kCopyBuffer = 0x1000;
  static constexpr size_t kHeld = 0x400000;

  void makeFile();
  /// At least one character.
  size_t readPiece(Extent extent, char* buffer) const;

  CTextBlocks held_;
  size_t room_ = kHeld;
  TemporaryFile file_;
  int descriptor_ = -1;
  size_t size_ = 0;
};
