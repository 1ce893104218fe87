// The tree: kinds and memory, walks over long lists and deep nestings, copying with sharing, the check,
// and the exact text of dumps.
#include "frontend/T3Tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <regex>

#include "driver/diagnostics/Errors.h"
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

std::string CheckReportOf(T3Tree_Node* node, bool* passed) {
  return Written([&](FILE* stream) {
    gT3AST.SetCheckReport(stream);
    *passed = gT3AST.CheckT3Tree(node);
    gT3AST.SetCheckReport(stderr);
  });
}
}  // namespace

TEST(Tree, KindTestIsARange) {
  EXPECT_FALSE(T3Tree_IsType(nullptr, T3Kind::_T3Expression));
  T3Tree_Node* sum = LeftDeepSum(1);
  EXPECT_TRUE(T3Tree_IsType(sum, T3Kind::T3Plus));
  EXPECT_TRUE(T3Tree_IsType(sum, T3Kind::_T3BinaryArithmeticExpression));
  EXPECT_TRUE(T3Tree_IsType(sum, T3Kind::_T3Expression));
  EXPECT_FALSE(T3Tree_IsType(sum, T3Kind::_T3BinaryLogicExpression));
  EXPECT_FALSE(T3Tree_IsType(sum, T3Kind::T3Minus));
  EXPECT_STREQ("NoT3Tree", T3KindName(nullptr));
}

TEST(Tree, SharedNodesAreOneObjectAndNewOnesAreNot) {
  EXPECT_EQ(_sgT3NoStmt(), _sgT3NoStmt(true));
  EXPECT_NE(_sgT3NoStmt(), _sgT3NoStmt(false));
  EXPECT_TRUE(_sgT3NoStmt(false)->is<T3NoStmt>());
}

TEST(Tree, FullBlockIsLeftForANewOne) {
  const size_t before = gT3AST.MemoryUsed();
  void* wide = gT3AST.T3Tree_Alloc(20475);
  EXPECT_GE(gT3AST.MemoryUsed(), before + 20480);
  std::memset(wide, 0xab, 20475);
  const size_t one_block = gT3AST.MemoryUsed();
  T3Tree_Node* node = ListOf(1);  // what is left of the block is too small
  EXPECT_GT(gT3AST.MemoryUsed(), one_block);
  EXPECT_EQ("1", ValueOf(node));
  EXPECT_EQ(0xab, static_cast<unsigned char*>(wide)[20474]);
}

TEST(Tree, WalksVisitEachNodeOnceInOrder) {
  T3Tree_Node* shared = Literal("9");
  T3Tree_Node* list = Field(Field(_sgT3NoFieldValue(), shared), gT3AST.mT3Plus(kPlace, shared, Literal("2")));
  std::string down, up;
  gT3AST.TraverseT3TreeTD(list, [&](T3Tree_Node* node) { down += std::string(T3KindName(node)) + " "; });
  gT3AST.TraverseT3TreeBU(list, [&](T3Tree_Node* node) { up += std::string(T3KindName(node)) + " "; });
  EXPECT_EQ("T3FieldValue T3NoFieldSpec T3Plus T3IntLiteral T3IntLiteral T3FieldValue T3NoFieldValue ", down);
  EXPECT_EQ("T3NoFieldSpec T3IntLiteral T3IntLiteral T3Plus T3NoFieldValue T3FieldValue T3FieldValue ", up);
}

