// Words of C that are put together to a piece of text. There are very many such pieces, most of them short,
// so that one is measured first and then copied to where it stays.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>

/// Words of C that are only looked at: a list of texts of any kind.
using CWords = std::initializer_list<std::string_view>;

/// Copies a text; most are short words: two moves that may overlap. Returns the place behind it.
template <size_t kPiece>
char* CopyEnds(char* to, std::string_view text) {
  char first[kPiece];
  char last[kPiece];
  std::memcpy(first, text.data(), kPiece);
  std::memcpy(last, text.data() + text.size() - kPiece, kPiece);
  std::memcpy(to, first, kPiece);
  std::memcpy(to + text.size() - kPiece, last, kPiece);
  return to + text.size();
}

inline char* CopyWord(char* to, std::string_view text) {
  const size_t size = text.size();
  if (size >= 16) {
    if (size <= 32) return CopyEnds<16>(to, text);
    std::memcpy(to, text.data(), size);
    return to + size;
  }
  if (size >= 8) return CopyEnds<8>(to, text);
  if (size >= 4) return CopyEnds<4>(to, text);
  if (size >= 2) return CopyEnds<2>(to, text);
  if (size == 1) *to = text.front();
  return to + size;
}

/// The words of `head`, those of a list with `separator` between them, and `tail`. Lives no longer than what
/// it refers to.
template <class Words>
class CList {
 public:
  CList(CWords head, const Words& list, std::string_view separator, std::string_view tail)
      : head_(head), list_(list), separator_(separator), tail_(tail) {}
  [[gnu::always_inline]] size_t size() const {
    size_t size = tail_.size();
    if (list_.size() > 1) size += separator_.size() * (list_.size() - 1);
    for (const std::string_view word : head_) size += word.size();
    for (const std::string_view word : list_) size += word.size();
    return size;
  }
  /// Writes it to memory that has room for it.
  [[gnu::always_inline]] void copyTo(char* at) const {
    for (const std::string_view word : head_) at = CopyWord(at, word);
    std::string_view before;
    for (const std::string_view word : list_) {
      at = CopyWord(CopyWord(at, before), word);
      before = separator_;
    }
    CopyWord(at, tail_);
  }
  std::string text() const {
    std::string text(size(), '\0');
    copyTo(text.data());
    return text;
  }

 private:
  CWords head_;
  const Words& list_;
  std::string_view separator_;
  std::string_view tail_;
};

/// The texts one behind the other.
std::string joined(CWords pieces);

/// returnType, blank (unless it is empty), name, "(", the parameters joined with ", ", ")".
template <class Words>
std::string getSignature(std::string_view returnType, std::string_view name, const Words& parameters) {
  return CList({returnType, returnType.empty() ? "" : " ", name, "("}, parameters, ", ", ")").text();
}
inline std::string getSignature(std::string_view returnType, std::string_view name, CWords parameters) {
  return getSignature<CWords>(returnType, name, parameters);
}
