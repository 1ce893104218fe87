// Values, named numbers and constraints.
#include <climits>
#include <cmath>

#include "asn1/front/AsnFault.h"
#include "asn1/model/AsnFindings.h"

namespace asn1 {
namespace {
constexpr int kLargestExponent = 32767;
constexpr int64_t kMinusInfinity = -2, kPlusInfinity = -1;

void ForChain(ModRec& module, int first, const ValueCall& call) {
  int index = 0;
  for (int number = first; number != 0; number = vNode(module, number).next)
    call(newAsnValue(module, number), index++);
}

RealValue FromSequence(const AsnValue& value) {
  int64_t parts[3] = {0, 10, 0};
  forEachValueComp(value, [&](const AsnValue& component, int index) {
    if (index < 3) parts[index] = int64Value(component);
  });
  RealValue result;
  if (parts[0] == 0) {
    result.special = RealValue::Zero;
    return result;
  }
  const auto clamp = [](int64_t number, int64_t low) {
    return static_cast<int>(number < low ? low : number > kLargestExponent ? kLargestExponent : number);
  };
  result.mantissa = parts[0];
  result.base = clamp(parts[1], 0);
  result.exponent = clamp(parts[2], -kLargestExponent);
  return result;
}

RealValue FromRecord(const VNode& node) {
  RealValue result;
  const int64_t mantissa = Int64Of(node.v.r.mantissa);
  if (node.v.r.base != -1) {
    result.mantissa = mantissa;
    result.base = node.v.r.base;
    result.exponent = node.v.r.exponent;
    if (mantissa == 0) result.special = RealValue::Zero;
  } else {
    result.special = mantissa == kMinusInfinity  ? RealValue::MinusInfinity
                     : mantissa == kPlusInfinity ? RealValue::PlusInfinity
                                                 : RealValue::Zero;
  }
  return result;
}

AsnConstraint ConstraintAt(ModRec* module, int number) {
  return number == 0 ? AsnConstraint{} : newAsnConstraint(*module, number);
}

AsnValue ValueAt(ModRec* module, int number) {
  return number == 0 ? AsnValue{} : newAsnValue(*module, number);
}

// One step along a chain of value references; false where it ends.
AsnValue ValueStep(const AsnValue& value) {
  const VNode& node = value.node();
  return node.main_type == TYP_SYNONYM
             ? newAsnValue(getModPtr(*value.module, node.ref_module), node.ref_value)
             : AsnValue{};
}
}  // namespace

AsnValue newAsnValue(ModRec& module, int number) {
  vNode(module, number);
  return AsnValue{{&module, number}};
}

AsnConstraint newAsnConstraint(ModRec& module, int number) {
  subRec(module, number);
  return AsnConstraint{{&module, number}};
}

void forEachNamedNumber(const AsnType& type, const ValueCall& call) {
  ForChain(*type.module, type.node().first_named, call);
}

void forEachValue(ModRec& module, const ValueCall& call) {
  ForChain(module, module.header.first_value, call);
}

MainType getValueMainType(const AsnValue& value) {
  return static_cast<MainType>(value.node().main_type);
}

AsnValue skipValues(const AsnValue& value) {
  if (getValueMainType(value) != TYP_SYNONYM) return value;
  return FindEnd(value, ValueStep, &AsnFindings::values, "Unable to construct a value for a constraint.");
}

std::string getValueRef(const AsnValue& value) {
  return value.node().name == 0 ? "?!?" : convertHyphens(getStri(*value.module, value.node().name));
}

AsnType getTypeOfValue(const AsnValue& value) {
  return value.node().type == 0 ? AsnType{} : newAsnType(*value.module, value.node().type);
}

void forEachValueComp(const AsnValue& value, const ValueCall& call) {
  ForChain(*value.module, value.node().first_component, call);
}

bool booleanValue(const AsnValue& value) {
  return int64Value(value) != 0;
}

int64_t int64Value(const AsnValue& value) {
  return Int64Of(skipValues(value).node().v.i.integer);
}

Wide WideValue(const AsnValue& value) {
  const AsnValue base = skipValues(value);
  const VNode& node = base.node();
  if ((node.flags & kFlagWide) == 0 || node.text8 == 0) return Int64Of(node.v.i.integer);
  const std::string& text = getStri(*base.module, node.text8);
  const bool negative = !text.empty() && text[0] == '-';
  Wide number = 0;
  return ParseWide(std::string_view(text).substr(negative ? 1 : 0), negative, number)
             ? number
             : Int64Of(node.v.i.integer);
}

std::string integerValueStri(const AsnValue& value) {
  return ToString(WideValue(value));
}

const std::string& ValueText(const AsnValue& value) {
  const AsnValue base = skipValues(value);
  return getStri(*base.module, base.node().text8);
}

RealValue realValue(const AsnValue& value) {
  const AsnValue base = skipValues(value);
  switch (getValueMainType(base)) {
    case TYP_REAL:
      return FromRecord(base.node());
    case TYP_SEQ:
    case TYP_SEQOF:
      return FromSequence(base);
    default: {
      RealValue result;
      result.mantissa = int64Value(base);
      if (result.mantissa == 0) result.special = RealValue::Zero;
      return result;
    }
  }
}

double retRealVal(const RealValue& value) {
  switch (value.special) {
    case RealValue::Zero:
      return 0.0;
    case RealValue::PlusInfinity:
      return HUGE_VAL;
    case RealValue::MinusInfinity:
      return -HUGE_VAL;
    case RealValue::None:
      break;
  }
  return static_cast<double>(static_cast<long double>(value.mantissa) *
                             std::pow(static_cast<long double>(value.base), value.exponent));
}

AsnConstraint firstConstraint(const AsnType& type) {
  return ConstraintAt(type.module, type.node().constraint);
}

AsnConstraint nextConstraint(const AsnConstraint& constraint) {
  return ConstraintAt(constraint.module, constraint.node().next);
}

void forEachLocalTypeConstraint(const AsnType& type, const ConstraintCall& call) {
  int index = 0;
  for (AsnConstraint at = firstConstraint(type); at; at = nextConstraint(at)) call(at, index++);
}

bool isLocalTypeConstraints(const AsnType& type) {
  return type.node().constraint != 0;
}

bool isConstraints(const AsnType& type) {
  const auto towards_constraints = [](const AsnType& at) {
    return isLocalTypeConstraints(at) || !isReference(at) ? AsnType{} : forSynonymType(at);
  };
  return isLocalTypeConstraints(
      FindEnd(type, towards_constraints, &AsnFindings::constrained, "Unable to find synonym type."));
}

ConstraintKind getConstraintKind(const AsnConstraint& constraint) {
  return static_cast<ConstraintKind>(constraint.node().kind);
}

AsnConstraint FirstOperand(const AsnConstraint& constraint) {
  return ConstraintAt(constraint.module, constraint.node().first);
}

AsnConstraint SecondOperand(const AsnConstraint& constraint) {
  return ConstraintAt(constraint.module, constraint.node().second);
}

AsnConstraint SizeAsLength(const AsnConstraint& constraint) {
  if (getConstraintKind(constraint) != kSize) return {};
  const AsnConstraint inner = FirstOperand(constraint);
  const bool one =
      inner && (getConstraintKind(inner) == kSingleValue || getConstraintKind(inner) == kValueRange);
  return one ? inner : AsnConstraint{};
}

AsnValue LowValue(const AsnConstraint& constraint) {
  return ValueAt(constraint.module, constraint.node().value);
}

AsnValue HighValue(const AsnConstraint& constraint) {
  return ValueAt(constraint.module, constraint.node().value2);
}

AsnType forContainedSubtypeConstraint(const AsnConstraint& constraint) {
  const int number = constraint.node().component_type;
  return number == 0 ? AsnType{} : newAsnType(*constraint.module, number);
}
}  // namespace asn1