TEST(Tree, MarksAreClearAfterAWalkEvenIfItIsLeftByAnException) {
  T3Tree_Node* list = ListOf(3);
  EXPECT_THROW(gT3AST.TraverseT3TreeTD(list,
                                       [](T3Tree_Node* node) {
                                         if (node->is<T3IntLiteral>()) throw 1;
                                       }),
               int);
  int met = 0, inner = 0;
  gT3AST.TraverseT3TreeTD(list, [&](T3Tree_Node* node) {
    ++met;
    if (node == list) gT3AST.TraverseT3TreeBU(node, [&](T3Tree_Node*) { ++inner; });
  });
  EXPECT_EQ(8, met);
  EXPECT_EQ(8, inner);
  EXPECT_EQ(0, list->mark);
  EXPECT_EQ(0, _sgT3NoFieldSpec()->mark);
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

TEST(Tree, ReverseKeepsTheEndMarkerAndEmptyLists) {
  T3Tree_Node* list = gT3AST.ReverseT3Tree(ListOf(3));
  std::string order;
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* element) { order += ValueOf(element); });
  EXPECT_EQ("321", order);
  EXPECT_EQ(_sgT3NoFieldValue(), gT3AST.ReverseT3Tree(_sgT3NoFieldValue()));
  EXPECT_EQ(nullptr, gT3AST.ReverseT3Tree(nullptr));
}

