#include "generator/types/CGPortTypes.h"

#include "analysis/names/T3Members.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/types/CGValue.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"
#include "frontend/T3Lists.h"

namespace {
std::unique_ptr<CArray> BeginFields(const std::string& name) {
  return gT3Context.file().beginArray(LUMO_FIELD_INFO_T, name, true);
}

constexpr std::string_view kEmptyName = "\"\"";

std::string AddressOf(std::string_view name) {
  return joined({"&(", name, ")"});
}

CGTypeInfo PortInfoOf(T3TypeDecl* decl, const char* kind) {
  CGTypeInfo info;
  info.name = Quote(decl->name);
  info.module = Quote(gT3Context.currentModuleName());
  info.kind = kind;
  return info;
}

// The reference type with its one row, which leads to the record type.
void GenReferenceType(T3TypeDecl* decl, const char* kind, const char* row, std::string_view record) {
  const std::string_view name = GenTypeStruct(decl, joined({"&(", VEXATypeInfoStructName(decl), ")"}));
  GenSymbolTableEntry(decl, LUMO_SYMTAB_KIND_USERDEFINED_TYPE, name);
  CGTypeInfo info = PortInfoOf(decl, kind);
  info.number_of_fields = "1";
  info.field_info = VEXAFieldInfoName(decl);
  auto array = BeginFields(info.field_info);
  WriteFieldInfo(*array, Quote(std::string(row)), LUMO_FIELD_NO_PROPERTY_C, AddressOf(record));
  array->end();
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

// What `all` in a port's list stands for.
bool IsPartOfAllTypes(T3Tree_Node* decl, t3_port_kind_t kind) {
  T3Tree_Node* root = RootType(decl);
  if (root->is<T3PortType>() || root->is<T3TimerType>() || root->is<T3Default>() || root->is<T3NoType>() ||
      root->is<T3ErrorType>())
    return false;
  if (root->is<T3SignatureType>()) return kind != t3_port_kind_t::Message;
  return kind != t3_port_kind_t::Procedure;
}

void GenPortTypeListAllTypes(CArray& array, T3Tree_Node* decls, const char* property, t3_port_kind_t kind) {
  for (auto* decl : DeclsInGroups(decls))
    if (TypeDeclaration(decl) == decl && IsPartOfAllTypes(decl, kind))
      WriteFieldInfo(array, kEmptyName, property, VEXAStaticTypeRef(decl));
}

void GenPortTypeList(CArray& array, T3Tree_Node* list, const char* property, T3TypeDecl* decl) {
  gT3AST.ForallT3Tree(list, [&](T3Tree_Node* node) {
    if (!node->is<T3TypeItem>()) internal_error_ast("T3Type", __LINE__, "T3Type::GenPortTypeList", node);
    T3Tree_Node* type = node->as<T3TypeItem>()->type;
    if (!type->is<T3AllTypes>()) {
      WriteFieldInfo(array, kEmptyName, property, VEXAStaticTypeRef(type));
      return;
    }
    T3Tree_Node* module = decl->place == nullptr ? nullptr : decl->place->vexa_my_module;
    if (T3Is<T3Module>(module))
      GenPortTypeListAllTypes(array, module->as<T3Module>()->definition_part, property,
                              decl->type->as<T3PortType>()->port_kind);
  });
}

// A port of an imported type is described by the module of origin; the address is known at run time only.
void BindImportedPort(T3Tree_Node* import, std::string_view field_info, unsigned index) {
  CFunction& function = gT3Context.registerFunction();
  function.addComment("set component field info entry for port of imported type");
  function.addLine({"(", field_info, "[", std::to_string(index), "].type) = ((((", FindOriginCall(import),
                    ")->type_descriptor)->type_info)->field_info[0]).type;"});
}

void GenComponentDecl(CArray& array, _T3InstanceDecl* decl) {
  T3Tree_Node* declaration = TypeDeclaration(decl->type);
  const bool imported_port = decl->is<T3PortDecl>() && T3Is<T3ImportTypeDecl>(declaration);
  if (imported_port) BindImportedPort(declaration, array.name(), array.count());
  WriteFieldInfo(array, Quote(decl->name), LUMO_FIELD_NO_PROPERTY_C,
                 imported_port ? C_NULL : VEXAStaticTypeRef(decl->type));
}

void GenComponentDeclList(CArray& array, const T3NodeList& decls) {
  for (T3Tree_Node* decl : decls) {
    if (!decl->is<_T3InstanceDecl>())
      internal_error_ast("T3Type", __LINE__, "T3Type::GenComponentDeclList", decl);
    GenComponentDecl(array, decl->as<_T3InstanceDecl>());
  }
}

void PushDefinition(tIdent name, const tPosition& position, CFunction& function) {
  CGPushSourceLocation(function, CGCurrentModule(), joined({gIdents.GetString(name), " def"}), C_NULL,
                       LUMO_SCOPE_UNDEFINED_C, position);
}

// The values of a component's members, in the fields of its record. From anywhere else they are reached by
// name.
void GenMembers(T3ComponentType* component, tIdent name, CFunction& function) {
  std::vector<T3Tree_Node*> located;
  unsigned index = 0;
  for (T3Tree_Node* member : MembersOf(component).All()) {
    const unsigned place = index++;
    if (!member->is<_T3InstanceValueDecl>()) continue;
    const tPosition& position = member->as<_T3InstanceDecl>()->position;
    const bool is_elsewhere = CGIsElsewhere(position);
    if (is_elsewhere) PushDefinition(name, position, function);
    CGComponentValue(member, place, function);
    if (is_elsewhere) CGPopSourceLocation(function);
    located.push_back(member);
  }
  for (T3Tree_Node* member : located) ResetLocation(member);
}

std::unique_ptr<CFunction> BeginPostProcessFunction(T3TypeDecl* decl) {
  auto function = gT3Context.file().beginFunction(
      LUMO_VALUE_T, VEXAComponentPostProcessFuncName(decl),
      {FormalPar(LUMO_VALUE_T, VEXA_COMPONENT_POSTPROCESS_ARG_NAME), FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)},
      "", false);
  PushDefinition(decl->name, decl->position, *function);
  return function;
}

void EndPostProcessFunction(CFunction& function) {
  CGPopSourceLocation(function);
  function._return(VEXA_COMPONENT_POSTPROCESS_ARG_NAME);
  function.end();
}

// Runs at each creation of a component, on the value of its record type.
void GenPostProcessFunction(T3TypeDecl* decl, T3ComponentType* component) {
  const CGStatementScope scope;
  auto function = BeginPostProcessFunction(decl);
  GenMembers(component, decl->name, *function);
  EndPostProcessFunction(*function);
}

void WriteSignatureRow(CArray& array, T3Tree_Node* node) {
  auto* formal = node->as<_T3TypedFormal>();
  const auto restriction = formal->is<T3FormalTemplatePar>() ? formal->as<T3FormalTemplatePar>()->restriction
                                                             : t3_template_restriction_t::None;
  WriteFieldInfo(array, Quote(formal->name),
                 joined({PassModeConstant(formal->pass), " | ", TemplRestrModeConstant(restriction)}),
                 VEXAStaticTypeRef(formal->type));
}

void AddReturnTypeToFieldInfo(CArray& array, T3Tree_Node* return_type) {
  if (return_type == nullptr || return_type->is<T3NoType>()) return;
  WriteFieldInfo(array, kEmptyName, LUMO_FIELD_PROPERTY_RETURN_VALUE_C, VEXAStaticTypeRef(return_type));
}

// Writes the rows of a signature into a table of that name, and enters them in the description.
void GenSignatureFieldInfo(const std::string& name, T3Tree_Node* formals, T3Tree_Node* return_type,
                           CGTypeInfo& info) {
  auto array = BeginFields(name);
  gT3AST.ForallT3Tree(formals, [&array](T3Tree_Node* formal) { WriteSignatureRow(*array, formal); });
  AddReturnTypeToFieldInfo(*array, return_type);
  info.number_of_fields = std::to_string(array->count());
  if (array->count() == 0) return;
  info.field_info = name;
  array->end();
}

_T3FunctionDecl* BehaviourOf(T3Tree_Node* decl) {
  T3Tree_Node* origin = decl->is<_T3ImportDecl>() ? decl->as<_T3ImportDecl>()->attr().def_aux : decl;
  if (!T3Is<_T3FunctionDecl>(origin)) internal_error_ast("T3Type", __LINE__, "GenFunctionType", decl);
  return origin->as<_T3FunctionDecl>();
}

const char* FunctionTypeKind(_T3FunctionDecl* decl) {
  if (decl->is<T3Testcase>()) return LUMO_TYPE_KIND_TEST_CASE;
  if (decl->is<T3TestStep>()) return LUMO_TYPE_KIND_TEST_STEP;
  return LUMO_TYPE_KIND_FUNCTION;
}

T3Tree_Node* ReturnType(_T3FunctionDecl* decl) {
  if (auto* function = decl->try_as<T3Function>()) return function->return_type;
  if (auto* external = decl->try_as<T3ExtFunction>()) return external->return_type;
  return nullptr;
}

CGTypeInfo InfoOfBehaviour(_T3FunctionDecl* decl, const char* kind) {
  CGTypeInfo info;
  info.name = Quote(decl->name);
  info.module =
      Quote(decl->place == nullptr ? gT3Context.currentModuleName() : decl->place->vexa_module_name);
  info.kind = kind;
  return info;
}

// Returns the signature's name.
std::string GenBehaviourSignature(T3Tree_Node* decl, _T3FunctionDecl* behaviour, CGTypeInfo& info) {
  const std::string info_name = VEXASignatureInfoName(decl);
  std::string name = VEXASignatureStructName(decl);
  GenPlainTypeStruct(name, info_name, true);
  GenSignatureFieldInfo(VEXASignatureFieldInfoName(decl), behaviour->fpl, ReturnType(behaviour), info);
  WriteTypeInfoStruct(info_name, info);
  return name;
}

void AddExtraField(CArray& array, T3Tree_Node* type) {
  const bool missing = type == nullptr || type->is<T3NoType>();
  WriteFieldInfo(array, kEmptyName, LUMO_FIELD_NO_PROPERTY_C, missing ? C_NULL : VEXAStaticTypeRef(type));
}

// The components that a behaviour needs.
void AddExtraFields(CArray& array, _T3FunctionDecl* decl) {
  if (decl->is<T3ExtFunction>()) return;
  AddExtraField(array, decl->runs_on);
  if (auto* testcase = decl->try_as<T3Testcase>()) AddExtraField(array, testcase->system);
}
}  // namespace

