// Inference of expressions. A context hands candidates down; each form strikes out those that its own type
// excludes, infers its children, and takes what is left. Chains of binary operators and of qualifications
// are walked in loops; recursion follows nesting only. The inference of an expression may run again: a
// compound value tries each of several candidates without reporting before it settles on one.
#include <vector>

#include "analysis/T3Names.h"
#include "analysis/T3References.h"
#include "analysis/T3Types.h"
#include "driver/T3Error.h"
#include "driver/T3UTF8String.h"

namespace {
int g_quiet = 0;
long g_failures = 0;

T3Inference Infer(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferDefinition(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                            T3TemplateUse use);
// An expression, or a template definition where one may stand in its place.
T3Inference InferAny(T3Tree_Node* node, T3Candidates& candidates, T3TemplateUse use = T3TemplateUse::Other);

bool Fails(T3Tree_Node* node, T3Candidates candidates) {
  return InferAny(node, candidates) != T3Inference::Good;
}

T3Candidates Anything() {
  return {gT3WildcardType};
}

void SetResult(T3Tree_Node* expression, T3Tree_Node* local) {
  auto& attributes = expression->as<_T3Expression>()->attr();
  attributes.pass1 = true;
  attributes.pass2 = true;
  attributes.expression_local_type = local;
  attributes.expression_absolute_type = AbsoluteTypeDef(local);
  attributes.expression_base_type = BaseTypeDef(local);
}

T3Inference Report(T3Tree_Node* node, size_t valid, T3TemplateUse use = T3TemplateUse::Other) {
  ++g_failures;
  if (g_quiet == 0) ReportTypeError(node, valid, use);
  return T3Inference::Reported;
}

// A context whose own fault is known makes what stands in it silent.
bool IsSilent(const T3Candidates& candidates) {
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && candidates.base(i)->is<T3ErrorType>()) return true;
  return false;
}

// What is left decides; a failure is the node's own unless a child failed before.
T3Inference Finish(T3Tree_Node* node, const T3Candidates& candidates, bool child_failed, bool report) {
  T3Tree_Node* local = Check(candidates);
  SetResult(node, local);
  const bool failed = local->is<T3ErrorType>();
  const bool silent = child_failed || IsSilent(candidates);
  node->as<_T3Expression>()->attr().report_type_error = report && failed && !silent;
  if (!failed) return T3Inference::Good;
  if (silent) return T3Inference::Reported;
  return report ? Report(node, candidates.CountValid()) : T3Inference::Unreported;
}

T3Inference FinishOne(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* own, bool child_failed,
                      bool strict, bool report) {
  Exclude(candidates, own, own, true, strict);
  return Finish(node, candidates, child_failed && Check(candidates)->is<T3ErrorType>(), report);
}

T3Inference FinishSet(T3Tree_Node* node, T3Candidates& candidates, const T3TypeSet& own, bool child_failed,
                      bool report) {
  ExcludeTypeSet(candidates, own, own);
  return Finish(node, candidates, child_failed && Check(candidates)->is<T3ErrorType>(), report);
}

// The own type is that of a part; nothing is known when the part failed.
T3Inference FinishAsPart(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* part, bool strict,
                         bool report) {
  if (part->is<T3ErrorType>()) {
    SetResult(node, gT3ErrorType);
    return T3Inference::Reported;
  }
  return FinishOne(node, candidates, part, false, strict, report);
}

T3Tree_Node* LocalOf(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) return definition->attr().expression_local_type;
  return node->as<_T3Expression>()->attr().expression_local_type;
}

T3Tree_Node* BaseOf(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) return definition->attr().expression_base_type;
  return node->as<_T3Expression>()->attr().expression_base_type;
}

// What an operand may be: the candidates of the whole without their subtypes, which bind the result only.
T3Candidates OperandCandidates(const T3Candidates& candidates) {
  T3Candidates result;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    bool known = false;
    for (size_t k = 0; k < result.size(); ++k) known = known || result.base(k) == candidates.base(i);
    if (!known) result.Add(candidates.base(i), candidates.base(i));
  }
  return result;
}

// ---- Binary operators ----

T3Candidates LeftCandidates(T3Tree_Node* node, const T3Candidates& candidates) {
  if (node->is<_T3BinaryLogicExpression>()) return {gT3BooleanType};
  if (node->is<_T3Relational>()) return Anything();
  return OperandCandidates(candidates);
}

bool FindInSavedTypes(T3Tree_Node* left, T3Tree_Node* type) {
  auto* identifier = left->try_as<T3Identifier>();
  if (identifier == nullptr || identifier->cold().saved_types == nullptr) return false;
  T3Tree_Node* absolute = AbsoluteTypeDef(type);
  for (T3Tree_Node* saved : *identifier->cold().saved_types)
    if (saved == absolute || saved == BaseTypeDef(type)) return true;
  return false;
}

// An undecided left operand takes the type of the right one, where that is one of its own.
void DecideLeft(T3Tree_Node* left, T3Tree_Node* right) {
  if (BaseOf(left) != gT3WildcardType || BaseOf(right)->is<T3ErrorType>()) return;
  if (FindInSavedTypes(left, LocalOf(right))) return SetResult(left, LocalOf(right));
  SetResult(left, gT3ErrorType);
  Report(left, 2);
}

T3Tree_Node* OperatorType(_T3BinaryExpression* node) {
  if (node->is<_T3BinaryLogicExpression>() || node->is<_T3Relational>()) return gT3BooleanType;
  if (!node->is<T3Concatenate>()) return BaseOf(node->left);
  T3Tree_Node* type = EvaluateStringType(BaseOf(node->left), BaseOf(node->right));
  return type->is<T3ErrorType>() ? BaseOf(node->left) : type;
}

struct BinaryFrame {
  _T3BinaryExpression* node;
  T3Candidates candidates;
};

