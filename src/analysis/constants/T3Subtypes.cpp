// The check of constants against their subtypes: every constraint along the chain of parents applies to
// every constant expression of the type.
#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/constants/T3KnownTexts.h"
#include "analysis/constants/T3Patterns.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/constants/T3Faults.h"
#include "analysis/names/T3Names.h"
#include "asn1/integration/T3Representation.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "support/ModuleCaches.h"
#include "support/NumberMap.h"

namespace {
// ---- Chains of subtypes ----

// The constrained types that unconstrained ones, which only name others, stand for. Chains go through many
// modules.
NumberMap<T3Tree_Node*>& g_constrained = *new NumberMap<T3Tree_Node*>;
const ModuleCache constrained{[] { g_constrained.clear(); }, ModuleCache::Holds::ForRun};

// The first type with a constraint, from a type on; the base where none is left.
T3Tree_Node* Constrained(T3Tree_Node* type) {
  std::vector<T3Tree_Node*> way;
  for (type = LocalBehindAddress(type); type->is<T3SubType>();
       type = LocalBehindAddress(type->as<T3SubType>()->parent)) {
    if (!type->as<T3SubType>()->constraint->is<T3NoExpression>()) break;
    if (T3Tree_Node* const* known = g_constrained.Find(type->number)) {
      type = *known;
      break;
    }
    way.push_back(type);
  }
  for (T3Tree_Node* at : way) g_constrained[at->number] = type;
  return type;
}

T3Tree_Node* NextConstrained(T3Tree_Node* subtype) {
  return Constrained(subtype->as<T3SubType>()->parent);
}

// ---- Constants that have been held to a constraint where they are declared ----

// A value that breaks a constraint is reported there, and not again where the constant is used.
std::unordered_set<T3Tree_Node*> ConstraintsOfDeclaration(T3Tree_Node* expression) {
  std::unordered_set<T3Tree_Node*> checked;
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return checked;
  T3Tree_Node* decl = BehindImport(Def(expression));
  if (!T3Is<T3ConstDecl>(decl) || BaseTypeDef(decl)->is<T3ErrorType>()) return checked;
  if (decl->place == nullptr || GetWeakTyping(decl->place->vexa_my_module)) return checked;
  for (T3Tree_Node* type = Constrained(decl); type->is<T3SubType>(); type = NextConstrained(type))
    checked.insert(type);
  return checked;
}

bool KeptByDeclaration(T3Tree_Node* expression, T3Tree_Node* subtype) {
  return ConstraintsOfDeclaration(expression).count(subtype) > 0;
}

// ---- Character sets ----

struct CharacterRange {
  uint64_t low;
  uint64_t high;
};
using CharacterRanges = std::vector<CharacterRange>;

std::optional<uint64_t> CodeOf(T3Tree_Node* expression) {
  const auto text = KnownCharacters(expression);
  if (!text) return std::nullopt;
  const auto codes = CodesOf(*text);
  return codes.size() == 1 ? std::optional<uint64_t>(codes.front()) : std::nullopt;
}

bool IsCharacterRange(T3Tree_Node* item) {
  if (!item->is<T3ValueRange>()) return false;
  T3Tree_Node* type = ExpressionBaseType(item);
  return type->is<T3CharacterType>() || type->is<T3UniversalCharacterType>();
}

size_t LengthOfValueListList(T3Tree_Node* list) {
  return Items<T3ValueListItem>(list).size();
}

CharacterRanges CollectCharacterRanges(T3Tree_Node* list) {
  CharacterRanges ranges;
  ranges.reserve(LengthOfValueListList(list));
  for (auto* at : Items<T3ValueListItem>(list)) {
    auto* range = at->value->try_as<T3ValueRange>();
    if (range == nullptr) continue;
    const auto low = CodeOf(range->lb);
    const auto high = CodeOf(range->ub);
    if (low && high) ranges.push_back({*low, *high});
  }
  return ranges;
}

// The ranges of a subtype, and the numbers of the expressions that have been found to keep them.
struct CharacterSet {
  T3Tree_Node* subtype = nullptr;
  CharacterRanges ranges;
  std::unordered_set<uint32_t> kept_by;
};

// The sets of the module under analysis, by the numbers of their lists.
using CharacterSets = std::unordered_map<uint32_t, CharacterSet>;
CharacterSets& g_sets = *new CharacterSets;

CharacterSet& CharacterSetOf(T3Tree_Node* list) {
  const auto [set, made] = g_sets.emplace(list->number, CharacterSet());
  if (made) {
    set->second.ranges = CollectCharacterRanges(list);
    set->second.subtype = list->parent;
    while (set->second.subtype->is<T3ValueList>() || set->second.subtype->is<T3ValueListItem>())
      set->second.subtype = set->second.subtype->parent;
  }
  return set->second;
}

bool InRanges(uint64_t code, const CharacterRanges& ranges) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](const CharacterRange& range) { return range.low <= code && code <= range.high; });
}

