#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Parser.h"
#include "frontend/T3ParserDefs.h"
#include "frontend/T3Tree.h"
#include "frontend/T3TreeFields.h"

namespace {
template <class T>
T FieldOf(const T3Tree_Node* node, const T3FieldInfo& field) {
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(node) + field.offset, sizeof value);
  return value;
}

std::string Show(T3Tree_Node* node);

std::string ShowField(T3Tree_Node* node, const T3FieldInfo& field) {
  switch (field.shape) {
    case T3FieldShape::Node: {
      auto* child = FieldOf<T3Tree_Node*>(node, field);
      if (child == nullptr) return "0";
      std::string text = Show(child);
      const T3FieldInfo* next = ChildFieldsOf(child).next.info;
      if (next == nullptr) return text;
      for (auto* more = FieldOf<T3Tree_Node*>(child, *next);
           (next = ChildFieldsOf(more).next.info) != nullptr; more = FieldOf<T3Tree_Node*>(more, *next))
        text += "; " + Show(more);
      return "[" + text + "]";
    }
    case T3FieldShape::Ident:
      return gIdents.GetCStr(FieldOf<tIdent>(node, field));
    case T3FieldShape::String:
      return std::string(StringM::StGetString(FieldOf<tStringRef>(node, field)));
    case T3FieldShape::Bool:
      return FieldOf<bool>(node, field) ? "T" : "F";
    case T3FieldShape::Bytes:
      return field.size == sizeof(int) ? std::to_string(FieldOf<int>(node, field)) : "";
    default:
      return "";
  }
}

// A node as its kind without `T3` and, in brackets, its fields but `next` and positions. End markers show
// as "-", names as themselves, lists in square brackets.
std::string Show(T3Tree_Node* node) {
  std::string name = T3KindName(node);
  if (name.substr(0, 2) == "T3") name = name.substr(2);
  if (name.substr(0, 2) == "No" && name.size() > 2 && isupper(name[2]) && name != "NoWait" &&
      name != "NotUsedSymbol")
    return "-";
  if (auto* identifier = node->try_as<T3Identifier>()) return gIdents.GetCStr(identifier->id);
  if (auto* literal = node->try_as<T3IntLiteral>()) return std::string(StringM::StGetString(literal->value));
  std::string fields;
  for (const T3FieldInfo& field : T3Tree_KindInfo[static_cast<size_t>(node->kind)].fields) {
    if (field.record != T3FieldRecord::Node || field.shape == T3FieldShape::Position ||
        field.shape == T3FieldShape::Reference || std::string(field.name) == "next" ||
        std::string(field.name) == "implicit_type_decl")
      continue;
    fields += ", " + ShowField(node, field);
  }
  return fields.empty() ? name : name + "(" + fields.substr(2) + ")";
}

class ParserTest : public testing::Test {
 protected:
  void SetUp() override {
    stream_ = tmpfile();
    before_ = gErrors.SetStream(stream_);
    // Positions of one file are reported once in a run.
    static int files = 0;
    file_ = "m" + std::to_string(++files) + ".ttcn";
    gCurrentFilename = gIdents.MakeIdent(file_);
    gT3AST.root = nullptr;
    gParseErrors = 0;
  }

  void TearDown() override {
    gErrors.SetStream(before_);
    fclose(stream_);
    gT3CommandLine.maximum_errors = 100;
    gParseErrors = 0;
    gT3AST.root = nullptr;
  }

  long Parse(const std::string& text) {
    T3Scanner scanner;
    T3Parser parser(&scanner, &gErrors);
    scanner.BeginText(text);
    const long errors = parser.Parse();
    scanner.CloseFile();
    return errors;
  }

  static T3Module* LastModule() {
    auto* module = gT3AST.root->as<T3Module>();
    while (auto* next = module->next->try_as<T3Module>()) module = next;
    return module;
  }

  // The only definition of a module with this text.
  T3Tree_Node* ParseDefinition(const std::string& text) {
    EXPECT_EQ(0, Parse("module m { " + text + " }")) << text << "\n" << Messages();
    return LastModule()->definition_part;
  }

  std::string Definition(const std::string& text) { return Show(ParseDefinition(text)); }

  // The statements of a function with this body.
  std::string Statements(const std::string& text) {
    auto* function = ParseDefinition("function f() { " + text + " }")->as<T3Function>();
    auto* block = function->body->as<T3BlockStmt>();
    std::string shown;
    gT3AST.ForallT3Tree(block->body,
                        [&](T3Tree_Node* node) { shown += (shown.empty() ? "" : "; ") + Show(node); });
    return shown;
  }

  // A value, as the right side of an assignment.
  std::string Value(const std::string& text) {
    auto* function = ParseDefinition("function f() { v := " + text + " }")->as<T3Function>();
    return Show(function->body->as<T3BlockStmt>()->body->as<T3AssignStmt>()->rhs);
  }

