// Faults of syntax files, option files and text files, which end the work on ASN.1: each program that reads
// syntax files stops with the status that the fault carries.
#pragma once

#include <string>

namespace asn1 {

enum FatalCode : int {
  kCannotRead = 1,
  kCannotWrite = 2,
  kNoModuleName = 3,
  kNoSpace = 5,
  kReadFault = 6,
  kWriteFault = 7,
  kCloseFault = 8,
  kRecordReadFault = 9,
  kRecordWriteFault = 10,
  kInternal = 13,
  kTreeInconsistent = 15,
  kTreeNotFound = 16,
  kNotATree = 17,
  kNoCallback = 18,
};

/// What a program ends with: a fault that was told, or an option that only asks for information.
struct AsnExit {
  int status;
};

/// Prints the fault's text, and `text` below it where there is one, on standard error and throws AsnExit{2}.
[[noreturn]] void fatalError(int code, const std::string& text = {});

/// Fatal errors are told at the end of this file as well.
void CopyFaultsTo(const std::string& path);

/// Counts the nesting of a recursion along references between records; one without an end is a fatal internal
/// error.
class NestingGuard {
 public:
  NestingGuard(int& nesting, const char* text) : nesting_(nesting) {
    if (nesting >= kDeepest) fatalError(kInternal, text);
    ++nesting_;
  }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;
  ~NestingGuard() { --nesting_; }

 private:
  static constexpr int kDeepest = 1000;
  int& nesting_;
};
}  // namespace asn1
