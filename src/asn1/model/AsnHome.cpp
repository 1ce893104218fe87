#include "asn1/model/AsnHome.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "asn1/model/AsnFindings.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"

namespace asn1 {
namespace {
constexpr int kWordBits = 32;

AsnType DefinitionBehind(const AsnType& component) {
  const AsnType base = forBaseType(component);
  return getDefinitionOf(base);
}

// What must be complete in front of a home: its components, or what the elements of a list are written with.
std::vector<AsnType> PartsByValue(const AsnType& type) {
  if (!isListType(type)) return TypeComps(type);
  const AsnType element = forTypeElem(type);
  return isReference(element) || getTypeMainType(element) == TYP_SELECTION ? std::vector<AsnType>{}
                                                                           : std::vector<AsnType>{element};
}

// The structures and lists that lie by value in a structure or list.
std::vector<AsnType> HeldBy(const AsnType& type) {
  std::vector<AsnType> held;
  for (const AsnType& part : PartsByValue(type))
    if (const AsnType base = forBaseType(part); IsStructured(base)) held.push_back(base);
  return held;
}

// Finds which of the types that a type holds, directly or not, hold themselves: those that lie on a circle. Each
// type is looked into once in a run; what is found stands at the types.
class Circles {
 public:
  static bool IsOn(const AsnType& type) {
    if (KeptOf(type, &AsnFindings::holding) == Holding::kUnknown) Circles().Find(type);
    return KeptOf(type, &AsnFindings::holding) == Holding::kItself;
  }

 private:
  struct Visit {
    AsnType type;
    std::vector<AsnType> held;
    size_t next, least;  // the first of `open_` that it is known to lead to
    bool holds_itself;
  };

  void Find(const AsnType& start) {
    Enter(start);
    while (!way_.empty()) {
      Visit& visit = way_.back();
      if (visit.next == visit.held.size()) {
        Leave();
        continue;
      }
      const AsnType held = visit.held[visit.next++];
      visit.holds_itself = visit.holds_itself || held == visit.type;
      if (const auto place = places_.find({held.module, held.number}); place != places_.end())
        visit.least = std::min(visit.least, place->second);
      else if (KeptOf(held, &AsnFindings::holding) == Holding::kUnknown)
        Enter(held);
    }
  }

  void Enter(const AsnType& type) {
    const size_t place = open_.size();
    places_.emplace(std::pair{type.module, type.number}, place);
    open_.push_back(type);
    way_.push_back({type, HeldBy(type), 0, place, false});
  }

  // What is open behind the first type of a circle, and leads to none in front of it, lies on circles with it.
  void Leave() {
    const Visit visit = std::move(way_.back());
    way_.pop_back();
    if (!way_.empty()) way_.back().least = std::min(way_.back().least, visit.least);
    if (open_[visit.least] != visit.type) return;
    const bool circle = visit.holds_itself || open_.back() != visit.type;
    while (open_.size() > visit.least) {
      KeptOf(open_.back(), &AsnFindings::holding) = circle ? Holding::kItself : Holding::kOthers;
      places_.erase({open_.back().module, open_.back().number});
      open_.pop_back();
    }
  }

