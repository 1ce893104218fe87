#include "driver/modules/T3UTF8String.h"

#include <string>

#include "driver/diagnostics/T3Exception.h"

namespace {
struct Counted {
  bool malformed;
  bool all_ascii;
  long long characters;
};

// The number of bytes of a sequence by its lead byte; 0 for a byte that leads none.
int SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF8) return 4;
  if (lead < 0xFC) return 5;
  if (lead < 0xFE) return 6;
  return 0;
}

// The least second byte behind a lead byte: a smaller one would be an overlong form.
unsigned char LeastSecond(unsigned char lead) {
  switch (lead) {
    case 0xE0:
      return 0xA0;
    case 0xF0:
      return 0x90;
    case 0xF8:
      return 0x88;
    case 0xFC:
      return 0x84;
    default:
      return 0x80;
  }
}

bool IsSequence(const unsigned char* s, int length) {
  if (s[1] < LeastSecond(s[0])) return false;
  for (int i = 1; i < length; ++i)
    if (s[i] < 0x80 || s[i] > 0xBF) return false;
  return true;
}

Counted Count(std::string_view text) {
  Counted result{false, true, 0};
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  for (size_t i = 0; i < text.size(); ++result.characters) {
    const int length = SequenceLength(s[i]);
    if (length == 1) {
      ++i;
      continue;
    }
    result.all_ascii = false;
    if (length == 0 || i + static_cast<size_t>(length) > text.size() || !IsSequence(s + i, length))
      return {true, false, 0};
    i += static_cast<size_t>(length);
  }
  return result;
}

[[noreturn]] void Fault(int line, const std::string& text) {
  throw internal_exception("T3UTF8String", line, "UTF_8ToUCS_4", text);
}
}  // namespace

int ucs2_2_utf8(unsigned long code, char* buffer) {
  if (code < 0x80) {
    buffer[0] = static_cast<char>(code);
    return 1;
  }
  if (code < 0x800) {
    buffer[0] = static_cast<char>(0xC0 | code >> 6);
    buffer[1] = static_cast<char>(0x80 | (code & 0x3F));
    return 2;
  }
  if (code >= 0x10000) return 0;
  buffer[0] = static_cast<char>(0xE0 | code >> 12);
  buffer[1] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
  buffer[2] = static_cast<char>(0x80 | (code & 0x3F));
  return 3;
}

const unsigned char* UTF_8ToUCS_4(const unsigned char* s, int& length, unsigned char& group,
                                  unsigned char& plane, unsigned char& row, unsigned char& cell) {
  if (s == nullptr) Fault(__LINE__, "s == NULL");
  if (length <= 0) Fault(__LINE__, "length <= 0");
  const int bytes = SequenceLength(s[0]) == 0 ? 1 : SequenceLength(s[0]);
  if (length < bytes) Fault(__LINE__, "length < " + std::to_string(bytes));
  unsigned long code = bytes == 1 ? s[0] : s[0] & 0xFFu >> (bytes + 1);
  for (int i = 1; i < bytes; ++i) code = code << 6 | (s[i] & 0x3Fu);
  group = static_cast<unsigned char>(code >> 24);
  plane = static_cast<unsigned char>(code >> 16);
  row = static_cast<unsigned char>(code >> 8);
  cell = static_cast<unsigned char>(code);
  length -= bytes;
  return s + bytes;
}

char_string_kind_t DetermineCharStringKind(const unsigned short* s) {
  const Counted counted = Count(StringM::StGetString(s));
  if (counted.malformed) return kind_malformed;
  const bool one_character = counted.characters == 3;
  if (counted.all_ascii) return one_character ? kind_ascii_character : kind_ascii_string;
  return one_character ? kind_character : kind_string;
}

long long UTF8StringLength(const unsigned short* s) {
  return Count(StringM::StGetString(s)).characters;
}
