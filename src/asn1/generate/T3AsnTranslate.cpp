// Conversions from homes to run-time values, and the functions that find the type of an open type.

#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"

namespace asn1 {
namespace {
constexpr const char* kFamily = "_trans_asn_to_t3_";
constexpr const char* kEntryFamily = "_translate_asn_to_t3_";

class Translate {
 public:
  explicit Translate(T3AsnFiles& files) : files_(files), text_(files.source) {}

  void Run() {
    forEachHomeType(files_.module, [&](const AsnType& type, int) {
      if (!isOwnFunction(type)) NormalFunction(type);
    });
    forEachHomeType(files_.module, [&](const AsnType& type, int) {
      if (isEntryType(type)) EntryFunction(type);
    });
  }

 private:
  void NormalFunction(const AsnType& type) {
    if (isReference(type)) text_.put("\n/* synonym type */");
    BeginFunction(files_, type, "lumo_value_t", kFamily, "",
                  ", lumo_alloc_strategy_t strategy, lumo_context_t context");
    const HomeRef home{"home", true};
    if (isReference(type)) {
      Synonym(type);
    } else if (IsStructured(type)) {
      text_.w("lumo_value_t v0,v1;\n\n");
      Structure(type, home, 0, "&(" + RunTimeType(type) + ")");
    } else {
      text_.w("lumo_value_t v0;\n\n");
      Leaf(type, home, 0);
      text_.w("\nreturn v0;\n");
    }
    text_.close();
  }

  // The value of the type that stands behind the name, which gets the name's type.
  void Synonym(const AsnType& type) {
    const AsnType of = forSynonymType(type);
    text_.w("lumo_value_t v0;\n\n");
    if (cBaseTypeId(type) == cBaseTypeId(of) || IsStructured(type)) {
      text_.w("v0 = " + FunctionPrefix(of, kFamily) + getMetaTypeId(of) + " ((" + getMetaTypeId(of) +
              " *) home, strategy, context);\n");
      text_.w("t3asn_lumo_value_set_type (v0, &(" + RunTimeType(type) + "), context);\n");
    } else {
      Leaf(type, {"home", true}, 0);
    }
    text_.w("\nreturn v0;\n");
  }

  void EntryFunction(const AsnType& type) {
    const std::string id = getMetaTypeId(type);
    const std::string head = "lumo_value_t " + FunctionPrefix(type, kEntryFamily) + id +
                             " (lumo_value_t v0, lumo_alloc_strategy_t strategy, lumo_context_t context)";
    files_.header.endl();
    files_.header.w("extern " + head + ";\n");
    text_.endl();
    text_.put(head + "\n");
    text_.open();
    text_.w(id + " *home = (" + id + " *) lumo_value_get_external_value ( v0, context );\n\n");
    text_.w("return " + FunctionPrefix(type, kFamily) + id + " (home, strategy, context);\n");
    text_.close();
  }

  // The value of a structure or list at a place, in the variable of the depth.
  void Structure(const AsnType& type, const HomeRef& home, int depth, const std::string& run_time_type) {
    if (depth > 200) fatalError(kInternal, "CBET variable index overflow.");
    text_.w(Var(depth) + " = lumo_type_instantiate_value (" + run_time_type + " , strategy, context);\n");
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
  }

  void Failed(int depth) {
    text_.w("if (" + Var(depth) + " == lumo_illegal_value_c)\n  return lumo_illegal_value_c;\n");
  }

  void Components(const AsnType& type, const HomeRef& home, int depth) {
    const std::vector<AsnType> components = TypeComps(type);
    if (components.empty()) {
      text_.w("/* empty struct */\n");
      text_.w("lumo_value_set_vector_empty(" + Var(depth) + ", context);\n");
    }
    for (const AsnType& component : components)
      if (isOptionalTypeComp(component))
        text_.w("lumo_value_set_omit(" + Var(depth) + ", " + std::to_string(getTypeCompNbr(component)) +
                ", context);\n");
    for (const AsnType& component : components) {
      const bool may_be_missing = MayBeMissing(component);
      if (may_be_missing) {
        text_.w("if (" + PresenceTest(home, type, component) + ")\n");
        text_.open();
      }
      Component(component, home, depth);
      text_.w("lumo_value_assign_vector_element (" + Var(depth) + "," +
              std::to_string(getTypeCompNbr(component)) + "," + Var(depth + 1) + ",context);\n");
      if (may_be_missing) text_.close();
      if (forDefaultValue(component)) Default(component, depth);
    }
    if (depth == 0) text_.w("\nreturn v0;\n");
  }

