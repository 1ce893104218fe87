#include "generator/text/CGTypeAccess.h"

#include <unordered_map>

#include "FileAPI/CBase.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "asn1/integration/T3Representation.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "generator/text/CGKeptTexts.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "support/ModuleCaches.h"

namespace {
bool IsTypeDeclaration(T3Tree_Node* node) {
  return T3Is<T3TypeDecl>(node) || T3Is<T3ImportTypeDecl>(node) || T3Is<T3ImportSignatureDecl>(node);
}

// The declaration that a type is the type of.
T3Tree_Node* OwningDeclaration(T3Tree_Node* type) {
  if (!type->is<_T3Type>()) return nullptr;
  if (T3Tree_Node* known = type->as<_T3Type>()->attr().typedecl) return known;
  T3Tree_Node* above = type->parent;
  // a constructor under a constraint has the declaration of the subtype
  while (T3Is<T3SubType>(above) && above->as<T3SubType>()->parent == type) {
    type = above;
    above = type->parent;
  }
  return T3Is<T3TypeDecl>(above) && above->as<T3TypeDecl>()->type == type ? above : nullptr;
}

T3Module* CurrentModule() {
  const auto found = gT3ModuleMap.find(gT3Context.currentModuleName());
  return found == gT3ModuleMap.end() ? nullptr : found->second->try_as<T3Module>();
}

bool IsAsnNull(T3Tree_Node* decl) {
  return decl->is<T3ImportTypeDecl>() ? IsAsnNullType(decl->as<T3ImportTypeDecl>()->attr().def_aux)
                                      : IsAsnNullType(decl);
}

bool IsNoType(T3Tree_Node* type) {
  // What may be any component has no type either.
  return type == nullptr || type->is<T3NoType>() || type->is<T3ErrorType>() || type->is<T3WildcardType>() ||
         type == gT3AnyComponentType;
}

const char* StaticWord(T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
      return LUMO_STATIC_INTEGER_TYPE;
    case T3Kind::T3Float:
      return LUMO_STATIC_FLOAT_TYPE;
    case T3Kind::T3Boolean:
      return LUMO_STATIC_BOOLEAN_TYPE;
    case T3Kind::T3ObjectIdentifierType:
      return LUMO_STATIC_OBJECTIDENTIFIER_TYPE;
    case T3Kind::T3VerdictType:
      return LUMO_STATIC_VERDICTTYPE_TYPE;
    case T3Kind::T3BitStringType:
      return LUMO_STATIC_BITSTRING_TYPE;
    case T3Kind::T3OctetStringType:
      return LUMO_STATIC_OCTETSTRING_TYPE;
    case T3Kind::T3HexStringType:
      return LUMO_STATIC_HEXSTRING_TYPE;
    case T3Kind::T3CharStringType:
      return LUMO_STATIC_CHARSTRING_TYPE;
    case T3Kind::T3UniversalCharStringType:
      return LUMO_STATIC_UNIVERSAL_CHARSTRING_TYPE;
    case T3Kind::T3TimerType:
      return LUMO_STATIC_TIMER_TYPE;
    case T3Kind::T3CharacterType:
      return LUMO_STATIC_CHAR_TYPE;
    case T3Kind::T3UniversalCharacterType:
      return LUMO_STATIC_UNIVERSAL_CHAR_TYPE;
    case T3Kind::T3Address:
      return LUMO_STATIC_ADDRESS_TYPE;
    case T3Kind::T3Default:
      return LUMO_STATIC_DEFAULT_TYPE;
    default:
      internal_error_ast("LUMOS", __LINE__, "VEXAStaticTypeRef", type);
  }
}

// What stands for the built-in types of the module that is being generated, which many rows of tables name.
struct BuiltinRefs {
  tIdent module = NoIdent;
  std::unordered_map<T3Kind, std::string> by_kind;
};
BuiltinRefs& Refs() {
  static auto& refs = *new BuiltinRefs;
  return refs;
}
const ModuleCache builtin_refs([] { Refs() = {}; });

std::string_view StaticBuiltinRef(T3Tree_Node* type) {
  if (Refs().module != gT3Context.currentModuleName()) Refs() = {gT3Context.currentModuleName(), {}};
  std::string& ref = Refs().by_kind[type->kind];
  if (!ref.empty()) return ref;
  T3Tree_Node* copy = type->is<T3Default>() ? nullptr : BuiltinCopy(type);
  return ref = copy != nullptr ? joined({"&(", VEXABuiltinTypeStructName(copy), ")"}) : StaticWord(type);
}

// The same of what modules declare.
CGKeptTexts& g_static_refs = *new CGKeptTexts;
const ModuleCache static_refs([] { g_static_refs.clear(); });

