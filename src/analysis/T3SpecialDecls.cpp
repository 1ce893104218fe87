// Declarations with a meaning of their own: the NULL of ASN.1, and the user's address.
#include "analysis/T3Names.h"

bool IsAsnNullType(const T3Tree_Node* decl) {
  static const tIdent null_name = gIdents.MakeIdent("NULL");
  auto* node = const_cast<T3Tree_Node*>(decl);
  if (!T3Is<T3TypeDecl>(node) || node->as<T3TypeDecl>()->name != null_name) return false;
  auto* type = node->as<T3TypeDecl>()->type->try_as<T3EnumType>();
  if (type == nullptr || !T3Is<T3ASN_1>(type->cold().representation)) return false;
  auto* value = type->values->try_as<T3EnumValue>();
  return value != nullptr && value->name == null_name;
}

bool IsAddressRedefinition(const T3Tree_Node* decl) {
  static const tIdent address = gIdents.MakeIdent("address");
  auto* node = const_cast<T3Tree_Node*>(decl);
  return T3Is<T3TypeDecl>(node) && node->as<T3TypeDecl>()->name == address &&
         !node->as<T3TypeDecl>()->type->is<T3Address>();
}
