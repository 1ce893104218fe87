// Names and scopes on trees built by hand: the classification of declarations, the places of nodes in long
// lists, the order of local names, groups of a path, and the merging of component lists.
#include "analysis/names/T3Names.h"

#include <gtest/gtest.h>

#include "analysis/names/T3Components.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Imports.h"
#include "analysis/walk/T3Stages.h"
#include "driver/diagnostics/Errors.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
tIdent Id(const std::string& name) {
  return gIdents.MakeIdent(name);
}

tPosition At(uint32_t line, uint16_t column = 1) {
  tPosition position;
  position.Line = line;
  position.Column = column;
  position.File = static_cast<uint32_t>(Id("names.ttcn"));
  return position;
}

T3Tree_Node* Reference(const char* name, uint32_t line = 1) {
  return gT3AST.mT3TypeReference(At(line), gT3AST.mT3Identifier(At(line), Id(name)));
}

T3Tree_Node* Const(const std::string& name, T3Tree_Node* next, uint32_t line = 1) {
  return gT3AST.mT3ConstDecl(At(line), next, Id(name), _sgT3NoWith(), Reference("integer", line),
                             gT3AST.mT3IntLiteral(At(line), gStringM.PutString("1")));
}

T3Tree_Node* TypeDecl(const char* name, T3Tree_Node* type, T3Tree_Node* next, uint32_t line = 1) {
  return gT3AST.mT3TypeDecl(At(line), next, Id(name), _sgT3NoWith(), type);
}

T3Tree_Node* Enum(std::initializer_list<const char*> literals) {
  T3Tree_Node* values = _sgT3NoEnumValue();
  for (const char* literal : literals)
    values = gT3AST.mT3EnumValue(At(1), values, Id(literal), _sgT3NoExpression());
  return gT3AST.mT3EnumType(At(1), values);
}

T3Tree_Node* Group(const char* name, T3Tree_Node* body, T3Tree_Node* next, uint32_t line = 1) {
  return gT3AST.mT3GroupDecl(At(line), next, Id(name), _sgT3NoWith(), body);
}

T3Tree_Node* Local(const char* name, T3Tree_Node* next, uint32_t line) {
  return gT3AST.mT3DeclStmt(At(line), next, Const(name, _sgT3NoDecl(), line));
}

T3Tree_Node* Function(const char* name, T3Tree_Node* body, T3Tree_Node* next,
                      T3Tree_Node* parameters = _sgT3NoFormalPar(), T3Tree_Node* runs_on = nullptr) {
  if (runs_on == nullptr) runs_on = gT3AST.MakeT3Tree(T3Kind::T3NoType);
  return gT3AST.mT3Function(At(1), next, Id(name), _sgT3NoWith(), parameters, runs_on, body,
                            gT3AST.MakeT3Tree(T3Kind::T3NoType), false, t3_template_restriction_t::None);
}

T3Module* Module(const char* name, T3Tree_Node* decls) {
  T3Module* module = gT3AST.mT3Module(At(1), _sgT3NoModule(), Id(name), gStringM.PutString("\"TTCN-3\""), 0,
                                      false, false, false, _sgT3NoExpression(), decls, _sgT3NoWith());
  module->representation = _sgT3TTCN_3();
  gT3ModuleMap[module->name] = module;
  return module;
}

// The stages up to the places.
T3Tree_Node* Analysed(T3Module* module) {
  PreprocessImports(module);
  T3Tree_Node* root = AddBuiltinTypes(module);
  ExtendComponents(root);
  SetPlaces(root);
  return root;
}

T3Tree_Node* EnvOf(T3Module* module) {
  return module->definition_part->place->env;
}

// What is written on standard error.
template <class Call>
std::string Messages(const Call& call) {
  testing::internal::CaptureStderr();
  call();
  gErrors.BeginErrors();
  return testing::internal::GetCapturedStderr();
}

T3Tree_Node* ImportAll(const char* module, T3Tree_Node* next) {
  return gT3AST.mT3ImportAllDecl(At(1), next, NoIdent, _sgT3NoWith(),
                                 gT3AST.mT3ImportIdentifier(At(1), Id(module)),
                                 gT3AST.mT3ImportTerminator(At(1)), false, gStringM.EmptyString(),
                                 _sgT3NoImportException(), t3_import_restr_t::All);
}

