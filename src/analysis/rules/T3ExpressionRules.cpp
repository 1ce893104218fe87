// The rules of literals, references, compound values, predefined functions and operations that go beyond the
// types by themselves.
#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/constants/T3ConstantValues.h"
#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3KnownNumbers.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/walk/T3Surroundings.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/flow/T3ValueClasses.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "support/StringM.h"

namespace {
// ---- Literals ----

void CheckOctets(T3Tree_Node* node) {
  auto* literal = node->as<T3OctStringLiteral>();
  const std::string_view text = StringM::StGetString(literal->value);
  const auto is_digit = [](char c) { return c != '\'' && c != ' '; };
  const auto digits = std::count_if(text.begin(), text.end(), is_digit) - 1;  // the O counts too
  if (digits % 2 != 0) vexa_filtered_error(ERR_odd_octetstring, literal->position);
}

void CheckQuadruple(T3Tree_Node* node) {
  auto* literal = node->as<T3UnivCharLiteral>();
  const auto check = [literal](T3Tree_Node* value, const char* part, int64_t most) {
    const auto number = ConstIntValue(value);
    if (number && (*number < 0 || *number > most))
      vexa_filtered_error(ERR_quadruple_range, literal->position, part, std::to_string(most).c_str());
  };
  check(literal->group, "group", 127);
  check(literal->plane, "plane", 255);
  check(literal->row, "row", 255);
  check(literal->cell, "cell", 255);
}

// ---- References ----

// An index that no value of the type has. A list may grow, but begins with 0.
bool IsOutOf(T3Tree_Node* type, std::optional<int64_t> index) {
  if (!index) return false;
  const auto bounds = T3Is<T3ArrayType>(type) ? KnownBounds(type) : std::nullopt;
  return bounds ? *index < bounds->low || *index > bounds->high : *index < 0;
}

// The largest number of elements that the subtypes of a list allow.
std::optional<int64_t> MostElements(T3Tree_Node* type) {
  std::optional<int64_t> most;
  for (; type->is<T3SubType>(); type = LocalTypeDef(type->as<T3SubType>()->parent)) {
    auto* range = type->as<T3SubType>()->constraint->try_as<T3LengthRange>();
    const auto high =
        range != nullptr ? KnownInteger(IsGiven(range->ub) ? range->ub : range->lb) : std::nullopt;
    if (high && (!most || *high < *most)) most = high;
  }
  return most;
}

// A constant has its elements, and a list of a subtype no more than that allows. Any other list is asked when
// the suite runs.
bool IsBehindList(T3Tree_Node* list, std::optional<int64_t> index) {
  if (!index || *index < 0) return false;
  const auto most = MostElements(LocalTypeDef(list));
  auto* value = ConstantValueOf(list)->try_as<T3CompoundValue>();
  if (value == nullptr || !IsConstant(list)) return most && *index >= *most;
  bool known = true;
  const int64_t length = ExpressionLength(value, known);
  return known && *index >= length;
}

void CheckIndex(T3Tree_Node* node) {
  auto* subscription = node->as<T3Subscription>();
  if (HasFailed(subscription->base)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(subscription->base));
  const auto index = KnownInteger(subscription->index);
  const bool list = type->is<T3RecordOfType>() || type->is<T3SetOfType>();
  if (list ? IsBehindList(subscription->base, index) : type->is<T3ArrayType>() && IsOutOf(type, index))
    vexa_filtered_error(ERR_arr_out_of_bounds, subscription->position);
}

// ---- Compound values ----

void CheckPermutations(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (HasFailed(compound) || T3Is<T3RecordOfType>(GetAddressBaseType(ExpressionBaseType(compound)))) return;
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    const auto kind = at->permutation_kind;
    if (kind == t3_permutation_kind_t::Head || kind == t3_permutation_kind_t::HeadTail)
      vexa_filtered_error(ERR_permutation_type, PositionOf(at));
  }
}

bool IsOfUnknownLength(T3FieldValue* element) {
  return element->permutation_kind != t3_permutation_kind_t::No || element->value->is<T3AnyOrOmit>();
}

