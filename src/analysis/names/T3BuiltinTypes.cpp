// The singletons of types and the declarations of the built-in ones.
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "frontend/T3GlobalASTNodes.h"

T3Tree_Node *gT3NoType, *gT3ErrorType, *gT3WildcardType, *gT3AnyAnyType;
T3Tree_Node *gT3IntegerType, *gT3FloatType, *gT3BooleanType, *gT3ObjectIdentifierType, *gT3VerdictType,
    *gT3BitStringType, *gT3OctetStringType, *gT3HexStringType, *gT3CharStringType,
    *gT3UniversalCharStringType, *gT3TimerType, *gT3CharacterType, *gT3UniversalCharacterType,
    *gT3DefaultType, *gT3AnyType, *gT3AddressType;
T3Tree_Node *gT3AnyEnumeratedType, *gT3AnyComponentType, *gT3AnyAddressType, *gT3AnyPortType,
    *gT3AnyRecordType, *gT3AnyRecordOfType, *gT3AnyArrayType, *gT3AnySetType, *gT3AnySetOfType,
    *gT3AnyUnionType, *gT3AnyModuleType;

namespace {
struct NamedType {
  const char* name;
  T3Tree_Node** type;
  T3Kind kind;
};

constexpr NamedType kBuiltinTypes[] = {
    {"integer", &gT3IntegerType, T3Kind::T3Integer},
    {"float", &gT3FloatType, T3Kind::T3Float},
    {"boolean", &gT3BooleanType, T3Kind::T3Boolean},
    {"objid", &gT3ObjectIdentifierType, T3Kind::T3ObjectIdentifierType},
    {"verdicttype", &gT3VerdictType, T3Kind::T3VerdictType},
    {"bitstring", &gT3BitStringType, T3Kind::T3BitStringType},
    {"octetstring", &gT3OctetStringType, T3Kind::T3OctetStringType},
    {"hexstring", &gT3HexStringType, T3Kind::T3HexStringType},
    {"charstring", &gT3CharStringType, T3Kind::T3CharStringType},
    {"universal_charstring", &gT3UniversalCharStringType, T3Kind::T3UniversalCharStringType},
    {"timer", &gT3TimerType, T3Kind::T3TimerType},
    {"char", &gT3CharacterType, T3Kind::T3CharacterType},
    {"universal_char", &gT3UniversalCharacterType, T3Kind::T3UniversalCharacterType},
    {"default", &gT3DefaultType, T3Kind::T3Default},
    {"anytype", &gT3AnyType, T3Kind::T3AnyType},
    {"address", &gT3AddressType, T3Kind::T3Address},
};

constexpr NamedType kAuxiliaryTypes[] = {
    {"TYPE ERROR", &gT3ErrorType, T3Kind::T3ErrorType},
    {"", &gT3NoType, T3Kind::T3NoType},
    {"", &gT3AnyAnyType, T3Kind::T3AnyType},
    {"", &gT3WildcardType, T3Kind::T3WildcardType},
    {"", &gT3AnyEnumeratedType, T3Kind::T3EnumType},
    {"", &gT3AnyComponentType, T3Kind::T3ComponentType},
    {"", &gT3AnyAddressType, T3Kind::T3Address},
    {"", &gT3AnyPortType, T3Kind::T3PortType},
    {"", &gT3AnyRecordType, T3Kind::T3RecordType},
    {"", &gT3AnyRecordOfType, T3Kind::T3RecordOfType},
    {"", &gT3AnyArrayType, T3Kind::T3ArrayType},
    {"", &gT3AnySetType, T3Kind::T3SetType},
    {"", &gT3AnySetOfType, T3Kind::T3SetOfType},
    {"", &gT3AnyUnionType, T3Kind::T3UnionType},
    {"", &gT3AnyModuleType, T3Kind::T3ModuleType},
};

// What the translation of ASN.1 declares in place of built-in types.
constexpr struct {
  const char* name;
  T3Tree_Node** type;
} kAsnTypes[] = {
    {"ANY", &gT3AnyType},
    {"INTEGER", &gT3IntegerType},
    {"REAL", &gT3FloatType},
    {"BOOLEAN", &gT3BooleanType},
    {"OBJECT_IDENTIFIER", &gT3ObjectIdentifierType},
    {"BIT_STRING", &gT3BitStringType},
    {"OCTET_STRING", &gT3OctetStringType},
    {"VisibleString", &gT3CharStringType},
};

// Generic types are whole nodes: their lists are empty, their element is no type.
T3Tree_Node* MakeType(T3Kind kind) {
  switch (kind) {
    case T3Kind::T3EnumType:
      return gT3AST.mT3EnumType(NoPosition, _sgT3NoEnumValue(false));
    case T3Kind::T3ComponentType:
      return gT3AST.mT3ComponentType(NoPosition, _sgT3NoTypeItem(false), _sgT3NoDecl(false));
    case T3Kind::T3PortType:
      return gT3AST.mT3PortType(NoPosition, t3_port_kind_t::Mixed, _sgT3NoTypeItem(false),
                                _sgT3NoTypeItem(false));
    case T3Kind::T3RecordType:
      return gT3AST.mT3RecordType(NoPosition, _sgT3NoFieldType(false));
    case T3Kind::T3SetType:
      return gT3AST.mT3SetType(NoPosition, _sgT3NoFieldType(false));
    case T3Kind::T3UnionType:
      return gT3AST.mT3UnionType(NoPosition, _sgT3NoFieldType(false));
    case T3Kind::T3RecordOfType:
      return gT3AST.mT3RecordOfType(NoPosition, gT3NoType);
    case T3Kind::T3SetOfType:
      return gT3AST.mT3SetOfType(NoPosition, gT3NoType);
    case T3Kind::T3ArrayType:
      return gT3AST.mT3ArrayType(NoPosition, gT3NoType, nullptr,
                                 gT3AST.mT3SingleBound(NoPosition, _sgT3NoExpression(false)));
    default:
      return gT3AST.MakeT3Tree(kind);
  }
}

T3Tree_Node* InitType(const char* name, T3Tree_Node* type, T3Tree_Node* next) {
  return gT3AST.mT3TypeDecl(NoPosition, next, *name == '\0' ? NoIdent : gIdents.MakeIdent(name),
                            _sgT3NoWith(), type);
}

template <class Table>
T3Tree_Node* DeclareAll(const Table& table) {
  T3Tree_Node* list = _sgT3NoDecl(false);
  for (auto row = std::rbegin(table); row != std::rend(table); ++row)
    list = InitType(row->name, *row->type, list);
  return list;
}

// An auxiliary type stays the same for all modules, and gets its declaration once.
T3Tree_Node* AuxiliaryDecls() {
  static T3Tree_Node* const list = DeclareAll(kAuxiliaryTypes);
  return list;
}

void MakeSharedTypes() {
  for (const NamedType& row : kAuxiliaryTypes)
    if (*row.type == nullptr) *row.type = MakeType(row.kind);
}

void TakeAsnTypes(T3Tree_Node* decls) {
  for (auto* at : Items<_T3Decl>(decls)) {
    auto* decl = at->try_as<T3TypeDecl>();
    if (decl == nullptr) continue;
    for (const auto& row : kAsnTypes)
      if (gIdents.GetString(decl->name) == row.name) *row.type = decl->type;
  }
}
}  // namespace

void InitBuiltinTypes() {
  static std::vector<T3Tree_Node*> shared;
  MakeSharedTypes();
  if (shared.empty())
    for (const NamedType& row : kBuiltinTypes) shared.push_back(MakeType(row.kind));
  for (size_t i = 0; i < shared.size(); ++i) {
    const NamedType& row = kBuiltinTypes[i];
    const bool own = row.kind == T3Kind::T3AnyType || row.kind == T3Kind::T3Address;
    *row.type = own ? MakeType(row.kind) : shared[i];
  }
}

T3Tree_Node* AddBuiltinTypes(T3Tree_Node* module) {
  auto* node = module->as<T3Module>();
  InitBuiltinTypes();
  T3Tree_Node* builtin = _sgT3NoDecl(false);
  if (T3Is<T3ASN_1>(node->representation))
    TakeAsnTypes(node->definition_part);
  else
    builtin = DeclareAll(kBuiltinTypes);
  node->attr().my_anytype = gT3AnyType;
  node->attr().vexa_builtins = builtin;
  T3Tree_Node* root = gT3AST.mT3Builtin(module, builtin, AuxiliaryDecls());
  node->attr().root = root;
  return root;
}
