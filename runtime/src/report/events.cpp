#include "report/events.h"

#include <time.h>

#include <algorithm>

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

RunStart start;

// Those of them that want to know.
std::vector<Reporter*> hearers_of_log, hearers_of_events;

}  // namespace

RunStart& run_start() {
  if (start.wall) return start;
  timespec wall;
  clock_gettime(CLOCK_REALTIME, &wall);
  start.wall = int64_t(wall.tv_sec) * 1000000000 + wall.tv_nsec;
  start.clock = now();
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

void log_result(const Result& r) {
  log_line(lumo_log_msg_info_c, "test case " + r.full_own_name() + " finished with verdict " +
                                    verdict_name(r.verdict) + (r.reason.empty() ? "" : ": ") + r.reason);
}

void Results::push_back(Result result) {
  if (last_) {
    ++settled_[last_->verdict];
    if (!is_good(last_->verdict)) bad_.push_back(std::move(*last_));
  }
  last_ = std::move(result);
}

Results::Counts Results::counts() const {
  Counts counts = settled_;
  if (last_) ++counts[last_->verdict];
  return counts;
}

size_t Results::size() const {
  size_t size = 0;
  for (const size_t n : counts()) size += n;
  return size;
}

size_t Results::bad() const {
  const Counts all = counts();
  return all[lumo_verdict_inconc_c] + all[lumo_verdict_fail_c] + all[lumo_verdict_error_c];
}

void Results::each_bad(const std::function<void(const Result&)>& act) const {
  for (const Result& r : bad_) act(r);
  if (last_ && !is_good(last_->verdict)) act(*last_);
}

const char* event_name(EventKind kind) {
  static const char* const names[] = {"log",     "create", "start",       "end",        "send",    "arrive",
                                      "receive", "lost",   "timer_start", "timer_stop", "timeout", "verdict"};
  return names[static_cast<size_t>(kind)];
}

bool Spot::says(const Saying& s) const {
  return line == s.line && kind == s.kind && name == s.name && component == s.component && peer == s.peer &&
         (file_address == s.file.data() || file == s.file);
}

void Spot::take(const Saying& s) {
  kind = s.kind;
  component = s.component;
  file = s.file;
  file_address = s.file.data();
  name = s.name;
  peer = s.peer;
  line = s.line;
}

// Nearly always these tell enough. Names of components differ at their ends.
size_t hash_of(const Saying& s) {
  const size_t end = s.component.size() - std::min<size_t>(s.component.size(), 8);
  return mixed(s.line << 8 ^ static_cast<uint64_t>(s.kind) ^ s.name.size() << 40,
               eight_octets(s.component, end));
}

void JsonText::take(std::string_view said) {
  text = said;
  json.resize(json_room(said.size()));
  json.resize(static_cast<size_t>(write_json(json.data(), said) - json.data()));
}

const JsonText& json_of(const Event& event) {
  constexpr size_t most_kept = 1 << 12;
  static auto& texts = *new Repeated<JsonText>;
  static const JsonText* last = nullptr;
  if (event.json) return *event.json;
  // Long ones have few places, lest they take much memory.
  if (!last || !last->says(event.text))
    last = &texts.of(event.text, event.text.size() > most_kept ? 0 : hash_of_text(event.text));
  return *(event.json = last);
}

namespace {

void tell_log_entry(std::string_view kind, std::string_view text) {
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

void tell_begin(const Execution& execution) {
  for (auto& reporter : reporters()) reporter->test_case_begins(execution);
}

void tell(const Event& event) {
  for (Reporter* hearer : event.spot->kind == EventKind::log ? hearers_of_log : hearers_of_events)
    hearer->event(event);
}

void tell(EventKind kind, std::string_view name, std::string_view peer, std::string_view text,
          std::string_view octets) {
  static Spots& spots = *new Spots;
  static std::string_view file;  // generated code always gives the same text
  Saying said{kind, current_task->name, {}, name, peer, 0};
  if (!current_task->frames.empty()) {
    const Frame& frame = current_task->frames.back();
    if (frame.file != file.data()) file = frame.file;
    said.file = file;
    said.line = frame.line;
  }
  tell({&spots.of(said, hash_of(said)), now() - start.clock, text, octets});
}

void tell_end(const Result& result) {
  for (auto& reporter : reporters()) reporter->test_case_ends(result);
}

void flush_events() {
  for (auto& reporter : reporters()) reporter->flush();
}

void tell_run_ends(const Results& results) {
  std::vector<std::unique_ptr<Reporter>> ending;
  ending.swap(reporters());
  choose_events();
  for (auto& reporter : ending) reporter->run_ends(results);
}

}  // namespace lumos
