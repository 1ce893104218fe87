// References: names, fields, elements and calls, with their indices and actual parameters.
#include <unordered_map>
#include <unordered_set>

#include "analysis/inference/T3InferenceParts.h"
#include "analysis/types/T3References.h"
#include "support/ModuleCaches.h"

namespace t3infer {
namespace {
// What is handed to something without a declaration, or to more than it takes, needs no type: the name or the
// number is at fault, and only the faults inside of the actual parameters are left to tell.
void InferActualPars(T3Parameterization* call) {
  T3Tree_Node* formal = call->attr().fpl;
  T3Tree_Node* def = call->attr().def;
  const bool known = !T3Is<T3NoDecl>(def) && !T3Is<T3ErrorType>(def);
  int index = 0;
  for (auto* at : Items<T3ActualPar>(call->apl)) {
    auto* actual = at;
    auto& attributes = actual->attr();
    attributes.index = index++;
    attributes.fpl = formal;
    const bool taken = known && T3Is<_T3FormalPar>(formal);
    const T3TemplateUse use = taken ? T3TemplateUse::ActualPar : T3TemplateUse::UnknownPar;
    T3Candidates candidates = Anything();
    if (T3Is<_T3TypedFormal>(formal)) {
      const T3TypeViews views = TypeViewsOf(formal);
      attributes.local_type_def = views.local;
      attributes.base_type_def = views.base;
      candidates = T3Candidates(attributes.local_type_def, attributes.base_type_def);
    }
    if (!actual->expression->is<T3NotUsedSymbol>()) InferAny(actual->expression, candidates, use);
    if (T3Is<_T3FormalPar>(formal)) formal = formal->as<_T3FormalPar>()->next;
  }
}

// The parts of one link of a reference: index and actual parameters.
void InferParts(T3Tree_Node* reference) {
  if (auto* subscription = reference->try_as<T3Subscription>()) Fails(subscription->index, {gT3IntegerType});
  if (auto* call = reference->try_as<T3Parameterization>()) InferActualPars(call);
  if (auto* qualifier = reference->try_as<T3ObjIdQualifier>())
    if (qualifier->value->is<_T3Expression>()) Fails(qualifier->value, {gT3ObjectIdentifierType});
}

// The enumerations that share a literal, in their order and for a quick look.
struct SharedLiteral {
  T3TypeSet* types = new T3TypeSet;
  std::unordered_set<const T3Tree_Node*> members;
};

// The literals met, by the numbers of their lists.
std::unordered_map<uint32_t, SharedLiteral>& g_literals = *new std::unordered_map<uint32_t, SharedLiteral>;

// A literal is looked up once for each scope, and used there more often.
SharedLiteral& SharedLiteralOf(T3Tree_Node* ambiguous) {
  const auto [literal, made] = g_literals.try_emplace(ambiguous->number);
  if (made)
    for (auto* at : Items<T3TypeItem>(ambiguous->as<T3AmbiguousType>()->list)) {
      literal->second.types->push_back(at->type);
      literal->second.members.insert(at->type);
    }
  return literal->second;
}

// Where only enumerations are asked for, a look tells whether each has the literal. False where more must be
// compared.
bool StrikeOtherEnumerations(const SharedLiteral& literal, T3Candidates& candidates) {
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && (!candidates.base(i)->is<T3EnumType>() || IsWildcardType(candidates.base(i))))
      return false;
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && literal.members.count(candidates.base(i)) == 0)
      candidates.Strike(i, gT3ErrorType);
  return true;
}

// An ambiguous literal: the context chooses among the enumerations that have it, or leaves it open for
// the other operand of a comparison.
T3Inference InferAmbiguous(_T3Reference* reference, T3Tree_Node* ambiguous, T3Candidates& candidates,
                           bool report) {
  const SharedLiteral& literal = SharedLiteralOf(ambiguous);
  const bool open = candidates.size() == 1 && candidates.base(0) == gT3WildcardType;
  if (!open || !IsName(reference))
    return StrikeOtherEnumerations(literal, candidates)
               ? Finish(reference, candidates, false, report)
               : FinishTypes(reference, candidates, *literal.types, false, report);
  SetResult(reference, gT3WildcardType);
  return T3Inference::Good;
}

}  // namespace