TEST(Names, LocalNamesBeatImportedOnesAndLiteralsOfOneNameAreKeptTogether) {
  Analysed(Module("na_1", Const("a", Const("b", _sgT3NoDecl()))));
  Analysed(Module("na_2", Const("b", TypeDecl("E", Enum({"red", "blue"}), _sgT3NoDecl()))));
  T3Module* module =
      Module("na_3",
             ImportAll("na_1", ImportAll("na_2", Const("a", TypeDecl("F", Enum({"red"}),
                                                                     TypeDecl("G", Enum({"red", "c"}),
                                                                              Const("c", _sgT3NoDecl())))))));
  Analysed(module);
  T3Tree_Node* env = EnvOf(module);
  EXPECT_TRUE(IdentifyQuietly(env, Id("a"), 0)->is<T3ConstDecl>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("a"), Id("na_1"))->is<T3ImportConstDecl>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("b"), 0)->is<T3NoDecl>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("b"), Id("na_2"))->is<T3ImportConstDecl>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("blue"), 0)->is<T3EnumType>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("red"), 0)->is<T3AmbiguousType>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("c"), 0)->is<T3NoDecl>());
  EXPECT_TRUE(IdentifyQuietly(env, Id("na_1"), 0)->is<T3Module>());
  EXPECT_EQ(ExtractTypeFromDecl(IdentifyQuietly(env, Id("integer"), 0)), gT3IntegerType);
}

TEST(Names, AFailureOfAScopeIsReportedOnce) {
  T3Module* module = Module("nb_1", Const("a", Const("a", _sgT3NoDecl())));
  Analysed(module);
  const std::string text = Messages([&] {
    for (uint32_t line = 5; line < 8; ++line) NewIdentify1(EnvOf(module), Id("a"), 0, At(line), true);
    for (uint32_t line = 5; line < 8; ++line) NewIdentify1(EnvOf(module), Id("x"), 0, At(line, 9), true);
    NewIdentify1(EnvOf(module), Id("y"), 0, At(9), false);
  });
  EXPECT_EQ(text,
            "names.ttcn(5) : column 1 : Error       multiple local declarations for \"a\"\n"
            "names.ttcn(5) : column 9 : Error       no declaration for \"x\"\n");
}

TEST(Names, ALocalNameIsKnownBehindItsDeclarationInItsOwner) {
  T3Module* module =
      Module("nc_1", Const("m", Function("f", Local("x", _sgT3NoStmt(), 10), _sgT3NoDecl()), 20));
  Analysed(module);
  auto* function = module->definition_part->as<_T3Decl>()->next->as<T3Function>();
  T3Tree_Node* stmt = function->body;
  T3Tree_Node* local = stmt->as<T3DeclStmt>()->decl;
  const auto use = [&](uint32_t line) {
    T3Tree_Node* id = gT3AST.mT3Identifier(At(line), Id("x"));
    id->place = stmt->place;
    return id;
  };
  EXPECT_FALSE(DefUsePositionsConsistent(local, use(9)));
  EXPECT_TRUE(DefUsePositionsConsistent(local, use(10)));
  EXPECT_TRUE(DefUsePositionsConsistent(module->definition_part, use(1)));
  EXPECT_EQ(local->place->vexa_owner, function);
  EXPECT_EQ(local->place->top_scope_owner, function);
  EXPECT_EQ(local->as<_T3Decl>()->attr().vexa_place, 3);
}

TEST(Names, TheDeclarationsOfTheComponentAreAroundTheParameters) {
  T3Tree_Node* component = gT3AST.mT3ComponentType(At(1), _sgT3NoTypeItem(), Const("inC", _sgT3NoDecl()));
  T3Tree_Node* alias = gT3AST.mT3SubType(At(1), Reference("C"), _sgT3NoExpression());
  T3Tree_Node* parameter = gT3AST.mT3FormalPar(At(1), _sgT3NoFormalPar(), Id("p"), Reference("integer"),
                                               t3_par_pass_t::In, _sgT3NoExpression());
  T3Tree_Node* function =
      Function("f", Local("x", _sgT3NoStmt(), 2), _sgT3NoDecl(), parameter, Reference("D"));
  Analysed(Module("nd_1", TypeDecl("D", alias, TypeDecl("C", component, function))));
  auto* decl = function->as<T3Function>();
  EXPECT_EQ(decl->attr().vexa_component_type, component);
  EXPECT_TRUE(decl->attr().has_component);
  T3Tree_Node* env = decl->body->place->env;
  for (const char* name : {"x", "p", "inC", "f", "integer"})
    EXPECT_FALSE(IdentifyQuietly(env, Id(name), 0)->is<T3NoDecl>()) << name;
  EXPECT_TRUE(IdentifyQuietly(decl->place->env, Id("inC"), 0)->is<T3NoDecl>());
  EXPECT_TRUE(IdentifyQuietly(parameter->place->env, Id("x"), 0)->is<T3NoDecl>());
  EXPECT_EQ(IdentifyQuietly(env, Id("inC"), 0)->place->vexa_owner, component);
}

