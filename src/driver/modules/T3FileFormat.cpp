#include "driver/modules/T3FileFormat.h"

#include <cstdio>
#include <cstring>
#include <memory>

#include "driver/options/T3CommandLine.h"
#include "driver/modules/T3UTF8String.h"

namespace {
constexpr size_t kMarkLength = 4;

struct ByteOrderMark {
  file_format_t format;
  size_t length;
  unsigned char bytes[kMarkLength];
};

// In the order of comparison: the mark of UTF-32 little-endian begins like that of UTF-16, which wins.
constexpr ByteOrderMark byteOrderMarks[] = {
    {format_utf8, 3, {0xEF, 0xBB, 0xBF}},
    {format_ucs2be, 2, {0xFE, 0xFF}},
    {format_ucs2le, 2, {0xFF, 0xFE}},
    {format_unknown, 4, {0x00, 0x00, 0xFE, 0xFF}},
    {format_unknown, 4, {0xFF, 0xFE, 0x00, 0x00}},
    {format_unknown, 4, {0x2B, 0x2F, 0x76, 0x38}},
    {format_unknown, 4, {0x2B, 0x2F, 0x76, 0x39}},
    {format_unknown, 4, {0x2B, 0x2F, 0x76, 0x2B}},
    {format_unknown, 4, {0x2B, 0x2F, 0x76, 0x2F}},
    {format_unknown, 3, {0xF7, 0x64, 0x4C}},
    {format_unknown, 4, {0xDD, 0x73, 0x66, 0x73}},
    {format_unknown, 3, {0x0E, 0xFE, 0xFF}},
    {format_unknown, 4, {0xFB, 0xEE, 0x28, 0xFF}},
    {format_unknown, 3, {0xFB, 0xEE, 0x28}},
};

struct CloseFile {
  void operator()(FILE* stream) const { std::fclose(stream); }
};
using File = std::unique_ptr<FILE, CloseFile>;

struct Head {
  unsigned char bytes[kMarkLength] = {};
  size_t length = 0;
};

Head ReadHead(FILE* stream) {
  Head head;
  head.length = std::fread(head.bytes, 1, kMarkLength, stream);
  return head;
}

const ByteOrderMark* FindMark(const Head& head) {
  for (const ByteOrderMark& mark : byteOrderMarks)
    if (mark.length <= head.length && std::memcmp(mark.bytes, head.bytes, mark.length) == 0) return &mark;
  return nullptr;
}

file_format_t FormatOf(const Head& head) {
  if (const ByteOrderMark* mark = FindMark(head)) return mark->format;
  return head.length > 0 && head.bytes[0] < 0x80 ? format_utf8 : format_unknown;
}

File OpenOrReport(const std::string& path, const char* mode) {
  File file(path.empty() ? nullptr : std::fopen(path.c_str(), mode));
  if (file == nullptr) vexa_error("Could not open file " + path, NoPosition);
  return file;
}

void CopyBytes(FILE* from, FILE* to) {
  char block[1 << 16];
  while (const size_t length = std::fread(block, 1, sizeof block, from)) std::fwrite(block, 1, length, to);
}

// Code unit by code unit; a pair 0A 0D is dropped, and so is an odd byte at the end.
void ConvertUnits(FILE* from, FILE* to, bool big_endian) {
  unsigned char block[1 << 16];
  char utf8[4];
  while (const size_t pairs = std::fread(block, 2, sizeof block / 2, from)) {
    for (size_t i = 0; i < 2 * pairs; i += 2) {
      const unsigned first = block[i];
      const unsigned second = block[i + 1];
      if (first == 0x0A && second == 0x0D) continue;
      const unsigned long unit = big_endian ? first << 8 | second : second << 8 | first;
      std::fwrite(utf8, 1, static_cast<size_t>(ucs2_2_utf8(unit, utf8)), to);
    }
  }
}

void Convert(FILE* from, FILE* to, file_format_t format) {
  const Head head = ReadHead(from);
  const ByteOrderMark* mark = FindMark(head);
  std::fseek(from, mark == nullptr ? 0 : static_cast<long>(mark->length), SEEK_SET);
  switch (format) {
    case format_ascii:
    case format_utf8:
      CopyBytes(from, to);
      return;
    case format_ucs2le:
    case format_ucs2be:
      ConvertUnits(from, to, format == format_ucs2be);
      return;
    default:
      throw internal_exception("T3FileFormat", __LINE__, "ConvertToUTF_8", "unsupported file format");
  }
}

std::string Quoted(const std::string& text) {
  return '"' + text + '"';
}

bool SettleByteOrder(const char* path, file_format_t& format) {
  if (format != format_ucs2) return true;
  format = GuessFileFormat(path);
  if (format == format_ucs2le || format == format_ucs2be) return true;
  vexa_error(std::string("Could not determine UCS-2 endianess for ") + path, NoPosition);
  return false;
}
}  // namespace

file_format_t GuessFileFormat(const char* path) {
  const File file = OpenOrReport(path, "rb");
  if (file == nullptr) return format_unknown;
  const file_format_t format = FormatOf(ReadHead(file.get()));
  if (format == format_unknown)
    vexa_error(std::string("Could not determine file format of ") + path, NoPosition);
  vexa_progress(gT3CommandLine.CommonVerbosity(),
                "File format of " + Quoted(path) + " has been determined as " + FORMAT_SELECTOR[format]);
  return format;
}

bool HasBOM(const char* path) {
  const File file(std::fopen(path, "rb"));
  return file != nullptr && FindMark(ReadHead(file.get())) != nullptr;
}

int ConvertToUTF_8(const char* path, file_format_t format, TemporaryFile& converted) {
  if (format == format_unknown)
    throw internal_exception("T3FileFormat", __LINE__, "ConvertToUTF_8",
                             "source file format must be specified");
  if (!SettleByteOrder(path, format)) return -1;
  vexa_progress(gT3CommandLine.CommonVerbosity(), "Converting file " + Quoted(path) + " from " +
                                                      FORMAT_SELECTOR[format] + " to " +
                                                      FORMAT_SELECTOR[format_utf8]);
  converted.Adopt(MakeTemporaryFile(".", "vexa"));
  const std::string name = converted.path().empty() ? "./vexa" : converted.path();
  const File from = OpenOrReport(path, "rb");
  if (from == nullptr) return -1;
  File to = OpenOrReport(name, "wb");
  if (to == nullptr) return -1;
  Convert(from.get(), to.get(), format);
  const bool read = std::ferror(from.get()) == 0;
  bool written = std::ferror(to.get()) == 0;
  written = std::fclose(to.release()) == 0 && written;
  if (!read) vexa_error(std::string("Could not read file ") + path, NoPosition);
  if (!written) vexa_error("Could not write file " + name, NoPosition);
  return read && written ? 0 : -1;
}