  // A component that the home does not hold has its default value.
  void Default(const AsnType& component, int depth) {
    const std::string number = std::to_string(getTypeCompNbr(component));
    text_.w("else\n");
    text_.w("  lumo_value_assign_vector_element (" + Var(depth) + "," + number +
            ",lumo_type_field_default_value(lumo_value_type(" + Var(depth) + ", context), " + number +
            ", context),context);\n");
  }

  void Component(const AsnType& component, const HomeRef& home, int depth) {
    Value(component, ComponentRef(home, component), depth + 1);
    Failed(depth + 1);
  }

  void Choice(const AsnType& type, const HomeRef& home, int depth) {
    text_.w("switch (" + home.Member("choice") + ")\n");
    text_.open();
    for (const AsnType& alternative : TypeComps(type)) {
      const std::string number = std::to_string(getTypeCompNbr(alternative));
      text_.w("case " + number + ":\n");
      text_.open();
      Component(alternative, home, depth);
      text_.w("lumo_value_set_union_alternative_by_index (" + Var(depth) + "," + number + ",context);\n");
      text_.w("lumo_value_assign(lumo_value_union_value (" + Var(depth) + ",context)," + Var(depth + 1) +
              ",context);\n");
      text_.w(depth == 0 ? "return v0;\n" : "break;\n");
      text_.close();
    }
    if (depth > 0) return text_.close();
    text_.w("/* Following close braces intentionally commented out \n");
    text_.close();
    text_.w("*/\n");
    text_.w("  }\n  return v0;\n");
  }

  void List(const AsnType& type, const HomeRef& home, int depth) {
    const std::string size = home.Member("n"), counter = "tn" + std::to_string(depth);
    text_.open();
    text_.w("uint32 " + counter + " = 0;\n");
    text_.w("for (; " + counter + " < " + size + "; ++ " + counter + ")\n");
    text_.open();
    Value(forTypeElem(type), ElementRef(home, depth), depth + 1);
    Failed(depth + 1);
    const std::string so_far = "lumo_value_vector_size (" + Var(depth) + ", context)";
    text_.w("if (" + size + " == (" + so_far + " + 1))\n");
    text_.w("  lumo_value_add_vector_element (" + Var(depth) + ", " + Var(depth + 1) + ", context);\n");
    text_.w("else\n");
    text_.w("  lumo_value_assign_vector_element_partial (" + Var(depth) + ", " + so_far + ", " +
            Var(depth + 1) + ", context);\n");
    text_.close();
    text_.close();
    text_.w("if (" + size + " == 0)\n");
    text_.w("  lumo_value_set_vector_empty (" + Var(depth) + ", context);\n");
    if (depth == 0) text_.w("\nreturn v0;\n");
  }

  // The value of a component or element, in the variable of the depth.
  void Value(const AsnType& type, const HomeRef& home, int depth) {
    if (IsCalled(type)) {
      const AsnType of = forSynonymType(type);
      text_.w(Var(depth) + " = " + FunctionPrefix(of, kFamily) + getMetaTypeId(of) + " ((" +
              getMetaTypeId(of) + " *) " + home.Address() + ", strategy, context);\n");
    } else if (IsStructured(type)) {
      const AsnType base = forBaseType(type);
      text_.open();
      text_.w("lumo_value_t " + Var(depth + 1) + ";\n\n");
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
    return "lumo_type_instantiate_value (" + LeafType(type, builtin) + ", strategy, context)";
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
        return text_.w(v + " = lumo_value_set_boolean(" + Instance(type, "lumo_boolean_type") + ", " + r +
                       ", context);\n");
      case TYP_INTEGER:
        return text_.w(v + " = lumo_value_set_integer(lumo_type_instantiate_value(" +
                       LeafType(type, "lumo_integer_type") + ",strategy, context), " + r + ", context);\n");
      case TYP_ENUM:
        return text_.w(v + " = lumo_value_set_enum (" + Instance(type, nullptr) + ", " + r +
                       (isExtensibleEnumeratedList(base) ? ".value" : "") + ", context);\n");
      case TYP_REAL:
        return text_.w(v + " = lumo_value_set_float (" + Instance(type, "lumo_float_type") + ", " + r +
                       ", context);\n");
      case TYP_NULL:
        return text_.w(v + " = lumo_value_set_enum (lumo_type_instantiate_value (&(" + RunTimeType(base) +
                       "), strategy, context), 0, context);\n");
      case TYP_BITSTR:
        return String(type, home, depth, "lumo_bitstring_type");
      case TYP_OCTSTR:
        return String(type, home, depth, "lumo_octetstring_type");
      case TYP_NUMSTR:
      case TYP_PRISTR:
      case TYP_VISSTR:
      case TYP_IA5STR:
      case TYP_GENTIME:
      case TYP_UTCTIME:
      case TYP_OBJDESCR:
        return String(type, home, depth, "lumo_charstring_type");
      case TYP_OBJID:
        text_.w(v + " = " + Instance(type, "lumo_objectidentifier_type") + ";\n");
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
        t3asn_warn("Unrecognized leaf type.");
    }
  }

