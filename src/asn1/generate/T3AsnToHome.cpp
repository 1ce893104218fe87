// Conversions from run-time values to homes, and the functions that give homes back.
#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/generate/T3AsnWalk.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn1/model/AsnRanges.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
constexpr const char* kToHomeFamily = "_trans_t3_to_asn_";
constexpr const char* kToHomeEntryFamily = "_translate_t3_to_asn_";

class ToHome {
 public:
  explicit ToHome(T3AsnFiles& files) : files_(files), text_(files.source) {}

  void Run() {
    cGenerateTypeFunctions(
        files_.module, GenerateLevelOf(files_.module),
        [&](const AsnType& type) {
          if (!isOwnFunction(type)) NormalFunction(type);
        },
        [&](const AsnType& type) { EntryFunction(type); });
  }

 private:
  void NormalFunction(const AsnType& type) {
    if (isReference(type)) text_.put("\n/* synonym type */");
    FunctionHead head = HeadOf(type, kToHomeFamily);
    head.result = "void";
    head.has_utility = true;
    head.before = std::string(LUMO_VALUE_T) + " v0, ";
    head.behind = ", " + std::string(LUMO_CONTEXT_T) + " context";
    cBeginFunction(files_, head);
    const HomeRef home{"home", true};
    const AsnType of = isReference(type) ? forSynonymType(type) : type;
    if (isReference(type) && !cIsFrameType(type) &&
        (cBaseTypeId(type) == cBaseTypeId(of) || IsStructured(type))) {
      text_.w(FunctionPrefix(of, kToHomeFamily) + getMetaTypeId(of) + " (asnutigPtr, v0, ");
      text_.w("(" + getMetaTypeId(of) + " *) home");
      text_.w(", context);\n");
    } else if (IsStructured(type)) {
      text_.w(std::string(LUMO_VALUE_T) + " v1;\n\n");
      Structure(forBaseType(type), home, 0);
    } else {
      Leaf(type, home, 0);
    }
    text_.close();
  }

  void EntryFunction(const AsnType& type) {
    const std::string id = getMetaTypeId(type), module = getModuleRef(*type.module);
    cBeginFunction(files_, {LUMO_VALUE_T, FunctionPrefix(type, kToHomeEntryFamily) + id, false, "", "",
                            std::string(LUMO_VALUE_T) + " v0, " + LUMO_ALLOC_STRATEGY_T + " strategy, " +
                                LUMO_CONTEXT_T + " context"});
    text_.w("ASNHOME *handle = NULL;\n");
    text_.w("ASNUTIG utig;\n");
    text_.w("ASNUTIG *asnutig;\n");
    text_.w(id + " *home;");
    text_.w(std::string(LUMO_VALUE_T) + " translated_value = " + LUMO_TYPE_INSTANTIATE_EXTERNAL_VALUE +
            " ( &(" + RunTimeType(type) + "), strategy, context );\n\n");
    text_.w("asnutig = &utig;\n");
    text_.w("initStack (&utig);\n");
    text_.w("home = createHandle (NULL, &handle, sizeof (" + id + "));\n");
    text_.w("pushHome(&utig, handle);\n");
    text_.w(FunctionPrefix(type, kToHomeFamily) + id + " (asnutig, v0, home, context);\n");
    text_.w(std::string(LUMO_VALUE_SET_EXTERNAL_VALUE) + " ( translated_value, (void *) home, ");
    text_.w("(" + std::string(LUMO_VALUE_T) + " (*)(void*," + LUMO_ALLOC_STRATEGY_T + "," + LUMO_CONTEXT_T +
            ")) t3asn_" + module + "_trans_asn_to_t3_" + id + ", ");
    text_.w("(void (*)(void*," + std::string(LUMO_CONTEXT_T) + ")) t3asn_" + module + "_dest_" + id + ", ");
    text_.w("context );\n\n");
    text_.w("return translated_value;\n");
    text_.close();
  }

  void Structure(const AsnType& type, const HomeRef& home, int depth) {
    if (depth > 200) fatalError(kInternal, "CBET variable index overflow.");
    switch (getTypeMainType(type)) {
      case TYP_CHOICE:
        return Choice(type, home, depth);
      case TYP_SEQOF:
      case TYP_SETOF:
        return List(type, home, depth);
      default:
        for (const AsnType& component : TypeComps(type)) Component(type, component, home, depth);
    }
  }

  void Component(const AsnType& type, const AsnType& component, const HomeRef& home, int depth) {
    const std::string v = Var(depth), inner = Var(depth + 1);
    const std::string field = std::string(LUMO_VALUE_FIELD_BY_NAME) + "(" + v + ", \"" +
                              MakeASNIdent(getTypeCompId(component)) + "\", context)";
    const HomeRef place = ComponentRef(home, component);
    if (isMandatoryTypeComp(component)) {
      text_.w(inner + " = " + field + ";\n");
      return Value(component, place, depth + 1);
    }
    std::string test = "if ((" + inner + " = " + field + ") != " + std::string(LUMO_OMIT_VALUE_C);
    if (forDefaultValue(component))
      test += " && !" + std::string(LUMO_IS_EQUAL) + "(" + inner + ", " +
              std::string(LUMO_TYPE_FIELD_DEFAULT_VALUE) + "(" + LUMO_VALUE_TYPE + "(" + v + ", context), " +
              std::to_string(getTypeCompNbr(component)) + ", context), context)";
    text_.w(test + ")");
    text_.open();
    text_.w(PresenceSet(home, type, component));
    Value(component, place, depth + 1);
    text_.close();
  }

