// The graph of dependencies: its order, the edges that close cycles, and its cost on long chains.
#include "analysis/constants/T3Dependencies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "frontend/T3GlobalASTNodes.h"

namespace {
T3NodeList MakeNodes(size_t count) {
  T3NodeList nodes;
  for (size_t i = 0; i < count; ++i) nodes.push_back(gT3AST.mT3NoDecl(NoPosition));
  return nodes;
}

std::map<T3Tree_Node*, size_t> Places(const T3DependencyGraph& graph) {
  std::map<T3Tree_Node*, size_t> places;
  for (T3Tree_Node* node : graph.Ordered()) places.emplace(node, places.size());
  return places;
}
}  // namespace

TEST(Dependencies, OrdersANodeBehindWhatItNeeds) {
  const T3NodeList n = MakeNodes(4);
  T3DependencyGraph graph;
  EXPECT_FALSE(graph.addDependency(n[0], n[2]));
  EXPECT_FALSE(graph.addDependency(n[1], n[0]));
  EXPECT_FALSE(graph.addDependency(n[2], n[3]));
  graph.addDependencyNode(n[3]);
  EXPECT_EQ(graph.Ordered(), (T3NodeList{n[3], n[2], n[0], n[1]}));
}

TEST(Dependencies, TellsTheEdgeThatClosesACycleAndLeavesItOut) {
  const T3NodeList n = MakeNodes(3);
  T3DependencyGraph graph;
  EXPECT_TRUE(graph.addDependency(n[0], n[0]));
  EXPECT_FALSE(graph.addDependency(n[0], n[1]));
  EXPECT_FALSE(graph.addDependency(n[1], n[2]));
  EXPECT_TRUE(graph.addDependency(n[2], n[0]));
  EXPECT_TRUE(graph.addDependency(n[1], n[0]));
  EXPECT_EQ(graph.Ordered(), (T3NodeList{n[2], n[1], n[0]}));
}

TEST(Dependencies, AgreesWithASearchOnRandomGraphs) {
  std::mt19937 random(1);
  for (int round = 0; round < 50; ++round) {
    const size_t count = 12;
    const T3NodeList n = MakeNodes(count);
    T3DependencyGraph graph;
    bool reaches[count][count] = {};
    std::vector<std::pair<size_t, size_t>> kept;
    for (int edge = 0; edge < 40; ++edge) {
      const size_t from = random() % count;
      const size_t to = random() % count;
      const bool cycle = from == to || reaches[to][from];
      ASSERT_EQ(graph.addDependency(n[from], n[to]), cycle);
      if (cycle) continue;
      kept.emplace_back(from, to);
      for (size_t a = 0; a < count; ++a)
        for (size_t b = 0; b < count; ++b)
          if ((a == from || reaches[a][from]) && (b == to || reaches[to][b])) reaches[a][b] = true;
    }
    const auto places = Places(graph);
    for (const auto& [from, to] : kept) EXPECT_GT(places.at(n[from]), places.at(n[to]));
  }
}

TEST(Dependencies, LongChainsInEitherDirectionAreCheap) {
  const T3NodeList n = MakeNodes(200000);
  const T3NodeList m = MakeNodes(n.size());
  T3DependencyGraph forward, backward;
  for (size_t i = 0; i + 1 < n.size(); ++i) {
    ASSERT_FALSE(forward.addDependency(n[i], n[i + 1]));
    ASSERT_FALSE(backward.addDependency(m[i + 1], m[i]));
  }
  EXPECT_EQ(forward.Ordered().front(), n.back());
  EXPECT_EQ(backward.Ordered().front(), m.front());
  EXPECT_TRUE(forward.addDependency(n.back(), n.front()));
}

TEST(Dependencies, MovesTheSmallerSide) {
  // Each user stands in front of all that need it when what it needs itself is entered behind them.
  const T3NodeList n = MakeNodes(100000);
  T3DependencyGraph graph;
  for (size_t i = 0; i + 2 < n.size(); i += 2) {
    ASSERT_FALSE(graph.addDependency(n[i + 1], n[i + 2]));
    ASSERT_FALSE(graph.addDependency(n[i], n[i + 1]));
  }
  const auto places = Places(graph);
  for (size_t i = 0; i + 2 < n.size(); ++i) ASSERT_GT(places.at(n[i]), places.at(n[i + 1]));
}

TEST(Dependencies, KeepsMovingNodesToTheSamePlace) {
  const T3NodeList n = MakeNodes(2000);
  T3DependencyGraph graph;
  for (T3Tree_Node* node : n) graph.addDependencyNode(node);
  for (size_t i = 1; i < n.size(); ++i) ASSERT_FALSE(graph.addDependency(n[0], n[i]));
  EXPECT_EQ(graph.Ordered().back(), n[0]);
  EXPECT_EQ(graph.Ordered().size(), n.size());
  for (size_t i = 1; i < n.size(); ++i) ASSERT_TRUE(graph.addDependency(n[i], n[0]));
}
