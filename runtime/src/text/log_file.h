// A file of the log, or one for each component. A file that grows beyond a size is renamed, with the next
// number behind its name, and begun anew.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lumos {

// Entries go to the file; false if it cannot be opened.
bool open_log_file(const std::string& path);
// Entries go to "<component>.log" in the folder, which is made if it does not exist.
bool open_log_folder(const std::string& path);
// 0 for no limit.
void set_log_size(size_t octets);
bool has_log_file();
// False where none is open; errno-style number of what was lost in lost_entries.
bool write_to_log_file(const std::string& component, const std::string& lines);
void close_log_files();
int lost_entries();
void note_lost_entries(int error);
// In a process of its own: what would go to files goes to the descriptor, for append_spooled_log to put there.
void spool_log(int descriptor);
void append_spooled_log(std::string_view text);

}  // namespace lumos
