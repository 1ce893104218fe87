// Services on types: candidates and what strikes them out, kinds of strings and built-in types, searches in
// bodies, numbers of literals, fields of `anytype`, and the printed form of types.
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
tIdent Id(const std::string& name) {
  return gIdents.MakeIdent(name);
}

tPosition At(uint32_t line) {
  tPosition position;
  position.Line = line;
  position.Column = 1;
  position.File = static_cast<uint32_t>(Id("types.ttcn"));
  return position;
}

T3Tree_Node* Field(const char* name, T3Tree_Node* type, T3Tree_Node* next, bool optional = false) {
  return gT3AST.mT3FieldType(At(1), next, Id(name), type, optional, _sgT3NoExpression());
}

T3Tree_Node* Record(T3Tree_Node* fields) {
  return gT3AST.mT3RecordType(At(1), fields);
}

T3Tree_Node* Number(const char* digits) {
  return gT3AST.mT3IntLiteral(At(1), gStringM.PutString(digits));
}

T3Tree_Node* Literal(const char* name, T3Tree_Node* number, T3Tree_Node* next) {
  return gT3AST.mT3EnumValue(At(1), next, Id(name), number);
}

T3Tree_Node* TypeDecl(const char* name, T3Tree_Node* type, T3Tree_Node* next) {
  return gT3AST.mT3TypeDecl(At(1), next, Id(name), _sgT3NoWith(), type);
}

T3Tree_Node* Array(T3Tree_Node* type, const char* size) {
  return gT3AST.mT3ArrayType(At(1), type, nullptr, gT3AST.mT3SingleBound(At(1), Number(size)));
}

// A module through the stages that give places and scopes.
T3Tree_Node* Analysed(const char* name, T3Tree_Node* decls) {
  T3Module* module = gT3AST.mT3Module(At(1), _sgT3NoModule(), Id(name), gStringM.PutString("\"TTCN-3\""), 0,
                                      false, false, false, _sgT3NoExpression(), decls, _sgT3NoWith());
  module->representation = _sgT3TTCN_3();
  gT3ModuleMap[module->name] = module;
  PreprocessImports(module);
  T3Tree_Node* root = AddBuiltinTypes(module);
  SetPlaces(root);
  return root;
}

class Types : public ::testing::Test {
 protected:
  void SetUp() override { InitBuiltinTypes(); }
};
using Candidates = Types;
}  // namespace

TEST_F(Candidates, TheFirstStringKindWinsAndAnythingElseIsUndecided) {
  EXPECT_EQ(Check(T3Candidates()), gT3ErrorType);
  EXPECT_EQ(Check(T3Candidates::Types({gT3UniversalCharacterType, gT3CharacterType, gT3CharStringType})),
            gT3CharStringType);
  EXPECT_EQ(Check(T3Candidates::Types({gT3UniversalCharacterType, gT3UniversalCharStringType})),
            gT3UniversalCharStringType);
  EXPECT_EQ(Check(T3Candidates::Types({gT3UniversalCharacterType, gT3CharacterType})), gT3CharacterType);
  EXPECT_EQ(Check(T3Candidates::Types({gT3CharStringType, gT3IntegerType})), gT3ErrorType);
  EXPECT_EQ(Check({gT3FloatType}), gT3FloatType);
}

TEST_F(Candidates, ExclusionStrikesOutAndWildcardsTakeTheOwnType) {
  T3Candidates several =
      T3Candidates::Types({gT3IntegerType, gT3WildcardType, gT3FloatType, gT3AnyRecordType});
  Exclude(several, gT3IntegerType, gT3IntegerType, true, false);
  EXPECT_TRUE(several.valid(0));
  EXPECT_EQ(several.base(1), gT3IntegerType);
  EXPECT_FALSE(several.valid(2));
  EXPECT_EQ(several.local(2), gT3ErrorType);
  EXPECT_FALSE(several.valid(3));
  T3Tree_Node* record = Record(_sgT3NoFieldType());
  T3Candidates generic = T3Candidates::Types({gT3AnyRecordType, record, gT3AnySetType});
  Exclude(generic, record, record, true, false);
  EXPECT_EQ(generic.base(0), record);
  EXPECT_EQ(generic.CountValid(), 2u);
  T3Candidates own = T3Candidates::Types({record, gT3IntegerType});
  Exclude(own, gT3AnyRecordType, gT3AnyRecordType, true, false);
  EXPECT_EQ(Check(own), record);
}