void InferRight(_T3BinaryExpression* node) {
  T3Tree_Node* left = BaseOf(node->left);
  Fails(node->right,
        node->is<_T3BinaryLogicExpression>() ? T3Candidates{gT3BooleanType} : T3Candidates{left});
  DecideLeft(node->left, node->right);
  node->attr().last_pass = true;
}

T3Inference InferBinary(_T3BinaryExpression* outermost, T3Candidates& candidates, bool strict, bool report) {
  std::vector<BinaryFrame> spine;
  spine.push_back({outermost, candidates});
  for (;;) {
    T3Candidates left = LeftCandidates(spine.back().node, spine.back().candidates);
    T3Tree_Node* node = spine.back().node->left;
    if (!node->is<_T3BinaryExpression>()) {
      Fails(node, left);
      break;
    }
    spine.push_back({node->as<_T3BinaryExpression>(), left});
  }
  for (; spine.size() > 1; spine.pop_back()) {
    InferRight(spine.back().node);
    FinishAsPart(spine.back().node, spine.back().candidates, OperatorType(spine.back().node), false, true);
  }
  InferRight(outermost);
  return FinishAsPart(outermost, candidates, OperatorType(outermost), strict, report);
}

// ---- References ----

void InferActualPars(T3Parameterization* call) {
  T3Tree_Node* formal = call->attr().fpl;
  int index = 0;
  for (T3Tree_Node* at = call->apl; at->is<T3ActualPar>(); at = at->as<T3ActualPar>()->next) {
    auto* actual = at->as<T3ActualPar>();
    auto& attributes = actual->attr();
    attributes.index = index++;
    attributes.fpl = formal;
    T3Candidates candidates = Anything();
    if (T3Is<_T3TypedFormal>(formal)) {
      attributes.local_type_def = LocalTypeDef(formal);
      attributes.absolute_type_def = AbsoluteTypeDef(formal);
      attributes.base_type_def = BaseTypeDef(formal);
      candidates = T3Candidates(attributes.local_type_def, attributes.base_type_def);
    }
    if (!actual->expression->is<T3NotUsedSymbol>())
      InferAny(actual->expression, candidates, T3TemplateUse::ActualPar);
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

// An ambiguous literal: the context chooses among the enumerations that have it, or leaves it open for
// the other operand of a comparison.
T3Inference InferAmbiguous(_T3Reference* reference, T3Tree_Node* ambiguous, T3Candidates& candidates,
                           bool report) {
  T3TypeSet types;
  for (T3Tree_Node* at = ambiguous->as<T3AmbiguousType>()->list; at->is<T3TypeItem>();
       at = at->as<T3TypeItem>()->next)
    types.push_back(at->as<T3TypeItem>()->type);
  const bool open = candidates.size() == 1 && candidates.base(0) == gT3WildcardType;
  if (!open || !reference->is<T3Identifier>()) return FinishSet(reference, candidates, types, false, report);
  auto& saved = reference->as<T3Identifier>()->cold().saved_types;
  if (saved == nullptr) saved = new T3TypeSet(types);
  SetResult(reference, gT3WildcardType);
  return T3Inference::Good;
}

// A literal of an enumeration that may be of one type or of any is of any.
void PreferWildcard(T3Tree_Node* own, T3Candidates& candidates) {
  if (own->is<T3EnumType>() && candidates.size() == 2 && candidates.base(1) == gT3WildcardType)
    candidates.Strike(0, gT3ErrorType);
}

// An index into what has no elements is a fault of its own. Where the list or the type of its elements has
// failed already, it is none.
bool IndexIntoNoList(_T3Reference* reference) {
  auto* subscription = reference->try_as<T3Subscription>();
  if (subscription == nullptr || T3Is<T3NoDecl>(reference->attr().def)) return false;
  T3Tree_Node* list = GetAddressBaseType(subscription->base->as<_T3Reference>()->attr().base_type_def);
  return !T3Is<T3ErrorType>(reference->attr().def) && !T3Is<T3ErrorType>(list) &&
         !T3Is<_T3HomogeneousType>(list);
}

T3Inference InferReference(_T3Reference* reference, T3Candidates& candidates, bool strict, bool report) {
  ResolveReference(reference);
  if (reference->is<_T3Qualification>())
    for (T3Tree_Node* at : ReferenceChain(reference)) {
      InferParts(at);
      if (at != reference && at->is<_T3Reference>())
        SetResult(at, at->as<_T3Reference>()->attr().local_type_def);
    }
  const auto& own = reference->attr();
  if (T3Is<T3ErrorType>(own.local_type_def)) {
    SetResult(reference, gT3ErrorType);
    if (!IndexIntoNoList(reference)) return T3Inference::Reported;
    return report ? Report(reference, 0) : T3Inference::Unreported;
  }
  if (T3Is<T3AmbiguousType>(own.local_type_def))
    return InferAmbiguous(reference, own.local_type_def, candidates, report);
  if (reference->is<T3Subscription>() && own.base_type_def->is<T3CharStringType>() &&
      LocalOf(reference->as<T3Subscription>()->base) == own.local_type_def)
    return FinishSet(reference, candidates, {gT3CharStringType, gT3CharacterType}, false, report);
  PreferWildcard(own.local_type_def, candidates);
  Exclude(candidates, own.local_type_def, own.base_type_def, true, strict);
  return Finish(reference, candidates, false, report);
}

// ---- Compound values ----

enum class Notation { Empty, List, Assign, Index };

Notation NotationOf(T3Tree_Node* values) {
  if (!values->is<T3FieldValue>()) return Notation::Empty;
  T3Tree_Node* field = values->as<T3FieldValue>()->field;
  if (field->is<T3FieldName>()) return Notation::Assign;
  return field->is<T3FieldIndex>() ? Notation::Index : Notation::List;
}

bool HasMembers(T3Tree_Node* base) {
  return base->is<_T3StructuredType>() || base->is<T3SignatureType>();
}

// Whether a type can have a value of this notation at all.
bool NotationFits(Notation notation, T3Tree_Node* base) {
  switch (notation) {
    case Notation::Empty:
      return HasMembers(base) || base->is<_T3HomogeneousType>();
    case Notation::List:
      return (HasMembers(base) && !base->is<T3UnionType>()) || base->is<_T3HomogeneousType>();
    case Notation::Assign:
      return HasMembers(base) || base->is<T3AnyType>();
    case Notation::Index:
      return base->is<_T3HomogeneousType>();
  }
  return false;
}

// What the elements of an array, `record of` or `set of` may be; timers are set by their durations.
T3Candidates ElementCandidates(T3Tree_Node* type) {
  if (IsTimer(type)) return {gT3FloatType};
  return T3Candidates(LocalTypeDef(type), BaseTypeDef(type));
}

// Goes along a list of fields or parameters with a value list: the next member is tried first, so that
// values in the declared order cost one walk.
class MemberCursor {
 public:
  explicit MemberCursor(T3Tree_Node* base) : base_(base) {
    if (auto* type = base->try_as<_T3StructuredType>()) next_ = type->body;
    if (auto* type = base->try_as<T3SignatureType>()) next_ = type->fpl;
  }
  // The next member, or gT3ErrorType behind the last.
  T3Tree_Node* Next() {
    T3Tree_Node* member = next_;
    if (!Step()) return gT3ErrorType;
    return member;
  }
  T3Tree_Node* Named(tIdent name) {
    if (Name() == name) return Next();
    T3Tree_Node* found = FindName(base_, name, nullptr);
    if (!found->is<T3ErrorType>()) {
      next_ = found;
      Step();
    }
    return found;
  }

 private:
  tIdent Name() const {
    if (T3Is<T3FieldType>(next_)) return next_->as<T3FieldType>()->name;
    if (T3Is<_T3FormalPar>(next_)) return next_->as<_T3FormalPar>()->name;
    return NoIdent;
  }
  bool Step() {
    if (T3Is<T3FieldType>(next_))
      next_ = next_->as<T3FieldType>()->next;
    else if (T3Is<_T3FormalPar>(next_))
      next_ = next_->as<_T3FormalPar>()->next;
    else
      return false;
    return true;
  }
  T3Tree_Node* base_;
  T3Tree_Node* next_ = nullptr;
};

// The member of `anytype` that a field name stands for.
T3Tree_Node* AnyTypeMember(T3FieldValue* value) {
  auto* name = value->field->as<T3FieldName>();
  if (value->place == nullptr || !T3Is<T3MapEnv>(value->place->env)) return gT3ErrorType;
  tIdent module = 0;
  if (T3Is<T3Identifier>(name->module)) module = name->module->as<T3Identifier>()->id;
  if (module == value->place->vexa_module_name) module = 0;
  T3Tree_Node* def = NewIdentify1(value->place->env, name->name, module, name->position, false);
  if (T3Is<T3TypeDecl>(BehindImport(def))) return def;
  if (g_quiet == 0)
    vexa_filtered_error(ERR_anytype_unknown_field, name->position, value->place->vexa_module_name,
                        gIdents.MakeIdent("anytype"), module == 0 ? value->place->vexa_module_name : module,
                        name->name);
  ++g_failures;
  return gT3ErrorType;
}

// The member that one value of a compound is for; gT3ErrorType where there is none, which is reported.
T3Tree_Node* MemberOf(T3FieldValue* value, T3Tree_Node* base, MemberCursor& cursor) {
  if (base->is<_T3HomogeneousType>()) return ElementType(base);
  auto* name = value->field->try_as<T3FieldName>();
  if (base->is<T3AnyType>()) return name == nullptr ? gT3ErrorType : AnyTypeMember(value);
  if (name == nullptr) {
    T3Tree_Node* member = cursor.Next();
    if (member->is<T3ErrorType>()) Report(value->value, 0);
    return member;
  }
  T3Tree_Node* member = cursor.Named(name->name);
  if (!member->is<T3ErrorType>()) return member;
  ++g_failures;
  if (g_quiet == 0) vexa_filtered_error(ERR_type_unknown_field, name->position, name->name);
  return member;
}

void InferFieldValues(T3Tree_Node* values, T3Tree_Node* base) {
  MemberCursor cursor(base);
  int index = 0;
  for (; values->is<T3FieldValue>(); values = values->as<T3FieldValue>()->next) {
    auto* value = values->as<T3FieldValue>();
    if (auto* place = value->field->try_as<T3FieldIndex>()) Fails(place->index, {gT3IntegerType});
    T3Tree_Node* member = MemberOf(value, base, cursor);
    auto& attributes = value->attr();
    attributes.index = index++;
    attributes.def = member;
    attributes.vexa_owner_type = base;
    Fails(value->value, member->is<T3ErrorType>() ? T3Candidates{gT3ErrorType} : ElementCandidates(member));
  }
}

// Without a type for the whole, the values are inferred for the names in them only.
void InferFieldValuesBlindly(T3Tree_Node* values) {
  for (; values->is<T3FieldValue>(); values = values->as<T3FieldValue>()->next)
    Fails(values->as<T3FieldValue>()->value, {gT3ErrorType});
}

bool ValuesFit(T3Tree_Node* values, T3Tree_Node* base) {
  ++g_quiet;
  const long before = g_failures;
  InferFieldValues(values, base);
  --g_quiet;
  return g_failures == before;
}

void TryCandidates(T3CompoundValue* compound, T3Candidates& candidates) {
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i) || candidates.base(i)->is<T3ErrorType>()) continue;
    if (!NotationFits(NotationOf(compound->value), GetAddressBaseType(candidates.base(i))))
      candidates.Strike(i, gT3ErrorType);
  }
  if (candidates.CountValid() < 2) return;
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && !ValuesFit(compound->value, GetAddressBaseType(candidates.base(i))))
      candidates.Strike(i, gT3ErrorType);
}

