#include "text/log.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "text/log_file.h"
#include "text/row.h"
#include "value/hooks.h"
#include "value/task.h"
#include "value/value.h"

namespace lumos {

bool control_part_is_missing = false;

bool enabled_log_kinds[log_kind_count] = {true, true, true, true, false, false};

namespace {

constexpr std::string_view kind_names[log_kind_count] = {"info",  "ttcn3", "warning",
                                                         "error", "debug", "event"};

const char erase_line[] = "\r\033[K";

bool with_times = true;
std::string* captured = nullptr;
std::string footer;
enum class LogForm { text, columns, json };
std::string* muted = nullptr;
LogForm form = LogForm::text;
Row entry;  // the one that is put together

// The time in seconds, whose text serves all entries of a second.
std::string_view text_of_second(time_t seconds) {
  static time_t known = -1;
  static char text[] = "0000-00-00 00:00:00";
  if (seconds == known) return text;
  tm parts;
  localtime_r(&seconds, &parts);
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  known = seconds;
  return text;
}

void put_time(bool with_date) {
  constexpr size_t date = sizeof "0000-00-00";
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  entry.put(text_of_second(now.tv_sec).substr(with_date ? 0 : date));
  entry.put_fraction(static_cast<uint32_t>(now.tv_nsec / 1000));
}

// Generated code always gives the same text of a file.
const std::string& name_of_file(const char* file) {
  static const char* known = nullptr;
  static auto& name = *new std::string;
  if (file != known) name = line_text(base_name(file)) + ":";
  known = file;
  return name;
}

void put_text_entry(std::string_view kind, std::string_view text) {
  if (with_times) {
    put_time(false);
    entry.put(' ');
  }
  const std::string_view name = current_task->name;
  const Frame* frame = current_task->frames.empty() ? nullptr : &current_task->frames.back();
  const std::string_view file = frame ? std::string_view(name_of_file(frame->file)) : "";
  char* at =
      entry.room(kind.size() + line_room(name.size()) + file.size() + number_room + line_room(text.size()));
  at = written(at, kind);
  *at++ = ' ';
  if (!name.empty()) {
    at = write_line(at, name);
    *at++ = ' ';
  }
  if (frame) {
    at = write_number(written(at, file), frame->line);
    *at++ = ' ';
  }
  at = write_line(at, text);
  *at++ = '\n';
  entry.end_at(at);
}

// What was put behind the beginning as a column: of what is too long the end is kept, which tells more.
void end_column(size_t begin, size_t width) {
  if (entry.size() - begin > width) entry.keep_end(begin, width);
  entry.put_spaces(begin + width + 1 - entry.size());
}

void put_columns_entry(std::string_view kind, std::string_view text) {
  if (with_times) {
    put_time(true);
    entry.put(' ');
  }
  size_t begin = entry.size();
  entry.put(kind);
  end_column(begin, 7);
  begin = entry.size();
  entry.put_line(*current_task->name ? current_task->name : "-");
  end_column(begin, 10);
  begin = entry.size();
  if (current_task->frames.empty()) {
    entry.put('-');
  } else {
    entry.put(name_of_file(current_task->frames.back().file));
    entry.put_number(current_task->frames.back().line);
  }
  end_column(begin, 24);
  entry.put_line(text);
  entry.put('\n');
}

void put_json_entry(std::string_view kind, std::string_view text) {
  entry.put('{');
  if (with_times) {
    entry.put("\"time\":\"");
    put_time(true);
    entry.put("\",");
  }
  entry.put("\"kind\":\"");
  entry.put(kind);
  entry.put('"');
  if (*current_task->name) {
    entry.put(",\"component\":");
    entry.put_json(current_task->name);
  }
  if (!current_task->frames.empty()) {
    entry.put(",\"file\":");
    entry.put_json(current_task->frames.back().file);
    entry.put(",\"line\":");
    entry.put_number(current_task->frames.back().line);
  }
  entry.put(",\"text\":");
  entry.put_json(text);
  entry.put("}\n");
}

std::string list_text(lumo_value_t values[]) {
  std::string text;
  for (size_t i = 0; values && values[i]; ++i) text += render_plain(values[i]);
  return text;
}

void write_entry() {
  const std::string_view lines = entry.text();
  if (write_to_log_file(current_task->name, lines)) return;
  const std::string text = footer.empty() ? std::string() : erase_line + std::string(lines) + footer;
  const std::string_view shown = footer.empty() ? lines : text;
  errno = 0;
  if (std::fwrite(shown.data(), 1, shown.size(), stderr) != shown.size())
    note_lost_entries(errno ? errno : EIO);
}

// A line that is wider would go on in the next, where it is not taken away.
std::string cut_to_terminal(const std::string& line) {
  winsize size;
  if (line.empty() || ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || !size.ws_col) return line;
  return line.substr(0, size.ws_col - 1u);
}

const char* name_of(lumo_value_t value) {
  return value->label ? value->label : "value";
}

void alt_event(const char* text) {
  if (log_enabled(lumo_log_msg_event_c)) log_line(lumo_log_msg_event_c, text);
}

}  // namespace

bool log_shows(lumo_log_message_kind_t kind) {
  return muted || (log_enabled(kind) && !has_log_file());
}

const char* log_failure() {
  return lost_entries() ? std::strerror(lost_entries()) : nullptr;
}

void set_log_footer(const std::string& line) {
  const std::string shown = cut_to_terminal(line);
  if (shown == footer) return;
  footer = shown;
  erase_log_footer();
  std::fwrite(footer.data(), 1, footer.size(), stderr);
}

void erase_log_footer() {
  std::fputs(erase_line, stderr);
}

void (*events_of_log)(std::string_view kind, std::string_view text) = nullptr;

void log_line(lumo_log_message_kind_t kind, std::string_view text) {
  if (muted) {
    if (kind == lumo_log_msg_error_c && muted->empty()) *muted = text;
    return;
  }
  if (!log_enabled(kind)) return;
  entry.clear();
  (form == LogForm::text      ? put_text_entry
   : form == LogForm::columns ? put_columns_entry
                              : put_json_entry)(kind_names[kind], text);
  write_entry();
  if (captured) *captured += entry.text();
  if (events_of_log) events_of_log(kind_names[kind], text);
}

std::string& log_text() {
  static auto& text = *new std::string;
  text.clear();
  return text;
}

void log_format(lumo_log_message_kind_t kind, const char* format, ...) {
  if (!log_enabled(kind)) return;
  char text[2048];
  va_list list;
  va_start(list, format);
  std::vsnprintf(text, sizeof text, format, list);
  va_end(list);
  log_line(kind, text);
}

bool set_log_kinds(std::string_view list) {
  bool chosen[log_kind_count] = {};
  while (!list.empty()) {
    size_t comma = list.find(',');
    std::string_view word = list.substr(0, comma);
    bool known = word == "all" || word == "none" || word.empty();
    for (unsigned i = 0; i < log_kind_count; ++i) {
      if (word != "all" && word != kind_names[i]) continue;
      chosen[i] = true;
      known = true;
    }
    if (!known) return false;
    if (comma == std::string_view::npos) break;
    list.remove_prefix(comma + 1);
  }
  std::memcpy(enabled_log_kinds, chosen, sizeof chosen);
  return true;
}

void mute_log(std::string* first_error) {
  muted = first_error;
}

bool set_log_form(std::string_view name) {
  if (name != "text" && name != "columns" && name != "json") return false;
  form = name == "text" ? LogForm::text : name == "columns" ? LogForm::columns : LogForm::json;
  return true;
}

void set_log_times(bool on) {
  with_times = on;
}

void capture_log(std::string* into) {
  captured = into;
}

}  // namespace lumos