  // The diagnostics since the last call, without the name of the file.
  std::string Messages() {
    fflush(stream_);
    rewind(stream_);
    std::string text;
    for (int c; (c = fgetc(stream_)) != EOF;) text += static_cast<char>(c);
    rewind(stream_);
    if (ftruncate(fileno(stream_), 0) != 0) ADD_FAILURE();
    for (size_t at = 0; (at = text.find(file_, at)) != std::string::npos;) text.erase(at, file_.size());
    return text;
  }

  std::string file_;

  static std::string Repeat(const std::string& text, size_t count) {
    std::string result;
    for (size_t i = 0; i < count; ++i) result += text;
    return result;
  }

 private:
  FILE* stream_ = nullptr;
  FILE* before_ = nullptr;
};

TEST_F(ParserTest, Precedence) {
  EXPECT_EQ("And(Or(a, b), c)", Value("a or b and c"));
  EXPECT_EQ("UnaryNot(Equal(a, b))", Value("not a == b"));
  EXPECT_EQ("Plus(a, Multiply(b, c))", Value("a + b * c"));
  EXPECT_EQ("UnaryNot4b(Plus(a, b))", Value("not4b a + b"));
  EXPECT_EQ("Multiply(UnaryMinus(1), 2)", Value("- 1 * 2"));
  EXPECT_EQ("Xor(And(a, b), c)", Value("a and b xor c"));
  EXPECT_EQ("Equal(Less(a, b), c)", Value("a < b == c"));
  EXPECT_EQ("Less(ShiftLeft(a, Or4b(b, c)), d)", Value("a << b or4b c < d"));
  EXPECT_EQ("And4b(a, UnaryNot4b(b))", Value("a and4b not4b b"));
  EXPECT_EQ("Minus(Concatenate(a, b), c)", Value("a & b - c"));
  EXPECT_EQ("Rem(Mod(Divide(a, b), c), Minus(d, e))", Value("a / b mod c rem (d - e)"));
  EXPECT_EQ("RotateRight(RotateLeft(a, 1), 2)", Value("a <@ 1 @> +2"));
}

TEST_F(ParserTest, References) {
  EXPECT_EQ("Subscription(Subscription(Qualifier(a, b), 1), 2)", Value("a.b[1][2]"));
  EXPECT_EQ("Qualifier(Parameterization(Qualifier(a, b), [ActualPar(TemplateDef(-, 1, -, 0))]), c)",
            Value("a.b(1).c"));
  EXPECT_EQ("Parameterization(f, -)", Value("f()"));
  EXPECT_EQ("Qualifier(x, universal_charstring)", Value("x.universal charstring"));
  EXPECT_EQ("ObjIdQualifier(x, ObjectIdentifierLiteral([ObjIdItem(1); ObjIdItem(a)]))",
            Value("x.objid { 1 a }"));
  EXPECT_EQ(
      "ObjectIdentifierLiteral([ObjIdItem(Parameterization(itu, [ActualPar(TemplateDef(-, 0, -, 0))]))])",
      Value("objid { itu(0) }"));
}

TEST_F(ParserTest, WhatFollowsAReferenceToObjid) {
  EXPECT_EQ(0, Parse("module m { function f() runs on x.objid { a := 1 } }"));
  EXPECT_EQ(
      "[Function(f, -, -, TypeReference(Qualifier(x, objid)), [BlockStmt([AssignStmt(a, 1)])], -, F, 0)]",
      "[" + Show(LastModule()->definition_part) + "]");
}

TEST_F(ParserTest, CompoundValues) {
  EXPECT_EQ("CompoundValue(-)", Value("{}"));
  EXPECT_EQ(
      "CompoundValue([FieldValue(FieldName(x, -), 1, 0); FieldValue(FieldName(z, y), NotUsedSymbol, 0)])",
      Value("{ x := 1, y.z := - }"));
  EXPECT_EQ("CompoundValue([FieldValue(FieldName(y, x), 1, 0)])", Value("{ x.y := 1 }"));
  EXPECT_EQ("CompoundValue([FieldValue(-, Qualifier(x, y), 0); FieldValue(-, NotUsedSymbol, 0)])",
            Value("{ x.y, - }"));
  EXPECT_EQ("CompoundValue([FieldValue(FieldIndex(0), CompoundValue(-), 0)])", Value("{ [0] := {} }"));
  EXPECT_EQ("CompoundValue([FieldValue(FieldName(integer, -), 1, 0)])", Value("{ integer := 1 }"));
}

TEST_F(ParserTest, Permutations) {
  EXPECT_EQ(
      "CompoundValue([FieldValue(-, 0, 0); FieldValue(-, 1, 2); FieldValue(-, 2, 3); FieldValue(-, 3, 4); "
      "FieldValue(-, 4, 0)])",
      Value("{ 0, permutation(1, 2, 3), 4 }"));
  EXPECT_EQ("CompoundValue([FieldValue(-, 1, 1)])", Value("{ permutation(1) }"));
  EXPECT_EQ("CompoundValue([FieldValue(-, 1, 2); FieldValue(-, 2, 3); FieldValue(-, AnyOrOmit, 4)])",
            Value("{ permutation(*, 1, *, 2) }"));
  EXPECT_EQ("CompoundValue([FieldValue(-, AnyOrOmit, 1); FieldValue(-, 9, 0)])",
            Value("{ permutation(*, *), 9 }"));
  EXPECT_EQ(
      "CompoundValue([FieldValue(-, 1, 2); FieldValue(-, LengthMatch(AnyOrOmit, RangeBound(Minus(2, 1), "
      "Infinity)), 4)])",
      Value("{ permutation(1, *) length(2..infinity) }"));
  EXPECT_EQ("", Messages());
  Value("{ permutation({ permutation(1) }) }");
  EXPECT_EQ("(1) : column 46 : Error       not a valid permutation definition\n", Messages());
}

