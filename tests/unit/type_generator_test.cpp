// Tables of types: the exact text for each kind, imports, attributes, built-in copies; all of it as C that a
// compiler accepts.
#include "generator/types/CGType.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Exception.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/module/CGModule.h"
#include "generator/types/CGPortTypes.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3Context.h"

namespace {
namespace fs = std::filesystem;
constexpr tPosition kPlace{4, 1, 2};

tIdent Id(const std::string& name) {
  return gIdents.MakeIdent(name);
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// A module M made by hand; analysis is played by the test, which sets what references mean.
class TypeGenerator : public testing::Test {
 protected:
  void SetUp() override {
    before_ = fs::current_path();
    std::string name = (fs::temp_directory_path() / "typegen.XXXXXX").string();
    ASSERT_NE(nullptr, mkdtemp(name.data()));
    fs::current_path(name);
    modules_ = gT3ModuleMap;
    gT3ModuleMap.clear();
    module_ = MakeModule("M");
  }
  void TearDown() override {
    gT3ModuleMap = modules_;
    const fs::path folder = fs::current_path();
    fs::current_path(before_);
    fs::remove_all(folder);
  }

  static T3Module* MakeModule(const char* name) {
    auto* module = gT3AST.mT3Module(kPlace, _sgT3NoModule(), Id(name), gStringM.EmptyString(), 0, false,
                                    false, false, _sgT3NoExpression(), _sgT3NoDecl(), _sgT3NoWith());
    module->representation = _sgT3TTCN_3();
    module->filename = Id("m.ttcn");
    gT3ModuleMap[Id(name)] = module;
    return module;
  }
  static T3Place* In(T3Module* module) {
    auto* place = new T3Place;
    place->vexa_module_name = module->name;
    place->vexa_my_module = module;
    place->vexa_owner = module;
    return place;
  }
  // A declaration at the end of a module.
  template <class T>
  static T* Add(T3Module* module, T* decl) {
    decl->place = In(module);
    decl->attr().vexa_place = 1;
    T3Tree_Node** end = &module->definition_part;
    while ((*end)->template is<_T3Decl>()) end = &(*end)->template as<_T3Decl>()->next;
    *end = decl;
    return decl;
  }
  T3TypeDecl* Type(const char* name, T3Tree_Node* type, T3Tree_Node* with = _sgT3NoWith()) {
    auto* decl = Add(module_, gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id(name), with, type));
    type->as<_T3Type>()->attr().typedecl = decl;
    return decl;
  }
  static T3Tree_Node* Ref(T3Tree_Node* decl) {
    auto* identifier = gT3AST.mT3Identifier(kPlace, decl->as<_T3Decl>()->name);
    identifier->attr().def = decl;
    return gT3AST.mT3TypeReference(kPlace, identifier);
  }
  static T3Tree_Node* Number(const char* digits) {
    return gT3AST.mT3IntLiteral(kPlace, gStringM.PutString(digits));
  }
  static T3Tree_Node* Builtin(T3Kind kind) { return gT3AST.MakeT3Tree(kind); }
  static T3Tree_Node* Field(const char* name, T3Tree_Node* type, T3Tree_Node* next = _sgT3NoFieldType(),
                            bool optional = false) {
    return gT3AST.mT3FieldType(kPlace, next, Id(name), type, optional, _sgT3NoExpression());
  }
  template <class T>
  T* Import(const char* name, T3Tree_Node* origin) {
    auto* decl = static_cast<T*>(gT3AST.MakeT3Tree(static_cast<T3Kind>(T::kFirst)));
    decl->name = Id(name);
    decl->with_spec = _sgT3NoWith();
    decl->next = _sgT3NoDecl();
    decl->attr().def_aux = origin;
    return Add(module_, decl);
  }
  static T3Tree_Node* With(t3_with_attribute_t kind, const char* text, T3Tree_Node* next = _sgT3NoWith(),
                           const char* field = nullptr, bool override = false) {
    T3Tree_Node* qualifier = _sgT3NoRefItem();
    if (field != nullptr) {
      auto* reference = gT3AST.MakeT3Tree(T3Kind::T3AttrRefIdentifier)->as<T3AttrRefIdentifier>();
      reference->id = Id(field);
      qualifier = gT3AST.mT3RefItem(kPlace, qualifier, reference);
    }
    return gT3AST.mT3With(kPlace, next, kind, override, qualifier, gStringM.PutString(text));
  }

  // Generates the module, checks that the C compiler takes it, and keeps both texts.
  void Generate() {
    auto file = std::make_unique<CFile>("", "M.h", "M.c", true, CFile::kNoLineLimit);
    gT3Context.begin(std::move(file));
    CGModule(module_);
    gT3Context.end();
    source_ = ReadFile("M.c");
    header_ = ReadFile("M.h");
  }
  void Compile() {
    const std::string command = "cc -std=c11 -Wall -Wno-unused -Werror -I. -I" ORVANE_SOURCE_DIR
                                "/runtime/include -c M.c -o /dev/null";
    EXPECT_EQ(0, std::system(command.c_str())) << header_ << source_;
  }
  void ExpectSource(const std::string& text) {
    EXPECT_NE(std::string::npos, source_.find(text)) << text << "\n" << source_;
  }
  void ExpectHeader(const std::string& text) {
    EXPECT_NE(std::string::npos, header_.find(text)) << text << "\n" << header_;
  }

  T3Module* module_ = nullptr;
  std::string source_;
  std::string header_;

 private:
  fs::path before_;
  T3ModuleMap modules_;
};

std::string Fault(const std::function<void()>& call) {
  try {
    call();
  } catch (const internal_exception& exception) {
    return exception.what();
  }
  return "none";
}
}  // namespace

