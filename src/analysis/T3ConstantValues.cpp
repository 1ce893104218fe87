// Lengths and equality of constant expressions.
#include "analysis/T3ConstantValues.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "analysis/T3Constants.h"
#include "analysis/T3Names.h"
#include "analysis/T3Types.h"
#include "driver/T3UTF8String.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/StringM.h"

namespace {
T3Tree_Node* Absent() {
  return _sgT3NoExpression(true);
}

// The value of a member in a compound value: by name, or by number in a list of fields.
T3Tree_Node* LocateField(T3Tree_Node* compound, T3Tree_Node* type, tIdent field) {
  auto* value = compound->try_as<T3CompoundValue>();
  if (value == nullptr) return Absent();
  long index = T3Is<_T3StructuredType>(type) ? GetAlternativeIndex(type, field, false) : -1;
  for (T3Tree_Node* at = value->value; at->is<T3FieldValue>(); at = at->as<T3FieldValue>()->next) {
    auto* element = at->as<T3FieldValue>();
    auto* name = element->field->try_as<T3FieldName>();
    if (name != nullptr ? name->name == field : index-- == 0) return element->value;
  }
  return Absent();
}

T3Tree_Node* LocateElement(T3Tree_Node* compound, int64_t index) {
  auto* value = compound->try_as<T3CompoundValue>();
  if (value == nullptr) return Absent();
  int64_t position = 0;
  for (T3Tree_Node* at = value->value; at->is<T3FieldValue>();
       at = at->as<T3FieldValue>()->next, ++position) {
    auto* place = at->as<T3FieldValue>()->field->try_as<T3FieldIndex>();
    if (place == nullptr ? position == index : ConstIntValue(place->index) == index)
      return at->as<T3FieldValue>()->value;
  }
  return Absent();
}

// One step from a constant reference to what it stands for; null when it is no such reference.
T3Tree_Node* StepOf(T3Tree_Node* expression) {
  if (auto* qualifier = expression->try_as<T3Qualifier>()) {
    if (!T3Is<T3Module>(Def(qualifier->base)))
      return LocateField(ConstantValueOf(qualifier->base), ExpressionBaseType(qualifier->base),
                         qualifier->id);
  }
  if (auto* subscription = expression->try_as<T3Subscription>()) {
    const auto index = ConstIntValue(subscription->index);
    T3Tree_Node* base = ExpressionBaseType(subscription->base);
    if (!index || !base->is<_T3HomogeneousType>()) return Absent();
    const int64_t first = base->is<T3ArrayType>() ? LowerBoundValue(base) : 0;
    return LocateElement(ConstantValueOf(subscription->base), *index - first);
  }
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return nullptr;
  T3Tree_Node* decl = BehindImport(Def(expression));
  if (!T3Is<T3ConstDecl>(decl)) return nullptr;
  return T3Is<_T3Expression>(decl->as<T3ConstDecl>()->value) ? decl->as<T3ConstDecl>()->value : Absent();
}

std::string_view Text(tStringRef text) {
  return StringM::StGetString(text);
}

// The digits of a binary string literal, which is 'digits'X.
int64_t Digits(tStringRef text) {
  return std::count_if(Text(text).begin(), Text(text).end(), [](char c) { return c != '\'' && c != ' '; }) -
         1;
}

int64_t CharacterCount(T3Tree_Node* literal) {
  const auto text = ConstCharValue(literal);
  return std::count_if(text->begin(), text->end(), [](char c) { return (c & 0xc0) != 0x80; });
}

int64_t CompoundValueLength(T3CompoundValue* compound) {
  int64_t length = 0;
  int64_t largest = -1;
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>();
       at = at->as<T3FieldValue>()->next, ++length) {
    auto* place = at->as<T3FieldValue>()->field->try_as<T3FieldIndex>();
    if (place != nullptr) largest = std::max(largest, ConstIntValue(place->index).value_or(-1));
  }
  return largest >= 0 ? largest + 1 : length;
}

