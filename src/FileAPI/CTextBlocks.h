// Text that waits in memory for the end of a file. It only grows, in blocks that never move, and each piece
// is copied once to where it stays.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "FileAPI/CWords.h"

/// How many lines end in a text.
unsigned CountLines(std::string_view text);

class CTextBlocks {
 public:
  template <class... Pieces>
  [[gnu::always_inline]] void add(const Pieces&... pieces) {
    CopyPieces(take(SizeOfPieces(pieces...)), pieces...);
  }
  /// Room for a piece of so many characters, which the caller fills.
  char* take(size_t size) {
    if (size > static_cast<size_t>(end_ - at_)) takeBlock(size);
    char* piece = at_;
    at_ += size;
    return piece;
  }

  bool empty() const { return blocks_.empty(); }
  unsigned lineCount() const;
  /// Hands the text over, piece by piece.
  template <class Take>
  void forEachBlock(const Take& take) const {
    for (const Block& block : blocks_)
      take(std::string_view(block.memory.get(), static_cast<size_t>(EndOf(block) - block.memory.get())));
  }

 private:
  struct Block {
    std::unique_ptr<char[]> memory;
    /// Behind the last piece, once another block has begun.
    char* end;
  };

  void takeBlock(size_t size);
  const char* EndOf(const Block& block) const { return &block == &blocks_.back() ? at_ : block.end; }

  std::vector<Block> blocks_;
  char* at_ = nullptr;
  char* end_ = nullptr;
};