using namespace lumos;

void lumo_log_string(lumo_log_message_kind_t kind, const char* text, lumo_context_t) {
  log_line(kind, text);
}

void lumo_log_string_to_all(lumo_log_message_kind_t kind, const char* text, lumo_context_t) {
  if (!std::strcmp(text, "module has no control part - exiting")) control_part_is_missing = true;
  log_line(kind, text);
}

void lumo_log_list_to_all(lumo_log_message_kind_t kind, lumo_value_t values[], lumo_context_t) {
  if (log_enabled(kind)) log_line(kind, list_text(values));
}

void lumo_log(lumo_value_t values[], lumo_context_t context) {
  lumo_log_list_to_all(lumo_log_msg_ttcn3_c, values, context);
}

void lumo_log_variable_modified_event(lumo_value_t value, lumo_context_t) {
  if (!log_enabled(lumo_log_msg_debug_c)) return;
  std::string& text = log_text();
  text += name_of(value);
  text += " := ";
  render_to(text, value);
  log_line(lumo_log_msg_debug_c, text);
}

void lumo_log_element_modified_event(lumo_value_t value, unsigned long index, lumo_context_t) {
  if (!log_enabled(lumo_log_msg_debug_c)) return;
  std::string& text = log_text();
  text += name_of(value);
  text += '[';
  append_number(text, index);
  text += "] changed: ";
  render_to(text, value);
  log_line(lumo_log_msg_debug_c, text);
}

void lumo_log_alt_entered_event(lumo_context_t) {
  if (!current_task->attempts.empty()) end_attempts(*current_task);
  if (current_task->called.signature || !current_task->calls.empty()) hooks.enter_alternatives(*current_task);
  alt_event("alt entered");
}
void lumo_log_alt_left_event(lumo_context_t) {
  if (!current_task->attempts.empty()) leave_attempts(*current_task);
  if (!current_task->calls.empty()) hooks.end_calls(*current_task);
  alt_event("alt left");
}
void lumo_log_alt_rejected_event(lumo_context_t) {
  alt_event("alternative rejected by its guard");
}
void lumo_log_alt_else_event(lumo_context_t) {
  alt_event("else branch taken");
}
void lumo_log_alt_defaults_event(lumo_context_t) {
  alt_event("trying defaults");
}
void lumo_log_alt_repeat_event(lumo_context_t) {
  alt_event("alt repeated");
}
void lumo_log_alt_wait_event(lumo_context_t) {
  alt_event("alt waits");
}