bool SharesLiteral(T3Tree_Node* expression, T3Tree_Node* type) {
  T3Tree_Node* def = IsName(expression) ? expression->as<_T3Reference>()->attr().def : nullptr;
  return T3Is<T3AmbiguousType>(def) && SharedLiteralOf(def).members.count(type) != 0;
}

namespace {
// A literal of an enumeration that may be of one type or of any is of any.
void PreferWildcard(T3Tree_Node* own, T3Candidates& candidates) {
  if (own->is<T3EnumType>() && candidates.size() == 2 && candidates.base(1) == gT3WildcardType)
    candidates.Strike(0, gT3ErrorType);
}

// An element of a character string is a string as well as a single character.
bool IsCharacterOfString(_T3Reference* reference) {
  auto* subscription = reference->try_as<T3Subscription>();
  if (subscription == nullptr) return false;
  T3Tree_Node* own = reference->attr().base_type_def;
  if (!own->is<T3CharStringType>() && !own->is<T3UniversalCharStringType>()) return false;
  return BaseTypeDef(LocalOf(subscription->base)) == own;
}

T3OwnTypes CharacterTypesOf(T3Tree_Node* string) {
  if (string->is<T3CharStringType>()) return {gT3CharStringType, gT3CharacterType};
  return {gT3UniversalCharStringType, gT3UniversalCharacterType};
}

// An index into what has no elements is a fault of its own. Where the list or the type of its elements has
// failed already, it is none.
bool IndexIntoNoList(T3Tree_Node* node) {
  auto* subscription = node->try_as<T3Subscription>();
  if (subscription == nullptr || !subscription->base->is<_T3Reference>()) return false;
  _T3Reference* reference = subscription;
  if (!T3Is<T3ErrorType>(reference->attr().base_type_def) || T3Is<T3NoDecl>(reference->attr().def))
    return false;
  T3Tree_Node* list = GetAddressBaseType(subscription->base->as<_T3Reference>()->attr().base_type_def);
  return !T3Is<T3ErrorType>(reference->attr().def) && !T3Is<T3ErrorType>(list) &&
         !T3Is<_T3HomogeneousType>(list);
}
}  // namespace

T3Inference InferReference(_T3Reference* reference, T3Candidates& candidates, bool strict, bool report) {
  ResolveReference(reference);
  T3Tree_Node* at_fault = nullptr;
  if (reference->is<_T3Qualification>())
    for (T3Tree_Node* at : T3ReferenceChain(reference)) {
      InferParts(at);
      if (IndexIntoNoList(at)) at_fault = at;
      if (at != reference && at->is<_T3Reference>())
        SetResult(at, at->as<_T3Reference>()->attr().local_type_def);
    }
  const auto& own = reference->attr();
  if (T3Is<T3ErrorType>(own.base_type_def)) {
    SetResult(reference, gT3ErrorType);
    if (at_fault == nullptr) return T3Inference::Reported;
    return report || at_fault != reference ? Report(at_fault, 0) : T3Inference::Unreported;
  }
  if (T3Is<T3AmbiguousType>(own.local_type_def))
    return InferAmbiguous(reference, own.local_type_def, candidates, report);
  if (IsCharacterOfString(reference))
    return FinishSet(reference, candidates, CharacterTypesOf(own.base_type_def), false, report);
  PreferWildcard(own.local_type_def, candidates);
  Exclude(candidates, own.local_type_def, own.base_type_def, true, strict);
  return Finish(reference, candidates, false, report);
}
}  // namespace t3infer

namespace {
const ModuleCache kCache{[] { t3infer::g_literals.clear(); }};
}  // namespace
