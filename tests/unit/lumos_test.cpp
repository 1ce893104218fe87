// Names of generated objects, locations, the literal table, and the vocabulary.
#include "generator/text/LUMOS.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <sstream>

#include "driver/diagnostics/T3Exception.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/text/CGLiteralTable.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"

namespace {
constexpr tPosition kPlace{12, 1, 3};

tIdent Id(const char* name) {
  return gIdents.MakeIdent(name);
}

// A place in a module of that name.
T3Place* In(const char* module) {
  auto* place = new T3Place;
  place->vexa_module_name = Id(module);
  return place;
}

template <class T>
T* Placed(T* node, const char* module) {
  node->place = In(module);
  return node;
}

T3TypeDecl* Type(const char* module, const char* name) {
  return Placed(gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id(name), _sgT3NoWith(),
                                   gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType())),
                module);
}

T3TemplateDecl* Template(const char* module, const char* name, int place) {
  auto* decl = Placed(gT3AST.mT3TemplateDecl(kPlace, _sgT3NoDecl(), Id(name), _sgT3NoWith(),
                                             _sgT3NoFormalPar(), _sgT3NoTemplateDef()),
                      module);
  decl->attr().vexa_place = place;
  return decl;
}

template <class T>
T* Import(const char* module, const char* name, T3Tree_Node* origin) {
  auto* decl = static_cast<T*>(gT3AST.MakeT3Tree(static_cast<T3Kind>(T::kFirst)));
  decl->name = Id(name);
  decl->attr().def_aux = origin;
  return Placed(decl, module);
}

template <class T>
T* Bare(const char* module, const char* name) {
  auto* decl = static_cast<T*>(gT3AST.MakeT3Tree(static_cast<T3Kind>(T::kFirst)));
  decl->name = Id(name);
  return Placed(decl, module);
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}
}  // namespace

TEST(Vocabulary, EveryWordStandsInTheRunTimeHeader) {
  const std::string header = ReadFile(ORVANE_SOURCE_DIR "/runtime/include/lumos.h");
  const std::regex identifier("[A-Za-z_][A-Za-z_0-9]*");
  std::set<std::string> words(std::sregex_token_iterator(header.begin(), header.end(), identifier),
                              std::sregex_token_iterator());
  ASSERT_GT(words.size(), 400u);
  // what the ASN.1 side declares in its own header
  words.insert("t3asn_STATIC_asn_1_null_type");
  int count = 0;
#define T3_WORD(constant, text)                                 \
  EXPECT_TRUE(words.count(text)) << text << " is not declared"; \
  ++count;
#define T3_C_WORD(constant, text) ++count;
#include "generator/text/T3CodeDefs.def"
#undef T3_WORD
#undef T3_C_WORD
  EXPECT_EQ(487, count);
}

TEST(Vocabulary, ConstantsAreTheUpperCaseOfTheirWordsButForTheIrregularOnes) {
  EXPECT_STREQ("lumo_value_set_type", LUMO_VALUE_SET_TYPE);
  EXPECT_STREQ("lumo_boolean_t", C_BOOL);
  EXPECT_STREQ("lumo_type_kind_enumerated", LUMO_TYPE_KIND_ENUM);
  EXPECT_STREQ("lumo_STATIC_integer_type", LUMO_STATIC_INTEGER_TYPE);
  EXPECT_STREQ(LUMO_SYMTAB_KIND_INITIALIZE_FUNCTION, LUMO_SYMTAB_KIND_MODULE_PARAMS_INITIALIZE_FUNCTION);
  EXPECT_STREQ("lumo_is_lesser", LUMO_LESS);
  EXPECT_STREQ("lumo_field_property_omit_templ_restr_c", LUMO_FIELD_PROPERTY_OMIT_RESTR_C);
  EXPECT_STREQ(PermutationKindToString(t3_permutation_kind_t::No), LUMO_PERMUTATION_KIND_NO);
  EXPECT_STREQ(PermutationKindToString(t3_permutation_kind_t::HeadTail), LUMO_PERMUTATION_KIND_HEAD_TAIL);
  EXPECT_STREQ(PermutationKindToString(t3_permutation_kind_t::Tail), LUMO_PERMUTATION_KIND_TAIL);
}

