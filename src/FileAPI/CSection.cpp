#include "FileAPI/CSection.h"

#include <algorithm>
#include <array>
#include <utility>

#include "FileAPI/CTextBlocks.h"
#include "driver/diagnostics/T3Exception.h"

namespace {
// Memory of sections that are no longer there, grown to the size of such texts already.
struct SpareText {
  std::unique_ptr<char[]> text;
  size_t capacity;
};
struct SpareTexts {
  std::array<SpareText, 16> texts;
  size_t count = 0;
};
SpareTexts g_spare;
}  // namespace

CSection::CSection() {
  if (g_spare.count > 0) {
    SpareText& spare = g_spare.texts[--g_spare.count];
    text_ = std::move(spare.text);
    capacity_ = spare.capacity;
  } else {
    takeMemory(_reserve_limit);
  }
  setSize(0);
}

// Memory for so many characters more.
void CSection::takeMemory(size_t size) {
  if (capacity_ - size_ >= size) return;
  const size_t capacity = std::max(size_ + size, 2 * capacity_);
  std::unique_ptr<char[]> grown(new char[capacity]);
  if (size_ > 0) std::memcpy(grown.get(), text_.get(), size_);
  text_ = std::move(grown);
  capacity_ = capacity;
}

// The text stays below the limit, unless one piece goes beyond it.
void CSection::setSize(size_t size) {
  size_ = size;
  room_ = std::max(std::min(capacity_, _limit - 1), size) - size;
}

CSection::~CSection() {
  if (capacity_ < _reserve_limit || g_spare.count == g_spare.texts.size()) return;
  g_spare.texts[g_spare.count++] = {std::move(text_), capacity_};
}

CSection::CSection(CSection&& other) noexcept {
  *this = std::move(other);
}

CSection& CSection::operator=(CSection&& other) noexcept {
  if (this == &other) return *this;
  text_ = std::move(other.text_);
  size_ = std::exchange(other.size_, 0);
  room_ = std::exchange(other.room_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  ended_ = std::exchange(other.ended_, false);
  file_ = std::move(other.file_);
  spilled_ = std::move(other.spilled_);
  return *this;
}

void CSection::failEnded(const std::string& text) {
  throw internal_exception("CSection", __LINE__, "add", "Add on ended CSection: " + text);
}

void CSection::makeRoom(size_t size) {
  if (size_ + size >= _limit) spill();
  takeMemory(size);
  room_ = std::max(std::min(capacity_, _limit - 1), size_ + size) - size_;
}

// Asked for only where files are split.
unsigned CSection::lineCount() const {
  unsigned lines = 0;
  forEachPiece([&lines](std::string_view piece) { lines += CountLines(piece); });
  return lines;
}

void CSection::spill() {
  if (!spilled()) file_ = CSpillFile::shared();
  spilled_.push_back(file_->append(text()));
  setSize(0);
}

void CSection::end() {
  ended_ = true;
  room_ = 0;
}
