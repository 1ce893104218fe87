#include "generator/types/CGType.h"

#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/types/CGCheck.h"
#include "generator/expressions/CGExpression.h"
#include "generator/text/CGModuleText.h"
#include "generator/types/CGPortTypes.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "frontend/T3KindCover.h"

namespace {
// Both walk the constraint, and each must allocate its expressions afresh.
void GenConstraintFunctions(T3TypeDecl* decl, CGTypeInfo& info) {
  ResetSubTypeConstraintLocations(decl);
  CGCheck(decl);
  info.check_function = CGFunctionPointer(VEXACheckName(decl));
  ResetSubTypeConstraintLocations(decl);
  CGConstraintOf(decl);
  info.constraintof_function = CGFunctionPointer(VEXAConstraintOfName(decl));
}

// An ASN.1 type has its functions among those that stand beside the module.
void TakeAsnFunctions(T3TypeDecl* decl, CGTypeInfo& info) {
  if (*decl->cold().check_func_name != '\0') info.check_function = CGFunctionPointer(VEXACheckName(decl));
  if (*decl->cold().constraintof_func_name != '\0')
    info.constraintof_function = CGFunctionPointer(VEXAConstraintOfName(decl));
}

// What all descriptions of a declared type have: its name, its module, its kind, and the functions of the
// constraint that stands at the declaration.
CGTypeInfo InfoOf(T3TypeDecl* decl, const char* kind) {
  CGTypeInfo info;
  info.name = Quote(decl->name);
  info.module = Quote(gT3Context.currentModuleName());
  info.kind = kind;
  auto* subtype = decl->type->try_as<T3SubType>();
  if (IsT3ASN_1(decl))
    TakeAsnFunctions(decl, info);
  else if (subtype != nullptr && !subtype->constraint->is<T3NoExpression>())
    GenConstraintFunctions(decl, info);
  return info;
}

void GenStructAndRow(T3TypeDecl* decl) {
  const std::string_view name = GenTypeStruct(decl, joined({"&(", VEXATypeInfoStructName(decl), ")"}));
  GenSymbolTableEntry(decl, LUMO_SYMTAB_KIND_USERDEFINED_TYPE, name);
}

std::unique_ptr<CArray> BeginFieldInfo(T3TypeDecl* decl) {
  return gT3Context.file().beginArray(LUMO_FIELD_INFO_T, VEXAFieldInfoName(decl), true);
}

const char* StructuredKind(T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3RecordType:
      return LUMO_TYPE_KIND_RECORD;
    case T3Kind::T3SetType:
      return LUMO_TYPE_KIND_SET;
    case T3Kind::T3UnionType:
      return LUMO_TYPE_KIND_UNION;
    default:
      internal_error_ast("T3Type", __LINE__, "T3Type::GenStructuredType", type);
  }
}

// A default of a field is a value that lives as long as the module: the table gets it when the module is
// initialized.
void GenFieldDefaults(std::string_view table, T3Tree_Node* fields) {
  unsigned index = 0;
  gT3AST.ForallT3Tree(fields, [&](T3Tree_Node* node) {
    auto* field = node->as<T3FieldType>();
    const unsigned at = index++;
    if (!T3Is<_T3Expression>(field->default_value) || field->default_value->is<T3NoExpression>()) return;
    const std::string member = joined({"(", table, "[", std::to_string(at), "].default_value)"});
    CFunction& function = gT3Context.initializeFunction();
    const CGStatementScope scope(function);
    CGExpression(field->default_value, vexa_rts_mode, vexa_perm_alloc, function);
    function.assign(member, RTSLocation(field->default_value));
    gT3Context.finalizeFunction().assign(member, C_NULL);
  });
}

