// ASN.1 values as expressions of TTCN-3.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <unordered_map>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/integration/T3MeskNodes.h"
#include "asn1/integration/T3MeskTranslate.h"
#include "asn1/integration/T3Representation.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"
#include "driver/diagnostics/T3Error.h"
#include "analysis/names/T3Names.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace mesk {
namespace {
// The least number has no literal of its own.
Node IntegerLiteral(int64_t number, const tPosition& position) {
  if (number == INT64_MIN)
    return t.mT3Minus(position, IntegerLiteral(INT64_MIN + 1, position), IntegerLiteral(1, position));
  const std::string digits = std::to_string(number);
  Node literal = t.mT3IntLiteral(position, gStringM.PutString(digits.substr(number < 0 ? 1 : 0)));
  return number < 0 ? t.mT3UnaryMinus(position, literal) : literal;
}

Node FloatLiteral(std::string number, const tPosition& position) {
  const bool negative = number[0] == '-';
  if (negative) number.erase(0, 1);
  Node literal = t.mT3FloatLiteral(position, gStringM.PutString(number));
  return negative ? t.mT3UnaryMinus(position, literal) : literal;
}

// A number of base 2 in digits with a point where these are all of it, else with an exponent, which has no
// plus in TTCN-3.
std::string WithPoint(const RealValue& value, double number) {
  char text[64];
  if (value.base == 10) {
    std::snprintf(text, sizeof text, "%ldE%d", static_cast<long>(value.mantissa), value.exponent);
    return text;
  }
  const int length = std::snprintf(text, sizeof text, "%f", number);
  if (length < static_cast<int>(sizeof text) && std::strtod(text, nullptr) == number) return text;
  std::snprintf(text, sizeof text, "%.16E", number);
  std::string result = text;
  const size_t plus = result.find('+');
  return plus == std::string::npos ? result : result.erase(plus, 1);
}

// Zeros behind named bits tell nothing: there are as many as the type's sizes ask.
std::string Bits(const AsnValue& value, const AsnType& of) {
  std::string bits = ValueText(value);
  bool named = false;
  forEachNamedNumber(forBaseType(of), [&](const AsnValue&, int) { named = true; });
  const ConstrainedSet sizes = SizeSetOf(of);
  if (!named || !sizes.constrained || sizes.set.empty()) return bits;
  while (bits.size() > sizes.set.high() && bits.back() == '0') bits.pop_back();
  if (bits.size() < sizes.set.low() && sizes.set.low() <= kMaxStringUnits)
    bits.resize(static_cast<size_t>(sizes.set.low()), '0');
  return bits;
}

Node Real(const AsnValue& value, const tPosition& position) {
  const RealValue real = realValue(value);
  const double number = retRealVal(real);
  // What no float holds is the nearest one that does.
  if (std::isinf(number)) {
    Node infinity = t.mT3Infinity(position);
    return number > 0 ? infinity : t.mT3UnaryMinus(position, infinity);
  }
  return FloatLiteral(number == 0 ? "0.0" : WithPoint(real, number), position);
}

tStringRef Quoted(const std::string& text, const char* quote, const char* behind) {
  return gStringM.PutString(quote + text + quote + behind);
}

// The characters between double quotes, as the scanner leaves them: one quote for each.
Node CharString(const AsnValue& value, const tPosition& position) {
  return t.mT3CharStringLiteral(position, Quoted(ValueText(value), "\"", ""));
}

// Where an enumeration stands in the tree: the module, the declaration, and from there the names of
// components, empty for the element of a list.
struct EnumPlace {
  tIdent module;
  std::vector<tIdent> steps;
};

EnumPlace PlaceOf(const AsnType& type) {
  EnumPlace place{gIdents.MakeIdent(getModuleRef(*type.module)), {}};
  for (AsnType at = type; at; at = getFatherOfTypeComp(at))
    place.steps.insert(place.steps.begin(),
                       at.node().name == 0 ? NoIdent : gIdents.MakeIdent(MakeASNIdent(getTypeRef(at))));
  return place;
}

// The types of a module's declarations, or of a structure's fields, by their names. They are noted when first asked
// for, once the node is complete.
using TypesByName = std::unordered_map<tIdent, Node>;
TypesByName& TypesIn(Node owner) {
  static std::unordered_map<const T3Tree_Node*, TypesByName> known;
  return known[owner];
}

Node ComponentType(Node type, tIdent name) {
  while (T3Is<T3SubType>(type)) type = type->as<T3SubType>()->parent;
  if (auto* list = type->try_as<_T3HomogeneousType>()) return list->type;
  auto* structure = type->try_as<_T3StructuredType>();
  if (structure == nullptr) return nullptr;
  TypesByName& types = TypesIn(structure);
  if (types.empty())
    for (auto* field : Items<T3FieldType>(structure->body)) types.emplace(field->name, field->type);
  const auto found = types.find(name);
  return found == types.end() ? nullptr : found->second;
}

Node DeclaredType(T3Module* module, tIdent name) {
  TypesByName& types = TypesIn(module);
  if (types.empty())
    for (auto* at : Items<_T3Decl>(module->definition_part))
      if (auto* decl = at->try_as<T3TypeDecl>()) types.insert_or_assign(decl->name, decl->type);
  const auto found = types.find(name);
  return found == types.end() ? nullptr : found->second;
}

// The enumeration at a place, by which its items are known; null where it was not read or is another type.
Node EnumAt(const EnumPlace& place) {
  Node module = vexa_find_T3Module(place.module);
  if (module == nullptr) return nullptr;
  Node type = DeclaredType(module->as<T3Module>(), place.steps[0]);
  for (size_t i = 1; i < place.steps.size() && type != nullptr; ++i)
    type = ComponentType(type, place.steps[i]);
  while (T3Is<T3SubType>(type)) type = type->as<T3SubType>()->parent;
  return T3Is<T3EnumType>(type) ? type : nullptr;
}

void SetEnum(T3Identifier* literal, Node declared) {
  literal->cold().representation = gT3MESK;
  literal->cold().catr_target = declared;
}

// Items of enumerations of modules that were not read yet.
struct Waiting {
  T3Identifier* literal;
  EnumPlace place;
};
std::vector<Waiting>& waiting = *new std::vector<Waiting>;

T3Identifier* EnumLiteral(const std::string& item, const tPosition& position) {
  return t.mT3Identifier(position, gIdents.MakeIdent(MakeASNIdent(item)));
}

Node mesk_T3Enumerated_instance_construct(const EnumPlace& place, const std::string& item,
                                          const tPosition& position) {
  auto* literal = EnumLiteral(item, position);
  if (Node declared = EnumAt(place))
    SetEnum(literal, declared);
  else
    waiting.push_back({literal, place});
  return literal;
}

// The type behind all references. The alternative that a selection stands for is written anew where that
// stands.
Governor Base(Governor governor) {
  if (governor.type && isReference(governor.type)) governor = Governor(forNamedType(governor.type));
  if (!governor.type || getTypeMainType(governor.type) != TYP_SELECTION) return governor;
  return Base({forSelectionType(governor.type), governor.is_here});
}

Node Enumerated(const AsnValue& value, const Governor& type, const tPosition& position) {
  // An item of a type that is written within another one is known in its own module by its name.
  if (!isDefinedType(type.type) && type.is_here) return EnumLiteral(ValueText(value), position);
  return mesk_T3Enumerated_instance_construct(PlaceOf(type.type), ValueText(value), position);
}

Node Null(const AsnValue& value, const tPosition& position) {
  const EnumPlace place{gIdents.MakeIdent(getModuleRef(*value.module)), {gIdents.MakeIdent("NULL")}};
  return mesk_T3Enumerated_instance_construct(place, "NULL", position);
}

Node Compound(const std::vector<std::pair<Node, Node>>& fields, const tPosition& position) {
  Node list = _sgT3NoFieldValue();
  for (auto field = fields.rbegin(); field != fields.rend(); ++field)
    list = t.mT3FieldValue(position, list, field->first, field->second, t3_permutation_kind_t::No);
  return t.mT3CompoundValue(position, list);
}

Node FieldName(const std::string& name, const tPosition& position) {
  return t.mT3FieldName(position, gIdents.MakeIdent(MakeASNIdent(name)), _sgT3NoExpression());
}

// The components that are written, and the defaults of those that are not.
Node Structure(const AsnValue& value, const Governor& type, const tPosition& position) {
  std::vector<std::pair<Node, Node>> fields;
  std::set<std::string> written;
  bool good = true;
  forEachValueComp(value, [&](const AsnValue& part, int) {
    const std::string name = getValueRef(part);
    written.insert(name);
    Node node = translate_value(part, {findComponent(type.type, name), type.is_here});
    good = good && node != nullptr;
    fields.emplace_back(FieldName(name, position), node);
  });
  for (const AsnType& component : TypeComps(type.type)) {
    const std::string name = getTypeCompId(component);
    if (written.count(name) != 0) continue;
    const AsnValue preset = forDefaultValue(component);
    Node node = preset                          ? translate_value(preset, {component, type.is_here})
                : isOptionalTypeComp(component) ? t.mT3Omit(position)
                                                : nullptr;
    if (node != nullptr) fields.emplace_back(FieldName(name, position), node);
  }
  return good ? Compound(fields, position) : nullptr;
}

Node Elements(const AsnValue& value, const Governor& type, const tPosition& position) {
  std::vector<std::pair<Node, Node>> fields;
  bool good = true;
  forEachValueComp(value, [&](const AsnValue& element, int) {
    Node node = translate_value(element, {forTypeElem(type.type), type.is_here});
    good = good && node != nullptr;
    fields.emplace_back(_sgT3NoFieldSpec(), node);
  });
  return good ? Compound(fields, position) : nullptr;
}

Node Alternative(const AsnValue& value, const Governor& type, const tPosition& position) {
  std::vector<std::pair<Node, Node>> fields;
  forEachValueComp(value, [&](const AsnValue& component, int) {
    const std::string name = getValueRef(component);
    if (Node node = translate_value(component, {findComponent(type.type, name), type.is_here}))
      fields.emplace_back(FieldName(name, position), node);
  });
  return fields.size() == 1 ? Compound(fields, position) : nullptr;
}

Node ObjectIdentifier(const AsnValue& value, const tPosition& position) {
  std::vector<Node> numbers;
  forEachValueComp(value, [&](const AsnValue& part, int) {
    numbers.push_back(IntegerLiteral(int64Value(part), position));
  });
  Node list = _sgT3NoObjIdItem();
  for (auto number = numbers.rbegin(); number != numbers.rend(); ++number)
    list = t.mT3ObjIdItem(position, list, *number);
  return t.mT3ObjectIdentifierLiteral(position, list);
}

// A default has the name of its component.
Node Refused(const AsnValue& value, const AsnType& of, MainType type, const tPosition& position) {
  const std::string name = value.node().name == 0 && of ? getTypeCompId(of) : getValueRef(value);
  vexa_error("ASN.1 translation:  \"" + name + "\" value of " + getTypeMainTypeStri(type) + " not supported",
             position);
  return nullptr;
}
}  // namespace

