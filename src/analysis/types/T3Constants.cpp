// Folding of integers, floats and characters, and constness. Chains of operators are folded in loops; a long
// chain of constants that stand for each other is worked off by a list of its own instead of by recursion.
#include "analysis/types/T3Constants.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3UTF8String.h"
#include "support/StringM.h"

namespace {
std::string TextOf(tStringRef text) {
  return std::string(StringM::StGetString(text));
}

struct IntFolding {
  using Value = int64_t;
  static constexpr int kDeclBit = _T3Decl_Attributes::const_int_value_calculated_bit;
  static constexpr int kExpressionBit = _T3Expression_Attributes::const_int_value_calculated_bit;
  static Value& Slot(_T3Decl* decl) { return decl->cold().const_int_value; }
  static Value& Slot(_T3Expression* expression) { return expression->cold().const_int_value; }
  template <class Node>
  static bool& Calculated(Node* node) {
    return node->attr().const_int_value_calculated;
  }
  static bool& Guard(T3ConstDecl* decl) { return decl->attr().cycle_in_const_definition_int; }
  static std::optional<Value> Literal(T3Tree_Node* node) {
    if (auto* literal = node->try_as<T3IntLiteral>())
      return std::strtoll(TextOf(literal->value).c_str(), nullptr, 10);
    if (node->is<T3Infinity>()) return std::numeric_limits<Value>::max();
    return std::nullopt;
  }
  static Value Wrapped(uint64_t value) { return static_cast<Value>(value); }
  static Value Negated(Value a) { return Wrapped(-static_cast<uint64_t>(a)); }
  static Value Binary(T3Tree_Node* node, Value left, Value right) {
    const auto a = static_cast<uint64_t>(left);
    const auto b = static_cast<uint64_t>(right);
    if (node->is<T3Plus>()) return Wrapped(a + b);
    if (node->is<T3Minus>()) return Wrapped(a - b);
    if (node->is<T3Multiply>()) return Wrapped(a * b);
    return right == -1 ? Negated(left) : left / right;
  }
};

struct FloatFolding {
  using Value = double;
  static constexpr int kDeclBit = _T3Decl_Attributes::const_float_value_calculated_bit;
  static constexpr int kExpressionBit = _T3Expression_Attributes::const_float_value_calculated_bit;
  static Value& Slot(_T3Decl* decl) { return decl->cold().const_float_value; }
  static Value& Slot(_T3Expression* expression) { return expression->cold().const_float_value; }
  template <class Node>
  static bool& Calculated(Node* node) {
    return node->attr().const_float_value_calculated;
  }
  static bool& Guard(T3ConstDecl* decl) { return decl->attr().cycle_in_const_definition_float; }
  static std::optional<Value> Literal(T3Tree_Node* node) {
    if (auto* literal = node->try_as<T3FloatLiteral>()) return std::atof(TextOf(literal->value).c_str());
    if (node->is<T3Infinity>()) return std::numeric_limits<Value>::max();
    return std::nullopt;
  }
  static Value Negated(Value a) { return -a; }
  static Value Binary(T3Tree_Node* node, Value left, Value right) {
    if (node->is<T3Plus>()) return left + right;
    if (node->is<T3Minus>()) return left - right;
    if (node->is<T3Multiply>()) return left * right;
    return left / right;
  }
};

// The declaration of a constant that a reference means, or null.
T3Tree_Node* ConstantBehind(T3Tree_Node* reference) {
  if (!reference->is<T3Identifier>() && !reference->is<T3Qualifier>()) return nullptr;
  T3Tree_Node* def = BehindImport(Def(reference));
  return T3Is<T3ConstDecl>(def) ? def : nullptr;
}

template <class Folding>
class Folder {
 public:
  using Result = std::optional<typename Folding::Value>;

  static Result OfDecl(T3Tree_Node* node) {
    node = BehindImport(node);
    auto* decl = T3Is<T3ConstDecl>(node) ? node->as<T3ConstDecl>() : nullptr;
    if (decl == nullptr || !T3Is<_T3Expression>(decl->value)) return std::nullopt;
    if (decl->attr().IsEvaluated(Folding::kDeclBit)) return Known(decl);
    if (Folding::Guard(decl)) return std::nullopt;
    if (++depth_ > kMaxDepth) {
      EvaluateInOrder(decl);
    } else {
      Folding::Guard(decl) = true;
      Keep(decl, Folding::kDeclBit, OfExpression(decl->value));
      Folding::Guard(decl) = false;
    }
    --depth_;
    return Known(decl);
  }

