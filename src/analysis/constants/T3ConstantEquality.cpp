// Equality of constant expressions. Two constants are compared part by part with a list of open pairs; a pair
// that has been met is not compared again, so that values which share their parts cost what is written.
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/constants/T3KnownTexts.h"
#include "analysis/types/T3Constants.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"

namespace {
using Pairs = std::vector<std::pair<T3Tree_Node*, T3Tree_Node*>>;

// ---- Compound values ----

// The values of a compound by the number of field or element; that of `anytype` by its member.
using ExpressionMap = std::map<int64_t, T3Tree_Node*>;

// Nothing where it is not known which parts have a value.
std::optional<ExpressionMap> ConstructExpressionMap(T3CompoundValue* compound, T3Tree_Node* type) {
  ExpressionMap result;
  for (const T3Part& part : PartsOf(compound, type)) {
    T3Tree_Node* member = part.item->attr().def;
    std::optional<int64_t> key = part.place;
    if (type->is<T3AnyType>() && member != nullptr) key = BehindImport(member)->number;
    if (!key) return std::nullopt;
    if (!part.item->value->is<T3NotUsedSymbol>()) result[*key] = part.item->value;
  }
  return result;
}

// Adds the values of two compounds in pairs; false when one has a value that the other has not.
bool PairFields(T3CompoundValue* a, T3CompoundValue* b, Pairs& open) {
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(a));
  const auto left = ConstructExpressionMap(a, type);
  const auto right = ConstructExpressionMap(b, type);
  if (!left || !right) return true;
  if (left->size() != right->size()) return false;
  for (auto x = left->begin(), y = right->begin(); x != left->end(); ++x, ++y) {
    if (x->first != y->first) return false;
    open.emplace_back(x->second, y->second);
  }
  return true;
}

// ---- Object identifiers ----

// The number of a component, where it has one.
std::optional<int64_t> ComponentNumber(T3Tree_Node* component) {
  if (T3Tree_Node* number = NumberInComponent(component)) component = number;
  return T3Is<_T3Expression>(component) ? ConstIntValue(component) : std::nullopt;
}

// A component may stand for several, where it is the name of another object identifier.
bool StandsForSeveral(T3Tree_Node* list) {
  for (auto* item : Items<T3ObjIdItem>(list)) {
    T3Tree_Node* component = item->obj_id_item;
    if (component->is<_T3Reference>() && T3Is<_T3Decl>(Def(component)) && !ComponentNumber(component))
      return true;
  }
  return false;
}

bool ObjIdListsAreEqual(T3Tree_Node* a, T3Tree_Node* b) {
  if (StandsForSeveral(a) || StandsForSeveral(b)) return true;
  for (; a->is<T3ObjIdItem>() && b->is<T3ObjIdItem>();
       a = a->as<T3ObjIdItem>()->next, b = b->as<T3ObjIdItem>()->next) {
    const auto x = ComponentNumber(a->as<T3ObjIdItem>()->obj_id_item);
    const auto y = ComponentNumber(b->as<T3ObjIdItem>()->obj_id_item);
    if (x && y && *x != *y) return false;
  }
  return !a->is<T3ObjIdItem>() && !b->is<T3ObjIdItem>();
}

// ---- Values without parts ----

// What functions make of strings is left to the run-time system.
std::optional<T3KnownText> TextOf(T3Tree_Node* expression) {
  auto text = KnownText(expression);
  if (text && text->computed) text.reset();
  return text;
}

// The literal of an enumeration that an expression is, or NoIdent.
tIdent EnumLiteral(T3Tree_Node* expression) {
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return NoIdent;
  T3Tree_Node* def = Def(expression);
  if (!T3Is<T3EnumType>(def) && !T3Is<T3AmbiguousType>(def)) return NoIdent;
  if (auto* identifier = expression->try_as<T3Identifier>()) return identifier->id;
  return expression->as<T3Qualifier>()->id;
}

// What is no literal and has not been folded has its value only when the suite runs.
bool IsKnown(T3Tree_Node* value) {
  if (value->is<T3CompoundValue>() || EnumLiteral(value) != NoIdent) return true;
  if (value->is<_T3LiteralExpression>()) return !value->is<T3NotUsedSymbol>();
  return ConstIntValue(value) || ConstFloatValue(value);
}

bool SameFormIsEqual(T3Tree_Node* a, T3Tree_Node* b) {
  if (!IsKnown(a) || !IsKnown(b)) return true;
  if (a->kind != b->kind) return false;
  switch (a->kind) {
    case T3Kind::T3BooleanLiteral:
      return a->as<T3BooleanLiteral>()->value == b->as<T3BooleanLiteral>()->value;
    case T3Kind::T3VerdictLiteral:
      return a->as<T3VerdictLiteral>()->value == b->as<T3VerdictLiteral>()->value;
    case T3Kind::T3ObjectIdentifierLiteral:
      return ObjIdListsAreEqual(a->as<T3ObjectIdentifierLiteral>()->value,
                                b->as<T3ObjectIdentifierLiteral>()->value);
    default:
      return true;
  }
}

bool ValuesAreEqual(T3Tree_Node* a, T3Tree_Node* b) {
  const auto int_a = ConstIntValue(a), int_b = ConstIntValue(b);
  if (int_a && int_b) return int_a == int_b;
  const auto float_a = ConstFloatValue(a), float_b = ConstFloatValue(b);
  if (float_a && float_b) return float_a == float_b;
  const tIdent enum_a = EnumLiteral(a), enum_b = EnumLiteral(b);
  if (enum_a != NoIdent && enum_b != NoIdent) return enum_a == enum_b;
  const auto text_a = TextOf(a), text_b = TextOf(b);
  if (text_a && text_b) return text_a->kind == text_b->kind && text_a->text == text_b->text;
  return SameFormIsEqual(a, b);
}
}  // namespace

std::optional<std::string> ConstantKey(T3Tree_Node* expression) {
  T3Tree_Node* value = ConstantValueOf(expression);
  if (value->is<T3CompoundValue>()) return std::nullopt;
  if (const auto number = ConstIntValue(value)) return "i" + std::to_string(*number);
  if (ConstFloatValue(value)) return std::nullopt;
  if (const tIdent literal = EnumLiteral(value); literal != NoIdent) return "e" + std::to_string(literal);
  const auto text = TextOf(value);
  if (!text) return std::nullopt;
  return "t" + std::to_string(static_cast<int>(text->kind)) + " " + text->text;
}

bool ExpressionsAreEqual(T3Tree_Node* a, T3Tree_Node* b) {
  a = ConstantValueOf(a);
  b = ConstantValueOf(b);
  if (!a->is<T3CompoundValue>() || !b->is<T3CompoundValue>()) return ValuesAreEqual(a, b);
  std::set<std::pair<uint32_t, uint32_t>> met;
  for (Pairs open{{a, b}}; !open.empty();) {
    a = ConstantValueOf(open.back().first);
    b = ConstantValueOf(open.back().second);
    open.pop_back();
    if (a == b || !met.emplace(a->number, b->number).second) continue;
    auto* left = a->try_as<T3CompoundValue>();
    auto* right = b->try_as<T3CompoundValue>();
    const bool equal =
        left != nullptr && right != nullptr ? PairFields(left, right, open) : ValuesAreEqual(a, b);
    if (!equal) return false;
  }
  return true;
}