bool AllInRanges(const std::string& text, const CharacterRanges& ranges) {
  const auto codes = CodesOf(text);
  return std::all_of(codes.begin(), codes.end(), [&](uint64_t code) { return InRanges(code, ranges); });
}

// Each character of a constant string must lie in a range; what is no literal passes.
bool CheckStringCharacterRange(T3Tree_Node* expression, CharacterSet& set) {
  std::unordered_set<uint32_t> met;
  std::vector<T3Tree_Node*> open{expression};
  while (!open.empty()) {
    T3Tree_Node* operand = open.back();
    open.pop_back();
    if (operand != expression && KeptByDeclaration(operand, set.subtype)) continue;
    T3Tree_Node* value = ConstantValueOf(operand);
    if (set.kept_by.count(value->number) > 0 || !met.insert(value->number).second) continue;
    if (auto* both = value->try_as<T3Concatenate>()) {
      open.push_back(both->left);
      open.push_back(both->right);
      continue;
    }
    const auto text = ConstCharValue(value);
    if (text && !AllInRanges(*text, set.ranges)) return false;
  }
  set.kept_by.merge(met);
  return true;
}

// ---- Lists of values ----

// The values of a long list by their keys of one form, and the items that must be compared one by one.
struct ValueSet {
  char form = 0;
  std::unordered_set<std::string> keys;
  /// Lower and upper bounds of ranges of integers, in order; the upper ones at least as high as those before.
  std::vector<std::pair<int64_t, int64_t>> ranges;
  std::vector<T3Tree_Node*> others;
};
std::unordered_map<uint32_t, ValueSet>& g_value_sets = *new std::unordered_map<uint32_t, ValueSet>;

std::optional<int64_t> LowestOf(T3ValueRange* range);

bool AddRange(ValueSet& set, T3Tree_Node* item) {
  auto* range = item->try_as<T3ValueRange>();
  if (range == nullptr || !ExpressionBaseType(range)->is<T3Integer>()) return false;
  const auto low = LowestOf(range);
  const auto high = ConstIntValue(range->ub);
  if (low && high) set.ranges.emplace_back(*low, *high);
  return low && high;
}

void SortRanges(ValueSet& set) {
  std::sort(set.ranges.begin(), set.ranges.end());
  for (size_t i = 1; i < set.ranges.size(); ++i)
    set.ranges[i].second = std::max(set.ranges[i].second, set.ranges[i - 1].second);
}

// A number that is not known may lie in any of them.
bool LiesInRange(const ValueSet& set, T3Tree_Node* expression) {
  const auto value = set.ranges.empty() ? std::nullopt : ConstIntValue(expression);
  if (!value) return !set.ranges.empty();
  const auto behind =
      std::upper_bound(set.ranges.begin(), set.ranges.end(), *value,
                       [](int64_t number, const auto& range) { return number < range.first; });
  return behind != set.ranges.begin() && (behind - 1)->second >= *value;
}

