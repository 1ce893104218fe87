// What is dropped of a module's derived data after its analysis and after its generation, and what stays.
#include <gtest/gtest.h>

#include "analysis/walk/T3Stages.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/text/CLocations.h"

namespace {
constexpr tPosition kPlace{1, 1, 1};

tIdent Id(const char* name) {
  return gIdents.MakeIdent(name);
}

T3Module* ModuleOf(T3Tree_Node* decls) {
  return gT3AST.mT3Module(kPlace, _sgT3NoModule(), Id("m"), gStringM.PutString("\"TTCN-3\""), 0, false, false,
                          false, _sgT3NoExpression(), decls, _sgT3NoWith());
}

T3ConstDecl* Constant(T3Tree_Node* next) {
  return gT3AST.mT3ConstDecl(kPlace, next, Id("c"), _sgT3NoWith(), gT3AST.mT3NoType(kPlace),
                             gT3AST.mT3IntLiteral(kPlace, gStringM.PutString("1")));
}

T3Function* Function(T3Tree_Node* next) {
  return gT3AST.mT3Function(kPlace, next, Id("f"), _sgT3NoWith(), _sgT3NoFormalPar(),
                            gT3AST.mT3NoType(kPlace), _sgT3NoStmt(), gT3AST.mT3NoType(kPlace), false,
                            t3_template_restriction_t::None);
}

// A set that is only pointed to.
DeclBitSet* SomeSet() {
  static int storage = 0;
  return reinterpret_cast<DeclBitSet*>(&storage);
}
}  // namespace

TEST(Memory, LocationsAreEmptyAgainAfterGeneration) {
  T3ConstDecl* inner = Constant(_sgT3NoDecl());
  T3ConstDecl* outer = Constant(gT3AST.mT3GroupDecl(kPlace, _sgT3NoDecl(), Id("g"), _sgT3NoWith(), inner));
  T3Module* module = ModuleOf(outer);
  for (T3Tree_Node* node :
       {static_cast<T3Tree_Node*>(inner), static_cast<T3Tree_Node*>(outer), inner->value}) {
    SetCLocation(node, "c1");
    SetRTSLocation(node, "v1");
  }
  outer->attr().vexa_place = 1;
  CleanupCompilationIntermediateData(module);
  for (T3Tree_Node* node :
       {static_cast<T3Tree_Node*>(inner), static_cast<T3Tree_Node*>(outer), inner->value}) {
    EXPECT_FALSE(HasCLocation(node));
    EXPECT_FALSE(HasRTSLocation(node));
  }
  EXPECT_EQ(1, outer->attr().vexa_place);
}

TEST(Memory, BitSetsGoWithTheAnalysisAndLocationsStay) {
  T3Function* function = Function(_sgT3NoDecl());
  auto* component = gT3AST.mT3ComponentType(kPlace, gT3AST.mT3NoType(kPlace), _sgT3NoDecl());
  auto* type = gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id("C"), _sgT3NoWith(), component);
  T3Tree_Node* group = gT3AST.mT3GroupDecl(kPlace, function, Id("g"), _sgT3NoWith(), type);
  T3ConstDecl* constant = Constant(group);
  function->cold().decl_bit_set = SomeSet();
  component->cold().decl_bit_set = SomeSet();
  SetRTSLocation(constant, "v1");
  CleanupAnalysisIntermediateData(ModuleOf(constant));
  EXPECT_EQ(nullptr, function->cold().decl_bit_set);
  EXPECT_EQ(nullptr, component->cold().decl_bit_set);
  EXPECT_TRUE(HasRTSLocation(constant));
}