  static Result OfExpression(T3Tree_Node* node) {
    std::vector<_T3BinaryExpression*> spine;
    for (;;) {
      if (node->as<_T3Expression>()->attr().IsEvaluated(Folding::kExpressionBit)) break;
      if (!node->is<T3Plus>() && !node->is<T3Minus>() && !node->is<T3Multiply>() && !node->is<T3Divide>())
        break;
      spine.push_back(node->as<_T3BinaryExpression>());
      node = spine.back()->left;
    }
    Result result = OfInnermost(node->as<_T3Expression>());
    for (; !spine.empty(); spine.pop_back()) {
      result = OfBinary(spine.back(), result, OfExpression(spine.back()->right));
      Keep(static_cast<_T3Expression*>(spine.back()), Folding::kExpressionBit, result);
    }
    return result;
  }

 private:
  static constexpr int kMaxDepth = 200;
  static inline int depth_ = 0;

  template <class Node>
  static Result Known(Node* node) {
    return Folding::Calculated(node) ? Result(Folding::Slot(node)) : std::nullopt;
  }
  template <class Node>
  static void Keep(Node* node, int bit, Result result) {
    node->attr().SetEvaluated(bit);
    Folding::Calculated(node) = result.has_value();
    if (result) Folding::Slot(node) = *result;
  }

  // What a literal says costs less to read again than to keep.
  static Result OfInnermost(_T3Expression* node) {
    if (node->attr().IsEvaluated(Folding::kExpressionBit)) return Known(node);
    if (const Result literal = Folding::Literal(node)) return literal;
    Keep(node, Folding::kExpressionBit, OfOperand(node));
    return Known(node);
  }

  static Result OfOperand(T3Tree_Node* node) {
    if (auto* minus = node->try_as<T3UnaryMinus>()) {
      const Result value = OfExpression(minus->arg);
      return value ? Result(Folding::Negated(*value)) : std::nullopt;
    }
    T3Tree_Node* constant = ConstantBehind(node);
    return constant == nullptr ? std::nullopt : OfDecl(constant);
  }

  static Result OfBinary(_T3BinaryExpression* node, Result left, Result right) {
    if (!left || !right) return std::nullopt;
    if (node->is<T3Divide>() && *right == 0) {
      vexa_filtered_error(ERR_div_by_zero, node->position);
      return typename Folding::Value(1);
    }
    return Folding::Binary(node, *left, *right);
  }

  // The constants that a value needs and that are not known yet.
  static void PushNeeded(T3ConstDecl* decl, std::vector<T3ConstDecl*>& open) {
    ForEachInSubtree(decl->value, [&](T3Tree_Node* node) {
      T3Tree_Node* needed = ConstantBehind(node);
      if (needed == nullptr) return true;
      auto* constant = needed->as<T3ConstDecl>();
      if (!constant->attr().IsEvaluated(Folding::kDeclBit) && !Folding::Guard(constant))
        open.push_back(constant);
      return false;
    });
  }

