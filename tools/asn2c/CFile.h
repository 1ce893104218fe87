// A generated file in the making: text, written beside its place and put there when it is complete.
#pragma once

#include <string>

namespace asn2c {
class CFile {
 public:
  explicit CFile(std::string path) : path_(std::move(path)) {}
  CFile& operator<<(const std::string& text) {
    text_ += text;
    return *this;
  }
  CFile& operator<<(const char* text) {
    text_ += text;
    return *this;
  }
  CFile& operator<<(long long number) {
    text_ += std::to_string(number);
    return *this;
  }
  /// Puts the file in its place; a fault is fatal.
  void Close();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::string text_;
};

/// The macro that guards a file against a second inclusion: its name in capitals.
std::string GuardOf(const std::string& file_name);
}  // namespace asn2c
