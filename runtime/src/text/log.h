// The log: one line for each entry, to standard error or a file. An entry has a kind, the
// task and the place in the source where it arose. Kinds are chosen by the user.
#pragma once

#include <string>
#include <string_view>

#include "lumos.h"

namespace lumos {

bool log_enabled(lumo_log_message_kind_t kind);
void log_line(lumo_log_message_kind_t kind, std::string_view text);
void log_format(lumo_log_message_kind_t kind, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Chooses what is logged from a list such as "info,error" or "all"; false for an unknown word.
bool set_log_kinds(std::string_view list);
// False if the file cannot be opened. Entries go to standard error without a file.
bool open_log(const std::string& path);
void close_log();
void set_log_times(bool on);
// Also keeps entries in a text, for tools that watch a run; null ends it.
void capture_log(std::string* into);

}  // namespace lumos
