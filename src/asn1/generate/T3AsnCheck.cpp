// Functions that tell whether a run-time value keeps the constraints of its ASN.1 type. A function looks at
// its own level only: components have functions of their own.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kCheckFamily = "_chck_";

// Warnings that are given once for a module, and the one that is given once for the process.
struct Warned {
  bool marker = false, unsupported = false;
};
Warned warned;
bool table_warned = false;

std::string CString(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    char octal[8];
    std::snprintf(octal, sizeof octal, "\\%03o", code);
    if (c == '"' || c == '\\')
      quoted += std::string("\\") + c;
    else
      quoted += code < ' ' || code > '~' ? octal : std::string(1, c);
  }
  return quoted + "\"";
}

// The least number has no literal of its own in C.
std::string IntegerLiteral(int64_t number) {
  const auto literal = [](int64_t digits) {
    return std::string(LUMO_LONG_INTEGER_LITERAL) + "(" + std::to_string(digits) + ")";
  };
  return number == INT64_MIN ? "(" + literal(INT64_MIN + 1) + " - 1)" : literal(number);
}

std::string RealLiteral(const AsnValue& value) {
  const double number = retRealVal(realValue(value));
  if (std::isinf(number)) return number > 0 ? "DBL_MAX" : "-DBL_MAX";
  char text[64];
  std::snprintf(text, sizeof text, "%.17g", number);
  const std::string plain = text;
  return plain.find_first_of(".e") == std::string::npos ? plain + ".0" : plain;
}

// The test of a type's own constraints, in the function of that type.
class Constraints {
 public:
  Constraints(const AsnType& type, CText& text)
      : type_(type), base_(getBaseTypeMainType(type)), text_(text) {}

  void check_type_constraints() {
    text_.w("if ( !(");
    text_.indent();
    bool first = true;
    forEachLocalTypeConstraint(type_, [&](const AsnConstraint& constraint, int) {
      if (!first) text_.w(" &&");
      first = false;
      check_constraint(constraint, 0);
    });
    text_.outdent();
    text_.w("     )\n");
    text_.w("   )\n");
    text_.w("  return FALSE;\n");
  }

 private:
  static constexpr int kDeepest = 2000;

  void Joined(const AsnConstraint& constraint, const char* between, int depth) {
    text_.w(" (");
    check_constraint(FirstOperand(constraint), depth + 1);
    text_.w(between);
    check_constraint(SecondOperand(constraint), depth + 1);
    text_.w(" )\n");
  }

  void check_constraint(const AsnConstraint& constraint, int depth) {
    if (!constraint || depth > kDeepest) return text_.w(" TRUE");
    switch (getConstraintKind(constraint)) {
      case kUnion:
      case kCatenation:
        return Joined(constraint, " ||", depth);
      case kIntersection:
        return Joined(constraint, " &&", depth);
      case kExcept:
        // What has no test takes nothing away.
        if (!IsTested(SecondOperand(constraint), depth + 1))
          return check_constraint(FirstOperand(constraint), depth + 1);
        text_.w(" (");
        check_constraint(FirstOperand(constraint), depth + 1);
        text_.w(" && !(");
        check_constraint(SecondOperand(constraint), depth + 1);
        text_.w("    )\n");
        return text_.w(" )\n");
      case kAllExcept:
        if (IsTested(FirstOperand(constraint), depth + 1)) text_.w(" !");
        return check_constraint(FirstOperand(constraint), depth + 1);
      case kValueRange:
        return ValueRange(constraint);
      case kPermittedAlphabet:
        return Alphabet(constraint);
      case kSize:
        return Size(constraint);
      case kSingleValue:
        return SingleValue(constraint);
      case kTableConstraint:
        if (!table_warned) t3asn_warn("Table Constraints are not supported in ASN.1 check functions.");
        table_warned = true;
        return text_.w("TRUE");
      case kExtensionMarker:
        if (!warned.marker)
          t3asn_warn("Extension marker constraint not supported in the ASN.1 codec generators.");
        warned.marker = true;
        return text_.w(" TRUE");
      case kEmptyException:
        return text_.w("TRUE");
      default:
        if (!warned.unsupported) t3asn_warn("Unsupported type constraints ignored.");
        warned.unsupported = true;
        return text_.w("TRUE");
    }
  }