TEST_F(Candidates, StrictComparisonAsksForTheSameDeclaration) {
  T3Tree_Node* one = Record(Field("a", gT3IntegerType, _sgT3NoFieldType()));
  T3Tree_Node* other = Record(Field("a", gT3IntegerType, _sgT3NoFieldType()));
  T3Candidates loose{one}, strict{one}, same{one};
  Exclude(loose, other, other, true, false);
  Exclude(strict, other, other, true, true);
  Exclude(same, one, one, true, true);
  EXPECT_EQ(loose.CountValid(), 1u);
  EXPECT_EQ(strict.CountValid(), 0u);
  EXPECT_EQ(same.CountValid(), 1u);
}

TEST_F(Candidates, OneOfSeveralOwnTypesDecides) {
  T3Candidates candidates =
      T3Candidates::Types({gT3IntegerType, gT3BooleanType, gT3WildcardType, gT3CharacterType});
  const T3TypeSet numbers{gT3IntegerType, gT3FloatType};
  ExcludeTypeSet(candidates, numbers, numbers);
  EXPECT_TRUE(candidates.valid(0));
  EXPECT_FALSE(candidates.valid(1));
  EXPECT_FALSE(candidates.valid(2));  // either of two that are no strings
  T3Candidates open{gT3WildcardType};
  const T3TypeSet strings{gT3UniversalCharStringType, gT3CharacterType, gT3CharStringType};
  ExcludeTypeSet(open, strings, strings);
  EXPECT_EQ(Check(open), gT3CharStringType);
}

TEST_F(Candidates, InvalidationAndTheCheckAgainstASet) {
  T3Candidates optional = T3Candidates::Types({gT3IntegerType, gT3NoType});
  Invalidate(optional, gT3NoType);
  EXPECT_EQ(Check(optional), gT3IntegerType);
  T3Tree_Node* set_of = gT3AST.mT3SetOfType(At(1), gT3IntegerType);
  EXPECT_EQ(CheckTypeSet({set_of}, {gT3AnySetOfType}), set_of);
  EXPECT_EQ(CheckTypeSet({gT3IntegerType}, {gT3AnySetOfType}), gT3ErrorType);
  EXPECT_EQ(CheckTypeSet(T3Candidates::Types({set_of, gT3IntegerType}), {gT3AnySetOfType}), gT3ErrorType);
  EXPECT_EQ(CheckTypeSet({set_of}, {gT3AnySetOfType, set_of}), gT3ErrorType);
}

TEST_F(Types, StringsAndTheirConcatenation) {
  EXPECT_EQ(EvaluateStringType(gT3BitStringType, gT3BitStringType), gT3BitStringType);
  EXPECT_EQ(EvaluateStringType(gT3CharStringType, gT3CharacterType), gT3CharStringType);
  EXPECT_EQ(EvaluateStringType(gT3CharacterType, gT3CharacterType), gT3CharStringType);
  EXPECT_EQ(EvaluateStringType(gT3UniversalCharacterType, gT3UniversalCharStringType),
            gT3UniversalCharStringType);
  EXPECT_EQ(EvaluateStringType(gT3CharStringType, gT3UniversalCharStringType), gT3ErrorType);
  EXPECT_FALSE(IsStringCompatible(gT3HexStringType, gT3OctetStringType));
  EXPECT_TRUE(IsStringCompatible(gT3CharacterType, gT3CharStringType));
}

