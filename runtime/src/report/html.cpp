// A page that shows results, logs and message sequence charts: one file, which needs nothing else. The events
// of each test case stand in an element of their own that is read when the test case is shown, so that the
// page opens as soon with 100,000 events as with none.
#include "report/html_page.h"
#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

// The number of a spot or a text in the test case that had it last.
struct Numbered {
  size_t case_number = 0;
  uint64_t number = 0;
};

class Html : public Reporter {
 public:
  explicit Html(const std::string& path) : file_(path) {
    if (file_.is_open()) file_.write(html_head);
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const std::string&, const std::string&, Time begin) override {
    last_ = begin - run_start().clock;
    is_inside_ = true;
  }
  void event(const Event& e) override {
    if (!is_inside_) return;
    events_.put(events_.size() ? ",\n[" : "[");
    put_spot(*e.spot);
    events_.put(',');
    put_time(events_, e.time - last_);
    last_ = e.time;
    if (!e.text.empty() || !e.octets.empty()) put_text(e);
    if (!e.octets.empty()) {
      events_.put(",\"");
      events_.put_hex(e.octets);
      events_.put('"');
    }
    events_.put(']');
  }
  void test_case_ends(const Result& r) override {
    file_.write("<script type=\"application/json\">[");
    file_.write(events_.text());
    file_.write("]</script>\n");
    cases_.put(number_ > 1 ? ",\n[" : "[");
    cases_.put_json(r.full_name());
    add(cases_, verdict_name(r.verdict));
    cases_.put(',');
    put_time(cases_, r.duration);
    cases_.put(',');
    cases_.put_json_place(r.place.file, r.place.line);
    add(cases_, r.reason);
    cases_.put(']');
    stored_cases_.put(cases_.text());
    cases_.clear();
    events_.clear();
    ++number_;
    texts_used_ = spots_used_ = 0;
    is_inside_ = false;
  }
  void run_ends(const Results&) override {
    file_.write("<script>const cases = [");
    stored_cases_.write_to(file_);
    file_.write("];</script>\n");
    file_.write(html_tail);
    file_.complete();
  }

 private:
  static void add(Row& list, std::string_view text) {
    list.put(',');
    list.put_json(text);
  }
  // Where the test case has had it already, its number.
  static bool put_number(Row& list, std::pair<Numbered&, bool> known, size_t case_number, uint64_t& used) {
    const bool is_known = !known.second && known.first.case_number == case_number;
    if (is_known) list.put_number(known.first.number);
    if (!is_known) known.first = {case_number, used++};
    return is_known;
  }
  void put_spot(const Spot& spot) {
    if (put_number(events_, spots_.of(spot), number_, spots_used_)) return;
    events_.put("[\"");
    events_.put(event_name(spot.kind));
    events_.put('"');
    for (const std::string* text : {&spot.component, &spot.name, &spot.peer}) add(events_, *text);
    events_.put(',');
    events_.put_json_place(spot.file, spot.line);
    events_.put(']');
  }
  void put_text(const Event& e) {
    events_.put(',');
    const JsonText& text = json_of(e);
    if (!put_number(events_, texts_.of(text), number_, texts_used_)) events_.put(text.json);
  }
  // In nanoseconds, which take the least room.
  static void put_time(Row& list, Time time) {
    if (time < 0) list.put('-');
    list.put_number(static_cast<uint64_t>(time < 0 ? -time : time));
  }
  ReportFile file_;
  Row cases_;  // what came out of one
  StoredText stored_cases_;
  Row events_;  // of the test case that runs
  MadeOf<Numbered> spots_, texts_;
  uint64_t spots_used_ = 0, texts_used_ = 0;
  size_t number_ = 1;  // of the test case
  Time last_ = 0;      // of the test case's begin or its last event
  bool is_inside_ = false;
};

}  // namespace

std::unique_ptr<Reporter> make_html(const std::string& path) {
  auto made = std::make_unique<Html>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
