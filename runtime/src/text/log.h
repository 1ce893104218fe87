// The log: one line for each entry, to standard error or a file. An entry has a kind, the
// task and the place in the source where it arose. Kinds are chosen by the user.
#pragma once

#include <string>
#include <string_view>

#include "lumos.h"

namespace lumos {

constexpr unsigned log_kind_count = 6;
extern bool enabled_log_kinds[log_kind_count];
inline bool log_enabled(lumo_log_message_kind_t kind) {
  return static_cast<unsigned>(kind) < log_kind_count && enabled_log_kinds[kind];
}
// Whether entries of the kind are seen on standard error.
// Whether a module has told that it has no control part, which it does when that is run.
extern bool control_part_is_missing;

bool log_shows(lumo_log_message_kind_t kind);
// Why entries were lost; null while all were written.
const char* log_failure();
void log_line(lumo_log_message_kind_t kind, std::string_view text);
// An empty text to put what is logged together in: always the same one, which has its room.
std::string& log_text();
void log_format(lumo_log_message_kind_t kind, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Chooses what is logged from a list such as "info,error" or "all"; false for an unknown word.
bool set_log_kinds(std::string_view list);
// Entries are dropped; the first error among them is kept in the text. Null ends it.
void mute_log(std::string* first_error);
// A line that stands below the log on a terminal, as far as there is room, and is drawn again behind each
// entry; empty for none.
void set_log_footer(const std::string& line);
// Takes away what another process has left there that has ended.
void erase_log_footer();
// text, columns or json; false for another word.
bool set_log_form(std::string_view name);
void set_log_times(bool on);
// Told of each entry that is written; null tells nobody.
extern void (*events_of_log)(std::string_view kind, std::string_view text);
// Also keeps entries in a text, for tools that watch a run; null ends it.
void capture_log(std::string* into);

}  // namespace lumos
