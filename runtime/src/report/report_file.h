// The file of a report: written beside its place and renamed when it is complete, so that a run that is
// killed leaves the old report or none. A place that is no regular file, such as a pipe, or that the system has
// made, such as /dev/fd/3, is written to directly.
#pragma once

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

// So many octets are worth a call.
constexpr size_t enough_rows = 1 << 17;

class ReportFile {
 public:
  // is_open tells whether it could be opened.
  explicit ReportFile(const std::string& path);
  ~ReportFile();
  ReportFile(const ReportFile&) = delete;
  bool is_open() const { return file_ != nullptr; }
  void write(std::string_view text);
  // And clears them, if they have at least so many octets.
  void write_rows(Row& rows, size_t least = 0) {
    if (rows.size() < least) return;
    write(rows.text());
    rows.clear();
  }
  void format(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Puts the file in its place. A failure is told on standard error, and reports_failed() says so.
  void complete();

 private:
  void fail();
  std::string path_, place_, beside_;
  FILE* file_ = nullptr;
  bool is_owned_ = false, is_failed_ = false;
  bool is_begun_ = false;  // the first piece is written at once: what cannot be written is told at the start
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