void GenStructuredType(T3TypeDecl* decl, T3Tree_Node* fields, const char* kind) {
  GenStructAndRow(decl);
  CGTypeInfo info = InfoOf(decl, kind);
  const unsigned count = LengthOfFieldTypeList(fields);
  info.number_of_fields = std::to_string(count);
  if (count > 0) {
    auto array = BeginFieldInfo(decl);
    GenFieldTypeList(*array, fields);
    info.field_info = array->name();
    array->end();
    GenFieldDefaults(array->name(), fields);
  }
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

void WriteContainedType(CArray& array, T3Tree_Node* type, bool is_bound = false) {
  WriteFieldInfo(array, LUMO_TYPE_ARRAY_CONTAINED_TYPE_C, LUMO_FIELD_PROPERTY_MANDATORY_C,
                 is_bound ? C_NULL : VEXAStaticTypeRef(type));
}

// A port of an imported type is described by the module of origin; the address is known at run time only.
bool BindImportedPort(std::string_view field_info, T3Tree_Node* type) {
  T3Tree_Node* declaration = TypeDeclaration(type);
  if (!RootType(type)->is<T3PortType>() || !T3Is<T3ImportTypeDecl>(declaration)) return false;
  CFunction& function = gT3Context.registerFunction();
  function.addComment("set array field info entry for array of ports of imported type");
  function.addLine({"(", field_info, "[0].type) = ((((", FindOriginCall(declaration),
                    ")->type_descriptor)->type_info)->field_info[0]).type;"});
  return true;
}

void GenHomogeneousType(T3TypeDecl* decl, T3Tree_Node* type, const char* kind) {
  GenStructAndRow(decl);
  CGTypeInfo info = InfoOf(decl, kind);
  info.number_of_fields = "1";
  auto array = BeginFieldInfo(decl);
  WriteContainedType(*array, type->as<_T3HomogeneousType>()->type);
  info.field_info = array->name();
  array->end();
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

void GenArrayBoundInfo(CArray& array, T3ArrayType* type) {
  if (!type->dimension->is<T3SingleBound>() && !type->dimension->is<T3RangeBound>())
    internal_error_ast("T3Type", __LINE__, "T3Type::GenArrayBoundInfo", type->dimension);
  const int64_t base = LowerBoundValue(type->dimension);
  const int64_t length = UpperBoundValue(type->dimension) - base + 1;
  array.addRow({LUMO_TYPE_ARRAY_LENGTH_C, std::to_string(length)});
  array.addRow({LUMO_TYPE_ARRAY_BASE_INDEX_C, std::to_string(base)});
}

void GenArrayType(T3TypeDecl* decl, T3ArrayType* type) {
  GenStructAndRow(decl);
  CGTypeInfo info = InfoOf(decl, LUMO_TYPE_KIND_ARRAY);
  info.number_of_fields = "2";
  auto fields = BeginFieldInfo(decl);
  WriteContainedType(*fields, type->type, BindImportedPort(fields->name(), type->type));
  WriteFieldInfo(*fields, Quote(std::string()), LUMO_FIELD_NO_PROPERTY_C, C_NULL);
  info.field_info = fields->name();
  fields->end();
  auto bounds = gT3Context.file().beginArray(LUMO_ENUM_OR_ARRAY_INFO_T, VEXAArrayInfoName(decl), true);
  GenArrayBoundInfo(*bounds, type);
  info.enum_or_array_info = bounds->name();
  bounds->end();
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

void GenEnumType(T3TypeDecl* decl, T3EnumType* type) {
  GenStructAndRow(decl);
  CGTypeInfo info = InfoOf(decl, LUMO_TYPE_KIND_ENUM);
  AssignEnumValues(type);
  info.number_of_fields = std::to_string(LengthOfEnumValueList(type->values));
  auto array = gT3Context.file().beginArray(LUMO_ENUM_OR_ARRAY_INFO_T, VEXAEnumInfoName(decl), true);
  gT3AST.ForallT3Tree(type->values, [&array](T3Tree_Node* node) {
    auto* value = node->as<T3EnumValue>();
    array->addRow({Quote(value->name), std::to_string(value->attr().assigned_no)});
  });
  info.enum_or_array_info = array->name();
  array->end();
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

// Kind and fields of a subtype come from its parent, when the module is registered.
void GenSubType(T3TypeDecl* decl, T3SubType* type) {
  GenStructAndRow(decl);
  CGTypeInfo info = InfoOf(decl, "");
  info.kind = ExtractTypeRTKind(type);
  info.parent_type = VEXAStaticTypeRef(type->parent);
  info.resolved = false;
  info.number_of_fields = "-1";
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
  CFunction& function = gT3Context.registerFunction();
  function.addComment("resolving subtype information from parent");
  function.call("lumo__type_resolve_parent_info", {VEXATypeRef(decl), VEXA_CONTEXT});
}

// An ASN.1 module declares the built-in types themselves; all that refers to them means the run-time
// system's types.
bool IsBuiltinDeclaration(T3TypeDecl* decl) {
  return BuiltinBehind(decl) != nullptr;
}

bool IsConstructor(T3Tree_Node* type) {
  return type->is<_T3StructuredType>() || type->is<_T3HomogeneousType>();
}

using Described = T3Kinds<T3AnyType, T3SignatureType, _T3StructuredType, _T3HomogeneousType, T3SubType,
                          T3PortType, T3ComponentType, T3EnumType>;
using DescribedElsewhere =
    T3Kinds<T3Integer, T3Float, T3Boolean, T3ObjectIdentifierType, T3VerdictType, T3BitStringType,
            T3OctetStringType, T3HexStringType, T3CharStringType, T3UniversalCharStringType, T3TimerType,
            T3CharacterType, T3UniversalCharacterType, T3Address, T3Default>;
// No declaration has them as its type once the analysis is through.
using NeverDeclared = T3Kinds<T3NoType, T3ErrorType, T3WildcardType, T3AllTypes, T3TypeReference,
                              T3ModuleType, T3AmbiguousType>;
static_assert(T3Covers<_T3Type, Described, DescribedElsewhere, NeverDeclared>());

void GenType(T3TypeDecl* decl, T3Tree_Node* type) {
  switch (type->kind) {
    case T3Kind::T3NoType:
      throw internal_exception("T3Type", __LINE__, "GenType", "T3NoType should not occur at this stage");
    case T3Kind::T3AnyType:
      GenStructuredType(decl, AnyTypeFields(type), LUMO_TYPE_KIND_UNION);
      break;
    case T3Kind::T3SignatureType:
      GenSignatureType(decl, type);
      break;
    case T3Kind::T3RecordType:
    case T3Kind::T3SetType:
    case T3Kind::T3UnionType:
      GenStructuredType(decl, type->as<_T3StructuredType>()->body, StructuredKind(type));
      break;
    case T3Kind::T3ArrayType:
      GenArrayType(decl, type->as<T3ArrayType>());
      break;
    case T3Kind::T3SetOfType:
      GenHomogeneousType(decl, type, LUMO_TYPE_KIND_SETOF);
      break;
    case T3Kind::T3RecordOfType:
      GenHomogeneousType(decl, type, LUMO_TYPE_KIND_RECORDOF);
      break;
    case T3Kind::T3SubType:
      // the subtype of a constructor is described like the constructor
      if (!IsConstructor(type->as<T3SubType>()->parent)) return GenSubType(decl, type->as<T3SubType>());
      GenType(decl, type->as<T3SubType>()->parent);
      break;
    case T3Kind::T3PortType:
      GenPortType(decl, type);
      break;
    case T3Kind::T3ComponentType:
      GenComponentType(decl, type);
      break;
    case T3Kind::T3EnumType:
      GenEnumType(decl, type->as<T3EnumType>());
      break;
    default:
      if (type->is<_T3BuiltinType>())
        throw internal_exception("T3Type", __LINE__, "GenType",
                                 "Builtin types should not occur at this stage");
      internal_error_ast("T3Type", __LINE__, "T3Type::GenType", type);
  }
}

// The import has a structure of its own, and shares the description of the type of origin.
void GenImportedType(T3Tree_Node* decl, const char* kind) {
  const std::string_view name = GenTypeStruct(decl, C_NULL);
  GenSymbolTableEntry(decl, kind, name);
  CFunction& function = gT3Context.registerFunction();
  function.addComment("setting type info struct for imported type");
  function.addLine({"(", name, ".type_info) = ((", FindOriginCall(decl), ")->", TypeOrValueDescriptor(decl),
                    ")->type_info;"});
}
}  // namespace

void GenFieldTypeList(CArray& array, T3Tree_Node* fields) {
  gT3AST.ForallT3Tree(fields, [&array](T3Tree_Node* node) {
    auto* field = node->as<T3FieldType>();
    WriteFieldInfo(array, Quote(field->name),
                   field->optional ? LUMO_FIELD_PROPERTY_OPTIONAL_C : LUMO_FIELD_PROPERTY_MANDATORY_C,
                   VEXAStaticTypeRef(field->type));
  });
}

void CGType(T3Tree_Node* decl) {
  if (auto* local = decl->try_as<T3TypeDecl>()) {
    if (!IsBuiltinDeclaration(local)) GenType(local, local->type);
  } else if (decl->is<T3ImportTypeDecl>()) {
    // What an ASN.1 module calls its built-in types is those of the run-time system everywhere.
    if (BuiltinBehind(decl) != nullptr) return;
    GenImportedType(decl, LUMO_SYMTAB_KIND_USERDEFINED_TYPE);
  } else if (decl->is<T3ImportSignatureDecl>()) {
    GenImportedType(decl, LUMO_SYMTAB_KIND_SIGNATURE_TYPE);
  } else {
    internal_error_ast("T3Type", __LINE__, "T3Type::CGType", decl);
  }
}