TEST(Names, LongListsAndDeepGroupsNeedNoStack) {
  T3Tree_Node* decls = _sgT3NoDecl();
  for (int i = 0; i < 100000; ++i) decls = Const("long" + std::to_string(i), decls);
  for (int i = 0; i < 50000; ++i) decls = Group("g", decls, _sgT3NoDecl());
  T3Module* module = Module("ne_1", decls);
  Analysed(module);
  for (int i = 0; i < 100000; ++i) {
    const std::string name = "long" + std::to_string(i);
    EXPECT_TRUE(NewIdentify1(EnvOf(module), Id(name), 0, At(1), false)->is<T3ConstDecl>());
  }
  T3Tree_Node* body = _sgT3NoStmt();
  for (int i = 0; i < 100000; ++i) body = gT3AST.mT3LabelStmt(At(1), body, Id("l" + std::to_string(i)));
  T3Tree_Node* function = Function("f", body, _sgT3NoDecl());
  Analysed(Module("ne_2", function));
  EXPECT_EQ(Messages([&] {
              for (T3Tree_Node* s = body; s->is<_T3Stmt>(); s = s->as<_T3Stmt>()->next) CheckNode(s);
            }),
            "");
  ClearNameCache();
}

TEST(Names, DeepElseBranchesKeepOneScopeDepth) {
  T3Tree_Node* chain = _sgT3NoStmt();
  for (int i = 0; i < 50000; ++i)
    chain =
        gT3AST.mT3IfStmt(At(1), _sgT3NoStmt(), gT3AST.mT3BooleanLiteral(At(1), true), _sgT3NoStmt(), chain);
  Analysed(Module("nf_1", Function("f", chain, _sgT3NoDecl())));
  T3Tree_Node* last = chain;
  while (last->as<T3IfStmt>()->else_stmt->is<T3IfStmt>()) last = last->as<T3IfStmt>()->else_stmt;
  EXPECT_EQ(last->place->env, chain->place->env);
  EXPECT_EQ(last->place->vexa_enclosing_block->kind, T3Kind::T3IfStmt);
}

T3Tree_Node* Path(std::initializer_list<const char*> names) {
  T3Tree_Node* path = gT3AST.mT3ImportTerminator(At(1));
  for (const char* name : names) path = gT3AST.mT3ImportQualified(At(1), path, Id(name));
  return path;
}

TEST(Imports, AGroupIsFoundAtAnyDepthAndOnce) {
  T3Tree_Node* inner = Group("c", _sgT3NoDecl(), _sgT3NoDecl());
  T3Tree_Node* decls = Group("a", Group("b", inner, _sgT3NoDecl()),
                             Group("d", Group("b", _sgT3NoDecl(), _sgT3NoDecl(), 7), _sgT3NoDecl()));
  T3Module* module = Module("ng_1", decls);
  EXPECT_EQ(FindGroupInModule(module, Path({"c"})), inner);
  EXPECT_EQ(FindGroupInModule(module, Path({"a", "c"})), inner);
  EXPECT_TRUE(FindGroupInModule(module, Path({"d", "c"}))->is<T3NoDecl>());
  EXPECT_EQ(ImportRef2String(Path({"a", "b", "c"})), "a.b.c");
  EXPECT_EQ(
      Messages([&] { EXPECT_TRUE(FindGroupInModule(module, Path({"b"}))->is<T3NoDecl>()); }),
      "names.ttcn(7) : column 1 : Error       group identifier \"b\" is ambiguous in module \"ng_1\"\n");
}

