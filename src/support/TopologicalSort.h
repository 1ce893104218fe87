// Orders elements so that each comes behind what it depends on, and finds a shortest cycle where that is
// impossible. Used for modules, for component extension and for template dependencies.
//
// The cycles of a graph can be exponentially many. They are searched as far as a fixed number of steps;
// a larger graph gets a shortest cycle from breadth-first searches instead.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

template <class T, class Less = std::less<T>>
class TopologicalSort {
 public:
  using Elements = std::set<T, Less>;
  using Dependencies = std::map<T, Elements, Less>;
  using Cycle = std::vector<T>;

  /// `dependencies` gives for an element what it depends on; an element without an entry depends on
  /// nothing.
  TopologicalSort(Elements start, Dependencies dependencies)
      : start_(std::move(start)), dependencies_(std::move(dependencies)) {}

  /// Appends the starting elements and all that they depend on to `order`, things depended on first,
  /// independent ones in descending order. False when there is a cycle: then `cycle` is a shortest one,
  /// with its first element again at the end, and `order` is of no use.
  bool ResolveDependencies(std::vector<T>* order, std::vector<T>* cycle);

  /// The distance between the last element and its nearest earlier occurrence.
  static size_t GetCycleLength(const Cycle& cycle) {
    for (size_t distance = 1; distance < cycle.size(); ++distance)
      if (Same(cycle[cycle.size() - 1 - distance], cycle.back())) return distance;
    return 0;
  }

 private:
  using Counts = std::map<T, size_t, Less>;
  // A place in the search for cycles: an element, and which of its dependencies comes next.
  struct Place {
    T element;
    typename Elements::const_iterator next;
    typename Elements::const_iterator end;
  };
  // What may still lie on a cycle: how many dependencies each element has there, and its dependents.
  struct Rest {
    Counts counts;
    std::map<T, std::vector<T>, Less> dependents;
  };
  static constexpr size_t kMaximumSteps = 20000;
  static constexpr size_t kMaximumVisits = 20000000;

  static bool Same(const T& a, const T& b) { return !Less()(a, b) && !Less()(b, a); }
  const Elements& DependenciesOf(const T& element) const {
    static const Elements none;
    const auto found = dependencies_.find(element);
    return found == dependencies_.end() ? none : found->second;
  }
  Counts CountDependents() const;
  void SearchCycles();
  bool SearchCyclesWorker(const T& from, size_t& steps);
  void Keep(Cycle cycle);
  Cycle GetShortestCycle() const;
  Rest MakeRest() const;
  static void TakeOut(std::vector<T> elements, Rest& rest);
  Cycle ShortestThrough(const T& element, const Counts& within, size_t& visits) const;
  void SearchShortestCycle();

  Elements start_;
  Dependencies dependencies_;
  // Only those of the least length found so far.
  std::set<Cycle> cycles_;
  size_t shortest_ = 0;
};

// For each element that is drawn in, how many drawn-in elements depend on it.
template <class T, class Less>
auto TopologicalSort<T, Less>::CountDependents() const -> Counts {
  Counts counts;
  Elements work = start_;
  for (const T& element : start_) counts.emplace(element, 0);
  while (!work.empty()) {
    const T element = *work.begin();
    work.erase(work.begin());
    for (const T& thing : DependenciesOf(element)) {
      const auto [entry, is_new] = counts.emplace(thing, 0);
      ++entry->second;
      if (is_new) work.insert(thing);
    }
  }
  return counts;
}

template <class T, class Less>
bool TopologicalSort<T, Less>::ResolveDependencies(std::vector<T>* order, std::vector<T>* cycle) {
  Counts counts = CountDependents();
  const size_t before = order->size();
  const size_t total = counts.size();
  Elements ready;
  for (const auto& [element, count] : counts)
    if (count == 0) ready.insert(element);
  while (!ready.empty()) {
    Elements next;
    order->insert(order->end(), ready.begin(), ready.end());
    for (const T& element : ready)
      for (const T& thing : DependenciesOf(element))
        if (--counts.find(thing)->second == 0) next.insert(thing);
    ready.swap(next);
  }
  if (order->size() - before < total) {
    SearchCycles();
    *cycle = GetShortestCycle();
    return false;
  }
  std::reverse(order->begin() + static_cast<std::ptrdiff_t>(before), order->end());
  return true;
}

template <class T, class Less>
void TopologicalSort<T, Less>::SearchCycles() {
  size_t steps = 0;
  for (const T& element : start_) {
    if (SearchCyclesWorker(element, steps)) continue;
    SearchShortestCycle();
    return;
  }
}

