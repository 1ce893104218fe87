// A walk over a subtree for collecting: each node once, parents first, with a stack apart from the process's.
#pragma once

#include <vector>

#include "frontend/T3TreeFields.h"

/// Calls `visit` for each node of a subtree; the subtree below a node for which it returns false is passed
/// over. The root's `next` is not followed.
template <class Visit>
void ForEachInSubtree(T3Tree_Node* root, Visit visit) {
  constexpr ptrdiff_t kAhead = 1536;
  // One stack for all walks: one that is begun while another visits works above it.
  static std::vector<T3Tree_Node*> open;
  const size_t base = open.size();
  open.push_back(root);
  while (open.size() > base) {
    T3Tree_Node* node = open.back();
    open.pop_back();
    PrefetchNodesBehind(node, kAhead);
    const T3ChildFields& fields = ChildFieldsOf(node);
    if (node != root && fields.next.info != nullptr)
      if (T3Tree_Node* next = T3ChildField(node, fields.next)) open.push_back(next);
    if (!visit(node)) continue;
    for (auto child = fields.children.rbegin(); child != fields.children.rend(); ++child)
      if (T3Tree_Node* below = T3ChildField(node, *child)) open.push_back(below);
  }
}

/// Puts a node, which becomes its child, in the place of another one below the other's parent.
inline void ReplaceChild(T3Tree_Node* node, T3Tree_Node* by) {
  T3Tree_Node* parent = node->parent;
  for (const T3ChildFields::Child& child : ChildFieldsOf(parent).children)
    if (T3ChildField(parent, child) == node) T3ChildField(parent, child) = by;
  by->parent = parent;
  by->child_slot = node->child_slot;
}

/// Makes a node the parent of its children.
inline void AdoptChildren(T3Tree_Node* node) {
  for (const T3ChildFields::Child& child : ChildFieldsOf(node).children) {
    T3ChildField(node, child)->parent = node;
    T3ChildField(node, child)->child_slot = child.slot;
  }
}
