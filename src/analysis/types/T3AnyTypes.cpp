// The fields of `anytype`: one for each type that is visible in a module, named by module and type.
#include <algorithm>
#include <string_view>

#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
bool IsMember(T3Tree_Node* decl) {
  if (decl->is<T3ImportSignatureDecl>()) return false;
  if (decl->is<T3ImportTypeDecl>()) {
    T3Tree_Node* imported = BehindImport(decl);
    return T3Is<T3TypeDecl>(imported) && !IsAsnNullType(imported) && PartOfAllTypes(BaseTypeDef(imported));
  }
  T3Tree_Node* type = decl->as<T3TypeDecl>()->type;
  return !IsAddressRedefinition(decl) && !type->is<T3SignatureType>() && PartOfAllTypes(type);
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
