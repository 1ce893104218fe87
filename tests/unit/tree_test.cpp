// The tree: walks over long lists and deep nestings, copying with sharing, and the text of a dump.
#include "frontend/T3Tree.h"

#include <gtest/gtest.h>

#include <cstring>

#include "frontend/T3GlobalASTNodes.h"

namespace {
constexpr tPosition kPlace{7, 1, 3};

T3Tree_Node* Literal(const char* text) {
  return gT3AST.mT3IntLiteral(kPlace, gStringM.PutString(text));
}

T3Tree_Node* Field(T3Tree_Node* next, T3Tree_Node* value) {
  return gT3AST.mT3FieldValue(kPlace, next, _sgT3NoFieldSpec(), value, t3_permutation_kind_t::No);
}

// A list whose elements hold the literals 1, 2, ... count.
T3Tree_Node* ListOf(int count) {
  T3Tree_Node* list = _sgT3NoFieldValue();
  for (int i = count; i > 0; --i) list = Field(list, Literal(std::to_string(i).c_str()));
  return list;
}

std::string ValueOf(T3Tree_Node* element) {
  auto* literal = element->as<T3FieldValue>()->value->as<T3IntLiteral>();
  return std::string(StringM::StGetString(literal->value));
}

T3Tree_Node* LeftDeepSum(int depth) {
  T3Tree_Node* sum = Literal("0");
  for (int i = 0; i < depth; ++i) sum = gT3AST.mT3Plus(kPlace, sum, Literal("1"));
  return sum;
}

// What a function writes on the stream that it gets.
template <class Write>
std::string Written(const Write& write) {
  char* memory = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&memory, &size);
  write(stream);
  std::fclose(stream);
  std::string result(memory, size);
  std::free(memory);
  return result;
}

std::string DumpOf(T3Tree_Node* node) {
  return Written([node](FILE* stream) { gT3AST.WriteT3Tree(stream, node); });
}

}  // namespace

TEST(Tree, WalksVisitEachNodeOnceInOrder) {
  T3Tree_Node* shared = Literal("9");
  T3Tree_Node* list = Field(Field(_sgT3NoFieldValue(), shared), gT3AST.mT3Plus(kPlace, shared, Literal("2")));
  std::string down, up;
  gT3AST.TraverseT3TreeTD(list, [&](T3Tree_Node* node) { down += std::string(T3KindName(node)) + " "; });
  gT3AST.TraverseT3TreeBU(list, [&](T3Tree_Node* node) { up += std::string(T3KindName(node)) + " "; });
  EXPECT_EQ("T3FieldValue T3NoFieldSpec T3Plus T3IntLiteral T3IntLiteral T3FieldValue T3NoFieldValue ", down);
  EXPECT_EQ("T3NoFieldSpec T3IntLiteral T3IntLiteral T3Plus T3NoFieldValue T3FieldValue T3FieldValue ", up);
}

TEST(Tree, ListsAndNestingsOfAnySizeAreWalked) {
  constexpr int kLength = 1000000;
  constexpr int kDepth = 100000;
  T3Tree_Node* list = gT3AST.ReverseT3Tree(ListOf(kLength));
  EXPECT_EQ("1000000", ValueOf(list));
  int elements = 0;
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node*) { ++elements; });
  EXPECT_EQ(kLength, elements);
  int nodes = 0;
  gT3AST.TraverseT3TreeBU(list, [&](T3Tree_Node*) { ++nodes; });
  EXPECT_EQ(2 * kLength + 2, nodes);
  EXPECT_EQ("1000000", ValueOf(gT3AST.CopyT3Tree(list)));

  T3Tree_Node* sum = LeftDeepSum(kDepth);
  gT3AST.InitT3Tree(sum);
  EXPECT_TRUE(gT3AST.CheckT3Tree(sum));
  int depth = 0;
  gT3AST.TraverseT3TreeTD(gT3AST.CopyT3Tree(sum), [&](T3Tree_Node* node) { depth += node->is<T3Plus>(); });
  EXPECT_EQ(kDepth, depth);
  EXPECT_LT(DumpOf(LeftDeepSum(kDepth / 10)).size(), 2000u * kDepth / 10);
}

TEST(Tree, InitSetsParentAndSlotAndForgetsAttributes) {
  T3Tree_Node* list = ListOf(2);
  auto* first = list->as<T3FieldValue>();
  first->value->as<T3IntLiteral>()->attr().SetEvaluated(
      T3IntLiteral_Attributes::const_int_value_calculated_bit);
  gT3AST.InitT3Tree(list);
  EXPECT_EQ(nullptr, list->parent);
  EXPECT_EQ(list, first->value->parent);
  EXPECT_EQ(list, first->next->parent);
  EXPECT_NE(first->value->child_slot, first->next->child_slot);
  const auto& info = T3Tree_KindInfo[static_cast<int>(list->kind)].fields[first->value->child_slot];
  EXPECT_STREQ("value", info.name);
  EXPECT_FALSE(first->value->as<T3IntLiteral>()->attr().IsEvaluated(
      T3IntLiteral_Attributes::const_int_value_calculated_bit));
}

TEST(Tree, CopyKeepsSharingAndStartsAnew) {
  T3Tree_Node* shared = Literal("5");
  auto* sum = gT3AST.mT3Plus(kPlace, shared, shared);
  gT3AST.InitT3Tree(sum);
  sum->attr().SetEvaluated(T3Plus_Attributes::const_int_value_calculated_bit);
  auto* copy = gT3AST.CopyT3Tree(sum)->as<T3Plus>();
  EXPECT_NE(sum, copy);
  EXPECT_EQ(copy->left, copy->right);
  EXPECT_NE(shared, copy->left);
  EXPECT_GT(copy->number, shared->number);
  EXPECT_EQ(copy, copy->left->parent);
  EXPECT_EQ(nullptr, copy->attributes);
  EXPECT_EQ(nullptr, gT3AST.CopyT3Tree(nullptr));
}

TEST(TreeDump, SharedNodeStandsOnceWithALabel) {
  T3Tree_Node* shared = Literal("42");
  EXPECT_EQ(
      "T3Plus\n"
      "position         = 07 00 00 00 03 00 01 00 00 00 \n"
      "left             =  1\n"
      "000001:  T3IntLiteral\n"
      "  position         = 07 00 00 00 03 00 01 00 00 00 \n"
      "  value            = 42\n"
      "right            = ^1\n",
      DumpOf(gT3AST.mT3Plus(kPlace, shared, shared)));
}
