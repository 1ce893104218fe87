// Conversions from homes to run-time values, and the functions that find the type of an open type.

#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/T3AsnObjectSets.h"
#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kFromHomeFamily = "_trans_asn_to_t3_";
constexpr const char* kFromHomeEntryFamily = "_translate_asn_to_t3_";

class FromHome {
 public:
  explicit FromHome(T3AsnFiles& files) : files_(files), text_(files.source), sets_(files.module) {}

  void Run() {
    cGenerateTypeFunctions(
        files_.module, GenerateLevelOf(files_.module),
        [&](const AsnType& type) {
          if (!isOwnFunction(type)) NormalFunction(type);
        },
        [&](const AsnType& type) { EntryFunction(type); });
    sets_.Generate(files_);
  }

 private:
  void NormalFunction(const AsnType& type) {
    if (isReference(type)) text_.put("\n/* synonym type */");
    FunctionHead head = HeadOf(type, kFromHomeFamily);
    head.result = LUMO_VALUE_T;
    head.behind = ", " + std::string(LUMO_ALLOC_STRATEGY_T) + " strategy, " + LUMO_CONTEXT_T + " context";
    cBeginFunction(files_, head);
    const HomeRef home{"home", true};
    if (isReference(type)) {
      Synonym(type);
      text_.w("\nreturn v0;\n");
      text_.close();
    } else if (IsStructured(type)) {
      text_.w(std::string(LUMO_VALUE_T) + " v0,v1;\n\n");
      // A selection is the alternative that it stands for.
      const AsnType base = forBaseType(type);
      Structure(base, home, 0, "&(" + RunTimeType(type) + ")");
      if (getTypeMainType(base) == TYP_CHOICE) return translate_AfterFunc();
      text_.w("\nreturn v0;\n");
      text_.close();
    } else {
      text_.w(std::string(LUMO_VALUE_T) + " v0;\n\n");
      Leaf(type, home, 0);
      text_.w("\nreturn v0;\n");
      text_.close();
    }
  }

  // The braces that end the walk stand in a comment, since each alternative has left the function.
  void translate_AfterFunc() {
    text_.w("/* Following close braces intentionally commented out ");
    text_.close();
    text_.close();
    text_.w("*/\n");
    text_.w("  }\n  return v0;\n");
    text_.w("}\n");
  }

  // The value of the type that stands behind the name, which gets the name's type.
  void Synonym(const AsnType& type) {
    const AsnType of = forSynonymType(type);
    text_.w(std::string(LUMO_VALUE_T) + " v0;\n\n");
    if (cIsFrameType(type) || (cBaseTypeId(type) != cBaseTypeId(of) && !IsStructured(type)))
      return Leaf(type, {"home", true}, 0);
    text_.w("v0 = ");
    Call(of, "home");
    text_.w("t3asn_lumo_value_set_type (v0, &(" + RunTimeType(type) + "), context);\n");
  }

  void Call(const AsnType& of, const std::string& home) {
    text_.w(FunctionPrefix(of, kFromHomeFamily) + getMetaTypeId(of));
    text_.w(" ((");
    text_.w(getMetaTypeId(of));
    text_.w(" *) ");
    text_.w(home);
    text_.w(", strategy, context);\n");
  }

  void EntryFunction(const AsnType& type) {
    const std::string id = getMetaTypeId(type);
    cBeginFunction(files_, {LUMO_VALUE_T, FunctionPrefix(type, kFromHomeEntryFamily) + id, false, "", "",
                            std::string(LUMO_VALUE_T) + " v0, " + LUMO_ALLOC_STRATEGY_T + " strategy, " +
                                LUMO_CONTEXT_T + " context"});
    text_.w(id + " *home = (" + id + " *) " + std::string(LUMO_VALUE_GET_EXTERNAL_VALUE) +
            " ( v0, context );\n\n");
    text_.w("return ");
    text_.w(FunctionPrefix(type, kFromHomeFamily) + id + " (home, strategy, context);\n");
    text_.close();
  }