TEST_F(ParserTest, MatchingExpressions) {
  EXPECT_EQ("IfPresentIfLengthMatch(AnyValue, SingleBound(2))", Value("? length(2) ifpresent"));
  EXPECT_EQ("IfPresentMatch(CompoundValue(-))", Value("{} ifpresent"));
  EXPECT_EQ("ValueList([ValueListItem(1); ValueListItem(AnyOrOmit); ValueListItem(3)])", Value("(1, *, 3)"));
  EXPECT_EQ("ValueRange(UnaryMinus(Infinity), Infinity)", Value("(-infinity .. infinity)"));
  EXPECT_EQ("Complement([ValueListItem(a)])", Value("complement(a)"));
  EXPECT_EQ("Complement([ValueListItem(a); ValueListItem(b)])", Value("complement(a, b)"));
  EXPECT_EQ("SuperSet([ValueListItem(1); ValueListItem(CompoundValue([FieldValue(-, 2, 0)]))])",
            Value("superset(1, {2})"));
  EXPECT_EQ("CharStringMatch(CharStringLiteral(\"a*\"))", Value("pattern \"a*\""));
  EXPECT_EQ("BitStringMatch('1?'B)", Value("'1?'B"));
  EXPECT_EQ("Omit", Value("omit"));
}

TEST_F(ParserTest, Types) {
  EXPECT_EQ(
      "TypeDecl(T, -, SubType(TypeReference(integer), ValueList([ValueListItem(0); ValueListItem(ValueRange("
      "2, Infinity))])))",
      Definition("type integer T (0, 2..infinity)"));
  EXPECT_EQ("TypeDecl(T, -, SubType(TypeReference(U), -))", Definition("type U T"));
  EXPECT_EQ(
      "TypeDecl(T, -, SubType(SubType(TypeReference(charstring), CharStringMatch(CharStringLiteral(\"a\"))), "
      "LengthRange(1, 1)))",
      Definition("type charstring T (pattern \"a\") length(1)"));
  EXPECT_EQ("TypeDecl(A, -, ArrayType(ArrayType(TypeReference(integer), SingleBound(3)), RangeBound(1, 2)))",
            Definition("type integer A[1..2][3]"));
  EXPECT_EQ(
      "TypeDecl(L, -, SubType(RecordOfType(SubType(TypeReference(integer), ValueList([ValueListItem(1)]))), "
      "LengthRange(0, 4)))",
      Definition("type record length(0..4) of integer L (1)"));
  EXPECT_EQ(
      "TypeDecl(R, -, RecordType([FieldType(a, TypeReference(integer), F, -); FieldType(b, ArrayType("
      "TypeReference(B), SingleBound(2)), T, -); FieldType(c, SetOfType(UnionType([FieldType(d, "
      "TypeReference(float), F, -)])), F, -)]))",
      Definition("type record R { integer a, B b[2] optional, set of union { float d } c }"));
  EXPECT_EQ("TypeDecl(E, -, EnumType([EnumValue(a, -); EnumValue(b, 3); EnumValue(c, UnaryMinus(1))]))",
            Definition("type enumerated E { a, b(3), c(-1) }"));
  EXPECT_EQ(
      "TypeDecl(P, -, PortType(2, [TypeItem(TypeReference(a)); TypeItem(TypeReference(b)); TypeItem("
      "TypeReference(c))], [TypeItem(TypeReference(c)); TypeItem(TypeReference(d))]))",
      Definition("type port P mixed { in a, b; inout c out d }"));
  EXPECT_EQ(
      "TypeDecl(C, -, ComponentType([TypeItem(TypeReference(D)); TypeItem(TypeReference(Qualifier(m, E)))], "
      "[PortDecl(p, -, TypeReference(P)); PortDecl(q, -, ArrayType(TypeReference(P), SingleBound(2))); "
      "VarDecl(t, -, TypeReference(timer), FloatLiteral(1.0), F, 0); ConstDecl(k, -, TypeReference(integer), "
      "1); VarDecl(v, -, TypeReference(integer), -, F, 0)]))",
      Definition("type component C extends D, m.E { port P p, q[2]; timer t := 1.0 const integer k := 1 var "
                 "integer v }"));
  EXPECT_EQ(
      "TypeDecl(s, -, SignatureType([FormalPar(x, TypeReference(integer), 2, -)], [TypeItem(TypeReference("
      "E))], F, TypeReference(float)))",
      Definition("signature s(inout integer x) return float exception(E)"));
  EXPECT_EQ("TypeDecl(n, -, SignatureType(-, -, T, -))", Definition("signature n() noblock"));
  EXPECT_EQ("TypeDecl(address, -, SubType(TypeReference(integer), -))", Definition("type integer address"));
}

