// What the files of an ASN.1 module are called after: the name of its source without directory and ending, in
// letters, digits, hyphens and underscores.
#pragma once

#include <string>

namespace asn1 {
inline constexpr size_t kPrefixLength = 32;
inline constexpr size_t kLongestPrefix = 30;  // of a file: "bi" may come behind it

inline std::string FilePrefixOf(const std::string& path) {
  constexpr size_t kEnding = 4;
  std::string name = path.substr(path.rfind('/') + 1);
  if (name.size() > kEnding && name.find('.') != std::string::npos) name.resize(name.size() - kEnding);
  for (char& c : name) {
    const bool kept = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    if (!kept) c = '_';
  }
  if (name[0] == '-') name[0] = '_';
  return name.substr(0, kLongestPrefix);
}

/// What stands behind the prefix in the names of a module's files, where that may make the prefix of another
/// one.
inline constexpr const char* kFileSuffixes[] = {"bi", "cod", "bicod", "pec", "pdc", "per", "t3asn"};
/// The folder, in that of the output, for copies of sources that one more run of the tools reads.
inline constexpr const char* kCopiesFolder = "VEXA-ASN-1-copies";
}  // namespace asn1