  // The value of a structure or list at a place, in the variable of the depth.
  void Structure(const AsnType& type, const HomeRef& home, int depth, const std::string& run_time_type) {
    if (depth > 200) fatalError(kInternal, "CBET variable index overflow.");
    text_.w(Var(depth) + " = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (" + run_time_type +
            " , strategy, context);\n");
    around_.push_back({type, home});
    switch (getTypeMainType(type)) {
      case TYP_CHOICE:
        Choice(type, home, depth);
        break;
      case TYP_SEQOF:
      case TYP_SETOF:
        List(type, home, depth);
        break;
      default:
        Components(type, home, depth);
    }
    around_.pop_back();
  }

  void Failed(int depth) {
    text_.w("if (" + Var(depth) + " == " + std::string(LUMO_ILLEGAL_VALUE_C) + ")\n  return " +
            LUMO_ILLEGAL_VALUE_C + ";\n");
  }

  void Components(const AsnType& type, const HomeRef& home, int depth) {
    const std::vector<AsnType> components = TypeComps(type);
    if (components.empty()) {
      text_.w("/* empty struct */\n");
      text_.w(std::string(LUMO_VALUE_SET_VECTOR_EMPTY) + "(" + Var(depth) + ", context);\n");
    }
    for (const AsnType& component : components)
      if (isOptionalTypeComp(component))
        text_.w(std::string(LUMO_VALUE_SET_OMIT) + "(" + Var(depth) + ", " +
                std::to_string(getTypeCompNbr(component)) + ", context);\n");
    for (const AsnType& component : components) {
      const bool may_be_missing = !isMandatoryTypeComp(component);
      if (may_be_missing) {
        text_.w("if (");
        text_.w(PresenceTest(home, type, component) + ")");
        text_.open();
      }
      Component(component, home, depth);
      text_.w(std::string(LUMO_VALUE_ASSIGN_VECTOR_ELEMENT) + " (" + Var(depth) + "," +
              std::to_string(getTypeCompNbr(component)) + "," + Var(depth + 1) + ",context);\n");
      if (may_be_missing) text_.close();
      if (forDefaultValue(component)) Default(component, depth);
    }
  }

  // A component that the home does not hold has its default value.
  void Default(const AsnType& component, int depth) {
    const std::string number = std::to_string(getTypeCompNbr(component));
    text_.w("else\n");
    text_.w("  " + std::string(LUMO_VALUE_ASSIGN_VECTOR_ELEMENT) + " (" + Var(depth) + "," + number + "," +
            std::string(LUMO_TYPE_FIELD_DEFAULT_VALUE) + "(" + LUMO_VALUE_TYPE + "(" + Var(depth) +
            ", context), " + number + ", context),context);\n");
  }

  void Component(const AsnType& component, const HomeRef& home, int depth) {
    Value(component, ComponentRef(home, component), depth + 1);
    Failed(depth + 1);
  }

  void Choice(const AsnType& type, const HomeRef& home, int depth) {
    text_.w("switch (");
    text_.w(home.Member("choice)"));
    text_.open();
    for (const AsnType& alternative : TypeComps(type)) {
      const std::string number = std::to_string(getTypeCompNbr(alternative));
      text_.w("case " + number + ":\n");
      text_.open();
      Component(alternative, home, depth);
      text_.w(std::string(LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_INDEX) + " (" + Var(depth) + "," + number +
              ",context);\n");
      text_.w(std::string(LUMO_VALUE_ASSIGN) + "(" + LUMO_VALUE_UNION_VALUE + " (" + Var(depth) +
              ",context)," + Var(depth + 1) + ",context);\n");
      text_.w(depth == 0 ? "return v0;\n" : "break;\n");
      text_.close();
    }
    if (depth > 0) text_.close();
  }

  void List(const AsnType& type, const HomeRef& home, int depth) {
    const std::string size = home.Member("n"), counter = "tn" + std::to_string(depth);
    text_.open();
    text_.w("uint32 " + counter + " = 0;\n");
    text_.w("for (; " + counter + " < " + size + "; ");
    text_.w("++ " + counter);
    text_.w(") ");
    text_.open();
    Value(forTypeElem(type), ElementRef(home, depth), depth + 1);
    Failed(depth + 1);
    const std::string so_far = std::string(LUMO_VALUE_VECTOR_SIZE) + " (" + Var(depth) + ", context)";
    text_.w("if (" + size + " == (" + so_far + " + 1))\n");
    text_.w("  " + std::string(LUMO_VALUE_ADD_VECTOR_ELEMENT) + " (" + Var(depth) + ", " + Var(depth + 1) +
            ", context);\n");
    text_.w("else\n");
    text_.w("  " + std::string(LUMO_VALUE_ASSIGN_VECTOR_ELEMENT_PARTIAL) + " (" + Var(depth) + ", " + so_far +
            ", " + Var(depth + 1) + ", context);\n");
    text_.close();
    text_.close();
    text_.w("if (" + size + " == 0)\n");
    text_.w("  " + std::string(LUMO_VALUE_SET_VECTOR_EMPTY) + " (" + Var(depth) + ", context);\n");
  }

