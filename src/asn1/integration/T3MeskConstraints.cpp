// ASN.1 constraints as constraints of subtypes. What TTCN-3 cannot say, or what an extension may go beyond,
// is left out: the type is then wider than in ASN.1.
#include <vector>

#include "asn1/integration/T3MeskNodes.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace mesk {
namespace {
// The alternatives of a constraint as items of a list; false when one of them cannot be said.
bool Alternatives(const AsnConstraint& constraint, std::vector<AsnConstraint>& items) {
  std::vector<AsnConstraint> waiting{constraint};
  while (!waiting.empty()) {
    const AsnConstraint at = waiting.back();
    waiting.pop_back();
    switch (getConstraintKind(at)) {
      case kUnion:
      case kCatenation:
        if (!FirstOperand(at) || !SecondOperand(at)) return false;
        waiting.push_back(SecondOperand(at));
        waiting.push_back(FirstOperand(at));
        break;
      case kSingleValue:
      case kValueRange:
        items.push_back(at);
        break;
      default:
        return false;
    }
  }
  return !items.empty();
}

Node Infinity(const tPosition& position, bool negative) {
  Node infinity = t.mT3Infinity(position);
  return negative ? t.mT3UnaryMinus(position, infinity) : infinity;
}

Node Literal(int64_t number, const tPosition& position) {
  const std::string digits = std::to_string(number);
  Node literal = t.mT3IntLiteral(position, gStringM.PutString(digits.substr(number < 0 ? 1 : 0)));
  return number < 0 ? t.mT3UnaryMinus(position, literal) : literal;
}

// TTCN-3 has no bound that does not belong to its range; for whole numbers the next one does. One beyond what
// values hold is none.
Node IntegerBound(const AsnValue& value, bool is_low, bool open, const tPosition& position) {
  if (!value) return Infinity(position, is_low);
  const Wide number = WideValue(value) + (!open ? 0 : is_low ? 1 : -1);
  if (number <= INT64_MIN || number > INT64_MAX) return Infinity(position, number < 0);
  return Literal(static_cast<int64_t>(number), position);
}

Node RealBound(const AsnValue& value, bool is_low, const tPosition& position) {
  return value ? translate_value(value) : Infinity(position, is_low);
}

Node Range(const AsnConstraint& range, MainType of, const tPosition& position) {
  const bool low_open = (range.node().open & kLowOpen) != 0, high_open = (range.node().open & kHighOpen) != 0;
  const AsnValue low = LowValue(range), high = HighValue(range);
  if (of != TYP_INTEGER && (low_open || high_open)) return nullptr;
  if (of != TYP_INTEGER && of != TYP_REAL) return nullptr;
  const bool whole = of == TYP_INTEGER;
  Node from = whole ? IntegerBound(low, true, low_open, position) : RealBound(low, true, position);
  Node to = whole ? IntegerBound(high, false, high_open, position) : RealBound(high, false, position);
  return from == nullptr || to == nullptr ? nullptr : t.mT3ValueRange(position, from, to);
}

Node ValueListOf(const AsnType& type, const AsnConstraint& constraint) {
  std::vector<AsnConstraint> items;
  if (!Alternatives(constraint, items)) return nullptr;
  const tPosition position = PositionOf(type);
  Node list = _sgT3NoValueListItem();
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    const bool is_range = getConstraintKind(*item) == kValueRange;
    const MainType of = getBaseTypeMainType(type);
    if (!is_range && of == TYP_INTEGER && !FitsInt64(WideValue(LowValue(*item)))) continue;
    Node value = is_range ? Range(*item, of, position) : translate_value(LowValue(*item));
    if (value == nullptr) return nullptr;
    list = t.mT3ValueListItem(position, list, value);
  }
  return T3Is<T3ValueListItem>(list) ? t.mT3ValueList(position, list) : nullptr;
}

// One length or one range of lengths.
Node LengthOf(const AsnType& type, const AsnConstraint& size) {
  const AsnConstraint inner = SizeAsLength(size);
  if (!inner) return nullptr;
  const tPosition position = PositionOf(type);
  const bool single = getConstraintKind(inner) == kSingleValue;
  const bool low_open = (inner.node().open & kLowOpen) != 0, high_open = (inner.node().open & kHighOpen) != 0;
  Node low = LowValue(inner) ? IntegerBound(LowValue(inner), true, low_open, position)
                             : t.mT3IntLiteral(position, gStringM.PutString("0"));
  Node high = single ? low : IntegerBound(HighValue(inner), false, high_open, position);
  return low == nullptr || high == nullptr ? nullptr : t.mT3LengthRange(position, low, high);
}

Node ConstraintOf(const AsnType& type, const AsnConstraint& constraint) {
  if (getConstraintKind(constraint) == kSize) return LengthOf(type, constraint);
  // Values of structured types, and characters, have no order and no list here.
  switch (getBaseTypeMainType(type)) {
    case TYP_SEQ:
    case TYP_SET:
    case TYP_CHOICE:
    case TYP_SEQOF:
    case TYP_SETOF:
    case TYP_ANY:
    case TYP_OPEN:
    case TYP_EXTERNAL:
      return nullptr;
    default:
      return ValueListOf(type, constraint);
  }
}
}  // namespace

Node WithConstraints(const AsnType& type, Node node) {
  forEachLocalTypeConstraint(type, [&](const AsnConstraint& constraint, int) {
    if (Node expression = ConstraintOf(type, constraint))
      node = t.mT3SubType(PositionOf(type), node, expression);
  });
  return node;
}
}  // namespace mesk
