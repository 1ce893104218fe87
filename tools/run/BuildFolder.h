// The folder in which suites are built: what lies there is used again as long as it is known to fit.
//
// A record tells by what tools and of which modules and files the contents were made, and the times of the
// files. It is taken away before something is built and written anew behind that; where it is missing or
// tells something else, all contents are removed. The folder is locked while it is in use, so that runs in
// one place wait for each other.
#pragma once

#include <filesystem>
#include <string>

namespace run {

class BuildFolder {
 public:
  /// Makes the folder where it is missing, and locks it. Throws a std::string where that fails, and for a
  /// folder with contents of others.
  explicit BuildFolder(const std::filesystem::path& path);
  BuildFolder(const BuildFolder&) = delete;
  BuildFolder& operator=(const BuildFolder&) = delete;
  ~BuildFolder();

  const std::filesystem::path& path() const { return path_; }
  /// Leaves only what was made for this `setup` and must not be made anew by `times`, which tells each
  /// source's time of change: whole seconds, and behind them all that tells changes within one apart.
  void Prepare(const std::string& setup, const std::string& times);
  /// To be called when the programs that build have come to an end, whatever it was.
  void Settle() const;

 private:
  void Clear(const std::string& extension) const;
  /// The compiler's stamps tell of sources alone: whoever deletes code gets it again.
  void DropStampsWithoutCode() const;

  std::filesystem::path path_;
  int lock_;
  std::string record_;
};

}  // namespace run
