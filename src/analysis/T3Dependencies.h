// A graph of dependencies that grows edge by edge and keeps an order in which each node stands behind what
// it depends on. An edge that would close a cycle is told and left out.
#pragma once

#include <unordered_map>
#include <vector>

#include "frontend/T3Tree.h"

class T3DependencyGraph {
 public:
  /// Enters a node, behind all others.
  void addDependencyNode(T3Tree_Node* node);
  /// Enters the edge from a node to one that it needs, which the caller does once for each pair; true when
  /// the edge closes a cycle.
  bool addDependency(T3Tree_Node* from, T3Tree_Node* to);
  /// All nodes in their order.
  T3NodeList Ordered() const;
  void Clear();

 private:
  using Index = uint32_t;
  struct Node {
    T3Tree_Node* tree = nullptr;
    int64_t order = 0;
    std::vector<Index> needs;
    std::vector<Index> needed_by;
    bool seen = false;
  };
  Index IndexOf(T3Tree_Node* node, bool before);
  bool Reorder(Index from, Index to);
  bool CollectNeeds(Index from, Index to, std::vector<Index>& found);
  void CollectUsers(Index from, int64_t limit, std::vector<Index>& found);

  std::vector<Node> nodes_;
  std::unordered_map<uint32_t, Index> index_;
  int64_t first_ = 0;
  int64_t last_ = 0;
};
