#include "analysis/types/T3KnownIntegers.h"

#include <charconv>
#include <cmath>
#include <string>
#include <unordered_map>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "support/StringM.h"

namespace {
using Integer = std::optional<int64_t>;

// Expressions that nest deeper, by themselves or through constants, are not computed.
constexpr int kMaxDepth = 200;
int g_depth = 0;

// ---- Operands ----

// All of a text as a number.
template <class Number, class... Format>
std::optional<Number> Parsed(const std::string& text, Format... format) {
  Number number{};
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The digits of a binary string, which is 'digits'X.
Integer NumberOfDigits(tStringRef literal, int base) {
  const std::string_view text = StringM::StGetString(literal);
  std::string digits;
  for (const char c : text.substr(0, text.rfind('\'')))
    if (c != '\'' && c != ' ') digits += c;
  return Parsed<int64_t>(digits, base);
}

Integer NumberOfString(T3Tree_Node* operand) {
  T3Tree_Node* value = ConstantValueOf(operand);
  if (auto* bits = value->try_as<T3BitStringLiteral>()) return NumberOfDigits(bits->value, 2);
  if (auto* digits = value->try_as<T3HexStringLiteral>()) return NumberOfDigits(digits->value, 16);
  if (auto* octets = value->try_as<T3OctStringLiteral>()) return NumberOfDigits(octets->value, 16);
  return std::nullopt;
}

Integer NumberOfCharacter(T3Tree_Node* operand) {
  const auto text = ConstCharValue(operand);
  if (!text || text->size() != 1 || (text->front() & 0x80) != 0) return std::nullopt;
  return text->front();
}

Integer NumberOfText(T3Tree_Node* operand) {
  const auto text = ConstCharValue(operand);
  return text ? Parsed<int64_t>(*text) : std::nullopt;
}

std::optional<double> KnownFloat(T3Tree_Node* operand) {
  if (const auto number = ConstFloatValue(operand)) return number;
  auto* converted = operand->try_as<T3Int2Float>();
  const Integer number = converted == nullptr ? std::nullopt : KnownInteger(converted->value);
  return number ? std::optional<double>(static_cast<double>(*number)) : std::nullopt;
}

Integer Truncated(T3Tree_Node* operand) {
  const auto number = KnownFloat(operand);
  if (!number || !(std::fabs(*number) < 9.2e18)) return std::nullopt;
  return static_cast<int64_t>(*number);
}

Integer NumberOfLiteral(T3Tree_Node* operand) {
  auto* type = ExpressionBaseType(operand)->try_as<T3EnumType>();
  T3Tree_Node* literal = ConstantValueOf(operand);
  tIdent name = NoIdent;
  if (auto* identifier = literal->try_as<T3Identifier>()) name = identifier->id;
  if (auto* qualifier = literal->try_as<T3Qualifier>()) name = qualifier->id;
  if (type == nullptr) return std::nullopt;
  for (auto* at : Items<T3EnumValue>(type->values))
    if (at->name == name) return GetEnumValueNumber(type, name);
  return std::nullopt;
}

// What a function is asked about: a value that is a constant, or null.
T3Tree_Node* ConstantOperand(T3Tree_Node* operand) {
  if (auto* definition = operand->try_as<T3TemplateDef>()) operand = definition->constraint;
  return T3Is<_T3Expression>(operand) && IsConstant(operand) ? operand : nullptr;
}

// The fields of a record, set or union that are there.
Integer NumberOfFields(T3Tree_Node* value) {
  auto* compound = ConstantValueOf(value)->try_as<T3CompoundValue>();
  if (compound == nullptr) return std::nullopt;
  int64_t count = 0;
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    T3Tree_Node* field = ConstantValueOf(at->value);
    if (field->is<T3NoExpression>()) return std::nullopt;
    if (!field->is<T3Omit>() && !field->is<T3NotUsedSymbol>()) ++count;
  }
  return count;
}

bool HasFields(T3Tree_Node* operand) {
  return GetAddressBaseType(ExpressionBaseType(operand))->is<_T3StructuredType>();
}

Integer LengthOf(T3Tree_Node* function) {
  T3Tree_Node* operand = ConstantOperand(function->as<_T3PreDefinedTemplateFunction>()->template_value);
  if (operand == nullptr) return std::nullopt;
  if (HasFields(operand)) return NumberOfFields(operand);
  bool known = true;
  const int64_t length = ExpressionLength(ConstantValueOf(operand), known);
  return known ? Integer(length) : std::nullopt;
}

// What a type says of the number of its parts, whatever a value of it has.
Integer SizeByType(T3Tree_Node* function) {
  T3Tree_Node* operand = function->as<T3SizeOfType>()->template_value;
  if (auto* definition = operand->try_as<T3TemplateDef>()) operand = definition->constraint;
  T3Tree_Node* type = T3Is<_T3Expression>(operand) ? ExpressionBaseType(operand) : gT3ErrorType;
  const auto bounds = type->is<T3ArrayType>() ? KnownBounds(type) : std::nullopt;
  if (bounds) return static_cast<int64_t>(bounds->Size());
  if (!type->is<_T3StructuredType>()) return std::nullopt;
  return static_cast<int64_t>(Items<T3FieldType>(type->as<_T3StructuredType>()->body).size());
}

// ---- Forms ----

Integer OfFunction(T3Tree_Node* call) {
  if (call->is<T3LengthOf>() || call->is<T3SizeOf>()) return LengthOf(call);
  if (call->is<T3SizeOfType>()) return SizeByType(call);
  auto* function = call->try_as<_T3PreDefinedFunction>();
  if (function == nullptr) return std::nullopt;
  switch (call->kind) {
    case T3Kind::T3Float2Int:
      return Truncated(function->value);
    case T3Kind::T3Char2Int:
    case T3Kind::T3UniChar2Int:
      return NumberOfCharacter(function->value);
    case T3Kind::T3Str2Int:
      return NumberOfText(function->value);
    case T3Kind::T3Bit2Int:
    case T3Kind::T3Hex2Int:
    case T3Kind::T3Oct2Int:
      return NumberOfString(function->value);
    case T3Kind::T3Enum2Int:
      return NumberOfLiteral(function->value);
    default:
      return std::nullopt;
  }
}

// Arithmetic of 64 bits that wraps. What would be an error when the suite runs is not known.
Integer Computed(T3Tree_Node* operation, int64_t left, int64_t right) {
  const auto a = static_cast<uint64_t>(left);
  const auto b = static_cast<uint64_t>(right);
  switch (operation->kind) {
    case T3Kind::T3Plus:
      return static_cast<int64_t>(a + b);
    case T3Kind::T3Minus:
      return static_cast<int64_t>(a - b);
    case T3Kind::T3Multiply:
      return static_cast<int64_t>(a * b);
    default:
      break;
  }
  if (right == 0 || (right < 0 && operation->is<T3Mod>())) return std::nullopt;
  if (right == -1) return operation->is<T3Divide>() ? Integer(static_cast<int64_t>(-a)) : Integer(0);
  if (operation->is<T3Divide>()) return left / right;
  const int64_t rest = left % right;
  return rest < 0 && operation->is<T3Mod>() ? rest + right : rest;
}

Integer OfForm(T3Tree_Node* node) {
  if (auto* minus = node->try_as<T3UnaryMinus>()) {
    const Integer value = KnownInteger(minus->arg);
    return value ? Integer(static_cast<int64_t>(-static_cast<uint64_t>(*value))) : std::nullopt;
  }
  if (node->is<_T3BinaryArithmeticExpression>()) {
    const Integer left = KnownInteger(node->as<_T3BinaryExpression>()->left);
    const Integer right = left ? KnownInteger(node->as<_T3BinaryExpression>()->right) : std::nullopt;
    return left && right ? Computed(node, *left, *right) : std::nullopt;
  }
  if (T3Tree_Node* value = ConstantValueOf(node); value != node) return KnownInteger(value);
  return OfFunction(node);
}
}  // namespace

Integer KnownInteger(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return std::nullopt;
  if (const Integer folded = ConstIntValue(expression)) return folded;
  // What is still being computed needs itself, and is not known.
  static auto& known = *new std::unordered_map<uint32_t, Integer>;
  if (const auto [entry, made] = known.try_emplace(expression->number); !made) return entry->second;
  if (g_depth >= kMaxDepth) return std::nullopt;
  ++g_depth;
  const Integer value = OfForm(expression);
  --g_depth;
  return known[expression->number] = value;
}
