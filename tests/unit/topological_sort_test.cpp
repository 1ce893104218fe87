// Order by dependency, and shortest cycles.
#include "support/TopologicalSort.h"

#include <gtest/gtest.h>

namespace {
using Sort = TopologicalSort<long>;
using Numbers = std::vector<long>;

struct Resolved {
  bool done;
  Numbers order;
  Numbers cycle;
};

Resolved Resolve(std::set<long> start, Sort::Dependencies dependencies) {
  Resolved result{};
  result.done =
      Sort(std::move(start), std::move(dependencies)).ResolveDependencies(&result.order, &result.cycle);
  return result;
}

TEST(TopologicalSort, ThingsDependedOnComeFirst) {
  EXPECT_EQ(Resolve({1}, {{1, {2}}, {2, {}}}).order, (Numbers{2, 1}));
  EXPECT_EQ(Resolve({3, 5, 7}, {}).order, (Numbers{7, 5, 3}));
  // 4 is drawn in; 1 and 2 are free in the first round
  EXPECT_EQ(Resolve({1, 2, 3}, {{1, {4}}, {2, {3}}, {3, {4}}, {9, {1}}}).order, (Numbers{4, 3, 2, 1}));
  EXPECT_TRUE(Resolve({}, {{1, {1}}}).done);
  Numbers order{42};
  Numbers cycle;
  EXPECT_TRUE(Sort({1}, {{1, {2}}}).ResolveDependencies(&order, &cycle));
  EXPECT_EQ(order, (Numbers{42, 2, 1}));
}

TEST(TopologicalSort, TheShortestCycleIsTold) {
  EXPECT_EQ(Resolve({1}, {{1, {1}}}).cycle, (Numbers{1, 1}));
  EXPECT_EQ(Resolve({1, 4}, {{1, {2}}, {2, {3}}, {3, {1}}, {4, {5}}, {5, {4}}}).cycle, (Numbers{4, 5, 4}));
  // of two, the first in order; entered where the path from the start meets it
  EXPECT_EQ(Resolve({1, 7}, {{1, {6}}, {6, {5}}, {5, {6}}, {7, {8}}, {8, {7}}}).cycle, (Numbers{6, 5, 6}));
  EXPECT_EQ(Resolve({1, 5}, {{1, {6}}, {6, {5}}, {5, {6}}}).cycle, (Numbers{5, 6, 5}));
  EXPECT_FALSE(Resolve({1}, {{1, {2}}, {2, {2}}}).done);
  EXPECT_TRUE(Resolve({3}, {{1, {1}}, {3, {}}}).done);
}

TEST(TopologicalSort, ManyCyclesDoNotExplode) {
  // Layers of full connection, closed to a ring: 8 to the power of 30 cycles, all of one length.
  const long layers = 30;
  const long width = 8;
  Sort::Dependencies ring;
  for (long layer = 0; layer < layers; ++layer)
    for (long from = 0; from < width; ++from)
      for (long to = 0; to < width; ++to)
        ring[layer * width + from].insert((layer + 1) % layers * width + to);
  const Numbers cycle = Resolve({0, 1}, ring).cycle;
  ASSERT_EQ(cycle.size(), static_cast<size_t>(layers) + 1);
  EXPECT_EQ(cycle.front(), cycle.back());
  for (size_t i = 0; i + 1 < cycle.size(); ++i) EXPECT_TRUE(ring[cycle[i]].contains(cycle[i + 1]));
  // Everything depends on everything.
  Sort::Dependencies full;
  for (long from = 0; from < 300; ++from)
    for (long to = 0; to < 300; ++to)
      if (from != to) full[from].insert(to);
  EXPECT_EQ(Resolve({0}, full).cycle.size(), 3u);
}
}  // namespace
