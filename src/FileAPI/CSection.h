// One growing piece of generated text. A short one stays in memory; a long one moves to a spill file in the
// current directory, which is removed with the section.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

#include "support/TemporaryFiles.h"

/// Removes a file; a failure is told on standard error and otherwise passed over.
void RemoveGeneratedFile(const std::string& path);

/// A section is handed over by moving; the one that it was taken from holds nothing any more.
class CSection {
 public:
  CSection();
  CSection(CSection&& other) noexcept;
  CSection& operator=(CSection&& other) noexcept;
  CSection(const CSection&) = delete;
  CSection& operator=(const CSection&) = delete;
  ~CSection();

  /// Throws internal_exception when the section is ended, or its spill file cannot be written.
  void add(std::string_view text) {
    if (!ended_ && text_.size() + text.size() < _limit)
      text_.append(text);
    else
      addAnyhow(text);
  }
  void add(std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts) add(part);
  }
  /// Closes the spill file; nothing can be added any more. Throws when not everything could be written.
  void end();
  /// Writes the whole text to `stream`. Throws when it cannot be read or written. Ends the section.
  void writeTo(FILE* stream);

  bool ended() const { return ended_; }
  bool spilled() const { return stream_ != nullptr || !file_.path().empty(); }
  unsigned lineCount() const;
  /// The whole text, unless the section has spilled.
  const std::string& text() const { return text_; }

 private:
  static constexpr size_t _limit = 10240;
  static constexpr size_t _reserve_limit = 256;

  void addAnyhow(std::string_view text);
  void spill();
  void openSpillFile();
  void close();
  void copySpillFile(FILE* stream) const;

  /// Of what is in the spill file.
  unsigned lines_ = 0;
  bool ended_ = false;
  /// What is not in the spill file yet.
  std::string text_;
  FILE* stream_ = nullptr;
  TemporaryFile file_;
};
