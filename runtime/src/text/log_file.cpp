#include "text/log_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>

namespace lumos {

namespace {

size_t largest = 0;
int lost = 0;

class LogFile {
 public:
  explicit LogFile(const std::string& path, const char* mode = "we")
      : path_(path), file_(std::fopen(path.c_str(), mode)) {}
  // One that does not grow too large.
  explicit LogFile(int descriptor) : file_(fdopen(descriptor, "w")) {}
  ~LogFile() {
    if (file_ && std::fclose(file_) != 0) note_lost_entries(errno);
  }
  LogFile(const LogFile&) = delete;
  bool is_open() const { return file_ != nullptr; }
  const std::string& path() const { return path_; }
  void write(std::string_view lines) {
    if (largest && size_ && size_ + lines.size() > largest && !path_.empty()) rotate();
    size_ += lines.size();
    errno = 0;
    if (!file_ || std::fwrite(lines.data(), 1, lines.size(), file_) != lines.size()) tell_loss();
  }
  void flush() {
    errno = 0;
    if (file_ && std::fflush(file_) != 0) tell_loss();
  }

 private:
  static void tell_loss() { note_lost_entries(errno ? errno : EIO); }
  void rotate() {
    flush();
    if (file_) std::fclose(file_);
    std::rename(path_.c_str(), (path_ + "." + std::to_string(++number_)).c_str());
    file_ = std::fopen(path_.c_str(), "we");
    size_ = 0;
  }
  std::string path_;
  FILE* file_ = nullptr;
  size_t size_ = 0;
  unsigned number_ = 0;
};

std::unique_ptr<LogFile> the_file;
std::string folder;
std::map<std::string, std::unique_ptr<LogFile>> files;  // by component
std::unique_ptr<LogFile> spool;                         // of a process of its own
LogBox* waiting = nullptr;
const char* mode_of_new = "we";

// The component, its end, and the size and text of the entries.
std::string spooled(const std::string& component, const std::string& lines) {
  const uint64_t size = lines.size();
  return std::string(component.c_str()) + '\0' +
         std::string(reinterpret_cast<const char*>(&size), sizeof size) + lines;
}

// A name of a component may be any text.
std::string file_name(const std::string& component) {
  std::string name = component.empty() ? "suite" : component;
  for (char& c : name)
    if (c == '/' || c == '\0') c = '_';
  return folder + "/" + name + ".log";
}

LogFile& file_of(const std::string& component) {
  std::unique_ptr<LogFile>& file = files[component];
  if (!file) file = std::make_unique<LogFile>(file_name(component), mode_of_new);
  return *file;
}

void each_spooled(std::string_view text,
                  const std::function<void(const std::string& component, std::string_view lines)>& act) {
  for (uint64_t size; !text.empty(); text.remove_prefix(size)) {
    const std::string component(text.substr(0, text.find('\0')));
    text.remove_prefix(std::min(text.size(), component.size() + 1));
    if (text.size() < sizeof size) return;
    std::memcpy(&size, text.data(), sizeof size);
    text.remove_prefix(sizeof size);
    size = std::min<uint64_t>(size, text.size());
    act(component, text.substr(0, size));
  }
}

void write_spooled(std::string_view text) {
  if (spool) {
    spool->write(text);
    return spool->flush();
  }
  each_spooled(text, [](const std::string& component, std::string_view lines) {
    if (the_file) the_file->write(lines);
    if (!folder.empty()) file_of(component).write(lines);
  });
  if (the_file) the_file->flush();
  for (auto& [component, file] : files) file->flush();
}

}  // namespace

constexpr size_t log_box_size = 1 << 16;

struct LogBox::Shared {
  std::atomic<size_t> used;
  char data[log_box_size];
};

LogBox::LogBox() {
  void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  shared_ = memory == MAP_FAILED ? nullptr : new (memory) Shared;
}

LogBox::~LogBox() {
  if (shared_) munmap(static_cast<void*>(shared_), sizeof(Shared));
}

std::string_view LogBox::text() const {
  if (!shared_) return {};
  return {shared_->data, std::min<size_t>(shared_->used, log_box_size)};
}

bool LogBox::put(std::string_view entry) {
  const size_t used = text().size();
  if (!shared_ || entry.size() > log_box_size - used) return false;
  std::memcpy(shared_->data + used, entry.data(), entry.size());
  shared_->used.store(used + entry.size(), std::memory_order_release);
  return true;
}

void LogBox::clear() {
  if (shared_) shared_->used = 0;
}

bool open_log_file(const std::string& path) {
  close_log_files();
  the_file = std::make_unique<LogFile>(path);
  if (the_file->is_open()) return true;
  the_file.reset();
  return false;
}

bool open_log_folder(const std::string& path) {
  struct stat status;
  if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) return false;
  if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || access(path.c_str(), W_OK) != 0)
    return false;
  folder = path;
  return true;
}

void set_log_size(size_t octets) {
  largest = octets;
}

bool has_log_file() {
  return the_file || !folder.empty();
}

bool write_to_log_file(const std::string& component, const std::string& lines) {
  if (!has_log_file()) return false;
  if (!spool && !folder.empty()) file_of(component);  // begun now, so that another process may go on with it
  const std::string entry = spooled(component, lines);
  if (waiting && waiting->put(entry)) return true;
  flush_log();
  if (!waiting || !waiting->put(entry)) write_spooled(entry);
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
  mode_of_new = "ae";
  if (largest && the_file) the_file = std::make_unique<LogFile>(the_file->path(), mode_of_new);
  largest = 0;
  write_spooled(box.text());
  mode_of_new = "we";
}

void close_log_files() {
  flush_log();
  the_file.reset();
  files.clear();
}

int lost_entries() {
  return lost;
}

void note_lost_entries(int error) {
  if (!lost) lost = error;
}

void spool_log(int descriptor) {
  if (has_log_file()) spool = std::make_unique<LogFile>(descriptor);
}

void append_spooled_log(std::string_view text) {
  each_spooled(text, [](const std::string& component, std::string_view lines) {
    write_to_log_file(component, std::string(lines));
  });
}

}  // namespace lumos