  // Works off a constant and all that it needs, the needed ones first.
  static void EvaluateInOrder(T3ConstDecl* outermost) {
    std::vector<T3ConstDecl*> open{outermost};
    while (!open.empty()) {
      T3ConstDecl* decl = open.back();
      if (decl->attr().IsEvaluated(Folding::kDeclBit)) {
        open.pop_back();
      } else if (!Folding::Guard(decl)) {
        Folding::Guard(decl) = true;
        PushNeeded(decl, open);
      } else {
        open.pop_back();
        Keep(decl, Folding::kDeclBit, OfExpression(decl->value));
        Folding::Guard(decl) = false;
      }
    }
  }
};

bool AllConstant(T3Tree_Node* list);

bool IsConstantName(T3Tree_Node* reference) {
  T3Tree_Node* def = Def(reference);
  if (T3Is<T3EnumType>(def) || T3Is<T3AmbiguousType>(def)) return true;
  def = BehindImport(def);
  return T3Is<T3ConstDecl>(def) || T3Is<T3ExtConstDecl>(def) || IsAsnNullType(def);
}

bool IsConstantDefinition(T3Tree_Node* node) {
  auto* definition = node->try_as<T3TemplateDef>();
  if (definition == nullptr) return T3Is<_T3Expression>(node) && IsConstant(node);
  return !definition->modifies->is<T3TemplateReference>() && IsConstant(definition->constraint);
}

bool IsConstantFunction(_T3PreDefinedFunction* function) {
  if (function->is<T3Rnd>() || function->is<T3DecValue>()) return false;
  if (!IsConstant(function->value)) return false;
  if (function->is<_T3PreDefinedLengthFunction>())
    return IsConstant(function->as<_T3PreDefinedLengthFunction>()->length);
  auto* replace = function->try_as<T3Replace>();
  return replace == nullptr ||
         (IsConstant(replace->index) && IsConstant(replace->count) && IsConstant(replace->replace_with));
}

// Every form but binary operators.
bool IsConstantForm(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3NoExpression:
      return true;
    case T3Kind::T3ObjectIdentifierLiteral:
      return AllConstant(node->as<T3ObjectIdentifierLiteral>()->value);
    case T3Kind::T3CharStringMatch:
      return IsConstant(node->as<T3CharStringMatch>()->pattern);
    case T3Kind::T3Identifier:
    case T3Kind::T3Qualifier:
      return IsName(node) ? IsConstantName(node) : IsConstant(node->as<T3Qualifier>()->base);
    case T3Kind::T3Subscription:
      return IsConstant(node->as<T3Subscription>()->base) && IsConstant(node->as<T3Subscription>()->index);
    case T3Kind::T3CompoundValue:
      return AllConstant(node->as<T3CompoundValue>()->value);
    case T3Kind::T3ValueList:
      return AllConstant(node->as<T3ValueList>()->values);
    case T3Kind::T3Complement:
      return AllConstant(node->as<T3Complement>()->values);
    case T3Kind::T3ValueRange:
      return IsConstant(node->as<T3ValueRange>()->lb) && IsConstant(node->as<T3ValueRange>()->ub);
    case T3Kind::T3LengthRange:
      return IsConstant(node->as<T3LengthRange>()->lb) && IsConstant(node->as<T3LengthRange>()->ub);
    default:
      break;
  }
  if (node->is<_T3LiteralExpression>()) return true;
  if (node->is<_T3UnaryExpression>()) return IsConstant(node->as<_T3UnaryExpression>()->arg);
  if (node->is<_T3ShiftOrRotateExpression>())
    return IsConstant(node->as<_T3ShiftOrRotateExpression>()->value) &&
           IsConstant(node->as<_T3ShiftOrRotateExpression>()->shift);
  if (node->is<_T3PreDefinedFunction>()) return IsConstantFunction(node->as<_T3PreDefinedFunction>());
  if (node->is<_T3PreDefinedTemplateFunction>())
    return IsConstantDefinition(node->as<_T3PreDefinedTemplateFunction>()->template_value);
  return false;
}

bool AllConstant(T3Tree_Node* list) {
  for (;;) {
    if (auto* value = list->try_as<T3FieldValue>()) {
      auto* index = value->field->try_as<T3FieldIndex>();
      if (!IsConstant(value->value) || (index != nullptr && !IsConstant(index->index))) return false;
      list = value->next;
    } else if (auto* item = list->try_as<T3ValueListItem>()) {
      if (!IsConstant(item->value)) return false;
      list = item->next;
    } else if (auto* part = list->try_as<T3ObjIdItem>()) {
      T3Tree_Node* value = part->obj_id_item;
      if (T3Tree_Node* number = NumberInComponent(value)) value = number;
      if (T3Is<_T3Expression>(value) && !IsConstant(value)) return false;
      list = part->next;
    } else {
      return true;
    }
  }
}

bool IsLiteralForm(T3Tree_Node* node) {
  if (node->is<_T3LiteralExpression>()) return true;
  if (node->is<_T3UnaryExpression>()) return IsLiteral(node->as<_T3UnaryExpression>()->arg);
  if (auto* compound = node->try_as<T3CompoundValue>()) {
    for (auto* at : Items<T3FieldValue>(compound->value))
      if (!IsLiteral(at->value)) return false;
    return true;
  }
  return false;
}

