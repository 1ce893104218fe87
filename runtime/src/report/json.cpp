// All events of a run, a line each: an object of JSON whose "event" says what happened.
#include <cinttypes>

#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

void put_head(Row& row, std::string_view event) {
  row.put("{\"event\":\"");
  row.put(event);
  row.put("\",\"time\":");
}

// What is empty is left out.
void member(Row& row, std::string_view head, std::string_view text) {
  if (text.empty()) return;
  row.put(head);
  row.put_json(text);
}

void put_place(Row& row, std::string_view file, unsigned long line) {
  if (file.empty()) return;
  member(row, ",\"file\":", file);
  row.put(",\"line\":");
  row.put_number(line);
}

// What the lines of a spot's events have in common.
struct SpotText {
  std::string before_time, behind_time;
  void make(const Spot& spot) {
    Row row;
    put_head(row, event_name(spot.kind));
    before_time = row.text();
    row.clear();
    put_place(row, spot.file, spot.line);
    member(row, ",\"component\":", spot.component);
    member(row,
           spot.kind == EventKind::log       ? ",\"kind\":"
           : spot.kind == EventKind::verdict ? ",\"verdict\":"
                                             : ",\"name\":",
           spot.name);
    member(row, ",\"peer\":", spot.peer);
    behind_time = row.text();
  }
};

class Json : public Reporter {
 public:
  explicit Json(const std::string& path) : file_(path) {
    if (!is_open()) return;
    const RunStart& start = run_start();
    file_.format("{\"event\":\"run\",\"format\":1,\"started\":%" PRId64 ".%09d", start.wall / 1000000000,
                 static_cast<int>(start.wall % 1000000000));
    file_.write((start.seed ? ",\"seed\":" + std::to_string(*start.seed) : "") + "}\n");
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const Execution& e) override {
    put_head(rows_, "begin");
    rows_.put_seconds(e.begin - run_start().clock);
    put_test_case(e);
    end_line();
  }
  void event(const Event& e) override {
    const auto made = spots_.of(*e.spot);
    if (made.second) made.first.make(*e.spot);
    const SpotText& spot = made.first;
    const std::string_view text = e.text.empty() ? "" : std::string_view(json_of(e).json);
    char* at = rows_.room(spot.before_time.size() + seconds_room + spot.behind_time.size() + text.size() +
                          2 * e.octets.size() + room_of_words);
    at = written(at, spot.before_time);
    at = write_seconds(at, e.time);
    at = written(at, spot.behind_time);
    if (!text.empty()) at = written(written(at, ",\"text\":"), text);
    if (e.octets.data()) at = written(write_hex(written(at, ",\"octets\":\""), e.octets), "\"");
    rows_.end_at(written(at, "}\n"));
    file_.pass_on();
  }
  void test_case_ends(const Result& r) override {
    put_head(rows_, "end_testcase");
    rows_.put_seconds(r.begin + r.duration - run_start().clock);
    put_place(rows_, r.place.file, r.place.line);
    put_test_case(r);
    member(rows_, ",\"verdict\":", verdict_name(r.verdict));
    member(rows_, ",\"text\":", r.reason);
    rows_.put(",\"duration\":");
    rows_.put_seconds(r.duration);
    end_line();
  }
  void run_ends(const Results& results) override {
    file_.format("{\"event\":\"run_ends\",\"testcases\":%zu,\"bad\":%zu}\n", results.size(), results.bad());
    file_.complete();
  }

 private:
  void put_test_case(const Execution& e) {
    member(rows_, ",\"testcase\":", e.full_name());
    if (e.seed) rows_.put(",\"seed\":" + std::to_string(*e.seed));
  }
  void end_line() {
    rows_.put("}\n");
    file_.pass_on();
  }
  static constexpr size_t room_of_words = 40;
  MadeOf<SpotText> spots_;
  ReportFile file_;
  Row& rows_ = file_.rows();
};

}  // namespace

std::unique_ptr<Reporter> make_json(const std::string& path) {
  auto made = std::make_unique<Json>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
