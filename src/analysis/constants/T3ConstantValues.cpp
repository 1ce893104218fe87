// Values behind constant references, and lengths of constant expressions.
#include "analysis/constants/T3ConstantValues.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "analysis/types/T3Constants.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/StringM.h"
#include "support/ModuleCaches.h"

namespace {
using Length = std::optional<int64_t>;

struct Kept {
  /// By the number of a constant, or of a reference to a part of one: the value, null while it is looked for.
  std::unordered_map<uint32_t, T3Tree_Node*> values;
  /// By the number of an expression of several parts.
  std::unordered_map<uint32_t, Length> lengths;
};
Kept& g_kept = *new Kept;

T3Tree_Node* Absent() {
  return _sgT3NoExpression(true);
}

// ---- Values ----

// Forward references through fields nest; a chain of them that is longer than this is left alone.
constexpr int kMaxDepthOfValues = 500;
int g_depth_of_values = 0;

// What a reference to a field or an element of a constant stands for.
T3Tree_Node* GetQualifiedValue(T3Tree_Node* reference) {
  if (g_depth_of_values >= kMaxDepthOfValues) return Absent();
  ++g_depth_of_values;
  T3Tree_Node* result = nullptr;
  if (auto* compound = ConstantValueOf(reference->as<_T3Qualification>()->base)->try_as<T3CompoundValue>())
    result = SelectedPart(compound, reference);
  --g_depth_of_values;
  return result == nullptr ? Absent() : result;
}

bool IsFieldOrElement(T3Tree_Node* reference) {
  return reference->is<T3Subscription>() || (reference->is<T3Qualifier>() && !IsName(reference));
}

// The constant or the reference under which a value is kept; null for what stands for itself.
T3Tree_Node* KeyOf(T3Tree_Node* expression) {
  if (IsFieldOrElement(expression)) return expression;
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return nullptr;
  T3Tree_Node* decl = BehindImport(Def(expression));
  return T3Is<T3ConstDecl>(decl) ? decl : nullptr;
}

// ---- Lengths ----

int64_t Sum(int64_t a, int64_t b) {
  int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<int64_t>::max() : sum;
}

int64_t Product(int64_t a, int64_t b) {
  int64_t product = 0;
  return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<int64_t>::max() : product;
}

// The digits of a binary string literal, which is 'digits'X.
int64_t Digits(tStringRef text) {
  const std::string_view characters = StringM::StGetString(text);
  return std::count_if(characters.begin(), characters.end(), [](char c) { return c != '\'' && c != ' '; }) -
         1;
}

Length CharacterCount(T3Tree_Node* literal) {
  const auto text = ConstCharValue(literal);
  if (!text) return std::nullopt;
  return std::count_if(text->begin(), text->end(), [](char c) { return (c & 0xc0) != 0x80; });
}

// The largest constant index of a value in index notation, or -1.
int64_t MaxFieldIndex(T3CompoundValue* compound) {
  int64_t largest = -1;
  for (auto* at : Items<T3FieldValue>(compound->value))
    if (auto* place = at->field->try_as<T3FieldIndex>())
      largest = std::max(largest, ConstIntValue(place->index).value_or(-1));
  return largest;
}

int64_t CompoundValueLength(T3CompoundValue* compound) {
  const int64_t largest = MaxFieldIndex(compound);
  if (largest >= 0) return Sum(largest, 1);
  return static_cast<int64_t>(Items<T3FieldValue>(compound->value).size());
}

// The digits of an integer in decimal notation, with its sign.
Length IntegerStrLength(T3Tree_Node* expression) {
  const auto value = ConstIntValue(expression);
  if (!value) return std::nullopt;
  return static_cast<int64_t>(std::to_string(*value).size());
}

// The length of what has one of its own.
Length SimpleLength(T3Tree_Node* value) {
  if (auto* literal = value->try_as<T3BitStringLiteral>()) return Digits(literal->value);
  if (auto* literal = value->try_as<T3HexStringLiteral>()) return Digits(literal->value);
  if (auto* literal = value->try_as<T3OctStringLiteral>()) return Digits(literal->value) / 2;
  if (value->is<T3CharStringLiteral>()) return CharacterCount(value);
  if (auto* compound = value->try_as<T3CompoundValue>()) return CompoundValueLength(compound);
  if (value->is<_T3PreDefinedLengthFunction>())
    return ConstIntValue(value->as<_T3PreDefinedLengthFunction>()->length);
  if (auto* digits = value->try_as<T3Int2Str>()) return IntegerStrLength(digits->value);
  if (value->is<T3Int2Char>() || value->is<T3Int2UniChar>()) return 1;
  return std::nullopt;
}

bool IsStringConversion(T3Tree_Node* value) {
  return value->is<T3Hex2Oct>() || value->is<T3Bit2Oct>() || value->is<T3Hex2Bit>() ||
         value->is<T3Oct2Bit>() || value->is<T3Bit2Hex>() || value->is<T3Oct2Hex>();
}

// The operands that the length of an expression is made from.
std::vector<T3Tree_Node*> SizedOperands(T3Tree_Node* value) {
  if (value->is<T3Concatenate>() || value->is<_T3BinaryStringLogic>())
    return {value->as<_T3BinaryExpression>()->left, value->as<_T3BinaryExpression>()->right};
  if (value->is<_T3ShiftOrRotateExpression>()) return {value->as<_T3ShiftOrRotateExpression>()->value};
  if (IsStringConversion(value)) return {value->as<_T3PreDefinedFunction>()->value};
  return {};
}

int64_t CombinedLength(T3Tree_Node* value, int64_t first, int64_t last) {
  switch (value->kind) {
    case T3Kind::T3Concatenate:
      return Sum(first, last);
    case T3Kind::T3Hex2Oct:
      return Sum(first, 1) / 2;
    case T3Kind::T3Bit2Oct:
      return Sum(first, 7) / 8;
    case T3Kind::T3Bit2Hex:
      return Sum(first, 3) / 4;
    case T3Kind::T3Hex2Bit:
      return Product(first, 4);
    case T3Kind::T3Oct2Bit:
      return Product(first, 8);
    case T3Kind::T3Oct2Hex:
      return Product(first, 2);
    default:  // shifts have one operand, logic takes the longer one
      return std::max(first, last);
  }
}

// What an operand stands for. An element of a list is not looked into.
T3Tree_Node* SizedValue(T3Tree_Node* operand) {
  return operand->is<T3Subscription>() ? Absent() : ConstantValueOf(operand);
}

// The length of a value whose parts are known, those that are none counting as unknown.
Length LengthFromParts(T3Tree_Node* value, const std::vector<T3Tree_Node*>& operands) {
  const auto length_of = [](T3Tree_Node* operand) {
    const auto kept = g_kept.lengths.find(SizedValue(operand)->number);
    return kept == g_kept.lengths.end() ? Length() : kept->second;
  };
  const Length first = length_of(operands.front());
  const Length last = length_of(operands.back());
  return first && last ? Length(CombinedLength(value, *first, *last)) : Length();
}

// Works off a value and all parts that it is made from, the parts first. A value that needs itself is one
// without a length.
Length LengthOf(T3Tree_Node* root) {
  std::vector<T3Tree_Node*> open{root};
  while (!open.empty()) {
    T3Tree_Node* value = open.back();
    const auto operands = SizedOperands(value);
    const bool begun = !g_kept.lengths.emplace(value->number, std::nullopt).second;
    if (begun || operands.empty()) {
      open.pop_back();
      if (operands.empty()) g_kept.lengths[value->number] = SimpleLength(value);
      if (!operands.empty()) g_kept.lengths[value->number] = LengthFromParts(value, operands);
      continue;
    }
    for (T3Tree_Node* operand : operands)
      if (T3Tree_Node* part = SizedValue(operand); g_kept.lengths.count(part->number) == 0)
        open.push_back(part);
  }
  return g_kept.lengths[root->number];
}
}  // namespace

