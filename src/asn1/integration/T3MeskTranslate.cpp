#include "asn1/integration/T3MeskTranslate.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include "asn1/generate/T3AsnNames.h"
#include "asn1/integration/T3MeskNodes.h"
#include "asn1/integration/T3Representation.h"
#include "asn1/model/AsnModel.h"
#include "asn1/model/AsnNames.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

using namespace asn1;  // NOLINT(google-build-using-namespace): the unit speaks of nothing else

namespace {
constexpr const char* kLanguage = "\"ASN.1:1997\"";
// Where the prefix of a module's types comes that is known when code is generated.
constexpr const char* kPrefixMark = "@";

// Declarations in the order in which they are made.
class DeclList {
 public:
  void Add(_T3Decl* decl) { decls_.push_back(decl); }
  T3Tree_Node* Linked() const {
    T3Tree_Node* list = _sgT3NoDecl(false);
    for (auto decl = decls_.rbegin(); decl != decls_.rend(); ++decl) {
      (*decl)->next = list;
      list = *decl;
    }
    return list;
  }

 private:
  std::vector<_T3Decl*> decls_;
};

T3TypeDecl* TypeDecl(const tPosition& position, const std::string& name, T3Tree_Node* type) {
  return gT3AST.mT3TypeDecl(position, _sgT3NoDecl(), gIdents.MakeIdent(name), _sgT3NoWith(), type);
}

T3Tree_Node* Field(const std::string& name, T3Tree_Node* type, bool optional, T3Tree_Node* next) {
  return gT3AST.mT3FieldType(NoPosition, next, gIdents.MakeIdent(name), type, optional, _sgT3NoExpression());
}

T3Tree_Node* NullType() {
  return gT3AST.mT3EnumType(NoPosition,
                            gT3AST.mT3EnumValue(NoPosition, _sgT3NoEnumValue(), gIdents.MakeIdent("NULL"),
                                                gT3AST.mT3IntLiteral(NoPosition, gStringM.PutString("0"))));
}

T3Tree_Node* ExternalEncodingType() {
  T3Tree_Node* fields = _sgT3NoFieldType();
  fields = Field("single_ASN1_type", mesk::NamedType("ANY", NoPosition), false, fields);
  fields = Field("octet_aligned", mesk::NamedType("OCTET_STRING", NoPosition), false, fields);
  fields = Field("arbitrary", mesk::NamedType("BIT_STRING", NoPosition), false, fields);
  return gT3AST.mT3UnionType(NoPosition, fields);
}

T3Tree_Node* ExternalType() {
  T3Tree_Node* fields = _sgT3NoFieldType();
  fields = Field("direct_reference", mesk::NamedType("OBJECT_IDENTIFIER", NoPosition), true, fields);
  fields = Field("indirect_reference", mesk::NamedType("INTEGER", NoPosition), true, fields);
  fields = Field("data_value_descriptor", mesk::NamedType("ObjectDescriptor", NoPosition), true, fields);
  fields = Field("encoding", mesk::NamedType("EXTERNAL_expl_encoding", NoPosition), false, fields);
  return gT3AST.mT3RecordType(NoPosition, fields);
}

void mesk_T3Module_add_T3Builtin(DeclList& decls) {
  const auto add = [&](const char* name, T3Tree_Node* type) {
    decls.Add(TypeDecl(NoPosition, name, mesk::Prepared(type, {})));
  };
  add("INTEGER", gT3AST.MakeT3Tree(T3Kind::T3Integer));
  add("REAL", gT3AST.MakeT3Tree(T3Kind::T3Float));
  add("BOOLEAN", gT3AST.MakeT3Tree(T3Kind::T3Boolean));
  add("BIT_STRING", gT3AST.MakeT3Tree(T3Kind::T3BitStringType));
  add("OCTET_STRING", gT3AST.MakeT3Tree(T3Kind::T3OctetStringType));
  for (const char* name :
       {"IA5String", "VisibleString", "PrintableString", "NumericString", "GeneralizedTime", "UTCTime"})
    add(name, gT3AST.MakeT3Tree(T3Kind::T3CharStringType));
  add("NULL", NullType());
  add("ANY", gT3AST.MakeT3Tree(T3Kind::T3AnyType));
  add("OBJECT_IDENTIFIER", gT3AST.MakeT3Tree(T3Kind::T3ObjectIdentifierType));
  add("ObjectDescriptor", gT3AST.MakeT3Tree(T3Kind::T3UniversalCharStringType));
  add("EXTERNAL_expl_encoding", ExternalEncodingType());
  add("EXTERNAL", ExternalType());
}

T3Module* NewModule(tIdent name) {
  auto* module = gT3AST.mT3Module(NoPosition, _sgT3NoModule(), name, gStringM.PutString(kLanguage),
                                  static_cast<long>(gCurrentFileModificationTime), false, false, false,
                                  _sgT3NoExpression(), _sgT3NoDecl(), _sgT3NoWith());
  module->representation = gT3MESK;
  module->filename = NoIdent;
  module->cold().external = mesk::External(name, NoIdent);
  T3Tree_Node** link = &gT3AST.root;
  while (auto* other = *link == nullptr ? nullptr : (*link)->try_as<T3Module>()) link = &other->next;
  *link = module;
  return module;
}

T3Module* FindOrMakeModule(const ModRec& from) {
  const tIdent name = gIdents.MakeIdent(getModuleRef(from));
  T3Tree_Node* found = vexa_find_T3Module(name);
  // A second file with a module of the name gets a module of its own, which the table of modules refuses.
  if (found != nullptr && found->as<T3Module>()->filename == NoIdent) return found->as<T3Module>();
  return NewModule(name);
}

// What one module imports directly, each once, in the order of the syntax file.
void translate_import(const ModRec& from, T3Module* module, DeclList& decls) {
  std::set<std::string> seen;
  for (const ImportRec& import : from.imports) {
    if (import.module == nullptr || import.module->state != kRead || !seen.insert(import.name).second)
      continue;
    const tIdent name = gIdents.MakeIdent(convertHyphens(import.name));
    T3Tree_Node* imported = vexa_find_T3Module(name);
    if (imported == nullptr) imported = NewModule(name);
    imported->as<T3Module>()->attr().root = module;
    decls.Add(gT3AST.mT3ImportAllDecl(
        module->position, _sgT3NoDecl(), NoIdent, _sgT3NoWith(),
        gT3AST.mT3ImportIdentifier(module->position, name), gT3AST.mT3ImportTerminator(module->position),
        false, gStringM.PutString(""), _sgT3NoImportException(), t3_import_restr_t::All));
  }
}
// A type within another one has a name made of those around it, by which the C that is generated for the module
// knows it: no other type may have that name.
void RefuseSharedNames(ModRec& module) {
  std::map<std::string, AsnType> first;
  forEachNamedOrInlineType(module, [&](const AsnType& type, const std::string& name) {
    const AsnType base = forBaseType(type);
    const bool is_known = isStructuredType(base) || isListType(base) || getTypeMainType(base) == TYP_ENUM;
    if (!isDefinedType(type) && (!is_known || (isReference(type) && !isListType(base)))) return;
    const auto [other, fresh] = first.emplace(name, type);
    if (fresh) return;
    vexa_error("ASN.1 translation: two types are called \"" + name + "\", the other one at line " +
                   std::to_string(getTypeDefinitionLine(other->second)) + "; give one another name",
               mesk::PositionOf(type));
  });
}
}  // namespace

