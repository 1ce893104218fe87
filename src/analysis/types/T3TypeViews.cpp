// The three views of the types of declarations, fields, parameters and types.
#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
// Follows a chain that may close on itself: a second, slower walker is met when it does.
template <class Step>
T3Tree_Node* FollowChain(T3Tree_Node* start, Step step) {
  T3Tree_Node* slow = start;
  bool advance = false;
  for (T3Tree_Node* at = start;;) {
    T3Tree_Node* next = step(at);
    if (next == nullptr) return at;
    at = next;
    if (advance) slow = step(slow);
    advance = !advance;
    if (at == slow) return gT3ErrorType;
  }
}

// The type of a template declaration's definition: its own, or that of the template which it modifies.
T3Tree_Node* TemplateType(T3Tree_Node* decl) {
  T3Tree_Node* last = FollowChain(decl, [](T3Tree_Node* at) -> T3Tree_Node* {
    auto* definition = at->as<T3TemplateDecl>()->definition->try_as<T3TemplateDef>();
    if (definition == nullptr || !T3Is<T3NoType>(definition->parent)) return nullptr;
    auto* modifies = definition->modifies->try_as<T3TemplateReference>();
    if (modifies == nullptr) return nullptr;
    T3Tree_Node* modified = BehindImport(Def(modifies->reference));
    return T3Is<T3TemplateDecl>(modified) ? modified : nullptr;
  });
  auto* known = last->try_as<T3TemplateDecl>();
  if (known == nullptr || !T3Is<T3TemplateDef>(known->definition)) return gT3ErrorType;
  T3Tree_Node* parent = known->definition->as<T3TemplateDef>()->parent;
  return T3Is<T3NoType>(parent) && last != decl ? gT3ErrorType : parent;
}

// The type node that an entity is declared with.
T3Tree_Node* DeclaredType(T3Tree_Node* entity) {
  if (T3Is<_T3Type>(entity)) return entity;
  entity = BehindImport(entity);
  if (entity == nullptr) return gT3ErrorType;
  if (auto* decl = entity->try_as<T3TypeDecl>()) return decl->type;
  if (auto* decl = entity->try_as<_T3InstanceDecl>()) return decl->type;
  if (auto* par = entity->try_as<_T3TypedFormal>()) return par->type;
  if (auto* field = entity->try_as<T3FieldType>()) return field->type;
  if (auto* decl = entity->try_as<T3Function>()) return decl->return_type;
  if (auto* decl = entity->try_as<T3ExtFunction>()) return decl->return_type;
  if (auto* def = entity->try_as<T3TemplateDef>()) return def->parent;
  if (auto* item = entity->try_as<T3TypeItem>()) return item->type;
  if (entity->is<T3TemplateDecl>()) return TemplateType(entity);
  if (entity->is<T3Testcase>() || entity->is<T3TestStep>() || entity->is<T3TagFormalPar>() ||
      entity->is<T3NoTemplateDef>())
    return gT3NoType;
  if (entity->is<T3Module>()) return gT3AnyModuleType;
  return gT3ErrorType;
}

// The declaration of a type that a reference names, or null.
T3Tree_Node* TypeDeclOf(T3Tree_Node* def) {
  def = BehindImport(def);
  return T3Is<T3TypeDecl>(def) ? def : nullptr;
}

// One step from a type reference to the type that it names.
T3Tree_Node* Target(T3TypeReference* reference) {
  T3Tree_Node* def = Def(reference->reference);
  if (T3Is<_T3Type>(def) && !def->is<T3EnumType>() && !def->is<T3AmbiguousType>()) return def;
  T3Tree_Node* decl = IsPartOfSomething(reference->reference) ? nullptr : TypeDeclOf(def);
  return decl == nullptr ? gT3ErrorType : decl->as<T3TypeDecl>()->type;
}

// Follows a chain of types to its end, or to a type that knows its end already, and gives the end to every
// type on the way, so that long chains cost one walk. One that closes on itself ends in an error.
template <class Step, class Kept, class Closed>
T3Tree_Node* FindEnd(T3Tree_Node* start, Step step, Kept kept, Closed closed) {
  // Most ways have one step.
  if (T3Tree_Node* next = step(start); step(next) == nullptr) return kept(start) = next;
  std::vector<T3Tree_Node*> way;
  T3Tree_Node* end = start;
  T3Tree_Node* slow = start;
  while (T3Tree_Node* next = step(end)) {
    if (T3Tree_Node* known = kept(end)) {
      end = known;
      break;
    }
    way.push_back(end);
    end = next;
    if (way.size() % 2 == 0) slow = step(slow);
    if (end == slow) {
      end = gT3ErrorType;
      closed(way);
      break;
    }
  }
  for (T3Tree_Node* at : way) kept(at) = end;
  return end;
}

