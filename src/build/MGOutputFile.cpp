#include "build/MGOutputFile.h"

#include <cstdio>
#include <unistd.h>

OutputFile::OutputFile(const std::string& path)
    : path_(path),
      beside_(path + "." + std::to_string(getpid()) + ".tmp"),
      stream_(beside_, std::ios::binary | std::ios::trunc) {
  if (!stream_.is_open()) beside_.clear();
}

OutputFile::~OutputFile() {
  stream_.close();
  if (!beside_.empty()) std::remove(beside_.c_str());
}

bool OutputFile::complete() {
  stream_.flush();
  const bool written = stream_.good();
  stream_.close();
  return written && stream_.good();
}

bool OutputFile::put_into_place() {
  if (std::rename(beside_.c_str(), path_.c_str()) != 0) return false;
  beside_.clear();
  return true;
}
