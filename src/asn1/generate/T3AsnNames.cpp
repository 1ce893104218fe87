#include "asn1/generate/T3AsnNames.h"

#include <cstdarg>
#include <cstdio>

#include "asn1/generate/Asn2T3.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"

namespace asn1 {
std::string FunctionPrefix(const AsnType& type, const char* family) {
  return "t3asn_" + getModuleRef(*type.module) + family;
}

std::string getMetaTypeId(const AsnType& type) {
  return cTypeId(type);
}

bool isOwnFunction(const AsnType& type) {
  const T3AsnModuleOptions& options = OptionsOf(*type.module);
  const auto of_type = options.types.find(getTypeRef(type));
  return options.own_functions.count(getMetaTypeId(type)) != 0 ||
         (of_type != options.types.end() && of_type->second.own_function);
}

void forEachHomeType(ModRec& module, const TypeCall& call) {
  forEachType(module, [&](const AsnType& type, int index) {
    if (cGetVF(type) != VF_NONE) call(type, index);
  });
}

namespace {
void ForInline(const AsnType& type, int depth,
               const std::function<void(const AsnType&, const std::string&)>& call) {
  if (depth > 1000) return;
  std::vector<AsnType> parts = TypeComps(type);
  if (isListType(type)) parts.push_back(forTypeElem(type));
  for (const AsnType& part : parts) {
    call(part, t3asn_inline_type_id(part));
    if (!isReference(part)) ForInline(part, depth + 1, call);
  }
}
}  // namespace

void forEachNamedOrInlineType(ModRec& module,
                              const std::function<void(const AsnType&, const std::string&)>& call) {
  forEachHomeType(module, [&](const AsnType& type, int) {
    call(type, MakeASNIdent(getTypeRef(type)));
    if (!isReference(type)) ForInline(type, 0, call);
  });
}

const char* cBuiltinStringTstCFunc(const AsnType& type) {
  switch (getBaseTypeMainType(type)) {
    case TYP_BITSTR:
      return "BitString";
    case TYP_OCTSTR:
      return "OctetString";
    case TYP_NUMSTR:
      return "NumericString";
    case TYP_PRISTR:
      return "PrintableString";
    case TYP_TELSTR:
      return "T61String";
    case TYP_VIDSTR:
      return "VideotexString";
    case TYP_VISSTR:
      return "VisibleString";
    case TYP_IA5STR:
      return "IA5String";
    case TYP_GENSTR:
      return "GeneralString";
    case TYP_BMPSTR:
      return "BMPString";
    case TYP_GENTIME:
      return type.module->options.testCGenerationOption(2) ? "GeneralizedTimeCT" : "GeneralizedTimeDT";
    case TYP_UTCTIME:
      return type.module->options.testCGenerationOption(2) ? "UTCTimeCT" : "UTCTimeDT";
    default:
      return "GraphicString";
  }
}

bool IsText(const AsnType& type) {
  return inTtcn(getTypeMainType(type)) == InTtcn::kText || getTypeMainType(type) == TYP_OBJDESCR;
}

std::string RunTimeType(const AsnType& type) {
  if (isDefinedType(type))
    return "vexa_" + getModuleRef(*type.module) + "_" + getMetaTypeId(type) + "_type_struct";
  if (isReference(type)) return RunTimeType(forSynonymType(type));
  const MainType main_type = getTypeMainType(type);
  if (main_type == TYP_SELECTION) {
    // An alternative without a name of its own is written anew where it is selected.
    const AsnType alternative = forSelectionType(type);
    if (isReference(alternative) || getTypeMainType(alternative) == TYP_SELECTION)
      return RunTimeType(alternative);
  }
  if (main_type == TYP_NULL) return "t3asn_asn_1_null_type_struct";
  const std::string module = "vexa_" + getModuleRef(*type.module) + "_";
  if (main_type == TYP_ANY || main_type == TYP_OPEN) return module + "ANY_type_struct";
  if (main_type == TYP_EXTERNAL) return module + "EXTERNAL_type_struct";
  return module + t3asn_inline_type_id(type) + "_type_struct";
}

void int64Warning(const ModRec& module, int line, const char* what) {
  std::printf("%s:%d:BET Warning\n", module.source.c_str(), line);
  std::printf("** Type constraint information does not fit in 32 bits\n** %s\n", what);
}

void t3asn_warn(const char* format, ...) {
  std::printf("Warning     %s ", kName);
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::printf("\n");
}

void t3asn_warn_line_nr(const ModRec& module, int line, const char* format, ...) {
  std::printf("%s(%d) : Warning     %s ", module.source.c_str(), line, kName);
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::printf("\n");
}
}  // namespace asn1
