#include "asn2c/Homes.h"

#include <algorithm>
#include <functional>
#include <set>
#include <vector>

#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"

namespace asn2c {
using namespace asn1;  // NOLINT(google-build-using-namespace)

namespace {
class Homes {
 public:
  Homes(ModRec& module, CFile& file) : module_(module), file_(file) {}

  void Write() {
    forEachType(module_, [&](const AsnType& type, int) { Announce(type); });
    file_ << "\n";
    forEachType(module_, [&](const AsnType& type, int) { Define(type); });
  }

 private:
  // A class is no type of values.
  static bool HasHome(const AsnType& type) { return cGetVF(type) != VF_NONE; }

  // Structures and lists may be named before they are defined, by other names as well.
  static bool IsAnnounced(const AsnType& type) {
    return HasHome(type) && IsStructured(type) && isDefinedType(forBaseType(type));
  }

  void Announce(const AsnType& type) {
    if (IsAnnounced(type))
      file_ << "typedef struct t_" << cTypeId(forBaseType(type)) << " " << cTypeId(type) << ";\n";
  }

  // Defines a type behind all that must be complete before it.
  void Define(const AsnType& type) {
    if (!HasHome(type) || type.module != &module_ || !defined_.insert(type.number).second) return;
    ForNeeded(type, [&](const AsnType& needed) { Define(needed); });
    const std::string name = cTypeId(type);
    const bool alias = isReference(type) || getTypeMainType(type) == TYP_SELECTION;
    if (alias && IsAnnounced(type)) return;
    if (alias) {
      file_ << "typedef " << AliasOf(type) << " " << name << ";\n";
    } else if (IsStructured(type)) {
      file_ << "struct t_" << name << " {\n";
      Members(type, 1);
      file_ << "};\n";
    } else {
      file_ << "typedef " << PredefinedType(type) << " " << name << ";\n";
    }
  }

  static std::string AliasOf(const AsnType& type) {
    const AsnType definition =
        getTypeMainType(type) == TYP_SELECTION ? forSelectionType(type) : forSynonymType(type);
    // Numbers may have another form under the constraint of the new name.
    return IsStructured(type) || cGetVF(type) == cGetVF(definition) ? cBaseTypeId(definition)
                                                                    : PredefinedType(type);
  }

  // The alternative that a selection leads to in the end; any other type itself.
  static AsnType Selected(AsnType type) {
    while (getTypeMainType(type) == TYP_SELECTION) type = forSelectionType(type);
    return type;
  }

  void ForNeeded(const AsnType& type, const std::function<void(const AsnType&)>& call) {
    if (isReference(type)) {
      call(forSynonymType(type));
    } else if (getTypeMainType(type) == TYP_SELECTION) {
      const AsnType selected = Selected(type);
      call(isReference(selected) ? forSynonymType(selected) : getDefinitionOf(selected));
    } else if (isListType(type)) {
      const AsnType element = forTypeElem(type);
      // The elements lie elsewhere: a structure's name is enough for them.
      if (isReference(element) && !(IsStructured(element) && !isReference(forSynonymType(element))))
        call(forSynonymType(element));
      else if (!isReference(element))
        ForNeeded(element, call);
    } else {
      for (const AsnType& component : TypeComps(type)) NeededByComponent(component, call);
    }
  }

  void NeededByComponent(const AsnType& component, const std::function<void(const AsnType&)>& call) {
    const AsnType selected = Selected(component);
    if (!isReference(selected)) return ForNeeded(component, call);
    const AsnType definition = forSynonymType(selected);
    if (IsByPointer(component) && !isReference(definition)) return;
    call(definition);
  }

  void Members(const AsnType& type, int depth) {
    const std::string indent(static_cast<size_t>(depth) * 2, ' ');
    if (isListType(type)) {
      file_ << indent << "uint32 n;\n";
      Member(forTypeElem(type), "*elem", depth);
      return;
    }
    const int words = ControlWords(type);
    if (words == 1) file_ << indent << "uint32 compmask;\n";
    if (words > 1) file_ << indent << "uint32 compmask[" << words << "];\n";
    const std::vector<AsnType> components = TypeComps(type);
    const bool is_choice = getTypeMainType(type) == TYP_CHOICE;
    if (is_choice) file_ << indent << "sint32 choice;\n" << indent << "union {\n";
    if (components.empty()) file_ << indent << (is_choice ? "  " : "") << "NULLTYPE nothing;\n";
    for (const AsnType& component : components)
      Member(component, (IsByPointer(component) ? "*" : "") + cComponentId(component),
             is_choice ? depth + 1 : depth);
    if (is_choice) file_ << indent << "};\n";
  }

  void Member(const AsnType& component, const std::string& name, int depth) {
    const std::string indent(static_cast<size_t>(depth) * 2, ' ');
    const bool inside =
        IsStructured(component) && !isReference(component) && getTypeMainType(component) != TYP_SELECTION;
    if (!inside) {
      file_ << indent << cBaseTypeId(component) << " " << name << ";\n";
      return;
    }
    file_ << indent << "struct t_" << cTypeId(component) << " {\n";
    Members(component, depth + 1);
    file_ << indent << "} " << name << ";\n";
  }

  ModRec& module_;
  CFile& file_;
  std::set<int> defined_;
};
}  // namespace

void WriteHomes(ModRec& module, const std::string& second, CFile& file) {
  const std::string prefix = getModulePrefix(module);
  const std::string guard = GuardOf(prefix + ".typ");
  const bool is_second = !second.empty() && prefix.size() > second.size() &&
                         prefix.compare(prefix.size() - second.size(), second.size(), second) == 0;
  const std::string first =
      is_second ? GuardOf(prefix.substr(0, prefix.size() - second.size()) + ".typ") : std::string();
  file << "/* The C types that hold values of the ASN.1 module " << module.name << ". */\n";
  if (is_second)
    file << "#if !defined " << guard << " && !defined " << first << "\n";
  else
    file << "#ifndef " << guard << "\n";
  file << "#define " << guard << "\n\n#include \"asnmisc.typ\"\n";
  std::set<std::string> included;
  for (const ImportRec& import : module.imports)
    if (import.module != nullptr && import.module->state == kRead && import.module != &module &&
        included.insert(import.name).second)
      file << "#include \"" << getModulePrefix(*import.module) << ".typ\"\n";
  file << "\n";
  Homes(module, file).Write();
  file << "\n#endif\n";
}
}  // namespace asn2c