TEST_F(TypeGenerator, RecordHasStructDescriptionFieldsAndRow) {
  T3TypeDecl* other = Type("E", gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType()));
  Type("R", gT3AST.mT3RecordType(kPlace, Field("a", Builtin(T3Kind::T3Integer),
                                               Field("b", Ref(other), _sgT3NoFieldType(), true))));
  Generate();
  Compile();
  ExpectHeader(
      "#define vexa_M_E_local_type &(vexa_M_E_type_struct)\n#define vexa_M_R_local_type "
      "&(vexa_M_R_type_struct)\n");
  ExpectHeader("extern lumo_type_struct_t vexa_M_R_type_struct;\n");
  ExpectSource(
      "  { \"R\", lumo_symbol_entry_kind_userdefined_type, &(vexa_M_R_type_struct), NULL, NULL, NULL, NULL "
      "}");
  ExpectSource(
      "lumo_type_struct_t vexa_M_R_type_struct = \n"
      R"(  {
    NULL,
    NULL,
    NULL,
    NULL,
    NULL,
    NULL,
    NULL,
    NULL,
    &(vexa_R_type_info_struct)
  };
)");
  ExpectSource(
      "static lumo_type_info_struct_t vexa_R_type_info_struct = \n"
      R"(  {
    "R",
    "M",
    lumo_type_kind_record,
    NULL,
    true,
    NULL,
    NULL,
    NULL,
    NULL,
    2,
    vexa_R_field_info,
    NULL,
    NULL
  };
)");
  ExpectSource(R"(static lumo_field_info_t vexa_R_field_info[] =
{
  {
    "a",
    lumo_field_property_mandatory_c,
    lumo_STATIC_integer_type,
    NULL
  },
  {
    "b",
    lumo_field_property_optional_c,
    &(vexa_M_E_type_struct),
    NULL
  }
};
)");
  // a record without fields has no table
  ExpectSource(
      "    \"E\",\n    \"M\",\n    lumo_type_kind_record,\n    NULL,\n    true,\n    NULL,\n    NULL,\n    "
      "NULL,\n    NULL,\n    0,\n    NULL,\n");
  EXPECT_EQ(std::string::npos, source_.find("vexa_E_field_info"));
}

