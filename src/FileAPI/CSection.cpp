#include "FileAPI/CSection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "FileAPI/CTextBlocks.h"
#include "driver/diagnostics/T3Exception.h"
#include "support/TemporaryFiles.h"

namespace {
constexpr size_t kCopyBuffer = 0x400;
// Calls of the system cost more than this much copying.
constexpr size_t kStreamBuffer = 0x8000;

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

// The file that a long section has moved to.
class CSection::Spill {
 public:
  Spill() {
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
  Spill(const Spill&) = delete;
  Spill& operator=(const Spill&) = delete;
  ~Spill() {
    if (stream_ != nullptr) std::fclose(stream_);
  }

  bool isOpen() const { return stream_ != nullptr; }
  void write(std::string_view text) { WriteText(stream_, text); }
  void close() {
    const bool written = std::ferror(stream_) == 0;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    if (!written || !closed) throw internal_exception("CSection", __LINE__, "end", "error when writing file");
  }
  void remove() {
    RemoveGeneratedFile(file_.path());
    file_.Remove();
  }

  /// Hands the text in the file over, piece by piece.
  template <class Take>
  void read(const Take& take) const {
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

 private:
  TemporaryFile file_;
  FILE* stream_ = nullptr;
};

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
  spill_ = std::move(other.spill_);
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
  unsigned lines = CountLines(text());
  if (spilled())
    spill_->read([&lines](std::string_view piece) {
      lines += CountLines(piece);
      return true;
    });
  return lines;
}

void CSection::spill() {
  if (!spilled()) spill_ = std::make_unique<Spill>();
  spill_->write(text());
  setSize(0);
}

void CSection::end() {
  if (spilled() && spill_->isOpen()) {
    spill();
    spill_->close();
  }
  ended_ = true;
  room_ = 0;
}

void CSection::writeTo(FILE* stream) {
  end();
  if (!spilled()) return WriteText(stream, text());
  spill_->read([stream](std::string_view piece) {
    return fwrite_unlocked(piece.data(), 1, piece.size(), stream) == piece.size();
  });
  spill_->remove();
}