TEST(Names, ModuleFunctionsAndGuards) {
  const tIdent m = Id("M");
  EXPECT_EQ("vexa_M_initialize", ModuleInitializeName(m));
  EXPECT_EQ("vexa_M_params_initialize", ModuleParamsInitializeName(m));
  EXPECT_EQ("vexa_M_finalize", ModuleFinalizeName(m));
  EXPECT_EQ("vexa_M_register", ModuleRegisterName(m));
  EXPECT_EQ("t3asn_M_register_codecs", ModuleRegisterCodecsName(m));
  EXPECT_EQ("vexa_M_is_initialized", VEXAInitFunctionGuard(m));
  EXPECT_EQ("vexa_M_is_finalized", VEXAFinalizeFunctionGuard(m));
  EXPECT_EQ("vexa_M_is_registered", VEXARegisterFunctionGuard(m));
  EXPECT_EQ("vexa_M_mod_params_initialized", VEXAModuleParamsInitializeFunctionGuard(m));
  EXPECT_EQ("vexa_M_p_module_params_storage", VEXAModuleParameterName(m, Id("p")));
  EXPECT_NE(VEXALocalVarName(Id("x")), VEXALocalVarName(Id("x")));
  EXPECT_EQ(0u, VEXALocalVarName(Id("x")).find("vexa_x_loc_"));
}

TEST(Names, TypesAndTheirImports) {
  T3TypeDecl* type = Type("M", "T");
  EXPECT_EQ("vexa_M_T_type_struct", VEXATypeStructName(type));
  EXPECT_EQ("vexa_M_T_type_struct", VEXATypeName(type));
  EXPECT_EQ("vexa_M_T_local_type", VEXATypeConstName(type));
  EXPECT_EQ("vexa_T_field_info", VEXAFieldInfoName(type));
  EXPECT_EQ("vexa_T_enum_info", VEXAEnumInfoName(type));
  EXPECT_EQ("vexa_T_array_info", VEXAArrayInfoName(type));
  EXPECT_EQ("vexa_T_type_info_struct", VEXATypeInfoStructName(type));
  EXPECT_EQ("vexa_M_T_port_record_type", VEXAPortRecordName(type));
  EXPECT_EQ("vexa_T_component_record_type", VEXAComponentRecordName(type));
  EXPECT_EQ("vexa_M_T_local_encode_attributes", VEXAAttributesName(type, t3_with_attribute_t::Encode));
  EXPECT_EQ("vexa_M_T_builtin_type_struct", VEXABuiltinTypeStructName(type));

  auto* import = Import<T3ImportTypeDecl>("N", "T", type);
  EXPECT_EQ("vexa_imp_type_N_M_T", VEXATypeStructName(import));
  EXPECT_EQ("vexa_N_T_imp_type", VEXATypeConstName(import));
  EXPECT_EQ("vexa_N_M_Tdisplay_attributes", VEXAAttributesName(import, t3_with_attribute_t::Display));
  auto* signature = Import<T3ImportSignatureDecl>("N", "S", Type("M", "S"));
  EXPECT_EQ("vexa_N_S_imp_sig", VEXATypeConstName(signature));
  EXPECT_EQ("vexa_imp_type_N_M_S", VEXATypeName(signature));
  EXPECT_EQ("vexa_N_S_imp_signature_struct", VEXASignatureStructName(signature));
  EXPECT_EQ("vexa_p_port", VEXATypeName(Bare<T3PortDecl>("M", "p")));
}

TEST(Names, Asn1TypesAndStoredNames) {
  T3TypeDecl* type = Type("M", "T");
  type->cold().mesk_ref_name = gStringM.PutString("T_ref");
  EXPECT_EQ("vexa_M_T_ref_type_struct", VEXATypeStructName(type));
  EXPECT_EQ("vexa_T_check", VEXACheckName(type));
  type->cold().check_func_name = "t3asn_T_check";
  type->cold().constraintof_func_name = vexa_location_not_allocated;
  EXPECT_EQ("t3asn_T_check", VEXACheckName(type));
  EXPECT_EQ("vexa_T_constraintof", VEXAConstraintOfName(type));
  type->cold().type_struct_name = "stored";
  EXPECT_EQ("stored", VEXATypeStructName(type));

  auto* value = gT3AST.mT3EnumValue(kPlace, _sgT3NoEnumValue(), Id("NULL"), _sgT3NoExpression());
  auto* enumeration = gT3AST.mT3EnumType(kPlace, value);
  auto* null_type =
      Placed(gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id("NULL"), _sgT3NoWith(), enumeration), "A");
  auto* import = Import<T3ImportTypeDecl>("N", "NULL", null_type);
  EXPECT_EQ("vexa_imp_type_N_A_NULL", VEXATypeStructName(import));
  enumeration->cold().representation = gT3AST.MakeT3Tree(T3Kind::T3MESK);
  EXPECT_EQ("t3asn_asn_1_null_type_struct", VEXATypeStructName(import));
}

