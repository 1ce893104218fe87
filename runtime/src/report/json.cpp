// All events of a run, a line each: an object of JSON whose "event" says what happened.
#include <cinttypes>

#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

class Json : public Reporter {
 public:
  explicit Json(const std::string& path) : file_(path) {
    if (file_.is_open())
      file_.format("{\"event\":\"run\",\"format\":1,\"started\":%" PRId64 ".%09d}\n",
                   run_start().wall / 1000000000, static_cast<int>(run_start().wall % 1000000000));
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const std::string& module, const std::string& name, Time begin) override {
    begin_line("begin", begin - run_start().clock, {}, 0);
    member(",\"testcase\":", module + "." + name);
    end_line();
  }
  void event(const Event& e) override {
    begin_line(event_name(e.kind), e.time, e.file, e.line);
    member(",\"component\":", e.component);
    member(e.kind == EventKind::log       ? ",\"kind\":"
           : e.kind == EventKind::verdict ? ",\"verdict\":"
                                          : ",\"name\":",
           e.name);
    member(",\"peer\":", e.peer);
    member(",\"text\":", e.text);
    if (!e.octets.empty()) {
      rows_.put(",\"octets\":\"");
      rows_.put_hex(e.octets);
      rows_.put('"');
    }
    end_line();
  }
  void test_case_ends(const Result& r) override {
    begin_line("end_testcase", r.begin + r.duration - run_start().clock, r.place.file, r.place.line);
    member(",\"testcase\":", r.full_name());
    member(",\"verdict\":", verdict_name(r.verdict));
    member(",\"text\":", r.reason);
    rows_.put(",\"duration\":");
    rows_.put_seconds(r.duration);
    end_line();
    file_.write_rows(rows_);
  }
  void run_ends(const std::vector<Result>& results) override {
    size_t bad = 0;
    file_.write_rows(rows_);
    for (const Result& r : results) bad += !is_good(r.verdict);
    file_.format("{\"event\":\"run_ends\",\"testcases\":%zu,\"bad\":%zu}\n", results.size(), bad);
    file_.complete();
  }

 private:
  void begin_line(std::string_view event, Time time, std::string_view file, unsigned long line) {
    rows_.put("{\"event\":\"");
    rows_.put(event);
    rows_.put("\",\"time\":");
    rows_.put_seconds(time);
    if (file.empty()) return;
    member(",\"file\":", file);
    rows_.put(",\"line\":");
    rows_.put_number(line);
  }
  // What is empty is left out.
  void member(std::string_view head, std::string_view text) {
    if (text.empty()) return;
    rows_.put(head);
    rows_.put_json(text);
  }
  void end_line() {
    rows_.put("}\n");
    file_.write_rows(rows_, enough_rows);
  }
  Row rows_;
  ReportFile file_;
};

}  // namespace

std::unique_ptr<Reporter> make_json(const std::string& path) {
  auto made = std::make_unique<Json>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