std::string_view StaticDeclarationRef(T3Tree_Node* decl) {
  if (IsAsnNull(decl)) return LUMO_STATIC_ASN_1_NULL_TYPE;
  if (T3Tree_Node* builtin = BuiltinBehind(decl)) return StaticBuiltinRef(builtin);
  return g_static_refs.Of(decl->number, [decl] {
    const bool is_port = decl->is<T3TypeDecl>() && RootType(decl)->is<T3PortType>();
    return is_port ? joined({"&(", VEXAPortRecordName(decl), ")"}) : joined({"&(", VEXATypeName(decl), ")"});
  });
}

const char* KindWord(T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3Integer:
      return LUMO_TYPE_KIND_INTEGER;
    case T3Kind::T3Float:
      return LUMO_TYPE_KIND_FLOAT;
    case T3Kind::T3Boolean:
      return LUMO_TYPE_KIND_BOOLEAN;
    case T3Kind::T3ObjectIdentifierType:
      return LUMO_TYPE_KIND_OBJECTIDENTIFIER;
    case T3Kind::T3VerdictType:
      return LUMO_TYPE_KIND_VERDICTTYPE;
    case T3Kind::T3BitStringType:
      return LUMO_TYPE_KIND_BITSTRING;
    case T3Kind::T3OctetStringType:
      return LUMO_TYPE_KIND_OCTETSTRING;
    case T3Kind::T3HexStringType:
      return LUMO_TYPE_KIND_HEXSTRING;
    case T3Kind::T3CharStringType:
      return LUMO_TYPE_KIND_CHARSTRING;
    case T3Kind::T3UniversalCharStringType:
      return LUMO_TYPE_KIND_UNIVERSAL_CHARSTRING;
    case T3Kind::T3TimerType:
      return LUMO_TYPE_KIND_TIMER;
    case T3Kind::T3CharacterType:
      return LUMO_TYPE_KIND_CHAR;
    case T3Kind::T3UniversalCharacterType:
      return LUMO_TYPE_KIND_UNIVERSAL_CHAR;
    case T3Kind::T3Address:
      return LUMO_TYPE_KIND_ADDRESS;
    case T3Kind::T3Default:
      return LUMO_TYPE_KIND_DEFAULT;
    case T3Kind::T3AnyType:
    case T3Kind::T3UnionType:
      return LUMO_TYPE_KIND_UNION;
    case T3Kind::T3RecordType:
      return LUMO_TYPE_KIND_RECORD;
    case T3Kind::T3SetType:
      return LUMO_TYPE_KIND_SET;
    case T3Kind::T3RecordOfType:
      return LUMO_TYPE_KIND_RECORDOF;
    case T3Kind::T3SetOfType:
      return LUMO_TYPE_KIND_SETOF;
    case T3Kind::T3ArrayType:
      return LUMO_TYPE_KIND_ARRAY;
    case T3Kind::T3EnumType:
      return LUMO_TYPE_KIND_ENUM;
    case T3Kind::T3SignatureType:
      return LUMO_TYPE_KIND_SIGNATURE;
    case T3Kind::T3PortType:
      return LUMO_TYPE_KIND_PORT_REF;
    case T3Kind::T3ComponentType:
      return LUMO_TYPE_KIND_COMPONENT_REF;
    default:
      internal_error_ast("T3Type", __LINE__, "ExtractTypeRTKind", type);
  }
}

unsigned LengthOf(T3Tree_Node* list) {
  unsigned length = 0;
  gT3AST.ForallT3Tree(list, [&length](T3Tree_Node*) { ++length; });
  return length;
}
}  // namespace

T3Tree_Node* TypeDeclaration(T3Tree_Node* type) {
  if (type == nullptr || IsTypeDeclaration(type)) return type;
  T3Tree_Node* decl = nullptr;
  if (auto* reference = type->try_as<T3TypeReference>())
    decl = Def(reference->reference);
  else
    decl = OwningDeclaration(type);
  if (IsTypeDeclaration(decl)) return decl;
  // An array that no declaration names has one that was made for it.
  auto* array = type->try_as<T3ArrayType>();
  T3Tree_Node* made = array != nullptr ? array->explicit_type : nullptr;
  if (T3Is<_T3Type>(made)) return TypeDeclaration(made);
  return IsTypeDeclaration(made) ? made : nullptr;
}

T3Tree_Node* GetTypeFromTypeDecl(T3Tree_Node* decl) {
  while (T3Is<_T3ImportDecl>(decl)) decl = decl->as<_T3ImportDecl>()->attr().def_aux;
  if (!T3Is<T3TypeDecl>(decl)) internal_error_ast("T3Type", __LINE__, "GetTypeFromTypeDecl", decl);
  return decl->as<T3TypeDecl>()->type;
}

