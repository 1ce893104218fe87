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
                  "tests=\"%zu\" failures=\"%zu\" errors=\"%zu\" skipped=\"%zu\" time=\"%s\"", tests,
                  failures, errors, skipped, six_decimals(duration).c_str());
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

  bool wants_log() const override { return true; }
  void test_case_begins(const Execution&) override { log_.clear(); }
  void event(const Event& event) override {
    if (log_.size() >= most_entries) return;
    const Spot& spot = *event.spot;
    std::string entry(spot.name);
    const std::string place = short_text(spot.file, spot.line);
    for (const std::string_view part :
         {std::string_view(spot.component), std::string_view(place), event.text})
      if (!part.empty()) (entry += ' ') += part;
    log_.push_back(shortened(entry, most_octets));
  }
  void test_case_ends(const Result& result) override {
    Suite& suite = suite_of(result);
    suite.totals.add(result);
    suite.cases.put(case_text(result));
    log_.clear();
  }
  void run_ends(const Results&) override {
    file_.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n");
    size_t number = 0;
    for (const std::string& module : order_) {
      Suite& suite = suites_[module];
      const std::string name = xml_text(module);
      file_.write("  <testsuite id=\"" + std::to_string(number++) + "\" name=\"" + name + "\" package=\"" +
                  name + "\" " + suite.totals.attributes() + " timestamp=\"" + suite.begin +
                  "\" hostname=\"localhost\">\n" + properties());
      suite.cases.write_to(file_);
      file_.write("    <system-out/>\n    <system-err/>\n  </testsuite>\n");
    }
    file_.write("</testsuites>\n");
    file_.complete();
  }

 private:
  static std::string properties() {
    const auto seed = run_start().seed;
    if (!seed) return "    <properties/>\n";
    return "    <properties>\n      <property name=\"seed\" value=\"" + std::to_string(*seed) +
           "\"/>\n    </properties>\n";
  }
  // Readers of XML refuse texts of 10 MB and more.
  static constexpr size_t most_entries = 1000, most_octets = 4000;
  struct Suite {
    Totals totals;
    std::string begin;
    StoredText cases;
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
    std::string text = "    <testcase name=\"" + xml_text(result.own_name()) + "\" classname=\"" +
                       xml_text(result.module) + "\" time=\"" + six_decimals(result.duration) + "\"";
    if (is_good(result.verdict)) return text + "/>\n";
    const std::string element = result.verdict == lumo_verdict_error_c ? "error" : "failure";
    const std::string place = short_text(result.place), reason = shortened(result.reason, most_octets);
    text += ">\n      <" + element + " message=\"" + xml_text(reason) + "\" type=\"" +
            verdict_name(result.verdict) + "\">" + xml_text(place + (place.empty() ? "" : ": ") + reason) +
            "\n";
    for (const std::string& entry : log_) text += xml_text(entry) + "\n";
    return text + "</" + element + ">\n    </testcase>\n";
  }

  ReportFile file_;
  std::map<std::string, Suite> suites_;
  std::vector<std::string> order_;
  std::vector<std::string> log_;  // of the test case that runs
};

}  // namespace

std::unique_ptr<Reporter> make_junit(const std::string& path) {
  auto made = std::make_unique<Junit>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