  // The value of a component or element, in the variable of the depth.
  void Value(const AsnType& type, const HomeRef& home, int depth) {
    if (const AsnType of = Called(type)) {
      text_.w(Var(depth) + " = ");
      Call(of, home.Address());
    } else if (IsStructured(type)) {
      const AsnType base = forBaseType(type);
      text_.open();
      text_.w(std::string(LUMO_VALUE_T) + " " + Var(depth + 1) + ";\n\n");
      Structure(base, home, depth, "&(" + RunTimeType(isReference(type) ? type : base) + ")");
      text_.close();
    } else {
      Leaf(type, home, depth);
    }
  }

  // The type of a leaf: its definition, or the run-time system's type of its kind.
  static std::string LeafType(const AsnType& type, const char* builtin) {
    const bool defined = isDefinedType(type) || isReference(type);
    return defined || builtin == nullptr ? "&(" + RunTimeType(type) + ")" : builtin;
  }

  std::string Instance(const AsnType& type, const char* builtin) {
    return std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (" + LeafType(type, builtin) + ", strategy, context)";
  }

  // A setter with an instance of the type and the place in the home.
  void Set(const std::string& setter, const std::string& instance, const std::string& place, int depth) {
    text_.w(Var(depth) + " = " + setter + instance + ", ");
    text_.w(place);
    text_.w(", context);\n");
  }

  void Enumerated(const AsnType& type, const AsnType& base, const HomeRef& home, int depth) {
    text_.w(Var(depth) + " = " + std::string(LUMO_VALUE_SET_ENUM) + " (" + Instance(type, nullptr) + ", ");
    text_.w(home.Value());
    if (isExtensibleEnumeratedList(base)) text_.w(".value");
    text_.w(", context);\n");
  }

  void String(const AsnType& type, const HomeRef& home, int depth, const char* builtin) {
    text_.w(Var(depth) + " = " + Instance(type, builtin) + ";\n");
    text_.w(std::string("asn2t3_") + cBuiltinStringTstCFunc(type) + " (");
    text_.w(home.Value());
    text_.w(", ");
    text_.w(Var(depth) + ");\n");
  }

  void Leaf(const AsnType& type, const HomeRef& home, int depth) {
    const std::string v = Var(depth), r = home.Value();
    const AsnType base = forBaseType(type);
    switch (getTypeMainType(base)) {
      case TYP_BOOLEAN:
        return Set(std::string(LUMO_VALUE_SET_BOOLEAN) + "(", Instance(type, LUMO_BOOLEAN_TYPE), r, depth);
      case TYP_INTEGER:
        return Set(std::string(LUMO_VALUE_SET_INTEGER) + "(",
                   std::string(LUMO_TYPE_INSTANTIATE_VALUE) + "(" + LeafType(type, LUMO_INTEGER_TYPE) +
                       ",strategy, context)",
                   r, depth);
      case TYP_ENUM:
        return Enumerated(type, base, home, depth);
      case TYP_REAL:
        return Set(std::string(LUMO_VALUE_SET_REAL) + " (", Instance(type, LUMO_FLOAT_TYPE), r, depth);
      case TYP_NULL:
        return text_.w(v + " = " + std::string(LUMO_VALUE_SET_ENUM) + " (" + LUMO_TYPE_INSTANTIATE_VALUE +
                       " (&(" + RunTimeType(base) + "), strategy, context), 0, context);\n");
      case TYP_BITSTR:
        return String(type, home, depth, LUMO_BITSTRING_TYPE);
      case TYP_OCTSTR:
        return String(type, home, depth, LUMO_OCTETSTRING_TYPE);
      case TYP_OBJID:
        text_.w(v + " = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (" +
                LeafType(type, LUMO_OBJECTIDENTIFIER_TYPE) + " , strategy, context);\n");
        text_.w("asn2t3_objidval (");
        text_.w(r);
        text_.w(", ");
        return text_.w(v + ", context);\n");
      case TYP_EXTERNAL:
        return External(type, home, depth);
      case TYP_ANY:
        return Any(type, home, depth);
      case TYP_OPEN:
        return Open(type, home, depth);
      default:
        if (IsText(base)) return String(type, home, depth, LUMO_CHARSTRING_TYPE);
        t3asn_warn("Unrecognized leaf type.");
    }
  }

