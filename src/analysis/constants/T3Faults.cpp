// The search for faults inside constants, along the constants that they refer to.
#include "analysis/constants/T3Faults.h"

#include <vector>

#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "support/NumberMap.h"
#include "support/ModuleCaches.h"

namespace {
// What is known of expressions and constants, by their numbers; what is still being looked through counts as
// without fault.
NumberMap<uint8_t>& g_known = *new NumberMap<uint8_t>;

// A node on the way from the expression that is asked for, and the constants that it still has to go to.
struct Place {
  T3Tree_Node* node;
  std::vector<T3Tree_Node*> constants;
};

T3Tree_Node* ConstantOf(T3Tree_Node* reference) {
  T3Tree_Node* def = BehindImport(reference->as<_T3Reference>()->attr().def);
  return T3Is<T3ConstDecl>(def) ? def : nullptr;
}

// True when a part of the node itself has no type; the constants to which it refers are noted.
bool FailsItself(Place& place) {
  auto* decl = place.node->try_as<T3ConstDecl>();
  bool fails = decl != nullptr && BaseTypeDef(decl)->is<T3ErrorType>();
  ForEachInSubtree(decl != nullptr ? decl->value : place.node, [&](T3Tree_Node* node) {
    if (fails || !node->is<_T3Expression>() || node->attributes == nullptr) return !fails;
    fails = T3Is<T3ErrorType>(node->as<_T3Expression>()->attr().expression_base_type);
    if (T3Tree_Node* constant = node->is<_T3Reference>() ? ConstantOf(node) : nullptr)
      place.constants.push_back(constant);
    return true;
  });
  return fails;
}
}  // namespace

bool HasFault(T3Tree_Node* expression) {
  std::vector<Place> way;
  T3Tree_Node* next = expression;
  for (;;) {
    const auto [known, is_new] = g_known.TryEmplace(next->number);
    bool fault = *known != 0;
    if (is_new) {
      way.push_back({next, {}});
      fault = FailsItself(way.back());
    }
    if (fault) {
      for (const Place& place : way) g_known[place.node->number] = 1;
      return true;
    }
    while (!way.empty() && way.back().constants.empty()) way.pop_back();
    if (way.empty()) return false;
    next = way.back().constants.back();
    way.back().constants.pop_back();
  }
}

namespace {
const ModuleCache kFaultsCache{[] { g_known.clear(); }};
}  // namespace
