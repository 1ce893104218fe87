#include "FileAPI/CSpillFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "driver/diagnostics/T3Exception.h"

void RemoveGeneratedFile(const std::string& path) {
  if (std::remove(path.c_str()) == 0) return;
  const char* reason = errno == EACCES || errno == EPERM ? "Permission denied"
                       : errno == ENOENT                 ? "No such file or directory"
                                                         : "error when removing file";
  std::fprintf(stderr, "CFile::remove - %s\n", reason);
}

std::shared_ptr<CSpillFile> CSpillFile::shared() {
  static std::weak_ptr<CSpillFile> in_use;
  std::shared_ptr<CSpillFile> file = in_use.lock();
  if (file == nullptr) in_use = file = std::make_shared<CSpillFile>();
  return file;
}

CSpillFile::~CSpillFile() {
  if (descriptor_ < 0) return;
  close(descriptor_);
  RemoveGeneratedFile(file_.path());
}

void CSpillFile::makeFile() {
  TemporaryFile made(".", "ccg");
  file_.Take(made);
  if (file_.path().empty())
    throw internal_exception("CSection", __LINE__, "add", "Could not create temporary file name");
  descriptor_ = open(file_.path().c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor_ < 0)
    throw internal_exception("CSection", __LINE__, "add", "Could not create/open array file");
}

CSpillFile::Extent CSpillFile::append(std::string_view text) {
  if (text.size() <= room_) {
    char* held = held_.take(text.size());
    std::memcpy(held, text.data(), text.size());
    room_ -= text.size();
    return {held, 0, text.size()};
  }
  if (descriptor_ < 0) makeFile();
  const Extent extent{nullptr, size_, text.size()};
  while (!text.empty()) {
    const ssize_t written = pwrite(descriptor_, text.data(), text.size(), static_cast<off_t>(size_));
    if (written <= 0) throw internal_exception("CSection", __LINE__, "add", "error when writing file");
    size_ += static_cast<size_t>(written);
    text.remove_prefix(static_cast<size_t>(written));
  }
  return extent;
}

size_t CSpillFile::readPiece(Extent extent, char* buffer) const {
  const ssize_t read =
      pread(descriptor_, buffer, std::min(extent.size, kCopyBuffer), static_cast<off_t>(extent.offset));
  if (read <= 0) throw internal_exception("CSection", __LINE__, "writeTo", "error when reading source file");
  return static_cast<size_t>(read);
}
