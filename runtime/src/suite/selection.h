// Which test cases a run executes, and in which order.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "suite/suite_options.h"
#include "value/symbols.h"

namespace lumos {

struct Selected {
  std::string module, name;
  double timeout;
  std::vector<lumo_value_t> arguments;  // owned, for the whole run
  std::optional<uint64_t> seed;         // of its schedule, if that is not the usual one
  std::string full_name() const { return module + "." + name; }
};

// The test cases that modules declare themselves, the root's last.
bool is_own_testcase(const lumo_symbol_entry_struct_t& row);
// Those without parameters, as "module.name"; of the root module alone, or of all, the root first.
std::vector<std::string> testcase_names(bool of_root_only);
// The test cases that the patterns choose, each "name" or "module.name" with "*" and "?", behind "!" for
// those that are left out. What names one and is no pattern has to exist, else a message is left and the
// result is false.
bool select_testcases(const std::vector<std::string>& patterns, double timeout, std::vector<Selected>& list);
// The K-th of N parts, each test case in the part that its place gives.
void keep_shard(std::vector<Selected>& list, long k, long n);
void shuffle(std::vector<Selected>& list, uint64_t seed);

}  // namespace lumos