void AddValue(ValueSet& set, T3Tree_Node* item) {
  if (AddRange(set, item)) return;
  auto key = item->is<T3ValueRange>() ? std::nullopt : ConstantKey(item);
  if (key && set.form == 0) set.form = key->front();
  if (key && key->front() == set.form)
    set.keys.insert(*std::move(key));
  else
    set.others.push_back(item);
}

const ValueSet& ValueSetOf(T3Tree_Node* list) {
  const auto [set, made] = g_value_sets.try_emplace(list->number);
  if (made) {
    for (auto* at : Items<T3ValueListItem>(list)) AddValue(set->second, at->value);
    SortRanges(set->second);
  }
  return set->second;
}

// ---- Constraints ----

template <class Value>
bool Within(const std::optional<Value>& low, const std::optional<Value>& value,
            const std::optional<Value>& high) {
  return !low || !value || !high || (*low <= *value && *value <= *high);
}

bool IsOpen(T3Tree_Node* bound) {
  return bound->is<T3Infinity>() ||
         (bound->is<T3UnaryMinus>() && bound->as<T3UnaryMinus>()->arg->is<T3Infinity>());
}

// The least number of all lies above minus infinity, though the negation of the greatest does not.
std::optional<int64_t> LowestOf(T3ValueRange* range) {
  return IsOpen(range->lb) ? std::numeric_limits<int64_t>::min() : ConstIntValue(range->lb);
}

bool CheckValueRangeCondition(T3ValueRange* range, T3Tree_Node* expression) {
  T3Tree_Node* type = ExpressionBaseType(range);
  if (type->is<T3Integer>())
    return Within(LowestOf(range), ConstIntValue(expression), ConstIntValue(range->ub));
  if (type->is<T3Float>())
    return Within(ConstFloatValue(range->lb), ConstFloatValue(expression), ConstFloatValue(range->ub));
  if (!type->is<T3CharacterType>() && !type->is<T3UniversalCharacterType>()) return true;
  if (IsOpen(range->lb) || IsOpen(range->ub)) return true;
  return Within(CodeOf(range->lb), CodeOf(expression), CodeOf(range->ub));
}

bool TypeAccepts(T3Tree_Node* type, T3Tree_Node* expression);

// The type that an item of a list names instead of its values, or null.
T3Tree_Node* TypeNamed(T3Tree_Node* item) {
  if (!item->is<T3Identifier>() && !item->is<T3Qualifier>()) return nullptr;
  T3Tree_Node* decl = BehindImport(Def(item));
  return T3Is<T3TypeDecl>(decl) ? decl : nullptr;
}

bool ItemAccepts(T3Tree_Node* item, T3Tree_Node* expression) {
  if (T3Tree_Node* type = TypeNamed(item)) return TypeAccepts(type, expression);
  auto* range = item->try_as<T3ValueRange>();
  return range != nullptr ? CheckValueRangeCondition(range, expression)
                          : ExpressionsAreEqual(item, expression);
}

bool IsLong(T3Tree_Node* list) {
  constexpr int kFew = 8;
  for (int i = 0; i < kFew && list->is<T3ValueListItem>(); ++i) list = list->as<T3ValueListItem>()->next;
  return list->is<T3ValueListItem>();
}

// Looks the expression up in a list of values without characters' ranges; nothing where that needs the walk
// along the list.
std::optional<bool> FoundInSet(T3Tree_Node* list, T3Tree_Node* expression) {
  if (!IsLong(list) || IsCharacterRange(list->as<T3ValueListItem>()->value)) return std::nullopt;
  const auto key = ConstantKey(expression);
  if (!key) return std::nullopt;
  const ValueSet& set = ValueSetOf(list);
  const bool comparable = set.form == 0 || key->front() == set.form;
  if (!comparable || std::any_of(set.others.begin(), set.others.end(), IsCharacterRange)) return std::nullopt;
  return set.keys.count(*key) > 0 || LiesInRange(set, expression) ||
         std::any_of(set.others.begin(), set.others.end(),
                     [&](T3Tree_Node* item) { return ItemAccepts(item, expression); });
}

