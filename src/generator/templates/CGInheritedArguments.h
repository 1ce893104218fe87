// Argument vectors of templates that are modified. The constraint of a definition refers to the parameters of
// all templates along its chain: those that are called there have vectors of their own, the others share the
// vector of what modifies them.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

namespace cgtemplate {
/// Calls `visit` for the nodes of a constraint, parents first; what stands below one for which it returns
/// false is passed over. Parameters of what a definition within the constraint modifies are left out, and
/// what is given for them along its chain is visited in their place.
void ForEachFreeNode(T3Tree_Node* constraint, const std::function<bool(T3Tree_Node*)>& visit);

/// Stands while code is written that evaluates parts of a definition's constraint: the vectors that these
/// read are filled when it is made, and the parameters mean their places.
class InheritedArguments {
 public:
  /// `own`: the vector of the definition's declaration; empty for a definition in line, which has none.
  InheritedArguments(T3TemplateDef* definition, std::string_view own, CFunction& function);
  InheritedArguments(const InheritedArguments&) = delete;
  InheritedArguments& operator=(const InheritedArguments&) = delete;
  ~InheritedArguments();

 private:
  std::vector<std::pair<T3Tree_Node*, std::string>> before_;
};
}  // namespace cgtemplate
