// Types, their components, references and tags.
#include <algorithm>
#include <set>

#include "asn1/front/AsnFault.h"
#include "asn1/model/AsnFindings.h"

namespace asn1 {
namespace {
void Visit(ModRec& module, std::set<ModRec*>& seen, const ModuleCall& call, bool is_first) {
  if (!seen.insert(&module).second) return;
  for (const ImportRec& import : module.imports)
    if (import.module != nullptr && import.module->state == kRead) Visit(*import.module, seen, call, false);
  if (!is_first) call(module);
}

AsnType TypeAt(ModRec* module, int number) {
  return number == 0 ? AsnType{} : newAsnType(*module, number);
}
}  // namespace

AsnType newAsnType(ModRec& module, int number) {
  tNode(module, number);  // the number must be good
  return AsnType{{&module, number}};
}

std::string getModuleRef(const ModRec& module) {
  return convertHyphens(module.name);
}

std::string getModulePrefix(const ModRec& module) {
  return module.generation_prefix;
}

std::string DirectoryOption(const ModRec& module, const char* option) {
  const std::string directory = module.options.Text(option);
  return directory.empty() || directory.back() == '/' ? directory : directory + '/';
}

void forEachExportingModule(ModRec& module, const ModuleCall& call) {
  std::set<ModRec*> seen;
  Visit(module, seen, call, true);
}

void forEachType(ModRec& module, const TypeCall& call) {
  int index = 0;
  for (int number = module.header.first_type; number != 0; number = tNode(module, number).next)
    if (const AsnType type = newAsnType(module, number); !isClassType(type)) call(type, index++);
}

std::vector<AsnType> TypeComps(const AsnType& type, bool with_markers) {
  std::vector<AsnType> result;
  if (!isStructuredType(type)) return result;
  for (int number = type.node().first_component; number != 0; number = tNode(*type.module, number).next) {
    const AsnType component = newAsnType(*type.module, number);
    if (with_markers || !isTypeExtensionmarker(component)) result.push_back(component);
  }
  return result;
}

AsnType findComponent(const AsnType& type, const std::string& name) {
  auto& kept = KeptOf(type, &AsnFindings::components);
  if (kept == nullptr) {
    kept = std::make_unique<AsnFindings::ByName>();
    for (const AsnType& component : TypeComps(type)) kept->emplace(getTypeCompId(component), component.number);
  }
  const auto found = kept->find(name);
  return found == kept->end() ? AsnType{} : AsnType{{type.module, found->second}};
}

void forEachTypeComp(const AsnType& type, const TypeCall& call) {
  int index = 0;
  for (const AsnType& component : TypeComps(type, true)) {
    call(component, index);
    if (!isTypeExtensionmarker(component)) ++index;
  }
}

AsnType forTypeElem(const AsnType& type) {
  return isListType(type) ? TypeAt(type.module, type.node().first_component) : AsnType{};
}

MainType getTypeMainType(const AsnType& type) {
  return static_cast<MainType>(type.node().main_type);
}

MainType getBaseTypeMainType(const AsnType& type) {
  return getTypeMainType(forBaseType(type));
}

bool isClassType(const AsnType& type) {
  const MainType main_type = getBaseTypeMainType(type);
  return main_type == TYP_CLASS || main_type == TYP_TYPE_ID || main_type == TYP_ABSTR_STX;
}

const char* getTypeMainTypeStri(MainType type) {
  return type <= TYP_NONE ? rowOf(type).asn1_name : "?!?";
}

AsnType forSynonymType(const AsnType& type) {
  if (getTypeMainType(type) != TYP_SYNONYM) return type;
  if (type.node().ref_type == 0) fatalError(kInternal, "Unable to find synonym type.");
  return newAsnType(getModPtr(*type.module, type.node().ref_module), type.node().ref_type);
}

AsnType forTypeBehind(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  if (main_type == TYP_SYNONYM) return forSynonymType(type);
  return main_type == TYP_SELECTION ? forSelectionType(type) : AsnType{};
}

AsnType forBaseType(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  if (main_type != TYP_SYNONYM && main_type != TYP_SELECTION) return type;
  return FindEnd(type, forTypeBehind, &AsnFindings::bases, "Unable to find synonym type.");
}

AsnType forNamedType(const AsnType& type) {
  const auto by_name = [](const AsnType& at) { return isReference(at) ? forSynonymType(at) : AsnType{}; };
  return FindEnd(type, by_name, &AsnFindings::named, "Unable to find synonym type.");
}

AsnType forSelectionType(const AsnType& type) {
  // A selection from what another selection stands for, and so on without an end.
  static int nesting = 0;
  const NestingGuard guard(nesting, "Unable to find synonym type.");
  const AsnType choice =
      forBaseType(newAsnType(getModPtr(*type.module, type.node().ref_module), type.node().ref_type));
  const std::string name = convertHyphens(getStri(*type.module, type.node().ref_name));
  if (const AsnType alternative = findComponent(choice, name)) return alternative;
  fatalError(kInternal, "Unable to find synonym type.");
}

std::string getTypeRef(const AsnType& type) {
  return type.node().name == 0 ? "?!?" : convertHyphens(getStri(*type.module, type.node().name));
}

std::string getTypeCompId(const AsnType& type) {
  if (isTypeExtensionmarker(type)) return "extensionmarker";
  return getTypeRef(type);
}

int getTypeCompStatus(const AsnType& type) {
  return type.node().status;
}

bool isDefinedType(const AsnType& type) {
  return type.node().status == kDefinition;
}

bool isSynonymType(const AsnType& type) {
  return isDefinedType(type) && isReference(type);
}

bool isReference(const AsnType& type) {
  return getTypeMainType(type) == TYP_SYNONYM;
}

bool isStructuredType(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  return main_type == TYP_SEQ || main_type == TYP_SET || main_type == TYP_CHOICE;
}

bool isListType(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  return main_type == TYP_SEQOF || main_type == TYP_SETOF;
}

bool isLeafType(const AsnType& type) {
  return !isListType(type) && (!isStructuredType(type) || getNrOfTypeComps(type) == 0) && !isReference(type);
}

bool isTypeExtensionmarker(const AsnType& type) {
  return getTypeMainType(type) == TYP_EXTENSION_MARKER;
}

bool isOptionalTypeComp(const AsnType& type) {
  return type.node().presence != kDefault && !isMandatoryTypeComp(type);
}

bool isMandatoryTypeComp(const AsnType& type) {
  if (type.node().presence != kMandatory) return false;
  return !isExtensionAdditionComponent(type) || getTypeMainType(getFatherOfTypeComp(type)) == TYP_CHOICE;
}

bool isExtensibleEnumeratedList(const AsnType& type) {
  return getTypeMainType(type) == TYP_ENUM && (type.node().flags2 & kFlag2Extensible) != 0;
}

bool isExtensionAdditionComponent(const AsnType& type) {
  return type.node().addition != 0;
}

int getNrOfTypeComps(const AsnType& type) {
  return static_cast<int>(TypeComps(type).size());
}

int getNrOfOptionalTypeComps(const AsnType& type) {
  const std::vector<AsnType> all = TypeComps(type);
  return static_cast<int>(
      std::count_if(all.begin(), all.end(), [](const AsnType& one) { return !isMandatoryTypeComp(one); }));
}

int getTypeCompNbr(const AsnType& type) {
  return type.node().component_nbr;
}

int getUniqueTypeNr(const AsnType& type) {
  return type.node().unique;
}

int getTypeDefinitionLine(const AsnType& type) {
  return type.node().line;
}

AsnType getFatherOfTypeComp(const AsnType& type) {
  return TypeAt(type.module, type.node().parent);
}

AsnType getDefinitionOf(const AsnType& type) {
  return type.node().definition == 0 ? type : TypeAt(type.module, type.node().definition);
}

AsnValue forDefaultValue(const AsnType& type) {
  if (type.node().presence != kDefault || type.node().default_value == 0) return {};
  return newAsnValue(*type.module, type.node().default_value);
}

bool isEntryType(const AsnType& type) {
  if (!isDefinedType(type)) return false;
  return (type.node().flags & kFlagEntryType) != 0 ||
         type.module->options.entries().count(getStri(*type.module, type.node().name)) != 0;
}

AsnType forTypeByUniqueNr(ModRec& module, int unique) {
  for (int number = module.header.first_type; number != 0; number = tNode(module, number).next)
    if (tNode(module, number).unique == unique) return newAsnType(module, number);
  return {};
}

AsnType findTypeById(ModRec& module, const std::string& reference) {
  for (int number = module.header.first_type; number != 0; number = tNode(module, number).next)
    if (convertHyphens(getStri(module, tNode(module, number).name)) == reference)
      return newAsnType(module, number);
  return {};
}

std::vector<AsnTag> TagsOf(const AsnType& type) {
  std::vector<AsnTag> tags;
  bool replaces = false;  // the tag before is implicit: it stands in place of the next one
  const auto add = [&](TagClass tag_class, int number, bool constructed) {
    if (replaces)
      tags.back().constructed = constructed;
    else
      tags.push_back({tag_class, number, constructed});
  };
  constexpr const char* kFault = "Unable to find synonym type.";
  const auto towards_tags = [](const AsnType& at) {
    return at.node().first_tag != 0 ? AsnType{} : forTypeBehind(at);
  };
  ChainGuard guard({}, kFault);
  for (AsnType at = type;;) {
    at = FindEnd(at, towards_tags, &AsnFindings::tagged, kFault);
    guard.Pass(at);
    for (int number = at.node().first_tag; number != 0; number = tagRec(*at.module, number).next) {
      const TagRec& tag = tagRec(*at.module, number);
      add(static_cast<TagClass>(tag.tag_class), tag.number, true);
      replaces = tag.is_explicit == 0;
    }
    if (const AsnType behind = forTypeBehind(at)) {
      at = behind;
      continue;
    }
    // EXTERNAL is encoded as the SEQUENCE that it stands for.
    const MainType main_type = getTypeMainType(at);
    const MainTypeRow& row = rowOf(main_type);
    if (row.tag > 0) add(kTagUniversal, row.tag, row.constructed || main_type == TYP_EXTERNAL);
    return tags;
  }
}
}  // namespace asn1
