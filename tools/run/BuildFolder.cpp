#include "run/BuildFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "run/FileStates.h"

namespace run {

namespace {

using std::filesystem::path;
using Entry = std::filesystem::directory_entry;

constexpr const char* kLock = "orvane-run.lock";
constexpr const char* kRecord = "orvane-run.record";
/// Stands behind the setup of a record, and at its end.
constexpr const char* kFiles = "=== files ===\n";
constexpr const char* kEnd = "=== end ===\n";
/// Files with what a compiler knows of an object's sources.
constexpr const char* kRules = ".d";

/// The entries of a folder; they may be removed meanwhile.
std::vector<Entry> Entries(const path& folder) {
  return {std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()};
}

bool IsOwnFile(const Entry& entry) {
  const path name = entry.path().filename();
  return name != kLock && name != kRecord;
}

/// The files that a word of a makefile may name; a library lies in one of the folders that other words name.
std::vector<std::string> PlacesOf(const std::string& word, const std::vector<std::string>& words) {
  if (!word.starts_with("-l")) return {word};
  std::vector<std::string> places;
  for (const std::string& folder : words)
    if (folder.starts_with("-L"))
      for (const char* extension : {".so", ".a"})
        places.push_back(folder.substr(2) + "/lib" + word.substr(2) + extension);
  return places;
}

/// True when a file changed within the second of its last change: stamps of the compiler do not tell that.
bool ChangedWithinSecond(const std::string& before, const std::string& now) {
  return before != now && before.substr(0, before.find(':')) == now.substr(0, now.find(':'));
}

}  // namespace

// The lock is the first file that is made.
BuildFolder::BuildFolder(const std::filesystem::path& path) : path_(path), lock_(-1) {
  std::error_code error, not_made;
  std::filesystem::create_directories(path_, not_made);
  const std::filesystem::path lock = path_ / kLock;
  if (!std::filesystem::is_empty(path_, error) && !error && !exists(symlink_status(lock, error)) &&
      !exists(symlink_status(path_ / kRecord, error)))
    throw path_.string() + " holds something else; name an empty folder with -d";
  lock_ = open(lock.c_str(), O_RDWR | O_CREAT, 0666);
  if (lock_ < 0 || flock(lock_, LOCK_EX) != 0)
    throw "cannot build in " + path_.string() + ": " +
        (not_made ? not_made.message() : std::strerror(errno)) + "; remove it or name another folder with -d";
}

BuildFolder::~BuildFolder() {
  close(lock_);
}

BuildFolder::Record BuildFolder::ReadRecord(const std::filesystem::path& file) {
  Record record;
  const std::string text = ReadFile(file);
  const size_t files = text.find(kFiles);
  if (files == std::string::npos || !text.ends_with(kEnd)) return record;
  record.setup = text.substr(0, files);
  std::istringstream lines(text.substr(files + std::strlen(kFiles)));
  std::string kind, state, name;
  while (lines >> kind >> state && lines.get() == ' ' && std::getline(lines, name)) {
    States& states = kind == "made"   ? record.made
                     : kind == "used" ? record.used
                     : kind == "read" ? record.read
                                      : record.sources;
    states[name] = state;
  }
  record.is_whole = true;
  return record;
}

bool BuildFolder::Fits(const Record& record) const {
  for (const auto& [name, state] : record.made)
    if (StateOfEntry(path_ / name) != state) return false;
  for (const auto& [name, state] : record.used)
    if (StateOf(path_ / name) != state) return false;
  return record.setup == setup_;
}

void BuildFolder::Prepare(const std::string& setup, const std::vector<std::string>& sources) {
  begin_ = std::filesystem::file_time_type::clock::now();
  setup_ = setup;
  for (const std::string& source : sources) sources_[source] = StateOf(source);
  old_ = ReadRecord(path_ / kRecord);
  std::filesystem::remove_all(path_ / kRecord);
  if (old_.is_whole)
    for (const Entry& entry : Entries(path_))
      if (const std::string name = entry.path().filename().string(); !old_.made.contains(name))
        foreign_.insert(name);
  if (!Fits(old_)) {
    Clear("");
    old_ = {};
  }
  for (const auto& [name, state] : sources_)
    if (ChangedWithinSecond(old_.sources[name], state)) return Clear(".t3a");
}

void BuildFolder::Clear(const std::string& extension) const {
  for (const Entry& entry : Entries(path_)) {
    const std::filesystem::path& file = entry.path();
    if (IsOwnFile(entry) && !foreign_.contains(file.filename().string()) &&
        (extension.empty() || file.extension() == extension))
      std::filesystem::remove_all(file);
  }
}

void BuildFolder::DropOutdated(const std::string& executable) const {
  const auto changed = [&](const std::string& name) {
    const auto place = old_.read.find(name);
    return place == old_.read.end() || place->second != StateOf(path_ / name);
  };
  for (const Entry& entry : Entries(path_)) {
    if (entry.path().extension() != kRules || foreign_.contains(entry.path().filename().string())) continue;
    const std::vector<std::string> words = MakeWords(ReadFile(entry));
    if (words.empty() || std::none_of(words.begin() + 1, words.end(), changed)) continue;
    for (const std::filesystem::path& file : {path_ / words.front(), path_ / executable, entry.path()})
      std::filesystem::remove(file);
  }
}

// What the makefile names without rules for it: objects, libraries, other makefiles. Sources without rules
// are those that could not be compiled.
void BuildFolder::ReadOther(Record& record) const {
  std::set<std::string> sources;
  for (const auto& [name, state] : sources_) sources.insert(state);
  const std::vector<std::string> words = MakeWords(ReadFile(path_ / "makefile"));
  std::error_code error;
  for (const std::string& word : std::set<std::string>(words.begin(), words.end()))
    for (const std::string& place : PlacesOf(word, words))
      if (place.find('/') != std::string::npos && !record.read.contains(place) &&
          is_regular_file(path_ / place, error) && !sources.contains(StateOf(path_ / place)))
        record.used[place] = StateOf(path_ / place);
}

// A file that changed while it was read may have been read before that.
std::string BuildFolder::StateRead(const std::string& name) const {
  std::error_code error;
  const bool is_own = name.find('/') == std::string::npos;
  return is_own || last_write_time(path_ / name, error) < begin_ ? StateOf(path_ / name) : "changing";
}

BuildFolder::Record BuildFolder::Look() const {
  Record record;
  record.is_whole = true;
  for (const Entry& entry : Entries(path_)) {
    const std::string name = entry.path().filename().string();
    if (!IsOwnFile(entry) || foreign_.contains(name)) continue;
    record.made[name] = StateOfEntry(entry);
    if (entry.path().extension() != kRules) continue;
    const std::string rules = ReadFile(entry);
    record.is_whole = record.is_whole && AreRulesWhole(rules);
    const std::vector<std::string> words = MakeWords(rules);
    for (size_t i = 1; i < words.size(); ++i) record.read[words[i]] = StateRead(words[i]);
  }
  ReadOther(record);
  return record;
}

void BuildFolder::Settle() const {
  fcntl(lock_, F_SETFD, FD_CLOEXEC);
  const Record record = Look();
  if (!record.is_whole) return;
  std::ofstream out(path_ / kRecord, std::ios::binary);
  out << setup_ << kFiles;
  const auto write = [&](const char* kind, const States& states) {
    for (const auto& [name, state] : states) out << kind << " " << state << " " << name << "\n";
  };
  write("made", record.made);
  write("used", record.used);
  write("read", record.read);
  write("source", sources_);
  out << kEnd;
}

}  // namespace run