TEST(Names, LocalTemplatesOfOneNameDifferByPosition) {
  T3TemplateDecl* global = Template("M", "t", 1);
  EXPECT_EQ("vexa_M_t_local_template", VEXATemplateConstName(global));
  EXPECT_EQ("vexa_M_t_12_3_type_struct", VEXATemplateTypeStructName(global));
  EXPECT_EQ("vexa_t_12_3_match", VEXAMatchName(global, vexa_template_plain));
  EXPECT_EQ("vexa_t_12_3_call_match", VEXAMatchName(global, vexa_template_call));
  EXPECT_EQ("vexa_t_12_3_reply_valueof", VEXAValueOfName(global, vexa_template_reply));
  EXPECT_EQ("vexa_t_12_3_constraintof", VEXAConstraintOfName(global));
  EXPECT_EQ("vexa_t_12_3_sizeof", VEXASizeOfName(global));
  T3TemplateDecl* local = Template("M", "t", 3);
  T3TemplateDecl* other = Template("M", "t", 3);
  other->position.Line = 40;
  EXPECT_EQ("vexa_M_t_12_3_local_template", VEXATemplateConstName(local));
  EXPECT_EQ("vexa_M_t_40_3_local_template", VEXATemplateRef(other));
  auto* import = Import<T3ImportTemplateDecl>("N", "t", global);
  EXPECT_EQ("vexa_N_t_imp_template", VEXATemplateConstName(import));
  EXPECT_EQ("vexa_N_imp_template_M_t", VEXATemplateTypeStructName(import));
}

TEST(Names, BehavioursAndValues) {
  auto* function = Bare<T3Function>("M", "f");
  auto* external = Bare<T3ExtFunction>("M", "x");
  auto* step = Bare<T3TestStep>("M", "a");
  EXPECT_EQ("vexa_f_func", VEXAFunctionName(function));
  EXPECT_EQ("vexa_f_func", GetFunctionObject(function));
  EXPECT_EQ("M_x_stub", GetFunctionObject(external));
  EXPECT_EQ("M_x", VEXAExtFuncName(external));
  EXPECT_EQ("EXT_FUNC_BYPASS_TRI_M_x_func", VEXAExtFuncCompileSwitchName(external));
  EXPECT_EQ("(*vexa_imp_func_M_f)", GetFunctionObject(Import<T3ImportFunctionDecl>("N", "f", function)));
  EXPECT_EQ("vexa_a_teststep", GetTeststepObject(step));
  EXPECT_EQ("(*vexa_imp_ts_M_a)", GetTeststepObject(Import<T3ImportTeststepDecl>("N", "a", step)));
  EXPECT_EQ("vexa_imp_tc_M_c",
            VEXATestcaseName(Import<T3ImportTestcaseDecl>("N", "c", Bare<T3Testcase>("M", "c"))));
  EXPECT_EQ("vexa_M_f_local_type_struct", VEXAFuncTypeStructName(function));
  EXPECT_EQ("vexa_M_f_local_signature_field_info", VEXASignatureFieldInfoName(function));
  EXPECT_EQ("vexa_N_f_imp_type_field_info",
            VEXAFuncTypeFieldInfoName(Import<T3ImportFunctionDecl>("N", "f", function)));
  auto* constant = Bare<T3ConstDecl>("M", "k");
  EXPECT_EQ("vexa_loc_const_M_k", VEXAConstName(constant));
  EXPECT_EQ("vexa_imp_const_M_k", VEXAConstName(Import<T3ImportConstDecl>("N", "k", constant)));
  auto* par = Bare<T3ModuleParDecl>("M", "p");
  EXPECT_EQ("vexa_loc_mod_par_M_p", VEXAModuleParName(par));
  EXPECT_EQ("vexa_imp_modulepar_M_p", VEXAConstName(Import<T3ImportModuleParDecl>("N", "p", par)));
  EXPECT_EQ("vexa_ext_const_M_e", VEXAExtConstName(Bare<T3ExtConstDecl>("M", "e")));
  EXPECT_EQ("M_e", VEXAExtObjectName(Bare<T3ExtConstDecl>("M", "e")));
  EXPECT_EQ("control_part_func", VEXAControlPartFunctionName());
}

TEST(Names, OfAnotherKindAreAFaultThatNamesTheFunction) {
  const auto fault = [](const std::function<std::string()>& name) -> std::string {
    try {
      return name();
    } catch (const internal_exception& exception) {
      const std::string text = exception.what();
      const size_t path = text.find("./ERR.");
      if (path != std::string::npos) std::remove(text.substr(path).c_str());
      return text;
    }
  };
  EXPECT_NE(std::string::npos, fault([] {
                                 return VEXATestcaseName(Bare<T3Function>("M", "f"));
                               }).find("(VEXATestcaseName) - Unexpected AST node"));
  EXPECT_NE(std::string::npos,
            fault([] { return VEXAFieldInfoName(Bare<T3Function>("M", "f")); }).find("(VEXAFieldInfoName)"));
  EXPECT_NE(std::string::npos, fault([] { return CLocation(_sgT3NoStmt()); }).find("(CLocation)"));
}

