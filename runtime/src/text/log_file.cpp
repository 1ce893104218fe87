#include "text/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include "text/row.h"
#include "value/kept_file.h"

namespace lumos {

namespace {

size_t largest = 0;
int lost = 0;

class LogFile;
// More are closed, and opened again when there is something to write: each component may have one.
constexpr size_t most_open = 64;
std::vector<LogFile*> open_ones;

class LogFile {
 public:
  // An absolute path, since code of the user may change the folder.
  explicit LogFile(const std::string& path, int how = O_TRUNC)
      : path_(std::filesystem::absolute(path)), is_there_(open(how)) {}
  // One without a name, which is not begun anew.
  explicit LogFile(const KeptFile& file) : file_(file), is_open_(true), is_there_(true) {}
  ~LogFile() { close(); }
  LogFile(const LogFile&) = delete;
  bool is_there() const { return is_there_; }
  const std::string& path() const { return path_; }
  void write(std::string_view lines) {
    if (largest && size_ && size_ + lines.size() > largest && file_.is_regular() && !path_.empty()) rotate();
    size_ += lines.size();
    waiting_.put(lines);
    if (waiting_.size() >= enough) flush();
  }
  void flush() {
    if (!waiting_.size()) return;
    std::string_view rest = waiting_.text();
    if (is_open_ ? !file_.find() : !open(O_APPEND)) lose(rest);
    while (!rest.empty()) {
      const ssize_t n = ::write(file_.descriptor(), rest.data(), rest.size());
      if (n >= 0) rest.remove_prefix(static_cast<size_t>(n));
      if (n < 0 && errno != EINTR) lose(rest);
    }
    waiting_.clear();
  }
  void close() {
    flush();
    if (is_open_ && file_.is_there() && ::close(file_.descriptor()) != 0) note_lost_entries(errno);
    is_open_ = false;
    std::erase(open_ones, this);
  }

 private:
  static constexpr size_t enough = 1 << 16;

  static void lose(std::string_view& rest) {
    note_lost_entries(errno);
    rest = {};
  }
  bool open(int how) {
    while (open_ones.size() >= most_open) open_ones.back()->close();
    int descriptor;
    while ((descriptor = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0666)) < 0) {
      if (errno != EMFILE || open_ones.empty()) return false;
      open_ones.back()->close();
    }
    file_ = KeptFile(descriptor);
    is_open_ = true;
    open_ones.push_back(this);
    return true;
  }
  void rotate() {
    close();
    const bool is_moved = std::rename(path_.c_str(), (path_ + "." + std::to_string(++number_)).c_str()) == 0;
    if (!is_moved) note_lost_entries(errno);
    if (!open(is_moved ? O_TRUNC : O_APPEND)) note_lost_entries(errno);
    size_ = 0;
  }

  std::string path_;
  KeptFile file_;
  bool is_open_ = false;
  const bool is_there_;
  size_t size_ = 0;
  unsigned number_ = 0;
  Row waiting_;
};

std::unique_ptr<LogFile> the_file;
std::string folder;
std::map<std::string, std::unique_ptr<LogFile>> files;  // by their names
std::map<std::string, LogFile*, std::less<>> files_of;  // by component
std::unique_ptr<LogFile> spool;                         // of a process of its own
LogBox* waiting = nullptr;
int how_to_open = O_TRUNC;

// A name of a component may be any text of any length.
std::string file_name(std::string_view component) {
  constexpr size_t longest = 200;
  std::string name(component.empty() ? "suite" : component.substr(0, longest));
  for (char& c : name)
    if (c == '/' || c == '\0') c = '_';
  return folder + "/" + name + ".log";
}

LogFile& file_of(std::string_view component) {
  if (const auto known = files_of.find(component); known != files_of.end()) return *known->second;
  const std::string name = file_name(component);
  std::unique_ptr<LogFile>& file = files[name];
  if (!file) {
    file = std::make_unique<LogFile>(name, how_to_open);
    if (!file->is_there()) note_lost_entries(errno);
  }
  return *(files_of[std::string(component)] = file.get());
}

// What waits or is spooled begins with this, and then come the texts.
struct SpooledHead {
  size_t component, lines;  // sizes
  size_t all() const { return sizeof *this + component + lines; }
};

// What another process left behind may be cut off.
template <class Act>
void each_spooled(std::string_view text, Act act) {
  for (SpooledHead head; text.size() >= sizeof head;) {
    std::memcpy(&head, text.data(), sizeof head);
    text.remove_prefix(sizeof head);
    const std::string_view component = text.substr(0, head.component);
    text.remove_prefix(component.size());
    const std::string_view lines = text.substr(0, head.lines);
    text.remove_prefix(lines.size());
    act(component, lines);
  }
}

void write_spooled(std::string_view text) {
  if (spool) {
    spool->write(text);
    return spool->flush();
  }
  std::vector<LogFile*> written;
  each_spooled(text, [&](std::string_view component, std::string_view lines) {
    if (the_file) the_file->write(lines);
    if (folder.empty()) return;
    LogFile& file = file_of(component);
    file.write(lines);
    if (written.empty() || written.back() != &file) written.push_back(&file);
  });
  if (the_file) the_file->flush();
  for (LogFile* file : written) file->flush();
}

void put_spooled(char* place, const SpooledHead& head, std::string_view component, std::string_view lines) {
  std::memcpy(place, &head, sizeof head);
  written(written(place + sizeof head, component), lines);
}

}  // namespace

