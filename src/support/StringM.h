// The string store: texts with a two-byte length in front, never freed singly.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

using tStringRef = unsigned short*;

/// The longest string that the store takes, in characters.
inline constexpr size_t kMaxStringLength = 65535;

/// The store of strings. One instance, gStringM, lives to the end of the process.
class StringM {
 public:
  StringM();

  /// Stores `text`, which has at most kMaxStringLength characters; a longer one is cut there, and the
  /// caller that reads source text has reported it before. The store owns the result.
  tStringRef PutString(std::string_view text);
  tStringRef PutString(const char* text, size_t length) { return PutString(std::string_view(text, length)); }
  tStringRef PutWString(const wchar_t* text, size_t length);

  static std::string_view StGetString(const unsigned short* string) {
    return {reinterpret_cast<const char*>(string + 1), *string};
  }
  /// The text ended by a zero.
  static const char* StGetCStr(const unsigned short* string) {
    return reinterpret_cast<const char*>(string + 1);
  }
  static const wchar_t* StGetWCStr(const unsigned short* string);
  static size_t StLength(const unsigned short* string) { return *string; }
  static bool IsEqualSt(const unsigned short* a, const unsigned short* b) {
    return a == b || StGetString(a) == StGetString(b);
  }
  /// A null string is reported as the compiler's own fault (code 11).
  static void WriteString(FILE* stream, const unsigned short* string);
  /// A wide string in the encoding of UTF-8.
  static void WriteWString(FILE* stream, const unsigned short* string);

  tStringRef EmptyString() const { return empty_; }
  tStringRef EmptyWString() const { return empty_wide_; }

 private:
  char* Take(size_t bytes);

  char* free_ = nullptr;
  char* end_ = nullptr;
  tStringRef empty_;
  tStringRef empty_wide_;
};

// A reference to an object that is never destroyed, made before the globals of every unit that includes
// this: they use the store while they are built and while they end.
inline StringM& gStringM = *new StringM;