void CheckArrayValue(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  T3Tree_Node* type = HasFailed(compound) ? nullptr : GetAddressBaseType(ExpressionBaseType(compound));
  // Durations of timers have a message of their own.
  if (!T3Is<T3ArrayType>(type) || IsTimerArray(type)) return;
  const Items<T3FieldValue> items(compound->value);
  for (auto* at : items)
    if (!at->field->is<T3NoFieldSpec>() || IsOfUnknownLength(at)) return;
  const auto bounds = KnownBounds(type);
  const bool sound = bounds && bounds->low <= bounds->high;
  if (sound && items.size() != bounds->Size()) vexa_filtered_error(ERR_arr_initializer, compound->position);
}

void CheckNotation(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (MixesNotations(compound->value)) vexa_filtered_error(ERR_mixed_notation, compound->position);
}

using Key = std::pair<bool, int64_t>;

// The name or the known index that a value is for.
std::optional<Key> KeyOf(T3FieldValue* value) {
  if (auto* name = value->field->try_as<T3FieldName>()) return Key(true, static_cast<int64_t>(name->name));
  auto* place = value->field->try_as<T3FieldIndex>();
  const auto index = place == nullptr ? std::nullopt : KnownInteger(place->index);
  return index ? std::optional(Key(false, *index)) : std::nullopt;
}

bool AllDiffer(std::vector<Key>& keys) {
  std::sort(keys.begin(), keys.end());
  return std::adjacent_find(keys.begin(), keys.end()) == keys.end();
}

void RefuseRepeatedKeys(T3CompoundValue* compound) {
  std::set<Key> keys;
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    const auto key = KeyOf(at);
    if (!key || keys.insert(*key).second) continue;
    if (key->first)
      vexa_filtered_error(ERR_name_duplicate_field, PositionOf(at), at->field->as<T3FieldName>()->name);
    else
      vexa_filtered_error(ERR_name_duplicate_field, PositionOf(at),
                          ("[" + std::to_string(key->second) + "]").c_str());
  }
}

// No field and no element has two values. Hardly any compound repeats one, so that is asked first.
void CheckKeys(T3Tree_Node* node) {
  static std::vector<Key> keys;
  auto* compound = node->as<T3CompoundValue>();
  if (HasFailed(compound)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(compound));
  if (type->is<T3UnionType>() || type->is<T3AnyType>()) return;  // refused for its number of alternatives
  keys.clear();
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (const auto key = KeyOf(at)) keys.push_back(*key);
  if (!AllDiffer(keys)) RefuseRepeatedKeys(compound);
}

void CheckPlaces(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (HasFailed(compound)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(compound));
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (auto* place = at->field->try_as<T3FieldIndex>(); place && IsOutOf(type, KnownInteger(place->index)))
      vexa_filtered_error(ERR_arr_out_of_bounds, PositionOf(at));
}

// A union has one of its alternatives; one that modifies another may leave it as it is.
void CheckAlternatives(T3Tree_Node* node) {
  auto* compound = node->as<T3CompoundValue>();
  if (HasFailed(compound)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(compound));
  if (!type->is<T3UnionType>() && !type->is<T3AnyType>()) return;
  auto* first = compound->value->try_as<T3FieldValue>();
  const bool modifies =
      InnermostTemplate() != nullptr && InnermostTemplate()->modifies->is<T3TemplateReference>();
  if (first == nullptr ? !modifies : first->next->is<T3FieldValue>()) ReportTypeError(compound, true);
}

// ---- Predefined functions ----

void CheckNumberOfDigits(T3Tree_Node* node, const char* name, int64_t base) {
  auto* function = node->as<_T3PreDefinedLengthFunction>();
  const auto value = ConstIntValue(function->value);
  const auto length = ConstIntValue(function->length);
  if ((value && *value < 0) || (length && *length < 0))
    return vexa_filtered_error(ERR_illegal_argument, function->position, name, "positive");
  if (!value || !length) return;
  const int digits = RequiredDigits(*value, base);
  if (digits > *length)
    vexa_filtered_error(ERR_illegal_conversion_size, function->position, std::to_string(*value).c_str(),
                        std::to_string(digits).c_str());
}

void CheckInt2Bit(T3Tree_Node* node) {
  CheckNumberOfDigits(node, "int2bit", 2);
}
void CheckInt2Hex(T3Tree_Node* node) {
  CheckNumberOfDigits(node, "int2hex", 16);
}
void CheckInt2Oct(T3Tree_Node* node) {
  CheckNumberOfDigits(node, "int2oct", 256);
}

void CheckInt2Char(T3Tree_Node* node) {
  const auto value = ConstIntValue(node->as<T3Int2Char>()->value);
  if (value && (*value < 0 || *value > 127))
    vexa_filtered_error(ERR_illegal_argument, PositionOf(node), "int2char", "between 0 and 127");
}