T3Tree_Node* LocalStep(T3Tree_Node* type) {
  auto* reference = type->try_as<T3TypeReference>();
  return reference == nullptr ? nullptr : Target(reference);
}

[[gnu::noinline]] T3Tree_Node* FindLocal(T3TypeReference* reference) {
  return FindEnd(
      reference, LocalStep,
      [](T3Tree_Node * at) -> auto& { return at->as<T3TypeReference>()->attr().local_type_def; },
      [](const std::vector<T3Tree_Node*>&) {});
}

inline T3Tree_Node* LocalOfType(T3Tree_Node* type) {
  auto* reference = type->try_as<T3TypeReference>();
  if (reference == nullptr) return type;
  T3Tree_Node* known = reference->attr().local_type_def;
  return known != nullptr ? known : FindLocal(reference);
}

// One step towards the base of a type; null where it is reached.
T3Tree_Node* BaseStep(T3Tree_Node* type) {
  if (auto* reference = type->try_as<T3TypeReference>()) return LocalOfType(reference);
  if (auto* subtype = type->try_as<T3SubType>()) return subtype->parent;
  return nullptr;
}

[[gnu::noinline]] T3Tree_Node* FindBase(T3Tree_Node* type) {
  return FindEnd(
      type, BaseStep, [](T3Tree_Node * at) -> auto& { return at->as<_T3Type>()->attr().base_type_def; },
      [](const std::vector<T3Tree_Node*>& way) {
        for (T3Tree_Node* at : way)
          if (auto* subtype = at->try_as<T3SubType>()) subtype->attr().detect_cycle_in_subtypes = true;
      });
}

inline T3Tree_Node* BaseOfType(T3Tree_Node* type) {
  if (!type->is<T3TypeReference>() && !type->is<T3SubType>()) return type;
  T3Tree_Node* known = static_cast<_T3Type*>(type)->attr().base_type_def;
  return known != nullptr ? known : FindBase(type);
}
}  // namespace

T3Tree_Node* BehindImport(T3Tree_Node* def) {
  return !T3Is<_T3ImportDecl>(def) ? def : FollowChain(def, [](T3Tree_Node* at) -> T3Tree_Node* {
    auto* import = at->try_as<_T3ImportDecl>();
    if (import == nullptr) return nullptr;
    T3Tree_Node* next = import->attr().def_aux;
    return next == nullptr ? _sgT3NoDecl(true) : next;
  });
}

T3Tree_Node* LocalTypeDef(T3Tree_Node* entity) {
  return LocalOfType(DeclaredType(entity));
}

T3Tree_Node* AbsoluteTypeDef(T3Tree_Node* entity) {
  return LocalOfType(DeclaredType(entity));
}

T3Tree_Node* BaseTypeDef(T3Tree_Node* entity) {
  return BaseOfType(DeclaredType(entity));
}

T3TypeViews TypeViewsOf(T3Tree_Node* entity) {
  T3Tree_Node* declared = DeclaredType(entity);
  T3Tree_Node* local = LocalOfType(declared);
  return {local, BaseOfType(declared)};
}

T3Tree_Node* DerefType(T3Tree_Node* type) {
  return LocalTypeDef(type);
}

T3Tree_Node* ElementType(T3Tree_Node* base) {
  return T3Is<_T3HomogeneousType>(base) && T3Is<_T3Type>(base->as<_T3HomogeneousType>()->type)
             ? base->as<_T3HomogeneousType>()->type
             : gT3ErrorType;
}

T3Tree_Node* FormalParametersOf(T3Tree_Node* def) {
  def = BehindImport(def);
  if (auto* decl = T3Is<_T3FunctionDecl>(def) ? def->as<_T3FunctionDecl>() : nullptr) return decl->fpl;
  if (auto* decl = T3Is<T3TemplateDecl>(def) ? def->as<T3TemplateDecl>() : nullptr) return decl->fpl;
  if (T3Is<T3TypeDecl>(def)) def = LocalTypeDef(def);
  if (T3Is<T3SignatureType>(def)) return def->as<T3SignatureType>()->fpl;
  return _sgT3NoFormalPar(true);
}

namespace {
template <class... Kinds>
bool HasBase(T3Tree_Node* type) {
  T3Tree_Node* base = BaseTypeDef(type);
  return base != nullptr && (base->is<Kinds>() || ...);
}
}  // namespace