// The message of an expression that a list does not allow, or null.
const _vexa_error_message_t* CheckValueListConstraint(T3Tree_Node* list, T3Tree_Node* expression) {
  if (const auto found = FoundInSet(list, expression)) return *found ? nullptr : &ERR_subtype;
  for (auto* at : Items<T3ValueListItem>(list)) {
    T3Tree_Node* item = at->value;
    if (IsCharacterRange(item))
      return CheckStringCharacterRange(expression, CharacterSetOf(list)) ? nullptr : &ERR_subtype_charset;
    if (ItemAccepts(item, expression)) return nullptr;
  }
  return &ERR_subtype;
}

// Numbers of expressions that were warned of.
std::unordered_set<uint32_t> g_unchecked;
const ModuleCache unchecked([] { g_unchecked.clear(); }, ModuleCache::Holds::ForRun);

// Once for an expression, however many constraints it has and however many declarations share it.
void WarnUnchecked(T3Tree_Node* expression) {
  if (expression->place == nullptr || HasFault(expression)) return;
  if (!g_unchecked.insert(expression->number).second) return;
  vexa_warning(GetVerbosity(expression->place->vexa_my_module),
               "Cannot check length restrictions, check will be enforced at runtime", PositionOf(expression));
}

// A list of elements has its length whatever is wrong with them.
bool HasSureLength(T3Tree_Node* expression) {
  auto* compound = ConstantValueOf(expression)->try_as<T3CompoundValue>();
  auto* first = compound == nullptr ? nullptr : compound->value->try_as<T3FieldValue>();
  return first != nullptr && !first->field->is<T3FieldIndex>();
}

// A length and what a constraint allows.
struct LengthCheck {
  int64_t low, high, length;
  bool Holds() const { return length < 0 || (low <= length && length <= high); }
};

// Nothing where that is known only when the suite runs.
std::optional<LengthCheck> CheckLength(T3LengthRange* range, T3Tree_Node* expression) {
  const auto low = ConstIntValue(range->lb);
  const auto high = range->ub->is<T3NoExpression>() ? low : ConstIntValue(range->ub);
  bool known = true;
  const int64_t length = low && high ? ExpressionLength(expression, known) : 0;
  if (!low || !high || !known) return std::nullopt;
  return LengthCheck{*low, *high, length};
}

void CheckLengthRangeConstraint(T3LengthRange* range, T3Tree_Node* expression) {
  const auto check = CheckLength(range, expression);
  if (!check) return WarnUnchecked(expression);
  if (check->Holds() || (!HasSureLength(expression) && HasFault(expression))) return;
  vexa_filtered_error(ERR_subtype_length, PositionOf(expression), std::to_string(check->length),
                      std::to_string(check->low), std::to_string(check->high));
}

// Whether an expression would pass without a message, or its check is left to the run-time system.
bool ConstraintAccepts(T3Tree_Node* constraint, T3Tree_Node* expression) {
  if (auto* list = constraint->try_as<T3ValueList>())
    return CheckValueListConstraint(list->values, expression) == nullptr;
  if (auto* pattern = constraint->try_as<T3CharStringMatch>())
    return PatternAllows(pattern, expression).value_or(true);
  auto* range = constraint->try_as<T3LengthRange>();
  const auto check = range != nullptr ? CheckLength(range, expression) : std::nullopt;
  return !check || check->Holds();
}