TEST_F(TypeGenerator, ListsArraysAndEnumerations) {
  Type("L", gT3AST.mT3RecordOfType(kPlace, Builtin(T3Kind::T3CharStringType)));
  Type("S", gT3AST.mT3SetOfType(kPlace, Builtin(T3Kind::T3Boolean)));
  auto* range = gT3AST.mT3RangeBound(kPlace, Number("3"), Number("7"));
  Type("A", gT3AST.mT3ArrayType(kPlace, Builtin(T3Kind::T3Float), nullptr, range));
  auto* single = gT3AST.mT3SingleBound(kPlace, Number("4"));
  Type("B", gT3AST.mT3ArrayType(kPlace, Builtin(T3Kind::T3Float), nullptr, single));
  auto* green = gT3AST.mT3EnumValue(kPlace, _sgT3NoEnumValue(), Id("green"), Number("7"));
  auto* red = gT3AST.mT3EnumValue(kPlace, green, Id("red"), _sgT3NoExpression());
  Type("C", gT3AST.mT3EnumType(kPlace, red));
  Generate();
  Compile();
  ExpectSource(
      "{\n    lumo_type_array_contained_type_c,\n    lumo_field_property_mandatory_c,\n    "
      "lumo_STATIC_charstring_type,\n    NULL\n  }");
  ExpectSource(
      "    lumo_type_kind_setof,\n    NULL,\n    true,\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    1,\n "
      "   vexa_S_field_info,\n");
  ExpectSource(
      "vexa_A_array_info[] =\n{\n  { lumo_type_array_length_c, 5 },\n  { lumo_type_array_base_index_c, 3 "
      "}\n};\n");
  ExpectSource(
      "vexa_B_array_info[] =\n{\n  { lumo_type_array_length_c, 4 },\n  { lumo_type_array_base_index_c, 0 "
      "}\n};\n");
  ExpectSource("    2,\n    vexa_A_field_info,\n    vexa_A_array_info,\n");
  ExpectSource("vexa_C_enum_info[] =\n{\n  { \"red\", 0 },\n  { \"green\", 7 }\n};\n");
  ExpectSource(
      "    lumo_type_kind_enumerated,\n    NULL,\n    true,\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    "
      "2,\n    NULL,\n    vexa_C_enum_info,\n");
}

TEST_F(TypeGenerator, SubtypesResolveAtRegistrationInTheirOrder) {
  T3TypeDecl* first = Type("S1", gT3AST.mT3SubType(kPlace, Builtin(T3Kind::T3Integer), _sgT3NoExpression()));
  Type("S2", gT3AST.mT3SubType(kPlace, Ref(first), _sgT3NoExpression()));
  Generate();
  Compile();
  ExpectSource(R"(    "S2",
    "M",
    lumo_type_kind_integer,
    &(vexa_M_S1_type_struct),
    false,
    NULL,
    NULL,
    NULL,
    NULL,
    -1,
    NULL,
)");
  ExpectSource(
      "    /* resolving subtype information from parent */\n"
      "    lumo__type_resolve_parent_info(vexa_M_S1_local_type, vexa_context);\n"
      "    /* resolving subtype information from parent */\n"
      "    lumo__type_resolve_parent_info(vexa_M_S2_local_type, vexa_context);\n");
}

TEST_F(TypeGenerator, AttributesOfTypesAndFields) {
  using enum t3_with_attribute_t;
  auto* list = With(Encode, "\"BER\\x \"q\"\"",
                    With(Variant, "\"v\"", With(Encode, "\"f\"", _sgT3NoWith(), "a", true)));
  Type("R", gT3AST.mT3RecordType(kPlace, Field("a", Builtin(T3Kind::T3Integer))), list);
  Generate();
  Compile();
  ExpectSource(
      "static lumo_encoding_attr_struct_t vexa_M_R_local_encode_attributes[] =\n{\n"
      "  { \"BER\\\\x \\\"q\\\"\", false },\n  { \"f\", true, \"a\" }\n};\n");
  ExpectSource("vexa_M_R_local_variant_attributes[] =\n{\n  { \"v\", false }\n};\n");
  ExpectSource(
      "    NULL,\n    vexa_M_R_local_encode_attributes,\n    vexa_M_R_local_variant_attributes,\n    NULL,\n "
      "   NULL,\n    NULL,\n");
}

