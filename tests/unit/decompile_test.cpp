#include <gtest/gtest.h>

#include "driver/diagnostics/Errors.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Parser.h"
#include "frontend/T3ParserDefs.h"
#include "generator/text/T3Decompile.h"

namespace {
class Decompile : public testing::Test {
 protected:
  void SetUp() override { gT3AST.root = nullptr; }
  void TearDown() override { gT3AST.root = nullptr; }

  // The template declaration of this body, of a type that does not matter.
  static T3Tree_Node* Template(const std::string& body) {
    gCurrentFilename = gIdents.MakeIdent("decompile.ttcn");
    gT3AST.root = nullptr;
    T3Scanner scanner;
    T3Parser parser(&scanner, &gErrors);
    scanner.BeginText("module M { template T t(integer p) := " + body + " }");
    EXPECT_EQ(0, parser.Parse()) << body;
    scanner.CloseFile();
    return gT3AST.root->as<T3Module>()->definition_part;
  }
  static std::string Rendered(const std::string& body) {
    return DecompileTemplateDef(Template(body)->as<T3TemplateDecl>()->definition);
  }
  // Texts that a reader knows again as they are.
  static void Keeps(std::initializer_list<const char*> bodies) {
    for (const char* body : bodies) EXPECT_EQ(body, Rendered(body));
  }
};
}  // namespace

TEST_F(Decompile, BracketsStandWhereThePrecedenceAsksForThem) {
  Keeps({"(a + b) * c",
         "a + b * c",
         "a - b - c",
         "not (a and b) or c",
         "a and b xor c",
         "(a or b) and not c",
         "-a * b",
         "-(a + b)",
         "a mod b rem c",
         "a < b + 1",
         "not4b a and4b b xor4b c or4b d",
         "a & b << 2",
         "a or4b b <@ 1 + n",
         "(a < b) + 1",
         "(a << 1) or4b b",
         "a @> 1",
         "a >> 1",
         "a != b",
         "a >= b",
         "a <= b"});
  EXPECT_EQ("a + b * c", Rendered("a + (b * c)"));
  EXPECT_EQ("a - b - c", Rendered("a - (b - c)"));
}

TEST_F(Decompile, ValuesOfAllForms) {
  Keeps({"5", "1.5E3", "true", "inconc", "\"say \"\"hi\"\"\"", "'0101'B", "'AF'O", "'F'H",
         "char(0, 0, 1, 171)", "omit", "null", "objid { itu_t(0) 4 0 }", "{}", "{ 1, -, 3 }",
         "{ f := ?, g := omit } ifpresent", "{ [0] := 1, [n] := { x := 2 } }",
         "{ 1, permutation(2, 3, *), 4 }", "{ permutation(1) }"});
}

TEST_F(Decompile, MatchingForms) {
  Keeps({"?", "*", "(1, 2, 3)", "(1 .. infinity)", "(-infinity .. 0)", "complement(1, 2)", "subset(1, 2)",
         "superset(1)", "? length (3)", "* length (1 .. 5) ifpresent", "pattern \"a*b\"", "'01?*'B",
         "(a, b) ifpresent"});
}

TEST_F(Decompile, ReferencesAndCalls) {
  Keeps({"a.b[1].c", "f(1, { 2 }, ?)", "t2(p, a.b)", "modifies_ok(integer : 5, R : { 1 })",
         "lengthof(a) + sizeof(b)", "substr(s, 1, 2)", "replace(s, 1, 2, \"x\")", "int2bit(5, 8)",
         "regexp(s, \"(a)\", 0)", "ispresent(a.b)", "match(a, ?)", "valueof(t3)", "rnd()", "self",
         "f(modifies t := { 1 })"});
}

TEST_F(Decompile, DescriptionsAreCut) {
  EXPECT_EQ("\"abcdefgh\"", GetTemplateDescription(Template("\"abcdefgh\""), 10));
  EXPECT_EQ("\"abcde...", GetTemplateDescription(Template("\"abcdefgh\""), 9));
  EXPECT_EQ("\"a...", GetTemplateDescription(Template("\"abcdefgh\""), 5));
  for (const long limit : {3L, 1L, 0L})
    EXPECT_EQ("\"...", GetTemplateDescription(Template("\"abcd\""), limit));
  EXPECT_EQ("\"\u00e4\u20ac...", GetTemplateDescription(Template("\"\u00e4\u20ac\u00fcabc\""), 6));
  EXPECT_EQ(R"("a\\b")", GetTemplateDescription(Template(R"("a\b")"), 100));
}

TEST_F(Decompile, NestingBeyondTheLimitIsLeftOut) {
  std::string body = "1";
  for (int i = 0; i < 1000; ++i) body = "{ " + body + " }";
  EXPECT_NE(std::string::npos, Rendered(body).find("{ <Description is n/a> }"));
}
