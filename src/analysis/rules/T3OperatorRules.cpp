// The types that operators work on: operands may be of one type and still be of none that the operator is
// for.
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3SignedOperands.h"
#include "support/ModuleCaches.h"

namespace {
// The types of both operands; none where one of them, or the whole, has failed.
struct Operands {
  T3Tree_Node* left = nullptr;
  T3Tree_Node* right = nullptr;

  explicit Operands(_T3BinaryExpression* node) {
    if (HasFailed(node) || HasFailed(node->left) || HasFailed(node->right)) return;
    left = GetAddressBaseType(ExpressionBaseType(node->left));
    right = GetAddressBaseType(ExpressionBaseType(node->right));
  }
  bool AreKnown() const {
    return left != nullptr && right != nullptr && left != gT3WildcardType && right != gT3WildcardType;
  }
  bool AreBoth(T3Tree_Node* type) const {
    return IsSameBuiltinType(left, type) && IsSameBuiltinType(right, type);
  }
};

void CheckArithmetic(T3Tree_Node* node) {
  auto* operation = node->as<_T3BinaryExpression>();
  const Operands operands(operation);
  if (!operands.AreKnown() || operands.AreBoth(gT3IntegerType)) return;
  if (!operands.AreBoth(gT3FloatType))
    vexa_filtered_error(ERR_type_mismatch_arith, operation->position);
  else if (node->is<T3Mod>())
    vexa_filtered_error(ERR_type_integer_required, operation->position);
}

// Numbers have an order, and the literals of one enumeration.
bool IsOrdered(T3Tree_Node* type) {
  return type->is<T3Integer>() || type->is<T3Float>() || type->is<T3EnumType>();
}

void CheckOrder(T3Tree_Node* node) {
  auto* operation = node->as<_T3BinaryExpression>();
  const Operands operands(operation);
  if (!operands.AreKnown()) return;
  if (!IsOrdered(operands.left))
    ReportTypeError(operation->left, true);
  else if (!IsOrdered(operands.right))
    ReportTypeError(operation->right, true);
}

// An operand whose type the operator is not for is told.
void RequireType(T3Tree_Node* operand, bool (*is_for)(T3Tree_Node*)) {
  if (HasFailed(operand) || operand->is<T3Infinity>()) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(operand));
  if (type != gT3WildcardType && !is_for(type)) ReportTypeError(operand, true);
}

// A sign stands before numbers.
void RequireNumber(T3Tree_Node* operand) {
  RequireType(operand, [](T3Tree_Node* type) { return type->is<T3Integer>() || type->is<T3Float>(); });
}

void CheckEquality(T3Tree_Node* node) {
  if (HasFailed(node)) return;
  RequireType(node->as<_T3BinaryExpression>()->left, [](T3Tree_Node* type) { return !IsObjectType(type); });
}

void CheckMinus(T3Tree_Node* node) {
  if (!HasFailed(node)) RequireNumber(node->as<T3UnaryMinus>()->arg);
}

void CheckPlus(T3Tree_Node* node) {
  if (IsSignedOperand(node)) RequireNumber(node);
}

bool IsBinaryStringType(T3Tree_Node* type) {
  return type->is<T3BitStringType>() || type->is<T3HexStringType>() || type->is<T3OctetStringType>();
}

void CheckStringLogic(T3Tree_Node* node) {
  auto* operation = node->as<_T3BinaryExpression>();
  const Operands operands(operation);
  if (operands.AreKnown() && !(IsBinaryStringType(operands.left) && operands.AreBoth(operands.left)))
    vexa_filtered_error(ERR_type_mismatch_bin_string, operation->position);
}

void CheckNot4b(T3Tree_Node* node) {
  auto* operation = node->as<T3UnaryNot4b>();
  if (HasFailed(operation) || HasFailed(operation->arg)) return;
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(operation->arg));
  if (type != gT3WildcardType && !IsBinaryStringType(type))
    vexa_filtered_error(ERR_type_mismatch_bin_string, operation->position);
}

void CheckConcatenation(T3Tree_Node* node) {
  auto* operation = node->as<_T3BinaryExpression>();
  const Operands operands(operation);
  if (operands.AreKnown() && !IsStringCompatible(operands.left, operands.right))
    vexa_filtered_error(ERR_type_mismatch_char_string, operation->position);
}

// ---- Operands ----

void RequireOperand(T3Tree_Node* operand) {
  if (operand->is<_T3LiteralExpression>()) return;
  if (IsGiven(operand) && !HasFailed(operand) && !IsRvalue(operand))
    vexa_filtered_error(ERR_rvalue, PositionOf(operand));
}

