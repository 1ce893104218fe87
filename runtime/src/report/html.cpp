// A page that shows results, logs and message sequence charts: one file, which needs nothing else.
#include "report/html_page.h"
#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

std::string time_text(Time time) {
  char text[40];
  std::snprintf(text, sizeof text, "%.9g", seconds_of(time));
  return text;
}

class Html : public Reporter {
 public:
  explicit Html(const std::string& path) : file_(path) {
    if (file_.is_open()) file_.write(html_head);
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const std::string&, const std::string&, Time begin) override {
    begin_ = begin - run_start().clock;
    events_.clear();
    is_inside_ = true;
  }
  void event(const Event& e) override {
    if (!is_inside_) return;
    events_ += std::string(events_.empty() ? "" : ",\n") + "[\"" + event_name(e.kind) + "\"," +
               time_text(e.time - begin_);
    for (const std::string& text :
         {e.component, e.name, e.peer, e.text, hex_text(e.octets), short_text(e.place)})
      events_ += "," + json_text(text);
    events_ += "]";
  }
  void test_case_ends(const Result& r) override {
    file_.write("<script>cases.push([" + json_text(r.full_name()) + ",\"" + verdict_name(r.verdict) + "\"," +
                time_text(r.duration) + "," + json_text(short_text(r.place)) + "," + json_text(r.reason) +
                ",[" + events_ + "]]);</script>\n");
    is_inside_ = false;
  }
  void run_ends(const std::vector<Result>&) override {
    file_.write(html_tail);
    file_.complete();
  }

 private:
  ReportFile file_;
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