TEST_F(ParserTest, PortsKeepTheOrderOfTheirTypes) {
  EXPECT_EQ(
      "TypeDecl(P, -, PortType(0, [TypeItem(TypeReference(a)); TypeItem(TypeReference(b)); TypeItem("
      "TypeReference(d)); TypeItem(TypeReference(e))], [TypeItem(TypeReference(c)); TypeItem(TypeReference("
      "d)); TypeItem(TypeReference(e))]))",
      Definition("type port P message { in a, b; out c; inout d, e }"));
  gT3IsPortAllTypes = false;
  EXPECT_EQ("TypeDecl(P, -, PortType(1, -, [TypeItem(TypeReference(a))]))",
            Definition("type port P procedure { out a }"));
  EXPECT_FALSE(gT3IsPortAllTypes);
  auto* port = ParseDefinition("type port P mixed { inout all }")->as<T3TypeDecl>()->type->as<T3PortType>();
  EXPECT_EQ("PortType(2, [TypeItem(AllTypes)], [TypeItem(AllTypes)])", Show(port));
  EXPECT_TRUE(gT3IsPortAllTypes);
  // The second direction of `inout` has items of its own around the same types.
  EXPECT_NE(port->in_list, port->out_list);
  EXPECT_EQ(port->in_list->as<T3TypeItem>()->type, port->out_list->as<T3TypeItem>()->type);
  EXPECT_EQ(NoPosition, port->out_list->as<T3TypeItem>()->position);
  gT3IsPortAllTypes = false;
}

TEST_F(ParserTest, DeclarationsWithSeveralNamesShareTheirWith) {
  ParseDefinition("const integer a := 1, b[2] := {1, 2} with { encode \"E\" display (x, y) \"D\" }");
  const std::string with =
      "[With(0, F, -, \"E\"); With(1, F, [RefItem(AttrRefIdentifier(x)); RefItem(AttrRefIdentifier(y))], "
      "\"D\")]";
  auto* first = LastModule()->definition_part->as<T3ConstDecl>();
  EXPECT_EQ("ConstDecl(a, " + with + ", TypeReference(integer), 1)", Show(first));
  EXPECT_EQ("ConstDecl(b, " + with +
                ", ArrayType(TypeReference(integer), SingleBound(2)), CompoundValue([FieldValue("
                "-, 1, 0); FieldValue(-, 2, 0)]))",
            Show(first->next));
  EXPECT_TRUE(first->next->as<T3ConstDecl>()->next->is<T3NoDecl>());
}

TEST_F(ParserTest, TemplatesAndFunctions) {
  EXPECT_EQ(
      "TemplateDecl(t, -, [FormalTemplatePar(x, TypeReference(integer), 0, AnyValue, 3)], TemplateDef("
      "TypeReference(R), CompoundValue(-), TemplateReference(u), 2))",
      Definition("template(value) R t(template(present) integer x := ?) modifies u := {}"));
  EXPECT_EQ(
      "Function(f, -, [FormalPar(t, TypeReference(timer), 2, -)], TypeReference(C), [BlockStmt([RetStmt("
      "AnyValue)])], TypeReference(integer), T, 1)",
      Definition("function f(inout timer t) runs on C return template(omit) integer { return ? }"));
  EXPECT_EQ("Testcase(tc, -, -, TypeReference(C), [BlockStmt(-)], TypeReference(S))",
            Definition("testcase tc() runs on C system S {}"));
  EXPECT_EQ(
      "TestStep(a, -, -, -, [AltStmt([GuardedAlt(-, [BlockStmt(-)], [TimeoutStmt(AnyTimer)])], -)], "
      "[VarDecl(v, "
      "-, TypeReference(integer), -, F, 0)])",
      Definition("altstep a() { var integer v; [] any timer.timeout {} }"));
  EXPECT_EQ("ExtFunction(f, -, -, -, TypeReference(float))",
            Definition("external function f() return float"));
  EXPECT_EQ(
      "ControlPart(control, -, [BlockStmt([InvocationStmt(Execute(Parameterization(tc, -), FloatLiteral("
      "1.0)))])])",
      Definition("control { execute(tc(), 1.0) }"));
  EXPECT_EQ(
      "GroupDecl(g, -, [ModuleParDecl(p, -, TypeReference(integer), 1); ModuleParDecl(q, -, TypeReference("
      "integer), -)])",
      Definition("group g { modulepar integer p := 1, q }"));
}

