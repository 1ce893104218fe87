#include "suite/explore.h"

#include <map>

#include "run/component.h"
#include "run/ending.h"
#include "run/scheduler.h"
#include "suite/results.h"
#include "suite/suite.h"
#include "text/log.h"
#include "text/text_forms.h"
#include "value/value.h"

namespace lumos {

namespace {

struct Outcome {
  Result example;
  long count = 0;
  uint64_t seed = 0;
};

// By verdict and place; reasons may hold what differs in each run.
using Outcomes = std::map<std::string, Outcome>;

void say_nothing(Result&) {}

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
    text += " (--explore 1 --seed " + std::to_string(o.seed) + " -t " + name + ")\n";
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

bool explore_one(const Selected& selected, long n, uint64_t seed) {
  Outcomes outcomes;
  bool goes_on = true;
  long i = 0;
  for (; i < n && goes_on; ++i) {
    const uint64_t own_seed = seed + static_cast<uint64_t>(i);
    explored_seed = own_seed;
    set_schedule_seed(own_seed);
    set_random_seed(own_seed);
    goes_on = execute(selected) && !ending_reason();
    if (!results().has_last()) break;
    const Result result = results().back();
    results().pop_back();
    Outcome& outcome = outcomes[key_of(result)];
    if (outcome.count++ == 0) {
      outcome.example = result;
      outcome.seed = own_seed;
    }
  }
  if (outcomes.empty()) return false;
  print_outcomes(selected, outcomes, i);
  results().push_back(worst_of(outcomes));
  return goes_on;
}

}  // namespace

bool explore(const std::vector<Selected>& list, long n, uint64_t seed) {
  auto listener = result_listener;
  result_listener = say_nothing;
  bool good = true;
  for (const Selected& selected : list) good = good && explore_one(selected, n, seed);
  result_listener = listener;
  set_schedule_seed(0);
  explored_seed.reset();
  return good;
}

void set_seed_of_testcases(uint64_t seed) {
  testcase_seed = seed;
  has_testcase_seed = true;
}

}  // namespace lumos
