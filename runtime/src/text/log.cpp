#include "text/log.h"

#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "text/text_forms.h"
#include "text/log_file.h"
#include "value/hooks.h"
#include "value/task.h"
#include "value/value.h"

namespace lumos {

bool control_part_is_missing = false;

bool enabled_log_kinds[log_kind_count] = {true, true, true, true, false, false};

namespace {

const char* const kind_names[log_kind_count] = {"info", "ttcn3", "warning", "error", "debug", "event"};

const char erase_line[] = "\r\033[K";

bool with_times = true;
std::string* captured = nullptr;
std::string footer;
enum class LogForm { text, columns, json };
std::string* muted = nullptr;
LogForm form = LogForm::text;

// The format of a time in seconds, whose text serves all entries of a second.
std::string text_of_second(time_t seconds, const char* format) {
  static time_t known = -1;
  static const char* known_format = nullptr;
  static char text[32];
  if (seconds != known || format != known_format) {
    tm parts;
    localtime_r(&seconds, &parts);
    std::strftime(text, sizeof text, format, &parts);
    known = seconds;
    known_format = format;
  }
  return text;
}

std::string time_stamp(const char* format) {
  timeval now;
  gettimeofday(&now, nullptr);
  char fraction[] = ".000000";
  for (size_t i = sizeof fraction - 2; i > 0; --i, now.tv_usec /= 10)
    fraction[i] += static_cast<char>(now.tv_usec % 10);
  return text_of_second(now.tv_sec, format) + fraction;
}

std::string dated_time() {
  return time_stamp("%Y-%m-%d %H:%M:%S");
}

std::string place() {
  std::string text;
  if (*current_task->name) text = std::string(current_task->name) + " ";
  if (current_task->frames.empty()) return text;
  const Frame& frame = current_task->frames.back();
  const char* slash = std::strrchr(frame.file, '/');
  text += slash ? slash + 1 : frame.file;
  text += ":" + std::to_string(frame.line) + " ";
  return text;
}

// A line of the log stays one line, is text, and steers no terminal.
void append_escaped(std::string& line, std::string_view text) {
  const auto is_steering = [](unsigned char octet) { return (octet < ' ' && octet != '\t') || octet == 127; };
  if (std::none_of(text.begin(), text.end(), is_steering)) {
    line += text;
    return;
  }
  for (char c : text) {
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\r') {
      line += "\\r";
    } else if (is_steering(static_cast<unsigned char>(c))) {
      line += "\\x" + hex_text({&c, 1});
    } else {
      line += c;
    }
  }
}

std::string text_entry(const char* kind, std::string_view text) {
  std::string line = with_times ? time_stamp("%H:%M:%S") + " " : std::string();
  line += kind;
  line += ' ';
  line += place();
  append_escaped(line, text);
  return line += '\n';
}

// Always the same columns, as wide as most entries need them.
std::string columns_entry(const char* kind, std::string_view text) {
  std::string where = "-";
  if (!current_task->frames.empty()) {
    const Frame& frame = current_task->frames.back();
    const char* slash = std::strrchr(frame.file, '/');
    where = std::string(slash ? slash + 1 : frame.file) + ":" + std::to_string(frame.line);
  }
  char head[400];
  std::snprintf(head, sizeof head, "%-7s %-10s %-24s ", kind, *current_task->name ? current_task->name : "-",
                where.c_str());
  std::string line = with_times ? dated_time() + " " + head : head;
  append_escaped(line, text);
  return line += '\n';
}

std::string json_entry(const char* kind, std::string_view text) {
  std::string line = "{";
  if (with_times) line += "\"time\":\"" + dated_time() + "\",";
  line += std::string("\"kind\":\"") + kind + "\"";
  if (*current_task->name) line += ",\"component\":" + json_text(current_task->name);
  if (!current_task->frames.empty()) {
    const Frame& frame = current_task->frames.back();
    line += ",\"file\":" + json_text(frame.file) + ",\"line\":" + std::to_string(frame.line);
  }
  return line + ",\"text\":" + json_text(text) + "}\n";
}

std::string list_text(lumo_value_t values[]) {
  std::string text;
  for (size_t i = 0; values && values[i]; ++i) text += render_plain(values[i]);
  return text;
}

void write_entries(const std::string& lines) {
  if (write_to_log_file(current_task->name, lines)) return;
  const std::string text = footer.empty() ? lines : erase_line + lines + footer;
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stderr) != text.size()) note_lost_entries(errno ? errno : EIO);
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
  if (line == footer) return;
  footer = line;
  const std::string shown = erase_line + footer;
  std::fwrite(shown.data(), 1, shown.size(), stderr);
}

void (*events_of_log)(const char* kind, std::string_view text) = nullptr;

void log_line(lumo_log_message_kind_t kind, std::string_view text) {
  if (muted) {
    if (kind == lumo_log_msg_error_c && muted->empty()) *muted = text;
    return;
  }
  if (!log_enabled(kind)) return;
  std::string line = form == LogForm::text      ? text_entry(kind_names[kind], text)
                     : form == LogForm::columns ? columns_entry(kind_names[kind], text)
                                                : json_entry(kind_names[kind], text);
  write_entries(line);
  if (events_of_log) events_of_log(kind_names[kind], text);
  if (captured) *captured += line;
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
  std::string text = value->label ? value->label : "value";
  log_line(lumo_log_msg_debug_c, text + " := " + render(value));
}

void lumo_log_element_modified_event(lumo_value_t value, unsigned long index, lumo_context_t) {
  if (!log_enabled(lumo_log_msg_debug_c)) return;
  std::string text = value->label ? value->label : "value";
  log_line(lumo_log_msg_debug_c, text + "[" + std::to_string(index) + "] changed: " + render(value));
}

void lumo_log_alt_entered_event(lumo_context_t) {
  if (current_task->called.signature || !current_task->calls.empty()) hooks.enter_alternatives(*current_task);
  alt_event("alt entered");
}
void lumo_log_alt_left_event(lumo_context_t) {
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