TEST_F(ParserTest, GroupsOfModuleParameters) {
  auto* first = ParseDefinition("modulepar { integer p, q := 1; float r } with { encode \"E\" }")
                    ->as<T3ModuleParDecl>();
  EXPECT_EQ("ModuleParDecl(p, [With(0, F, -, \"E\")], TypeReference(integer), -)", Show(first));
  EXPECT_EQ("ModuleParDecl(q, [With(0, F, -, \"E\")], TypeReference(integer), 1)", Show(first->next));
  T3Tree_Node* last = first->next->as<_T3Decl>()->next;
  EXPECT_EQ("ModuleParDecl(r, [With(0, F, -, \"E\")], TypeReference(float), -)", Show(last));
  EXPECT_TRUE(last->as<_T3Decl>()->next->is<T3NoDecl>());
}

TEST_F(ParserTest, Imports) {
  EXPECT_EQ(
      "ImportAllDecl(, -, ImportIdentifier(n), ImportTerminator, T, \"TTCN-3:2003\", [ImportException(1, "
      "ImportIdentifier(a)); ImportAllException(2); ImportException(0, ImportQualified(ImportQualified("
      "ImportTerminator, g), h))], 9)",
      Definition(
          "import from n language \"TTCN-3:2003\" recursive all except { type a; template all group g.h }"));
  ParseDefinition("import from n { function f, g; modulepar all except p }");
  auto* first = LastModule()->definition_part->as<T3ImportFunctionDecl>();
  EXPECT_EQ("ImportFunctionDecl(, -, ImportIdentifier(n), ImportIdentifier(f), F, )", Show(first));
  EXPECT_EQ("ImportFunctionDecl(, -, ImportIdentifier(n), ImportIdentifier(g), F, )", Show(first->next));
  EXPECT_EQ(
      "ImportAllDecl(, -, ImportIdentifier(n), ImportTerminator, F, , [ImportException(8, ImportIdentifier("
      "p))], 8)",
      Show(first->next->as<_T3Decl>()->next));
  EXPECT_EQ("", Messages());
  Definition("import from n all except { type all except a }");
  EXPECT_EQ("(1) : column 39 : Error       'except' may not be nested inside import statement\n", Messages());
}

TEST_F(ParserTest, Statements) {
  EXPECT_EQ(
      "IfStmt(a, [BlockStmt(-)], [IfStmt(b, [BlockStmt(-)], [IfStmt(c, [BlockStmt(-)], [BlockStmt(-)])])])",
      Statements("if (a) {} else if (b) {} else if (c) {} else {}"));
  EXPECT_EQ(
      "ForStmt(Less(i, 2), [BlockStmt(-)], [DeclStmt([VarDecl(i, -, TypeReference(integer), 0, F, 0)])], ["
      "AssignStmt(i, Plus(i, 1))])",
      Statements("for (var integer i := 0; i < 2; i := i + 1) {}"));
  EXPECT_EQ("DoWhileStmt(a, [BlockStmt([BreakStmt; ContinueStmt])]); WhileStmt(b, [BlockStmt(-)])",
            Statements("do { break; continue } while (a); while (b) {}"));
  EXPECT_EQ(
      "DeclStmt([VarDecl(a, -, TypeReference(integer), 1, F, 0)]); DeclStmt([VarDecl(b, -, "
      "TypeReference(integer), "
      "-, F, 0)]); LogStmt(\"empty log message\", -); LogStmt(\"x\", -); LogStmt(, [TemplateListItem("
      "TemplateDef(-, a, -, 0)); TemplateListItem(TemplateDef(TypeReference(T), AnyValue, -, 0))])",
      Statements("var integer a := 1, b; log(); log(\"x\"); log(a, T:?)"));
  EXPECT_EQ(
      "SetVerdictStmt(VerdictLiteral(1), [TemplateListItem(TemplateDef(-, CharStringLiteral(\"r\"), -, 0))])",
      Statements("setverdict(fail, \"r\")"));
  EXPECT_EQ("LabelStmt(l); GotoStmt(l); RepeatStmt; RetStmt(-)",
            Statements("label l; goto l; repeat; return"));
  EXPECT_EQ("DeactivateStmt(-); DeactivateStmt(d)", Statements("deactivate; deactivate(d)"));
}

TEST_F(ParserTest, SelectBecomesAChainOfIf) {
  EXPECT_EQ(
      "IfStmt(Or(Match(x, TemplateDef(-, 1, -, 0)), Match(x, TemplateDef(-, 2, -, 0))), [BlockStmt(-)], ["
      "IfStmt(Match(x, TemplateDef(-, 3, -, 0)), [BlockStmt(-)], [BlockStmt([StopStmt(-)])])])",
      Statements("select (x) { case (1, 2) {} case (3) {} case else { stop } }"));
  EXPECT_EQ("IfStmt(Match(x, TemplateDef(-, 1, -, 0)), [BlockStmt(-)], -)",
            Statements("select (x) { case (1) {} }"));
}

