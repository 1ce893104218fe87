#include "generator/text/CGTypeTables.h"

#include "analysis/names/T3Names.h"
#include "asn1/integration/T3CodecReference.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/text/CGAttributes.h"
#include "generator/text/CGModuleText.h"
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

std::string OriginModule(T3Tree_Node* import) {
  return gIdents.GetCStr(OriginOf(import)->place->vexa_module_name);
}

std::string OriginName(T3Tree_Node* import) {
  return gIdents.GetCStr(OriginOf(import)->as<_T3Decl>()->name);
}

// The name by which the run-time system finds a type.
std::string SymbolName(T3Tree_Node* decl) {
  if (!decl->is<_T3ImportDecl>()) return gIdents.GetCStr(decl->as<_T3Decl>()->name);
  // there is one address type, found by its plain name
  if (IsAddressRedefinition(OriginOf(decl))) return OriginName(decl);
  return OriginModule(decl) + "." + OriginName(decl);
}
}  // namespace

void WriteTypeInfoStruct(const std::string& struct_name, const CGTypeInfo& info) {
  auto structure = gT3Context.file().beginStructure(LUMO_TYPE_INFO_STRUCT_T, struct_name, false, true);
  for (const std::string_view member :
       CWords{info.name, info.module, info.kind, info.parent_type, info.resolved ? C_TRUE : C_FALSE, C_NULL,
              info.check_function, info.constraintof_function, info.template_info, info.number_of_fields,
              info.field_info, info.enum_or_array_info, info.reserved_last})
    structure->addMember(member);
  structure->end();
}

void GenTypeStruct(T3Tree_Node* decl, const std::string& type_info) {
  const bool imported = decl->is<_T3ImportDecl>();
  const std::string name = VEXATypeStructName(decl);
  std::vector<std::string> members{imported ? Quote(OriginModule(decl)) : C_NULL,
                                   imported ? Quote(OriginName(decl)) : C_NULL};
  for (const auto kind : {t3_with_attribute_t::Display, t3_with_attribute_t::Encode,
                          t3_with_attribute_t::Variant, t3_with_attribute_t::Extension})
    members.push_back(GenAttributes(decl, kind));
  const std::string encoder = T3TypeDecl_default_encoder(decl);
  const std::string variant = T3TypeDecl_default_variant(decl);
  members.push_back(T3TypeDecl_encoder_reference(decl, encoder, variant));
  members.push_back(T3TypeDecl_decoder_reference(decl, encoder, variant));
  members.push_back(type_info);
  auto structure = gT3Context.file().beginStructure(LUMO_TYPE_STRUCT_T, name, false, false);
  for (const std::string& member : members) structure->addMember(member);
  structure->end();
  gT3Context.file().addDefine(VEXATypeConstName(decl), "&(" + name + ")");
}

void GenPlainTypeStruct(const std::string& struct_name, const std::string& info_name, bool is_static) {
  auto structure = gT3Context.file().beginStructure(LUMO_TYPE_STRUCT_T, struct_name, false, is_static);
  structure->addNulls(8);
  structure->addMember("&(" + info_name + ")");
  structure->end();
}

void WriteFieldInfo(CArray& array, const std::string& name, const std::string& property,
                    const std::string& type) {
  array.beginLevel();
  array.addElement(name);
  array.addElement(property);
  array.addElement(type);
  array.addElement(C_NULL);
  array.endLevel();
}

void GenSymbolTableEntry(T3Tree_Node* decl, const std::string& kind) {
  CGSymTabAddEntry({Quote(SymbolName(decl)), kind, "&(" + VEXATypeStructName(decl) + ")"});
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
  return getSignature("", LUMO_FIND_ELEMENT_WITH_CHECK,
                      {Quote(OriginModule(import)), Quote(OriginName(import)), VEXA_CONTEXT});
}