bool IsCharStringType(T3Tree_Node* type) {
  return HasBase<T3CharStringType, T3CharacterType>(type);
}
bool IsUniversalCharStringType(T3Tree_Node* type) {
  return HasBase<T3UniversalCharStringType, T3UniversalCharacterType>(type);
}
bool IsStringType(T3Tree_Node* type) {
  return HasBase<T3BitStringType, T3OctetStringType, T3HexStringType, T3CharStringType, T3CharacterType,
                 T3UniversalCharStringType, T3UniversalCharacterType>(type);
}
bool IsHomogeneousType(T3Tree_Node* type) {
  return HasBase<_T3HomogeneousType>(type);
}
bool IsRecordOfType(T3Tree_Node* type) {
  return HasBase<T3RecordOfType>(type);
}
bool IsSetOfType(T3Tree_Node* type) {
  return HasBase<T3SetOfType>(type);
}
bool IsRecordOrSetType(T3Tree_Node* type) {
  return HasBase<T3RecordType, T3SetType>(type);
}
bool IsBuiltinType(T3Tree_Node* type) {
  return T3Is<_T3BuiltinType>(DerefType(type));
}
bool IsReferenceToBuiltin(T3Tree_Node* type) {
  return T3Is<T3TypeReference>(type) && IsBuiltinType(type);
}
bool IsSignatureType(T3Tree_Node* type) {
  return HasBase<T3SignatureType>(type);
}
bool IsArrayType(T3Tree_Node* type) {
  return HasBase<T3ArrayType>(type);
}
bool IsTimer(T3Tree_Node* type) {
  return HasBase<T3TimerType>(type);
}

namespace {
// The element type below all dimensions of an array; other types are their own.
T3Tree_Node* BelowDimensions(T3Tree_Node* type) {
  return FollowChain(BaseTypeDef(type), [](T3Tree_Node* at) -> T3Tree_Node* {
    return at->is<T3ArrayType>() ? BaseTypeDef(ElementType(at)) : nullptr;
  });
}
}  // namespace

bool IsTimerArray(T3Tree_Node* type) {
  return IsArrayType(type) && T3Is<T3TimerType>(BelowDimensions(type));
}
bool IsPortOrPortArray(T3Tree_Node* type) {
  return T3Is<T3PortType>(BelowDimensions(type));
}
bool IsObjectType(T3Tree_Node* type) {
  T3Tree_Node* object = BelowDimensions(type);
  return T3Is<T3PortType>(object) || T3Is<T3TimerType>(object);
}
bool IsRowOfParts(T3Tree_Node* type) {
  return IsStringType(type) || IsHomogeneousType(type);
}

bool IsFieldOptional(T3Tree_Node* field) {
  return T3Is<T3FieldType>(field) && field->as<T3FieldType>()->optional;
}

bool IsRedefinedAddress(T3Tree_Node* type) {
  return T3Is<T3Address>(type) && type != gT3AnyAddressType &&
         type->as<T3Address>()->attr().address_type_definition_inh != nullptr;
}

T3Tree_Node* GetAddressBaseType(T3Tree_Node* type) {
  if (!IsRedefinedAddress(type)) return type;
  T3Tree_Node* base = BaseTypeDef(type->as<T3Address>()->attr().address_type_definition_inh);
  return base->is<T3ErrorType>() ? type : base;
}

T3Tree_Node* LocalBehindAddress(T3Tree_Node* entity) {
  T3Tree_Node* type = LocalTypeDef(entity);
  return IsRedefinedAddress(type) ? LocalTypeDef(type->as<T3Address>()->attr().address_type_definition_inh)
                                  : type;
}

bool IsValidAddressRef(T3Tree_Node* reference) {
  while (auto* qualification = reference->try_as<_T3Qualification>()) {
    if (T3Is<T3Module>(Def(qualification->base))) break;
    reference = qualification->base;
  }
  if (reference->is<T3Self>() || reference->is<T3MTC>() || reference->is<T3System>()) return true;
  if (!reference->is<T3Identifier>() && !reference->is<T3Qualifier>()) return false;
  T3Tree_Node* def = BehindImport(Def(reference));
  return T3Is<_T3FormalPar>(def) || T3Is<_T3InstanceValueDecl>(def) || T3Is<T3Function>(def) ||
         T3Is<T3ExtFunction>(def);
}

bool IsSameBuiltinType(T3Tree_Node* a, T3Tree_Node* b) {
  if (a == nullptr || b == nullptr || a->kind != b->kind || !a->is<_T3BuiltinType>()) return false;
  if (a->is<T3TimerType>() || a->is<T3Address>() || a->is<T3Default>()) return false;
  return !a->is<T3AnyType>() || a == b;
}
