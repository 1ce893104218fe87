#include "suite/selection.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "suite/nearest.h"
#include "suite/option_place.h"
#include "value/types.h"

namespace lumos {

namespace {

size_t parameter_count(const lumo_symbol_entry_struct_t& row) {
  const lumo_field_info_t* fields = row.type_descriptor ? field_info(row.type_descriptor) : nullptr;
  return fields && fields[0].type ? field_count(fields[0].type) : 0;
}

bool is_pattern(const std::string& text) {
  return text.find_first_of("*?") != std::string::npos;
}

// Greedy, going back to the last star only: what a star took never needs to be less for the stars before it.
bool fits(const char* pattern, const char* text) {
  const char *star = nullptr, *behind = nullptr;
  while (*text) {
    if (*pattern == '*') {
      star = pattern++;
      behind = text;
    } else if (*pattern == '?' || *pattern == *text) {
      ++pattern;
      ++text;
    } else if (star) {
      pattern = star + 1;
      text = ++behind;
    } else {
      return false;
    }
  }
  while (*pattern == '*') ++pattern;
  return !*pattern;
}

// A pattern without a point is one of names, one with a point of modules and names.
bool chooses(const std::string& pattern, const std::string& full_name) {
  const bool is_qualified = pattern.find('.') != std::string::npos;
  return fits(pattern.c_str(), full_name.c_str() + (is_qualified ? 0 : full_name.find('.') + 1));
}

template <class Do>
void each_testcase(Do act) {
  const std::vector<Module> modules = registered_modules();
  for (int round = 0; round < 2; ++round)
    for (const Module& m : modules)
      for (unsigned long i = 0; (round == 0) == m.is_root && i < m.row_count; ++i)
        if (is_own_testcase(m.rows[i])) act(m, m.rows[i]);
}

Selected selected_of(const std::string& full_name, double timeout) {
  const size_t point = full_name.find('.');
  return {full_name.substr(0, point), full_name.substr(point + 1), timeout, {}, {}};
}

bool refuse(const std::string& name) {
  bool has_parameters = false;
  each_testcase([&](const Module& m, const lumo_symbol_entry_struct_t& row) {
    has_parameters = has_parameters || chooses(name, std::string(m.name) + "." + row.name);
  });
  if (has_parameters) {
    std::fprintf(stderr, "%stest case %s has parameters and can only be run by the control part\n",
                 place_of_option(name).c_str(), in_quotes(name).c_str());
  } else {
    std::fprintf(stderr, "%sthere is no test case %s%s\n", place_of_option(name).c_str(),
                 in_quotes(name).c_str(), did_you_mean(name, testcase_names(false)).c_str());
  }
  return false;
}

// The test cases, found by their names with and without modules.
class Names {
 public:
  explicit Names(const std::vector<std::string>& all) : all_(all) {
    for (size_t i = 0; i < all.size(); ++i) {
      const std::string_view name = all[i];
      places_[name].push_back(i);
      places_[name.substr(name.find('.') + 1)].push_back(i);
    }
  }
  // The places of those that the pattern chooses.
  std::vector<size_t> chosen_by(const std::string& pattern) const {
    if (!is_pattern(pattern)) {
      const auto found = places_.find(pattern);
      return found == places_.end() ? std::vector<size_t>() : found->second;
    }
    std::vector<size_t> places;
    for (size_t i = 0; i < all_.size(); ++i)
      if (chooses(pattern, all_[i])) places.push_back(i);
    return places;
  }

 private:
  const std::vector<std::string>& all_;
  std::unordered_map<std::string_view, std::vector<size_t>> places_;
};

}  // namespace

bool is_own_testcase(const lumo_symbol_entry_struct_t& row) {
  return row.kind == lumo_symbol_entry_kind_testcase && row.function_ptr && !std::strchr(row.name, '.');
}

std::vector<std::string> testcase_names(bool of_root_only) {
  std::vector<std::string> names;
  each_testcase([&](const Module& m, const lumo_symbol_entry_struct_t& row) {
    if (parameter_count(row) == 0 && (m.is_root || !of_root_only))
      names.push_back(std::string(m.name) + "." + row.name);
  });
  return names;
}

bool select_testcases(const std::vector<std::string>& patterns, double timeout, std::vector<Selected>& list) {
  const std::vector<std::string> all = testcase_names(false);
  const Names names(all);
  std::vector<std::string> positive, mistaken;
  std::vector<bool> left_out(all.size());
  for (const std::string& p : patterns) {
    if (p[0] != '!') {
      positive.push_back(p);
      continue;
    }
    const std::vector<size_t> places = names.chosen_by(p.substr(1));
    for (const size_t place : places) left_out[place] = true;
    // A pattern may serve several suites; a name that is no test case is a mistake.
    if (places.empty() && !is_pattern(p)) mistaken.push_back(p.substr(1));
  }
  if (positive.empty()) positive.push_back("*");
  for (const std::string& p : positive) {
    std::vector<size_t> places = names.chosen_by(p);
    if (places.empty()) return refuse(p);
    // What is named without its module is the first of that name.
    if (!is_pattern(p)) places.erase(places.begin() + 1, places.end());
    for (const size_t place : places)
      if (!left_out[place]) list.push_back(selected_of(all[place], timeout));
  }
  if (!mistaken.empty()) return refuse(mistaken[0]);
  if (list.empty()) std::fprintf(stderr, "no test case is left to be run\n");
  return !list.empty();
}

void keep_shard(std::vector<Selected>& list, long k, long n) {
  std::vector<Selected> kept;
  for (size_t i = static_cast<size_t>(k - 1); i < list.size(); i += static_cast<size_t>(n))
    kept.push_back(list[i]);
  list.swap(kept);
}

void shuffle(std::vector<Selected>& list, uint64_t seed) {
  // Numbers of our own, so that a seed means the same order everywhere.
  for (size_t i = list.size(); i > 1; --i) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    std::swap(list[i - 1], list[(seed >> 33) % i]);
  }
}

}  // namespace lumos
