// Which C functions encode and decode the values of a type that comes from ASN.1.
#pragma once

#include <string>

struct T3Tree_Node;

// `decl` is the declaration of a type or its import; an import asks the declaration of origin.

/// The text of the first `encode` or `variant` attribute of the declaration without its double quotes, for
/// an ASN.1 declaration also that of its module; empty if none.
std::string T3TypeDecl_default_encoder(T3Tree_Node* decl);
std::string T3TypeDecl_default_variant(T3Tree_Node* decl);
/// The name of the C function; "NULL" where the declaration is no ASN.1 one or the encoder is unknown.
std::string T3TypeDecl_encoder_reference(T3Tree_Node* decl, const std::string& encoder,
                                         const std::string& variant);
std::string T3TypeDecl_decoder_reference(T3Tree_Node* decl, const std::string& encoder,
                                         const std::string& variant);
