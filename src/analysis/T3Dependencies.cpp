// The order is kept by local repair: an edge that agrees with it costs nothing, and one that does not moves
// only the nodes between its ends. A node that is named before it is entered stands in front of all others,
// so that chains of forward references cost nothing either.
#include "analysis/T3Dependencies.h"

#include <algorithm>

T3DependencyGraph::Index T3DependencyGraph::IndexOf(T3Tree_Node* node, bool before) {
  const auto [found, made] = index_.emplace(node->number, static_cast<Index>(nodes_.size()));
  if (made) {
    nodes_.emplace_back();
    nodes_.back().tree = node;
    nodes_.back().order = before ? --first_ : ++last_;
  }
  return found->second;
}

void T3DependencyGraph::addDependencyNode(T3Tree_Node* node) {
  IndexOf(node, false);
}

bool T3DependencyGraph::addDependency(T3Tree_Node* from, T3Tree_Node* to) {
  const Index user = IndexOf(from, false);
  const Index needed = IndexOf(to, true);
  if (user == needed) return true;
  if (nodes_[needed].order > nodes_[user].order && !Reorder(user, needed)) return true;
  nodes_[user].needs.push_back(needed);
  nodes_[needed].needed_by.push_back(user);
  return false;
}

// What `to` needs and that stands behind `from` now; false when that leads to `from` itself.
bool T3DependencyGraph::CollectNeeds(Index from, Index to, std::vector<Index>& found) {
  std::vector<Index> open{to};
  nodes_[to].seen = true;
  bool acyclic = true;
  while (!open.empty()) {
    const Index at = open.back();
    open.pop_back();
    found.push_back(at);
    for (const Index next : nodes_[at].needs) {
      if (next == from) acyclic = false;
      if (nodes_[next].seen || nodes_[next].order < nodes_[from].order) continue;
      nodes_[next].seen = true;
      open.push_back(next);
    }
  }
  return acyclic;
}

// What needs `from` and stands in front of `limit` now.
void T3DependencyGraph::CollectUsers(Index from, int64_t limit, std::vector<Index>& found) {
  std::vector<Index> open{from};
  nodes_[from].seen = true;
  while (!open.empty()) {
    const Index at = open.back();
    open.pop_back();
    found.push_back(at);
    for (const Index next : nodes_[at].needed_by) {
      if (nodes_[next].seen || nodes_[next].order > limit) continue;
      nodes_[next].seen = true;
      open.push_back(next);
    }
  }
}

// Moves `to` and what it needs in front of `from` and what needs that; false when that is impossible.
bool T3DependencyGraph::Reorder(Index from, Index to) {
  std::vector<Index> needed;
  std::vector<Index> users;
  const bool acyclic = CollectNeeds(from, to, needed);
  if (acyclic) CollectUsers(from, nodes_[to].order, users);
  const auto by_order = [this](Index a, Index b) { return nodes_[a].order < nodes_[b].order; };
  std::sort(needed.begin(), needed.end(), by_order);
  std::sort(users.begin(), users.end(), by_order);
  for (const Index at : needed) nodes_[at].seen = false;
  for (const Index at : users) nodes_[at].seen = false;
  if (!acyclic) return false;
  std::vector<int64_t> places;
  for (const Index at : needed) places.push_back(nodes_[at].order);
  for (const Index at : users) places.push_back(nodes_[at].order);
  std::sort(places.begin(), places.end());
  size_t next = 0;
  for (const Index at : needed) nodes_[at].order = places[next++];
  for (const Index at : users) nodes_[at].order = places[next++];
  return true;
}

T3NodeList T3DependencyGraph::Ordered() const {
  std::vector<const Node*> sorted;
  for (const Node& node : nodes_) sorted.push_back(&node);
  std::sort(sorted.begin(), sorted.end(), [](const Node* a, const Node* b) { return a->order < b->order; });
  T3NodeList result;
  for (const Node* node : sorted) result.push_back(node->tree);
  return result;
}

void T3DependencyGraph::Clear() {
  nodes_.clear();
  index_.clear();
  first_ = last_ = 0;
}
