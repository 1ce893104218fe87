// A page that shows results, logs and message sequence charts: one file, which needs nothing else. The events
// of each test case stand in an element of their own that is read when the test case is shown, so that the
// page opens as soon with 100,000 events as with none.
#include "report/html_page.h"
#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

class Html : public Reporter {
 public:
  explicit Html(const std::string& path) : file_(path) {
    if (file_.is_open()) file_.write(html_head);
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const std::string&, const std::string&, Time begin) override {
    begin_ = begin - run_start().clock;
    is_inside_ = true;
  }
  void event(const Event& e) override {
    if (!is_inside_) return;
    events_ += events_.empty() ? "[\"" : ",\n[\"";
    events_ += event_name(e.kind);
    events_ += "\",";
    append_time(events_, e.time - begin_);
    for (const std::string_view text : {e.component, e.name, e.peer, e.text}) add(events_, text);
    events_ += ",\"";
    append_hex(events_, e.octets);
    events_ += '"';
    add(events_, short_text(e.file, e.line));
    events_ += ']';
  }
  void test_case_ends(const Result& r) override {
    file_.write("<script type=\"application/json\">[");
    file_.write(events_);
    file_.write("]</script>\n");
    cases_ += cases_.empty() ? "[" : ",\n[";
    append_json(cases_, r.full_name());
    add(cases_, verdict_name(r.verdict));
    cases_ += ',';
    append_time(cases_, r.duration);
    add(cases_, short_text(r.place));
    add(cases_, r.reason);
    cases_ += ']';
    events_.clear();
    is_inside_ = false;
  }
  void run_ends(const std::vector<Result>&) override {
    file_.write("<script>const cases = [");
    file_.write(cases_);
    file_.write("];</script>\n");
    file_.write(html_tail);
    file_.complete();
  }

 private:
  static void add(std::string& list, std::string_view text) {
    list += ',';
    append_json(list, text);
  }
  // In nanoseconds, which take the least room.
  static void append_time(std::string& list, Time time) { list += std::to_string(time); }
  ReportFile file_;
  std::string cases_;   // what came out of each
  std::string events_;  // of the test case that runs
  Time begin_ = 0;
  bool is_inside_ = false;
};

}  // namespace

std::unique_ptr<Reporter> make_html(const std::string& path) {
  auto made = std::make_unique<Html>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