TEST_F(TypeGenerator, ImportSharesTheDescriptionOfItsOrigin) {
  using enum t3_with_attribute_t;
  T3Module* base = MakeModule("B");
  auto* origin = Add(base, gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id("T"), With(Encode, "\"own\""),
                                              gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType())));
  auto* import = Import<T3ImportTypeDecl>("T", origin);
  Type("R", gT3AST.mT3RecordType(kPlace, Field("t", Ref(import))));
  auto* signature = Add(base, gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id("S"), _sgT3NoWith(),
                                                 gT3AST.MakeT3Tree(T3Kind::T3SignatureType)));
  Import<T3ImportSignatureDecl>("S", signature);
  Generate();
  Compile();
  ExpectHeader(
      "#define vexa_M_T_imp_type &(vexa_imp_type_M_B_T)\n#define vexa_M_S_imp_sig &(vexa_imp_type_M_B_S)\n");
  ExpectSource(
      "lumo_type_struct_t vexa_imp_type_M_B_T = \n  {\n    \"B\",\n    \"T\",\n    NULL,\n    "
      "vexa_M_B_Tencode_attributes,\n");
  ExpectSource(
      "  { \"B.T\", lumo_symbol_entry_kind_userdefined_type, &(vexa_imp_type_M_B_T), NULL, NULL, NULL, NULL "
      "}");
  ExpectSource(
      "  { \"B.S\", lumo_symbol_entry_kind_signature_type, &(vexa_imp_type_M_B_S), NULL, NULL, NULL, NULL }");
  ExpectSource(
      "    /* setting type info struct for imported type */\n    (vexa_imp_type_M_B_T.type_info) = "
      "((lumo_find_element_with_check(\"B\", \"T\", vexa_context))->type_descriptor)->type_info;\n");
  ExpectSource("    \"t\",\n    lumo_field_property_mandatory_c,\n    &(vexa_imp_type_M_B_T),\n");
}

TEST_F(TypeGenerator, AttributeOfAnImportHoldsUnlessTheOriginForbids) {
  using enum t3_with_attribute_t;
  T3Module* base = MakeModule("B");
  for (const bool forbids : {false, true}) {
    const char* name = forbids ? "F" : "T";
    auto* origin = Add(base, gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id(name),
                                                With(Encode, "\"origin\"", _sgT3NoWith(), nullptr, forbids),
                                                gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType())));
    Import<T3ImportTypeDecl>(name, origin)->with_spec = With(Encode, "\"import\"");
  }
  Generate();
  ExpectSource("vexa_M_B_Tencode_attributes[] =\n{\n  { \"import\", false }\n};\n");
  ExpectSource("vexa_M_B_Fencode_attributes[] =\n{\n  { \"origin\", true }\n};\n");
}