  std::vector<Visit> way_;
  std::vector<AsnType> open_;
  std::map<std::pair<ModRec*, int>, size_t> places_;
};
}  // namespace

const char* PredefinedType(const AsnType& type) {
  const AsnType base = forBaseType(type);
  switch (cGetVF(type)) {
    case VF_BOOL:
      return "BOOLE";
    case VF_UI32:
      return "uint32";
    case VF_I32:
      return isExtensibleEnumeratedList(base) ? "EXTENSIBLE_ENUMERATED" : "sint32";
    case VF_I64:
      return isExtensibleEnumeratedList(base) ? "EXTENSIBLE_ENUMERATED_64" : "sint64";
    case VF_REAL64:
      return "REAL";
    case VF_DYNS:
      return "DYNSTR";
    case VF_FRM:
      return "FRAME_PTR";
    case VF_NULL:
      return "NULLTYPE";
    case VF_OBJI:
      return "OBJID";
    case VF_EXTERNAL_1990:
      return "EXTERNAL";
    default:
      return "NOBODYUSESTHISTYPE";
  }
}

ValueForm cGetVF(const AsnType& type) {
  const AsnType base = forBaseType(type);
  switch (getTypeMainType(base)) {
    case TYP_BOOLEAN:
      return VF_BOOL;
    case TYP_INTEGER:
      return VF_I64;  // what values of the run-time system hold, whatever constraints leave
    case TYP_ENUM:
      return (base.node().flags2 & kFlag2Wide) != 0 ? VF_I64 : VF_I32;
    case TYP_REAL:
      return VF_REAL64;
    case TYP_NULL:
      return VF_NULL;
    case TYP_SEQ:
    case TYP_SET:
    case TYP_CHOICE:
      return VF_STRU;
    case TYP_SEQOF:
    case TYP_SETOF:
      return VF_LIST;
    case TYP_ANY:
    case TYP_OPEN:
      return VF_FRM;
    case TYP_OBJID:
      return VF_OBJI;
    case TYP_EXTERNAL:
      return VF_EXTERNAL_1990;
    case TYP_BITSTR:
    case TYP_OCTSTR:
    case TYP_NUMSTR:
    case TYP_PRISTR:
    case TYP_TELSTR:
    case TYP_VIDSTR:
    case TYP_VISSTR:
    case TYP_IA5STR:
    case TYP_GRASTR:
    case TYP_GENSTR:
    case TYP_GENTIME:
    case TYP_UTCTIME:
    case TYP_OBJDESCR:
      return VF_DYNS;
    default:
      return VF_NONE;
  }
}

bool cIsFrameType(const AsnType& type) {
  return cGetVF(type) == VF_FRM;
}

bool IsStructured(const AsnType& type) {
  const ValueForm form = cGetVF(type);
  return form == VF_STRU || form == VF_LIST;
}

std::string cBaseTypeId(const AsnType& type) {
  if (isTypeExtensionmarker(type)) return "EXTENSIONMARKER";
  if (isDefinedType(type)) return cTypeId(type);
  if (isReference(type)) {
    // A constraint of its own may make a component's numbers fit another form than its type's.
    const AsnType definition = forSynonymType(type);
    return IsStructured(type) || cGetVF(type) == cGetVF(definition) ? cTypeId(definition)
                                                                    : PredefinedType(type);
  }
  if (getTypeMainType(type) == TYP_SELECTION) {
    const AsnType alternative = forSelectionType(type);
    return cBaseTypeId(alternative);
  }
  return IsStructured(type) ? "struct t_" + cTypeId(type) : PredefinedType(type);
}

std::string cComponentId(const AsnType& component) {
  // The words of C in its editions and of its compilers, the macros of its headers that look like names of
  // components, and the members of homes.
  static const std::set<std::string> words = {
      "alignas",       "alignof",       "asm",      "auto",     "bool",         "break",  "case",    "char",
      "const",         "constexpr",     "continue", "default",  "do",           "double", "else",    "enum",
      "extern",        "false",         "float",    "for",      "goto",         "if",     "inline",  "int",
      "long",          "nullptr",       "register", "restrict", "return",       "short",  "signed",  "sizeof",
      "static",        "static_assert", "struct",   "switch",   "thread_local", "true",   "typedef", "typeof",
      "typeof_unqual", "union",         "unsigned", "void",     "volatile",     "while",  "assert",  "errno",
      "linux",         "offsetof",      "stderr",   "stdin",    "stdout",       "unix",   "asnutig", "choice",
      "compmask",      "elem",          "n"};
  const std::string name = getTypeCompId(component);
  return words.count(name) == 0 ? name : name + "_";
}

bool IsByPointer(const AsnType& component) {
  if (getFatherOfTypeComp(component) && isListType(getFatherOfTypeComp(component))) return false;
  const AsnType base = forBaseType(component);
  if (!IsStructured(base) || base == component) return false;
  // The component's type must be complete where the component stands: it may hold neither itself nor what the
  // component stands in.
  return Circles::IsOn(base) || DefinitionBehind(component) == getDefinitionOf(component);
}

int ControlWords(const AsnType& type) {
  const MainType main_type = getTypeMainType(type);
  if (main_type != TYP_SEQ && main_type != TYP_SET) return 0;
  // Asked of each component.
  std::optional<int>& kept = KeptOf(type, &AsnFindings::control_words);
  if (kept.has_value()) return *kept;
  const std::vector<AsnType> all = TypeComps(type);
  const bool has = main_type == TYP_SET || std::any_of(all.begin(), all.end(), [](const AsnType& component) {
                     return !isMandatoryTypeComp(component);
                   });
  const int components = static_cast<int>(all.size());
  kept = has && components > 0 ? (components + kWordBits - 1) / kWordBits : 0;
  return *kept;
}
}  // namespace asn1
