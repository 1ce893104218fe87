// One growing piece of generated text. A short one stays in memory; a long one moves to a spill file in the
// current directory, which is removed with the section.
#pragma once

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "FileAPI/CWords.h"
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
    if (text.size() > room_) return addAnyhow(text);
    CopyWord(text_.get() + size_, text);
    size_ += text.size();
    room_ -= text.size();
  }
  void add(CWords parts) {
    for (const std::string_view part : parts) add(part);
  }
  /// In place, where the number of words is known, since nearly all text goes through here.
  template <class Words>
  [[gnu::always_inline]] void add(const CList<Words>& list) {
    const size_t size = list.size();
    if (size > room_ && !makeRoom(size)) return addAnyhow(list.text());
    list.copyTo(text_.get() + size_);
    size_ += size;
    room_ -= size;
  }
  /// A new line, and the blanks that it may begin with.
  static constexpr std::string_view kLine =
      "\n                                                                ";
  static constexpr unsigned kMostBlanks = kLine.size() - 1;
  /// A new line that begins with so many blanks, which are not more than the most.
  void addNewline(size_t blanks) {
    constexpr size_t at_once = 32;
    if (room_ < at_once || blanks >= at_once) return add(kLine.substr(0, 1 + blanks));
    std::memcpy(text_.get() + size_, kLine.data(), at_once);
    size_ += 1 + blanks;
    room_ -= 1 + blanks;
  }
  /// Closes the spill file; nothing can be added any more. Throws when not everything could be written.
  void end();
  /// Writes the whole text to `stream`. Throws when it cannot be read or written. Ends the section.
  void writeTo(FILE* stream);

  bool ended() const { return ended_; }
  bool spilled() const { return stream_ != nullptr || !file_.path().empty(); }
  unsigned lineCount() const;
  /// The whole text, unless the section has spilled.
  std::string_view text() const { return {text_.get(), size_}; }

 private:
  static constexpr size_t _limit = 10240;
  static constexpr size_t _reserve_limit = 256;

  /// Memory for so many characters more; false where they go beyond the limit.
  bool makeRoom(size_t size);
  void takeMemory(size_t size);
  void setSize(size_t size);
  void addAnyhow(std::string_view text);
  void spill();
  void openSpillFile();
  void close();
  /// Hands the text in the spill file over, piece by piece.
  template <class Take>
  void readSpillFile(const Take& take) const;
  void copySpillFile(FILE* stream) const;

  bool ended_ = false;
  /// What is not in the spill file yet, and how much can be added to it without further ado.
  std::unique_ptr<char[]> text_;
  size_t size_ = 0;
  size_t room_ = 0;
  size_t capacity_ = 0;
  FILE* stream_ = nullptr;
  TemporaryFile file_;
};
