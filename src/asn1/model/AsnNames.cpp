#include "asn1/model/AsnNames.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <string_view>

#include "asn1/model/AsnFindings.h"

namespace asn1 {
namespace {
constexpr std::string_view kTtcnWords[] = {
#define TTCN_WORD(word) word,
#include "asn1/model/TtcnWords.def"
#undef TTCN_WORD
};

// "H" keeps hyphens as "_H_" would be ambiguous: they become underscores in any case; "L" and "U" turn all
// letters.
std::string Converted(std::string name, const std::string& conversion) {
  const bool lower = conversion.find_first_of("Ll") != std::string::npos;
  const bool upper = conversion.find_first_of("Uu") != std::string::npos;
  if (lower || upper)
    std::transform(name.begin(), name.end(), name.begin(), [lower](unsigned char c) {
      return static_cast<char>(lower ? std::tolower(c) : std::toupper(c));
    });
  return name;
}

std::string WithFix(const std::string& name, const FixRec& fix) {
  return convertHyphens(fix.prefix + (fix.name.empty() ? Converted(name, fix.conversion) : fix.name) +
                        fix.suffix);
}

std::string WithNaming(const AsnType& type, NamingKind kind) {
  const std::string name = getStri(*type.module, type.node().name);
  return WithFix(name, type.module->options.getFixRec(kind, name));
}
}  // namespace

std::string NameOfDefinition(const AsnType& type, const std::string& prefix) {
  const std::string name = getStri(*type.module, type.node().name);
  FixRec fix = type.module->options.getFixRec(kNamesTypes, name);
  if (!type.module->options.HasFixOf(kNamesTypes, name)) fix.prefix = prefix;
  return WithFix(name, fix);
}

bool ttcn_keyword_pred(const std::string& name) {
  return std::binary_search(std::begin(kTtcnWords), std::end(kTtcnWords), name);
}

std::string MakeASNIdent(const std::string& name) {
  std::string result = convertHyphens(name);
  if (ttcn_keyword_pred(result)) result += '_';
  return result;
}

namespace {
// The level and names of a type without a name of its own; empty where nothing around it has one either.
template <class Naming>
std::string LevelAndNames(const AsnType& type, Naming naming) {
  std::string names;
  int level = 0;
  bool named = false;
  for (AsnType at = type; at; at = getFatherOfTypeComp(at)) {
    const std::string name = at.node().name == 0 ? "elem" : naming(at);
    named = named || at.node().name != 0;
    names = names.empty() ? name : name + "_" + names;
    if (!isDefinedType(at)) ++level;
  }
  return named ? std::to_string(level) + "_" + names : std::string();
}

// Whether another structure or list has the same level and names: where hyphens are underscores, the names of
// "b" in "S-a" and of "a-b" in "S" are one.
bool IsTaken(const AsnType& type) {
  std::optional<AsnFindings::ByName>& unnamed = FindingsOf(*type.module).unnamed;
  if (!unnamed.has_value()) {
    unnamed.emplace();
    for (int number = 1; number <= type.module->header.counts[kTNode]; ++number)
      if (const AsnType one = newAsnType(*type.module, number);
          !isDefinedType(one) && (isStructuredType(one) || isListType(one)))
        unnamed->emplace(LevelAndNames(one, getTypeRef), number);
  }
  const auto first = unnamed->find(LevelAndNames(type, getTypeRef));
  return first != unnamed->end() && first->second != type.number;
}
}  // namespace

std::string cTypeId(const AsnType& type) {
  if (isDefinedType(type)) return WithNaming(type, kNamesTypes);
  const std::string id = LevelAndNames(type, [](const AsnType& at) {
    return WithNaming(at, isDefinedType(at) ? kNamesTypes : kNamesComponents);
  });
  if (id.empty()) return "<UNKNOWN_NAMELESS_TYPE>";
  return IsTaken(type) ? id + "__" + std::to_string(type.number) : id;
}

std::string getDefTypeId(const AsnType& type) {
  return cTypeId(isReference(type) && !isDefinedType(type) ? forSynonymType(type) : type);
}

std::string t3asn_inline_type_id(const AsnType& type) {
  if (isDefinedType(type)) return getTypeRef(type);
  const AsnType father = getFatherOfTypeComp(type);
  if (!father) return "ERROR0_" + getTypeRef(type);
  const std::string step = type.node().name == 0 ? "agg" : MakeASNIdent(getTypeRef(type));
  return t3asn_inline_type_id(father) + "_expl_" + step;
}
}  // namespace asn1