TEST_F(TypeGenerator, PortsHaveAReferenceAndARecord) {
  T3TypeDecl* message = Type("T", gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType()));
  const auto item = [&] { return gT3AST.mT3TypeItem(kPlace, _sgT3NoTypeItem(), Ref(message)); };
  Type("P", gT3AST.mT3PortType(kPlace, t3_port_kind_t::Message, item(), item()));
  Type("Q", gT3AST.mT3PortType(kPlace, t3_port_kind_t::Message, _sgT3NoTypeItem(), _sgT3NoTypeItem()));
  Type("All", gT3AST.mT3PortType(kPlace, t3_port_kind_t::Message,
                                 gT3AST.mT3TypeItem(kPlace, _sgT3NoTypeItem(), Builtin(T3Kind::T3AllTypes)),
                                 _sgT3NoTypeItem()));
  Generate();
  Compile();
  ExpectSource(
      "vexa_P_field_info[] =\n{\n  {\n    \"<port record>\",\n    lumo_field_no_property_c,\n    "
      "&(vexa_M_P_port_record_type),\n    NULL\n  }\n};\n");
  ExpectSource(
      "vexa_P_port_record_field_info[] =\n{\n  {\n    \"\",\n    lumo_field_property_in_value_c,\n    "
      "&(vexa_M_T_type_struct),\n    NULL\n  },\n  {\n    \"\",\n    lumo_field_property_out_value_c,\n    "
      "&(vexa_M_T_type_struct),\n");
  ExpectSource(
      "vexa_Q_port_record_field_info[] =\n{\n  {\n    \"\",\n    lumo_field_no_property_c,\n    "
      "lumo_STATIC_undefined_type,\n");
  ExpectSource(
      "vexa_All_port_record_field_info[] =\n{\n  {\n    \"\",\n    lumo_field_property_in_value_c,\n    "
      "&(vexa_M_T_type_struct),\n    NULL\n  }\n};\n");
  ExpectSource("lumo_type_struct_t vexa_M_P_port_record_type = \n");
}

TEST_F(TypeGenerator, ComponentsCountTheirDeclarationsTwoPlacesOn) {
  T3Module* base = MakeModule("B");
  auto* far_port = Add(base, gT3AST.mT3TypeDecl(kPlace, _sgT3NoDecl(), Id("FP"), _sgT3NoWith(),
                                                gT3AST.mT3PortType(kPlace, t3_port_kind_t::Message,
                                                                   _sgT3NoTypeItem(), _sgT3NoTypeItem())));
  auto* import = Import<T3ImportTypeDecl>("FP", far_port);
  T3TypeDecl* port =
      Type("P", gT3AST.mT3PortType(kPlace, t3_port_kind_t::Message, _sgT3NoTypeItem(), _sgT3NoTypeItem()));
  auto* timer = gT3AST.mT3VarDecl(kPlace, _sgT3NoDecl(), Id("t"), _sgT3NoWith(), Builtin(T3Kind::T3TimerType),
                                  _sgT3NoExpression(), false, t3_template_restriction_t::None);
  auto* far = gT3AST.mT3PortDecl(kPlace, timer, Id("far"), _sgT3NoWith(), Ref(import));
  auto* near = gT3AST.mT3PortDecl(kPlace, far, Id("near"), _sgT3NoWith(), Ref(port));
  Type("C", gT3AST.mT3ComponentType(kPlace, _sgT3NoTypeItem(), near));
  Type("Bare", gT3AST.mT3ComponentType(kPlace, _sgT3NoTypeItem(), _sgT3NoDecl()));
  Generate();
  Compile();
  ExpectSource(R"(    "C",
    "M",
    lumo_type_kind_component,
    NULL,
    true,
    NULL,
    ((void *) vexa_C_postprocess_func),
    NULL,
    NULL,
    0,
    NULL,
    3,
    vexa_C_component_field_info
)");
  ExpectSource("    \"near\",\n    lumo_field_no_property_c,\n    &(vexa_M_P_port_record_type),\n");
  ExpectSource("    \"far\",\n    lumo_field_no_property_c,\n    NULL,\n");
  ExpectSource(
      "    /* set component field info entry for port of imported type */\n    "
      "(vexa_C_component_field_info[1].type) = "
      "((((lumo_find_element_with_check(\"B\", \"FP\", "
      "vexa_context))->type_descriptor)->type_info)->field_info[0]).type;\n");
  ExpectSource(
      "    ((void *) vexa_Bare_postprocess_func),\n    NULL,\n    NULL,\n    0,\n    NULL,\n    0,\n    "
      "NULL\n");
  ExpectSource(
      R"(static lumo_value_t vexa_Bare_postprocess_func(lumo_value_t value, lumo_context_t vexa_context)
{

  lumo_source_location_push("M", "Bare def", NULL, lumo_scope_undefined_c, "m.ttcn", 4, vexa_context);
  lumo_source_location_pop(vexa_context);
  return value;
}
)");
}

