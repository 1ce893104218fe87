#include "asn2c/CFile.h"

#include <cctype>
#include <cstdio>

#include "asn1/front/AsnFault.h"

namespace asn2c {
void CFile::Close() {
  const std::string beside = path_ + ".tmp";
  FILE* file = std::fopen(beside.c_str(), "wb");
  if (file == nullptr) asn1::fatalError(asn1::kCannotWrite, path_);
  const bool written = std::fwrite(text_.data(), 1, text_.size(), file) == text_.size();
  if (std::fclose(file) != 0 || !written) {
    std::remove(beside.c_str());
    asn1::fatalError(asn1::kWriteFault, path_);
  }
  if (std::rename(beside.c_str(), path_.c_str()) != 0) asn1::fatalError(asn1::kCannotWrite, path_);
}

std::string GuardOf(const std::string& file_name) {
  std::string guard;
  for (const char c : file_name)
    guard += c == '-' || c == '.' ? '_' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return guard;
}
}  // namespace asn2c