constexpr size_t log_box_size = 1 << 16;

struct LogBox::Contents {
  std::atomic<size_t> used;
  char data[log_box_size];
};

LogBox::LogBox() = default;
LogBox::~LogBox() = default;

std::string_view LogBox::text() const {
  if (!shared_) return {};
  return {shared_->data, std::min<size_t>(shared_->used, log_box_size)};
}

bool LogBox::put(std::string_view component, std::string_view lines) {
  const SpooledHead head{component.size(), lines.size()};
  const size_t used = text().size();
  if (!shared_ || head.all() > log_box_size - used) return false;
  put_spooled(shared_->data + used, head, component, lines);
  shared_->used.store(used + head.all(), std::memory_order_release);
  return true;
}

void LogBox::clear() {
  if (shared_) shared_->used = 0;
}

bool open_log_file(const std::string& path) {
  close_log_files();
  the_file = std::make_unique<LogFile>(path);
  if (the_file->is_there()) return true;
  the_file.reset();
  return false;
}

bool open_log_folder(const std::string& path) {
  struct stat status;
  if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) return false;
  if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || access(path.c_str(), W_OK) != 0)
    return false;
  folder = std::filesystem::absolute(path);
  return true;
}

void set_log_size(size_t octets) {
  largest = octets;
}

bool has_log_file() {
  return the_file || !folder.empty();
}

bool write_to_log_file(std::string_view component, std::string_view lines) {
  if (!has_log_file()) return false;
  if (!spool && !folder.empty()) file_of(component);  // begun now, so that another process may go on with it
  if (waiting && waiting->put(component, lines)) return true;
  flush_log();
  if (waiting && waiting->put(component, lines)) return true;
  const SpooledHead head{component.size(), lines.size()};
  std::string entry(head.all(), '\0');
  put_spooled(entry.data(), head, component, lines);
  write_spooled(entry);
  return true;
}

void let_log_wait(LogBox* box) {
  waiting = box;
}

void flush_log() {
  if (!waiting || waiting->text().empty()) return;
  write_spooled(waiting->text());
  waiting->clear();
}

// How often the other one began its files anew is not known here.
void write_rest_of_log(const LogBox& box) {
  how_to_open = O_APPEND;
  if (largest && the_file) the_file = std::make_unique<LogFile>(the_file->path(), how_to_open);
  largest = 0;
  write_spooled(box.text());
  how_to_open = O_TRUNC;
}

void close_log_files() {
  flush_log();
  the_file.reset();
  files.clear();
  files_of.clear();
}

int lost_entries() {
  return lost;
}

void note_lost_entries(int error) {
  if (!lost) lost = error;
}

void spool_log(const KeptFile& file) {
  if (has_log_file()) spool = std::make_unique<LogFile>(file);
}

void append_spooled_log(std::string_view text) {
  each_spooled(text, write_to_log_file);
}

}  // namespace lumos
