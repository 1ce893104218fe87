// The program's name, its version, and the list of its source units.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

inline constexpr const char* kToolName = "Orvane, TTCN-3 to C Compiler";
inline constexpr const char* kVersion = "3.3.0.2.17499";
/// What the program prints first: its name, its version and the notice.
std::string Banner();

/// The comment at the head of every generated file, line by line. Its time is that of SOURCE_DATE_EPOCH,
/// where the environment sets one.
std::vector<std::string> GenerateModuleHeader();

/// A line of `-V`: one source unit. Objects register themselves before `main`.
class VersionInfo {
 public:
  /// Both texts must live as long as the object, which lives to the end of the process.
  VersionInfo(const char* unit, const char* version);
  VersionInfo(const VersionInfo&) = delete;
  VersionInfo& operator=(const VersionInfo&) = delete;
  /// All lines, in the order of the units' names.
  static void Print(FILE* stream);

 private:
  const char* unit_;
  const char* version_;
  const VersionInfo* next_;
};
