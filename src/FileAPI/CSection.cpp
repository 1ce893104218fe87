#include "FileAPI/CSection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "driver/diagnostics/T3Exception.h"

namespace {
constexpr size_t kCopyBuffer = 0x400;
// Calls of the system cost more than this much copying.
constexpr size_t kStreamBuffer = 0x8000;
constexpr size_t kMostSpareTexts = 16;

// Memory of sections that are no longer there, grown to the size of such texts already.
struct SpareText {
  std::unique_ptr<char[]> text;
  size_t capacity;
};
std::vector<SpareText>& SpareTexts() {
  static auto& texts = *new std::vector<SpareText>;
  return texts;
}

unsigned CountLines(std::string_view text) {
  unsigned lines = 0;
  const char* end = text.data() + text.size();
  for (const char* at = text.data(); at != end; ++at, ++lines) {
    at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
    if (at == nullptr) break;
  }
  return lines;
}

void WriteText(FILE* stream, std::string_view text) {
  if (fwrite_unlocked(text.data(), 1, text.size(), stream) != text.size())
    throw internal_exception("CSection", __LINE__, "add", "error when writing file");
}
}  // namespace

void RemoveGeneratedFile(const std::string& path) {
  if (std::remove(path.c_str()) == 0) return;
  const char* reason = errno == EACCES || errno == EPERM ? "Permission denied"
                       : errno == ENOENT                 ? "No such file or directory"
                                                         : "error when removing file";
  std::fprintf(stderr, "CFile::remove - %s\n", reason);
}

CSection::CSection() {
  if (!SpareTexts().empty()) {
    text_ = std::move(SpareTexts().back().text);
    capacity_ = SpareTexts().back().capacity;
    SpareTexts().pop_back();
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
  close();
  if (capacity_ < _reserve_limit || SpareTexts().size() >= kMostSpareTexts) return;
  SpareTexts().push_back({std::move(text_), capacity_});
}

CSection::CSection(CSection&& other) noexcept {
  *this = std::move(other);
}

CSection& CSection::operator=(CSection&& other) noexcept {
  if (this == &other) return *this;
  close();
  ended_ = std::exchange(other.ended_, false);
  text_ = std::move(other.text_);
  size_ = std::exchange(other.size_, 0);
  room_ = std::exchange(other.room_, 0);
  capacity_ = std::exchange(other.capacity_, 0);
  stream_ = std::exchange(other.stream_, nullptr);
  file_.Remove();
  file_.Take(other.file_);
  return *this;
}

bool CSection::makeRoom(size_t size) {
  if (ended_ || size_ + size >= _limit) return false;
  takeMemory(size);
  setSize(size_);
  return true;
}

void CSection::addAnyhow(std::string_view text) {
  if (ended_)
    throw internal_exception("CSection", __LINE__, "add", "Add on ended CSection: " + std::string(text));
  if (size_ + text.size() >= _limit) spill();
  takeMemory(text.size());
  CopyWord(text_.get() + size_, text);
  setSize(size_ + text.size());
}

// Asked for only where files are split.
unsigned CSection::lineCount() const {
  unsigned lines = CountLines(text());
  if (spilled())
    readSpillFile([&lines](std::string_view piece) {
      lines += CountLines(piece);
      return true;
    });
  return lines;
}

void CSection::spill() {
  if (stream_ == nullptr) openSpillFile();
  WriteText(stream_, text());
  setSize(0);
}

void CSection::openSpillFile() {
  const std::string name = MakeTemporaryFile(".", "ccg");
  if (name.empty())
    throw internal_exception("CSection", __LINE__, "add", "Could not create temporary file name");
  file_.Adopt(name);
  stream_ = std::fopen(name.c_str(), "w");
  if (stream_ == nullptr)
    throw internal_exception("CSection", __LINE__, "add", "Could not create/open array file");
  // The section is the buffer.
  std::setvbuf(stream_, nullptr, _IONBF, 0);
}

void CSection::close() {
  if (stream_ != nullptr) std::fclose(stream_);
  stream_ = nullptr;
}

void CSection::end() {
  ended_ = true;
  room_ = 0;
  if (stream_ == nullptr) return;
  spill();
  room_ = 0;
  const bool written = std::ferror(stream_) == 0;
  const bool closed = std::fclose(stream_) == 0;
  stream_ = nullptr;
  if (!written || !closed) throw internal_exception("CSection", __LINE__, "end", "error when writing file");
}

void CSection::writeTo(FILE* stream) {
  end();
  if (file_.path().empty()) {
    WriteText(stream, text());
    return;
  }
  copySpillFile(stream);
  RemoveGeneratedFile(file_.path());
  file_.Remove();
}

template <class Take>
void CSection::readSpillFile(const Take& take) const {
  FILE* source = std::fopen(file_.path().c_str(), "r");
  if (source == nullptr)
    throw internal_exception("CSection", __LINE__, "writeTo", "Unable to open source file");
  std::setvbuf(source, nullptr, _IOFBF, kStreamBuffer);
  char buffer[kCopyBuffer];
  size_t read = 0;
  bool taken = false;
  do {
    read = std::fread(buffer, 1, sizeof buffer, source);
    taken = take(std::string_view(buffer, read));
  } while (read == sizeof buffer && taken);
  const bool failed = std::ferror(source) != 0;
  std::fclose(source);
  if (failed) throw internal_exception("CSection", __LINE__, "writeTo", "error when reading source file");
  if (!taken) throw internal_exception("CSection", __LINE__, "writeTo", "error when writing file");
}

void CSection::copySpillFile(FILE* stream) const {
  readSpillFile([stream](std::string_view piece) {
    return fwrite_unlocked(piece.data(), 1, piece.size(), stream) == piece.size();
  });
}