TEST(SliceString, CutsAtTheLimitAndBehindAnEscape) {
  EXPECT_EQ("abc", SliceString("abc", 3));
  EXPECT_EQ("abc\"\n\"def\"\n\"g", SliceString("abcdefg", 3));
  EXPECT_EQ("ab\\n\"\n\"cd", SliceString("ab\\ncd", 3));
  EXPECT_EQ("ab\\n", SliceString("ab\\n", 3));
  EXPECT_EQ("", SliceString("", 3));
}

TEST(SliceString, LeavesEscapesAndBrokenTrigraphsWhole) {
  for (size_t n = 1; n <= 4; ++n) EXPECT_EQ("\\012\"\n\"3", SliceString("\\0123", n)) << n;
  EXPECT_EQ("ab\\012\"\n\"cd", SliceString("ab\\012cd", 4));
  EXPECT_EQ("ab\\7\"\n\"89", SliceString("ab\\789", 3));
  // what stands behind an escaped backslash may begin an escape of its own
  EXPECT_EQ("a\\\\\\n\"\n\"cd", SliceString("a\\\\\\ncd", 3));
  EXPECT_EQ("a\\\\012\"\n\"345", SliceString("a\\\\012345", 6));
  EXPECT_EQ("?\" \"?\"\n\"abcde", SliceString("?\" \"?abcde", 5));
  for (size_t n = 2; n <= 4; ++n) EXPECT_EQ(0U, SliceString("?\" \"?b", n).find("?\" \"")) << n;
}

TEST(QuotedTexts, AreEscaped) {
  EXPECT_EQ("\"a\"", Quote(std::string("a")));
  EXPECT_EQ("a\\\\b\\\\", EscapeEscape("a\\b\\"));
  EXPECT_EQ("int x", FormalPar("int", "x"));
  EXPECT_EQ("_0_0", PositionSuffix(NoPosition));
}

TEST(Locations, AreUnassignedUntilTheyAreSet) {
  auto* constant = Bare<T3ConstDecl>("M", "k");
  EXPECT_EQ("__NO_LOCATION_ALLOCATED__", CLocation(constant));
  EXPECT_FALSE(HasRTSLocation(constant));
  SetRTSLocation(constant, "v0");
  EXPECT_EQ("v0", RTSLocation(constant));
  EXPECT_FALSE(HasCLocation(constant));
  ResetLocation(constant);
  EXPECT_FALSE(HasRTSLocation(constant));
}

TEST(LiteralTable, SharesEqualLiteralsOfOneType) {
  ResetLiteralTable();
  const auto integer = [](const char* digits, T3Tree_Node* type) {
    auto* literal = gT3AST.mT3IntLiteral(kPlace, gStringM.PutString(digits));
    literal->attr().expression_local_type = type;
    return literal;
  };
  T3Tree_Node* type = Type("M", "I");
  std::string text;
  EXPECT_FALSE(FindInLiteralTable(integer("7", type), &text));
  AddToLiteralTable(integer("7", type), "v7");
  EXPECT_TRUE(FindInLiteralTable(integer("007", type), &text));
  EXPECT_EQ("v7", text);
  EXPECT_FALSE(FindInLiteralTable(integer("7", Type("M", "J")), &text));
  EXPECT_FALSE(FindInLiteralTable(integer("8", type), &text));
  auto* truth = gT3AST.mT3BooleanLiteral(kPlace, true);
  AddToLiteralTable(truth, "vt");
  EXPECT_FALSE(FindInLiteralTable(gT3AST.mT3BooleanLiteral(kPlace, false), &text));
  EXPECT_TRUE(FindInLiteralTable(gT3AST.mT3BooleanLiteral(kPlace, true), &text));
  // numbers of more than 64 bits would all be one
  AddToLiteralTable(integer("99999999999999999999", type), "big");
  EXPECT_FALSE(FindInLiteralTable(integer("99999999999999999998", type), &text));
  auto* other = gT3AST.MakeT3Tree(T3Kind::T3FloatLiteral);
  AddToLiteralTable(other, "f");
  EXPECT_FALSE(FindInLiteralTable(other, &text));
  ResetLiteralTable();
  EXPECT_FALSE(FindInLiteralTable(integer("7", type), &text));
}
