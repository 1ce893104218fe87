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
    const std::string full_name = module + "." + name;
    line("begin", begin - run_start().clock, {}, {{"testcase", full_name}});
  }
  void event(const Event& e) override {
    const char* name = e.kind == EventKind::log ? "kind" : e.kind == EventKind::verdict ? "verdict" : "name";
    const std::string octets = hex_text(e.octets);
    line(
        event_name(e.kind), e.time, e.place,
        {{"component", e.component}, {name, e.name}, {"peer", e.peer}, {"text", e.text}, {"octets", octets}});
  }
  void test_case_ends(const Result& r) override {
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.9f", seconds_of(r.duration));
    const std::string full_name = r.full_name();
    line("end_testcase", r.begin + r.duration - run_start().clock, r.place,
         {{"testcase", full_name}, {"verdict", verdict_name(r.verdict)}, {"text", r.reason}},
         std::string(",\"duration\":") + duration);
  }
  void run_ends(const std::vector<Result>& results) override {
    size_t bad = 0;
    for (const Result& r : results) bad += !is_good(r.verdict);
    file_.format("{\"event\":\"run_ends\",\"testcases\":%zu,\"bad\":%zu}\n", results.size(), bad);
    file_.complete();
  }

 private:
  struct Member {
    const char* name;
    std::string_view text;
  };
  // What is empty is left out.
  void line(const char* event, Time time, const Place& place, std::initializer_list<Member> members,
            const std::string& more = {}) {
    char head[80];
    std::snprintf(head, sizeof head, "{\"event\":\"%s\",\"time\":%.9f", event, seconds_of(time));
    std::string line = head;
    if (!place.file.empty()) {
      line += ",\"file\":";
      append_json(line, place.file);
      line += ",\"line\":" + std::to_string(place.line);
    }
    for (const Member& m : members) {
      if (m.text.empty()) continue;
      line += ",\"";
      line += m.name;
      line += "\":";
      append_json(line, m.text);
    }
    file_.write(line + more + "}\n");
  }
  ReportFile file_;
};

}  // namespace

std::unique_ptr<Reporter> make_json(const std::string& path) {
  auto made = std::make_unique<Json>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