int LengthOf(T3Tree_Node* values) {
  int length = 0;
  for (; values->is<T3FieldValue>(); values = values->as<T3FieldValue>()->next) ++length;
  return length;
}

T3Inference InferCompound(T3CompoundValue* compound, T3Candidates& candidates, bool report) {
  TryCandidates(compound, candidates);
  const Notation notation = NotationOf(compound->value);
  auto& attributes = compound->attr();
  attributes.vexa_list_notation = notation == Notation::List;
  attributes.vexa_assign_notation = notation == Notation::Assign;
  attributes.length = LengthOf(compound->value);
  T3Tree_Node* base = GetAddressBaseType(BaseTypeDef(Check(candidates)));
  if (base->is<T3ErrorType>())
    InferFieldValuesBlindly(compound->value);
  else
    InferFieldValues(compound->value, base);
  return Finish(compound, candidates, false, report);
}

// ---- Matching ----

// Each member has the candidates of the list; what the first leaves is the list's.
T3Inference InferValueList(T3Tree_Node* node, T3Tree_Node* values, T3Candidates& candidates, bool strict,
                           bool report) {
  bool failed = false;
  const T3Candidates all = candidates;
  for (T3Tree_Node* at = values; at->is<T3ValueListItem>(); at = at->as<T3ValueListItem>()->next) {
    T3Candidates own = all;
    failed =
        Infer(at->as<T3ValueListItem>()->value, own, strict && at == values, true) != T3Inference::Good ||
        failed;
    if (at == values) candidates = own;
  }
  return Finish(node, candidates, failed, report);
}