TEST_F(TypeGenerator, SignaturesListParametersAndResult) {
  auto* out = gT3AST.mT3FormalPar(kPlace, _sgT3NoFormalPar(), Id("y"), Builtin(T3Kind::T3Boolean),
                                  t3_par_pass_t::Out, _sgT3NoExpression());
  auto* in = gT3AST.mT3FormalPar(kPlace, out, Id("x"), Builtin(T3Kind::T3Integer), t3_par_pass_t::In,
                                 _sgT3NoExpression());
  Type("S", gT3AST.mT3SignatureType(kPlace, in, _sgT3NoTypeItem(), false, Builtin(T3Kind::T3Float)));
  Generate();
  Compile();
  ExpectSource(
      "    lumo_type_kind_signature,\n    NULL,\n    true,\n    NULL,\n    NULL,\n    NULL,\n    NULL,\n    "
      "3,\n    vexa_S_field_info,\n");
  ExpectSource(
      "    \"y\",\n    lumo_type_parameter_out_c | lumo_field_property_none_templ_restr_c,\n    "
      "lumo_STATIC_boolean_type,\n");
  ExpectSource("    \"\",\n    lumo_field_property_return_value_c,\n    lumo_STATIC_float_type,\n");
  ExpectSource("  { \"S\", lumo_symbol_entry_kind_signature_type, &(vexa_M_S_type_struct),");
}

TEST_F(TypeGenerator, BehavioursHaveATypeAndASignature) {
  T3TypeDecl* component = Type("C", gT3AST.mT3ComponentType(kPlace, _sgT3NoTypeItem(), _sgT3NoDecl()));
  gT3Context.begin(std::make_unique<CFile>("", "M.h", "M.c", true, CFile::kNoLineLimit));
  gT3Context.file().addInclude("lumos.h", false, true);
  gT3Context.storeCurrentModuleName(module_->name);
  gT3Context.file().addExternalConstant("lumo_type_struct_t", "unused");
  gT3Context.file().addVariable("lumo_type_struct_t", "vexa_M_C_type_struct", false);
  auto* testcase = gT3AST.mT3Testcase(kPlace, _sgT3NoDecl(), Id("tc"), _sgT3NoWith(), _sgT3NoFormalPar(),
                                      Ref(component), _sgT3NoStmt(), Builtin(T3Kind::T3NoType));
  testcase->place = In(module_);
  GenFunctionType(testcase);
  auto* par = gT3AST.mT3FormalPar(kPlace, _sgT3NoFormalPar(), Id("x"), Builtin(T3Kind::T3Integer),
                                  t3_par_pass_t::InOut, _sgT3NoExpression());
  auto* function =
      gT3AST.mT3Function(kPlace, _sgT3NoDecl(), Id("f"), _sgT3NoWith(), par, Builtin(T3Kind::T3NoType),
                         _sgT3NoStmt(), Builtin(T3Kind::T3Integer), false, t3_template_restriction_t::None);
  function->place = In(module_);
  GenFunctionType(function);
  gT3Context.end();
  source_ = ReadFile("M.c");
  Compile();
  ExpectSource(R"(static lumo_field_info_t vexa_M_tc_local_type_field_info[] =
{
  {
    "",
    lumo_field_no_property_c,
    &(vexa_M_tc_local_signature_struct),
    NULL
  },
  {
    "",
    lumo_field_no_property_c,
    &(vexa_M_C_type_struct),
    NULL
  },
  {
    "",
    lumo_field_no_property_c,
    NULL,
    NULL
  }
};
)");
  ExpectSource(
      "    \"f\",\n    \"M\",\n    lumo_type_kind_function,\n    NULL,\n    true,\n    NULL,\n    NULL,\n    "
      "NULL,\n    NULL,\n    2,\n    vexa_M_f_local_type_field_info,\n");
  ExpectSource("    \"x\",\n    lumo_type_parameter_inout_c | lumo_field_property_none_templ_restr_c,\n");
}