T3Tree_Node* vexa_find_T3Module(tIdent name) {
  for (auto* node : Items<T3Module>(gT3AST.root)) {
    auto* module = node;
    if (module->name == name && T3ReprToLanguage(module) == language_asn1) return module;
  }
  // Once the modules are in order, each is a list of its own.
  const auto known = gT3ModuleMap.find(name);
  return known != gT3ModuleMap.end() && T3ReprToLanguage(known->second) == language_asn1 ? known->second
                                                                                         : nullptr;
}

T3Tree_Node* translate_module(ModRec& from, tIdent file, bool& good) {
  const long errors = mesk::Begin(from, file);
  T3Module* module = FindOrMakeModule(from);
  module->filename = file;
  module->source_file_modification_time = static_cast<long>(gCurrentFileModificationTime);
  module->position = tPosition{1, static_cast<uint32_t>(file), 1};
  module->end_position = module->position;
  module->attr().in_memory = true;
  DeclList decls;
  mesk_T3Module_add_T3Builtin(decls);
  forEachType(from, [&](const AsnType& type, int) {
    T3TypeDecl* decl =
        TypeDecl(mesk::PositionOf(type), MakeASNIdent(getTypeRef(type)), mesk::translate_type(type));
    decl->cold().mesk_ref_name = gStringM.PutString(NameOfDefinition(type, kPrefixMark));
    decl->cold().is_asn1_type = true;
    decls.Add(decl);
  });
  forEachValue(from, [&](const AsnValue& value, int) {
    for (T3Tree_Node* decl : mesk::translate_value_decl(value)) decls.Add(decl->as<_T3Decl>());
  });
  RefuseSharedNames(from);
  translate_import(from, module, decls);
  module->definition_part = decls.Linked();
  good = mesk::Errors() == errors;
  return module;
}

bool NameGeneratedTypes() {
  const long errors = mesk::Errors();
  std::map<std::string, const char*> modules;
  for (const auto& [name, node] : gT3ModuleMap) {
    if (T3ReprToLanguage(node) != language_asn1) continue;
    const std::string before = convertHyphens(GetPrefix(node)) + gIdents.GetCStr(name);
    for (auto* at : Items<_T3Decl>(node->as<T3Module>()->definition_part)) {
      auto* decl = at->try_as<T3TypeDecl>();
      if (decl == nullptr) continue;
      std::string reference(StringM::StGetString(decl->cold().mesk_ref_name));
      if (reference.rfind(kPrefixMark, 0) != 0) continue;
      reference.replace(0, 1, before);
      decl->cold().mesk_ref_name = gStringM.PutString(reference);
      // Nothing stands between the names of module and type: "BC" of "A" and "C" of "AB" are one.
      if (const auto [other, fresh] = modules.emplace(reference, gIdents.GetCStr(name)); !fresh)
        vexa_error("ASN.1 translation: types of \"" + std::string(other->second) + "\" and \"" + gIdents.GetCStr(name) +
                       "\" are both called \"" + reference + "\" in C; give one another name",
                   decl->position);
    }
  }
  return mesk::Errors() == errors;
}