  void Frame(const std::string& type, const HomeRef& home, int depth) {
    text_.w("if (asnt3_frame (");
    text_.w(home.Value());
    text_.w(", ");
    text_.w(type + ", " + Var(depth) + ", strategy, context) != " +
            std::string(LUMO_CODECS_RESULT_SUCCEEDED_C) + ")\n  return " + LUMO_ILLEGAL_VALUE_C + ";\n");
  }

  void Any(const AsnType& type, const HomeRef& home, int depth) {
    const std::string of = "&(" + RunTimeType(type) + ")";
    text_.w("/* Needs a user defined decoding function for ANY type */\n");
    text_.w(Var(depth) + " = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (" + of +
            ", strategy, context);\n");
    text_.w("if (" + std::string(LUMO_TYPE_GET_DECODER) + " (" + of + ", context))\n");
    text_.open();
    Frame(of, home, depth);
    text_.close();
    text_.w("else\n");
    text_.open();
    text_.w("/* No user registered codec */\n");
    text_.w(std::string(LUMO_LOG_STRING_TO_ALL) + " (" + LUMO_LOG_MSG_ERROR_C +
            ", \"No user registered decoder for ASN.1 type " + getTypeRef(type) + "\", context);\n");
    text_.w("return " + std::string(LUMO_ILLEGAL_VALUE_C) + ";\n");
    text_.close();
  }

  void Open(const AsnType& type, const HomeRef& home, int depth) {
    const std::string of = "&(" + RunTimeType(type) + ")";
    text_.w(Var(depth) + " = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (" + of +
            ", strategy, context);\n");
    if (isLocalTypeConstraints(type)) translate_constraint(type, depth);
    Frame(of, home, depth);
  }

  void External(const AsnType& type, const HomeRef& home, int depth);
  void translate_constraint(const AsnType& type, int depth);
  void SelectorOf32Bits(const std::string& place, const std::string& name);
  void TableConstraint(const AsnType& type, const AsnConstraint& constraint, int depth);
  std::string find_ID(const AsnType& selector) const;

  struct Around {
    AsnType type;
    HomeRef home;
  };

  T3AsnFiles& files_;
  CText& text_;
  ObjSetFieldMap sets_;
  std::vector<Around> around_;  // the structures and lists that the walk is in
};

// The fields of EXTERNAL in TTCN-3: encoding, data_value_descriptor, indirect_reference, direct_reference.
void FromHome::External(const AsnType& type, const HomeRef& home, int depth) {
  const std::string v = Var(depth), r = home.Value();
  const auto field = [&](int number) {
    return std::string(LUMO_VALUE_FIELD_BY_INDEX_LHS) + "(" + v + ", " + std::to_string(number) +
           ", context)";
  };
  text_.w(v + " = " + std::string(LUMO_TYPE_INSTANTIATE_VALUE) + " (&(" + RunTimeType(type) +
          "), strategy, context);\n");
  const auto optional = [&](const char* test, const std::string& set, int number) {
    text_.w(std::string("if (") + test + r + "))\n");
    text_.open();
    text_.w(set);
    text_.close();
    text_.w("else\n");
    text_.w("  " + std::string(LUMO_VALUE_SET_OMIT) + "(" + v + ", " + std::to_string(number) +
            ", context);\n");
  };
  optional("is_direct_EXTERNAL(", "asn2t3_objidval (" + r + ".direct, " + field(3) + ", context);\n", 3);
  optional("is_indirect_EXTERNAL(",
           std::string(LUMO_VALUE_SET_INTEGER) + "(" + field(2) + ", " + r + ".indirect, context);\n", 2);
  optional("is_descr_EXTERNAL(", "asn2t3_DynObjectDescriptor(&(" + r + ".descr), " + field(1) + ");\n", 1);
  text_.w("/* Needs a user defined decoding function for 'encoding' field of EXTERNAL type */\n");
  text_.open();
  text_.w(std::string(LUMO_VALUE_T) + " encoding_value = " + LUMO_VALUE_FIELD_BY_INDEX_LHS + "(" + v +
          ", 0, context);\n");
  text_.w("if (is_single_EXTERNAL(" + r + "))\n");
  text_.open();
  text_.w("if (asnt3_single (&(" + r + ".data), " + LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_NAME +
          "(encoding_value, \"single_ASN1_type\", context), context) != " + LUMO_CODECS_RESULT_SUCCEEDED_C +
          ")\n  return " + LUMO_ILLEGAL_VALUE_C + ";\n");
  text_.close();
  text_.w("else if (is_octet_EXTERNAL(" + r + "))\n");
  text_.w("  asn2t3_OctetString (" + r + ".data, " + std::string(LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_NAME) +
          "(encoding_value, \"octet_aligned\", context));\n");
  text_.w("else\n");
  text_.w("  asn2t3_BitString (" + r + ".data, " + std::string(LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_NAME) +
          "(encoding_value, \"arbitrary\", context));\n");
  text_.close();
}

