// What a pass knows of the kinds of a class. A pass that goes by the kind of a node says beside its switch
// which kinds it handles, and for which there is nothing to do, and why; a kind of neither list ends the
// build, so that a new one shows itself at every place that must learn of it. A pass without a switch asks
// the lists themselves.
//
//     using Handled = T3Kinds<T3IfStmt, _T3LoopStmt>;
//     using Whole = T3Kinds<T3LogStmt>;  // no order within
//     static_assert(T3Covers<_T3Stmt, Handled, Whole>());
#pragma once

#include "frontend/T3Tree.h"

template <class... Nodes>
struct T3Kinds {
  static constexpr bool Has(size_t kind) { return ((kind >= Nodes::kFirst && kind <= Nodes::kLast) || ...); }
  static bool Has(const T3Tree_Node* node) { return Has(static_cast<size_t>(node->kind)); }
};

/// True when each kind of node of the class is in exactly one of the lists.
template <class Class, class... Lists>
constexpr bool T3Covers() {
  for (size_t kind = Class::kFirst; kind <= Class::kLast; ++kind)
    if (!kT3IsClass[kind] && (0 + ... + static_cast<int>(Lists::Has(kind))) != 1) return false;
  return true;
}
