#include "suite/explore.h"

#include <map>

#include "run/component.h"
#include "run/ending.h"
#include "suite/jobs.h"
#include "suite/results.h"
#include "suite/suite.h"
#include "text/text_forms.h"

namespace lumos {

namespace {

struct Outcome {
  Result example;
  long count = 0;
};

// By verdict and place; reasons may hold what differs in each run.
using Outcomes = std::map<std::string, Outcome>;

std::string key_of(const Result& r) {
  return std::to_string(r.verdict) + " " + short_text(r.place);
}

void print_outcomes(const Selected& selected, const Outcomes& outcomes, long n) {
  const auto counted = [](size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
  };
  const std::string name = selected.full_name();
  std::string text = name + ": " + counted(static_cast<size_t>(n), "schedule") + ", " +
                     counted(outcomes.size(), "outcome") + "\n";
  for (const auto& [key, o] : outcomes) {
    text += "  " + std::to_string(o.count) + " " + verdict_name(o.example.verdict);
    for (const std::string& part : {short_text(o.example.place), line_text(o.example.reason)})
      if (!part.empty()) text += " " + part;
    text += " (--explore 1 --seed " + std::to_string(*o.example.seed) + " -t " + name + ")\n";
  }
  print_remark(text);
}

// The worst outcome stands for the test case.
const Result& worst_of(const Outcomes& outcomes) {
  const Result* worst = &outcomes.begin()->second.example;
  for (const auto& [key, o] : outcomes)
    if (o.example.verdict > worst->verdict) worst = &o.example;
  return *worst;
}

// The schedules of a test case.
class Exploration {
 public:
  Exploration(const Selected& selected, const SuiteOptions& options) : schedule_(selected), options_(options) {
    running = this;
    result_listener = [](Result& result) { running->note(result); };
  }
  // False if the run is to end.
  bool run() {
    const Results before = results();
    const bool goes_on = options_.jobs > 1 ? run_side_by_side() : run_one_by_one();
    results() = before;
    if (outcomes_.empty()) return false;
    if (!is_told_) print_outcomes(schedule_, outcomes_, count_);
    results().push_back(worst_of(outcomes_));
    return goes_on && !(options_.until_fail && is_bad());
  }

 private:
  bool is_bad() const { return !is_good(worst_of(outcomes_).verdict); }
  bool run_one_by_one() {
    bool goes_on = true;
    for (long i = 0; i < options_.explore && goes_on; ++i) {
      schedule_.seed = options_.seed + static_cast<uint64_t>(i);
      goes_on = execute(schedule_) && !ending_reason() && !outcomes_.empty();
      if (options_.until_fail && goes_on && is_bad()) break;
    }
    return goes_on;
  }
  bool run_side_by_side() {
    std::vector<Selected> schedules(static_cast<size_t>(options_.explore), schedule_);
    for (size_t i = 0; i < schedules.size(); ++i) schedules[i].seed = options_.seed + i;
    return run_in_processes(schedules, options_.jobs, options_.until_fail, lumo_duration_forever_c) ||
           options_.until_fail;
  }
  void note(const Result& result) {
    ++count_;
    Outcome& outcome = outcomes_[key_of(result)];
    if (outcome.count++ == 0) outcome.example = result;
    // It may not come back from code of the user.
    if (!ending_reason() || options_.jobs > 1) return;
    print_outcomes(schedule_, outcomes_, count_);
    is_told_ = true;
  }

  static Exploration* running;
  Selected schedule_;
  const SuiteOptions& options_;
  Outcomes outcomes_;
  long count_ = 0;
  bool is_told_ = false;
};
Exploration* Exploration::running = nullptr;

}  // namespace

bool explore(const std::vector<Selected>& list, const SuiteOptions& options) {
  auto listener = result_listener;
  bool good = true;
  for (const Selected& selected : list) good = good && Exploration(selected, options).run();
  result_listener = listener;
  return good;
}

}  // namespace lumos
