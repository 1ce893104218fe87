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
    events_.put(events_.size() ? ",\n[\"" : "[\"");
    events_.put(event_name(e.kind));
    events_.put("\",");
    put_time(events_, e.time - begin_);
    for (const std::string_view text : {e.component, e.name, e.peer, e.text}) add(events_, text);
    events_.put(",\"");
    events_.put_hex(e.octets);
    events_.put("\",");
    events_.put_json_place(e.file, e.line);
    events_.put(']');
  }
  void test_case_ends(const Result& r) override {
    file_.write("<script type=\"application/json\">[");
    file_.write(events_.text());
    file_.write("]</script>\n");
    cases_.put(cases_.size() ? ",\n[" : "[");
    cases_.put_json(r.full_name());
    add(cases_, verdict_name(r.verdict));
    cases_.put(',');
    put_time(cases_, r.duration);
    cases_.put(',');
    cases_.put_json_place(r.place.file, r.place.line);
    add(cases_, r.reason);
    cases_.put(']');
    events_.clear();
    is_inside_ = false;
  }
  void run_ends(const std::vector<Result>&) override {
    file_.write("<script>const cases = [");
    file_.write(cases_.text());
    file_.write("];</script>\n");
    file_.write(html_tail);
    file_.complete();
  }

 private:
  static void add(Row& list, std::string_view text) {
    list.put(',');
    list.put_json(text);
  }
  // In nanoseconds, which take the least room.
  static void put_time(Row& list, Time time) {
    if (time < 0) list.put('-');
    list.put_number(static_cast<uint64_t>(time < 0 ? -time : time));
  }
  ReportFile file_;
  Row cases_;   // what came out of each
  Row events_;  // of the test case that runs
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
