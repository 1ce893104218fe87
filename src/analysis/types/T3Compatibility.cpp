// Which types fit each other: compatibility of structures, strict compatibility, strings, components.
#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

#include "analysis/types/T3Bounds.h"
#include "analysis/names/T3Members.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3KindCover.h"

namespace {
// A comparison of deeper nesting than this ends with "compatible": only types that contain themselves
// get there.
constexpr size_t kMaxDepth = 2000;

// One comparison of two types with all that it leads to. A part whose type has failed is compatible with
// everything: its own message is enough. A type that is already under comparison counts as
// compatible with everything, which ends the recursion of types that contain themselves, and a pair that was
// found compatible is not walked again.
class Comparison {
 public:
  bool Compatible(T3Tree_Node* a, T3Tree_Node* b);

 private:
  bool Structures(T3Tree_Node* a, T3Tree_Node* b);
  bool Bodies(T3Tree_Node* a, T3Tree_Node* b);
  bool BodyAgainstElement(T3Tree_Node* body, T3Tree_Node* element);
  bool ElementAgainstBody(T3Tree_Node* element, T3Tree_Node* body);
  bool Elements(T3Tree_Node* a, T3Tree_Node* b) {
    return Compatible(BaseTypeDef(a->as<_T3HomogeneousType>()->type),
                      BaseTypeDef(b->as<_T3HomogeneousType>()->type));
  }

  std::unordered_set<T3Tree_Node*> under_comparison_;
  std::set<std::pair<uint32_t, uint32_t>> compatible_;
};

T3Tree_Node* Body(T3Tree_Node* type) {
  return type->as<_T3StructuredType>()->body;
}

bool IsListLike(T3Tree_Node* type) {
  return type->is<T3RecordOfType>() || type->is<T3ArrayType>();
}

bool Comparison::Bodies(T3Tree_Node* a, T3Tree_Node* b) {
  for (;; a = a->as<T3FieldType>()->next, b = b->as<T3FieldType>()->next) {
    if (!a->is<T3FieldType>()) return !b->is<T3FieldType>();
    if (!b->is<T3FieldType>()) return false;
    const auto* x = a->as<T3FieldType>();
    const auto* y = b->as<T3FieldType>();
    if (x->optional != y->optional) return false;
    if (!Compatible(BaseTypeDef(x->type), BaseTypeDef(y->type))) return false;
  }
}

bool Comparison::BodyAgainstElement(T3Tree_Node* body, T3Tree_Node* element) {
  T3Tree_Node* base = BaseTypeDef(element);
  for (auto* at : Items<T3FieldType>(body))
    if (!Compatible(BaseTypeDef(at->type), base)) return false;
  return true;
}

bool Comparison::ElementAgainstBody(T3Tree_Node* element, T3Tree_Node* body) {
  T3Tree_Node* base = BaseTypeDef(element);
  for (auto* at : Items<T3FieldType>(body))
    if (!Compatible(base, BaseTypeDef(at->type))) return false;
  return true;
}

bool Comparison::Structures(T3Tree_Node* a, T3Tree_Node* b) {
  switch (a->kind) {
    case T3Kind::T3RecordType:
      if (b->is<T3RecordType>()) return Bodies(Body(a), Body(b));
      return IsListLike(b) && BodyAgainstElement(Body(a), b->as<_T3HomogeneousType>()->type);
    case T3Kind::T3SetType:
      if (b->is<T3SetType>()) return Bodies(Body(a), Body(b));
      return b->is<T3SetOfType>() && BodyAgainstElement(Body(a), b->as<_T3HomogeneousType>()->type);
    case T3Kind::T3UnionType:
      return b->is<T3UnionType>() && Bodies(Body(a), Body(b));
    case T3Kind::T3RecordOfType:
    case T3Kind::T3ArrayType:
      if (IsListLike(b)) return Elements(a, b);
      return b->is<T3RecordType>() && ElementAgainstBody(a->as<_T3HomogeneousType>()->type, Body(b));
    case T3Kind::T3SetOfType:
      if (b->is<_T3HomogeneousType>()) return Elements(a, b);
      return (b->is<T3RecordType>() || b->is<T3SetType>()) &&
             ElementAgainstBody(a->as<_T3HomogeneousType>()->type, Body(b));
    default:
      return false;
  }
}

using ComparedByStructure = T3Kinds<_T3StructuredType, _T3HomogeneousType>;
using ComparedByIdentity =
    T3Kinds<T3NoType, _T3BuiltinType, T3ModuleType, T3PortType, T3EnumType, T3ComponentType>;
// The first two stand for a type, which is asked for before; the others are no types of values.
using NeverCompared = T3Kinds<T3TypeReference, T3SubType, T3ErrorType, T3WildcardType, T3AllTypes,
                              T3SignatureType, T3AmbiguousType>;
static_assert(T3Covers<_T3Type, ComparedByStructure, ComparedByIdentity, NeverCompared>());

bool Comparison::Compatible(T3Tree_Node* a, T3Tree_Node* b) {
  if (a == nullptr || b == nullptr) return false;
  if (a->is<T3ErrorType>() || b->is<T3ErrorType>()) return true;
  switch (a->kind) {
    case T3Kind::T3NoType:
      return b->is<T3NoType>();
    case T3Kind::T3Address:
      return b->is<T3Address>() && GetAddressBaseType(a) == GetAddressBaseType(b);
    case T3Kind::T3AnyType:
    case T3Kind::T3ModuleType:
    case T3Kind::T3PortType:
    case T3Kind::T3EnumType:
      return a == b;
    case T3Kind::T3ComponentType:
      return AreComponentsAssignCompatible(a, b);
    case T3Kind::T3RecordType:
    case T3Kind::T3SetType:
    case T3Kind::T3UnionType:
    case T3Kind::T3RecordOfType:
    case T3Kind::T3ArrayType:
    case T3Kind::T3SetOfType:
      break;
    default:
      return a->is<_T3BuiltinType>() && a->kind == b->kind;
  }
  if (a == b || under_comparison_.size() > kMaxDepth || !under_comparison_.insert(a).second) return true;
  const std::pair pair(a->number, b->number);
  const bool result = compatible_.count(pair) != 0 || Structures(a, b);
  under_comparison_.erase(a);
  if (result) compatible_.insert(pair);
  return result;
}

// Each module has an `address` of its own; what it stands for may be the same.
bool IsSameAddress(T3Tree_Node* a, T3Tree_Node* b) {
  T3Tree_Node* base = GetAddressBaseType(a);
  return base == GetAddressBaseType(b) || IsSameBuiltinType(base, GetAddressBaseType(b));
}

bool HasFailed(T3Tree_Node* decl) {
  return BaseTypeDef(decl)->is<T3ErrorType>();
}

// True when a component has a declaration like `decl`, as far as their types are known.
bool HasSuchMember(const T3Members& members, T3Tree_Node* decl) {
  T3Tree_Node* found = members.Find(decl->as<_T3Decl>()->name);
  if (found == decl) return true;
  return found != nullptr && found->kind == decl->kind &&
         (HasFailed(decl) || HasFailed(found) ||
          CheckStrictTypeCompatibility(AbsoluteTypeDef(decl), AbsoluteTypeDef(found)));
}
}  // namespace

