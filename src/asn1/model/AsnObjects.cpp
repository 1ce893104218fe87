#include "asn1/model/AsnObjects.h"

#include "asn1/front/AsnFault.h"

namespace asn1 {
namespace {
constexpr int kDeepestSet = 1000;

std::string FieldName(const ModRec& module, int text) {
  std::string name = text == 0 ? std::string() : getStri(module, text);
  if (!name.empty() && name[0] == '&') name.erase(0, 1);
  return convertHyphens(name);
}

// What a set holds are objects and other sets; only objects have parts with the names of fields.
bool IsObject(const AsnValue& value) {
  const int first = value.node().first_component;
  if (first == 0) return false;
  const int name = vNode(*value.module, first).name;
  return name != 0 && getStri(*value.module, name)[0] == '&';
}

void Flatten(const AsnValue& value, std::vector<AsnObject>& objects, int depth) {
  if (depth > kDeepestSet) fatalError(kInternal, "Too complex object set");
  const AsnValue base = skipValues(value);
  if (getValueMainType(base) == TYP_EXTENSION_MARKER) return;
  if (IsObject(base)) {
    objects.push_back(base);
    return;
  }
  forEachValueComp(base, [&](const AsnValue& part, int) { Flatten(part, objects, depth + 1); });
}

// The class behind an object's governor.
AsnType ClassOf(const AsnObject& object) {
  const AsnType governor = getTypeOfValue(object);
  return governor ? forBaseType(governor) : AsnType{};
}
}  // namespace

AsnObjectSet forObjectSet(const AsnConstraint& constraint) {
  const AsnValue set = getConstraintKind(constraint) == kTableConstraint ? LowValue(constraint) : AsnValue{};
  return set ? skipValues(set) : set;
}

std::vector<AsnObjectSet> ObjectSetsOf(ModRec& module) {
  std::vector<AsnObjectSet> sets;
  for (int number = module.header.first_object_set; number != 0; number = vNode(module, number).next)
    sets.push_back(newAsnValue(module, number));
  return sets;
}

std::string getObjectSetRef(const AsnObjectSet& set) {
  return set.node().name == 0 ? std::string() : convertHyphens(getStri(*set.module, set.node().name));
}

std::vector<AsnObject> constructSetObjects(const AsnObjectSet& set) {
  std::vector<AsnObject> objects;
  Flatten(set, objects, 0);
  return objects;
}

void forEachFieldValue(const AsnObject& object, const FieldValueCall& call) {
  forEachValueComp(object, [&](const AsnValue& field, int) { call(field); });
}

std::string getObjClassFieldRef(const AsnValue& field) {
  return FieldName(*field.module, field.node().name);
}

// Sets of values are types with constraints, which tell the kind of their field.
bool isTypeFieldValue(const AsnValue& field) {
  return field.node().field_type != 0 && forTypeFieldValue(field).node().field_kind != kFixedValueSetField;
}

bool isFixedTypeValueFieldValue(const AsnObject& object, const AsnValue& field) {
  if (field.node().field_type != 0) return false;
  const AsnType of = ClassOf(object);
  // An object that was written within a set may come without its class: its values then tell what they are.
  if (!of || getTypeMainType(of) != TYP_CLASS) return getValueMainType(skipValues(field)) != TYP_CLASS;
  for (int number = of.node().first_component; number != 0; number = tNode(*of.module, number).next) {
    const TNode& node = tNode(*of.module, number);
    if (FieldName(*of.module, node.name) == getObjClassFieldRef(field))
      return node.field_kind == kFixedValueField;
  }
  return false;
}

AsnType forTypeFieldValue(const AsnValue& field) {
  return newAsnType(*field.module, field.node().field_type);
}

std::vector<AsnType> TypesOfObjects(ModRec& module) {
  std::vector<AsnType> types;
  for (size_t number = 1; number <= module.values.size(); ++number) {
    const AsnValue value = newAsnValue(module, static_cast<int>(number));
    if (!isTypeFieldValue(value)) continue;
    const AsnType type = forTypeFieldValue(value);
    const AsnType named = isReference(type) && !isDefinedType(type) ? forSynonymType(type) : type;
    if (isDefinedType(named)) types.push_back(named);
  }
  return types;
}

std::string ClassFieldOf(const AsnType& type) {
  if (type.node().class_chain != 0)
    return FieldName(*type.module, tNode(*type.module, type.node().class_chain).name);
  const int name = type.node().ref_name;
  return name != 0 && getStri(*type.module, name)[0] == '&' ? FieldName(*type.module, name) : std::string();
}

AsnType forAtNotation(const AsnConstraint& constraint) {
  const int path = constraint.node().path;
  if (path == 0) return {};
  const SNode& step = sNode(*constraint.module, path);
  if (step.next != 0 || step.code != kComponentReference || step.record == 0) return {};
  return newAsnType(getModPtr(*constraint.module, step.module), step.record);
}
}  // namespace asn1