int64_t ConversionLength(_T3PreDefinedFunction* function, bool& known) {
  if (function->is<_T3PreDefinedLengthFunction>()) {
    const auto length = ConstIntValue(function->as<_T3PreDefinedLengthFunction>()->length);
    known = known && length.has_value();
    return length.value_or(0);
  }
  switch (function->kind) {
    case T3Kind::T3Int2Str: {
      const auto value = ConstIntValue(function->value);
      known = known && value.has_value();
      return value ? static_cast<int64_t>(std::to_string(*value).size()) : 0;
    }
    case T3Kind::T3Int2Char:
    case T3Kind::T3Int2UniChar:
      return 1;
    case T3Kind::T3Hex2Oct:
      return (ExpressionLength(function->value, known) + 1) / 2;
    case T3Kind::T3Bit2Oct:
      return (ExpressionLength(function->value, known) + 7) / 8;
    case T3Kind::T3Hex2Bit:
      return ExpressionLength(function->value, known) * 4;
    case T3Kind::T3Oct2Bit:
      return ExpressionLength(function->value, known) * 8;
    case T3Kind::T3Bit2Hex:
      return (ExpressionLength(function->value, known) + 3) / 4;
    case T3Kind::T3Oct2Hex:
      return ExpressionLength(function->value, known) * 2;
    default:
      known = false;
      return 0;
  }
}

int64_t OperandLength(T3Tree_Node* expression, bool& known) {
  expression = ConstantValueOf(expression);
  if (auto* literal = expression->try_as<T3BitStringLiteral>()) return Digits(literal->value);
  if (auto* literal = expression->try_as<T3HexStringLiteral>()) return Digits(literal->value);
  if (auto* literal = expression->try_as<T3OctStringLiteral>()) return Digits(literal->value) / 2;
  if (expression->is<T3CharStringLiteral>() || expression->is<T3UnivCharLiteral>())
    return CharacterCount(expression);
  if (auto* compound = expression->try_as<T3CompoundValue>()) return CompoundValueLength(compound);
  if (expression->is<_T3PreDefinedFunction>())
    return ConversionLength(expression->as<_T3PreDefinedFunction>(), known);
  if (expression->is<_T3ShiftOrRotateExpression>())
    return ExpressionLength(expression->as<_T3ShiftOrRotateExpression>()->value, known);
  if (auto* negated = expression->try_as<T3UnaryNot4b>()) return ExpressionLength(negated->arg, known);
  if (expression->is<T3Concatenate>() || expression->is<_T3BinaryStringLogic>())
    return ExpressionLength(expression, known);
  known = false;
  return 0;
}

// ---- Equality ----

// The values of a compound by the number of field or element.
using ExpressionMap = std::map<int64_t, T3Tree_Node*>;

ExpressionMap ConstructExpressionMap(T3CompoundValue* compound) {
  ExpressionMap result;
  T3Tree_Node* type = ExpressionBaseType(compound);
  int64_t position = 0;
  for (T3Tree_Node* at = compound->value; at->is<T3FieldValue>();
       at = at->as<T3FieldValue>()->next, ++position) {
    auto* element = at->as<T3FieldValue>();
    int64_t key = position;
    if (auto* name = element->field->try_as<T3FieldName>())
      key = T3Is<_T3StructuredType>(type) ? GetAlternativeIndex(type, name->name, false) : name->name;
    if (auto* place = element->field->try_as<T3FieldIndex>()) key = ConstIntValue(place->index).value_or(-1);
    if (!element->value->is<T3NotUsedSymbol>()) result[key] = element->value;
  }
  return result;
}

bool CompoundValuesAreEqual(T3CompoundValue* a, T3CompoundValue* b) {
  const ExpressionMap left = ConstructExpressionMap(a);
  const ExpressionMap right = ConstructExpressionMap(b);
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& x, const auto& y) {
    return x.first == y.first && ExpressionsAreEqual(x.second, y.second);
  });
}

