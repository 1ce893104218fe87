// One growing piece of generated text. A short one stays in memory; a long one moves to a spill file in the
// current directory, which is removed with the section.
#pragma once

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
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
    if (text.size() > room_) return addAnyhow(text);
    copy(text_.get() + size_, text);
    size_ += text.size();
    room_ -= text.size();
  }
  void add(std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts) add(part);
  }
  /// Room for that many characters, all of which the caller fills; null where there is none without further
  /// ado.
  char* claim(size_t size) {
    if (size > room_) return nullptr;
    char* at = text_.get() + size_;
    size_ += size;
    room_ -= size;
    return at;
  }
  /// A new line that begins with so many blanks, of which there are at most 64.
  void addNewline(unsigned blanks) {
    static constexpr std::string_view kLine =
        "\n                                                                ";
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

  /// Most texts are short words: two moves that may overlap.
  static void copy(char* to, std::string_view text) {
    const size_t size = text.size();
    if (size > 32)
      std::memcpy(to, text.data(), size);
    else if (size >= 16)
      copyEnds<16>(to, text);
    else if (size >= 8)
      copyEnds<8>(to, text);
    else if (size >= 4)
      copyEnds<4>(to, text);
    else if (size >= 2)
      copyEnds<2>(to, text);
    else if (size == 1)
      *to = text.front();
  }

 private:
  static constexpr size_t _limit = 10240;
  static constexpr size_t _reserve_limit = 256;

  template <size_t kPiece>
  static void copyEnds(char* to, std::string_view text) {
    char first[kPiece];
    char last[kPiece];
    std::memcpy(first, text.data(), kPiece);
    std::memcpy(last, text.data() + text.size() - kPiece, kPiece);
    std::memcpy(to, first, kPiece);
    std::memcpy(to + text.size() - kPiece, last, kPiece);
  }
  void takeMemory(size_t size);
  void setSize(size_t size);
  void addAnyhow(std::string_view text);
  void spill();
  void openSpillFile();
  void close();
  void copySpillFile(FILE* stream) const;

  /// Of what is in the spill file.
  unsigned lines_ = 0;
  bool ended_ = false;
  /// What is not in the spill file yet, and how much can be added to it without further ado.
  std::unique_ptr<char[]> text_;
  size_t size_ = 0;
  size_t room_ = 0;
  size_t capacity_ = 0;
  FILE* stream_ = nullptr;
  TemporaryFile file_;
};
