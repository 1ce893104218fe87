// ASN.1 types as types of TTCN-3.
#include <algorithm>
#include <vector>

#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3MeskNodes.h"
#include "asn1/integration/T3Representation.h"
#include "asn1/model/AsnNames.h"
#include "analysis/names/T3Names.h"
#include "driver/diagnostics/Errors.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"
#include "support/rFsearch.h"

using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace mesk {
namespace {
// The module that is translated, and its source.
const ModRec* translated = nullptr;
tIdent source_file = NoIdent;

// What another module wrote stands in its source, which goes by its name on the command line.
tIdent SourceOf(const ModRec& module) {
  if (&module == translated) return source_file;
  for (const std::string& source : AsnSources())
    if (rBaseName(source) == rBaseName(module.source)) return gIdents.MakeIdent(source);
  return gIdents.MakeIdent(module.source);
}

tPosition At(const ModRec& module, int line, int column) {
  tPosition position;
  position.Line = static_cast<uint32_t>(line);
  position.Column = static_cast<uint16_t>(column);
  position.File = static_cast<uint32_t>(SourceOf(module));
  return position;
}

// The name of a main type that is declared in each module; empty for others.
std::string BuiltinName(MainType type) {
  if (type == TYP_OPEN) return BuiltinName(TYP_ANY);
  const InTtcn kind = inTtcn(type);
  if (kind != InTtcn::kNamed && kind != InTtcn::kText && kind != InTtcn::kOpen) return {};
  std::string name = getTypeMainTypeStri(type);
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

Node Unsupported(const AsnType& type, MainType main_type) {
  // A type without a number among the main types has its word only.
  const std::string what = main_type == TYP_NONE && type.node().ref_name != 0
                               ? getStri(*type.module, type.node().ref_name)
                               : getTypeMainTypeStri(main_type);
  if (isDefinedType(type))
    vexa_error("ASN.1 translation: type \"" + getTypeRef(type) + "\" not supported " + what,
               PositionOf(type));
  else
    vexa_error("ASN.1 translation: type\"" + cTypeId(type) + "\" not supported " + what, PositionOf(type));
  return gT3ErrorType;
}

Node EnumType(const AsnType& type) {
  std::vector<AsnValue> items;
  forEachNamedNumber(type, [&](const AsnValue& item, int) { items.push_back(item); });
  Node list = _sgT3NoEnumValue();
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    const tPosition position = PositionOf(*item);
    const int64_t number = int64Value(*item);
    Node value =
        t.mT3IntLiteral(position, gStringM.PutString(std::to_string(number).substr(number < 0 ? 1 : 0)));
    if (number < 0) value = t.mT3UnaryMinus(position, value);
    list = t.mT3EnumValue(position, list, gIdents.MakeIdent(MakeASNIdent(getValueRef(*item))), value);
  }
  return t.mT3EnumType(PositionOf(type), list);
}

Node translate_default_value(const AsnType& component) {
  const AsnValue value = forDefaultValue(component);
  const Node node = value ? translate_value(value, {component, true}) : nullptr;
  return node != nullptr ? node : _sgT3NoExpression();
}

// Old sources may leave names out, which fields need.
void RequireName(const AsnType& component) {
  if (component.node().name == 0)
    vexa_error(
        "ASN.1 translation: a component of \"" + getTypeRef(getDefinitionOf(component)) + "\" has no name",
        PositionOf(component));
}

Node translate_type_component(const AsnType& component, Node next) {
  RequireName(component);
  return t.mT3FieldType(PositionOf(component), next,
                        gIdents.MakeIdent(MakeASNIdent(getTypeCompId(component))), translate_type(component),
                        isOptionalTypeComp(component), translate_default_value(component));
}

Node Fields(const AsnType& type) {
  const std::vector<AsnType> components = TypeComps(type);
  std::vector<Node> fields;
  // Made in their order, so that messages come in it.
  for (const AsnType& component : components) fields.push_back(translate_type_component(component, nullptr));
  Node list = _sgT3NoFieldType();
  for (auto field = fields.rbegin(); field != fields.rend(); ++field) {
    (*field)->as<T3FieldType>()->next = list;
    list = *field;
  }
  return list;
}

// The type of a definition that stands in this module or another one.
Node DefinedType(const AsnType& from, const AsnType& definition) {
  const tPosition position = PositionOf(from);
  const tIdent name = gIdents.MakeIdent(MakeASNIdent(getTypeRef(definition)));
  if (definition.module == translated) return t.mT3TypeReference(position, t.mT3Identifier(position, name));
  Node module = t.mT3Identifier(position, gIdents.MakeIdent(getModuleRef(*definition.module)));
  return t.mT3TypeReference(position, t.mT3Qualifier(position, module, name));
}

Node Constructed(const AsnType& type, MainType main_type) {
  const tPosition position = PositionOf(type);
  switch (main_type) {
    case TYP_ENUM:
      return EnumType(type);
    case TYP_SEQ:
      return t.mT3RecordType(position, Fields(type));
    case TYP_SET:
      return t.mT3SetType(position, Fields(type));
    case TYP_CHOICE:
      return t.mT3UnionType(position, Fields(type));
    case TYP_SEQOF:
      return t.mT3RecordOfType(position, translate_type(forTypeElem(type)));
    case TYP_SETOF:
      return t.mT3SetOfType(position, translate_type(forTypeElem(type)));
    default:
      return nullptr;
  }
}
}  // namespace

long Begin(const ModRec& module, tIdent file) {
  translated = &module;
  source_file = file;
  return Errors();
}

bool IsTranslated(const ModRec& module) {
  return &module == translated;
}

long Errors() {
  return gErrors.ErrorCount();
}

tPosition PositionOf(const AsnType& type) {
  return At(*type.module, type.node().line, type.node().column);
}

tPosition PositionOf(const AsnValue& value) {
  return At(*value.module, value.node().line, value.node().column);
}

Node External(tIdent module, tIdent type) {
  auto* external = t.mMESK_External(NoPosition);
  external->attr().module_identifier = module;
  external->attr().type_identifier = type;
  return external;
}

Node Prepared(Node node, const AsnType& type) {
  auto* made = node->try_as<_T3Type>();
  if (made == nullptr || node == gT3ErrorType) return node;
  made->cold().representation = gT3MESK;
  made->cold().inlined = true;
  if (type)
    made->cold().external =
        External(gIdents.MakeIdent(type.module->name),
                 gIdents.MakeIdent(std::to_string(getUniqueTypeNr(getDefinitionOf(type)))));
  return node;
}

Node NamedType(const std::string& name, const tPosition& position) {
  return t.mT3TypeReference(position, t.mT3Identifier(position, gIdents.MakeIdent(name)));
}

namespace {
// The alternative is written anew where it is selected, which has no end where it holds itself.
Node SelectedType(const AsnType& type) {
  constexpr int kDeepest = 100;
  static int nesting = 0;
  if (nesting > kDeepest) {
    vexa_error("ASN.1 translation: the selection in \"" + getTypeRef(getDefinitionOf(type)) +
                   "\" contains itself; give its alternative a name",
               PositionOf(type));
    return gT3ErrorType;
  }
  ++nesting;
  Node node = translate_type(forSelectionType(type));
  --nesting;
  return node;
}
}  // namespace

Node translate_type(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  const tPosition position = PositionOf(type);
  Node node = nullptr;
  bool is_subtype = false;  // with or without a constraint
  if (main_type == TYP_SYNONYM) {
    node = DefinedType(type, forSynonymType(type));
    is_subtype = isDefinedType(type);  // a component is just of the type
  } else if (main_type == TYP_SELECTION) {
    node = SelectedType(type);
    is_subtype = isDefinedType(type) && T3Is<T3TypeReference>(node);
  } else if (const std::string name = BuiltinName(main_type); !name.empty()) {
    node = NamedType(name, position);
    is_subtype = true;
  } else {
    node = Constructed(type, main_type);
    if (node == nullptr) return Unsupported(type, main_type);
  }
  Prepared(node, type);
  Node constrained = WithConstraints(type, node);
  if (constrained == node && is_subtype) constrained = t.mT3SubType(position, node, _sgT3NoExpression());
  return Prepared(constrained, type);
}
}  // namespace mesk
