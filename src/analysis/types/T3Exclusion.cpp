// Candidates against the own type of an expression: what is struck out, and what the rest decides.
#include <algorithm>
#include <iterator>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"

namespace {
// The four character kinds, the one that wins first.
constexpr T3Kind kStringKinds[] = {T3Kind::T3CharStringType, T3Kind::T3CharacterType,
                                   T3Kind::T3UniversalCharStringType, T3Kind::T3UniversalCharacterType};

bool IsCharacterKind(const T3Tree_Node* type) {
  for (const T3Kind kind : kStringKinds)
    if (type->kind == kind) return true;
  return false;
}

bool IsLiteralOne(T3Tree_Node* bound) {
  const auto* literal = bound->try_as<T3IntLiteral>();
  return literal != nullptr && StringM::StGetString(literal->value) == "1";
}

// A charstring that holds exactly one character takes a char.
bool IsCharStringOfLengthOne(T3Tree_Node* local) {
  if (T3Is<_T3ImportDecl>(local)) local = LocalTypeDef(local);
  if (!T3Is<T3SubType>(local)) return false;
  auto* range = local->as<T3SubType>()->constraint->try_as<T3LengthRange>();
  return range != nullptr && IsLiteralOne(range->lb) &&
         (range->ub->is<T3NoExpression>() || IsLiteralOne(range->ub));
}

bool CharacterException(T3Tree_Node* c1, T3Tree_Node* c2, T3Tree_Node* t1, T3Tree_Node* t2) {
  return t1->is<T3CharacterType>() && t2->is<T3CharacterType>() && c2->is<T3CharStringType>() &&
         IsCharStringOfLengthOne(c1);
}

bool StrictlyEqual(T3Tree_Node* c1, T3Tree_Node* t1) {
  if (c1 == t1) return true;
  T3Tree_Node* a = AbsoluteTypeDef(c1);
  T3Tree_Node* b = AbsoluteTypeDef(t1);
  if (a->is<T3Address>() && b->is<T3Address>()) return CheckStrictTypeCompatibility(a, b);
  return a == b || IsSameBuiltinType(a, b);
}

// True when the candidate (c1, c2) may stay beside the own type (t1, t2), which is no wildcard's case.
bool Keeps(T3Tree_Node* c1, T3Tree_Node* c2, T3Tree_Node* t1, T3Tree_Node* t2, bool strict) {
  const bool generic = IsWildcardType(t2);
  if (IsWildcardType(c2) && !generic) return false;
  if (generic && !IsWildcardType(c2) && ExpandWildcardType(t2, c2)) return true;
  if (strict) return StrictlyEqual(c1, t1);
  return c2 == t2 || IsCompatible(c2, t2);
}

bool OwnTypeMatches(T3Tree_Node* c2, T3Tree_Node* base) {
  return c2 == base || ExpandWildcardType(c2, base) || ExpandWildcardType(base, c2) ||
         IsSameBuiltinType(c2, base) || IsCompatible(c2, base);
}

// How early a kind wins among the character kinds; their number for any other kind.
size_t RankOfString(const T3Tree_Node* type) {
  return static_cast<size_t>(std::find(std::begin(kStringKinds), std::end(kStringKinds), type->kind) -
                             std::begin(kStringKinds));
}

// Several own types may match only where all are character kinds: then the first of these wins.
void ExcludeOne(T3Candidates& candidates, size_t i, std::span<T3Tree_Node* const> locals,
                std::span<T3Tree_Node* const> bases) {
  size_t matching = 0;
  size_t chosen = 0;
  bool all_strings = true;
  for (size_t k = 0; k < bases.size(); ++k) {
    if (!OwnTypeMatches(candidates.base(i), bases[k])) continue;
    if (++matching == 1 || RankOfString(bases[k]) < RankOfString(bases[chosen])) chosen = k;
    all_strings = all_strings && IsCharacterKind(bases[k]);
  }
  if (matching == 0 || (matching > 1 && !all_strings)) {
    candidates.Strike(i, gT3ErrorType);
    return;
  }
  const bool decided = matching > 1 || IsWildcardType(candidates.base(i));
  if (decided && !IsWildcardType(bases[chosen])) candidates.Set(i, locals[chosen], bases[chosen]);
}
}  // namespace