Governor::Governor(const AsnType& type) : type(type), is_here(type && IsTranslated(*type.module)) {}

Node translate_value(const AsnValue& written, const Governor& of) {
  // A default may hold, by its own default, itself.
  static int nesting = 0;
  const NestingGuard guard(nesting, "Internal compiler error in DEFAULT translation");
  const tPosition position = PositionOf(written);
  const AsnValue value = skipValues(written);
  const AsnType given = of.type ? of.type : getTypeOfValue(written);
  const Governor governor = Base(of.type ? of : Governor(getTypeOfValue(value)));
  const AsnType& type = governor.type;
  const MainType main_type = type ? getTypeMainType(type) : getValueMainType(value);
  switch (main_type) {
    case TYP_BOOLEAN:
      return t.mT3BooleanLiteral(position, booleanValue(value));
    case TYP_INTEGER:
      return FitsInt64(WideValue(value)) ? IntegerLiteral(int64Value(value), position)
                                         : Refused(written, of.type, main_type, position);
    case TYP_ENUM:
      return Enumerated(value, governor, position);
    case TYP_REAL:
      return Real(value, position);
    case TYP_BITSTR:
      return t.mT3BitStringLiteral(position, Quoted(Bits(value, given), "'", "B"));
    case TYP_OCTSTR:
      return t.mT3OctStringLiteral(position, Quoted(ValueText(value), "'", "O"));
    case TYP_NULL:
      return Null(value, position);
    case TYP_SEQ:
    case TYP_SET:
      return Structure(value, governor, position);
    case TYP_SEQOF:
    case TYP_SETOF:
      return Elements(value, governor, position);
    case TYP_CHOICE:
      return Alternative(value, governor, position);
    case TYP_OBJID:
      return ObjectIdentifier(value, position);
    default:
      if (inTtcn(main_type) == InTtcn::kText) return CharString(value, position);
      return inTtcn(main_type) == InTtcn::kOpen ? Refused(written, of.type, main_type, position) : nullptr;
  }
}