bool ObjIdListsAreEqual(T3Tree_Node* a, T3Tree_Node* b) {
  for (; a->is<T3ObjIdItem>() && b->is<T3ObjIdItem>();
       a = a->as<T3ObjIdItem>()->next, b = b->as<T3ObjIdItem>()->next) {
    T3Tree_Node* x = a->as<T3ObjIdItem>()->obj_id_item;
    T3Tree_Node* y = b->as<T3ObjIdItem>()->obj_id_item;
    if (x->is<_T3Expression>() && y->is<_T3Expression>() && !x->is<T3Parameterization>() &&
        !y->is<T3Parameterization>() && !ExpressionsAreEqual(x, y))
      return false;
  }
  return !a->is<T3ObjIdItem>() && !b->is<T3ObjIdItem>();
}

// The literal of an enumeration that an expression is, or NoIdent.
tIdent EnumLiteral(T3Tree_Node* expression) {
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return NoIdent;
  T3Tree_Node* def = Def(expression);
  if (!T3Is<T3EnumType>(def) && !T3Is<T3AmbiguousType>(def)) return NoIdent;
  if (auto* identifier = expression->try_as<T3Identifier>()) return identifier->id;
  return expression->as<T3Qualifier>()->id;
}

bool SameFormIsEqual(T3Tree_Node* a, T3Tree_Node* b) {
  switch (a->kind) {
    case T3Kind::T3BooleanLiteral:
      return a->as<T3BooleanLiteral>()->value == b->as<T3BooleanLiteral>()->value;
    case T3Kind::T3VerdictLiteral:
      return a->as<T3VerdictLiteral>()->value == b->as<T3VerdictLiteral>()->value;
    case T3Kind::T3BitStringLiteral:
      return Text(a->as<T3BitStringLiteral>()->value) == Text(b->as<T3BitStringLiteral>()->value);
    case T3Kind::T3HexStringLiteral:
      return Text(a->as<T3HexStringLiteral>()->value) == Text(b->as<T3HexStringLiteral>()->value);
    case T3Kind::T3OctStringLiteral:
      return Text(a->as<T3OctStringLiteral>()->value) == Text(b->as<T3OctStringLiteral>()->value);
    case T3Kind::T3ObjectIdentifierLiteral:
      return ObjIdListsAreEqual(a->as<T3ObjectIdentifierLiteral>()->value,
                                b->as<T3ObjectIdentifierLiteral>()->value);
    case T3Kind::T3CompoundValue:
      return CompoundValuesAreEqual(a->as<T3CompoundValue>(), b->as<T3CompoundValue>());
    case T3Kind::T3Omit:
    case T3Kind::T3Null:
      return true;
    default:
      return false;
  }
}
}  // namespace

T3Tree_Node* ConstantValueOf(T3Tree_Node* expression) {
  // Constants that stand for each other end where the slower walker is met.
  T3Tree_Node* slow = expression;
  bool advance = false;
  while (T3Tree_Node* next = StepOf(expression)) {
    expression = next;
    if (advance) slow = StepOf(slow);
    advance = !advance;
    if (expression == slow) return Absent();
  }
  return expression;
}

int64_t ExpressionLength(T3Tree_Node* expression, bool& known) {
  const bool sum = expression->is<T3Concatenate>();
  int64_t length = 0;
  while (expression->is<T3Concatenate>() || expression->is<_T3BinaryStringLogic>()) {
    auto* node = expression->as<_T3BinaryExpression>();
    if (expression->is<T3Concatenate>() != sum) break;
    const int64_t right = OperandLength(node->right, known);
    length = sum ? length + right : std::max(length, right);
    expression = node->left;
  }
  const int64_t left = OperandLength(expression, known);
  return sum ? length + left : std::max(length, left);
}

bool ExpressionsAreEqual(T3Tree_Node* a, T3Tree_Node* b) {
  a = ConstantValueOf(a);
  b = ConstantValueOf(b);
  if (const auto x = ConstIntValue(a)) return x == ConstIntValue(b);
  if (const auto x = ConstFloatValue(a)) return x == ConstFloatValue(b);
  if (const auto x = ConstCharValue(a)) return x == ConstCharValue(b);
  if (const tIdent literal = EnumLiteral(a); literal != NoIdent) return literal == EnumLiteral(b);
  return a->kind == b->kind && SameFormIsEqual(a, b);
}
