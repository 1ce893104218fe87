// The order is kept by local repair: an edge that agrees with it costs nothing. For one that does not, what
// the needed node needs and what needs its user are searched side by side, edge by edge; the side that ends
// first is moved past the other node, so that the cost is that of the smaller side. A node that is named
// before it is entered stands in front of all others, so that chains of forward references cost nothing
// either.
#include "analysis/constants/T3Dependencies.h"

#include <algorithm>

namespace {
// The room between the numbers of new neighbours, which nodes that are moved later take.
constexpr int64_t kRoom = int64_t{1} << 36;
}  // namespace

T3DependencyGraph::Index T3DependencyGraph::IndexOf(T3Tree_Node* node, bool before) {
  // What stands there may be of a graph that was cleared.
  Index& place = index_of_(node);
  if (place < nodes_.size() && nodes_[place].tree == node) return place;
  place = static_cast<Index>(nodes_.size());
  nodes_.emplace_back();
  nodes_.back().tree = node;
  const Index added = place;
  Place({&added, 1}, before ? first_ : kNone);
  return added;
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

// Looks at one edge. Only nodes that stand between user and needed can lead from one to the other.
T3DependencyGraph::Step T3DependencyGraph::Continue(Search& search, Index user, Index needed) {
  const bool down = search.side == Side::Needed;
  for (; search.node < search.found.size(); ++search.node, search.edge = 0) {
    const Node& at = nodes_[search.found[search.node]];
    const std::vector<Index>& edges = down ? at.needs : at.needed_by;
    if (search.edge == edges.size()) continue;
    const Index next = edges[search.edge++];
    Node& met = nodes_[next];
    if (met.seen_by != Side::None && met.seen_by != search.side) return Step::Cycle;
    const bool between = down ? met.order > nodes_[user].order : met.order < nodes_[needed].order;
    if (met.seen_by == Side::None && between) {
      met.seen_by = search.side;
      search.found.push_back(next);
    }
    return Step::More;
  }
  return Step::End;
}

// Moves the needed node with what it needs in front of the user, or the user with what needs it behind the
// needed node; false when one leads to the other.
bool T3DependencyGraph::Reorder(Index user, Index needed) {
  Search down{Side::Needed, {needed}};
  Search up{Side::Users, {user}};
  nodes_[needed].seen_by = Side::Needed;
  nodes_[user].seen_by = Side::Users;
  Search* active = &up;
  Step step = Step::More;
  while (step == Step::More) {
    active = active == &up ? &down : &up;
    step = Continue(*active, user, needed);
  }
  for (const Search* search : {&down, &up})
    for (const Index at : search->found) nodes_[at].seen_by = Side::None;
  if (step == Step::Cycle) return false;
  std::sort(active->found.begin(), active->found.end(),
            [this](Index a, Index b) { return nodes_[a].order < nodes_[b].order; });
  Place(active->found, active == &down ? user : nodes_[needed].next);
  return true;
}

// Puts nodes, linked already or new, in front of another one, or behind all.
void T3DependencyGraph::Place(std::span<const Index> moved, Index before) {
  for (const Index at : moved) Unlink(at);
  const auto count = static_cast<int64_t>(moved.size());
  const auto room = [&] {
    const Index previous = before == kNone ? last_ : nodes_[before].previous;
    return before == kNone || previous == kNone
               ? kRoom
               : (nodes_[before].order - nodes_[previous].order) / (count + 1);
  };
  if (room() == 0) Renumber();
  const int64_t step = room();
  int64_t order = before != kNone  ? nodes_[before].order - step * (count + 1)
                  : last_ != kNone ? nodes_[last_].order
                                   : 0;
  for (const Index at : moved) {
    nodes_[at].order = order += step;
    Link(at, before);
  }
}

void T3DependencyGraph::Link(Index at, Index before) {
  const Index previous = before == kNone ? last_ : nodes_[before].previous;
  nodes_[at].previous = previous;
  nodes_[at].next = before;
  (previous == kNone ? first_ : nodes_[previous].next) = at;
  (before == kNone ? last_ : nodes_[before].previous) = at;
}

void T3DependencyGraph::Unlink(Index at) {
  Node& node = nodes_[at];
  if (node.previous == kNone && first_ != at) return;
  (node.previous == kNone ? first_ : nodes_[node.previous].next) = node.next;
  (node.next == kNone ? last_ : nodes_[node.next].previous) = node.previous;
}

void T3DependencyGraph::Renumber() {
  int64_t order = 0;
  for (Index at = first_; at != kNone; at = nodes_[at].next) nodes_[at].order = order += kRoom;
}

T3NodeList T3DependencyGraph::Ordered() const {
  T3NodeList result;
  for (Index at = first_; at != kNone; at = nodes_[at].next) result.push_back(nodes_[at].tree);
  return result;
}

void T3DependencyGraph::Clear() {
  nodes_.clear();
  first_ = last_ = kNone;
}