T3Tree_Node* ConstantValueOf(T3Tree_Node* expression) {
  std::vector<uint32_t> way;
  for (;;) {
    T3Tree_Node* key = KeyOf(expression);
    if (key == nullptr) break;
    const auto [kept, made] = g_kept.values.emplace(key->number, nullptr);
    if (!made) {
      expression = kept->second == nullptr ? Absent() : kept->second;
      break;
    }
    way.push_back(key->number);
    expression = key->is<T3ConstDecl>() ? key->as<T3ConstDecl>()->value : GetQualifiedValue(key);
    if (!T3Is<_T3Expression>(expression)) expression = Absent();
  }
  for (const uint32_t number : way) g_kept.values[number] = expression;
  return expression;
}

int64_t ExpressionLength(T3Tree_Node* expression, bool& known) {
  T3Tree_Node* value = SizedValue(expression);
  const auto kept = g_kept.lengths.find(value->number);
  const Length length = kept != g_kept.lengths.end() ? kept->second : LengthOf(value);
  known = known && length.has_value();
  return length.value_or(0);
}

namespace {
const ModuleCache kConstantValuesCache{[] {
                                         g_kept.values.clear();
                                         g_kept.lengths.clear();
                                       },
                                       ModuleCache::Holds::ForTree};
}  // namespace