TEST_F(ParserTest, Communication) {
  EXPECT_EQ(
      "SendStmt(p, TemplateDef(-, a, -, 0), -); SendStmt(p, TemplateDef(-, a, -, 0), RecipientMulti(["
      "AddressListItem(TemplateDef(-, b, -, 0)); AddressListItem(TemplateDef(-, c, -, 0))]))",
      Statements("p.send(a); p.send(a) to (b, c)"));
  EXPECT_EQ(
      "SendStmt(p, TemplateDef(-, a, -, 0), RecipientMulti([AddressListItem(TemplateDef(-, b, -, 0))])); "
      "SendStmt(p, TemplateDef(-, a, -, 0), RecipientSingle(TemplateDef(-, b, -, 0))); SendStmt(p, "
      "TemplateDef(-, a, -, 0), RecipientAll)",
      Statements("p.send(a) to (b); p.send(a) to b; p.send(a) to all component"));
  EXPECT_EQ("SendStmt(p, TemplateDef(-, a, -, 0), RecipientSingle(TemplateDef(-, ValueRange(1, 2), -, 0)))",
            Statements("p.send(a) to (1 .. 2)"));
  EXPECT_EQ(
      "ReceiveStmt(Subscription(p, 1), TemplateDef(TypeReference(T), AnyValue, -, 0), TemplateDef(-, c, -, "
      "0), "
      "PortRedirect(v, s, -))",
      Statements("p[1].receive(T:?) from c -> value v sender s"));
  EXPECT_EQ(
      "CallStmt(p, TemplateDef(-, s, -, 0), -, [GuardedAlt(-, [BlockStmt(-)], [GetReplyStmt(p, -, -, -, "
      "-)]); "
      "GuardedAlt(g, [BlockStmt(-)], [CatchTimeoutStmt(p, -, -, -)])], FloatLiteral(1.0))",
      Statements("p.call(s, 1.0) { [] p.getreply {} [g] p.catch(timeout) {} }"));
  EXPECT_EQ("CallStmt(p, TemplateDef(-, s, -, 0), -, -, NoWait)", Statements("p.call(s, nowait)"));
  EXPECT_EQ(
      "GetCallStmt(AnyPort, -, -, PortRedirect(-, -, [FieldValue(FieldName(b, -), a, 0)])); "
      "GetReplyStmt(p, TemplateDef(-, s, -, 0), -, PortRedirect(v, -, [FieldValue(-, a, 0); FieldValue(-, "
      "NotUsedSymbol, 0)]), TemplateDef(-, 1, -, 0))",
      Statements("any port.getcall -> param(a := b); p.getreply(s value 1) -> value v param(a, -)"));
  EXPECT_EQ(
      "ReplyStmt(p, TemplateDef(-, s, -, 0), -, 1); RaiseStmt(p, TemplateDef(-, e, -, 0), -, "
      "TypeReference(s)); "
      "CatchStmt(p, TemplateDef(-, e, -, 0), -, -, TypeReference(s))",
      Statements("p.reply(s value 1); p.raise(s, e); p.catch(s, e)"));
  EXPECT_EQ(
      "CheckReceive(p, [ReceiveStmt(p, -, -, -)]); CheckRedirect(p, TemplateDef(-, a, -, 0), PortRedirect(-, "
      "s, "
      "-)); CheckRedirect(AnyPort, -, -)",
      Statements("p.check(receive); p.check(from a -> sender s); any port.check"));
  EXPECT_EQ(
      "StartStmt(t, FloatLiteral(1.0)); StopStmt(AllTimer); ClearStmt(AllPort); KillStmt(Self); DoneStmt("
      "AnyComponent)",
      Statements("t.start(1.0); all timer.stop; all port.clear; self.kill; any component.done"));
}

TEST_F(ParserTest, RecipientsInParenthesesAreAListWhereTheyCanBe) {
  const auto recipients = [this](const std::string& text) {
    auto* function = ParseDefinition("function f() { p.send(a) to " + text + " }")->as<T3Function>();
    return Show(function->body->as<T3BlockStmt>()->body->as<T3SendStmt>()->recipient);
  };
  const auto item = [](const std::string& text) {
    return "AddressListItem(TemplateDef(-, " + text + ", -, 0))";
  };
  EXPECT_EQ("RecipientMulti([" + item("a") + "])", recipients("((a))"));
  EXPECT_EQ("RecipientMulti([" + item("Plus(a, b)") + "])", recipients("(a + b)"));
  EXPECT_EQ("RecipientMulti([AddressListItem(TemplateDef(TypeReference(T), a, -, 0)); " + item("Self") + "])",
            recipients("(T:a, self)"));
  EXPECT_EQ("RecipientMulti([" + item("ValueList([ValueListItem(1); ValueListItem(2)])") + "; " +
                item("ValueRange(1, 2)") + "])",
            recipients("((1, 2), (1 .. 2))"));
  EXPECT_EQ("RecipientMulti([" + item("ObjIdQualifier(a, ObjectIdentifierLiteral([ObjIdItem(1)]))") + "])",
            recipients("(a.objid { 1 })"));
  EXPECT_EQ("RecipientSingle(TemplateDef(-, Complement([ValueListItem(a)]), -, 0))",
            recipients("complement(a)"));
  EXPECT_EQ("RecipientSingle(TemplateDef(-, CompoundValue([FieldValue(-, 1, 0)]), -, 0))", recipients("{1}"));
  EXPECT_EQ(
      "RecipientSingle(TemplateDef(-, Parameterization(f, [ActualPar(TemplateDef(-, a, -, 0))]), -, 0))",
      recipients("f(a)"));
}

