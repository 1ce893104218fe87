// A file of the log, or one for each component. A file that grows beyond a size is renamed, with the next
// number behind its name, and begun anew. Entries may wait for each other in memory that processes share, so
// that what one leaves behind that ends at once is written by another.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "value/kept_file.h"
#include "value/shared.h"

namespace lumos {

// Entries go to the file; false if it cannot be opened.
bool open_log_file(const std::string& path);
// Entries go to "<component>.log" in the folder, which is made if it does not exist; those of components
// whose names make the same name of a file go to one.
bool open_log_folder(const std::string& path);
// 0 for no limit.
void set_log_size(size_t octets);
bool has_log_file();
// False where none is open; errno-style number of what was lost in lost_entries.
bool write_to_log_file(std::string_view component, std::string_view lines);
void close_log_files();
int lost_entries();
void note_lost_entries(int error);

// Entries that wait, each with its component, in the form of what is spooled. To be made before the processes
// part; without memory nothing waits.
class LogBox {
 public:
  LogBox();
  ~LogBox();
  LogBox(const LogBox&) = delete;
  // Good until something is put.
  std::string_view text() const;
  // False where there is no room.
  bool put(std::string_view component, std::string_view lines);
  void clear();

 private:
  struct Contents;
  Shared<Contents> shared_;
};
// From now on entries wait there until it is full, the log is flushed, or its files are closed; null for
// none.
void let_log_wait(LogBox* box);
void flush_log();
// Behind what another process wrote that has ended now.
void write_rest_of_log(const LogBox& box);
// In a process of its own: what would go to files goes to this one, for append_spooled_log to put
// there.
void spool_log(const KeptFile& file);
void append_spooled_log(std::string_view text);

}  // namespace lumos
