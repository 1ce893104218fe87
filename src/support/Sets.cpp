#include "support/Sets.h"

#include <algorithm>
#include <bit>

namespace {
size_t WordCount(tSetElmt max_element) {
  return static_cast<size_t>(max_element) / 32 + 1;
}
}  // namespace

tSet::tSet(tSetElmt max_element)
    : max_(std::max<tSetElmt>(max_element, 0)), words_(WordCount(max_)), first_(max_ + 1) {}

// The word of the other set that stands beside ours; a shorter set has zeros there.
uint32_t tSet::OtherWord(const tSet& other, size_t index) const {
  return index < other.words_.size() ? other.words_[index] : 0;
}

void tSet::ClearBeyondRange() {
  const unsigned used = Bit(max_) + 1;
  if (used < 32) words_.back() &= (uint32_t{1} << used) - 1;
}

void tSet::ForgetBounds() {
  card_ = -1;
  first_ = 0;
  last_ = max_;
}

// Moves the bounds to the first and last member.
void tSet::Narrow() const {
  if (first_ > last_) return;
  size_t low = Word(first_);
  const size_t top = Word(last_);
  while (low <= top && words_[low] == 0) ++low;
  if (low > top) {
    first_ = max_ + 1;
    last_ = -1;
    card_ = 0;
    return;
  }
  size_t high = top;
  while (words_[high] == 0) --high;
  first_ = static_cast<tSetElmt>(low * 32) + std::countr_zero(words_[low]);
  last_ = static_cast<tSetElmt>(high * 32) + 31 - std::countl_zero(words_[high]);
}

void tSet::Resize(tSetElmt max_element) {
  max_ = std::max<tSetElmt>(max_element, 0);
  words_.resize(WordCount(max_));
  ClearBeyondRange();
  ForgetBounds();
}

void tSet::Union(const tSet& other) {
  for (size_t i = 0; i < words_.size(); ++i) words_[i] |= OtherWord(other, i);
  ClearBeyondRange();
  ForgetBounds();
}

void tSet::Difference(const tSet& other) {
  for (size_t i = 0; i < words_.size(); ++i) words_[i] &= ~OtherWord(other, i);
  card_ = -1;
}

void tSet::Intersection(const tSet& other) {
  for (size_t i = 0; i < words_.size(); ++i) words_[i] &= OtherWord(other, i);
  card_ = -1;
}

void tSet::SymDiff(const tSet& other) {
  for (size_t i = 0; i < words_.size(); ++i) words_[i] ^= OtherWord(other, i);
  ClearBeyondRange();
  ForgetBounds();
}

void tSet::Complement() {
  for (uint32_t& word : words_) word = ~word;
  ClearBeyondRange();
  ForgetBounds();
}

void tSet::Include(tSetElmt element) {
  if (element < 0 || element > max_) return;
  words_[Word(element)] |= uint32_t{1} << Bit(element);
  card_ = -1;
  first_ = std::min(first_, element);
  last_ = std::max(last_, element);
}

void tSet::Exclude(tSetElmt element) {
  if (element < 0 || element > max_) return;
  words_[Word(element)] &= ~(uint32_t{1} << Bit(element));
  card_ = -1;
  if (element == first_) ++first_;
  if (element == last_) --last_;
}

tSetElmt tSet::Card() const {
  if (card_ < 0) {
    card_ = 0;
    if (first_ <= last_)
      for (size_t i = Word(first_); i <= Word(last_); ++i) card_ += std::popcount(words_[i]);
  }
  return card_;
}

tSetElmt tSet::Minimum() const {
  Narrow();
  return first_ <= last_ ? first_ : -1;
}

tSetElmt tSet::Maximum() const {
  Narrow();
  return first_ <= last_ ? last_ : -1;
}

tSetElmt tSet::Extract() {
  const tSetElmt element = Minimum();
  if (element >= 0) Exclude(element);
  return element;
}

bool tSet::IsSubset(const tSet& other) const {
  for (size_t i = 0; i < words_.size(); ++i)
    if ((words_[i] & ~OtherWord(other, i)) != 0) return false;
  return true;
}

bool tSet::IsEqual(const tSet& other) const {
  return IsSubset(other) && other.IsSubset(*this);
}

bool tSet::Forall(const std::function<bool(tSetElmt)>& property) const {
  return !Exists([&property](tSetElmt element) { return !property(element); });
}

bool tSet::Exists(const std::function<bool(tSetElmt)>& property) const {
  for (tSetElmt i = first_; i <= last_; ++i)
    if (IsElement(i) && property(i)) return true;
  return false;
}

bool tSet::Exists1(const std::function<bool(tSetElmt)>& property) const {
  int count = 0;
  for (tSetElmt i = first_; i <= last_ && count < 2; ++i) count += IsElement(i) && property(i);
  return count == 1;
}

void tSet::ForallDo(const std::function<void(tSetElmt)>& call) const {
  for (tSetElmt i = first_; i <= last_; ++i)
    if (IsElement(i)) call(i);
}

void tSet::Assign(const tSet& other) {
  AssignEmpty();
  Union(other);
}

void tSet::AssignElmt(tSetElmt element) {
  AssignEmpty();
  Include(element);
}

void tSet::AssignEmpty() {
  std::fill(words_.begin(), words_.end(), 0);
  card_ = 0;
  first_ = max_ + 1;
  last_ = -1;
}

bool tSet::Read(FILE* stream) {
  AssignEmpty();
  char mark = 0;
  if (std::fscanf(stream, " %c", &mark) != 1 || mark != '{') return false;
  for (;;) {
    long element;
    const int read = std::fscanf(stream, "%ld", &element);
    if (read == 1) Include(element);
    if (std::fscanf(stream, " %c", &mark) != 1) return false;
    if (mark == '}') return true;
    if (read != 1 || mark != ',') return false;
  }
}

void tSet::Write(FILE* stream) const {
  const char* separator = "";
  std::fputc('{', stream);
  ForallDo([&](tSetElmt element) {
    std::fprintf(stream, "%s%ld", separator, element);
    separator = ", ";
  });
  std::fputc('}', stream);
}
