// References: constants and parameters of modules, enumeration values, fields and elements of values.
#include <utility>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
// Templates of blocks have no row.
bool HasRow(T3Tree_Node* decl) {
  return decl->is<_T3ImportDecl>() || decl->as<_T3DeclList>()->attr().vexa_place == kAtModuleLevel;
}

std::string RowOf(T3Tree_Node* decl) {
  if (decl->is<_T3ImportDecl>()) return FindOriginCall(decl);
  return Call(LUMO_FIND_ELEMENT_WITH_CHECK,
              {Quote(decl->place->vexa_module_name), Quote(decl->as<_T3Decl>()->name), VEXA_CONTEXT});
}
}  // namespace

// A template that modifies one of another module, or an inherited member of a component, has parts in it that
// refer to what that module declares or imports.
bool IsOfAnotherModule(T3Tree_Node* decl) {
  return decl->place != nullptr && decl->place->vexa_module_name != CGCurrentModule()->name && HasRow(decl);
}

Callee CalleeOf(T3Tree_Node* decl) {
  if (!IsOfAnotherModule(decl)) return {GetFunctionObject(decl), "&(" + VEXAFuncTypeStructName(decl) + ")"};
  return {"((" + std::string(LUMO_FUNCTION_T) + ") " + RowOf(decl) + "->function_ptr)",
          RowOf(decl) + "->type_descriptor"};
}

std::string AccessNamedEntity(T3Tree_Node* decl, const CFunction& function) {
  if (IsOfAnotherModule(decl) || (function.reach.rows && HasRow(decl)))
    return RowOf(decl) + "->" + TypeOrValueDescriptor(decl);
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
  return decl->is<_T3ImportDecl>() ? kAtModuleLevel : decl->as<_T3DeclList>()->attr().vexa_place;
}

// What a declaration means: an object of the module, the component's, or one of the behaviour.
std::string LocationOf(T3Tree_Node* decl, const CFunction& function) {
  const int place = PlaceOf(decl);
  if (place == kAtModuleLevel) return AccessNamedEntity(decl, function);
  // A local has its variable by the statement that declares it, and a component's while it is being made.
  if (HasRTSLocation(decl)) return std::string(RTSLocation(decl));
  if (place == kInComponent)
    return Call(LUMO_COMPONENT_ELEMENT, {Quote(decl->as<_T3Decl>()->name), VEXA_CONTEXT});
  NotSupported(decl);
}

bool IsOfTemplate(const _T3FormalPar* formal) {
  T3Tree_Node* owner = formal->parent;
  while (T3Is<_T3FormalPar>(owner)) owner = owner->parent;
  return T3Is<T3TemplateDecl>(owner);
}

// What is local around the template of a block; empty for anything else.
std::string FoundByName(T3Tree_Node* def, const CFunction& function) {
  if (!function.reach.locals || def->is<_T3ImportDecl>()) return "";
  auto* formal = def->try_as<_T3FormalPar>();
  const bool is_local = formal != nullptr
                            ? !IsOfTemplate(formal)
                            : (def->is<T3VarDecl>() || def->is<T3ConstDecl>()) && PlaceOf(def) > kInComponent;
  return is_local ? Call(LUMO_SOURCE_TRACKING_FIND_VALUE, {Quote(DeclaredName(def)), VEXA_CONTEXT}) : "";
}

void Named(_T3Reference* node, Mode mode, CFunction& function) {
  T3Tree_Node* def = Def(node);
  if (T3Is<_T3FormalPar>(def)) {
    const int index = def->as<_T3FormalPar>()->attr().vexa_index;
    // The parameter of a template that is modified has a place of its own.
    const std::string found =
        HasRTSLocation(def) ? std::string(RTSLocation(def)) : FoundByName(def, function);
    const std::string slot = found.empty() ? joined({VEXA_ARGV, "[", std::to_string(index), "]"}) : found;
    const bool is_value = T3Is<T3FormalTemplatePar>(def) && !mode.is_template;
    return SetRTSLocation(
        node, is_value ? Call(LUMO_VALUEOF, {slot, AllocationMode(mode.allocation), VEXA_CONTEXT}) : slot);
  }
  // The one value of the type NULL has the type's name.
  if (T3Is<_T3Decl>(def) && IsAsnNullType(BehindImport(def)))
    return function.call(LUMO_VALUE_SET_ENUM, {AllocateRTSValue(node, mode, function), "0", VEXA_CONTEXT});
  if (T3Is<_T3Decl>(def)) {
    const std::string found = FoundByName(def, function);
    return SetRTSLocation(node, found.empty() ? LocationOf(def, function) : found);
  }
  T3Tree_Node* type = TypeOf(node);
  if (!type->is<T3EnumType>()) NotSupported(node);
  const tIdent name = node->is<T3Qualifier>() ? node->as<T3Qualifier>()->id : node->as<T3Identifier>()->id;
  function.call(LUMO_VALUE_SET_ENUM, {AllocateRTSValue(node, mode, function),
                                      std::to_string(GetEnumValueNumber(type, name)), VEXA_CONTEXT});
}