// The bounds of a range of strings are single characters.
T3Candidates BoundCandidates(const T3Candidates& candidates) {
  T3Candidates result;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* base = candidates.base(i);
    if (base->is<T3CharStringType>()) base = gT3CharacterType;
    if (base->is<T3UniversalCharStringType>()) base = gT3UniversalCharacterType;
    result.Add(base, base);
  }
  return result;
}

void StrikeWhatBoundIsNot(T3Candidates& candidates, T3Tree_Node* bound) {
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* base = candidates.base(i);
    const bool fits = base->kind == bound->kind || base == gT3WildcardType ||
                      (base->is<T3CharStringType>() && bound->is<T3CharacterType>()) ||
                      (base->is<T3UniversalCharStringType>() && bound->is<T3UniversalCharacterType>());
    if (!fits) candidates.Strike(i, gT3ErrorType);
  }
}

// A range has the type of its lower bound; the lower bound `-infinity` leaves it to the upper one.
T3Inference InferRange(T3ValueRange* range, T3Candidates& candidates, bool report) {
  T3Candidates bounds = BoundCandidates(candidates);
  T3Candidates lower = bounds;
  const bool open = range->lb->is<T3UnaryMinus>() && range->lb->as<T3UnaryMinus>()->arg->is<T3Infinity>();
  T3Tree_Node* leading = open ? range->ub : range->lb;
  T3Tree_Node* other = open ? range->lb : range->ub;
  bool failed = Infer(leading, lower, false, true) != T3Inference::Good;
  T3Tree_Node* type = BaseOf(leading);
  failed = Fails(other, {type}) || failed;
  if (!failed) StrikeWhatBoundIsNot(candidates, type);
  const T3Inference result = Finish(range, candidates, failed, report);
  if (result == T3Inference::Good) SetResult(range, type);
  return result;
}