TEST_F(TypeGenerator, BuiltinCopiesLeadToTheRunTimeSystemOrToTablesOfTheirOwn) {
  auto* user = Type("address", gT3AST.mT3RecordType(kPlace, _sgT3NoFieldType()));
  T3Tree_Node* list = gT3AST.mT3NoDecl(kPlace);
  for (const auto& [name, kind] :
       {std::pair("address", T3Kind::T3Address), std::pair("anytype", T3Kind::T3AnyType),
        std::pair("default", T3Kind::T3Default), std::pair("integer", T3Kind::T3Integer)})
    list = gT3AST.mT3TypeDecl(kPlace, list, Id(name), _sgT3NoWith(), Builtin(kind));
  module_->attr().vexa_builtins = list;
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* decl) {
    if (auto* any = decl->as<T3TypeDecl>()->type->try_as<T3AnyType>())
      any->attr().union_representation = Field("M.address", Ref(user));
  });
  Type("R", gT3AST.mT3RecordType(kPlace, Field("i", Builtin(T3Kind::T3Integer),
                                               Field("f", Builtin(T3Kind::T3Float),
                                                     Field("d", Builtin(T3Kind::T3Default),
                                                           Field("a", Builtin(T3Kind::T3Address)))))));
  Generate();
  Compile();
  ExpectHeader("#define vexa_M_integer_builtin_type &(vexa_M_integer_builtin_type_struct)\n");
  ExpectSource("    NULL,\n    &(lumo_integer_type_info_struct)\n  };\n");
  ExpectSource(
      "vexa_anytype_builtin_field_info[] =\n{\n  {\n    \"M.address\",\n    "
      "lumo_field_property_mandatory_c,\n    &(vexa_M_address_type_struct),\n");
  ExpectSource(
      "    \"address\",\n    \"M\",\n    lumo_type_kind_address,\n    NULL,\n    true,\n    NULL,\n    "
      "NULL,\n    NULL,\n    NULL,\n    1,\n    vexa_address_builtin_field_info,\n");
  for (const char* type :
       {"\"i\",\n    lumo_field_property_mandatory_c,\n    &(vexa_M_integer_builtin_type_struct),",
        "\"f\",\n    lumo_field_property_mandatory_c,\n    lumo_STATIC_float_type,",
        "\"d\",\n    lumo_field_property_mandatory_c,\n    lumo_STATIC_default_type,",
        "\"a\",\n    lumo_field_property_mandatory_c,\n    &(vexa_M_address_builtin_type_struct),"})
    ExpectSource(type);
}

TEST_F(TypeGenerator, TypeReferences) {
  gT3Context.begin(std::make_unique<CFile>("", "M.h", "M.c", true, CFile::kNoLineLimit));
  gT3Context.storeCurrentModuleName(module_->name);
  EXPECT_EQ("lumo_undefined_type", VEXATypeRef(Builtin(T3Kind::T3NoType)));
  EXPECT_EQ("lumo_STATIC_undefined_type", VEXAStaticTypeRef(nullptr));
  // a declaration that only renames a built-in type stands for it
  T3TypeDecl* renamed = Type("INTEGER", Builtin(T3Kind::T3Integer));
  T3TypeDecl* again = Type("I2", Ref(renamed));
  EXPECT_EQ("lumo_STATIC_integer_type", VEXATypeRef(Ref(again)));
  T3TypeDecl* subtype = Type("S", gT3AST.mT3SubType(kPlace, Ref(again), _sgT3NoExpression()));
  EXPECT_EQ("vexa_M_S_local_type", VEXATypeRef(Ref(subtype)));
  EXPECT_EQ("&(vexa_M_S_type_struct)", VEXAStaticTypeRef(subtype->type));
  EXPECT_EQ("lumo_type_kind_integer", ExtractTypeRTKind(Ref(subtype)));
  EXPECT_NE(std::string::npos, Fault([this] {
                                 CGType(Type("Bad", Builtin(T3Kind::T3NoType)));
                               }).find("T3NoType should not occur at this stage"));
  gT3Context.invalidateFile();
}
