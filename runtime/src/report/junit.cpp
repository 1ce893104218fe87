// Results in the XML form that continuous integration reads: a suite for each module, a case for each test
// case.
#include <ctime>
#include <map>

#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

struct Totals {
  size_t tests = 0, failures = 0, errors = 0, skipped = 0;
  Time duration = 0;
  void add(const Result& result) {
    ++tests;
    duration += result.duration;
    if (result.verdict == lumo_verdict_fail_c || result.verdict == lumo_verdict_inconc_c) ++failures;
    if (result.verdict == lumo_verdict_error_c) ++errors;
  }
  std::string attributes() const {
    char text[160];
    std::snprintf(text, sizeof text,
                  "tests=\"%zu\" failures=\"%zu\" errors=\"%zu\" skipped=\"%zu\" time=\"%.6f\"", tests,
                  failures, errors, skipped, seconds_of(duration));
    return text;
  }
};

std::string time_stamp(Time begin) {
  const time_t seconds = static_cast<time_t>((run_start().wall + begin - run_start().clock) / 1000000000);
  tm parts;
  char text[32];
  gmtime_r(&seconds, &parts);
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  return text;
}

class Junit : public Reporter {
 public:
  explicit Junit(const std::string& path) : file_(path) {}
  bool is_open() const { return file_.is_open(); }

  bool wants_events() const override { return true; }
  void test_case_begins(const std::string&, const std::string&, Time) override { log_.clear(); }
  void event(const Event& event) override {
    if (event.kind != EventKind::log || log_.size() > most_log) return;
    log_ += event.name + " " + (event.component.empty() ? "" : event.component + " ") +
            short_text(event.place) + " " + event.text + "\n";
  }
  void test_case_ends(const Result& result) override {
    Suite& suite = suite_of(result);
    suite.totals.add(result);
    suite.text += case_text(result);
  }
  void run_ends(const std::vector<Result>& results) override {
    Totals all;
    for (const Result& result : results) all.add(result);
    file_.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"" +
                xml_text(order_.empty() ? "" : order_[0]) + "\" " + all.attributes() + ">\n");
    for (const std::string& module : order_) {
      const Suite& suite = suites_[module];
      file_.write("  <testsuite name=\"" + xml_text(module) + "\" " + suite.totals.attributes() +
                  " timestamp=\"" + suite.begin + "\" hostname=\"localhost\">\n" + suite.text +
                  "  </testsuite>\n");
    }
    file_.write("</testsuites>\n");
    file_.complete();
  }

 private:
  static constexpr size_t most_log = 100000;
  struct Suite {
    Totals totals;
    std::string text, begin;
  };

  Suite& suite_of(const Result& result) {
    auto [found, is_new] = suites_.try_emplace(result.module);
    if (is_new) {
      order_.push_back(result.module);
      found->second.begin = time_stamp(result.begin);
    }
    return found->second;
  }
  std::string case_text(const Result& result) const {
    char time[32];
    std::snprintf(time, sizeof time, "%.6f", seconds_of(result.duration));
    std::string text = "    <testcase name=\"" + xml_text(result.name) + "\" classname=\"" +
                       xml_text(result.module) + "\" time=\"" + time + "\"";
    if (is_good(result.verdict) && log_.empty()) return text + "/>\n";
    text += ">\n";
    if (!is_good(result.verdict)) {
      const std::string element = result.verdict == lumo_verdict_error_c ? "error" : "failure";
      const std::string place = short_text(result.place);
      text += "      <" + element + " message=\"" + xml_text(result.reason) + "\" type=\"" +
              verdict_name(result.verdict) + "\">" +
              xml_text(place + (place.empty() ? "" : ": ") + result.reason) + "</" + element + ">\n";
    }
    if (!log_.empty()) text += "      <system-out>" + xml_text(log_) + "</system-out>\n";
    return text + "    </testcase>\n";
  }

  ReportFile file_;
  std::map<std::string, Suite> suites_;
  std::vector<std::string> order_;
  std::string log_;
};

}  // namespace

std::unique_ptr<Reporter> make_junit(const std::string& path) {
  auto made = std::make_unique<Junit>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