void CheckInt2UniChar(T3Tree_Node* node) {
  const auto value = ConstIntValue(node->as<T3Int2UniChar>()->value);
  if (value && *value < 0)
    vexa_filtered_error(ERR_illegal_argument, PositionOf(node), "int2unichar", "positive");
}

void RefuseNegative(T3Tree_Node* function, std::initializer_list<T3Tree_Node*> numbers) {
  for (T3Tree_Node* number : numbers)
    if (const auto value = ConstIntValue(number); value && *value < 0)
      return vexa_filtered_error(ERR_negative_value, PositionOf(function));
}

void CheckReplace(T3Tree_Node* node) {
  auto* replace = node->as<T3Replace>();
  RefuseNegative(replace, {replace->index, replace->count});
  if (HasFailed(replace->value) || HasFailed(replace->replace_with)) return;
  if (!IsStringCompatible(GetAddressBaseType(ExpressionBaseType(replace->value)),
                          GetAddressBaseType(ExpressionBaseType(replace->replace_with))))
    vexa_filtered_error(ERR_type_mismatch_replace, replace->position);
}

void CheckDecompose(T3Tree_Node* node) {
  const auto index = ConstIntValue(node->as<T3Decompose>()->index);
  const auto count = ConstIntValue(node->as<T3Decompose>()->count);
  if ((index && *index < 0) || (count && *count <= 0))
    vexa_filtered_error(ERR_positive_value, PositionOf(node));
}

// What has been decoded goes to the operand.
void CheckDecValue(T3Tree_Node* node) {
  T3Tree_Node* target = node->as<T3DecValue>()->decoded_value;
  if (!HasFailed(target) && !IsLvalue(target)) vexa_filtered_error(ERR_lvalue, PositionOf(target));
}

T3Tree_Node* OperandOf(T3Tree_Node* node) {
  return ConstraintOf(node->as<_T3PreDefinedTemplateFunction>()->template_value);
}

// Only a union has something chosen.
void CheckIsChosen(T3Tree_Node* node) {
  T3Tree_Node* operand = OperandOf(node);
  if (HasBeenRefused(operand)) return;
  auto* field = IsName(operand) ? nullptr : operand->try_as<T3Qualifier>();
  T3Tree_Node* whole = field == nullptr ? gT3NoType : GetAddressBaseType(ExpressionBaseType(field->base));
  const bool of_any =
      field != nullptr && (whole->is<T3AnyType>() || T3Is<T3TypeDecl>(BehindImport(Def(field))));
  if (!whole->is<T3UnionType>() && !of_any) ReportTypeError(operand, true);
}

// Only what has parts, characters or digits has a length.
bool HasLength(T3Tree_Node* type) {
  return IsRowOfParts(type) || IsRecordOrSetType(type) || type->is<T3ObjectIdentifierType>();
}

// Only what has parts has a number of them.
bool HasSize(T3Tree_Node* type) {
  return type->is<_T3StructuredType>() || type->is<_T3HomogeneousType>() || type->is<T3AnyType>() ||
         type->is<T3ObjectIdentifierType>();
}

// What lies in a component is no message.
bool HasEncoding(T3Tree_Node* type) {
  return !IsObjectType(type) && !type->is<T3Default>();
}

void RequireTypeOf(T3Tree_Node* operand, bool (*is_for)(T3Tree_Node*)) {
  if (HasBeenRefused(operand)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(operand));
  if (type != gT3WildcardType && !is_for(type)) ReportTypeError(operand, true);
}

void CheckLengthOf(T3Tree_Node* node) {
  RequireTypeOf(OperandOf(node), HasLength);
}
// A `*` in a list stands for several elements, which are counted.
void CheckLengthMatch(T3Tree_Node* node) {
  const bool several =
      IsElement(node->parent) && node->as<ExtraMatchingExpressions>()->object->is<T3AnyOrOmit>();
  if (!several) RequireTypeOf(node, IsRowOfParts);
}
void CheckSizeOf(T3Tree_Node* node) {
  RequireTypeOf(OperandOf(node), HasSize);
}
void CheckEncValue(T3Tree_Node* node) {
  RequireTypeOf(OperandOf(node), HasEncoding);
}

bool IsText(T3Tree_Node* type) {
  return IsCharStringType(type) || IsUniversalCharStringType(type);
}