TEST_F(Types, BuiltinTypesAreTheSameByKind) {
  EXPECT_TRUE(IsSameBuiltinType(gT3IntegerType, gT3AST.MakeT3Tree(T3Kind::T3Integer)));
  EXPECT_FALSE(IsSameBuiltinType(gT3IntegerType, gT3FloatType));
  for (T3Tree_Node* type : {gT3TimerType, gT3AddressType, gT3DefaultType, gT3NoType})
    EXPECT_FALSE(IsSameBuiltinType(type, type));
  EXPECT_TRUE(IsSameBuiltinType(gT3AnyType, gT3AnyType));
  EXPECT_FALSE(IsSameBuiltinType(gT3AnyType, gT3AST.MakeT3Tree(T3Kind::T3AnyType)));
}

TEST_F(Types, StrictCompatibilityComparesBoundsOfArrays) {
  EXPECT_TRUE(CheckStrictTypeCompatibility(Array(gT3IntegerType, "2"), Array(gT3IntegerType, "2")));
  EXPECT_FALSE(CheckStrictTypeCompatibility(Array(gT3IntegerType, "2"), Array(gT3IntegerType, "3")));
  EXPECT_FALSE(CheckStrictTypeCompatibility(Array(gT3IntegerType, "2"), Array(gT3FloatType, "2")));
  EXPECT_TRUE(CheckStrictTypeCompatibility(Array(Array(gT3TimerType, "1"), "2"),
                                           Array(Array(gT3TimerType, "1"), "2")));
  EXPECT_TRUE(CheckStrictTypeCompatibility(gT3DefaultType, gT3DefaultType));
  EXPECT_FALSE(CheckStrictTypeCompatibility(Record(_sgT3NoFieldType()), Record(_sgT3NoFieldType())));
  EXPECT_TRUE(IsCompatible(Array(gT3IntegerType, "2"), Array(gT3IntegerType, "3")));
  EXPECT_FALSE(IsCompatible(nullptr, gT3IntegerType));
}

TEST_F(Types, TypesOfManyLevelsAreComparedInLinearTime) {
  // Two fields on each of sixty levels: a walk of every path would never end.
  T3Tree_Node* one = gT3IntegerType;
  T3Tree_Node* other = gT3IntegerType;
  for (int level = 0; level < 60; ++level) {
    one = Record(Field("a", one, Field("b", one, _sgT3NoFieldType())));
    other = Record(Field("a", other, Field("b", other, _sgT3NoFieldType())));
  }
  EXPECT_TRUE(IsCompatible(one, other));
  EXPECT_FALSE(IsCompatible(one, Record(Field("a", other, Field("b", gT3IntegerType, _sgT3NoFieldType())))));
}

TEST_F(Types, MembersAreFoundByNameAndNumber) {
  T3Tree_Node* type = Record(Field("a", gT3IntegerType, Field("b", gT3FloatType, _sgT3NoFieldType(), true)));
  T3Tree_Node* fields = type->as<T3RecordType>()->body;
  EXPECT_EQ(FindName1(type, Id("b"), NoIdent), FindIndex(fields, 1));
  EXPECT_EQ(FindName(fields, Id("c"), nullptr), gT3ErrorType);
  EXPECT_EQ(FindIndex(fields, 2), gT3ErrorType);
  EXPECT_TRUE(IsFieldOptional(FindIndex(fields, 1)));
  EXPECT_FALSE(IsFieldOptional(FindIndex(fields, 0)));
  EXPECT_EQ(GetAlternativeIndex(type, Id("b"), true), 1);
  EXPECT_EQ(GetAlternativeIndex(type, Id("c"), false), -1);
}

TEST_F(Types, LiteralsWithoutANumberTakeTheNextFreeOne) {
  T3Tree_Node* none = _sgT3NoExpression();
  T3Tree_Node* type = gT3AST.mT3EnumType(
      At(1), Literal("a", Number("2"),
                     Literal("b", none,
                             Literal("c", Number("0"),
                                     Literal("d", none, Literal("e", none, _sgT3NoEnumValue()))))));
  EXPECT_EQ(GetEnumValueNumber(type, Id("a")), 2);
  EXPECT_EQ(GetEnumValueNumber(type, Id("b")), 1);
  EXPECT_EQ(GetEnumValueNumber(type, Id("c")), 0);
  EXPECT_EQ(GetEnumValueNumber(type, Id("d")), 3);
  EXPECT_EQ(GetEnumValueNumber(type, Id("e")), 4);
}