  void Frame(const std::string& type, const HomeRef& home, int depth) {
    text_.w("if (asnt3_frame (" + home.Value() + ", " + type + ", " + Var(depth) +
            ", strategy, context) != lumo_codecs_result_succeeded_c)\n  return lumo_illegal_value_c;\n");
  }

  void Any(const AsnType& type, const HomeRef& home, int depth) {
    const std::string of = "&(" + RunTimeType(type) + ")";
    text_.w("/* Needs a user defined decoding function for ANY type */\n");
    text_.w(Var(depth) + " = lumo_type_instantiate_value (" + of + ", strategy, context);\n");
    text_.w("if (lumo_type_get_decoder (" + of + ", context))\n");
    text_.open();
    Frame(of, home, depth);
    text_.close();
    text_.w("else\n");
    text_.open();
    text_.w("/* No user registered codec */\n");
    text_.w("lumo_log_string_to_all (lumo_log_msg_error_c, \"No user registered decoder for ASN.1 type " +
            getTypeRef(type) + "\", context);\n");
    text_.w("return lumo_illegal_value_c;\n");
    text_.close();
  }

  void Open(const AsnType& type, const HomeRef& home, int depth) {
    const std::string of = "&(" + RunTimeType(type) + ")";
    text_.w(Var(depth) + " = lumo_type_instantiate_value (" + of + ", strategy, context);\n");
    if (isLocalTypeConstraints(type)) translate_constraint(type, depth);
    Frame(of, home, depth);
  }

  void External(const AsnType& type, const HomeRef& home, int depth);
  void translate_constraint(const AsnType& type, int depth);

  T3AsnFiles& files_;
  CText& text_;
};

// The fields of EXTERNAL in TTCN-3: encoding, data_value_descriptor, indirect_reference, direct_reference.
void Translate::External(const AsnType& type, const HomeRef& home, int depth) {
  const std::string v = Var(depth), r = home.Value();
  const auto field = [&](const char* name) {
    return "lumo_value_field_by_name(" + v + ", \"" + name + "\", context)";
  };
  text_.w(v + " = lumo_type_instantiate_value (&(" + RunTimeType(type) + "), strategy, context);\n");
  const auto optional = [&](const char* test, const std::string& set, int number) {
    text_.w(std::string("if (") + test + r + "))\n");
    text_.open();
    text_.w(set);
    text_.close();
    text_.w("else\n");
    text_.w("  lumo_value_set_omit(" + v + ", " + std::to_string(number) + ", context);\n");
  };
  optional("is_direct_EXTERNAL(",
           "asn2t3_objidval (" + r + ".direct, " + field("direct_reference") + ", context);\n", 3);
  optional("is_indirect_EXTERNAL(",
           "lumo_value_set_integer(" + field("indirect_reference") + ", " + r + ".indirect, context);\n", 2);
  optional("is_descr_EXTERNAL(",
           "asn2t3_DynObjectDescriptor(&(" + r + ".descr), " + field("data_value_descriptor") + ");\n", 1);
  text_.w("/* Needs a user defined decoding function for 'encoding' field of EXTERNAL type */\n");
  text_.open();
  text_.w("lumo_value_t encoding_value = " + field("encoding") + ";\n");
  text_.w("if (is_single_EXTERNAL(" + r + "))\n");
  text_.w("  return lumo_illegal_value_c;\n");
  text_.w("if (is_octet_EXTERNAL(" + r + "))\n");
  text_.w("  asn2t3_OctetString (" + r +
          ".data, lumo_value_set_union_alternative_by_name(encoding_value, \"octet_aligned\", context));\n");
  text_.w("else\n");
  text_.w("  asn2t3_BitString (" + r +
          ".data, lumo_value_set_union_alternative_by_name(encoding_value, \"arbitrary\", context));\n");
  text_.close();
}

void Translate::translate_constraint(const AsnType& type, int) {
  forEachLocalTypeConstraint(type, [&](const AsnConstraint& constraint, int) {
    if (getConstraintKind(constraint) == kTableConstraint)
      t3asn_warn_line_nr(*type.module, getTypeDefinitionLine(getDefinitionOf(type)),
                         "Unsupported Table Constraint");
    else
      t3asn_warn_line_nr(*type.module, getTypeDefinitionLine(getDefinitionOf(type)),
                         "Unknown constraint for Frame type.\n");
  });
}
}  // namespace

void t3asn_gen_translate(T3AsnFiles& files) {
  Translate(files).Run();
}
}  // namespace asn1
