#include "asn1/integration/T3CodecReference.h"

#include "asn1/integration/T3Representation.h"
#include "frontend/T3Tree.h"

namespace {
T3TypeDecl* OriginOf(T3Tree_Node* decl) {
  while (T3Is<_T3ImportDecl>(decl)) decl = decl->as<_T3ImportDecl>()->attr().def_aux;
  return T3Is<T3TypeDecl>(decl) ? decl->as<T3TypeDecl>() : nullptr;
}

// The module of a declaration that comes from ASN.1; null for any other.
T3Module* Asn1Module(T3Tree_Node* decl) {
  T3TypeDecl* origin = OriginOf(decl);
  if (origin == nullptr || origin->place == nullptr || !T3Is<T3Module>(origin->place->vexa_my_module))
    return nullptr;
  auto* module = origin->place->vexa_my_module->as<T3Module>();
  return T3ReprToLanguage(module) == language_asn1 ? module : nullptr;
}

std::string FirstAttribute(T3Tree_Node* list, t3_with_attribute_t kind) {
  for (auto* with : Items<T3With>(list)) {
    if (with->attribute != kind) continue;
    std::string text(StringM::StGetString(with->attrib_spec));
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    return text;
  }
  return {};
}

std::string DefaultAttribute(T3Tree_Node* decl, t3_with_attribute_t kind) {
  T3TypeDecl* origin = OriginOf(decl);
  if (origin == nullptr) return {};
  std::string text = FirstAttribute(origin->with_spec, kind);
  T3Module* module = Asn1Module(decl);
  if (text.empty() && module != nullptr) text = FirstAttribute(module->with_spec, kind);
  return text;
}

// The part of a function's name that tells the codec; null for an unknown one.
const char* Family(const std::string& encoder, const std::string& variant) {
  if (encoder == "BER:1997") return variant == "length form 3" ? "_ber_bi" : "_ber";
  if (encoder == "PER-BASIC-ALIGNED:1997") return "_per_al";
  if (encoder == "PER-BASIC-UNALIGNED:1997") return "_per_ua";
  return nullptr;
}

std::string Reference(T3Tree_Node* decl, const char* family, const char* direction) {
  T3Module* module = Asn1Module(decl);
  if (module == nullptr || family == nullptr) return "NULL";
  T3TypeDecl* origin = OriginOf(decl);
  const auto asn1 = StringM::StGetString(origin->cold().mesk_ref_name);
  const std::string name = asn1.empty() ? gIdents.GetCStr(origin->name) : std::string(asn1);
  return std::string("t3asn_") + gIdents.GetCStr(module->name) + family + direction + name;
}
}  // namespace

std::string T3TypeDecl_default_encoder(T3Tree_Node* decl) {
  return DefaultAttribute(decl, t3_with_attribute_t::Encode);
}

std::string T3TypeDecl_default_variant(T3Tree_Node* decl) {
  return DefaultAttribute(decl, t3_with_attribute_t::Variant);
}

std::string T3TypeDecl_encoder_reference(T3Tree_Node* decl, const std::string& encoder,
                                         const std::string& variant) {
  return Reference(decl, Family(encoder, variant), "_encode_");
}

std::string T3TypeDecl_decoder_reference(T3Tree_Node* decl, const std::string& encoder,
                                         const std::string& variant) {
  return Reference(decl, Family(encoder, variant), "_decode_");
}