TEST(Imports, ALanguageClauseIsHeldAgainstTheLanguageOfTheModule) {
  T3Module* source = Module("nj_1", Const("a", _sgT3NoDecl()));
  Analysed(source);
  const auto told = [&](bool asn1, const char* language) {
    source->representation = asn1 ? gT3AST.MakeT3Tree(T3Kind::T3ASN_1) : _sgT3TTCN_3();
    T3Tree_Node* import = ImportAll("nj_1", _sgT3NoDecl());
    import->as<_T3ImportDecl>()->language = gStringM.PutString(language);
    T3Module* user = Module("nj_2", import);
    return Messages([&] { PreprocessImports(user); });
  };
  const std::string warning = "names.ttcn(1) : column 1 : Warning     imported module is not ";
  const std::string clause = " though specified in the language clause\n";
  for (const char* language : {"\"ASN.1:1988\"", "\"ASN.1:1994\"", "\"ASN.1:1997\"", "\"ASN.1:2002\""}) {
    EXPECT_EQ(told(true, language), "") << language;
    EXPECT_EQ(told(false, language), warning + "ASN.1" + clause) << language;
  }
  for (const char* language : {"\"TTCN-3:2001\"", "\"TTCN-3:2003\"", "\"TTCN-3:2005\"", "\"TTCN-3\""}) {
    EXPECT_EQ(told(false, language), "") << language;
    EXPECT_EQ(told(true, language), warning + "TTCN-3" + clause) << language;
  }
  for (const char* language : {"", "\"ASN.1\"", "\"TTCN-3:1999\""}) {
    EXPECT_EQ(told(false, language), "") << language;
    EXPECT_EQ(told(true, language), "") << language;
  }
}

TEST(Imports, ADeclarationImportedTwiceHasTheAttributesOfTheLaterStatementAndNotesBoth) {
  T3Module* source = Module("nh_1", Const("a", Const("b", _sgT3NoDecl())));
  Analysed(source);
  T3Tree_Node* first = gT3AST.MakeT3Tree(T3Kind::T3With);
  T3Tree_Node* second = gT3AST.MakeT3Tree(T3Kind::T3With);
  T3Tree_Node* all = ImportAll("nh_1", _sgT3NoDecl());
  all->as<_T3Decl>()->with_spec = second;
  T3Tree_Node* one =
      gT3AST.mT3ImportConstDecl(At(1), all, NoIdent, first, gT3AST.mT3ImportIdentifier(At(1), Id("nh_1")),
                                gT3AST.mT3ImportIdentifier(At(1), Id("a")), false, gStringM.EmptyString());
  T3Module* user = Module("nh_2", one);
  PreprocessImports(user);
  std::map<std::string, T3Tree_Node*> imported;
  for (T3Tree_Node* decl = user->definition_part; decl->is<_T3Decl>(); decl = decl->as<_T3Decl>()->next)
    if (!decl->is<T3ImportAllDecl>()) {
      const tIdent name = Ref2Id(decl->as<_T3ImportDecl>()->object);
      EXPECT_TRUE(imported.emplace(gIdents.GetString(name), decl).second);
    }
  ASSERT_EQ(imported.size(), 2u);
  EXPECT_EQ(imported.at("a")->as<_T3Decl>()->with_spec, second);
  EXPECT_EQ(imported.at("b")->as<_T3Decl>()->with_spec, second);
  T3Tree_Node* a = source->definition_part;
  EXPECT_EQ(*a->as<_T3Decl>()->cold().attributes_from_importing, (T3NodeList{first, second}));
  EXPECT_EQ(*a->as<_T3Decl>()->next->as<_T3Decl>()->cold().attributes_from_importing, T3NodeList{second});
  EXPECT_EQ(imported.at("a")->as<_T3ImportDecl>()->attr().def_aux, a);
}

TEST(Components, ADiamondHasTheCommonDeclarationsOnce) {
  T3Tree_Node* base = Const("d", _sgT3NoDecl());
  T3Tree_Node* a = nullptr;
  T3Tree_Node* b = nullptr;
  T3Tree_Node* top = nullptr;
  std::vector<tIdent> clashes;
  EXPECT_TRUE(AppendDeclList(CopyDeclsList(base), Const("inA", _sgT3NoDecl()), true, &a, &clashes));
  EXPECT_TRUE(AppendDeclList(CopyDeclsList(base), Const("inB", _sgT3NoDecl()), true, &b, &clashes));
  EXPECT_TRUE(AppendDeclList(CopyDeclsList(a), b, false, &top, &clashes));
  std::string names;
  for (T3Tree_Node* decl = top; decl->is<_T3Decl>(); decl = decl->as<_T3Decl>()->next)
    names += std::string(gIdents.GetString(decl->as<_T3Decl>()->name)) + " ";
  EXPECT_EQ(names, "d inA inB ");
  EXPECT_EQ(GetBaseDecl(top), base);
  EXPECT_FALSE(AppendDeclList(CopyDeclsList(a), Const("inA", _sgT3NoDecl()), true, &top, &clashes));
  EXPECT_EQ(clashes, std::vector<tIdent>{Id("inA")});
}
}  // namespace
