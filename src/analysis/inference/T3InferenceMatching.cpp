// Matching symbols and what may follow them: lists, ranges, patterns, sets, lengths.
#include "analysis/inference/T3InferenceParts.h"
#include "analysis/inference/T3PatternReferences.h"

namespace t3infer {
namespace {
// Each member has the candidates of the list; what the first leaves is the list's.
T3Inference InferValueList(T3Tree_Node* node, T3Tree_Node* values, T3Candidates& candidates, bool report) {
  bool failed = false;
  const T3Candidates all = candidates;
  for (auto* at : Items<T3ValueListItem>(values)) {
    T3Candidates own = all;
    failed = Infer(at->value, own, false, true) != T3Inference::Good || failed;
    if (at == values) candidates = own;
  }
  return Finish(node, candidates, failed, report);
}

// The bounds of a range of strings are single characters.
T3Tree_Node* BoundType(T3Tree_Node* base) {
  if (base->is<T3CharStringType>()) return gT3CharacterType;
  return base->is<T3UniversalCharStringType>() ? gT3UniversalCharacterType : base;
}

T3Tree_Node* StringType(T3Tree_Node* bound) {
  if (bound->is<T3CharacterType>()) return gT3CharStringType;
  return bound->is<T3UniversalCharacterType>() ? gT3UniversalCharStringType : bound;
}

T3Candidates BoundCandidates(const T3Candidates& candidates) {
  T3Candidates result;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* type = BoundType(GetAddressBaseType(candidates.base(i)));
    result.Add(type, type);
  }
  return result;
}

// A bound may be a constant that is declared as a string and holds one character.
bool FailsAsBound(T3Tree_Node* bound, T3Candidates characters, T3Candidates strings) {
  const T3Inference result = Infer(bound, characters, false, false);
  if (result != T3Inference::Unreported) return result != T3Inference::Good;
  return Infer(bound, strings, false, true) != T3Inference::Good;
}

void StrikeWhatBoundIsNot(T3Candidates& candidates, T3Tree_Node* bound) {
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* base = GetAddressBaseType(candidates.base(i));
    const bool fits = base->kind == bound->kind || base == gT3WildcardType ||
                      (base->is<T3CharStringType>() && bound->is<T3CharacterType>()) ||
                      (base->is<T3UniversalCharStringType>() && bound->is<T3UniversalCharacterType>());
    if (!fits) candidates.Strike(i, gT3ErrorType);
  }
}

// A range has the type of its lower bound; the lower bound `-infinity` leaves it to the upper one.
T3Inference InferRange(T3ValueRange* range, T3Candidates& candidates, bool report) {
  const bool open = range->lb->is<T3UnaryMinus>() && range->lb->as<T3UnaryMinus>()->arg->is<T3Infinity>();
  T3Tree_Node* leading = open ? range->ub : range->lb;
  T3Tree_Node* other = open ? range->lb : range->ub;
  bool failed = FailsAsBound(leading, BoundCandidates(candidates), OperandCandidates(candidates));
  T3Tree_Node* type = BoundType(BaseOf(leading));
  failed = FailsAsBound(other, {type}, {StringType(type)}) || failed;
  if (!failed) StrikeWhatBoundIsNot(candidates, type);
  const T3Inference result = Finish(range, candidates, failed, report);
  if (result == T3Inference::Good) SetResult(range, type);
  return result;
}

T3Inference InferSubOrSuperSet(_T3SuperOrSubSet* node, T3Candidates& candidates, bool report) {
  Invalidate(candidates, gT3NoType);
  T3Tree_Node* local = CheckTypeSet(candidates, {gT3AnySetOfType});
  T3Tree_Node* element = ElementType(BaseTypeDef(local));
  for (auto* at : Items<T3ValueListItem>(node->values))
    Fails(at->value, element->is<T3ErrorType>() ? T3Candidates{gT3ErrorType} : ElementCandidates(element));
  SetResult(node, local);
  if (!local->is<T3ErrorType>()) return T3Inference::Good;
  if (IsSilent(candidates)) return T3Inference::Reported;
  return report ? Report(node, candidates.CountValid()) : T3Inference::Unreported;
}

void InferBound(T3Tree_Node* bound) {
  if (auto* single = bound->try_as<T3SingleBound>()) Fails(single->ub, {gT3IntegerType});
  if (auto* range = bound->try_as<T3RangeBound>()) {
    Fails(range->lb, {gT3IntegerType});
    Fails(range->ub, {gT3IntegerType});
  }
}
}  // namespace

T3Inference InferLengthRange(T3LengthRange* node, T3Candidates& candidates, bool report) {
  Fails(node->lb, {gT3IntegerType});
  Fails(node->ub, {gT3IntegerType});
  const T3OwnTypes own{gT3CharStringType,  gT3UniversalCharStringType, gT3BitStringType, gT3HexStringType,
                       gT3OctetStringType, gT3AnyRecordOfType,         gT3AnySetOfType};
  return FinishSet(node, candidates, own, false, report);
}

T3Inference InferExtra(ExtraMatchingExpressions* node, T3Candidates& candidates, bool strict, bool report) {
  const T3Inference result = Infer(node->object, candidates, strict, report);
  SetResult(node, result == T3Inference::Good ? Check(candidates) : gT3ErrorType);
  if (auto* match = node->try_as<T3LengthMatch>()) InferBound(match->size);
  if (auto* match = node->try_as<T3IfPresentIfLengthMatch>()) InferBound(match->size);
  return result;
}

T3Inference InferMatching(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  switch (node->kind) {
    case T3Kind::T3Complement:
      return InferValueList(node, node->as<T3Complement>()->values, candidates, report);
    case T3Kind::T3ValueList:
      return InferValueList(node, node->as<T3ValueList>()->values, candidates, report);
    case T3Kind::T3ValueRange:
      return InferRange(node->as<T3ValueRange>(), candidates, report);
    case T3Kind::T3BitStringMatch:
      return FinishOne(node, candidates, gT3BitStringType, false, strict, report);
    case T3Kind::T3OctStringMatch:
      return FinishOne(node, candidates, gT3OctetStringType, false, strict, report);
    case T3Kind::T3HexStringMatch:
      return FinishOne(node, candidates, gT3HexStringType, false, strict, report);
    case T3Kind::T3CharStringMatch: {
      ResolvePatternReferences(node->as<T3CharStringMatch>()->pattern);
      const bool failed = Fails(node->as<T3CharStringMatch>()->pattern,
                                T3Candidates::Types({gT3CharStringType, gT3UniversalCharStringType}));
      return FinishSet(node, candidates, {gT3CharStringType, gT3UniversalCharStringType}, failed, report);
    }
    case T3Kind::T3SubSet:
    case T3Kind::T3SuperSet:
      return InferSubOrSuperSet(node->as<_T3SuperOrSubSet>(), candidates, report);
    default:
      Invalidate(candidates, gT3NoType);
      return Finish(node, candidates, false, report);
  }
}
}  // namespace t3infer
