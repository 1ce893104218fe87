// One growing piece of generated text. A short one stays in memory; a long one moves to a spill file in the
// current directory, which is removed with the section.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "support/TemporaryFiles.h"

/// A section is handed over by moving; the one that it was taken from holds nothing any more.
class CSection {
 public:
  CSection() { text_.reserve(_reserve_limit); }
  CSection(CSection&& other) noexcept;
  CSection& operator=(CSection&& other) noexcept;
  CSection(const CSection&) = delete;
  CSection& operator=(const CSection&) = delete;
  ~CSection() { close(); }

  /// Throws internal_exception when the section is ended, or its spill file cannot be written.
  void add(std::string_view text);
  /// Closes the spill file; nothing can be added any more. Throws when not everything could be written.
  void end();
  /// Writes the whole text to `stream`. Throws when it cannot be read or written. Ends the section.
  void writeTo(FILE* stream);

  bool ended() const { return ended_; }
  bool spilled() const { return stream_ != nullptr || !file_.path().empty(); }
  unsigned lineCount() const { return lines_; }

 private:
  static constexpr size_t _limit = 10240;
  static constexpr size_t _reserve_limit = 256;

  void spill();
  void write(std::string_view text);
  void close();
  void copySpillFile(FILE* stream) const;

  unsigned lines_ = 0;
  bool ended_ = false;
  std::string text_;
  FILE* stream_ = nullptr;
  TemporaryFile file_;
};