  // Whether the text for a constraint tests all of it; where a part is always true, what excludes it would
  // never be.
  bool IsTested(const AsnConstraint& constraint, int depth) const {
    if (!constraint || depth > kDeepest) return false;
    switch (getConstraintKind(constraint)) {
      case kUnion:
      case kCatenation:
      case kIntersection:
      case kExcept:
        return IsTested(FirstOperand(constraint), depth + 1) &&
               IsTested(SecondOperand(constraint), depth + 1);
      case kAllExcept:
        return IsTested(FirstOperand(constraint), depth + 1);
      case kValueRange:
        return base_ == TYP_INTEGER || base_ == TYP_REAL;
      case kPermittedAlphabet:
        return cGetVF(type_) == VF_DYNS && constructAllowedCharacters(type_, constraint).has_value();
      case kSize: {
        const ConstrainedSet set = SizeSetOfConstraint(type_, constraint);
        return !set.extensible && !set.set.empty();
      }
      case kSingleValue:
        return HasComparison();
      default:
        return false;
    }
  }

  // Whether single values of the type are compared.
  bool HasComparison() const {
    switch (base_) {
      case TYP_BOOLEAN:
      case TYP_INTEGER:
      case TYP_ENUM:
      case TYP_NUMSTR:
      case TYP_PRISTR:
      case TYP_VISSTR:
      case TYP_IA5STR:
      case TYP_OBJDESCR:
        return true;
      default:
        return false;
    }
  }

  // The bound as it is written in C; a number beyond what values hold bounds nothing on its own side.
  std::string Bound(const AsnValue& value) {
    if (!value) return {};
    if (base_ == TYP_REAL) return RealLiteral(value);
    const Wide number = WideValue(value);
    return FitsInt64(number) ? IntegerLiteral(static_cast<int64_t>(number)) : std::string();
  }

  static bool LeavesNothing(const AsnConstraint& constraint) {
    const AsnValue low = LowValue(constraint), high = HighValue(constraint);
    return (low && WideValue(low) > INT64_MAX) || (high && WideValue(high) < INT64_MIN);
  }

  void ValueRange(const AsnConstraint& constraint) {
    if (base_ != TYP_INTEGER && base_ != TYP_REAL) {
      t3asn_warn("Value range only supported for INTEGER and REAL constraints.");
      return text_.w(" TRUE");
    }
    if (base_ == TYP_INTEGER && LeavesNothing(constraint)) return text_.w(" FALSE");
    const std::string low = Bound(LowValue(constraint)), high = Bound(HighValue(constraint));
    const uint8_t open = constraint.node().open;
    text_.w(" (");
    if (!low.empty()) {
      text_.w(low);
      text_.w((open & kLowOpen) != 0 ? " < " : " <= ");
      text_.w("home");
    }
    if (!low.empty() && !high.empty()) text_.w(" && ");
    if (!high.empty()) {
      text_.w("home");
      text_.w((open & kHighOpen) != 0 ? " <" : " <=");
      text_.w(high);
    }
    if (low.empty() && high.empty()) text_.w("TRUE");
    text_.w(" )\n");
  }

  void Alphabet(const AsnConstraint& constraint) {
    std::optional<std::string> allowed = constructAllowedCharacters(type_, constraint);
    if (cGetVF(type_) != VF_DYNS || !allowed) return text_.w("TRUE");
    std::erase(*allowed, '\0');  // it ends a text of C
    text_.w("\nstrspn (");
    text_.w(std::string(LUMO_VALUE_GET_STRING) + "(v0, context), ");
    text_.w(CString(*allowed) + ")");
    text_.w(" == ");
    text_.w(std::string(LUMO_LENGTH_OF) + "(v0, context)");
  }

  // Sizes are numbers of 64 bits.
  void OneSize(const Segment& segment) {
    text_.w(" (");
    if (segment.low == segment.high) {
      text_.w("size");
      text_.w(" ==");
      text_.w(ToString(Clamped(segment.low)));
    } else {
      text_.w(ToString(Clamped(segment.low)));
      text_.w(" <=");
      text_.w("size");
      if (segment.high != kMaximum) {
        text_.w(" &&");
        text_.w("size");
        text_.w(" <=");
        text_.w(ToString(Clamped(segment.high)));
      }
    }
    text_.w(" )\n");
  }

  void Size(const AsnConstraint& constraint) {
    const ConstrainedSet set = SizeSetOfConstraint(type_, constraint);
    if (set.extensible || set.set.empty()) return text_.w(" TRUE");
    if (set.set.segments().size() == 1) return OneSize(set.set.segments().front());
    text_.w(" (");
    bool first = true;
    for (const Segment& segment : set.set.segments()) {
      if (!first) text_.w(" || ");
      first = false;
      OneSize(segment);
    }
    text_.w(" )\n");
  }