// The selector's place in the home: among the structures around the open type, the innermost one first.
std::string FromHome::find_ID(const AsnType& selector) const {
  const AsnType structure = getFatherOfTypeComp(selector);
  for (auto one = around_.rbegin(); one != around_.rend(); ++one) {
    if (!(one->type == structure)) continue;
    const AsnType base = forBaseType(selector);
    const std::string place = ComponentRef(one->home, selector).Value();
    return isExtensibleEnumeratedList(base) ? place + ".value" : place;
  }
  return {};
}

// The functions of object sets take no larger number; one that was cut would find another object.
void FromHome::SelectorOf32Bits(const std::string& place, const std::string& name) {
  text_.w("if (" + place + " != (sint32) " + place + ")\n");
  text_.open();
  text_.w(std::string(LUMO_LOG_STRING_TO_ALL) + " (" + LUMO_LOG_MSG_ERROR_C +
          ", \"No object has the number of " + name + "\", context);\n");
  text_.w("return " + std::string(LUMO_ILLEGAL_VALUE_C) + ";\n");
  text_.close();
}

// Chooses the alternative that the selector's value asks for.
void FromHome::TableConstraint(const AsnType& type, const AsnConstraint& constraint, int depth) {
  const int line = getTypeDefinitionLine(getDefinitionOf(type));
  const AsnObjectSet set = forObjectSet(constraint);
  const AsnType selector = forAtNotation(constraint);
  const std::string field = ClassFieldOf(type),
                    identifier = selector ? ClassFieldOf(selector) : std::string();
  const std::string found = selector ? find_ID(selector) : std::string();
  if (!set || field.empty() || identifier.empty() || found.empty())
    return t3asn_warn_line_nr(*type.module, line, "Unsupported Table Constraint");
  std::string place = found;
  const MainType main_type = getBaseTypeMainType(selector);
  if (main_type != TYP_INTEGER && main_type != TYP_ENUM) {
    t3asn_warn_line_nr(*type.module, line,
                       "Only INTEGER and ENUMERATED types are supported in AtNotation. Field: '%s'\n",
                       getTypeCompId(selector).c_str());
    place = "0";
  }
  if (place != "0" && cGetVF(selector) == VF_I64) SelectorOf32Bits(place, getTypeCompId(selector));
  text_.w(std::string(LUMO_VALUE_SET_UNION_ALTERNATIVE_BY_NAME) + "(" + Var(depth) + ", " +
          sets_.AddObjSetFieldMap(set, identifier, type) + "(" + place + ", \"" + field +
          "\", context), context);\n");
}

void FromHome::translate_constraint(const AsnType& type, int depth) {
  forEachLocalTypeConstraint(type, [&](const AsnConstraint& constraint, int) {
    if (getConstraintKind(constraint) == kTableConstraint)
      TableConstraint(type, constraint, depth);
    else
      t3asn_warn_line_nr(*type.module, getTypeDefinitionLine(getDefinitionOf(type)),
                         "Unknown constraint for Frame type.\n");
  });
}
}  // namespace

void t3asn_gen_translate(T3AsnFiles& files) {
  FromHome(files).Run();
}
}  // namespace asn1
