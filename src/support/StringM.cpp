#include "support/StringM.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "support/Global.h"

namespace {
constexpr size_t kBlockSize = 20480;
constexpr size_t kAlign = alignof(wchar_t);

size_t Round(size_t size) {
  return (size + kAlign - 1) / kAlign * kAlign;
}
}  // namespace

StringM::StringM() {
  empty_ = PutString("");
  empty_wide_ = PutWString(L"", 0);
}

// Blocks are never given back: strings live to the end of the process.
char* StringM::Take(size_t bytes) {
  if (static_cast<size_t>(end_ - free_) < bytes) {
    const size_t size = std::max(kBlockSize, bytes);
    free_ = static_cast<char*>(::operator new(size));
    end_ = free_ + size;
  }
  char* result = free_;
  free_ += bytes;
  return result;
}

tStringRef StringM::PutString(std::string_view text) {
  const size_t length = std::min(text.size(), kMaxStringLength);
  char* memory = Take(Round(sizeof(unsigned short) + length + 1));
  auto* string = reinterpret_cast<tStringRef>(memory);
  *string = static_cast<unsigned short>(length);
  char* characters = memory + sizeof(unsigned short);
  if (length != 0) std::memcpy(characters, text.data(), length);
  characters[length] = '\0';
  return string;
}

// A wide string keeps its characters aligned: the length word is followed by padding up to the first one.
tStringRef StringM::PutWString(const wchar_t* text, size_t length) {
  length = std::min(length, kMaxStringLength);
  char* memory = Take(sizeof(wchar_t) * (length + 2));
  auto* string = reinterpret_cast<tStringRef>(memory);
  *string = static_cast<unsigned short>(length);
  char* characters = memory + sizeof(wchar_t);
  if (length != 0) std::memcpy(characters, text, length * sizeof(wchar_t));
  std::memset(characters + length * sizeof(wchar_t), 0, sizeof(wchar_t));
  return string;
}

const wchar_t* StringM::StGetWCStr(const unsigned short* string) {
  return reinterpret_cast<const wchar_t*>(reinterpret_cast<const char*>(string) + sizeof(wchar_t));
}

void StringM::WriteString(FILE* stream, const unsigned short* string) {
  if (string == nullptr) {
    gSupportFault(kFaultNoString, 0);
    return;
  }
  const std::string_view text = StGetString(string);
  std::fwrite(text.data(), 1, text.size(), stream);
}

namespace {
void WriteCharacter(FILE* stream, unsigned long code) {
  if (code < 0x80) {
    std::fputc(static_cast<int>(code), stream);
    return;
  }
  int shift = code < 0x800 ? 6 : code < 0x10000 ? 12 : 18;
  const int lead = shift == 6 ? 0xc0 : shift == 12 ? 0xe0 : 0xf0;
  std::fputc(lead | static_cast<int>(code >> shift), stream);
  for (shift -= 6; shift >= 0; shift -= 6) std::fputc(0x80 | static_cast<int>(code >> shift & 0x3f), stream);
}
}  // namespace

void StringM::WriteWString(FILE* stream, const unsigned short* string) {
  if (string == nullptr) {
    gSupportFault(kFaultNoString, 0);
    return;
  }
  const wchar_t* text = StGetWCStr(string);
  for (size_t i = 0; i < *string; ++i) WriteCharacter(stream, static_cast<unsigned long>(text[i]) & 0x1fffff);
}