bool ExpandWildcardType(const T3Tree_Node* wildcard, const T3Tree_Node* type) {
  if (!IsWildcardType(wildcard)) return false;
  if (wildcard == gT3WildcardType) return true;
  if (wildcard == gT3AnyModuleType) return type->is<T3Module>();
  return wildcard->kind == type->kind;
}

void Exclude(T3Candidates& candidates, T3Tree_Node* local, T3Tree_Node* base, bool update, bool strict) {
  // A wildcard fits many, and a single character may be a string.
  if (strict && !IsWildcardType(base) && !local->is<T3CharacterType>())
    candidates.KeepWhatMayFit(AbsoluteTypeDef(local));
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* c1 = candidates.local(i);
    T3Tree_Node* c2 = candidates.base(i);
    T3Tree_Node* t1 = local;
    T3Tree_Node* t2 = base;
    if (c2->is<T3ErrorType>()) continue;
    if (c2 == t2 && !strict && !IsWildcardType(c2)) continue;
    // Where anything will do, an address stays one, so that it may be compared with `null`.
    if (!strict && c2 != gT3WildcardType && c2->is<T3Address>() != t2->is<T3Address>()) {
      if (IsRedefinedAddress(c2)) {
        c1 = LocalBehindAddress(c2);
        c2 = GetAddressBaseType(c2);
        if (update) candidates.Set(i, c1, c2);
      } else if (IsRedefinedAddress(t2)) {
        t1 = t2 = GetAddressBaseType(t2);
      }
    }
    if (ExpandWildcardType(c2, t2))
      candidates.Set(i, t1, t2);
    else if (!Keeps(c1, c2, t1, t2, strict) && !CharacterException(c1, c2, t1, t2))
      candidates.Strike(i, gT3ErrorType);
  }
}

void ExcludeTypeSet(T3Candidates& candidates, std::span<T3Tree_Node* const> locals,
                    std::span<T3Tree_Node* const> bases) {
  bool own_address = false;
  for (const T3Tree_Node* base : bases) own_address = own_address || base->is<T3Address>();
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i) || candidates.base(i)->is<T3ErrorType>()) continue;
    if (!own_address && IsRedefinedAddress(candidates.base(i))) {
      T3Tree_Node* address = candidates.base(i);
      candidates.Set(i, LocalBehindAddress(address), GetAddressBaseType(address));
    }
    ExcludeOne(candidates, i, locals, bases);
  }
}

void Invalidate(T3Candidates& candidates, T3Tree_Node* type) {
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && candidates.base(i) == type) candidates.Strike(i, gT3ErrorType);
}

T3Tree_Node* Check(const T3Candidates& candidates) {
  if (candidates.size() == 1) return candidates.valid(0) ? candidates.local(0) : gT3ErrorType;
  T3Tree_Node* only = nullptr;
  size_t count = 0;
  bool all_strings = true;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    ++count;
    only = candidates.local(i);
    all_strings = all_strings && IsCharacterKind(candidates.base(i));
  }
  if (count == 1) return only;
  if (count == 0 || !all_strings) return gT3ErrorType;
  for (const T3Kind kind : kStringKinds)
    for (size_t i = 0; i < candidates.size(); ++i)
      if (candidates.valid(i) && candidates.base(i)->kind == kind) return candidates.local(i);
  return gT3ErrorType;
}

T3Tree_Node* CheckTypeSet(const T3Candidates& candidates, const T3TypeSet& allowed) {
  if (candidates.CountValid() != 1) return gT3ErrorType;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    int covered = 0;
    for (const T3Tree_Node* type : allowed)
      covered += ExpandWildcardType(type, candidates.base(i)) || type == candidates.base(i) ? 1 : 0;
    return covered == 1 ? candidates.local(i) : gT3ErrorType;
  }
  return gT3ErrorType;
}