// Types that name each other in their lists further than this are left to the run-time system.
bool TypeAccepts(T3Tree_Node* type, T3Tree_Node* expression) {
  constexpr int kDeepest = 100;
  static int depth = 0;
  if (depth == kDeepest || BaseTypeDef(type)->is<T3ErrorType>()) return true;
  ++depth;
  bool accepts = true;
  for (type = Constrained(type); accepts && type->is<T3SubType>(); type = NextConstrained(type))
    accepts = ConstraintAccepts(type->as<T3SubType>()->constraint, expression);
  --depth;
  return accepts;
}

bool IsNoValue(T3Tree_Node* expression) {
  return expression->is<T3ValueList>() || expression->is<T3Complement>() || expression->is<T3Omit>() ||
         expression->is<T3NotUsedSymbol>() || expression->is<T3NoExpression>();
}

void CheckConstraint(T3Tree_Node* constraint, T3Tree_Node* expression) {
  if (IsNoValue(expression)) return;
  // What a constraint with a fault allows is not known.
  if (HasFault(constraint)) return;
  if (auto* list = constraint->try_as<T3ValueList>()) {
    const _vexa_error_message_t* message = CheckValueListConstraint(list->values, expression);
    if (message != nullptr && !HasFault(expression)) vexa_filtered_error(*message, PositionOf(expression));
  }
  if (auto* range = constraint->try_as<T3LengthRange>()) CheckLengthRangeConstraint(range, expression);
  auto* pattern = constraint->try_as<T3CharStringMatch>();
  if (pattern != nullptr && !HasFault(expression) && !PatternAllows(pattern, expression).value_or(true))
    vexa_filtered_error(ERR_subtype, PositionOf(expression));
}

// The numbers and lengths that all constraints allow from a type on up to the first one, `above`, that is neither a range
// of numbers nor of lengths that are known.
struct Allowed {
  int64_t low = std::numeric_limits<int64_t>::min(), high = std::numeric_limits<int64_t>::max();
  int64_t shortest = low, longest = high;
  bool numbers = false, lengths = false;  // whether there are such constraints
  T3Tree_Node* above = nullptr;

  void CutWith(const Allowed& other) {
    low = std::max(low, other.low);
    high = std::min(high, other.high);
    shortest = std::max(shortest, other.shortest);
    longest = std::min(longest, other.longest);
    numbers = numbers || other.numbers;
    lengths = lengths || other.lengths;
  }

  // Takes what one constraint allows; false where it is of another form.
  bool Take(T3Tree_Node* constraint) {
    if (HasFault(constraint)) return false;
    if (auto* length = constraint->try_as<T3LengthRange>()) {
      const auto least = ConstIntValue(length->lb);
      const auto most = length->ub->is<T3NoExpression>() ? least : ConstIntValue(length->ub);
      if (!least || !most) return false;
      shortest = *least;
      longest = *most;
      return lengths = true;
    }
    auto* list = constraint->try_as<T3ValueList>();
    auto* item = list == nullptr ? nullptr : list->values->try_as<T3ValueListItem>();
    auto* range = item == nullptr || item->next->is<T3ValueListItem>() ? nullptr : item->value->try_as<T3ValueRange>();
    if (range == nullptr || !ExpressionBaseType(range)->is<T3Integer>()) return false;
    const auto least = LowestOf(range), most = ConstIntValue(range->ub);
    if (!least || !most) return false;
    low = *least;
    high = *most;
    return numbers = true;
  }

  bool Allows(T3Tree_Node* expression) const {
    if (IsNoValue(expression)) return false;
    if (numbers) {
      const auto number = ConstIntValue(expression);
      if (!number || *number < low || *number > high) return false;
    }
    bool known = true;
    const int64_t length = lengths ? ExpressionLength(expression, known) : 0;
    return !lengths || (known && shortest <= length && length <= longest);
  }
};
NumberMap<Allowed>& g_allowed = *new NumberMap<Allowed>;
const ModuleCache allowed{[] { g_allowed.clear(); }, ModuleCache::Holds::ForRun};

