// Results in the Test Anything Protocol, version 13: a line for each test case, and what is to be told below
// it.
#include "report/report_file.h"
#include "report/reports.h"

namespace lumos {

namespace {

class Tap : public Reporter {
 public:
  explicit Tap(const std::string& path) : file_(path) {
    if (!is_open()) return;
    file_.write("TAP version 13\n");
    if (const auto seed = run_start().seed) file_.write("# seed " + std::to_string(*seed) + "\n");
  }
  bool is_open() const { return file_.is_open(); }

  void test_case_ends(const Result& result) override {
    file_.format("%sok %zu - ", is_good(result.verdict) ? "" : "not ", ++count_);
    file_.write(result.full_own_name() + "\n");
    if (is_good(result.verdict)) return;
    file_.format("  ---\n  verdict: %s\n  duration: %s\n", verdict_name(result.verdict),
                 six_decimals(result.duration).c_str());
    file_.write("  at: " + json_text(short_text(result.place)) + "\n  message: " + json_text(result.reason) +
                "\n  ...\n");
  }
  void run_ends(const Results&) override {
    file_.format("1..%zu\n", count_);
    file_.complete();
  }

 private:
  ReportFile file_;
  size_t count_ = 0;
};

}  // namespace

std::unique_ptr<Reporter> make_tap(const std::string& path) {
  auto made = std::make_unique<Tap>(path);
  if (!made->is_open()) return nullptr;
  return made;
}

}  // namespace lumos