  void SingleValue(const AsnConstraint& constraint) {
    const AsnValue value = LowValue(constraint);
    switch (base_) {
      case TYP_BOOLEAN:
        text_.w(" ( home ==");
        text_.w(booleanValue(value) ? "TRUE" : "FALSE");
        return text_.w(" )\n");
      case TYP_INTEGER:
      case TYP_ENUM: {
        const Wide number = base_ == TYP_ENUM ? EnumNumber(value) : WideValue(value);
        if (!FitsInt64(number)) return text_.w(" FALSE");
        text_.w(" ( home ==");
        text_.w(" " + IntegerLiteral(static_cast<int64_t>(number)));
        return text_.w(" )\n");
      }
      case TYP_NUMSTR:
      case TYP_PRISTR:
      case TYP_VISSTR:
      case TYP_IA5STR:
      case TYP_OBJDESCR:
        text_.w(" (");
        text_.w("(strcmp (home," + CString(ValueText(value)) + ")");
        text_.w(" == 0)");
        return text_.w(" )\n");
      default:
        text_.w(" TRUE");
        return t3asn_warn("Single value constraint not supported for this type.");
    }
  }

  int64_t EnumNumber(const AsnValue& value) {
    const std::string& item = ValueText(value);
    int64_t number = int64Value(value);
    forEachNamedNumber(forBaseType(type_), [&](const AsnValue& one, int) {
      if (getStri(*one.module, one.node().name) == item) number = int64Value(one);
    });
    return number;
  }

  const AsnType& type_;
  MainType base_;
  CText& text_;
};

// Whether a constraint asks for the text of a string, or only for its length.
bool AsksForText(const AsnConstraint& constraint, int depth = 0) {
  if (!constraint || depth > 1000) return false;
  switch (getConstraintKind(constraint)) {
    case kUnion:
    case kCatenation:
    case kIntersection:
    case kExcept:
    case kAllExcept:
      return AsksForText(FirstOperand(constraint), depth + 1) ||
             AsksForText(SecondOperand(constraint), depth + 1);
    case kSize:
    case kExtensionMarker:
    case kEmptyException:
      return false;
    default:
      return true;
  }
}

bool AsksForSize(const AsnConstraint& constraint, int depth = 0) {
  if (!constraint || depth > 1000) return false;
  if (getConstraintKind(constraint) == kSize) return true;
  return AsksForSize(FirstOperand(constraint), depth + 1) ||
         AsksForSize(SecondOperand(constraint), depth + 1);
}

bool AnyLocal(const AsnType& type, bool (*asks)(const AsnConstraint&, int)) {
  bool result = false;
  forEachLocalTypeConstraint(
      type, [&](const AsnConstraint& constraint, int) { result = result || asks(constraint, 0); });
  return result;
}

class CheckFunctions {
 public:
  explicit CheckFunctions(T3AsnFiles& files) : files_(files), text_(files.source) {}

  void Run() {
    const auto entry = [](const AsnType&) {};
    cGenerateTypeFunctions(
        files_.module, kGenerateVisibles,
        [&](const AsnType& type) {
          if (isReference(type)) return;
          if (IsStructured(type))
            OfStructure(type);
          else if (has_check_func(type))
            OfLeaf(type, getMetaTypeId(type));
        },
        entry);
    forEachHomeType(files_.module, [&](const AsnType& type, int) {
      if (isReference(type) && has_check_func(type)) OfSynonym(type);
    });
    forEachHomeType(files_.module, [&](const AsnType& type, int) {
      if (!isReference(type)) OfInlineParts(type, 0);
    });
  }

 private:
  void Begin(const AsnType& type, const std::string& id) {
    cBeginFunction(
        files_, {"int", FunctionPrefix(type, kCheckFamily) + id, false, std::string(LUMO_TYPE_T) + " type, ",
                 "", std::string(LUMO_VALUE_T) + " v0, " + LUMO_CONTEXT_T + " context"});
  }

  void SpecialValues() {
    text_.w("if ( t3asn_lumo_value_is_special_value (v0, context) )\n");
    text_.w("  return FALSE;\n");
    text_.w("if ( t3asn_lumo_value_is_external_value (v0, context) )\n");
    text_.w("  return TRUE;\n");
  }

