#include "report/events.h"

#include <time.h>

#include "text/log.h"
#include "text/text_forms.h"
#include "value/task.h"

namespace lumos {

bool events_wanted = false;

namespace {

std::vector<std::unique_ptr<Reporter>>& reporters() {
  static auto* all = new std::vector<std::unique_ptr<Reporter>>;
  return *all;
}

// Those of them that want to know.
std::vector<Reporter*> hearers_of_log, hearers_of_events;

}  // namespace

RunStart& run_start() {
  static RunStart start;
  if (start.wall) return start;
  timespec wall;
  clock_gettime(CLOCK_REALTIME, &wall);
  start = {int64_t(wall.tv_sec) * 1000000000 + wall.tv_nsec, now()};
  return start;
}

Place place_of(const Task& task) {
  if (task.frames.empty()) return {};
  return {task.frames.back().file, task.frames.back().line};
}

Place current_place() {
  return place_of(*current_task);
}

std::string short_text(std::string_view file, unsigned long line) {
  std::string text(base_name(file));
  if (text.empty()) return text;
  text += ':';
  append_number(text, line);
  return text;
}

const char* verdict_name(lumo_verdict_t verdict) {
  static const char* const names[] = {"none", "pass", "inconc", "fail", "error"};
  return names[verdict];
}

const char* event_name(EventKind kind) {
  static const char* const names[] = {"log",     "create", "start",       "end",        "send",    "arrive",
                                      "receive", "lost",   "timer_start", "timer_stop", "timeout", "verdict"};
  return names[static_cast<size_t>(kind)];
}

namespace {

void tell_log_entry(const char* kind, std::string_view text) {
  tell(EventKind::log, kind, {}, text);
}

void choose_events() {
  hearers_of_log.clear();
  hearers_of_events.clear();
  for (auto& reporter : reporters()) {
    if (reporter->wants_log()) hearers_of_log.push_back(reporter.get());
    if (reporter->wants_events()) hearers_of_events.push_back(reporter.get());
  }
  events_wanted = !hearers_of_events.empty();
  events_of_log = hearers_of_log.empty() ? nullptr : tell_log_entry;
}

}  // namespace

void add_reporter(std::unique_ptr<Reporter> reporter) {
  run_start();
  reporters().push_back(std::move(reporter));
  choose_events();
}

bool log_wanted() {
  return events_of_log != nullptr;
}

void drop_reporters() {
  for (auto& reporter : reporters()) static_cast<void>(reporter.release());
  reporters().clear();
  choose_events();
}

void cancel_reporters() {
  reporters().clear();
  choose_events();
}

void tell_run_begins() {
  for (auto& reporter : reporters()) reporter->run_begins();
}

void tell_begin(const std::string& module, const std::string& name, Time begin) {
  for (auto& reporter : reporters()) reporter->test_case_begins(module, name, begin);
}

void tell(const Event& event) {
  for (Reporter* hearer : event.kind == EventKind::log ? hearers_of_log : hearers_of_events)
    hearer->event(event);
}

void tell(EventKind kind, std::string_view name, std::string_view peer, std::string_view text,
          std::string_view octets) {
  Event event;
  event.kind = kind;
  event.time = now() - run_start().clock;
  event.component = current_task->name;
  event.name = name;
  event.peer = peer;
  event.text = text;
  event.octets = octets;
  if (!current_task->frames.empty()) {
    event.file = current_task->frames.back().file;
    event.line = current_task->frames.back().line;
  }
  tell(event);
}

void tell_end(const Result& result) {
  for (auto& reporter : reporters()) reporter->test_case_ends(result);
}

void tell_run_ends(const std::vector<Result>& results) {
  std::vector<std::unique_ptr<Reporter>> ending;
  ending.swap(reporters());
  choose_events();
  for (auto& reporter : ending) reporter->run_ends(results);
}

}  // namespace lumos
