// Operators: arithmetic, strings, comparison, logic, shift and rotation. Chains of binary operators are
// walked in loops.
#include "analysis/inference/T3InferenceParts.h"
#include "analysis/types/T3References.h"

namespace t3infer {
namespace {
bool HasBase(const T3Candidates& candidates, const T3Tree_Node* type) {
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.base(i) == type) return true;
  return false;
}

// The other one of a string type and the type of its single characters, or null.
T3Tree_Node* CharacterCounterpart(const T3Tree_Node* type) {
  if (type->is<T3CharStringType>()) return gT3CharacterType;
  if (type->is<T3CharacterType>()) return gT3CharStringType;
  if (type->is<T3UniversalCharStringType>()) return gT3UniversalCharacterType;
  if (type->is<T3UniversalCharacterType>()) return gT3UniversalCharStringType;
  return nullptr;
}

// Strings are concatenated with single characters of their kind.
T3Candidates WithCharacterCounterparts(const T3Candidates& candidates) {
  T3Candidates result = candidates;
  for (size_t i = 0; i < candidates.size(); ++i) {
    T3Tree_Node* type = CharacterCounterpart(candidates.base(i));
    if (type != nullptr && !HasBase(candidates, type)) result.Add(type, type);
  }
  return result;
}

T3Candidates LeftCandidates(T3Tree_Node* node, const T3Candidates& candidates) {
  if (node->is<_T3BinaryLogicExpression>()) return {gT3BooleanType};
  if (node->is<_T3Relational>()) return Anything();
  T3Candidates result = OperandCandidates(candidates);
  return node->is<T3Concatenate>() ? WithCharacterCounterparts(result) : result;
}

bool IsOpen(const T3Candidates& candidates) {
  return candidates.size() == 1 && candidates.base(0) == gT3WildcardType;
}

// Beside a right operand that has failed, the left one is right where the context has chosen it; where it has
// not, either of them may be wrong.
T3Tree_Node* OperatorType(_T3BinaryExpression* node, const T3Candidates& candidates) {
  if (node->is<_T3BinaryLogicExpression>() || node->is<_T3Relational>()) return gT3BooleanType;
  if (BaseOf(node->right)->is<T3ErrorType>() && IsOpen(candidates)) return gT3ErrorType;
  if (!node->is<T3Concatenate>()) return BaseOf(node->left);
  T3Tree_Node* right = BaseOf(node->right)->is<T3ErrorType>() ? BaseOf(node->left) : BaseOf(node->right);
  T3Tree_Node* type = EvaluateStringType(BaseOf(node->left), right);
  return type->is<T3ErrorType>() ? BaseOf(node->left) : type;
}

struct BinaryFrame {
  _T3BinaryExpression* node;
  T3Candidates candidates;
};

void InferRight(_T3BinaryExpression* node) {
  T3Candidates right{BaseOf(node->left)};
  if (node->is<_T3BinaryLogicExpression>()) right = {gT3BooleanType};
  if (node->is<T3Concatenate>()) right = WithCharacterCounterparts(right);
  // Nothing can be said of what stands beside no value; another call without a result is a fault of its own.
  const bool no_result = BaseOf(node->left)->is<T3NoType>() && !node->right->is<T3Parameterization>();
  if (no_result || NamesNoValue(node->left)) right = {gT3ErrorType};
  Fails(node->right, right);
  DecideLeft(node->left, node->right);
  node->attr().last_pass = true;
}
}  // namespace

// An undecided left operand takes the type of the right one, where that is one of its own.
void DecideLeft(T3Tree_Node* left, T3Tree_Node* right) {
  if (BaseOf(left) != gT3WildcardType || BaseOf(right)->is<T3ErrorType>()) return;
  if (SharesLiteral(left, AbsoluteTypeDef(LocalOf(right))) || SharesLiteral(left, BaseOf(right)))
    return SetResult(left, LocalOf(right));
  SetResult(left, gT3ErrorType);
  Report(left, 2);
}

T3Inference InferBinary(_T3BinaryExpression* outermost, T3Candidates& candidates, bool strict, bool report) {
  if (!outermost->left->is<_T3BinaryExpression>()) {
    Fails(outermost->left, LeftCandidates(outermost, candidates));
    InferRight(outermost);
    return FinishAsPart(outermost, candidates, OperatorType(outermost, candidates), strict, report);
  }
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
    auto& [node, own] = spine.back();
    FinishAsPart(node, own, OperatorType(node, own), false, true);
  }
  InferRight(outermost);
  return FinishAsPart(outermost, candidates, OperatorType(outermost, candidates), strict, report);
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
}  // namespace t3infer