void CheckSubstring(T3Tree_Node* node) {
  RequireTypeOf(OperandOf(node), IsRowOfParts);
  RefuseNegative(node, {node->as<T3Substring>()->index, node->as<T3Substring>()->count});
}

void CheckRegexp(T3Tree_Node* node) {
  RequireTypeOf(node->as<T3Regexp>()->argument, IsText);
  RefuseNegative(node, {node->as<T3Regexp>()->number});
}

void CheckIsPresent(T3Tree_Node* node) {
  T3Tree_Node* argument = OperandOf(node);
  if (HasBeenRefused(argument)) return;
  if (!argument->is<T3Qualifier>() || !IsFieldOptional(Def(argument)))
    vexa_filtered_error(ERR_illegal_ispresent, PositionOf(node));
}

void CheckValueOf(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<T3ValueOf>()->template_value;
  if (value->is<T3TemplateDef>() && T3Is<T3SignatureType>(ExpressionBaseType(value)))
    vexa_filtered_error(ERR_valueof_for_signature, PositionOf(node));
}

// ---- Operations that the control part refuses or is alone to have ----

void CheckSelf(T3Tree_Node* node) {
  RefuseInControlPart(node, "'self'");
}
void CheckMtc(T3Tree_Node* node) {
  RefuseInControlPart(node, "'mtc'");
}
void CheckSystem(T3Tree_Node* node) {
  RefuseInControlPart(node, "'system'");
}
// What an operation asks is one component, or one timer.
void CheckObject(T3Tree_Node* node, T3Tree_Node* object, bool timer, const char* operation) {
  if (HasFailed(object)) return;
  T3Tree_Node* type = ExpressionBaseType(object);
  if (type->is<T3ArrayType>())
    return vexa_filtered_error(ERR_illegal_operation_for_arr, PositionOf(node), operation);
  const bool fits = type->is<T3ComponentType>() || (timer && type->is<T3TimerType>());
  if (!fits || !IsRvalue(object)) vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
}

void CheckAlive(T3Tree_Node* node) {
  RefuseInControlPart(node, "'<comp>.alive'");
  CheckObject(node, node->as<T3Alive>()->object, false, "alive");
}
void CheckGetVerdict(T3Tree_Node* node) {
  RefuseInControlPart(node, "verdict operation");
}

// A timer may run in the control part.
void CheckRunning(T3Tree_Node* node) {
  T3Tree_Node* object = node->as<T3Running>()->object;
  const bool any = object->is<T3AnyComponent>() || object->is<T3AllComponent>();
  if (any || (!HasFailed(object) && T3Is<T3ComponentType>(ExpressionBaseType(object))))
    RefuseInControlPart(node, "'<comp>.running'");
  CheckObject(node, object, true, "running");
}

void CheckCreate(T3Tree_Node* node) {
  RefuseInControlPart(node, "'create'");
  T3Tree_Node* component = node->as<T3Create>()->component;
  if (HasFailed(component)) return;
  T3Tree_Node* type = ExpressionBaseType(component);
  if (type->is<T3ArrayType>())
    vexa_filtered_error(ERR_illegal_operation_for_arr, PositionOf(node), "create");
  else if (!type->is<T3ComponentType>())
    vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
}

void CheckExecute(T3Tree_Node* node) {
  if (!IsInControlPart(node)) vexa_filtered_error(ERR_not_allowed_here, PositionOf(node), "execute");
  auto* call = node->as<T3Execute>()->testcase->try_as<_T3Reference>();
  T3Tree_Node* def = call == nullptr ? nullptr : BehindImport(Def(call));
  const bool named = call != nullptr && (call->is<T3Identifier>() || call->is<_T3Qualification>());
  if (named && (T3Is<T3NoDecl>(def) || T3Is<T3ErrorType>(def))) return;
  if (!named || !call->is<T3Parameterization>() || !T3Is<T3Testcase>(def))
    vexa_filtered_error(ERR_execute_wo_testcase, PositionOf(node));
}

// ---- What changed between editions, and what the run-time system has not ----

struct ChangedFunction {
  T3Kind kind;
  const char* name;
};
constexpr ChangedFunction kChangedFunctions[] = {
    {T3Kind::T3Int2Char, "int2char"},       {T3Kind::T3Char2Int, "char2int"},
    {T3Kind::T3Int2UniChar, "int2unichar"}, {T3Kind::T3UniChar2Int, "unichar2int"},
    {T3Kind::T3Str2Int, "str2int"},         {T3Kind::T3Oct2Str, "oct2str"},
    {T3Kind::T3Str2Oct, "str2oct"}};