TEST_F(ParserTest, WhatIsLeftOutLiesAtTheLastTokenBefore) {
  auto* function = ParseDefinition("function f() { unmap\n\n stop }")->as<T3Function>();
  auto* unmap = function->body->as<T3BlockStmt>()->body->as<T3UnmapStmt>();
  const auto file = static_cast<uint32_t>(gCurrentFilename);
  EXPECT_EQ((tPosition{1, file, 27}), unmap->position);
  EXPECT_EQ((tPosition{1, file, 27}), unmap->component_1->as<T3Self>()->position);
  function = ParseDefinition("function f() { alt { [] s()\n\n} }")->as<T3Function>();
  auto* alternative = function->body->as<T3BlockStmt>()->body->as<T3AltStmt>()->alts->as<T3TestStepRefAlt>();
  auto* block = alternative->body->as<T3BlockStmt>();
  EXPECT_EQ((tPosition{1, file, 38}), block->position);
  EXPECT_EQ(block->position, block->end_position);
}

TEST_F(ParserTest, Configuration) {
  EXPECT_EQ("ConnectStmt(a, PortIdentifier(p), MTC, PortArrayElement(PortIdentifier(q), 1))",
            Statements("connect(a:p, mtc:q[1])"));
  EXPECT_EQ(
      "UnmapStmt(a, PortIdentifier(p), System, PortIdentifier(q)); UnmapStmt(a, PortIdentifier(p), "
      "AllComponent, "
      "PortAll); DisconnectStmt(a, PortAll, AllComponent, PortAll); DisconnectStmt(AllComponent, PortAll, "
      "AllComponent, PortAll); UnmapStmt(Self, PortAll, AllComponent, PortAll)",
      Statements(
          "unmap(a:p, system:q); unmap(a:p); disconnect(a:all port); disconnect(all component:all port); "
          "unmap"));
}

TEST_F(ParserTest, Alternatives) {
  EXPECT_EQ(
      "AltStmt([GuardedAlt(-, [BlockStmt(-)], [ReceiveStmt(Qualifier(a, p), -, -, -)]); TestStepRefAlt(g, ["
      "BlockStmt(-)], Parameterization(s, -)); GuardedAlt(-, [BlockStmt(-)], [TimeoutStmt(t)])], [BlockStmt("
      "-)])",
      Statements("alt { [] a.p.receive {} [g] s(); [] t.timeout {} [else] {} }"));
  EXPECT_EQ("InterleaveStmt([GuardedAlt(-, [BlockStmt(-)], [DoneStmt(c)])])",
            Statements("interleave { [] c.done {} }"));
  EXPECT_EQ("", Messages());
  Statements("alt { [] s.x {} }");
  EXPECT_EQ("(1) : column 36 : Error       altstep invocation expected\n", Messages());
  Statements("alt { [else] {} [else] {} }");
  EXPECT_EQ("(1) : column 33 : Error       [else] must be the last alternative in an alt statement\n",
            Messages());
}

TEST_F(ParserTest, WhatIsNoStatement) {
  Statements("c.create; c.running; c.alive; getverdict; t.read; a.b; match(a, ?); f()");
  const std::string at = "(1) : column ";
  EXPECT_EQ(at + "27 : Error       Operation 'create' is not allowed as a call statement\n" + at +
                "37 : Error       Operation 'running' is not allowed as a call statement\n" + at +
                "48 : Error       Operation 'alive' is not allowed as a call statement\n" + at +
                "57 : Error       Operation 'getverdict' is not allowed as a call statement\n" + at +
                "69 : Error       Operation 'read' is not allowed as a call statement\n" + at +
                "77 : Error       Invocation expected\n",
            Messages());
}

TEST_F(ParserTest, FaultsOfWhatARepairTouchedAreNotTold) {
  const auto at = [](int column) { return "(1) : column " + std::to_string(column); };
  // What begins behind the place where the parse went on is checked again.
  EXPECT_EQ(1, Parse("module m { function f() { v = 1; c.create } }"));
  EXPECT_EQ(at(29) + " : Error       illegal character: =\n" + at(31) +
                " : Error       found/expected : integer_value/. ; ( [ { } := ...\n" + at(34) +
                " : Error       Operation 'create' is not allowed as a call statement\n",
            Messages());
  EXPECT_EQ(1, Parse("\nmodule m { function f() { c.create"));
  EXPECT_EQ("(2) : column 35 : Error       found/expected : _EOF_/; ( { } setverdict getverdict ...\n",
            Messages());
  EXPECT_EQ(3, Parse("\n\n.x"));
  EXPECT_EQ("(3) : column 1 : Error       found/expected : ./module\n", Messages());
}

