#include "analysis/types/T3KnownNumbers.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unordered_map>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/constants/T3KnownTexts.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "support/ModuleCaches.h"

namespace {
using Integer = std::optional<int64_t>;
using Float = std::optional<double>;

// By the number of an expression: what has been computed, nothing while it is.
std::unordered_map<uint32_t, Integer>& g_integers = *new std::unordered_map<uint32_t, Integer>;
std::unordered_map<uint32_t, Float>& g_floats = *new std::unordered_map<uint32_t, Float>;

// Expressions that nest deeper, by themselves or through constants, are not computed.
constexpr int kMaxDepthOfNumbers = 200;
int g_depth_of_numbers = 0;

// ---- Operands ----

// All of a text as a number, which may have a sign.
template <class Number, class... Format>
std::optional<Number> Parsed(std::string_view text, Format... format) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  Number number{};
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
  if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

Integer NumberOfString(T3Tree_Node* operand) {
  const auto digits = KnownText(operand);
  if (!digits || digits->kind == T3Kind::T3CharStringLiteral) return std::nullopt;
  return Parsed<int64_t>(digits->text, digits->kind == T3Kind::T3BitStringLiteral ? 2 : 16);
}

Integer NumberOfCharacter(T3Tree_Node* operand) {
  const auto text = KnownCharacters(operand);
  if (!text || text->size() != 1 || (text->front() & 0x80) != 0) return std::nullopt;
  return text->front();
}

Integer NumberOfText(T3Tree_Node* operand) {
  const auto text = KnownCharacters(operand);
  return text ? Parsed<int64_t>(*text) : std::nullopt;
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
  return type == nullptr ? std::nullopt : EnumValueNumber(type, name);
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

Integer LengthCall(T3Tree_Node* function) {
  T3Tree_Node* operand = ConstantOperand(function->as<_T3PreDefinedTemplateFunction>()->template_value);
  if (operand == nullptr) return std::nullopt;
  if (HasFields(operand)) return NumberOfFields(operand);
  bool known = true;
  const int64_t length = ExpressionLength(ConstantValueOf(operand), known);
  if (known) return length;
  const auto text = KnownText(operand);
  return text ? Integer(LengthOfText(*text)) : std::nullopt;
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
  if (call->is<T3LengthOf>() || call->is<T3SizeOf>()) return LengthCall(call);
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

Integer NumberOfForm(T3Tree_Node* node) {
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

// ---- Floats ----

// A number with a sign, digits, and nothing behind them.
Float FloatOfText(T3Tree_Node* operand) {
  const auto text = KnownCharacters(operand);
  if (!text || text->find_first_not_of("0123456789.eE+-") != std::string::npos) return std::nullopt;
  const size_t first = text->find_first_not_of("+-");
  if (first > 1 || std::isdigit(static_cast<unsigned char>((*text)[first])) == 0) return std::nullopt;
  char* end = nullptr;
  const double number = std::strtod(text->c_str(), &end);
  return *end == '\0' ? Float(number) : std::nullopt;
}

Float FloatComputed(T3Tree_Node* operation, double left, double right) {
  switch (operation->kind) {
    case T3Kind::T3Plus:
      return left + right;
    case T3Kind::T3Minus:
      return left - right;
    case T3Kind::T3Multiply:
      return left * right;
    case T3Kind::T3Divide:
      return right == 0 ? std::nullopt : Float(left / right);
    default:
      return std::nullopt;
  }
}

Float FloatOfForm(T3Tree_Node* node) {
  if (auto* minus = node->try_as<T3UnaryMinus>()) {
    const Float value = KnownFloat(minus->arg);
    return value ? Float(-*value) : std::nullopt;
  }
  if (node->is<_T3BinaryArithmeticExpression>()) {
    const Float left = KnownFloat(node->as<_T3BinaryExpression>()->left);
    const Float right = left ? KnownFloat(node->as<_T3BinaryExpression>()->right) : std::nullopt;
    return right ? FloatComputed(node, *left, *right) : std::nullopt;
  }
  if (auto* text = node->try_as<T3Str2Float>()) return FloatOfText(text->value);
  if (auto* converted = node->try_as<T3Int2Float>()) {
    const Integer number = KnownInteger(converted->value);
    return number ? Float(static_cast<double>(*number)) : std::nullopt;
  }
  T3Tree_Node* value = ConstantValueOf(node);
  return value == node ? std::nullopt : KnownFloat(value);
}

// What is still being computed needs itself, and is not known.
template <class Number>
std::optional<Number> Once(std::unordered_map<uint32_t, std::optional<Number>>& known,
                           T3Tree_Node* expression, std::optional<Number> (*compute)(T3Tree_Node*)) {
  if (const auto [entry, made] = known.try_emplace(expression->number); !made) return entry->second;
  if (g_depth_of_numbers >= kMaxDepthOfNumbers) return std::nullopt;
  ++g_depth_of_numbers;
  const auto value = compute(expression);
  --g_depth_of_numbers;
  return known[expression->number] = value;
}
}  // namespace

Integer KnownInteger(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return std::nullopt;
  if (const Integer folded = ConstIntValue(expression)) return folded;
  return Once(g_integers, expression, NumberOfForm);
}

Float KnownFloat(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return std::nullopt;
  if (const Float folded = ConstFloatValue(expression)) return folded;
  return Once(g_floats, expression, FloatOfForm);
}

namespace {
const ModuleCache kKnownNumbersCache{[] {
                                       g_integers.clear();
                                       g_floats.clear();
                                     },
                                     ModuleCache::Holds::ForTree};
}  // namespace
