// Operators. Arithmetic of C nests without statements; what makes a run-time value is a call, which nests as
// well. Only the second operand of `and` and `or`, which may not be evaluated, takes statements.
#include <vector>

#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
// The operator of C for a kind; null where it has none.
const char* OperatorOf(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3Plus:
      return C_PLUS;
    case T3Kind::T3Minus:
      return C_MINUS;
    case T3Kind::T3Multiply:
      return C_MULTIPLY;
    case T3Kind::T3Divide:
      return C_DIVIDE;
    case T3Kind::T3Xor:
      return C_BITWISE_XOR;
    case T3Kind::T3Less:
      return C_LT;
    case T3Kind::T3Greater:
      return C_GT;
    case T3Kind::T3LessOrEqual:
      return C_LEQ;
    case T3Kind::T3GreaterOrEqual:
      return C_GEQ;
    default:
      return nullptr;
  }
}

// The word that makes a run-time value of two; null where there is none.
const char* RTValueWord(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3And4b:
      return LUMO_AND4B;
    case T3Kind::T3Or4b:
      return LUMO_OR4B;
    case T3Kind::T3Xor4b:
      return LUMO_XOR4B;
    case T3Kind::T3Concatenate:
      return LUMO_CONCATENATE;
    default:
      return nullptr;
  }
}

const char* ShiftWord(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3ShiftLeft:
      return LUMO_SHIFT_LEFT;
    case T3Kind::T3ShiftRight:
      return LUMO_SHIFT_RIGHT;
    case T3Kind::T3RotateLeft:
      return LUMO_ROTATE_LEFT;
    default:
      return LUMO_ROTATE_RIGHT;
  }
}

std::string Negated(std::string_view text) {
  return joined({C_NOT, text});
}

// Both operands of an operator, the left one as it is before the right one is evaluated.
struct Both {
  std::string_view left;
  std::string_view right;
};

Both OperandsOf(T3Tree_Node* left, vexa_expression_mode_t left_form, T3Tree_Node* right,
                vexa_expression_mode_t right_form, CFunction& function) {
  CGExpression(left, left_form, vexa_temp_alloc, function);
  ShortLocation(left, left_form, function);
  const std::string_view kept = OperandInOrder(Operands({left, right}), 0, left_form, function);
  CGExpression(right, right_form, vexa_temp_alloc, function);
  return {kept, ShortLocation(right, right_form, function)};
}

Both OperandsOf(_T3BinaryExpression* node, vexa_expression_mode_t form, CFunction& function) {
  return OperandsOf(node->left, form, node->right, form, function);
}

void GenerateBinary(_T3BinaryExpression* node, const char* op, CFunction& function) {
  const auto [left, right] = OperandsOf(node, vexa_c_mode, function);
  // C knows no fault that could end a test case alone.
  if (node->is<T3Divide>() && !node->right->is<T3IntLiteral>() && !node->right->is<T3FloatLiteral>()) {
    const char* word = TypeOf(node)->is<T3Integer>() ? LUMO_DIVISOR : LUMO_FLOAT_DIVISOR;
    return SetCLocation(node, joined({"(", left, " ", op, " ", word, "(", right, ", ", VEXA_CONTEXT, "))"}));
  }
  SetCLocation(node, joined({"(", left, " ", op, " ", right, ")"}));
}

// Comparisons of run-time values.
void GenerateRelational(_T3BinaryExpression* node, const char* word, bool negated, CFunction& function) {
  const auto [left, right] = OperandsOf(node, vexa_rts_mode, function);
  const std::string call = Call(word, {left, right, VEXA_CONTEXT});
  SetCLocation(node, negated ? Negated(call) : call);
}

// Orders of enumerations go by their numbers, which the C form is.
void GenerateOrder(_T3BinaryExpression* node, CFunction& function) {
  if (!TypeOf(node->left)->is<T3ObjectIdentifierType>())
    return GenerateBinary(node, OperatorOf(node), function);
  const bool less = node->is<T3Less>() || node->is<T3GreaterOrEqual>();
  const bool negated = node->is<T3LessOrEqual>() || node->is<T3GreaterOrEqual>();
  GenerateRelational(node, less ? LUMO_LESS : LUMO_GREATER, negated, function);
}

void GenerateModOrRem(_T3BinaryExpression* node, CFunction& function) {
  const auto [left, right] = OperandsOf(node, vexa_c_mode, function);
  SetCLocation(node, Call(node->is<T3Mod>() ? LUMO_MOD : LUMO_REM, {left, right, VEXA_CONTEXT}));
}

// The right operand is evaluated only where the left one does not decide. A chain of operations has one
// result.
void GenerateBooleanOperation(_T3BinaryExpression* node, CFunction& function) {
  const std::string_view left = InC(node->left, function);
  const bool continues = node->left->is<T3And>() || node->left->is<T3Or>();
  const std::string result = continues ? std::string(left) : Temporary(C_BOOL, function);
  const bool is_or = node->is<T3Or>();
  function.beginIf(is_or ? std::string(left) : joined({C_NOT, "(", left, ")"}));
  function.assign(result, is_or ? C_TRUE : C_FALSE);
  function.endIf();
  function.beginElse();
  function.assign(result, InC(node->right, function));
  function.endIf();
  SetCLocation(node, result);
}