  void Kind(const char* kind) {
    text_.w(std::string("if ( " + std::string(LUMO_TYPE_KIND) + " ( " + LUMO_VALUE_TYPE +
                        " (v0, context),context) != ") +
            kind + " )\n");
    text_.w("  return FALSE;\n");
  }

  void ControlMember(const AsnType& type) {
    const int words = ControlWords(type);
    std::string chain = "";
    for (int word = 0; word < words; ++word)
      chain += words == 1 ? "home->compmask = " : "home->compmask [" + std::to_string(word) + "] = ";
    if (words > 0) text_.w(chain + "0;\n");
  }

  void OfStructure(const AsnType& type) {
    Begin(type, getMetaTypeId(type));
    const MainType main_type = getBaseTypeMainType(type);
    if (main_type == TYP_CHOICE) return OfChoice(type);
    if (main_type == TYP_SEQ || main_type == TYP_SET) {
      if (ControlWords(type) > 0 && getNrOfOptionalTypeComps(type) > 0) {
        text_.w(getMetaTypeId(type) + " homeval, *home = &homeval;\n\n");
        ControlMember(type);
      }
      SpecialValues();
      Kind(main_type == TYP_SEQ ? LUMO_TYPE_KIND_RECORD : LUMO_TYPE_KIND_SET);
    } else {
      OfList(type);
    }
    text_.w("\nreturn TRUE;\n");
    text_.close();
  }

  // The frame of a walk over alternatives, in which nothing is left to do.
  void OfChoice(const AsnType& type) {
    SpecialValues();
    Kind(LUMO_TYPE_KIND_UNION);
    text_.w(getMetaTypeId(type) + " home_val, *home = &home_val;\n\n");
    text_.w("home->choice = -1;\n");
    text_.w("home->choice = (sint32) " + std::string(LUMO_VALUE_UNION_INDEX) + "(v0, context);\n");
    text_.w("switch (");
    text_.w("home->choice)");
    text_.open();
    text_.w("/* Following close braces intentionally commented out ");
    text_.close();
    text_.close();
    text_.w("*/\n");
    text_.w("  }\n");
    text_.w("\n  return TRUE;\n");
    text_.w("}\n");
  }

  void OfList(const AsnType& type) {
    text_.w("if ( !" + std::string(LUMO_VALUE_IS_INITIALIZED) + " (v0, context) )\n");
    text_.w("  return TRUE;\n");
    SpecialValues();
    const bool is_sequence = getBaseTypeMainType(type) == TYP_SEQOF;
    text_.w("if ( ( " + std::string(LUMO_TYPE_KIND) + " ( " + LUMO_VALUE_TYPE +
            " (v0, context),context) != " + (is_sequence ? LUMO_TYPE_KIND_RECORDOF : LUMO_TYPE_KIND_SETOF) +
            ")");
    text_.w(" )\n");
    text_.w("  return FALSE;\n");
    if (!isLocalTypeConstraints(type)) return;
    text_.open();
    text_.w("const long size = (long) " + std::string(LUMO_VALUE_VECTOR_SIZE) + " (v0, context);\n\n");
    Constraints(type, text_).check_type_constraints();
    text_.close();
  }

  void LocalValue(const AsnType& type) {
    const MainType base = getBaseTypeMainType(type);
    switch (base) {
      case TYP_BOOLEAN:
        return text_.w("const int home = (int) " + std::string(LUMO_VALUE_GET_BOOLEAN) +
                       "(v0, context);\n\n");
      case TYP_INTEGER:
        return text_.w("const " + std::string(LUMO_LONG_INTEGER_T) + " home = " + LUMO_VALUE_GET_INTEGER +
                       "(v0, context);\n\n");
      case TYP_ENUM:
        return text_.w("const long home = " + std::string(LUMO_VALUE_GET_ENUM_NUMBER) + "(v0, context);\n\n");
      case TYP_REAL:
        return text_.w("const double home = " + std::string(LUMO_VALUE_GET_FLOAT) + "(v0, context);\n\n");
      default:
        if (AnyLocal(type, AsksForSize))
          text_.w("const long size = (long) " + std::string(LUMO_VALUE_STRING_LENGTH) + " (v0, context);\n");
        // Strings of bits and octets have no text.
        if (AnyLocal(type, AsksForText) && base != TYP_BITSTR && base != TYP_OCTSTR)
          text_.w("const char *home = " + std::string(LUMO_VALUE_GET_STRING) + " (v0, context);\n");
    }
  }

