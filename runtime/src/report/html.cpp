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
struct NumberedSpot : Numbered {
  std::string text;
};

class Html : public Reporter {
 public:
  explicit Html(const std::string& path) : file_(path) {
    if (file_.is_open()) file_.write(html_head);
  }
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const Execution& execution) override {
    last_ = execution.begin - run_start().clock;
    is_inside_ = true;
  }
  void event(const Event& e) override {
    if (!is_inside_) return;
    const auto spot = spots_.of(*e.spot);
    if (spot.second) make(*e.spot, spot.first.text);
    const JsonText* text = e.text.empty() && e.octets.empty() ? nullptr : &json_of(e);
    char* at = events_.room(spot.first.text.size() + (text ? text->json.size() : 0) + 2 * e.octets.size() +
                            room_of_numbers);
    if (events_.size()) at = written(at, ",\n");
    *at++ = '[';
    at = write_known(at, spot.first, spot.first.text, spots_used_);
    *at++ = ',';
    at = write_time(at, e.time - last_);
    last_ = e.time;
    if (text) {
      *at++ = ',';
      at = write_known(at, texts_.of(*text).first, text->json, texts_used_);
    }
    if (!e.octets.empty()) at = written(write_hex(written(at, ",\""), e.octets), "\"");
    *at++ = ']';
    events_.end_at(at);
  }
  void test_case_ends(const Result& r) override {
    file_.write("<script type=\"application/json\">[");
    file_.write(events_.text());
    file_.write("]</script>\n");
    cases_.put(number_ > 1 ? ",\n[" : "[");
    cases_.put_json(r.full_own_name());
    add(cases_, verdict_name(r.verdict));
    cases_.put(',');
    cases_.end_at(write_time(cases_.room(number_room + 1), r.duration));
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
    const auto seed = run_start().seed;
    file_.write("];\nconst seed = \"" + (seed ? std::to_string(*seed) : "") + "\";</script>\n");
    file_.write(html_tail);
    file_.complete();
  }

 private:
  static void add(Row& list, std::string_view text) {
    list.put(',');
    list.put_json(text);
  }
  // What it is where it comes for the first time in the test case, else its number.
  char* write_known(char* at, Numbered& known, std::string_view text, uint64_t& used) const {
    if (known.case_number == number_) return write_number(at, known.number);
    known.case_number = number_;
    known.number = used++;
    return written(at, text);
  }
  static void make(const Spot& spot, std::string& text) {
    Row row;
    row.put("[\"");
    row.put(event_name(spot.kind));
    row.put('"');
    for (const std::string* part : {&spot.component, &spot.name, &spot.peer}) add(row, *part);
    row.put(',');
    row.put_json_place(spot.file, spot.line);
    row.put(']');
    text = row.text();
  }
  // In nanoseconds, which take the least room.
  static char* write_time(char* at, Time time) {
    if (time < 0) *at++ = '-';
    return write_number(at, static_cast<uint64_t>(time < 0 ? -time : time));
  }
  static constexpr size_t room_of_numbers = 100;
  ReportFile file_;
  Row cases_;  // what came out of one
  StoredText stored_cases_;
  Row events_;  // of the test case that runs
  MadeOf<NumberedSpot> spots_;
  MadeOf<Numbered> texts_;
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