void GenPortType(T3Tree_Node* node, T3Tree_Node* type) {
  auto* decl = node->as<T3TypeDecl>();
  auto* port = type->try_as<T3PortType>();
  if (port == nullptr) internal_error_ast("T3Type", __LINE__, "T3Type::GenPortType", type);
  GenReferenceType(decl, LUMO_TYPE_KIND_PORT_REF, "<port record>", VEXAPortRecordName(decl));
  GenPlainTypeStruct(VEXAPortRecordName(decl), VEXAPortRecordInfoStructName(decl), false);
  CGTypeInfo info = PortInfoOf(decl, LUMO_TYPE_KIND_PORT);
  info.field_info = VEXAPortRecordFieldInfoName(decl);
  auto array = BeginFields(info.field_info);
  GenPortTypeList(*array, port->in_list, LUMO_FIELD_PROPERTY_IN_VALUE_C, decl);
  GenPortTypeList(*array, port->out_list, LUMO_FIELD_PROPERTY_OUT_VALUE_C, decl);
  if (array->count() == 0)
    WriteFieldInfo(*array, kEmptyName, LUMO_FIELD_NO_PROPERTY_C, LUMO_STATIC_UNDEFINED_TYPE);
  info.number_of_fields = std::to_string(array->count());
  array->end();
  WriteTypeInfoStruct(VEXAPortRecordInfoStructName(decl), info);
}