void ResolveWaitingItems() {
  std::erase_if(waiting, [](const Waiting& one) {
    Node declared = EnumAt(one.place);
    if (declared != nullptr) SetEnum(one.literal, declared);
    return declared != nullptr;
  });
}

namespace {
// Whether a constant may be of a type as it stands: a name, without a constraint.
bool IsNamed(Node type) {
  if (const auto* subtype = type->try_as<T3SubType>())
    return subtype->constraint->is<T3NoExpression>() && IsNamed(subtype->parent);
  return type->is<T3TypeReference>() || type == gT3ErrorType;
}
}  // namespace

std::vector<Node> translate_value_decl(const AsnValue& value) {
  const AsnType type = getTypeOfValue(value);
  // Numbers that no value of TTCN-3 holds serve as bounds only.
  if (getValueMainType(skipValues(value)) == TYP_INTEGER && !FitsInt64(WideValue(value))) return {};
  Node expression = type ? translate_value(value) : nullptr;
  if (expression == nullptr) return {};
  const tPosition position = PositionOf(value);
  const auto declared = [&](const std::string& name) { return gIdents.MakeIdent(MakeASNIdent(name)); };
  std::vector<Node> decls;
  Node node = translate_type(type);
  if (!IsNamed(node)) {
    // No name of ASN.1 has two underscores side by side.
    const std::string name = getValueRef(value) + "__type";
    decls.push_back(t.mT3TypeDecl(position, _sgT3NoDecl(), declared(name), _sgT3NoWith(), node));
    node = Prepared(NamedType(name, position), type);
  }
  decls.push_back(
      t.mT3ConstDecl(position, _sgT3NoDecl(), declared(getValueRef(value)), _sgT3NoWith(), node, expression));
  return decls;
}
}  // namespace mesk
