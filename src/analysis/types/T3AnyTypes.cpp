#include "analysis/types/T3AnyTypes.h"

#include <algorithm>
#include <string_view>

#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"
#include "support/NumberMap.h"

namespace {
bool IsMember(T3Tree_Node* decl) {
  T3Tree_Node* declared = BehindImport(decl);
  if (!T3Is<T3TypeDecl>(declared)) return false;
  T3Tree_Node* type = BaseTypeDef(declared);
  if (type->is<T3SignatureType>() || !PartOfAllTypes(type)) return false;
  return declared == decl ? !IsAddressRedefinition(decl) : !IsAsnNullType(declared);
}

// Types of a module itself are known by the name alone.
tIdent KeyOf(T3Tree_Node* at, tIdent module) {
  return module == NoIdent || module == at->place->vexa_module_name ? 0 : module;
}

T3Tree_Node* Meaning(T3Tree_Node* at, tIdent name, tIdent module, const tPosition& position) {
  if (at->place == nullptr || !T3Is<T3MapEnv>(at->place->env)) return gT3ErrorType;
  return NewIdentify1(at->place->env, name, KeyOf(at, module), position, false);
}

// The identifier of "module.type"; a built-in type belongs to the module that uses it.
tIdent MakeQualifiedId(T3Tree_Node* decl, const T3Place& place) {
  T3Tree_Node* owner = BehindImport(decl);
  tIdent module = owner->place == nullptr ? NoIdent : owner->place->vexa_module_name;
  if (module == NoIdent) module = place.vexa_module_name;
  return gIdents.MakeIdent(std::string(gIdents.GetString(module)) + "." +
                           std::string(gIdents.GetString(owner->as<_T3Decl>()->name)));
}

T3Tree_Node* MakeField(T3Tree_Node* decl, T3Place* place) {
  const tIdent name = MakeQualifiedId(decl, *place);
  T3Identifier* identifier = gT3AST.mT3Identifier(NoPosition, name);
  identifier->attr().def = decl;
  identifier->attr().local_type_def = LocalTypeDef(decl);
  identifier->attr().base_type_def = BaseTypeDef(decl);
  T3Tree_Node* type = gT3AST.mT3TypeReference(NoPosition, identifier);
  T3Tree_Node* field =
      gT3AST.mT3FieldType(NoPosition, _sgT3NoFieldType(true), name, type, false, _sgT3NoExpression(true));
  identifier->place = type->place = field->place = place;
  return field;
}

// The fields in descending order of their names, byte by byte.
T3Tree_Node* CreateAnyTypeUnionRepresentation(const T3NodeList& members, T3Place* place) {
  T3NodeList fields;
  for (T3Tree_Node* member : members)
    if (IsMember(member)) fields.push_back(MakeField(member, place));
  std::stable_sort(fields.begin(), fields.end(), [](T3Tree_Node* a, T3Tree_Node* b) {
    return gIdents.GetString(a->as<T3FieldType>()->name) < gIdents.GetString(b->as<T3FieldType>()->name);
  });
  T3Tree_Node* list = _sgT3NoFieldType(true);
  for (T3Tree_Node* field : fields) {
    field->as<T3FieldType>()->next = list;
    list = field;
  }
  return list;
}
}  // namespace

// The fields themselves are made when somebody asks: most modules do not use the type.
void SetAnyTypeInformation(T3Tree_Node* root) {
  auto* module = root->as<T3Builtin>()->module->as<T3Module>();
  if (!T3Is<T3AnyType>(gT3AnyType) || module->definition_part->place == nullptr) return;
  gT3AnyType->place = module->definition_part->place;
  gT3AnyType->as<T3AnyType>()->attr().type_members = const_cast<T3NodeList*>(&AllTypesOf(module));
  module->attr().my_anytype = gT3AnyType;
}

T3Tree_Node* AnyTypeFields(T3Tree_Node* anytype) {
  auto& attributes = anytype->as<T3AnyType>()->attr();
  if (attributes.union_representation == nullptr && attributes.type_members != nullptr)
    attributes.union_representation =
        CreateAnyTypeUnionRepresentation(*attributes.type_members, anytype->place);
  return attributes.union_representation;
}

T3Tree_Node* AnyTypeMember(T3Tree_Node* at, tIdent name, tIdent module, const tPosition& position) {
  T3Tree_Node* def = Meaning(at, name, module, position);
  return IsMember(def) ? def : gT3ErrorType;
}

T3Tree_Node* ModuleInAnyType(T3Tree_Node* at, tIdent name, const tPosition& position) {
  T3Tree_Node* def = Meaning(at, name, NoIdent, position);
  return T3Is<T3Module>(def) ? def : nullptr;
}

void ReportNoAnyTypeMember(T3Tree_Node* at, tIdent name, tIdent module, const tPosition& position) {
  const tIdent own = at->place == nullptr ? NoIdent : at->place->vexa_module_name;
  vexa_filtered_error(ERR_anytype_unknown_field, position, own, gIdents.MakeIdent("anytype"),
                      module == NoIdent ? own : module, name);
}

namespace {
// Each module declares the built-in types for itself, of types that all share.
uint32_t KeyOfMember(T3Tree_Node* decl) {
  auto* declared = decl->try_as<T3TypeDecl>();
  return declared == nullptr ? decl->number : declared->type->number;
}

// The places of the fields of `anytype` in a module, by the numbers of both.
NumberMap<int64_t>& g_places = *new NumberMap<int64_t>;
const ModuleCache places([] { g_places.clear(); });

// Its entry tells that those of the fields are there.
constexpr uint32_t kNoMember = ~uint32_t{0};

uint64_t KeyOf(T3Tree_Node* anytype, uint32_t member) {
  return uint64_t{anytype->number} << 32 | member;
}

void NotePlaces(T3Tree_Node* anytype) {
  for (const auto [number, field] : Numbered<T3FieldType>(AnyTypeFields(anytype))) {
    T3Tree_Node* decl = BehindImport(Def(field->type->as<T3TypeReference>()->reference));
    g_places.TryEmplace(KeyOf(anytype, KeyOfMember(decl)), static_cast<int64_t>(number));
  }
}
}  // namespace

int64_t AnyTypeAlternative(T3Tree_Node* anytype, T3Tree_Node* type_decl) {
  if (g_places.TryEmplace(KeyOf(anytype, kNoMember), -1).second) NotePlaces(anytype);
  const int64_t* place = g_places.Find(KeyOf(anytype, KeyOfMember(BehindImport(type_decl))));
  return place == nullptr ? -1 : *place;
}
