// The tables of all units of rules, arranged by kind.
#include <vector>

#include "analysis/T3Behaviour.h"
#include "analysis/T3Eval.h"
#include "analysis/T3Names.h"
#include "analysis/T3Unused.h"

namespace {
using Checks = std::vector<void (*)(T3Tree_Node*)>;

std::vector<Checks>* Arrange() {
  auto* table = new std::vector<Checks>(kT3KindCount);
  for (const auto& rules : {TypeRules(), BehaviourRules(), UsageRules()})
    for (const T3Rule& rule : rules)
      for (int kind = static_cast<int>(rule.kind); kind <= T3Tree_TypeRange[static_cast<int>(rule.kind)];
           ++kind)
        (*table)[static_cast<size_t>(kind)].push_back(rule.check);
  return table;
}
}  // namespace

void CheckNode(T3Tree_Node* node) {
  static const std::vector<Checks>& table = *Arrange();
  CheckNamesOfNode(node);
  for (const auto check : table[static_cast<size_t>(node->kind)]) check(node);
}
