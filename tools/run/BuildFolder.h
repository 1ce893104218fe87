// The folder in which suites are built: what lies there is used again as long as it is known to fit.
//
// A record tells by what tools and of which modules and files the contents were made, and the states of all
// of these files and of the contents. It is taken away before something is built and written anew behind
// that; where it is missing or damaged, tells of something else, or not all contents are as it says, they are
// removed. What make would tell by times of change is told by the record as well, since times may go back.
// The folder is locked while it is in use, by all that is started there too: runs in one place wait for each
// other, and for what one that was killed has left behind.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

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
  /// Leaves only what was made for this `setup` and need not be made anew of the `sources`.
  void Prepare(const std::string& setup, const std::vector<std::string>& sources);
  /// Removes objects that were made of other states of files than there are now, and then `executable`. To be
  /// called between the compiler and make.
  void DropOutdated(const std::string& executable) const;
  /// To be called when the programs that build have come to an end, whatever it was; what is started behind
  /// it does not hold the folder.
  void Settle() const;

 private:
  using States = std::map<std::string, std::string>;
  /// What a record tells of files, by kinds.
  struct Record {
    /// True for one that was written to its end.
    bool is_whole = false;
    std::string setup;
    /// Of the folder's own files; of those that make knows without rules for them; of those that objects were
    /// made of; of the suite's files.
    States made, used, read, sources;
  };

  static Record ReadRecord(const std::filesystem::path& file);
  bool Fits(const Record& record) const;
  /// What a record has to tell of the files as they are now; not whole where that cannot be known.
  Record Look() const;
  std::string StateRead(const std::string& name) const;
  void ReadOther(Record& record) const;
  void Clear(const std::string& extension) const;

  std::filesystem::path path_;
  int lock_;
  std::filesystem::file_time_type begin_;
  Record old_;
  std::string setup_;
  States sources_;
  /// Files in the folder that are not from here.
  std::set<std::string> foreign_;
};

}  // namespace run