T3Inference InferSubOrSuperSet(_T3SuperOrSubSet* node, T3Candidates& candidates, bool report) {
  Invalidate(candidates, gT3NoType);
  T3Tree_Node* local = CheckTypeSet(candidates, {gT3AnySetOfType});
  T3Tree_Node* element = ElementType(BaseTypeDef(local));
  for (T3Tree_Node* at = node->values; at->is<T3ValueListItem>(); at = at->as<T3ValueListItem>()->next)
    Fails(at->as<T3ValueListItem>()->value,
          element->is<T3ErrorType>() ? T3Candidates{gT3ErrorType} : ElementCandidates(element));
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
      return InferValueList(node, node->as<T3Complement>()->values, candidates, strict, report);
    case T3Kind::T3ValueList:
      return InferValueList(node, node->as<T3ValueList>()->values, candidates, strict, report);
    case T3Kind::T3ValueRange:
      return InferRange(node->as<T3ValueRange>(), candidates, report);
    case T3Kind::T3BitStringMatch:
      return FinishOne(node, candidates, gT3BitStringType, false, strict, report);
    case T3Kind::T3OctStringMatch:
      return FinishOne(node, candidates, gT3OctetStringType, false, strict, report);
    case T3Kind::T3HexStringMatch:
      return FinishOne(node, candidates, gT3HexStringType, false, strict, report);
    case T3Kind::T3CharStringMatch: {
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

// ---- Literals ----

T3TypeSet CharStringTypes(T3CharStringLiteral* literal) {
  auto& attributes = literal->attr();
  if (!attributes.IsEvaluated(T3CharStringLiteral_Attributes::char_string_kind_bit)) {
    attributes.char_string_kind = DetermineCharStringKind(literal->value);
    attributes.SetEvaluated(T3CharStringLiteral_Attributes::char_string_kind_bit);
  }
  switch (attributes.char_string_kind) {
    case kind_ascii_character:
      return {gT3CharacterType, gT3UniversalCharacterType, gT3CharStringType, gT3UniversalCharStringType};
    case kind_ascii_string:
      return {gT3CharStringType, gT3UniversalCharStringType};
    case kind_character:
      return {gT3UniversalCharacterType, gT3UniversalCharStringType};
    case kind_string:
      return {gT3UniversalCharStringType};
    default:  // malformed text has its own message
      return {gT3CharStringType, gT3UniversalCharStringType};
  }
}

// Items of an object identifier: numbers, named numbers, and references to values.
void InferObjIdItems(T3Tree_Node* items) {
  for (; items->is<T3ObjIdItem>(); items = items->as<T3ObjIdItem>()->next) {
    T3Tree_Node* item = items->as<T3ObjIdItem>()->obj_id_item;
    if (item->is<T3Parameterization>()) continue;
    if (item->is<_T3Expression>())
      Fails(item, T3Candidates::Types({gT3IntegerType, gT3ObjectIdentifierType}));
  }
}

void InferQuadruple(T3UnivCharLiteral* literal) {
  for (T3Tree_Node* part : {literal->group, literal->plane, literal->row, literal->cell})
    Fails(part, {gT3IntegerType});
}

T3Tree_Node* LiteralType(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3IntLiteral:
      return gT3IntegerType;
    case T3Kind::T3FloatLiteral:
    case T3Kind::T3NoWait:
      return gT3FloatType;
    case T3Kind::T3BooleanLiteral:
      return gT3BooleanType;
    case T3Kind::T3VerdictLiteral:
      return gT3VerdictType;
    case T3Kind::T3ObjectIdentifierLiteral:
      return gT3ObjectIdentifierType;
    case T3Kind::T3UnivCharStringLiteral:
      return gT3UniversalCharStringType;
    case T3Kind::T3BitStringLiteral:
      return gT3BitStringType;
    case T3Kind::T3OctStringLiteral:
      return gT3OctetStringType;
    case T3Kind::T3HexStringLiteral:
      return gT3HexStringType;
    default:
      return nullptr;
  }
}

T3Inference InferLiteral(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  if (auto* literal = node->try_as<T3ObjectIdentifierLiteral>()) InferObjIdItems(literal->value);
  if (T3Tree_Node* type = LiteralType(node)) return FinishOne(node, candidates, type, false, strict, report);
  switch (node->kind) {
    case T3Kind::T3CharStringLiteral:
      return FinishSet(node, candidates, CharStringTypes(node->as<T3CharStringLiteral>()), false, report);
    case T3Kind::T3UnivCharLiteral:
      InferQuadruple(node->as<T3UnivCharLiteral>());
      return FinishSet(node, candidates, {gT3UniversalCharacterType, gT3UniversalCharStringType}, false,
                       report);
    case T3Kind::T3Infinity:
      return FinishSet(node, candidates, {gT3IntegerType, gT3FloatType}, false, report);
    case T3Kind::T3Null:
      return FinishSet(node, candidates, {gT3DefaultType, gT3AnyComponentType, gT3AnyAddressType}, false,
                       report);
    default:  // `omit` and `-` are of any type
      return Finish(node, candidates, false, report);
  }
}

// ---- Predefined functions and operations ----

T3TypeSet CharacterTypes() {
  return {gT3CharStringType, gT3CharacterType};
}
T3TypeSet AllCharacterTypes() {
  return {gT3CharStringType, gT3CharacterType, gT3UniversalCharStringType, gT3UniversalCharacterType};
}

struct Conversion {
  T3TypeSet argument;
  T3Tree_Node* result;
};

// Argument and result of the functions of one value; the result is null where the edition decides.
Conversion ConversionOf(T3Kind kind) {
  switch (kind) {
    case T3Kind::T3Int2Bit:
      return {{gT3IntegerType}, gT3BitStringType};
    case T3Kind::T3Int2Hex:
      return {{gT3IntegerType}, gT3HexStringType};
    case T3Kind::T3Int2Oct:
      return {{gT3IntegerType}, gT3OctetStringType};
    case T3Kind::T3Int2Char:
    case T3Kind::T3Int2UniChar:
      return {{gT3IntegerType}, nullptr};
    case T3Kind::T3Char2Int:
      return {CharacterTypes(), gT3IntegerType};
    case T3Kind::T3UniChar2Int:
      return {AllCharacterTypes(), gT3IntegerType};
    case T3Kind::T3Bit2Int:
      return {{gT3BitStringType}, gT3IntegerType};
    case T3Kind::T3Hex2Int:
      return {{gT3HexStringType}, gT3IntegerType};
    case T3Kind::T3Oct2Int:
      return {{gT3OctetStringType}, gT3IntegerType};
    case T3Kind::T3Str2Int:
      return {CharacterTypes(), gT3IntegerType};
    case T3Kind::T3Int2Str:
      return {{gT3IntegerType}, gT3CharStringType};
    case T3Kind::T3Bit2Str:
      return {{gT3BitStringType}, gT3CharStringType};
    case T3Kind::T3Hex2Str:
      return {{gT3HexStringType}, gT3CharStringType};
    case T3Kind::T3Oct2Str:
    case T3Kind::T3Oct2Char:
      return {{gT3OctetStringType}, gT3CharStringType};
    case T3Kind::T3Str2Oct:
    case T3Kind::T3Char2Oct:
      return {CharacterTypes(), gT3OctetStringType};
    case T3Kind::T3Bit2Hex:
      return {{gT3BitStringType}, gT3HexStringType};
    case T3Kind::T3Hex2Oct:
      return {{gT3HexStringType}, gT3OctetStringType};
    case T3Kind::T3Bit2Oct:
      return {{gT3BitStringType}, gT3OctetStringType};
    case T3Kind::T3Hex2Bit:
      return {{gT3HexStringType}, gT3BitStringType};
    case T3Kind::T3Oct2Hex:
      return {{gT3OctetStringType}, gT3HexStringType};
    case T3Kind::T3Oct2Bit:
      return {{gT3OctetStringType}, gT3BitStringType};
    case T3Kind::T3Int2Float:
      return {{gT3IntegerType}, gT3FloatType};
    case T3Kind::T3Float2Int:
      return {{gT3FloatType}, gT3IntegerType};
    case T3Kind::T3Str2Float:
      return {CharacterTypes(), gT3FloatType};
    case T3Kind::T3Enum2Int:
      return {{gT3AnyEnumeratedType}, gT3IntegerType};
    case T3Kind::T3Rnd:
      return {{gT3FloatType}, gT3FloatType};
    default:
      return {{gT3BitStringType}, gT3IntegerType};  // decvalue
  }
}

// Editions 1 and 2 know a type of single characters only.
bool HasSingleCharacters(T3Tree_Node* node) {
  if (node->place == nullptr || node->place->vexa_my_module == nullptr) return false;
  const T3Tree_Node* edition = node->place->vexa_my_module->as<T3Module>()->representation;
  return T3Is<T3TTCN_3_Edition1>(edition) || T3Is<T3TTCN_3_Edition2>(edition);
}

T3TypeSet CharacterResult(T3Tree_Node* node) {
  const bool universal = node->is<T3Int2UniChar>();
  T3Tree_Node* single = universal ? gT3UniversalCharacterType : gT3CharacterType;
  T3Tree_Node* string = universal ? gT3UniversalCharStringType : gT3CharStringType;
  return HasSingleCharacters(node) ? T3TypeSet{single} : T3TypeSet{single, string};
}

T3Inference InferReplace(T3Replace* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->value, OperandCandidates(candidates));
  Fails(node->index, {gT3IntegerType});
  Fails(node->count, {gT3IntegerType});
  Fails(node->replace_with, {BaseOf(node->value)});
  return FinishAsPart(node, candidates, BaseOf(node->value), strict, report);
}

