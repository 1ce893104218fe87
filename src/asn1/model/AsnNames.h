// Names that ASN.1 definitions get in C and in TTCN-3.
#pragma once

#include <string>

#include "asn1/model/AsnModel.h"

namespace asn1 {
/// Whether a name is a word of TTCN-3, so that it gets "_" behind it.
bool ttcn_keyword_pred(const std::string& name);
/// A name with underscores for hyphens, made different from the words of TTCN-3.
std::string MakeASNIdent(const std::string& name);

/// The name that cTypeId gives a definition once `prefix` is the prefix of all types: naming options of one
/// type stand for themselves.
std::string NameOfDefinition(const AsnType& type, const std::string& prefix);
/// The C identifier of a type: of a definition its name in the form that the naming options give; of a
/// component or element without a definition the level of nesting and the names around it, with a number
/// behind them where another one has the same; "<UNKNOWN_NAMELESS_TYPE>" for a type that has no name at all.
std::string cTypeId(const AsnType& type);
/// The same of the definition that a reference leads to.
std::string getDefTypeId(const AsnType& type);
/// The name that a type without one of its own has in TTCN-3: that of the definition around it, "_expl_" and
/// the component's name or "agg" for each step inward.
std::string t3asn_inline_type_id(const AsnType& type);
}  // namespace asn1