// From a type with a constraint, or a base, on. Each type of a chain knows it once one below it was asked.
Allowed AllowedFrom(T3Tree_Node* type) {
  std::vector<std::pair<T3Tree_Node*, Allowed>> way;
  Allowed found;
  for (T3Tree_Node* at = type;; at = NextConstrained(at)) {
    if (const Allowed* known = g_allowed.Find(at->number)) {
      found = *known;
      break;
    }
    Allowed own;
    if (!at->is<T3SubType>() || !own.Take(at->as<T3SubType>()->constraint)) {
      found.above = at;
      break;
    }
    way.emplace_back(at, own);
  }
  for (auto at = way.rbegin(); at != way.rend(); ++at) {
    found.CutWith(at->second);
    g_allowed[at->first->number] = found;
  }
  return found;
}

// A cycle of parents has no base, and has had its message.
void CheckAllSubtypes(T3Tree_Node* type, T3Tree_Node* expression) {
  if (BaseTypeDef(type)->is<T3ErrorType>()) return;
  type = Constrained(type);
  if (const Allowed most = AllowedFrom(type); most.above != type && most.Allows(expression)) type = most.above;
  if (!type->is<T3SubType>()) return;
  const auto checked = ConstraintsOfDeclaration(expression);
  for (; type->is<T3SubType>() && checked.count(type) == 0; type = NextConstrained(type))
    CheckConstraint(type->as<T3SubType>()->constraint, expression);
}

// Values are held to what they must be among; that is held to what lies above it, each to the next one.
void CheckNextSubtype(T3Tree_Node* type, T3Tree_Node* expression) {
  if (BaseTypeDef(type)->is<T3ErrorType>()) return;
  bool lists_values = false;
  for (type = Constrained(type); type->is<T3SubType>() && !lists_values; type = NextConstrained(type)) {
    T3Tree_Node* constraint = type->as<T3SubType>()->constraint;
    lists_values = constraint->is<T3ValueList>();
    CheckConstraint(constraint, expression);
  }
}

// A length that a subtype allows and the one above it with lengths of its own does not.
void CheckLengthBound(T3LengthRange* above, T3Tree_Node* bound) {
  const auto length = KnownInteger(bound);
  const auto low = KnownInteger(above->lb);
  const auto high = above->ub->is<T3NoExpression>() ? low : KnownInteger(above->ub);
  if (!length || !low || !high || IsOpen(bound) || HasFault(above) || HasFault(bound)) return;
  if (*low <= *length && *length <= *high) return;
  vexa_filtered_error(ERR_subtype_length, PositionOf(bound), std::to_string(*length), std::to_string(*low),
                      std::to_string(*high));
}

void CheckLengthBounds(T3LengthRange* range, T3Tree_Node* type) {
  if (BaseTypeDef(type)->is<T3ErrorType>()) return;
  for (type = Constrained(type); type->is<T3SubType>(); type = NextConstrained(type)) {
    auto* above = type->as<T3SubType>()->constraint->try_as<T3LengthRange>();
    if (above == nullptr) continue;
    CheckLengthBound(above, range->lb);
    if (!range->ub->is<T3NoExpression>()) CheckLengthBound(above, range->ub);
    return;
  }
}

// ---- What is to be checked ----

// An expression whose type is a subtype, noted by the evaluation. Walking the whole tree once more, where
// most of it is nothing of the kind, would cost a tenth of the analysis.
struct Subtyped {
  tPosition position;
  uint32_t order;
  _T3Expression* expression;
  /// The type above, for a value that a subtype lists, or for its lengths; null otherwise.
  T3Tree_Node* type = nullptr;
};
std::vector<Subtyped>& g_subtyped = *new std::vector<Subtyped>;
// How many were noted when each of the types was entered that the walk is in.
std::vector<size_t>& g_types_entered = *new std::vector<size_t>;

