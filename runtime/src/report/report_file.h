// The file of a report: written beside its place and renamed when it is complete, so that a run that is
// killed leaves the old report or none. A place that is no regular file, such as a pipe, or that the system has
// made, such as /dev/fd/3, is written to directly.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "text/row.h"
#include "text/text_forms.h"

namespace lumos {

// An empty path, "-", or the device of that name.
bool is_standard_output(const std::string& path);

bool is_special_place(const std::string& path);
// Where the file of that name is, or would be.
std::string place_behind_links(const std::string& path);

class ReportFile {
 public:
  // is_open tells whether it could be opened.
  explicit ReportFile(const std::string& path);
  ~ReportFile();
  ReportFile(const ReportFile&) = delete;
  bool is_open() const { return descriptor_ >= 0; }
  // What was put there goes to the file with the next call of write or pass_on.
  Row& rows() { return rows_; }
  // Writes what waits, as soon as it is worth a call.
  void pass_on() {
    if (!is_begun_ || rows_.size() >= enough) write_waiting();
  }
  void write(std::string_view text) {
    rows_.put(text);
    pass_on();
  }
  void format(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Puts the file in its place. A failure is told on standard error, and reports_failed() says so.
  void complete();

 private:
  static constexpr size_t enough = 1 << 17;
  void write_waiting();
  void write_out(size_t size);
  void put_in_place();
  void fail();
  std::string path_, place_, beside_;
  int descriptor_ = -1, signals_ = 0;
  bool is_owned_ = false, is_failed_ = false;
  bool is_begun_ = false;  // the first piece is written at once: what cannot be written is told at the start
  Row rows_;
  uint64_t written_ = 0;
};

// What is to stand further down in a report. Where it becomes much it lies in a file, so that it takes no
// memory.
class StoredText {
 public:
  StoredText() = default;
  ~StoredText();
  StoredText(const StoredText&) = delete;
  void put(std::string_view text);
  void write_to(ReportFile& report);

 private:
  std::string text_;
  FILE* file_ = nullptr;
};

// Whether a report could not be written.
bool reports_failed();

}  // namespace lumos
