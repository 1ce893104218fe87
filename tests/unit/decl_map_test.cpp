#include "analysis/names/T3DeclMap.h"

#include <gtest/gtest.h>

#include "frontend/T3GlobalASTNodes.h"

namespace {
T3Tree_Node* Node() {
  return gT3AST.mT3NoExpression(NoPosition);
}

std::vector<T3Tree_Node*> Found(const T3DeclMap& map, tIdent name, tIdent qualifier = 0) {
  std::vector<T3Tree_Node*> found;
  for (const T3DeclMap::Entry& entry : map.Find(name))
    if (entry.Answers(qualifier)) found.push_back(entry.decl);
  return found;
}
using Nodes = std::vector<T3Tree_Node*>;
}  // namespace

TEST(DeclMap, NamesAreFoundThroughAllSizes) {
  constexpr tIdent kModule = 7;
  T3DeclMap map;
  EXPECT_TRUE(map.empty());
  std::vector<T3Tree_Node*> nodes;
  for (tIdent name = 1; name <= 3000; ++name) {
    nodes.push_back(Node());
    map.Insert(name * 64, kModule, nodes.back());
    // around the change from an array to a hash table, and now and then behind it
    if (name > 20 && name % 500 != 0) continue;
    for (tIdent known = 1; known <= name; ++known) {
      ASSERT_TRUE(map.MayHave(known * 64));
      ASSERT_EQ(Found(map, known * 64, kModule), Nodes{nodes[static_cast<size_t>(known - 1)]});
    }
    ASSERT_TRUE(map.Find(name * 64 + 1).empty());
    ASSERT_TRUE(map.Find((name + 1) * 64).empty());
  }
  EXPECT_FALSE(map.empty());
}

TEST(DeclMap, DeclarationsOfOneNameStandInTheOrderOfTheirNumbersOnce) {
  T3DeclMap map;
  T3Tree_Node* a = Node();
  T3Tree_Node* b = Node();
  T3Tree_Node* c = Node();
  map.Insert(2, 10, c);
  map.Insert(2, 10, c);
  EXPECT_EQ(Found(map, 2), Nodes{c});
  map.Insert(2, 11, a);
  map.Insert(2, 10, c);
  map.Insert(3, 11, b);
  EXPECT_EQ(Found(map, 2), (Nodes{a, c}));
  map.Insert(2, 0, b);
  EXPECT_EQ(Found(map, 2), (Nodes{a, b, c}));
  EXPECT_EQ(Found(map, 2, 11), Nodes{a});
  EXPECT_EQ(Found(map, 2, 12), Nodes{});
  EXPECT_EQ(Found(map, 3, 11), Nodes{b});
}

TEST(DeclMap, AHundredThousandDeclarationsOfOneNameAreEnteredBackwards) {
  T3DeclMap map;
  std::vector<T3Tree_Node*> nodes;
  for (int i = 0; i < 100000; ++i) nodes.push_back(Node());
  for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) map.Insert(5, 6, *node);
  EXPECT_EQ(Found(map, 5), nodes);
}
