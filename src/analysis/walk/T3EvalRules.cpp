// The tables of all units of rules, arranged by kind.
#include <array>
#include <numeric>
#include <vector>

#include "analysis/flow/T3Behaviour.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/templates/T3TemplateRestrictions.h"
#include "analysis/flow/T3Unused.h"

namespace {
// The rules of all kinds, one behind the other, and where those of a kind begin.
struct Table {
  std::vector<void (*)(T3Tree_Node*)> checks;
  std::array<uint16_t, kT3KindCount + 1> begin{};

  Table() {
    ForEach([this](size_t kind, const T3Rule&) { ++begin[kind + 1]; });
    std::partial_sum(begin.begin(), begin.end(), begin.begin());
    checks.resize(begin.back());
    std::array<uint16_t, kT3KindCount + 1> end = begin;
    ForEach([&](size_t kind, const T3Rule& rule) { checks[end[kind]++] = rule.check; });
  }

 private:
  // Calls `use` with each kind and each rule for it, the rules of one kind in their order.
  template <class Use>
  static void ForEach(Use use) {
    for (const auto& rules :
         {NameRules(), TypeRules(), DeclarationRules(), ExpressionRules(), OperatorRules(), CallRules(),
          StatementRules(), PortRules(), PlaceRules(), ValueRules(), TemplateRules(), FieldRules(),
          InitializationRules(), SubtypeRules(), RestrictionRules(), BehaviourRules(), UsageRules()})
      for (const T3Rule& rule : rules)
        for (auto kind = static_cast<size_t>(rule.kind);
             kind <= T3Tree_TypeRange[static_cast<size_t>(rule.kind)]; ++kind)
          use(kind, rule);
  }
};
}  // namespace

std::span<void (*const)(T3Tree_Node*)> ChecksOf(T3Kind kind) {
  static const Table& table = *new Table;
  const auto* begin = table.begin.data() + static_cast<size_t>(kind);
  return {table.checks.data() + begin[0], table.checks.data() + begin[1]};
}
