#include "asn1/front/AsnFault.h"

#include <cstdio>
#include <fstream>

namespace asn1 {
namespace {
constexpr int kStatusFatal = 2;

// By code; codes that no part of the program raises keep their place.
constexpr const char* kTexts[] = {
    nullptr,
    "Can not open file for reading",
    "Can not open file for writing",
    "Can not find module name",
    "Can not add identifier to path",
    "Can not allocate space",
    "Can not read from file",
    "Can not write into file",
    "Can not close file",
    "Can not read record from syntax tree",
    "Can not write record into syntax tree",
    "Can not initialize value parameter",
    "Can not map a modulereference with a file name",
    "Internal error",
    "Unexpected end of file",
    "Syntax tree inconsistent",
    "Syntax tree not found",
    "Not a valid syntax tree",
    "Call-back function not defined.",
};
std::string& summary = *new std::string;

constexpr int kLastCode = sizeof kTexts / sizeof kTexts[0] - 1;
}  // namespace

void CopyFaultsTo(const std::string& path) {
  summary = path;
}

void fatalError(int code, const std::string& text) {
  const bool known = code >= 1 && code <= kLastCode;
  std::fprintf(stderr, "\nFATAL ERROR : %s\n", known ? kTexts[code] : "Unexpected error code");
  if (!text.empty()) std::fprintf(stderr, "              %s\n", text.c_str());
  std::fputs("\n", stderr);
  if (!summary.empty())
    std::ofstream(summary, std::ios::app)
        << "FATAL ERROR : " << (known ? kTexts[code] : "Unexpected error code") << (text.empty() ? "" : ": ")
        << text << "\n";
  throw AsnExit{kStatusFatal};
}
}  // namespace asn1
