#include "suite/explore.h"

#include <cstdio>
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
  std::printf("%s: %ld schedule%s, %zu outcome%s\n", selected.full_name().c_str(), n, n == 1 ? "" : "s",
              outcomes.size(), outcomes.size() == 1 ? "" : "s");
  for (const auto& [key, o] : outcomes) {
    const std::string place = short_text(o.example.place);
    std::printf("  %ld %s%s%s%s%s", o.count, verdict_name(o.example.verdict), place.empty() ? "" : " ",
                place.c_str(), o.example.reason.empty() ? "" : " ", line_text(o.example.reason).c_str());
    std::printf(" (--explore 1 --seed %llu -t %s)\n", static_cast<unsigned long long>(o.seed),
                selected.full_name().c_str());
  }
  std::fflush(stdout);
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
  for (long i = 0; i < n && !ending_reason(); ++i) {
    const uint64_t own_seed = seed + static_cast<uint64_t>(i);
    set_schedule_seed(own_seed);
    set_random_seed(own_seed);
    if (!execute(selected) || !results().has_last()) return false;
    const Result result = results().back();
    results().pop_back();
    Outcome& outcome = outcomes[key_of(result)];
    if (outcome.count++ == 0) {
      outcome.example = result;
      outcome.seed = own_seed;
    }
  }
  print_outcomes(selected, outcomes, n);
  results().push_back(worst_of(outcomes));
  return true;
}

}  // namespace

bool explore(const std::vector<Selected>& list, long n, uint64_t seed) {
  auto listener = result_listener;
  result_listener = say_nothing;
  bool good = true;
  for (const Selected& selected : list) good = good && explore_one(selected, n, seed);
  result_listener = listener;
  set_schedule_seed(0);
  return good;
}

void set_seed_of_testcases(uint64_t seed) {
  testcase_seed = seed;
  has_testcase_seed = true;
}

}  // namespace lumos
