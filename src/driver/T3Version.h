// The program's name, its version, and the list of its source units.
#pragma once

#include <cstdio>
#include <string>

inline constexpr const char* kToolName = "Orvane, TTCN-3 to C Compiler";
inline constexpr const char* kVersion = "3.3.0.2.17499";
/// The notice of the banner, as one line; the banner breaks it behind each full stop.
extern const char* const kNotice;

/// A line of `-V`: one source unit. Objects register themselves before `main`.
class VersionInfo {
 public:
  VersionInfo(const char* unit, const char* version);
  /// All lines, in the order of the units' names.
  static void Print(FILE* stream);
};
