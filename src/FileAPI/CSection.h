// One growing piece of generated text. A short one stays in memory; a long one moves to the spill file.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "FileAPI/CSpillFile.h"
#include "FileAPI/CWords.h"

/// A section is handed over by moving; the one that it was taken from holds nothing any more.
class CSection {
 public:
  CSection();
  CSection(CSection&& other) noexcept;
  CSection& operator=(CSection&& other) noexcept;
  CSection(const CSection&) = delete;
  CSection& operator=(const CSection&) = delete;
  ~CSection();

  /// Throws internal_exception when the section is ended, or its spill file cannot be written. In place,
  /// since nearly all text goes through here.
  template <class... Pieces>
  [[gnu::always_inline]] void add(const Pieces&... pieces) {
    const size_t size = SizeOfPieces(pieces...);
    if (size > room_) [[unlikely]] {
      if (ended_) failEnded(TextOf(pieces...));
      makeRoom(size);
    }
    CopyPieces(text_.get() + size_, pieces...);
    size_ += size;
    room_ -= size;
  }
  void add(CWords words) { add(CList(words, "")); }

  /// Nothing can be added any more. Throws when not everything could be written.
  void end();
  bool ended() const { return ended_; }
  bool spilled() const { return file_ != nullptr; }
  unsigned lineCount() const;
  /// The whole text, unless the section has spilled.
  std::string_view text() const { return {text_.get(), size_}; }
  /// Hands the whole text of an ended section over, piece by piece. Throws when it cannot be read.
  template <class Take>
  void forEachPiece(const Take& take) const {
    for (const CSpillFile::Extent& extent : spilled_) file_->read(extent, take);
    take(text());
  }

 private:
  static constexpr size_t _limit = 10240;
  static constexpr size_t _reserve_limit = 256;

  [[noreturn]] static void failEnded(const std::string& text);
  /// Room for so many characters more, in memory; what is there is spilled where both go beyond the limit.
  void makeRoom(size_t size);
  void takeMemory(size_t size);
  void setSize(size_t size);
  void spill();

  /// What is not in the spill file yet, and how much can be added to it without further ado.
  std::unique_ptr<char[]> text_;
  size_t size_ = 0;
  size_t room_ = 0;
  size_t capacity_ = 0;
  bool ended_ = false;
  std::shared_ptr<CSpillFile> file_;
  std::vector<CSpillFile::Extent> spilled_;
};