T3Inference InferPredefined(_T3PreDefinedFunction* node, T3Candidates& candidates, bool strict, bool report) {
  if (auto* replace = node->try_as<T3Replace>()) return InferReplace(replace, candidates, strict, report);
  const Conversion conversion = ConversionOf(node->kind);
  const bool failed = Fails(node->value, T3Candidates(conversion.argument, conversion.argument));
  if (auto* sized =
          node->is<_T3PreDefinedLengthFunction>() ? node->as<_T3PreDefinedLengthFunction>() : nullptr)
    Fails(sized->length, {gT3IntegerType});
  if (auto* decoding = node->try_as<T3DecValue>()) Fails(decoding->decoded_value, Anything());
  if (conversion.result == nullptr) return FinishSet(node, candidates, CharacterResult(node), failed, report);
  return FinishOne(node, candidates, conversion.result, failed, strict, report);
}

T3Inference InferTemplateFunction(_T3PreDefinedTemplateFunction* node, T3Candidates& candidates, bool strict,
                                  bool report) {
  switch (node->kind) {
    case T3Kind::T3Substring: {
      auto* function = node->as<T3Substring>();
      Fails(node->template_value, OperandCandidates(candidates));
      Fails(function->index, {gT3IntegerType});
      Fails(function->count, {gT3IntegerType});
      return FinishAsPart(node, candidates, BaseOf(node->template_value), strict, report);
    }
    case T3Kind::T3Decompose: {
      auto* function = node->as<T3Decompose>();
      const bool failed = Fails(node->template_value, {gT3ObjectIdentifierType});
      Fails(function->index, {gT3IntegerType});
      Fails(function->count, {gT3IntegerType});
      return FinishOne(node, candidates, gT3ObjectIdentifierType, failed, strict, report);
    }
    case T3Kind::T3LengthOf:
    case T3Kind::T3SizeOf:
    case T3Kind::T3SizeOfType:
      return FinishOne(node, candidates, gT3IntegerType, Fails(node->template_value, Anything()), strict,
                       report);
    case T3Kind::T3EncValue:
      return FinishOne(node, candidates, gT3BitStringType, Fails(node->template_value, Anything()), strict,
                       report);
    default:  // ispresent, ischosen, isvalue
      return FinishOne(node, candidates, gT3BooleanType, Fails(node->template_value, Anything()), strict,
                       report);
  }
}

T3Inference InferRegexp(T3Regexp* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->argument, OperandCandidates(candidates));
  Fails(node->pattern, T3Candidates(AllCharacterTypes(), AllCharacterTypes()));
  Fails(node->number, {gT3IntegerType});
  return FinishAsPart(node, candidates, BaseOf(node->argument), strict, report);
}

T3Inference InferMatch(T3Match* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->expression, Anything());
  Fails(node->template_value, T3Candidates(LocalOf(node->expression), BaseOf(node->expression)));
  if (node->template_value->is<T3TemplateDef>()) DecideLeft(node->expression, node->template_value);
  node->attr().last_pass = true;
  return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
}

T3Inference InferValueOf(T3ValueOf* node, T3Candidates& candidates, bool report) {
  const T3Inference result = InferAny(node->template_value, candidates);
  SetResult(node, result == T3Inference::Good ? Check(candidates) : gT3ErrorType);
  (void)report;  // the template has reported
  return result;
}

T3Inference InferCreate(T3Create* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->component, Anything());
  Fails(node->name, T3Candidates(CharacterTypes(), CharacterTypes()));
  T3Tree_Node* local = LocalOf(node->component);
  if (local->is<T3ErrorType>()) {
    SetResult(node, gT3ErrorType);
    return T3Inference::Reported;
  }
  Exclude(candidates, local, BaseOf(node->component), true, strict);
  return Finish(node, candidates, false, report);
}