bool IsCompatible(T3Tree_Node* a, T3Tree_Node* b) {
  return !T3Is<T3ErrorType>(a) && !T3Is<T3ErrorType>(b) && Comparison().Compatible(a, b);
}

bool CheckStrictTypeCompatibility(T3Tree_Node* a, T3Tree_Node* b) {
  // The element types of arrays of arrays are followed in a loop.
  for (;;) {
    if (a == b || IsSameBuiltinType(a, b)) return true;
    if (a == nullptr || b == nullptr || a->kind != b->kind) return false;
    if (a->is<T3Default>() || a->is<T3TimerType>()) return true;
    if (a->is<T3Address>()) return IsSameAddress(a, b);
    if (!a->is<T3ArrayType>()) return false;
    if (!BoundsAreIdentical(a->as<T3ArrayType>()->dimension, b->as<T3ArrayType>()->dimension)) return false;
    a = AbsoluteTypeDef(a->as<T3ArrayType>()->type);
    b = AbsoluteTypeDef(b->as<T3ArrayType>()->type);
  }
}

bool AreComponentsAssignCompatible(T3Tree_Node* a, T3Tree_Node* b) {
  if (a == b) return true;
  if (!T3Is<T3ComponentType>(a) || !T3Is<T3ComponentType>(b)) return false;
  const T3Members& needed = MembersOf(a->as<T3ComponentType>());
  const T3Members& offered = MembersOf(b->as<T3ComponentType>());
  if (offered.BeginWith(needed)) return true;
  const T3NodeList all = needed.All();
  return std::all_of(all.begin(), all.end(), [&](T3Tree_Node* decl) { return HasSuchMember(offered, decl); });
}

bool IsStringCompatible(T3Tree_Node* a, T3Tree_Node* b) {
  return !EvaluateStringType(a, b)->is<T3ErrorType>();
}

T3Tree_Node* EvaluateStringType(T3Tree_Node* a, T3Tree_Node* b) {
  if (T3Is<T3BitStringType>(a) && T3Is<T3BitStringType>(b)) return a;
  if (T3Is<T3OctetStringType>(a) && T3Is<T3OctetStringType>(b)) return a;
  if (T3Is<T3HexStringType>(a) && T3Is<T3HexStringType>(b)) return a;
  if (IsCharStringType(a) && IsCharStringType(b)) return gT3CharStringType;
  if (IsUniversalCharStringType(a) && IsUniversalCharStringType(b)) return gT3UniversalCharStringType;
  return gT3ErrorType;
}