// The numbers of those that something else has taken the place of.
std::unordered_set<uint32_t>& g_replaced = *new std::unordered_set<uint32_t>;

void NoteSubtyped(T3Tree_Node* node) {
  auto* expression = static_cast<_T3Expression*>(node);
  if (expression->attributes == nullptr || !T3Is<T3SubType>(expression->attr().expression_local_type)) return;
  g_subtyped.push_back({expression->position, static_cast<uint32_t>(g_subtyped.size()), expression, nullptr});
}

bool ComesFromAsn(T3Tree_Node* node) {
  return node->place == nullptr || T3ReprToLanguage(node->place->vexa_my_module) == language_asn1;
}

// What a subtype of a subtype allows is allowed by the latter; constraints of ASN.1 are cut with each other.
void NoteBounds(T3Tree_Node* node) {
  auto* subtype = node->as<T3SubType>();
  if (!LocalBehindAddress(subtype->parent)->is<T3SubType>() || ComesFromAsn(subtype)) return;
  const auto note = [subtype](T3Tree_Node* value) {
    if (!T3Is<_T3Expression>(value) || IsOpen(value) || TypeNamed(value) != nullptr || !IsConstant(value))
      return;
    g_subtyped.push_back({PositionOf(value), static_cast<uint32_t>(g_subtyped.size()),
                          value->as<_T3Expression>(), subtype->parent});
  };
  if (subtype->constraint->is<T3LengthRange>()) note(subtype->constraint);
  auto* list = subtype->constraint->try_as<T3ValueList>();
  if (list == nullptr) return;
  for (auto* item : Items<T3ValueListItem>(list->values)) {
    auto* range = item->value->try_as<T3ValueRange>();
    note(range == nullptr ? item->value : range->lb);
    if (range != nullptr) note(range->ub);
  }
}

void LeaveType(T3Tree_Node*) {
  g_subtyped.resize(g_types_entered.back());
  g_types_entered.pop_back();
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3Expression, NoteSubtyped},
    {T3Kind::T3SubType, LeaveType},
    {T3Kind::T3SubType, NoteBounds},
    {T3Kind::T3TypeReference, LeaveType},
};

// In source order; a whole, which has been noted behind its parts, before them.
bool StandsBefore(const Subtyped& a, const Subtyped& b) {
  if (a.position.Line != b.position.Line) return a.position.Line < b.position.Line;
  if (a.position.Column != b.position.Column) return a.position.Column < b.position.Column;
  return a.order > b.order;
}

void CheckSubtypes1(_T3Expression* expression) {
  T3Tree_Node* type = expression->attr().expression_local_type;
  if (T3Is<T3SubType>(type) && IsConstant(expression)) CheckAllSubtypes(type, expression);
}

void Check(const Subtyped& noted) {
  auto* lengths = noted.expression->try_as<T3LengthRange>();
  if (noted.type == nullptr) return CheckSubtypes1(noted.expression);
  if (lengths != nullptr) return CheckLengthBounds(lengths, noted.type);
  CheckNextSubtype(noted.type, noted.expression);
}
}  // namespace

std::span<const T3Rule> SubtypeRules() {
  return kRules;
}

void EnterType() {
  g_types_entered.push_back(g_subtyped.size());
}

void CheckSubtypes(T3Tree_Node*) {
  std::sort(g_subtyped.begin(), g_subtyped.end(), StandsBefore);
  for (const Subtyped& noted : g_subtyped)
    if (g_replaced.empty() || g_replaced.count(noted.expression->number) == 0) Check(noted);
}

void ReplaceSubtyped(T3Tree_Node* written, T3Tree_Node* made) {
  g_replaced.insert(written->number);
  NoteSubtyped(made);
}

namespace {
const ModuleCache kSubtypesCache{[] {
  g_replaced.clear();
  g_subtyped.clear();
  g_types_entered.clear();
  g_sets.clear();
  g_value_sets.clear();
}};
}  // namespace
