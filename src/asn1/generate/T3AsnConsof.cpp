// Functions that make a template of the lengths that a list's constraints allow.
#include <algorithm>
#include <vector>

#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kConsofFamily = "_consof_";

void Bounds(CText& text, Wide low, Wide high) {
  text.w("vl = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + "(" + LUMO_INTEGER_TYPE +
         ", vexa_alloc_strategy, vexa_context);\n");
  text.w("vh = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + "(" + LUMO_INTEGER_TYPE +
         ", vexa_alloc_strategy, vexa_context);\n");
  const auto bound = [&](const char* variable, Wide number) {
    text.w(std::string(std::string(LUMO_VALUE_SET_INTEGER) + "(") + variable + ", " +
           std::string(LUMO_LONG_INTEGER_LITERAL) + "(");
    text.w(ToString(Clamped(number)));
    text.w("), vexa_context);\n");
  };
  bound("vl", low);
  bound("vh", high);
}

void Function(T3AsnFiles& files, const AsnType& type, const std::string& id) {
  const ConstrainedSet set = SizeSetOf(type);
  if (set.set.empty()) return;
  cBeginFunction(files, {LUMO_VALUE_T, FunctionPrefix(type, kConsofFamily) + id, false,
                         std::string(LUMO_TYPE_T) + " vexa_type, ", "",
                         std::string(LUMO_ALLOC_STRATEGY_T) + " vexa_alloc_strategy, " + LUMO_CONTEXT_T +
                             " vexa_context"});
  CText& text = files.source;
  // Beyond an extensible size there are other lengths as well.
  text.w(set.extensible ? std::string(LUMO_VALUE_T) + " v0;\n"
                        : std::string(LUMO_VALUE_T) + " v0, vl, vh;\n");
  text.w("v0 = " + std::string(LUMO_TYPE_INSTANTIATE_DYNAMIC_TEMPLATE) + "(&(vexa_" +
         getModuleRef(*type.module) + "_" + id + "_type_struct), vexa_alloc_strategy, 0, vexa_context);\n");
  if (!set.extensible) Bounds(text, set.set.low(), set.set.high());
  text.w(std::string(LUMO_TEMPLATE_SET_VALUE) + "(v0, " + LUMO_ANYORNONE_VALUE_C + ", 0, vexa_context);\n");
  if (!set.extensible)
    text.w(std::string(LUMO_TEMPLATE_SET_LENGTH_CONSTRAINT) + "(v0, vl, vh, vexa_context);\n");
  text.w("return v0;\n");
  text.close();
}

bool HasLength(const AsnType& type) {
  bool has = false;
  forEachLocalTypeConstraint(
      type, [&](const AsnConstraint& constraint, int) { has = has || SizeAsLength(constraint); });
  return has;
}

void Parts(T3AsnFiles& files, const AsnType& type, int depth) {
  if (depth > 1000) return;
  std::vector<AsnType> parts = TypeComps(type);
  if (isListType(type)) parts.push_back(forTypeElem(type));
  for (const AsnType& part : parts) {
    // A reference that TTCN-3 gives no length of its own is just of its type, and has the function of that.
    if (has_consof_func(part) && (isReference(part) ? HasLength(part) : isLocalTypeConstraints(part)))
      Function(files, part, t3asn_inline_type_id(part));
    if (!isReference(part)) Parts(files, part, depth + 1);
  }
}
}  // namespace

bool has_consof_func(const AsnType& type) {
  const MainType base = getBaseTypeMainType(type);
  if (base != TYP_SEQOF && base != TYP_SETOF) return false;
  bool sized = false;
  forEachLocalTypeConstraint(type, [&](const AsnConstraint& constraint, int) {
    sized =
        sized || getConstraintKind(constraint) == kSize || SizeSetOfConstraint(type, constraint).constrained;
  });
  return sized || (isReference(type) && has_consof_func(forSynonymType(type)));
}

void t3asn_gen_consof(T3AsnFiles& files) {
  forEachHomeType(files.module, [&](const AsnType& type, int) {
    if (has_consof_func(type)) Function(files, type, getMetaTypeId(type));
    if (!isReference(type)) Parts(files, type, 0);
  });
}
}  // namespace asn1
