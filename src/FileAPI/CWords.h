// Pieces of C that are put together to a text: words, lists of words, the beginning of a line. There are very
// many such texts, most of them short, so that one is measured first and then copied to where it stays,
// literals as constants.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

/// Words of C that are only looked at: a list of texts of any kind.
using CWords = std::initializer_list<std::string_view>;

/// Words with the size of all of them, counted where they are said: there the sizes of most are known when
/// the compiler is built.
class CMeasuredWords {
 public:
  [[gnu::always_inline]] explicit CMeasuredWords(CWords words) : words_(words) {
    for (const std::string_view word : words) text_size_ += word.size();
  }
  const std::string_view* begin() const { return words_.begin(); }
  const std::string_view* end() const { return words_.end(); }
  size_t size() const { return words_.size(); }
  size_t textSize() const { return text_size_; }

 private:
  CWords words_;
  size_t text_size_ = 0;
};

/// Copies a text by two moves that may overlap. Returns the place behind it.
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

/// Most texts are short words.
inline char* CopyWord(char* to, std::string_view text) {
  const size_t size = text.size();
  if (size >= 16) {
    if (size <= 32) return CopyEnds<16>(to, text);
    if (size <= 64) {
      CopyEnds<16>(to, text.substr(0, 32));
      return CopyEnds<16>(to + size - 32, text.substr(size - 32));
    }
    std::memcpy(to, text.data(), size);
    return to + size;
  }
  if (size >= 8) return CopyEnds<8>(to, text);
  if (size >= 4) return CopyEnds<4>(to, text);
  if (size >= 2) return CopyEnds<2>(to, text);
  if (size == 1) *to = text.front();
  return to + size;
}

/// The words of a list with `separator`, a word or a literal, between them. Lives no longer than what it
/// refers to.
template <class Words, class Separator>
struct CList {
  CList(const Words& words_of_list, const Separator& between) : words(words_of_list), separator(between) {}
  const Words& words;
  const Separator& separator;
};

template <class Words>
[[gnu::always_inline]] inline size_t SizeOfWords(const Words& words) {
  size_t size = 0;
  for (const std::string_view word : words) size += word.size();
  return size;
}
inline size_t SizeOfWords(const CMeasuredWords& words) {
  return words.textSize();
}

inline size_t PieceSize(std::string_view word) {
  return word.size();
}
template <size_t kSize>
constexpr size_t PieceSize(const char (&)[kSize]) {
  return kSize - 1;
}
template <class Words, class Separator>
[[gnu::always_inline]] inline size_t PieceSize(const CList<Words, Separator>& list) {
  const size_t count = list.words.size();
  return (count > 1 ? PieceSize(list.separator) * (count - 1) : 0) + SizeOfWords(list.words);
}

// Each copies a piece to memory that has room for it, and returns the place behind it.
[[gnu::always_inline]] inline char* CopyPiece(char* to, std::string_view word) {
  return CopyWord(to, word);
}
template <size_t kSize>
[[gnu::always_inline]] inline char* CopyPiece(char* to, const char (&literal)[kSize]) {
  std::memcpy(to, literal, kSize - 1);
  return to + kSize - 1;
}
template <class Words, class Separator>
[[gnu::always_inline]] inline char* CopyPiece(char* to, const CList<Words, Separator>& list) {
  auto word = std::begin(list.words);
  const auto end = std::end(list.words);
  if (word == end) return to;
  for (;;) {
    to = CopyWord(to, *word);
    if (++word == end) return to;
    to = CopyPiece(to, list.separator);
  }
}

template <class... Pieces>
[[gnu::always_inline]] inline size_t SizeOfPieces(const Pieces&... pieces) {
  static_assert((!std::is_pointer_v<Pieces> && ...), "the length of a word would be counted twice");
  return (PieceSize(pieces) + ...);
}
template <class... Pieces>
[[gnu::always_inline]] inline char* CopyPieces(char* to, const Pieces&... pieces) {
  ((to = CopyPiece(to, pieces)), ...);
  return to;
}
/// The pieces one behind the other.
template <class... Pieces>
std::string TextOf(const Pieces&... pieces) {
  std::string text(SizeOfPieces(pieces...), '\0');
  CopyPieces(text.data(), pieces...);
  return text;
}

/// The texts one behind the other.
std::string joined(const CMeasuredWords& words);
inline std::string joined(CWords words) {
  return joined(CMeasuredWords(words));
}

/// returnType, blank (unless it is empty), name, "(", the parameters joined with ", ", ")".
template <class Words>
std::string getSignature(std::string_view returnType, std::string_view name, const Words& parameters) {
  const std::string_view blank = returnType.empty() ? "" : " ";
  return TextOf(returnType, blank, name, "(", CList(parameters, ", "), ")");
}
inline std::string getSignature(std::string_view returnType, std::string_view name, CWords parameters) {
  return getSignature(returnType, name, CMeasuredWords(parameters));
}
