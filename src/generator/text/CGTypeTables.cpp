#include "generator/text/CGTypeTables.h"

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "asn1/integration/T3CodecReference.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/text/CGAttributes.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
T3Tree_Node* OriginOf(T3Tree_Node* import) {
  T3Tree_Node* origin = import->as<_T3ImportDecl>()->attr().def_aux;
  if (!T3Is<_T3Decl>(origin) || origin->place == nullptr)
    internal_error_ast("T3Type", __LINE__, "T3Type::CGType", import);
  return origin;
}

tIdent OriginModule(T3Tree_Node* import) {
  return OriginOf(import)->place->vexa_module_name;
}

tIdent OriginName(T3Tree_Node* import) {
  return OriginOf(import)->as<_T3Decl>()->name;
}

// The name by which the run-time system finds an import.
std::string QuotedImport(T3Tree_Node* import) {
  const std::string_view name = gIdents.GetString(OriginName(import));
  // there is one address type, found by its plain name
  if (IsAddressRedefinition(OriginOf(import))) return Quote(name);
  return joined({"\"", gIdents.GetString(OriginModule(import)), ".", name, "\""});
}
}  // namespace

void WriteTypeInfoStruct(std::string_view struct_name, const CGTypeInfo& info) {
  gT3Context.file().addStructure(
      LUMO_TYPE_INFO_STRUCT_T, struct_name, true,
      {info.name, info.module, info.kind, info.parent_type, info.resolved ? C_TRUE : C_FALSE, C_NULL,
       info.check_function, info.constraintof_function, info.template_info, info.number_of_fields,
       info.field_info, info.enum_or_array_info, info.reserved_last});
}

namespace {
struct Codecs {
  std::string encoder = C_NULL;
  std::string decoder = C_NULL;
};

Codecs CodecsOf(T3Tree_Node* decl) {
  if (!IsT3ASN_1(BehindImport(decl))) return {};
  const std::string encoder = T3TypeDecl_default_encoder(decl);
  const std::string variant = T3TypeDecl_default_variant(decl);
  return {T3TypeDecl_encoder_reference(decl, encoder, variant),
          T3TypeDecl_decoder_reference(decl, encoder, variant)};
}
}  // namespace

std::string_view GenTypeStruct(T3Tree_Node* decl, std::string_view type_info) {
  const bool imported = decl->is<_T3ImportDecl>();
  const std::string_view name = VEXATypeStructName(decl);
  const std::string display = GenAttributes(decl, t3_with_attribute_t::Display);
  const std::string encode = GenAttributes(decl, t3_with_attribute_t::Encode);
  const std::string variant = GenAttributes(decl, t3_with_attribute_t::Variant);
  const std::string extension = GenAttributes(decl, t3_with_attribute_t::Extension);
  const Codecs codecs = CodecsOf(decl);
  const std::string_view null = C_NULL;
  gT3Context.file().addStructure(
      LUMO_TYPE_STRUCT_T, name, false,
      {imported ? Quote(OriginModule(decl)) : null, imported ? Quote(OriginName(decl)) : null, display,
       encode, variant, extension, codecs.encoder, codecs.decoder, type_info});
  gT3Context.file().addDefine(std::string(VEXATypeConstName(decl)), joined({"&(", name, ")"}));
  return name;
}

void GenPlainTypeStruct(std::string_view struct_name, std::string_view info_name, bool is_static) {
  gT3Context.file().addStructure(
      LUMO_TYPE_STRUCT_T, struct_name, is_static,
      {C_NULL, C_NULL, C_NULL, C_NULL, C_NULL, C_NULL, C_NULL, C_NULL, joined({"&(", info_name, ")"})});
}

void WriteFieldInfo(CArray& array, std::string_view name, std::string_view property, std::string_view type) {
  array.addLevel({name, property, type, C_NULL});
}

void GenSymbolTableEntry(T3Tree_Node* decl, std::string_view kind, std::string_view struct_name) {
  const std::string address = joined({"&(", struct_name, ")"});
  if (decl->is<_T3ImportDecl>()) return CGSymTabAddEntry({QuotedImport(decl), kind, address});
  CGSymTabAddEntry({Quote(decl->as<_T3Decl>()->name), kind, address});
}

std::string TypeOrValueDescriptor(T3Tree_Node* decl) {
  switch (decl->kind) {
    case T3Kind::T3TypeDecl:
    case T3Kind::T3ImportTypeDecl:
    case T3Kind::T3ImportSignatureDecl:
    case T3Kind::T3TemplateDecl:
    case T3Kind::T3ImportTemplateDecl:
      return "type_descriptor";
    case T3Kind::T3ConstDecl:
    case T3Kind::T3ExtConstDecl:
    case T3Kind::T3ModuleParDecl:
    case T3Kind::T3ImportConstDecl:
    case T3Kind::T3ImportModuleParDecl:
      return "value_descriptor";
    default:
      internal_error_ast("T3Type", __LINE__, "TypeOrValueDescriptor", decl);
  }
}

std::string FindOriginCall(T3Tree_Node* import) {
  return FindCall(gIdents.GetString(OriginModule(import)), gIdents.GetString(OriginName(import)));
}

std::string FindCall(std::string_view module, std::string_view name) {
  return joined({LUMO_FIND_ELEMENT_WITH_CHECK, "(\"", module, "\", \"", name, "\", ", VEXA_CONTEXT, ")"});
}