T3Tree_Node* RootType(T3Tree_Node* type) {
  return BaseTypeDef(type);
}

T3Tree_Node* BuiltinBehind(T3Tree_Node* decl) {
  if (!T3Is<T3TypeDecl>(BehindImport(decl))) return nullptr;
  T3Tree_Node* type = LocalTypeDef(decl);
  // ANY of an ASN.1 module is a type of its own: the run-time system has none that it could stand for.
  if (type->is<T3AnyType>() && IsT3ASN_1(type)) return nullptr;
  return type->is<_T3BuiltinType>() ? type : nullptr;
}

T3Tree_Node* BuiltinCopy(T3Tree_Node* builtin_type) {
  T3Module* module = CurrentModule();
  if (module == nullptr) return nullptr;
  T3Tree_Node* found = nullptr;
  gT3AST.ForallT3Tree(module->attr().vexa_builtins, [&](T3Tree_Node* decl) {
    if (T3Is<T3TypeDecl>(decl) && decl->as<T3TypeDecl>()->type->kind == builtin_type->kind) found = decl;
  });
  return found;
}

bool IsT3ASN_1(T3Tree_Node* node) {
  T3Tree_Node* module = node->is<T3Module>() || node->place == nullptr ? node : node->place->vexa_my_module;
  return T3Is<T3Module>(module) && T3ReprToLanguage(module) == language_asn1;
}

namespace {
// What is known of `mtc`, `self` or `null` is the kind, such as any component, but no type that is declared.
bool HasNoDescription(T3Tree_Node* type) {
  return IsNoType(type) || type == gT3AnyComponentType || type == gT3AnyAddressType || type == gT3AnyPortType;
}
}  // namespace

std::string_view VEXATypeRef(T3Tree_Node* type) {
  if (HasNoDescription(type)) return LUMO_UNDEFINED_TYPE;
  T3Tree_Node* decl = TypeDeclaration(type);
  if (decl == nullptr) {
    auto* subtype = type->try_as<T3SubType>();
    return subtype != nullptr ? VEXATypeRef(subtype->parent) : VEXAStaticTypeRef(type);
  }
  if (IsAsnNull(decl)) return LUMO_ASN_1_NULL_TYPE;
  if (T3Tree_Node* builtin = BuiltinBehind(decl)) return VEXAStaticTypeRef(builtin);
  return VEXATypeConstName(decl);
}

std::string_view VEXAStaticTypeRef(T3Tree_Node* type) {
  if (HasNoDescription(type)) return LUMO_STATIC_UNDEFINED_TYPE;
  // a built-in type has a declaration too, but not one of the module's own types
  const bool is_own = type->is<T3AnyType>() && IsT3ASN_1(type);
  if (type->is<_T3BuiltinType>() && !is_own) return StaticBuiltinRef(type);
  if (T3Tree_Node* decl = TypeDeclaration(type)) return StaticDeclarationRef(decl);
  if (auto* subtype = type->try_as<T3SubType>()) return VEXAStaticTypeRef(subtype->parent);
  internal_error_ast("LUMOS", __LINE__, __func__, type);
}

std::string_view ExtractTypeRTKind(T3Tree_Node* type) {
  return KindWord(RootType(type));
}

const char* PassModeConstant(t3_par_pass_t mode) {
  switch (mode) {
    case t3_par_pass_t::Out:
      return LUMO_TYPE_PARAMETER_OUT_C;
    case t3_par_pass_t::InOut:
      return LUMO_TYPE_PARAMETER_INOUT_C;
    case t3_par_pass_t::In:
      break;
  }
  return LUMO_TYPE_PARAMETER_IN_C;
}

const char* TemplRestrModeConstant(t3_template_restriction_t restriction) {
  switch (restriction) {
    case t3_template_restriction_t::Omit:
      return LUMO_FIELD_PROPERTY_OMIT_RESTR_C;
    case t3_template_restriction_t::Value:
      return LUMO_FIELD_PROPERTY_VALUE_RESTR_C;
    case t3_template_restriction_t::Present:
      return LUMO_FIELD_PROPERTY_PRESENT_RESTR_C;
    case t3_template_restriction_t::None:
      break;
  }
  return LUMO_FIELD_PROPERTY_NONE_RESTR_C;
}

unsigned LengthOfTypeItemList(T3Tree_Node* list) {
  return LengthOf(list);
}

unsigned LengthOfFieldTypeList(T3Tree_Node* list) {
  return LengthOf(list);
}

unsigned LengthOfEnumValueList(T3Tree_Node* list) {
  return LengthOf(list);
}

unsigned LengthOfDeclList(T3Tree_Node* list) {
  return LengthOf(list);
}

unsigned LengthOfFormalParList(T3Tree_Node* list) {
  return LengthOf(list);
}
