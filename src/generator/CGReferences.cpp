// References: constants and parameters of modules, enumeration values, fields and elements of values.
#include "analysis/T3Types.h"
#include "generator/CGExpressionParts.h"
#include "generator/CGModule.h"
#include "generator/CGTypeTables.h"
#include "generator/CLocations.h"
#include "generator/LUMOS.h"
#include "generator/T3CodeDefs.h"

namespace cg {
namespace {
bool g_via_symbol_table = false;

// Where a declaration stands, as the analysis numbers it.
enum Place { kModuleLevel = 1, kComponent = 2 };

// Templates of blocks have no row.
bool HasRow(T3Tree_Node* decl) {
  return decl->is<_T3ImportDecl>() || decl->as<_T3DeclList>()->attr().vexa_place == kModuleLevel;
}

std::string EntryOf(T3Tree_Node* decl) {
  const std::string row =
      decl->is<_T3ImportDecl>()
          ? FindOriginCall(decl)
          : Call(LUMO_FIND_ELEMENT_WITH_CHECK,
                 {Quote(CGCurrentModule()->name), Quote(decl->as<_T3Decl>()->name), VEXA_CONTEXT});
  return row + "->" + TypeOrValueDescriptor(decl);
}
}  // namespace

ReferencesViaSymbolTable::ReferencesViaSymbolTable() : before_(g_via_symbol_table) {
  g_via_symbol_table = true;
}
ReferencesViaSymbolTable::~ReferencesViaSymbolTable() {
  g_via_symbol_table = before_;
}

std::string AccessNamedEntity(T3Tree_Node* decl) {
  if (g_via_symbol_table && HasRow(decl)) return EntryOf(decl);
  switch (decl->kind) {
    case T3Kind::T3ConstDecl:
    case T3Kind::T3ImportConstDecl:
    case T3Kind::T3ImportModuleParDecl:
      return VEXAConstName(decl);
    case T3Kind::T3ExtConstDecl:
      return VEXAExtConstName(decl);
    case T3Kind::T3ModuleParDecl:
      return VEXAModuleParName(decl);
    case T3Kind::T3TemplateDecl:
    case T3Kind::T3ImportTemplateDecl:
      return VEXATemplateRef(decl);
    default:
      NotSupported(decl);
  }
}

namespace {
int PlaceOf(T3Tree_Node* decl) {
  return decl->is<_T3ImportDecl>() ? kModuleLevel : decl->as<_T3DeclList>()->attr().vexa_place;
}

// What a declaration means: an object of the module, the component's, or one of the behaviour.
std::string LocationOf(T3Tree_Node* decl) {
  const int place = PlaceOf(decl);
  if (place == kModuleLevel) return AccessNamedEntity(decl);
  // A local has its variable by the statement that declares it, and a component's while it is being made.
  if (HasRTSLocation(decl)) return RTSLocation(decl);
  if (place == kComponent)
    return Call(LUMO_COMPONENT_ELEMENT, {Quote(decl->as<_T3Decl>()->name), VEXA_CONTEXT});
  NotSupported(decl);
}

void Named(_T3Reference* node, Mode allocation, CFunction& function) {
  T3Tree_Node* def = Def(node);
  if (T3Is<_T3FormalPar>(def)) {
    const int index = def->as<_T3FormalPar>()->attr().vexa_index;
    const std::string slot = std::string(VEXA_ARGV) + "[" + std::to_string(index) + "]";
    const bool is_value = T3Is<T3FormalTemplatePar>(def) && !IsTemplateMode();
    return StoreRTSLocation(
        node, is_value ? Call(LUMO_VALUEOF, {slot, AllocationMode(allocation), VEXA_CONTEXT}) : slot);
  }
  if (T3Is<_T3Decl>(def)) return StoreRTSLocation(node, LocationOf(def));
  T3Tree_Node* type = TypeOf(node);
  if (!type->is<T3EnumType>()) NotSupported(node);
  const tIdent name = node->is<T3Qualifier>() ? node->as<T3Qualifier>()->id : node->as<T3Identifier>()->id;
  function.call(LUMO_VALUE_SET_ENUM, {AllocateRTSValue(node, allocation, function),
                                      std::to_string(GetEnumValueNumber(type, name)), VEXA_CONTEXT});
}

void Field(T3Qualifier* node, CFunction& function) {
  const std::string parent = InRTS(node->base, vexa_temp_alloc, function);
  T3Tree_Node* type = TypeOf(node->base);
  const auto index = [&] { return std::to_string(GetAlternativeIndex(type, node->id, true)); };
  if (IsRecordOrSetType(type))
    StoreRTSLocation(node, Call(IsLeftSide() ? LUMO_VALUE_FIELD_BY_INDEX_LHS : LUMO_VALUE_FIELD_BY_INDEX,
                                {parent, index(), VEXA_CONTEXT}));
  else if (IsLeftSide() && type->is<T3UnionType>())
    StoreRTSLocation(node, Call(LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_INDEX, {parent, index(), VEXA_CONTEXT}));
  else
    StoreRTSLocation(node, Call(LUMO_VALUE_FIELD_BY_NAME, {parent, Quote(node->id), VEXA_CONTEXT}));
}

void Element(T3Subscription* node, Mode allocation, CFunction& function) {
  const std::string parent = InRTS(node->base, vexa_temp_alloc, function);
  const std::string index = InC(node->index, function);
  if (IsStringType(TypeOf(node->base)))
    StoreRTSLocation(node, Call(LUMO_VALUE_STRING_ELEMENT, {parent, CastToUnsignedLong(index),
                                                            AllocationMode(allocation), VEXA_CONTEXT}));
  else
    StoreRTSLocation(node,
                     Call(LUMO_VALUE_FIELD_BY_INDEX, {parent, CastToUnsignedLong(index), VEXA_CONTEXT}));
}
}  // namespace

// Others have no value before the point.
bool IsField(T3Qualifier* node) {
  T3Tree_Node* def = Def(node);
  return !T3Is<_T3Decl>(def) && !T3Is<T3EnumType>(def);
}

bool Reference(T3Tree_Node* node, Mode allocation, CFunction& function) {
  auto* qualifier = node->try_as<T3Qualifier>();
  if (qualifier != nullptr && IsField(qualifier))
    Field(qualifier, function);
  else if (qualifier != nullptr || node->is<T3Identifier>())
    Named(node->as<_T3Reference>(), allocation, function);
  else if (auto* element = node->try_as<T3Subscription>())
    Element(element, allocation, function);
  else
    return false;
  return true;
}
}  // namespace cg