// An alternative on the way to a part of it, or one that may not be written at all, is chosen by the write.
const char* UnionAccessFunc(T3Qualifier* node, CGAccess access) {
  return T3Is<T3Qualifier>(node->parent) || access == CGAccess::WriteLater
             ? LUMO_VALUE_TRY_SET_UNION_ALTERNATIVE_BY_INDEX
             : LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_INDEX;
}

// The fields of `anytype` have the names of their modules too.
tIdent NameOfField(T3Qualifier* node, T3Tree_Node* type) {
  if (!type->is<T3AnyType>()) return node->id;
  return FindIndex(AnyTypeFields(type), PlaceOfField(node))->as<T3FieldType>()->name;
}

// A long way to a field or an element goes over temporaries, so that the text grows with the way.
std::string Whole(T3Tree_Node* node, Mode mode, CFunction& function) {
  constexpr size_t kLongest = 2000;
  const std::string_view text = InRTS(node, mode.temporary(), function);
  if (text.size() <= kLongest) return std::string(text);
  std::string name = Temporary(LUMO_VALUE_T, function);
  function.assign(name, text);
  return name;
}

void Field(T3Qualifier* node, Mode mode, CFunction& function) {
  const std::string parent = Whole(WholeOf(node), mode, function);
  T3Tree_Node* type = TypeOf(WholeOf(node));
  const auto index = [&] { return std::to_string(PlaceOfField(node)); };
  if (mode.access == CGAccess::Probe)
    SetRTSLocation(node, Call(LUMO_VALUE_TRY_FIELD_BY_INDEX, {parent, index(), VEXA_CONTEXT}));
  else if (IsRecordOrSetType(type))
    SetRTSLocation(node, Call(mode.writes() ? LUMO_VALUE_FIELD_BY_INDEX_LHS : LUMO_VALUE_FIELD_BY_INDEX,
                              {parent, index(), VEXA_CONTEXT}));
  else if (mode.writes() && (type->is<T3UnionType>() || type->is<T3AnyType>()))
    SetRTSLocation(node, Call(UnionAccessFunc(node, mode.access), {parent, index(), VEXA_CONTEXT}));
  else
    SetRTSLocation(node,
                   Call(LUMO_VALUE_FIELD_BY_NAME, {parent, Quote(NameOfField(node, type)), VEXA_CONTEXT}));
}

void Element(T3Subscription* node, Mode mode, CFunction& function) {
  const std::string parent = Whole(node->base, mode, function);
  const std::string_view index = InC(node->index, function);
  // A template in a list that is changed gives way to one with parts.
  const bool makes_parts = mode.writes() && mode.is_template;
  if (IsStringType(TypeOf(node->base)))
    SetRTSLocation(node, Call(LUMO_VALUE_STRING_ELEMENT, {parent, CastToUnsignedLong(index),
                                                          AllocationMode(mode.allocation), VEXA_CONTEXT}));
  else
    SetRTSLocation(node, Call(mode.access == CGAccess::Probe ? LUMO_VALUE_TRY_FIELD_BY_INDEX
                              : makes_parts                  ? LUMO_VALUE_FIELD_BY_INDEX_LHS
                                                             : LUMO_VALUE_FIELD_BY_INDEX,
                              {parent, CastToUnsignedLong(index), VEXA_CONTEXT}));
}
}  // namespace

std::string_view PlaceToWrite(T3Tree_Node* reference, bool makes_field, CFunction& function) {
  auto* field = reference->try_as<T3Qualifier>();
  const bool is_field = field != nullptr && IsField(field);
  if (!is_field && !reference->is<T3Subscription>()) return InRTS(reference, vexa_temp_alloc, function);
  T3Tree_Node* whole = is_field ? WholeOf(field) : reference->as<T3Subscription>()->base;
  const Mode later = Mode(vexa_temp_alloc).with(CGAccess::WriteLater);
  InRTS(whole, later, function);
  if (is_field && (makes_field || !IsRecordOrSetType(TypeOf(whole)))) InRTS(reference, later, function);
  return InRTS(reference, vexa_temp_alloc, function);
}

// Others have no value before the point. A type is a field of `anytype`, but not behind the name of a module.
bool IsField(T3Qualifier* node) {
  return !IsName(node);
}

T3Tree_Node* WholeOf(T3Qualifier* field) {
  auto* before = field->base->try_as<T3Qualifier>();
  if (before == nullptr) return field->base;
  Def(before);
  return before->attr().module_name_in_anytype_qualification ? before->base : before;
}

int64_t PlaceOfField(T3Qualifier* field) {
  T3Tree_Node* type = TypeOf(WholeOf(field));
  return type->is<T3AnyType>() ? AlternativeOfAnyType(type, Def(field))
                               : GetAlternativeIndex(type, field->id, true);
}

bool Reference(T3Tree_Node* node, Mode mode, CFunction& function) {
  auto* qualifier = node->try_as<T3Qualifier>();
  if (qualifier != nullptr && IsField(qualifier))
    Field(qualifier, mode, function);
  else if (qualifier != nullptr || node->is<T3Identifier>())
    Named(node->as<_T3Reference>(), mode, function);
  else if (auto* element = node->try_as<T3Subscription>())
    Element(element, mode, function);
  else
    return false;
  return true;
}
}  // namespace cg