  void Choice(const AsnType& type, const HomeRef& home, int depth) {
    text_.w("switch (" + std::string(LUMO_VALUE_UNION_INDEX) + "(" + Var(depth) + ", context))");
    text_.open();
    for (const AsnType& alternative : TypeComps(type)) {
      const std::string number = std::to_string(getTypeCompNbr(alternative));
      text_.w("case " + number + ":\n");
      text_.open();
      text_.w(home.Member("choice") + " = " + number + ";\n");
      text_.w(Var(depth + 1) + " = " + std::string(LUMO_VALUE_UNION_VALUE) + "(" + Var(depth) +
              ", context);\n");
      Value(alternative, ComponentRef(home, alternative), depth + 1);
      text_.w("break;\n");
      text_.close();
    }
    text_.close();
  }

  static bool IsOfFixedSize(const AsnType& type) {
    const ConstrainedSet size = SizeSetOf(type);
    return size.constrained && !size.extensible && !size.set.empty() && size.set.low() == size.set.high();
  }

  void List(const AsnType& type, const HomeRef& home, int depth) {
    const std::string counter = "tn" + std::to_string(depth), v = Var(depth);
    const AsnType element = forTypeElem(type);
    const std::string element_type = cBaseTypeId(element);
    text_.open();
    text_.w("uint32 " + counter + " = 0;\n");
    text_.w(home.Member("n") + " = (uint32) " + std::string(LUMO_VALUE_VECTOR_SIZE) + "(" + v +
            ", context);\n");
    text_.w(home.Member("elem = "));
    text_.w("(" + element_type + " *) allocAsn (");
    text_.w("NULL, ");
    text_.w("MB_STG, ");
    text_.w(home.Member("n") + " * ");
    text_.w("sizeof(" + element_type + "));\n");
    if (IsOfFixedSize(type))
      text_.w("if (t3asn_has_size (" + home.Member("n") + ", " + ToString(SizeSetOf(type).set.low()) +
              ", context))\n");
    text_.w("for (; " + counter + " < ");
    text_.w(IsOfFixedSize(type) ? ToString(SizeSetOf(type).set.low()) + "; "
                                : std::string(LUMO_VALUE_VECTOR_SIZE) + "(" + v + ", context); ");
    text_.w("++ " + counter);
    text_.w(") ");
    text_.open();
    text_.w(Var(depth + 1) + " = " + std::string(LUMO_VALUE_VECTOR_ELEMENT) + "(" + v + ", " + counter +
            ", context);\n");
    Value(element, ElementRef(home, depth), depth + 1);
    text_.close();
    text_.close();
  }

  void Value(const AsnType& type, const HomeRef& home, int depth) {
    if (home.is_pointer)
      text_.w(home.text + " = (" + cBaseTypeId(type) + " *) allocAsn (NULL, MB_STG, sizeof(" +
              cBaseTypeId(type) + "));\n");
    if (const AsnType of = Called(type)) {
      text_.w(FunctionPrefix(of, kToHomeFamily) + getMetaTypeId(of) + " (asnutigPtr, " + Var(depth) + ", ");
      text_.w(home.Address());
      return text_.w(", context);\n");
    }
    if (!IsStructured(type)) return Leaf(type, home, depth);
    text_.open();
    text_.w(std::string(LUMO_VALUE_T) + " " + Var(depth + 1) + ";\n\n");
    Structure(forBaseType(type), home, depth);
    text_.close();
  }

  void Number(const AsnType& type, const HomeRef& home, int depth, const char* getter) {
    text_.w(home.Value());
    text_.w(" = ");
    text_.w("(" + cBaseTypeId(type) + ") " + getter + "(" + Var(depth) + ", context);\n");
  }

  void String(const std::string& function, const HomeRef& home, int depth, const char* behind) {
    text_.w("t32asn_" + function + " (");
    text_.w(home.Value());
    text_.w(", ");
    text_.w(Var(depth) + behind);
  }