// Walks all paths from an element, each up to its first repetition. False when there are too many.
template <class T, class Less>
bool TopologicalSort<T, Less>::SearchCyclesWorker(const T& from, size_t& steps) {
  std::vector<Place> path;
  std::map<T, size_t, Less> on_path;
  const auto push = [&](const T& element) {
    const Elements& things = DependenciesOf(element);
    on_path.emplace(element, path.size());
    path.push_back({element, things.begin(), things.end()});
  };
  push(from);
  while (!path.empty()) {
    Place& place = path.back();
    if (place.next == place.end) {
      on_path.erase(place.element);
      path.pop_back();
      continue;
    }
    if (++steps > kMaximumSteps) return false;
    const T thing = *place.next++;
    const auto earlier = on_path.find(thing);
    if (earlier == on_path.end()) {
      push(thing);
      continue;
    }
    if (shortest_ != 0 && path.size() - earlier->second > shortest_) continue;
    Cycle cycle;
    for (size_t i = earlier->second; i < path.size(); ++i) cycle.push_back(path[i].element);
    cycle.push_back(thing);
    Keep(std::move(cycle));
  }
  return true;
}

template <class T, class Less>
void TopologicalSort<T, Less>::Keep(Cycle cycle) {
  const size_t length = GetCycleLength(cycle);
  if (shortest_ != 0 && length > shortest_) return;
  if (length != shortest_) cycles_.clear();
  shortest_ = length;
  cycles_.insert(std::move(cycle));
}

// The first of the shortest ones.
template <class T, class Less>
auto TopologicalSort<T, Less>::GetShortestCycle() const -> Cycle {
  const auto less = [](const Cycle& a, const Cycle& b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), Less());
  };
  const auto first = std::min_element(cycles_.begin(), cycles_.end(), less);
  return first == cycles_.end() ? Cycle() : *first;
}

// Counts, for each drawn-in element, its dependencies, notes who depends on it, and takes out what lies on
// no cycle because it leads to an end.
template <class T, class Less>
auto TopologicalSort<T, Less>::MakeRest() const -> Rest {
  Rest rest;
  std::vector<T> ends;
  for (const auto& [element, unused] : CountDependents()) {
    const Elements& things = DependenciesOf(element);
    rest.counts.emplace(element, things.size());
    for (const T& thing : things) rest.dependents[thing].push_back(element);
    if (things.empty()) ends.push_back(element);
  }
  TakeOut(std::move(ends), rest);
  return rest;
}

// Takes elements out, and those that thereby lead to an end.
template <class T, class Less>
void TopologicalSort<T, Less>::TakeOut(std::vector<T> elements, Rest& rest) {
  while (!elements.empty()) {
    const T element = elements.back();
    elements.pop_back();
    if (rest.counts.erase(element) == 0) continue;
    for (const T& dependent : rest.dependents[element]) {
      const auto entry = rest.counts.find(dependent);
      if (entry != rest.counts.end() && --entry->second == 0) elements.push_back(dependent);
    }
  }
}

// A shortest cycle through an element, not longer than what is known; empty when there is none.
template <class T, class Less>
auto TopologicalSort<T, Less>::ShortestThrough(const T& element, const Counts& within, size_t& visits) const
    -> Cycle {
  std::map<T, T, Less> reached_from;
  std::vector<T> layer{element};
  for (size_t depth = 1; !layer.empty() && (shortest_ == 0 || depth < shortest_); ++depth) {
    std::vector<T> next;
    for (const T& at : layer) {
      for (const T& thing : DependenciesOf(at)) {
        ++visits;
        if (Same(thing, element)) {
          Cycle cycle{element};
          for (T back = at; !Same(back, element); back = reached_from.find(back)->second)
            cycle.push_back(back);
          cycle.push_back(element);
          std::reverse(cycle.begin(), cycle.end());
          return cycle;
        }
        if (within.find(thing) != within.end() && reached_from.emplace(thing, at).second)
          next.push_back(thing);
      }
    }
    layer.swap(next);
  }
  return {};
}

// Element after element: a shortest cycle through it, then on without it.
template <class T, class Less>
void TopologicalSort<T, Less>::SearchShortestCycle() {
  cycles_.clear();
  shortest_ = 0;
  size_t visits = 0;
  Rest rest = MakeRest();
  while (!rest.counts.empty() && visits < kMaximumVisits && shortest_ != 1) {
    const T element = rest.counts.begin()->first;
    Cycle cycle = ShortestThrough(element, rest.counts, visits);
    if (!cycle.empty()) Keep(std::move(cycle));
    TakeOut({element}, rest);
  }
}