// Operations on timers, components, ports and test cases.
T3Inference InferOperation(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  switch (node->kind) {
    case T3Kind::T3Execute:
      Fails(node->as<T3Execute>()->testcase, Anything());
      Fails(node->as<T3Execute>()->timeout, {gT3FloatType});
      return FinishOne(node, candidates, gT3VerdictType, false, strict, report);
    case T3Kind::T3GetVerdict:
      return FinishOne(node, candidates, gT3VerdictType, false, strict, report);
    case T3Kind::T3Self:
    case T3Kind::T3MTC:
    case T3Kind::T3System:
    case T3Kind::T3AnyComponent:
    case T3Kind::T3AllComponent:
      return FinishOne(node, candidates, gT3AnyComponentType, false, strict, report);
    case T3Kind::T3AnyTimer:
    case T3Kind::T3AllTimer:
      return FinishOne(node, candidates, gT3TimerType, false, strict, report);
    case T3Kind::T3AnyPort:
    case T3Kind::T3AllPort:
      return FinishOne(node, candidates, gT3AnyPortType, false, strict, report);
    case T3Kind::T3Create:
      return InferCreate(node->as<T3Create>(), candidates, strict, report);
    case T3Kind::T3Running:
      Fails(node->as<T3Running>()->object, Anything());
      return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
    case T3Kind::T3Alive:
      Fails(node->as<T3Alive>()->object, Anything());
      return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
    case T3Kind::T3Read:
      return FinishOne(node, candidates, gT3FloatType, Fails(node->as<T3Read>()->timer, {gT3TimerType}),
                       strict, report);
    case T3Kind::T3Activate:
      Fails(node->as<T3Activate>()->teststep, Anything());
      return FinishOne(node, candidates, gT3DefaultType, false, strict, report);
    case T3Kind::T3Regexp:
      return InferRegexp(node->as<T3Regexp>(), candidates, strict, report);
    default:  // references to ports of a configuration, and recipients
      SetResult(node, gT3NoType);
      return T3Inference::Good;
  }
}

void InferRecipients(T3Tree_Node* node) {
  const T3Candidates address = T3Candidates::Types({gT3AddressType, gT3AnyComponentType});
  if (auto* single = node->try_as<T3RecipientSingle>()) Fails(single->recipient, address);
  if (auto* multi = node->try_as<T3RecipientMulti>())
    for (T3Tree_Node* at = multi->recipients; at->is<T3AddressListItem>();
         at = at->as<T3AddressListItem>()->next)
      Fails(at->as<T3AddressListItem>()->recipient, address);
  if (auto* element = node->try_as<T3PortArrayElement>())
    for (T3PortArrayElement* at = element; at != nullptr; at = at->base->try_as<T3PortArrayElement>())
      Fails(at->index, {gT3IntegerType});
}

// ---- All forms ----

T3Inference InferReferenceKind(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  if (node->is<T3Identifier>() || node->is<_T3Qualification>())
    return InferReference(node->as<_T3Reference>(), candidates, strict, report);
  if (node->is<_T3PreDefinedFunction>())
    return InferPredefined(node->as<_T3PreDefinedFunction>(), candidates, strict, report);
  if (node->is<_T3PreDefinedTemplateFunction>())
    return InferTemplateFunction(node->as<_T3PreDefinedTemplateFunction>(), candidates, strict, report);
  InferRecipients(node);
  return InferOperation(node, candidates, strict, report);
}

T3Inference InferUnary(_T3UnaryExpression* node, T3Candidates& candidates, bool strict, bool report) {
  if (node->is<T3UnaryNot>())
    return FinishOne(node, candidates, gT3BooleanType, Fails(node->arg, {gT3BooleanType}), strict, report);
  Fails(node->arg, OperandCandidates(candidates));
  return FinishAsPart(node, candidates, BaseOf(node->arg), strict, report);
}

T3Inference InferShift(_T3ShiftOrRotateExpression* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->value, OperandCandidates(candidates));
  Fails(node->shift, {gT3IntegerType});
  return FinishAsPart(node, candidates, BaseOf(node->value), strict, report);
}

T3Inference InferLengthRange(T3LengthRange* node, T3Candidates& candidates, bool report) {
  Fails(node->lb, {gT3IntegerType});
  Fails(node->ub, {gT3IntegerType});
  const T3TypeSet own{gT3CharStringType,  gT3UniversalCharStringType, gT3BitStringType, gT3HexStringType,
                      gT3OctetStringType, gT3AnyRecordOfType,         gT3AnySetOfType};
  return FinishSet(node, candidates, own, false, report);
}

T3Inference InferPlain(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  switch (node->kind) {
    case T3Kind::T3NoExpression:
      SetResult(node, gT3NoType);
      return T3Inference::Good;
    case T3Kind::T3CompoundValue:
      return InferCompound(node->as<T3CompoundValue>(), candidates, report);
    case T3Kind::T3Match:
      return InferMatch(node->as<T3Match>(), candidates, strict, report);
    case T3Kind::T3ValueOf:
      return InferValueOf(node->as<T3ValueOf>(), candidates, report);
    case T3Kind::T3LengthRange:
      return InferLengthRange(node->as<T3LengthRange>(), candidates, report);
    default:
      internal_error_ast("T3Inference", __LINE__, "should not happen", node);
  }
}

T3Inference Infer(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  node->as<_T3Expression>()->attr().is_strict = strict;
  if (node->is<_T3Reference>()) return InferReferenceKind(node, candidates, strict, report);
  if (node->is<_T3LiteralExpression>()) return InferLiteral(node, candidates, strict, report);
  if (node->is<_T3BinaryExpression>())
    return InferBinary(node->as<_T3BinaryExpression>(), candidates, strict, report);
  if (node->is<_T3UnaryExpression>())
    return InferUnary(node->as<_T3UnaryExpression>(), candidates, strict, report);
  if (node->is<_T3ShiftOrRotateExpression>())
    return InferShift(node->as<_T3ShiftOrRotateExpression>(), candidates, strict, report);
  if (node->is<_T3MatchingExpression>()) return InferMatching(node, candidates, strict, report);
  if (node->is<ExtraMatchingExpressions>())
    return InferExtra(node->as<ExtraMatchingExpressions>(), candidates, strict, report);
  return InferPlain(node, candidates, strict, report);
}

// ---- Template definitions ----

void SetTypes(T3TemplateDef* definition, T3Tree_Node* local) {
  auto& attributes = definition->attr();
  attributes.pass1 = true;
  attributes.pass2 = true;
  attributes.expression_local_type = local;
  attributes.expression_absolute_type = AbsoluteTypeDef(local);
  attributes.expression_base_type = BaseTypeDef(local);
}

