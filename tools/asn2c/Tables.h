// The descriptions of a module's types, which the codecs follow.
#pragma once

#include <string>

#include "asn1/model/AsnModel.h"
#include "asn2c/CFile.h"

namespace asn2c {
/// The C object that describes a type.
std::string DescriptionOf(const asn1::AsnType& type);
/// Declares the descriptions of the module's definitions.
void DeclareTables(asn1::ModRec& module, CFile& header);
/// Defines them, and those of all that is written within them.
void WriteTables(asn1::ModRec& module, CFile& source);
/// Whether values of a type can be held and encoded.
bool HasCodec(const asn1::AsnType& type);
}  // namespace asn2c