// What was found out last: the operands of a long chain are asked for one after another.
struct {
  T3Tree_Node* node;
  T3Tree_Node* parent;
  bool is_part;
} g_last_concatenation = {};
const ModuleCache kCache{[] { g_last_concatenation = {}; }, ModuleCache::Holds::ForTree};

// Patterns are put together of the patterns that templates stand for.
bool IsPartOfPattern(T3Tree_Node* node) {
  if (!node->is<T3Concatenate>()) return false;
  auto& last = g_last_concatenation;
  const bool goes_on = last.node != nullptr && (node->parent == last.node || last.parent == node);
  T3Tree_Node* top = node;
  while (!goes_on && T3Is<T3Concatenate>(top)) top = top->parent;
  last = {node, node->parent, goes_on ? last.is_part : T3Is<T3CharStringMatch>(top)};
  return last.is_part;
}

void CheckBinary(T3Tree_Node* node) {
  if (IsPartOfPattern(node)) return;
  RequireOperand(node->as<_T3BinaryExpression>()->left);
  RequireOperand(node->as<_T3BinaryExpression>()->right);
}

void CheckUnary(T3Tree_Node* node) {
  RequireOperand(node->as<_T3UnaryExpression>()->arg);
}

// Digits are shifted, and what is a row of parts can be turned round.
void CheckShift(T3Tree_Node* node) {
  auto* operation = node->as<_T3ShiftOrRotateExpression>();
  RequireOperand(operation->value);
  RequireOperand(operation->shift);
  RequireType(operation->value, node->is<_T3ShiftExpression>() ? IsBinaryStringType : IsRowOfParts);
}

void CheckArgument(T3Tree_Node* node) {
  RequireOperand(node->as<_T3PreDefinedFunction>()->value);
}

void CheckLengthArgument(T3Tree_Node* node) {
  RequireOperand(node->as<_T3PreDefinedLengthFunction>()->length);
}

void CheckReplaceArguments(T3Tree_Node* node) {
  auto* replace = node->as<T3Replace>();
  for (T3Tree_Node* argument : {replace->index, replace->count, replace->replace_with})
    RequireOperand(argument);
}

void CheckSubstringArguments(T3Tree_Node* node) {
  RequireOperand(node->as<T3Substring>()->index);
  RequireOperand(node->as<T3Substring>()->count);
}

void CheckMatched(T3Tree_Node* node) {
  RequireOperand(node->as<T3Match>()->expression);
}

void CheckFieldIndex(T3Tree_Node* node) {
  RequireOperand(node->as<T3FieldIndex>()->index);
}

void CheckSubscript(T3Tree_Node* node) {
  RequireOperand(node->as<T3Subscription>()->index);
}

void CheckComponent(T3Tree_Node* node) {
  T3Tree_Node* component = node->as<T3ObjIdItem>()->obj_id_item;
  if (NumberInComponent(component) == nullptr && IsTemplateReference(component)) RequireOperand(component);
}

void CheckRegexpArguments(T3Tree_Node* node) {
  RequireOperand(node->as<T3Regexp>()->argument);
  RequireOperand(node->as<T3Regexp>()->number);
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3BinaryExpression, CheckBinary},
    {T3Kind::_T3BinaryArithmeticExpression, CheckArithmetic},
    {T3Kind::_T3BinaryStringLogic, CheckStringLogic},
    {T3Kind::T3Concatenate, CheckConcatenation},
    {T3Kind::T3Equal, CheckEquality},
    {T3Kind::T3NotEqual, CheckEquality},
    {T3Kind::T3Less, CheckOrder},
    {T3Kind::T3Greater, CheckOrder},
    {T3Kind::T3LessOrEqual, CheckOrder},
    {T3Kind::T3GreaterOrEqual, CheckOrder},
    {T3Kind::_T3UnaryExpression, CheckUnary},
    {T3Kind::T3UnaryMinus, CheckMinus},
    {T3Kind::_T3Expression, CheckPlus},
    {T3Kind::T3UnaryNot4b, CheckNot4b},
    {T3Kind::_T3ShiftOrRotateExpression, CheckShift},
    {T3Kind::_T3PreDefinedFunction, CheckArgument},
    {T3Kind::_T3PreDefinedLengthFunction, CheckLengthArgument},
    {T3Kind::T3Replace, CheckReplaceArguments},
    {T3Kind::T3Substring, CheckSubstringArguments},
    {T3Kind::T3Regexp, CheckRegexpArguments},
    {T3Kind::T3Match, CheckMatched},
    {T3Kind::T3ObjIdItem, CheckComponent},
    {T3Kind::T3FieldIndex, CheckFieldIndex},
    {T3Kind::T3Subscription, CheckSubscript},
};
}  // namespace

std::span<const T3Rule> OperatorRules() {
  return kRules;
}
