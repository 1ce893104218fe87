// Nodes for ASN.1 types and values.
#pragma once

#include <string>

#include "asn1/model/AsnModel.h"
#include "support/Idents.h"
#include "support/Position.h"

struct T3Tree_Node;

namespace mesk {
using Node = T3Tree_Node*;

/// From now on positions are in this file; the number of errors so far.
long Begin(tIdent file);
long Errors();

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
/// A value's expression; null for a value that has none, after a report or silently.
Node translate_value(const asn1::AsnValue& value);
/// A value definition as a constant; null for one that has none.
Node translate_value_decl(const asn1::AsnValue& value);
/// The constraints that stand at a type, around its node.
Node WithConstraints(const asn1::AsnType& type, Node node);
}  // namespace mesk
