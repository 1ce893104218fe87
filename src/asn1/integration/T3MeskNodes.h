// Nodes for ASN.1 types and values.
#pragma once

#include <string>
#include <vector>

#include "asn1/model/AsnModel.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

namespace mesk {
using Node = T3Tree_Node*;
inline constexpr T3Tree& t = gT3AST;

/// From now on this module is translated, from this file; the number of errors so far.
long Begin(const asn1::ModRec& module, tIdent file);
long Errors();
bool IsTranslated(const asn1::ModRec& module);

tPosition PositionOf(const asn1::AsnType& type);
tPosition PositionOf(const asn1::AsnValue& value);
/// A link to an ASN.1 definition.
Node External(tIdent module, tIdent type);
/// A type node marked as coming from ASN.1, with its link; `type` may be none.
Node Prepared(Node node, const asn1::AsnType& type);
/// A reference to a type by name.
Node NamedType(const std::string& name, const tPosition& position);

/// A type as a type of TTCN-3; the error type after a report.
Node translate_type(const asn1::AsnType& type);
/// The component, element or definition that has a value, and whether its nodes belong to the module that is
/// translated: the type's records may be those of another module.
struct Governor {
  Governor(const asn1::AsnType& type = {});
  Governor(const asn1::AsnType& type, bool is_here) : type(type), is_here(is_here) {}
  asn1::AsnType type;
  bool is_here;
};
/// A value's expression; null for a value that has none, after a report or silently.
Node translate_value(const asn1::AsnValue& value, const Governor& of = {});
/// A value definition as a constant, behind a declaration of its type where that has no name; empty for one
/// that has no constant.
std::vector<Node> translate_value_decl(const asn1::AsnValue& value);
/// Links the items of enumerations to their types, as far as those were read behind the values.
void ResolveWaitingItems();
/// The constraints that stand at a type, around its node.
Node WithConstraints(const asn1::AsnType& type, Node node);
}  // namespace mesk