TEST_F(ParserTest, ListsOfManyNamesCostLinearTime) {
  constexpr size_t kCount = 30000;
  const auto begin = std::chrono::steady_clock::now();
  const auto names = [](const std::string& before, const std::string& separator) {
    std::string text;
    for (size_t i = 0; i < kCount; ++i) text += (i ? separator : "") + before + "n" + std::to_string(i);
    return text;
  };
  const std::string text = "module m { import from n { " + names("type ", ";") + " } const integer " +
                           Repeat("c := 1, ", kCount) + "d := 2; external const integer " + names("", ",") +
                           "; modulepar { " + names("integer ", ";") + " } modulepar integer " +
                           names("", ",") + "; type port P message { " + names("in ", ";") +
                           " } type component C { port P " + names("", ",") + "; timer " + names("", ",") +
                           "; var integer " + names("", ",") + "; } }";
  EXPECT_EQ(0, Parse(text));
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  EXPECT_LT(seconds.count(), 10);
  size_t count = 0;
  tIdent last = NoIdent;
  T3TypeDecl* port = nullptr;
  gT3AST.ForallT3Tree(LastModule()->definition_part, [&](T3Tree_Node* node) {
    ++count;
    if (port == nullptr) port = node->try_as<T3TypeDecl>();
    if (port == nullptr) last = node->as<_T3Decl>()->name;
  });
  EXPECT_EQ(5 * kCount + 1 + 2, count);
  EXPECT_EQ("n" + std::to_string(kCount - 1), gIdents.GetCStr(last));
  ASSERT_NE(nullptr, port);
  EXPECT_EQ("TypeItem(TypeReference(n0))", Show(port->type->as<T3PortType>()->in_list));
}

TEST_F(ParserTest, Macros) {
  EXPECT_EQ("CharStringLiteral(\"m\")", Value("__MODULE__"));
  EXPECT_EQ("CharStringLiteral(\"" + file_ + "\")", Value("__FILE__"));
  EXPECT_EQ("CharStringLiteral(\"f\")", Value("__SCOPE__"));
  EXPECT_EQ("3", Value("\n\n__LINE__"));
  EXPECT_EQ("ConstDecl(c, -, TypeReference(charstring), CharStringLiteral(\"\"))",
            Definition("const charstring c := __SCOPE__"));
  EXPECT_EQ("ControlPart(control, -, [BlockStmt([LogStmt(\"control\", -)])])",
            Definition("control { log(__SCOPE__) }"));
  EXPECT_EQ("ImportFunctionDecl(, [With(0, F, -, \"\")], ImportIdentifier(n), ImportIdentifier(g), F, )",
            Definition("import from n { function g } with { encode __SCOPE__ }"));
  EXPECT_EQ(0, Parse("module m { control {} } with { display __SCOPE__ }"));
  EXPECT_EQ("With(1, F, -, \"\")", Show(LastModule()->with_spec));
}

TEST_F(ParserTest, ModulesInOneFile) {
  EXPECT_EQ(
      0,
      Parse(
          "module a language \"TTCN-3:2001\" {}\nmodule b { const integer k := 0 } with { encode \"E\" };"));
  auto* first = gT3AST.root->as<T3Module>();
  EXPECT_TRUE(first->representation->is<T3TTCN_3_Edition1>());
  auto* second = first->next->as<T3Module>();
  EXPECT_STREQ("b", gIdents.GetCStr(second->name));
  EXPECT_EQ("\"TTCN-3\"", StringM::StGetString(second->language));
  EXPECT_TRUE(second->with_spec->is<T3With>());
  EXPECT_EQ(2u, second->position.Line);
  EXPECT_EQ(33u, second->end_position.Column);
  EXPECT_TRUE(second->next->is<T3NoModule>());
  EXPECT_EQ("", Messages());
  EXPECT_EQ(0, Parse("module c language \"x\" {}"));
  EXPECT_EQ("(1) : column 19 : Warning     not a valid language specification\n", Messages());
  EXPECT_EQ(0, Parse("module c.objid { a 1 b(2) } {}"));
  EXPECT_EQ("(1) : column 10 : Error       'objid' is currently not supported\n", Messages());
}

TEST_F(ParserTest, ANodeLiesAtItsFirstToken) {
  auto* function = ParseDefinition("function f() {\n a := b.c[1] + 2;\n p.send(1) }")->as<T3Function>();
  auto* block = function->body->as<T3BlockStmt>();
  auto* assign = block->body->as<T3AssignStmt>();
  EXPECT_EQ((tPosition{2, static_cast<uint32_t>(gCurrentFilename), 2}), assign->position);
  auto* plus = assign->rhs->as<T3Plus>();
  EXPECT_EQ(7, plus->position.Column);
  EXPECT_EQ(7, plus->left->as<T3Subscription>()->position.Column);
  EXPECT_EQ(16, plus->right->as<T3IntLiteral>()->position.Column);
  EXPECT_EQ(2, assign->next->as<T3SendStmt>()->position.Column);
  EXPECT_EQ(3u, block->end_position.Line);
  EXPECT_EQ(12, block->end_position.Column);
}
}  // namespace