std::string MakeBackwardCompatibilityWarning(const char* name, const char* version) {
  return std::string("behavior of '") + name + "' changed since TTCN-3 " + version +
         " (specify language edition to resolve ambiguity)";
}

bool IsTTCN3LanguageSpecified(T3Tree_Node* module) {
  T3Tree_Node* edition = module->as<T3Module>()->representation;
  return T3Is<T3TTCN_3_Edition1>(edition) || T3Is<T3TTCN_3_Edition2>(edition) ||
         T3Is<T3TTCN_3_Edition3>(edition);
}

void WarnOfEdition(T3Tree_Node* node) {
  if (node->place == nullptr || IsTTCN3LanguageSpecified(node->place->vexa_my_module)) return;
  for (const ChangedFunction& changed : kChangedFunctions)
    if (changed.kind == node->kind) WarnAt(node, MakeBackwardCompatibilityWarning(changed.name, "3.1.1"));
}

void WarnOfUniversalText(T3Tree_Node* node) {
  if (node->place != nullptr && T3Is<T3UniversalCharStringType>(ExpressionBaseType(node)))
    WarnAt(node,
           "concatenation of universal characters currently not supported by the TTCN-3 run-time system");
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3OctStringLiteral, CheckOctets},
    {T3Kind::T3UnivCharLiteral, CheckQuadruple},
    {T3Kind::T3Subscription, CheckIndex},
    {T3Kind::T3CompoundValue, CheckNotation},
    {T3Kind::T3CompoundValue, CheckKeys},
    {T3Kind::T3CompoundValue, CheckPlaces},
    {T3Kind::T3CompoundValue, CheckAlternatives},
    {T3Kind::T3CompoundValue, CheckPermutations},
    {T3Kind::T3CompoundValue, CheckArrayValue},
    {T3Kind::T3Int2Bit, CheckInt2Bit},
    {T3Kind::T3Int2Hex, CheckInt2Hex},
    {T3Kind::T3Int2Oct, CheckInt2Oct},
    {T3Kind::T3Int2Char, CheckInt2Char},
    {T3Kind::T3Int2UniChar, CheckInt2UniChar},
    {T3Kind::T3Replace, CheckReplace},
    {T3Kind::T3Substring, CheckSubstring},
    {T3Kind::T3Regexp, CheckRegexp},
    {T3Kind::T3Decompose, CheckDecompose},
    {T3Kind::T3DecValue, CheckDecValue},
    {T3Kind::T3IsPresent, CheckIsPresent},
    {T3Kind::T3IsChosen, CheckIsChosen},
    {T3Kind::T3LengthOf, CheckLengthOf},
    {T3Kind::T3LengthMatch, CheckLengthMatch},
    {T3Kind::T3IfPresentIfLengthMatch, CheckLengthMatch},
    {T3Kind::T3SizeOf, CheckSizeOf},
    {T3Kind::T3SizeOfType, CheckSizeOf},
    {T3Kind::T3EncValue, CheckEncValue},
    {T3Kind::T3ValueOf, CheckValueOf},
    {T3Kind::T3Self, CheckSelf},
    {T3Kind::T3MTC, CheckMtc},
    {T3Kind::T3System, CheckSystem},
    {T3Kind::T3Running, CheckRunning},
    {T3Kind::T3Alive, CheckAlive},
    {T3Kind::T3GetVerdict, CheckGetVerdict},
    {T3Kind::T3Create, CheckCreate},
    {T3Kind::T3Execute, CheckExecute},
    {T3Kind::T3Int2Char, WarnOfEdition},
    {T3Kind::T3Char2Int, WarnOfEdition},
    {T3Kind::T3Int2UniChar, WarnOfEdition},
    {T3Kind::T3UniChar2Int, WarnOfEdition},
    {T3Kind::T3Str2Int, WarnOfEdition},
    {T3Kind::T3Oct2Str, WarnOfEdition},
    {T3Kind::T3Str2Oct, WarnOfEdition},
    {T3Kind::T3Concatenate, WarnOfUniversalText},
};
}  // namespace

std::span<const T3Rule> ExpressionRules() {
  return kRules;
}