  void WithConstraints(const AsnType& type) {
    if (!isLocalTypeConstraints(type)) return;
    text_.open();
    LocalValue(type);
    Constraints(type, text_).check_type_constraints();
    text_.close();
  }

  void KindOfLeaf(const AsnType& type) {
    switch (getBaseTypeMainType(type)) {
      case TYP_BOOLEAN:
        return Kind(LUMO_TYPE_KIND_BOOLEAN);
      case TYP_INTEGER:
        return Kind(LUMO_TYPE_KIND_INTEGER);
      case TYP_ENUM:
        return Kind(LUMO_TYPE_KIND_ENUM);
      case TYP_REAL:
        if (!type.module->options.testCGenerationOption(1))
          t3asn_warn("REAL<NN> not supported from MESK & ASN2C. Use MESK option C-GENERATION=REAL.");
        return Kind(LUMO_TYPE_KIND_FLOAT);
      case TYP_BITSTR:
        return Kind(LUMO_TYPE_KIND_BITSTRING);
      case TYP_OCTSTR:
        return Kind(LUMO_TYPE_KIND_OCTETSTRING);
      case TYP_NUMSTR:
      case TYP_PRISTR:
      case TYP_VISSTR:
      case TYP_IA5STR:
        return Kind(LUMO_TYPE_KIND_CHARSTRING);
      default:
        return t3asn_warn("Unrecognized leaf type.");
    }
  }

  void OfLeaf(const AsnType& type, const std::string& id) {
    Begin(type, id);
    SpecialValues();
    KindOfLeaf(type);
    WithConstraints(type);
    text_.w("\n  return TRUE;\n");
    text_.close();
  }

  // The check of the type that stands behind a name, where there is one, and then the name's own constraints.
  void synonym_check_func(const AsnType& type, const std::string& id) {
    const AsnType of = forSynonymType(type);
    Begin(type, id);
    if (has_check_func(of)) {
      text_.w("if (!" + FunctionPrefix(of, kCheckFamily) + getMetaTypeId(of) + " ( " +
              std::string(LUMO_VALUE_TYPE) + " (v0,context), v0, context) )\n");
      text_.w("  return FALSE;\n");
    }
    if (isLocalTypeConstraints(type)) {
      SpecialValues();
      if (cGetVF(type) == VF_LIST) {
        text_.open();
        text_.w("const long size = (long) " + std::string(LUMO_VALUE_VECTOR_SIZE) + " (v0, context);\n\n");
        Constraints(type, text_).check_type_constraints();
        text_.close();
      } else {
        WithConstraints(type);
      }
    }
    text_.w("\nreturn TRUE;\n");
    text_.close();
  }

  void OfSynonym(const AsnType& type) {
    text_.put("\n/* Synonym type check function */");
    synonym_check_func(type, getMetaTypeId(type));
  }

  void OfInlineParts(const AsnType& type, int depth) {
    if (depth > 1000) return;
    std::vector<AsnType> parts = TypeComps(type);
    if (isListType(type)) parts.push_back(forTypeElem(type));
    for (const AsnType& part : parts) {
      if (isLocalTypeConstraints(part) && has_check_func(part)) OfInline(part);
      if (!isReference(part)) OfInlineParts(part, depth + 1);
    }
  }

  void OfInline(const AsnType& part) {
    const std::string id = t3asn_inline_type_id(part);
    text_.put("\n/* inlined type check function */");
    if (isReference(part)) return synonym_check_func(part, id);
    if (isListType(part)) {
      Begin(part, id);
      OfList(part);
      text_.w("\nreturn TRUE;\n");
      text_.close();
      return;
    }
    OfLeaf(part, id);
  }

  T3AsnFiles& files_;
  CText& text_;
};
}  // namespace

bool has_check_func(const AsnType& type) {
  switch (getBaseTypeMainType(type)) {
    case TYP_BOOLEAN:
    case TYP_INTEGER:
    case TYP_ENUM:
    case TYP_REAL:
    case TYP_BITSTR:
    case TYP_OCTSTR:
    case TYP_SEQOF:
    case TYP_SETOF:
    case TYP_NUMSTR:
    case TYP_PRISTR:
    case TYP_VISSTR:
    case TYP_IA5STR:
      return isConstraints(type);
    default:
      return false;
  }
}

void t3asn_gen_check(T3AsnFiles& files) {
  warned = {};
  CheckFunctions(files).Run();
}
}  // namespace asn1