TEST_F(Types, IntegersOfMoreThan64BitsAreFound) {
  for (const char* fits : {"0", "9223372036854775807", "0009223372036854775807", "999999999999999999"})
    EXPECT_TRUE(CheckIntegerSize(fits)) << fits;
  for (const char* large : {"9223372036854775808", "10000000000000000000", "00099999999999999999999"})
    EXPECT_FALSE(CheckIntegerSize(large)) << large;
  EXPECT_EQ(RequiredDigits(0, 2), 1);
  EXPECT_EQ(RequiredDigits(5, 2), 3);
  EXPECT_EQ(RequiredDigits(255, 16), 2);
  EXPECT_EQ(RequiredDigits(256, 256), 2);
  EXPECT_EQ(RequiredDigits(INT64_MAX, 2), 63);
}

TEST_F(Types, TheFieldsOfAnytypeRunDownTheirNames) {
  T3Tree_Node* signature =
      gT3AST.mT3SignatureType(At(1), _sgT3NoFormalPar(), _sgT3NoTypeItem(), false, gT3NoType);
  T3Tree_Node* port = gT3AST.mT3PortType(At(1), t3_port_kind_t::Mixed, _sgT3NoTypeItem(), _sgT3NoTypeItem());
  T3Tree_Node* decls =
      TypeDecl("Apple", Record(_sgT3NoFieldType()),
               TypeDecl("Zebra", Record(_sgT3NoFieldType()),
                        TypeDecl("address", Record(_sgT3NoFieldType()),
                                 TypeDecl("Door", port, TypeDecl("Call", signature, _sgT3NoDecl())))));
  T3Tree_Node* root = Analysed("zoo", decls);
  SetAnyTypeInformation(root);
  std::vector<std::string> names;
  for (T3Tree_Node* at = AnyTypeFields(gT3AnyType); at->is<T3FieldType>(); at = at->as<T3FieldType>()->next)
    names.push_back(gIdents.GetCStr(at->as<T3FieldType>()->name));
  ASSERT_GE(names.size(), 3u);
  EXPECT_EQ(names.front(), "zoo.verdicttype");
  EXPECT_EQ(names[names.size() - 2], "zoo.Zebra");
  EXPECT_EQ(names.back(), "zoo.Apple");
  EXPECT_TRUE(std::is_sorted(names.rbegin(), names.rend()));
  for (const char* absent : {"zoo.timer", "zoo.default", "zoo.Door", "zoo.Call"})
    EXPECT_EQ(std::count(names.begin(), names.end(), absent), 0) << absent;
  EXPECT_EQ(GetAlternativeIndex(gT3AnyType, Id("zoo.Apple"), true), static_cast<long>(names.size()) - 1);
}

TEST_F(Types, TheirPrintedForms) {
  const std::pair<T3Tree_Node*, const char*> forms[] = {
      {gT3IntegerType, "type integer"},
      {gT3FloatType, "type float"},
      {gT3BooleanType, "type boolean"},
      {gT3VerdictType, "type verdicttype"},
      {gT3BitStringType, "type bitstring"},
      {gT3OctetStringType, "type octetstring"},
      {gT3HexStringType, "type hexstring"},
      {gT3CharStringType, "type charstring"},
      {gT3TimerType, "type timer"},
      {gT3AddressType, "type address"},
      {gT3DefaultType, "type default"},
      {gT3ObjectIdentifierType, "type objectidentifier"},
      {gT3UniversalCharStringType, "type universal charstring"},
      {gT3CharacterType, "type char"},
      {gT3UniversalCharacterType, "type universal char"},
      {gT3AnyType, "type anytype"},
  };
  for (const auto& [type, text] : forms) EXPECT_EQ(Type2String(type), text);
  T3Tree_Node* signature =
      gT3AST.mT3SignatureType(At(1), _sgT3NoFormalPar(), _sgT3NoTypeItem(), false, gT3NoType);
  T3Tree_Node* call = TypeDecl("Call", signature, _sgT3NoDecl());
  T3Tree_Node* apple = TypeDecl("Apple", Record(_sgT3NoFieldType()), call);
  Analysed("printed", apple);
  EXPECT_EQ(Type2String(apple), "type printed.Apple");
  EXPECT_EQ(Type2String(call), "signature printed.Call");
}

