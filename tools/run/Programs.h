// The programs that orvane-run starts, and where its installation is.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace run {

/// The folder above the one that holds this program.
std::filesystem::path Installation();
/// Where on the path a program of this name is; empty without one.
std::filesystem::path FindProgram(const std::string& program);
/// True when a program of this name is on the path.
bool IsInstalled(const std::string& program);
/// How many processors this process may use.
unsigned Processors();

/// Where errors of a program appear: as they come, or behind its output, which is known at its end only.
enum class Errors { AtOnce, BehindOutput };

/// Runs a program to its end: its exit status; 128 and its number for a signal. What it writes to standard
/// output goes to the file `output`, and from there to standard error when it fails: standard output is the
/// suite's. A signal that asks this process to end goes to the program as well, and ends this process when
/// that has come to its end. Throws a std::string when it cannot be started.
int RunProgram(const std::vector<std::string>& command, const std::filesystem::path& output, Errors errors);

/// An executable file that stays the same whatever happens to its name.
class OpenProgram {
 public:
  /// Throws a std::string when it cannot be opened.
  explicit OpenProgram(const std::filesystem::path& path);
  OpenProgram(const OpenProgram&) = delete;
  OpenProgram& operator=(const OpenProgram&) = delete;
  ~OpenProgram();
  /// Makes this process run it under `name`. Comes back only with the reason why that failed, thrown as a
  /// std::string.
  [[noreturn]] void Become(const std::string& name, const std::vector<std::string>& arguments) const;

 private:
  std::string name_;
  int file_;
};

}  // namespace run
