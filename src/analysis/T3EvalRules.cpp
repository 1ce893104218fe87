// The tables of all units of rules, arranged by kind.
#include <array>
#include <vector>

#include "analysis/T3Behaviour.h"
#include "analysis/T3Eval.h"
#include "analysis/T3Names.h"
#include "analysis/T3Unused.h"

namespace {
// The rules of all kinds, one behind the other, and where those of a kind begin.
struct Table {
  std::vector<void (*)(T3Tree_Node*)> checks;
  std::array<uint16_t, kT3KindCount + 1> begin;
};

const Table* Arrange() {
  auto* table = new Table;
  for (int kind = 0; kind < kT3KindCount; ++kind) {
    table->begin[static_cast<size_t>(kind)] = static_cast<uint16_t>(table->checks.size());
    for (const auto& rules :
         {NameRules(), TypeRules(), DeclarationRules(), ExpressionRules(), StatementRules(), PortRules(),
          ValueRules(), TemplateRules(), InitializationRules(), BehaviourRules(), UsageRules()})
      for (const T3Rule& rule : rules)
        if (static_cast<int>(rule.kind) <= kind && kind <= T3Tree_TypeRange[static_cast<int>(rule.kind)])
          table->checks.push_back(rule.check);
  }
  table->begin[kT3KindCount] = static_cast<uint16_t>(table->checks.size());
  return table;
}
}  // namespace

void CheckNode(T3Tree_Node* node) {
  static const Table& table = *Arrange();
  const auto kind = static_cast<size_t>(node->kind);
  for (size_t at = table.begin[kind]; at != table.begin[kind + 1]; ++at) table.checks[at](node);
}
