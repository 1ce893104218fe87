#include "FileAPI/CTextBlocks.h"

#include <algorithm>

unsigned CountLines(std::string_view text) {
  return static_cast<unsigned>(std::count(text.begin(), text.end(), '\n'));
}

namespace {
// Most positions of a small module hold little.
constexpr size_t kFirstBlock = 0x1000;
constexpr size_t kBlock = 0x10000;
}  // namespace

void CTextBlocks::takeBlock(size_t size) {
  if (!blocks_.empty()) blocks_.back().end = at_;
  const size_t capacity = std::max(blocks_.empty() ? kFirstBlock : kBlock, size);
  blocks_.push_back({std::unique_ptr<char[]>(new char[capacity]), nullptr});
  at_ = blocks_.back().memory.get();
  end_ = at_ + capacity;
}

unsigned CTextBlocks::lineCount() const {
  unsigned lines = 0;
  forEachBlock([&lines](std::string_view block) { lines += CountLines(block); });
  return lines;
}