TEST(Tree, InitSetsParentAndSlotAndForgetsAttributes) {
  T3Tree_Node* list = ListOf(2);
  auto* first = list->as<T3FieldValue>();
  first->value->as<T3IntLiteral>()->attr().SetEvaluated(T3IntLiteral_Attributes::const_int_value_calculated_bit);
  gT3AST.InitT3Tree(list);
  EXPECT_EQ(nullptr, list->parent);
  EXPECT_EQ(list, first->value->parent);
  EXPECT_EQ(list, first->next->parent);
  EXPECT_NE(first->value->child_slot, first->next->child_slot);
  const auto& info = T3Tree_KindInfo[static_cast<int>(list->kind)].fields[first->value->child_slot];
  EXPECT_STREQ("value", info.name);
  EXPECT_FALSE(first->value->as<T3IntLiteral>()->attr().IsEvaluated(T3IntLiteral_Attributes::const_int_value_calculated_bit));
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

TEST(Tree, CopyLetsReferencesFollowTheirTargets) {
  auto* module = gT3AST.mT3Module(kPlace, _sgT3NoModule(), gIdents.MakeIdent("M"), gStringM.EmptyString(), 0,
                                  false, false, false, _sgT3NoExpression(), _sgT3NoDecl(), _sgT3NoWith());
  module->representation = module->def_id;
  auto* copy = gT3AST.CopyT3Tree(module)->as<T3Module>();
  EXPECT_EQ(copy->def_id, copy->representation);
  module->representation = _sgT3TTCN_3();
  EXPECT_EQ(_sgT3TTCN_3(), gT3AST.CopyT3Tree(module)->as<T3Module>()->representation);
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

TEST(TreeDump, ListStaysOnItsLevelAndNullIsNamed) {
  T3Tree_Node* tail = gT3AST.mT3FieldValue(kPlace, nullptr, nullptr, nullptr, t3_permutation_kind_t::Body);
  EXPECT_EQ(
      "T3FieldValue\n"
      "position         = 07 00 00 00 03 00 01 00 00 00 \n"
      "field            =  NoT3Tree\n"
      "value            = T3BooleanLiteral\n"
      "  position         = 07 00 00 00 03 00 01 00 00 00 \n"
      "  value            = T\n"
      "permutation_kind = 00 00 00 00 \n"
      "next             = T3FieldValue\n"
      "position         = 07 00 00 00 03 00 01 00 00 00 \n"
      "field            =  NoT3Tree\n"
      "value            =  NoT3Tree\n"
      "permutation_kind = 03 00 00 00 \n"
      "next             =  NoT3Tree\n",
      DumpOf(gT3AST.mT3FieldValue(kPlace, tail, nullptr, gT3AST.mT3BooleanLiteral(kPlace, true),
                                  t3_permutation_kind_t::No)));
  EXPECT_EQ(" NoT3Tree\n", DumpOf(nullptr));
}

TEST(TreeDump, OneNodeShowsItsChildrenAsAddresses) {
  T3Tree_Node* value = Literal("1");
  auto* node = gT3AST.mT3FieldValue(kPlace, nullptr, nullptr, value, t3_permutation_kind_t::Tail);
  const std::string text = Written([&](FILE* stream) { gT3AST.WriteT3TreeNode(stream, node); });
  char address[40];
  std::snprintf(address, sizeof address, "%08lx *", reinterpret_cast<unsigned long>(value));
  EXPECT_NE(std::string::npos, text.find(std::string("value            = ") + address + "\n")) << text;
  EXPECT_NE(std::string::npos, text.find("next             = NoT3Tree\n")) << text;
}

TEST(TreeDump, FailedStreamEndsTheProcess) {
  EXPECT_EXIT(
      {
        FILE* full = std::fopen("/dev/full", "w");
        gT3AST.WriteT3Tree(full, ListOf(1));
      },
      testing::ExitedWithCode(1), "Fatal       I/O error in: T3Tree.WriteT3Tree");
}

TEST(TreeCheck, SoundTreePassesSilently) {
  bool passed = false;
  EXPECT_EQ("", CheckReportOf(ListOf(3), &passed));
  EXPECT_TRUE(passed);
}

TEST(TreeCheck, WrongAndMissingChildrenAreReported) {
  bool passed = true;
  T3Tree_Node* wrong = gT3AST.mT3Plus(kPlace, _sgT3NoStmt(), Literal("1"));
  const std::string report = CheckReportOf(wrong, &passed);
  EXPECT_FALSE(passed);
  EXPECT_TRUE(std::regex_search(report, std::regex("^CheckTree error\n"
                                                   "   addr of parent: 0x[0-9a-f]+\n"
                                                   "   type of parent: T3Plus\n"
                                                   "   name of child : left\n"
                                                   "   addr of child : 0x[0-9a-f]+\n"
                                                   "   type of child : T3NoStmt\n"
                                                   "   expected type : _T3Expression\n"
                                                   "   parent node   : T3Plus\n"
                                                   "position ")))
      << report;
  EXPECT_NE(std::string::npos, report.find("   child node    : T3NoStmt\n"));

  T3Tree_Node* missing = gT3AST.mT3Plus(kPlace, Literal("1"), nullptr);
  EXPECT_NE(std::string::npos, CheckReportOf(missing, &passed)
                                   .find("   type of child : NoT3Tree\n   expected type : _T3Expression\n"));
  EXPECT_FALSE(passed);
  gT3AST.ConfigureT3Tree("CheckReportNoTree", "F");
  EXPECT_EQ("", CheckReportOf(missing, &passed));
  EXPECT_FALSE(passed);
  gT3AST.ConfigureT3Tree("CheckReportNoTree", "T");

  // What is wrong elsewhere is no fault of this tree.
  EXPECT_EQ("", CheckReportOf(ListOf(3), &passed));
  EXPECT_TRUE(passed);
}

TEST(TreeSettings, KnownNamesAreTakenAndOthersReported) {
  gT3AST.ConfigureT3Tree("DrawDepth", "12");
  gT3AST.ConfigureT3Tree("DrawFileName", std::string(300, 'x'));
  EXPECT_EQ(12, gT3AST.Settings().DrawDepth);
  EXPECT_EQ(255u, gT3AST.Settings().DrawFileName.size());
  const std::string text = Written([](FILE* stream) {
    FILE* before = gErrors.SetStream(stream);
    gT3AST.ConfigureT3Tree("DrawColour", "1");
    gErrors.SetStream(before);
  });
  EXPECT_EQ("Error       ConfigureTree: unknown parameter: DrawColour\n", text);
}

TEST(TreePermutation, OnlyKnownKindsHaveAConstant) {
  EXPECT_STREQ("lumo_not_permutated_c", PermutationKindToString(t3_permutation_kind_t::No));
  EXPECT_STREQ("lumo_permutation_head_tail_c",
               PermutationKindToString(static_cast<t3_permutation_kind_t>(1)));
  EXPECT_STREQ("lumo_permutation_tail_c", PermutationKindToString(static_cast<t3_permutation_kind_t>(4)));
  try {
    PermutationKindToString(static_cast<t3_permutation_kind_t>(5));
    FAIL();
  } catch (const std::string& text) {
    EXPECT_EQ("INVALID_AST: illegal permutation kind", text);
  }
}
