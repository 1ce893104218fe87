// The module's own copies of built-in types.
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/types/CGType.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
void AddStruct(T3TypeDecl* decl, std::string_view info_name) {
  const std::string name = VEXABuiltinTypeStructName(decl);
  GenPlainTypeStruct(name, info_name, false);
  gT3Context.file().addDefine(VEXABuiltinTypeName(decl), "&(" + name + ")");
}

std::unique_ptr<CArray> BeginFields(T3TypeDecl* decl) {
  return gT3Context.file().beginArray(LUMO_FIELD_INFO_T, VEXABuiltinFieldInfoName(decl), true);
}

// Tables of the module's own: `array` holds the field table and may be empty.
void AddWithTables(T3TypeDecl* decl, const char* kind, CArray& array) {
  AddStruct(decl, VEXABuiltinTypeInfoStructName(decl));
  CGTypeInfo info;
  info.name = Quote(decl->name);
  info.module = Quote(gT3Context.currentModuleName());
  info.kind = kind;
  info.number_of_fields = std::to_string(array.count());
  if (array.count() > 0) {
    info.field_info = array.name();
    array.end();
  }
  WriteTypeInfoStruct(VEXABuiltinTypeInfoStructName(decl), info);
}

void AddAddress(T3TypeDecl* decl) {
  T3Tree_Node* definition = decl->type->as<T3Address>()->attr().address_type_definition_inh;
  if (definition == nullptr) {
    AddStruct(decl, VEXARTSTypeInfoStructName(decl->type));
    return;
  }
  auto fields = BeginFields(decl);
  WriteFieldInfo(*fields, Quote(std::string()), LUMO_FIELD_NO_PROPERTY_C, VEXAStaticTypeRef(definition));
  AddWithTables(decl, LUMO_TYPE_KIND_ADDRESS, *fields);
}
}  // namespace

void CGBuiltinType(T3Tree_Node* node) {
  auto* decl = node->as<T3TypeDecl>();
  auto fields = BeginFields(decl);
  switch (decl->type->kind) {
    case T3Kind::T3Default:
      AddWithTables(decl, LUMO_TYPE_KIND_DEFAULT, *fields);
      break;
    case T3Kind::T3AnyType:
      GenFieldTypeList(*fields, AnyTypeFields(decl->type));
      AddWithTables(decl, LUMO_TYPE_KIND_UNION, *fields);
      break;
    case T3Kind::T3Address:
      AddAddress(decl);
      break;
    default:
      AddStruct(decl, VEXARTSTypeInfoStructName(decl->type));
  }
}