void GenerateBinaryRTValue(_T3BinaryExpression* node, Mode mode, CFunction& function) {
  const auto [left, right] = OperandsOf(node, vexa_rts_mode, function);
  SetRTSLocation(node, Call(RTValueWord(node), {left, right, AllocationMode(mode.allocation), VEXA_CONTEXT}));
}

void GenerateShiftOrRotate(_T3ShiftOrRotateExpression* node, Mode mode, CFunction& function) {
  const auto [value, count] = OperandsOf(node->value, vexa_rts_mode, node->shift, vexa_c_mode, function);
  SetRTSLocation(node, Call(ShiftWord(node), {value, count, AllocationMode(mode.allocation), VEXA_CONTEXT}));
}

void GenerateUnary(_T3UnaryExpression* node, Mode mode, CFunction& function) {
  if (node->is<T3UnaryNot4b>()) {
    const std::string_view value = InRTS(node->arg, vexa_temp_alloc, function);
    SetRTSLocation(node, Call(LUMO_NOT4B, {value, AllocationMode(mode.allocation), VEXA_CONTEXT}));
  } else {
    const char* op = node->is<T3UnaryMinus>() ? C_MINUS : C_NOT;
    // The least number has one more than the greatest.
    const char* rest = node->is<T3UnaryMinus>() && IsBeyondIntegers(node->arg) ? " - 1)" : ")";
    SetCLocation(node, joined({"(", op, InC(node->arg, function), rest}));
  }
}

// How an operator takes its operands.
vexa_expression_mode_t OperandForm(_T3BinaryExpression* node) {
  const bool is_rts = node->is<T3Equal>() || node->is<T3NotEqual>() || RTValueWord(node) != nullptr ||
                      (node->is<_T3Relational>() && TypeOf(node->left)->is<T3ObjectIdentifierType>());
  return is_rts ? vexa_rts_mode : vexa_c_mode;
}

bool HasLocation(T3Tree_Node* node, vexa_expression_mode_t form) {
  return form == vexa_c_mode ? HasCLocation(node) : HasRTSLocation(node);
}

// Left operands nest as deeply as a chain of operators is long: they are evaluated from the first one on, the
// result of each in the same variable where it needs one.
void GenerateLeftOperands(_T3BinaryExpression* node, CFunction& function) {
  struct Operand {
    T3Tree_Node* node;
    vexa_expression_mode_t form;
  };
  std::vector<Operand> chain;
  for (auto* whole = node; whole != nullptr; whole = whole->left->try_as<_T3BinaryExpression>()) {
    const vexa_expression_mode_t form = OperandForm(whole);
    if (!whole->left->is<_T3BinaryExpression>() || HasLocation(whole->left, form)) break;
    chain.push_back({whole->left, form});
  }
  Variables variables;
  for (size_t i = chain.size(); i-- > 0;) {
    const Operand& operand = chain[i];
    CGExpression(operand.node, operand.form, vexa_temp_alloc, function);
    ShortLocation(operand.node, operand.form, function, &variables);
  }
}

void Binary(_T3BinaryExpression* node, Mode mode, CFunction& function) {
  GenerateLeftOperands(node, function);
  if (node->is<T3And>() || node->is<T3Or>()) return GenerateBooleanOperation(node, function);
  if (node->is<T3Mod>() || node->is<T3Rem>()) return GenerateModOrRem(node, function);
  if (node->is<T3Equal>()) return GenerateRelational(node, LUMO_IS_EQUAL, false, function);
  if (node->is<T3NotEqual>()) return GenerateRelational(node, LUMO_IS_EQUAL, true, function);
  if (node->is<_T3Relational>()) return GenerateOrder(node, function);
  if (RTValueWord(node) != nullptr) return GenerateBinaryRTValue(node, mode, function);
  GenerateBinary(node, OperatorOf(node), function);
}
}  // namespace

bool Operator(T3Tree_Node* node, Mode mode, CFunction& function) {
  if (auto* binary = node->try_as<_T3BinaryExpression>())
    Binary(binary, mode, function);
  else if (auto* unary = node->try_as<_T3UnaryExpression>())
    GenerateUnary(unary, mode, function);
  else if (auto* shift = node->try_as<_T3ShiftOrRotateExpression>())
    GenerateShiftOrRotate(shift, mode, function);
  else
    return false;
  return true;
}
}  // namespace cg

vexa_expression_mode_t NaturalMode(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3And4b:
    case T3Kind::T3Or4b:
    case T3Kind::T3Xor4b:
    case T3Kind::T3Concatenate:
    case T3Kind::T3UnaryNot4b:
      return vexa_rts_mode;
    case T3Kind::T3IntLiteral:
    case T3Kind::T3FloatLiteral:
    case T3Kind::T3Infinity:
    case T3Kind::T3BooleanLiteral:
    case T3Kind::T3LengthOf:
    case T3Kind::T3SizeOf:
    case T3Kind::T3SizeOfType:
    case T3Kind::T3IsPresent:
    case T3Kind::T3IsChosen:
    case T3Kind::T3IsValue:
    case T3Kind::T3Match:
    case T3Kind::T3Running:
    case T3Kind::T3Alive:
    case T3Kind::T3Read:
      return vexa_c_mode;
    case T3Kind::T3CharStringLiteral:
      return cg::IsWideLiteral(node) ? vexa_rts_mode : vexa_c_mode;
    default:
      return node->is<_T3BinaryExpression>() || node->is<_T3UnaryExpression>() ? vexa_c_mode : vexa_rts_mode;
  }
}
