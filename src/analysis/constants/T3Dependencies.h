// A graph of dependencies that grows edge by edge and keeps an order in which each node stands behind what
// it depends on. An edge that would close a cycle is told and left out.
#pragma once

#include <span>
#include <vector>

#include "frontend/T3Tree.h"

class T3DependencyGraph {
 public:
  using Index = uint32_t;
  /// Where a node keeps its index in a graph: an attribute that no other graph with the same nodes uses.
  using IndexPlace = Index& (*)(T3Tree_Node* node);
  static Index& InDeclaration(T3Tree_Node* node) { return node->as<_T3DeclList>()->attr().dependency_index; }

  explicit T3DependencyGraph(IndexPlace place = InDeclaration) : index_of_(place) {}
  /// Enters a node, behind all others.
  void addDependencyNode(T3Tree_Node* node);
  /// Enters the edge from a node to one that it needs, which the caller does once for each pair; true when
  /// the edge closes a cycle.
  bool addDependency(T3Tree_Node* from, T3Tree_Node* to);
  /// All nodes in their order.
  T3NodeList Ordered() const;
  void Clear();

 private:
  static constexpr Index kNone = UINT32_MAX;
  enum class Side : uint8_t { None, Needed, Users };
  struct Node {
    T3Tree_Node* tree = nullptr;
    /// Grows along the list of all nodes, which `previous` and `next` link.
    int64_t order = 0;
    Index previous = kNone;
    Index next = kNone;
    std::vector<Index> needs;
    std::vector<Index> needed_by;
    Side seen_by = Side::None;
  };
  struct Search {
    Side side;
    std::vector<Index> found;
    /// The place in `found`, and in the edges of the node there, at which the search goes on.
    size_t node = 0;
    size_t edge = 0;
  };
  enum class Step { More, End, Cycle };

  Index IndexOf(T3Tree_Node* node, bool before);
  bool Reorder(Index user, Index needed);
  Step Continue(Search& search, Index user, Index needed);
  void Place(std::span<const Index> moved, Index before);
  void Link(Index at, Index before);
  void Unlink(Index at);
  void Renumber();

  IndexPlace index_of_;
  std::vector<Node> nodes_;
  Index first_ = kNone;
  Index last_ = kNone;
};
