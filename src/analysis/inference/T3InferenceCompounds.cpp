// Compound values: by list, by field name, by index, and empty. One that several candidates may have is
// tried with each in silence before it settles.
#include "analysis/inference/T3InferenceParts.h"
#include "analysis/types/T3AnyTypes.h"
#include "driver/diagnostics/T3Error.h"

namespace t3infer {
namespace {
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
T3Tree_Node* MemberOfAnyType(T3FieldValue* value) {
  auto* name = value->field->as<T3FieldName>();
  if (value->place == nullptr || !T3Is<T3MapEnv>(value->place->env)) return gT3ErrorType;
  const tIdent module = T3Is<T3Identifier>(name->module) ? name->module->as<T3Identifier>()->id : NoIdent;
  T3Tree_Node* member = AnyTypeMember(value, name->name, module, name->position);
  if (member->is<T3ErrorType>() && CountFailure())
    ReportNoAnyTypeMember(value, name->name, module, name->position);
  return member;
}

// True when a member is declared in the module that its name is qualified by, if it is.
bool IsFromModule(const T3Tree_Node* member, T3Tree_Node* module) {
  return !T3Is<T3Identifier>(module) || member->place == nullptr ||
         member->place->vexa_module_name == module->as<T3Identifier>()->id;
}

// The member that one value of a compound is for; gT3ErrorType where there is none, which is reported.
T3Tree_Node* MemberOf(T3FieldValue* value, T3Tree_Node* base, MemberCursor& cursor) {
  if (base->is<_T3HomogeneousType>()) return ElementType(base);
  auto* name = value->field->try_as<T3FieldName>();
  if (base->is<T3AnyType>()) return name == nullptr ? gT3ErrorType : MemberOfAnyType(value);
  // An index beside names is told as a mixture of notations.
  if (value->field->is<T3FieldIndex>()) return gT3ErrorType;
  if (name == nullptr) {
    T3Tree_Node* member = cursor.Next();
    if (member->is<T3ErrorType>()) Report(value->value, 0);
    return member;
  }
  T3Tree_Node* member = cursor.Named(name->name);
  if (!member->is<T3ErrorType>() && IsFromModule(member, name->module)) return member;
  if (CountFailure()) vexa_filtered_error(ERR_type_unknown_field, name->position, name->name);
  return gT3ErrorType;
}

// Without a type for the whole, the values are inferred for the names in them only.
void InferFieldValuesBlindly(T3Tree_Node* values) {
  for (auto* item : Items<T3FieldValue>(values)) Fails(item->value, {gT3ErrorType});
}

bool ValuesFit(T3Tree_Node* values, T3Tree_Node* base) {
  const Silence silence;
  InferFieldValues(values, base);
  return !silence.HasFailures();
}

std::vector<tIdent> NamesOf(T3Tree_Node* values) {
  std::vector<tIdent> names;
  for (auto* value : Items<T3FieldValue>(values))
    if (auto* name = value->field->try_as<T3FieldName>()) names.push_back(name->name);
  return names;
}

void TryCandidates(T3CompoundValue* compound, T3Candidates& candidates) {
  const bool several = candidates.size() > 2 && NotationOf(compound->value) == Notation::Assign &&
                       candidates.KeepWithFields(NamesOf(compound->value));
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i) || candidates.base(i)->is<T3ErrorType>()) continue;
    if (!NotationFits(NotationOf(compound->value), GetAddressBaseType(candidates.base(i))))
      candidates.Strike(i, gT3ErrorType);
  }
  if (!several && candidates.CountValid() < 2) return;
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && !candidates.base(i)->is<T3ErrorType>() &&
        !ValuesFit(compound->value, GetAddressBaseType(candidates.base(i))))
      candidates.Strike(i, gT3ErrorType);
}

int LengthOf(T3Tree_Node* values) {
  return static_cast<int>(Items<T3FieldValue>(values).size());
}
}  // namespace

// What the elements of an array, `record of` or `set of` may be; timers are set by their durations.
T3Candidates ElementCandidates(T3Tree_Node* type) {
  const T3TypeViews views = TypeViewsOf(type);
  if (views.base->is<T3TimerType>()) return {gT3FloatType};
  return T3Candidates(views.local, views.base);
}

void InferFieldValues(T3Tree_Node* values, T3Tree_Node* base) {
  MemberCursor cursor(base);
  int index = 0;
  for (auto* value : Items<T3FieldValue>(values)) {
    if (auto* place = value->field->try_as<T3FieldIndex>()) Fails(place->index, {gT3IntegerType});
    T3Tree_Node* member = MemberOf(value, base, cursor);
    auto& attributes = value->attr();
    attributes.index = index++;
    attributes.def = member;
    attributes.vexa_owner_type = base;
    Fails(value->value, member->is<T3ErrorType>() ? T3Candidates{gT3ErrorType} : ElementCandidates(member));
  }
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
}  // namespace t3infer