TEST_F(Types, EachNodeThatFailsHasItsMessage) {
  T3Tree_Node* none = _sgT3NoExpression();
  const auto import_id = [](const char* name) { return gT3AST.mT3ImportIdentifier(At(1), Id(name)); };
  T3Tree_Node* end = gT3AST.mT3ImportTerminator(At(1));
  const tStringRef language = gStringM.PutString("");
  const auto definition = [&](uint32_t line) {
    return gT3AST.mT3TemplateDef(At(line), gT3NoType, none, _sgT3NoTemplateReference(),
                                 t3_template_restriction_t::None);
  };
  T3Tree_Node* identifier = gT3AST.mT3Identifier(At(20), Id("x"));
  const struct {
    T3Tree_Node* node;
    size_t valid;
    T3TemplateUse use;
    const char* text;
  } rows[] = {
      {gT3AST.mT3ImportTypeDecl(At(10), _sgT3NoDecl(), NoIdent, _sgT3NoWith(), import_id("m"), import_id("T"),
                                false, language),
       0, T3TemplateUse::Other, "the type import of \"T\" from module \"m\" is incorrect"},
      {gT3AST.mT3ImportTypeDecl(At(11), _sgT3NoDecl(), NoIdent, _sgT3NoWith(), end, import_id("T"), false,
                                language),
       0, T3TemplateUse::Other, "the type import is incorrect"},
      {gT3AST.mT3ImportConstDecl(At(12), _sgT3NoDecl(), NoIdent, _sgT3NoWith(), import_id("m"),
                                 import_id("c"), false, language),
       0, T3TemplateUse::Other, "the declared type of \"m.c\" does not match the type of the initializer"},
      {gT3AST.mT3ConstDecl(At(13), _sgT3NoDecl(), Id("c"), _sgT3NoWith(), gT3IntegerType, none), 0,
       T3TemplateUse::Other, "the declared type of \"c\" does not match the type of the initializer"},
      {gT3AST.mT3FormalPar(At(14), _sgT3NoFormalPar(), Id("p"), gT3IntegerType, t3_par_pass_t::In, none), 0,
       T3TemplateUse::Other, "the declared type of \"p\" does not match the type of the initializer"},
      {definition(15), 0, T3TemplateUse::ActualPar,
       "the type of the actual parameter does not match the declared formal parameter"},
      {definition(16), 1, T3TemplateUse::Port,
       "unable to determine the type of the template - check the port declaration for valid types"},
      {definition(17), 2, T3TemplateUse::Port,
       "unable to determine the type of the template - ambiguous type"},
      {definition(18), 2, T3TemplateUse::Other, "unable to determine the type of the template"},
      {gT3AST.mT3TypeReference(At(19), identifier), 0, T3TemplateUse::Other,
       "the type of \"x\" is not correct"},
      {identifier, 1, T3TemplateUse::Other, "the type of \"x\" is not correct"},
      {gT3AST.mT3Identifier(At(21), Id("x")), 2, T3TemplateUse::Other, "ambiguous type"},
      {gT3AST.mT3TemplateReference(At(22), identifier), 0, T3TemplateUse::Other,
       "the type of the modifies template does not match the parent type"},
      {gT3AST.mT3IntLiteral(At(23), gStringM.PutString("1")), 0, T3TemplateUse::Other,
       "the type is not correct"},
  };
  for (const auto& row : rows) {
    testing::internal::CaptureStderr();
    ReportTypeError(row.node, row.valid, row.use);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find(std::string(row.text) + "\n"), std::string::npos) << told;
  }
  testing::internal::CaptureStderr();
  ReportTypeError(gT3AST.mT3IntLiteral(At(24), gStringM.PutString("1")), false);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
