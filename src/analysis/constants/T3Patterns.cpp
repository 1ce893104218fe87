#include "analysis/constants/T3Patterns.h"

#include <unordered_map>

#include "analysis/constants/T3KnownTexts.h"
#include "support/ModuleCaches.h"
#include "template/pattern_program.h"

namespace {
using lumos::patterns::Program;

// The programs of the module under analysis, by the numbers of their patterns; with an error where there is none.
std::unordered_map<uint32_t, Program>& g_programs = *new std::unordered_map<uint32_t, Program>;
const ModuleCache programs{[] { g_programs.clear(); }};

const Program& ProgramOf(T3CharStringMatch* pattern) {
  const auto [place, made] = g_programs.try_emplace(pattern->number);
  if (!made) return place->second;
  place->second.error = "not known";
  if (const auto text = KnownCharacters(pattern->pattern))
    place->second = lumos::patterns::program_of(CodesOf(*text), [] { return false; });
  return place->second;
}
}  // namespace

std::optional<bool> PatternAllows(T3CharStringMatch* pattern, T3Tree_Node* expression) {
  constexpr size_t kMostSteps = 10000000;
  const auto text = KnownCharacters(expression);
  if (!text) return std::nullopt;
  const Program& program = ProgramOf(pattern);
  if (!program.error.empty()) return std::nullopt;
  lumos::patterns::Machine machine(program, false, kMostSteps);
  const bool allows = machine.run(CodesOf(*text), nullptr);
  return machine.takes_too_long() ? std::nullopt : std::optional(allows);
}