  void Leaf(const AsnType& type, const HomeRef& home, int depth) {
    const AsnType base = forBaseType(type);
    switch (getTypeMainType(base)) {
      case TYP_BOOLEAN:
        return Number(type, home, depth, LUMO_VALUE_GET_BOOLEAN);
      case TYP_INTEGER:
        return Number(type, home, depth, LUMO_VALUE_GET_INTEGER);
      case TYP_ENUM:
        if (!isExtensibleEnumeratedList(base)) return Number(type, home, depth, LUMO_VALUE_GET_ENUM_NUMBER);
        text_.w("(" + home.Value());
        text_.w(").value = ");
        return text_.w(std::string(cGetVF(base) == VF_I64 ? "(sint64" : "(sint32") + ") " +
                       std::string(LUMO_VALUE_GET_ENUM_NUMBER) + "(" + Var(depth) + ", context);\n");
      case TYP_REAL:
        return Number(type, home, depth, LUMO_VALUE_GET_FLOAT);
      case TYP_NULL:
        text_.w(home.Value());
        return text_.w(" = 0;\n");
      case TYP_OBJID:
        return String("objidval", home, depth, ", context);\n");
      case TYP_BITSTR:
      case TYP_OCTSTR:
        return String(cBuiltinStringTstCFunc(type), home, depth, ");\n");
      case TYP_EXTERNAL:
        return External(home, depth);
      case TYP_ANY:
        return Any(type, home, depth);
      case TYP_OPEN:
        text_.w("t3asn_frame (asnutig, ");
        text_.w(home.Value());
        text_.w(", ");
        return text_.w(Var(depth) + ", context);\n");
      default:
        if (IsText(base)) return String(cBuiltinStringTstCFunc(type), home, depth, ");\n");
        t3asn_warn("Unrecognized leaf type.");
    }
  }

  void Any(const AsnType& type, const HomeRef& home, int depth) {
    text_.w("\n/* Needs a user defined encoding function for ANY/OPEN type */\n");
    text_.w("if (" + std::string(LUMO_TYPE_GET_ENCODER) + " (&(" + RunTimeType(type) + "), context)) {\n");
    text_.w("  t3asn_frame (asnutig, ");
    text_.w(home.Value());
    text_.w(", ");
    text_.w(Var(depth) + ", context);\n");
    text_.w("} else {\n");
    text_.w("  /* No user registered codec */\n");
    text_.w("  " + std::string(LUMO_LOG_STRING_TO_ALL) + " (" + LUMO_LOG_MSG_ERROR_C +
            ", \"No user registered encoder for ASN.1 type " + getTypeRef(type) + "\", context);\n");
    text_.w("  ");
    text_.w(home.Value());
    text_.w(" = createFrame(DB_SIZE);\n");
    text_.w("  insertMemBlock (getHomeG (asnutig), MB_FRM, (BYTE_TYPE *)");
    text_.w(home.Value());
    text_.w(");\n");
    text_.w("}\n");
  }

  void External(const HomeRef& home, int depth) {
    const std::string r = home.Value(), v = Var(depth);
    text_.open();
    const auto reference = [&](const char* name, const char* field, const std::string& set) {
      text_.w(std::string(std::string(LUMO_VALUE_T) + " ") + name + " = " +
              std::string(LUMO_VALUE_FIELD_BY_NAME) + "(" + v + ", \"" + field + "\", context);\n");
      return set;
    };
    const std::string direct = reference("direct_ref_value", "direct_reference",
                                         "t32asn_objidval (" + r + ".direct, direct_ref_value, context);\n");
    const std::string indirect = reference("indirect_ref_value", "indirect_reference",
                                           r + ".indirect = (sint32) " + std::string(LUMO_VALUE_GET_INTEGER) +
                                               "(indirect_ref_value, context);\n");
    const std::string descr = reference("descr_value", "data_value_descriptor",
                                        "t32asn_DynObjectDescriptor(&(" + r + ".descr), descr_value);\n");
    reference("encoding_value", "encoding", "");
    const auto optional = [&](const char* value, const char* word, const std::string& set) {
      text_.w(std::string("rem_") + word + "_EXTERNAL(" + r + ");\n");
      text_.w(std::string("if (") + value + " != " + std::string(LUMO_OMIT_VALUE_C) + ")\n");
      text_.open();
      text_.w(std::string("set_") + word + "_EXTERNAL(" + r + ");\n");
      text_.w(set);
      text_.close();
    };
    optional("direct_ref_value", "direct", direct);
    optional("indirect_ref_value", "indirect", indirect);
    optional("descr_value", "descr", descr);
    text_.w("if (" + std::string(LUMO_VALUE_UNION_INDEX) + "(encoding_value, context) == 1)\n");
    text_.open();
    text_.w(r + ".choice = 1;\n");
    text_.w("t32asn_OctetString (" + r + ".data, " + std::string(LUMO_VALUE_UNION_VALUE) +
            "(encoding_value, context));\n");
    text_.close();
    text_.w("else if (" + std::string(LUMO_VALUE_UNION_INDEX) + "(encoding_value, context) == 0)\n");
    text_.open();
    text_.w(r + ".choice = 2;\n");
    text_.w("t32asn_BitString (" + r + ".data, " + std::string(LUMO_VALUE_UNION_VALUE) +
            "(encoding_value, context));\n");
    text_.close();
    text_.w("else");
    text_.open();
    text_.w(r + ".choice = 0;\n");
    text_.w("t3asn_single (&(" + r + ".data), " + std::string(LUMO_VALUE_UNION_VALUE) +
            "(encoding_value, context), context);\n");
    text_.close();
    text_.close();
  }

  T3AsnFiles& files_;
  CText& text_;
};
}  // namespace

void t3asn_gen_translate2(T3AsnFiles& files) {
  ToHome(files).Run();
}
}  // namespace asn1