void GenComponentType(T3Tree_Node* node, T3Tree_Node* type) {
  auto* decl = node->as<T3TypeDecl>();
  auto* component = type->try_as<T3ComponentType>();
  if (component == nullptr) internal_error_ast("T3Type", __LINE__, "T3Type::GenComponentType", type);
  GenReferenceType(decl, LUMO_TYPE_KIND_COMPONENT_REF, "<component record>", VEXAComponentRecordName(decl));
  GenPlainTypeStruct(VEXAComponentRecordName(decl), VEXAComponentRecordInfoStructName(decl), true);
  // count and fields of the record stand two places behind those of other types, the count where others have
  // a pointer
  CGTypeInfo info = PortInfoOf(decl, LUMO_TYPE_KIND_COMPONENT);
  info.check_function = CGFunctionPointer(VEXAComponentPostProcessFuncName(decl));
  auto array = BeginFields(VEXAComponentRecordFieldInfoName(decl));
  GenComponentDeclList(*array, MembersOf(component).All());
  if (array->count() == 0) {
    info.enum_or_array_info = "0";
  } else {
    info.enum_or_array_info = "((" + std::string(C_VOID) + " *) " + std::to_string(array->count()) + ")";
    info.reserved_last = array->name();
    array->end();
  }
  WriteTypeInfoStruct(VEXAComponentRecordInfoStructName(decl), info);
  GenPostProcessFunction(decl, component);
}

void GenSignatureType(T3Tree_Node* node, T3Tree_Node* type) {
  auto* decl = node->as<T3TypeDecl>();
  auto* signature = type->as<T3SignatureType>();
  const std::string_view name = GenTypeStruct(decl, joined({"&(", VEXATypeInfoStructName(decl), ")"}));
  GenSymbolTableEntry(decl, LUMO_SYMTAB_KIND_SIGNATURE_TYPE, name);
  CGTypeInfo info = PortInfoOf(decl, LUMO_TYPE_KIND_SIGNATURE);
  GenSignatureFieldInfo(VEXAFieldInfoName(decl), signature->fpl, signature->return_type, info);
  WriteTypeInfoStruct(VEXATypeInfoStructName(decl), info);
}

std::string GenFunctionType(T3Tree_Node* decl) {
  _T3FunctionDecl* behaviour = BehaviourOf(decl);
  CGTypeInfo info = InfoOfBehaviour(behaviour, LUMO_TYPE_KIND_SIGNATURE);
  const std::string signature = GenBehaviourSignature(decl, behaviour, info);
  info.kind = FunctionTypeKind(behaviour);
  const std::string info_name = VEXAFuncTypeInfoName(decl);
  std::string name = VEXAFuncTypeStructName(decl);
  GenPlainTypeStruct(name, info_name, true);
  info.field_info = VEXAFuncTypeFieldInfoName(decl);
  CArray array(&gT3Context.file(), LUMO_FIELD_INFO_T, info.field_info, true);
  WriteFieldInfo(array, kEmptyName, LUMO_FIELD_NO_PROPERTY_C, AddressOf(signature));
  AddExtraFields(array, behaviour);
  info.number_of_fields = std::to_string(array.count());
  array.end();
  WriteTypeInfoStruct(info_name, info);
  return name;
}