// A property that a binary operator has when both operands have it; kept on each node of a chain.
template <class Form, class Slot>
bool OfBothOperands(T3Tree_Node* node, int bit, Form form, Slot slot) {
  std::vector<_T3BinaryExpression*> spine;
  while (node->is<_T3BinaryExpression>() && !node->as<_T3Expression>()->attr().IsEvaluated(bit)) {
    spine.push_back(node->as<_T3BinaryExpression>());
    node = spine.back()->left;
  }
  auto& innermost = node->as<_T3Expression>()->attr();
  if (!innermost.IsEvaluated(bit)) {
    innermost.SetEvaluated(bit);  // a cycle of definitions ends here
    slot(innermost) = form(node);
  }
  bool result = slot(innermost);
  for (; !spine.empty(); spine.pop_back()) {
    result = OfBothOperands(spine.back()->right, bit, form, slot) && result;
    auto& attributes = spine.back()->attr();
    attributes.SetEvaluated(bit);
    slot(attributes) = result;
  }
  return result;
}
}  // namespace

std::optional<int64_t> ConstIntValue(T3Tree_Node* node) {
  if (T3Is<_T3Decl>(node)) return Folder<IntFolding>::OfDecl(node);
  return T3Is<_T3Expression>(node) ? Folder<IntFolding>::OfExpression(node) : std::nullopt;
}

std::optional<double> ConstFloatValue(T3Tree_Node* node) {
  if (T3Is<_T3Decl>(node)) return Folder<FloatFolding>::OfDecl(node);
  return T3Is<_T3Expression>(node) ? Folder<FloatFolding>::OfExpression(node) : std::nullopt;
}

T3Tree_Node* ConstCharLiteral(T3Tree_Node* node) {
  // Constants that stand for each other are followed in a loop; a slower walker meets a cycle.
  T3Tree_Node* slow = node;
  const auto step = [](T3Tree_Node* at) -> T3Tree_Node* {
    if (T3Is<_T3Decl>(at)) {
      at = BehindImport(at);
      return T3Is<T3ConstDecl>(at) ? at->as<T3ConstDecl>()->value : nullptr;
    }
    return T3Is<_T3Expression>(at) ? ConstantBehind(at) : nullptr;
  };
  bool advance = false;
  while (node != nullptr && !node->is<T3CharStringLiteral>() && !node->is<T3UnivCharLiteral>()) {
    node = step(node);
    if (advance) slow = step(slow);
    advance = !advance;
    if (node != nullptr && node == slow) return nullptr;
  }
  return node;
}

namespace {
// The scanner has made one of each doubled quote.
std::string Unquoted(std::string_view text) {
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
  return std::string(text);
}
}  // namespace

std::string Utf8Of(uint64_t code) {
  std::string result;
  if (code < 0x80) return std::string(1, static_cast<char>(code));
  int trailing = code < 0x800 ? 1 : code < 0x10000 ? 2 : code < 0x200000 ? 3 : code < 0x4000000 ? 4 : 5;
  result += static_cast<char>((0xff << (7 - trailing) & 0xff) | static_cast<int>(code >> (6 * trailing)));
  while (trailing-- > 0) result += static_cast<char>(0x80 | ((code >> (6 * trailing)) & 0x3f));
  return result;
}

std::optional<std::string> ConstCharValue(T3Tree_Node* node) {
  T3Tree_Node* literal = ConstCharLiteral(node);
  if (literal == nullptr) return std::nullopt;
  if (auto* text = literal->try_as<T3CharStringLiteral>()) {
    if (text->attr().char_string_kind == kind_malformed) return std::nullopt;
    return Unquoted(StringM::StGetString(text->value));
  }
  auto* quadruple = literal->as<T3UnivCharLiteral>();
  uint64_t code = 0;
  for (T3Tree_Node* part : {quadruple->group, quadruple->plane, quadruple->row, quadruple->cell})
    code = code << 8 | static_cast<uint64_t>(ConstIntValue(part).value_or(0) & 0xff);
  return Utf8Of(code);
}

bool IsConstant(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return IsConstantDefinition(expression);
  return OfBothOperands(expression, _T3Expression_Attributes::is_constant_bit, IsConstantForm,
                        [](auto& attributes) -> bool& { return attributes.is_constant; });
}

bool IsLiteral(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return false;
  return OfBothOperands(expression, _T3Expression_Attributes::is_literal_bit, IsLiteralForm,
                        [](auto& attributes) -> bool& { return attributes.is_literal; });
}