// The template that a definition modifies must have the definition's type, where that has its own.
// Returns the type of the modified template, or T3NoType.
T3Tree_Node* InferModifies(T3TemplateDef* definition) {
  auto* modifies = definition->modifies->try_as<T3TemplateReference>();
  if (modifies == nullptr) return gT3NoType;
  T3Candidates candidates = Anything();
  if (!T3Is<T3NoType>(definition->parent))
    candidates = T3Candidates(LocalTypeDef(definition->parent), BaseTypeDef(definition->parent));
  const T3Inference result = Infer(modifies->reference, candidates, false, false);
  T3Tree_Node* local = LocalOf(modifies->reference);
  auto& attributes = modifies->attr();
  attributes.expression_local_type = local;
  attributes.expression_absolute_type = AbsoluteTypeDef(local);
  attributes.expression_base_type = BaseTypeDef(local);
  attributes.modifies_decl = Def(modifies->reference);
  definition->attr().modifies_decl = attributes.modifies_decl;
  if (result == T3Inference::Unreported) Report(modifies, candidates.CountValid());
  return local;
}

T3Inference InferUntyped(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                         T3TemplateUse use) {
  const T3Inference result = Infer(definition->constraint, candidates, strict, false);
  SetTypes(definition, result == T3Inference::Good ? Check(candidates) : gT3ErrorType);
  definition->attr().report_type_error = result == T3Inference::Unreported;
  return result == T3Inference::Unreported ? Report(definition, candidates.CountValid(), use) : result;
}

T3Inference InferTyped(T3TemplateDef* definition, T3Tree_Node* own, T3Candidates& candidates, bool strict,
                       T3TemplateUse use) {
  T3Tree_Node* local = LocalTypeDef(own);
  T3Tree_Node* base = BaseTypeDef(own);
  T3Candidates inner(local, base);
  Infer(definition->constraint, inner, false, true);
  if (local->is<T3ErrorType>()) {
    SetTypes(definition, gT3ErrorType);
    return T3Inference::Reported;
  }
  if (candidates.size() == 0) {
    SetTypes(definition, local);
    return T3Inference::Good;
  }
  Exclude(candidates, local, base, true, strict);
  T3Tree_Node* chosen = Check(candidates);
  SetTypes(definition, chosen);
  if (!chosen->is<T3ErrorType>()) return T3Inference::Good;
  if (IsSilent(candidates)) return T3Inference::Reported;
  definition->attr().report_type_error = true;
  return Report(definition, candidates.CountValid(), use);
}

T3Inference InferDefinition(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                            T3TemplateUse use) {
  auto& attributes = definition->attr();
  attributes.is_strict = strict;
  attributes.is_actual_par = use == T3TemplateUse::ActualPar;
  attributes.is_port_template = use == T3TemplateUse::Port;
  T3Tree_Node* modified = InferModifies(definition);
  T3Tree_Node* own = T3Is<T3NoType>(definition->parent) ? modified : definition->parent;
  attributes.local_type_def = LocalTypeDef(definition->parent);
  attributes.absolute_type_def = AbsoluteTypeDef(definition->parent);
  attributes.base_type_def = BaseTypeDef(definition->parent);
  attributes.type_pass = true;
  if (T3Is<T3NoType>(own)) return InferUntyped(definition, candidates, strict, use);
  return InferTyped(definition, own, candidates, strict, use);
}

T3Inference InferAny(T3Tree_Node* node, T3Candidates& candidates, T3TemplateUse use) {
  if (auto* definition = node->try_as<T3TemplateDef>())
    return InferDefinition(definition, candidates, false, use);
  if (auto* statement = node->try_as<T3InvocationStmt>())
    return InferAny(statement->invocation, candidates, use);
  if (node->is<_T3Expression>()) return Infer(node, candidates, false, true);
  return T3Inference::Good;
}

// The results of a node that no context has reached: a reference stands for itself, anything else is
// inferred as if any type would do, without messages.
void EnsureInferred(T3Tree_Node* node) {
  T3Candidates candidates = Anything();
  ++g_quiet;
  InferAny(node, candidates);
  --g_quiet;
}

template <class Attributes, class Result>
T3Tree_Node* ResultOf(T3Tree_Node* node, Attributes attributes, Result result) {
  if (result(attributes()) == nullptr) EnsureInferred(node);
  T3Tree_Node* type = result(attributes());
  return type == nullptr ? gT3ErrorType : type;
}

template <class Result>
T3Tree_Node* TypeOf(T3Tree_Node* node, Result result) {
  if (auto* definition = node->try_as<T3TemplateDef>())
    return ResultOf(
        node, [&]() -> auto& { return definition->attr(); }, result);
  if (auto* reference = node->try_as<T3TemplateReference>())
    return ResultOf(
        reference->reference, [&]() -> auto& { return reference->reference->as<_T3Expression>()->attr(); },
        result);
  if (node->is<_T3Expression>())
    return ResultOf(
        node, [&]() -> auto& { return node->as<_T3Expression>()->attr(); }, result);
  return gT3NoType;
}
}  // namespace

T3Tree_Node* ExpressionLocalType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_local_type; });
}
T3Tree_Node* ExpressionAbsoluteType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_absolute_type; });
}
T3Tree_Node* ExpressionBaseType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_base_type; });
}

T3Inference InferExpression(T3Tree_Node* expression, T3Candidates candidates, bool strict, bool report) {
  if (!expression->is<_T3Expression>()) return InferAny(expression, candidates);
  return Infer(expression, candidates, strict, report);
}

void InferRedirectedParams(T3Tree_Node* values, T3Tree_Node* signature) {
  if (T3Is<T3SignatureType>(signature)) return InferFieldValues(values, signature);
  for (; values->is<T3FieldValue>(); values = values->as<T3FieldValue>()->next)
    Fails(values->as<T3FieldValue>()->value, Anything());
}

T3Inference InferTemplate(T3Tree_Node* definition, T3Candidates candidates, bool strict, T3TemplateUse use) {
  if (auto* node = definition->try_as<T3TemplateDef>()) return InferDefinition(node, candidates, strict, use);
  return InferExpression(definition, candidates, strict);
}
