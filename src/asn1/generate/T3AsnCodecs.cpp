// Encoders and decoders with the signatures of the run-time system, and their registration.
#include <cstring>
#include <string>
#include <vector>

#include "asn1/generate/Asn2T3.h"
#include "asn1/model/AsnHome.h"
#include "asn1/generate/T3AsnNames.h"
#include "asn1/model/AsnNames.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
struct CodecRow {
  AsnCodec codec;
  int mask;
  const char* family;
  bool per;
  const char* encoder;  // the routines of the tools
  const char* decoder;
  const char* selector;
};
constexpr CodecRow kCodecs[] = {
    {kCodecBerDefinite, kMaskBer, "_ber", false, "enc", "(asn2t3_ber_decoder)&dec",
     "T3ASN_RTS_CODEC_BER_DEFINITE_LENGTH"},
    {kCodecBerIndefinite, kMaskBerIndefinite, "_ber_bi", false, "bienc", "(asn2t3_ber_decoder)&bidec",
     "T3ASN_RTS_CODEC_BER_INDEFINITE_LENGTH"},
    {kCodecPerUa, kMaskPerUnaligned, "_per_ua", true, "pec_ua", "(asn2t3_per_decoder)&pdc_ua",
     "T3ASN_RTS_CODEC_PER_BASIC_UNALIGNED"},
    {kCodecPerAl, kMaskPerAligned, "_per_al", true, "pec_al", "(asn2t3_per_decoder)&pdc_al",
     "T3ASN_RTS_CODEC_PER_BASIC_ALIGNED"},
};
// The order of the cases of the registration.
constexpr int kCaseOrder[] = {0, 1, 3, 2};

class CodecFunctions {
 public:
  CodecFunctions(T3AsnFiles& files, const CodecRow& row) : files_(files), text_(files.source), row_(row) {}

  void generate_codec_func(const AsnType& type) {
    id_ = getMetaTypeId(type);
    name_ = FunctionPrefix(type, row_.family);
    module_ = getModuleRef(*type.module);
    Encoder();
    Decoder();
  }

 private:
  // An argument is a line; in the header the last one ends the declaration.
  void Heads(const std::string& name, const std::vector<std::string>& arguments) {
    const bool ansi = HasAnsiC(files_.module);
    files_.header.put("extern " + std::string(LUMO_CODECS_RESULT_T) + " " + name + (ansi ? "(" : "(/*"));
    text_.put("\n" + std::string(LUMO_CODECS_RESULT_T) + " " + name + "(");
    if (!ansi) OldStyleDefinition(arguments);
    for (size_t i = 0; i < arguments.size(); ++i) {
      const bool last = i + 1 == arguments.size();
      const std::string line = (i == 0 ? "" : "  ") + arguments[i];
      files_.header.put(line + (!last ? ",\n" : ansi ? ");\n\n" : "*/);\n\n"));
      if (ansi) text_.put(line + (last ? ")\n" : ",\n"));
    }
    text_.open();
  }

  // Names in the parentheses, declarations behind them; these end in semicolons, since C takes no other.
  void OldStyleDefinition(const std::vector<std::string>& arguments) {
    for (size_t i = 0; i < arguments.size(); ++i)
      text_.put((i == 0 ? "" : ", ") + arguments[i].substr(arguments[i].find_last_of(" *") + 1));
    text_.put(")\n");
    for (const std::string& argument : arguments) text_.put("  " + argument + ";\n");
  }

  void CodecVariable() { text_.w(row_.per ? "ASNPERG codg;\n" : "ASNCODG codg;\n"); }

  void SetUp() {
    text_.w("codg.asnuti = &utig;\n");
    text_.w("initStack (&utig);\n");
    text_.w("home = createHandle (NULL, &handle, sizeof (" + id_ + "));\n");
    text_.w("pushHome(&utig, handle);\n");
  }

  void SetLine() { text_.w(std::string(LUMO_TARGETCODE_LOCATION_SET_LINE) + "(__LINE__, ctx);\n"); }

  void Release() {
    text_.w("popHome (&utig);\n");
    text_.w("freeAsn (&handle, FREE_STG);\n");
    text_.w(std::string(LUMO_TARGETCODE_LOCATION_POP) + "(ctx);\n");
  }

  void Encoder() {
    Heads(name_ + "_encode_" + id_,
          {std::string(LUMO_VALUE_T) + " value", std::string(LUMO_BINARY_STRING_TYPE) + " encoded_data",
           std::string(LUMO_CONTEXT_T) + " ctx"});
    text_.w(id_ + " *home;\n");
    text_.w("ASNHOME *handle = NULL;\n");
    text_.w("FRAME_PTR encodingBuffer;\n");
    CodecVariable();
    text_.w("ASNUTIG utig;\n\n");
    text_.w(std::string(LUMO_CODECS_RESULT_T) + " codec_result = " + LUMO_CODECS_RESULT_SUCCEEDED_C +
            ";\n\n");
    text_.w(std::string(LUMO_TARGETCODE_LOCATION_PUSH) + "(\"" + name_ + "_encode_" + id_ +
            "\",__FILE__, __LINE__, ctx);\n");
    SetUp();
    SetLine();
    text_.w("t3asn_" + module_ + "_trans_t3_to_asn_" + id_ + "(&utig, value, home, ctx);\n");
    text_.w(std::string("asn2t3_encode_set_frame") + (row_.per ? "_per" : "") +
            "(&codg, &encodingBuffer);\n");
    SetLine();
    text_.w(row_.encoder + id_ + "(&codg, (" + id_ + "*) home);\n");
    text_.w("asn2t3_encode_put_bstring(&encodingBuffer, &codec_result, ");
    text_.w("  encoded_data, ctx);\n");
    Release();
    text_.w("\nreturn codec_result;\n");
    text_.close();
  }

  void Decoder() {
    Heads(name_ + "_decode_" + id_,
          {std::string(LUMO_BINARY_STRING_ITER_T) + " * encoded_data", std::string(LUMO_TYPE_T) + " type",
           std::string(LUMO_ALLOC_STRATEGY_T) + " strategy", std::string(LUMO_VALUE_T) + " * decoded_value",
           std::string(LUMO_CONTEXT_T) + " ctx"});
    text_.w(id_ + " *home;\n");
    text_.w("ASNHOME *handle = NULL;\n");
    text_.w("FRAME_PTR decodingBuffer;\n");
    text_.w("ERR_RET errorHandlerBuf;\n");
    CodecVariable();
    text_.w("ASNUTIG utig;\n");
    text_.w(std::string(LUMO_CODECS_RESULT_T) + " codec_result = " + LUMO_CODECS_RESULT_SUCCEEDED_C +
            ";\n\n");
    text_.w(std::string(LUMO_TARGETCODE_LOCATION_PUSH) + "(\"" + name_ + "_decode_" + id_ +
            "\",__FILE__, __LINE__, ctx);\n");
    SetUp();
    text_.w("*decoded_value = " + std::string(LUMO_ILLEGAL_VALUE_C) + ";\n");
    text_.w(std::string("if (asn2t3_decode_set_buf_and_decode") + (row_.per ? "_per" : "") +
            "(&codg, &decodingBuffer, &errorHandlerBuf, &codec_result, encoded_data,");
    text_.w(row_.decoder + id_ + ",");
    text_.w(" home, ctx))\n");
    text_.open();
    SetLine();
    text_.w("*decoded_value = t3asn_" + module_ + "_trans_asn_to_t3_" + id_ + " (home, strategy, ctx);\n");
    SetLine();
    text_.close();
    Release();
    text_.w("if (*decoded_value == " + std::string(LUMO_ILLEGAL_VALUE_C) +
            ")\n  codec_result = " + LUMO_CODECS_RESULT_FAILED_C + ";\n");
    text_.w("\nreturn codec_result;\n");
    text_.close();
  }

  T3AsnFiles& files_;
  CText& text_;
  const CodecRow& row_;
  std::string id_, name_, module_;
};

bool Has(const AsnType& type, const CodecRow& row, int mask) {
  return (mask & row.mask) != 0 && AllowsCodec(*type.module, type, row.codec);
}

// The names by which a value of the type may be known: its own, and for a synonym those behind it.
std::vector<std::string> NamesOf(const AsnType& type) {
  std::vector<std::string> names;
  if (isReference(type) && IsStructured(type)) {
    for (AsnType at = forSynonymType(type);; at = forSynonymType(at)) {
      // Behind another definition's name there may be codecs of its own.
      if (at.module == type.module && !isEntryType(at)) names.push_back(MakeASNIdent(getTypeRef(at)));
      if (!isReference(at)) break;
    }
  }
  names.push_back(MakeASNIdent(getTypeRef(type)));
  return names;
}

class Registration {
 public:
  Registration(T3AsnFiles& files, int mask)
      : files_(files), text_(files.source), mask_(mask), ref_(getModuleRef(files.module)) {}

  void Write() {
    files_.header.put("/* codecs registration */\n");
    files_.header.put("void t3asn_" + ref_ + "_register_codecs (" + std::string(LUMO_CONTEXT_T) +
                      " ctx);\n\n");
    text_.put("\n#ifndef T3ASN_" + ref_ + "_CODEC_REGISTER_BYPASS\n");
    text_.put("void " + ref_ + "_codecs_init_function(" + std::string(LUMO_CONTEXT_T) +
              " ctx)\n{\n  return;\n}\n\n");
    SetupFunction();
    text_.put("void t3asn_" + ref_ + "_register_codecs (" + std::string(LUMO_CONTEXT_T) + " ctx)\n");
    text_.put("{\n");
    text_.put("  " + std::string(LUMO_CODECS_REGISTER) + "(" + ref_ + "_codecs_init_function,\n");
    text_.put("                       " + ref_ + "_codecs_setup_function,\n");
    text_.put("                       ctx);\n");
    text_.put("}\n");
    text_.put("\n#endif /* ifndef T3ASN_" + ref_ + "_CODEC_REGISTER_BYPASS */\n");
  }

 private:
  void Leave(const std::string& indent) {
    text_.put(indent + std::string(LUMO_TARGETCODE_LOCATION_POP) + "(ctx);\n" + indent + "return;\n");
  }

  void SetupFunction() {
    text_.put("void " + ref_ + "_codecs_setup_function(" + std::string(LUMO_TYPE_T) + " type,\n");
    text_.put("                                 " + std::string(LUMO_CONTEXT_T) + " ctx)\n{\n");
    text_.put("  T3asnRtsCodecSelector codec_selector;\n");
    text_.put("  " + std::string(LUMO_TARGETCODE_LOCATION_PUSH) + "(\"" + ref_ +
              "_codecs_setup_function\",__FILE__, __LINE__, ctx);\n");
    text_.put("  if ( !" + std::string(LUMO_TYPE_DEFINITION_MODULE) + " (type, ctx) ) {\n");
    Leave("    ");
    text_.put("  }\n");
    text_.put("  if (!strcmp(" + std::string(LUMO_TYPE_DEFINITION_MODULE) + " (type, ctx), \"" + ref_ +
              "\")) {\n");
    text_.put("    codec_selector = t3asn_get_module_encoding_directive (\"" + ref_ + "\", ctx);\n");
    text_.put("    if (codec_selector == T3ASN_RTS_CODEC_NONE) {\n");
    const std::string hyphenated = convertUnderscores(ref_);
    if (hyphenated != ref_) {
      text_.put("      codec_selector = t3asn_get_module_encoding_directive (\"" + hyphenated +
                "\", ctx);\n");
      text_.put("      if (codec_selector == T3ASN_RTS_CODEC_NONE) {\n");
      Leave("        ");
      text_.put("      }\n");
    } else {
      Leave("      ");
    }
    text_.put("    }\n");
    forEachHomeType(files_.module, [&](const AsnType& type, int) {
      if (isEntryType(type)) t3asn_gen_codecs_setup_type(type);
    });
    text_.put("  }\n");
    text_.put("  " + std::string(LUMO_TARGETCODE_LOCATION_POP) + "(ctx);\n");
    text_.put("}\n\n");
  }

  void t3asn_gen_codecs_setup_type(const AsnType& type) {
    const std::vector<std::string> names = NamesOf(type);
    text_.put("    if (");
    for (size_t i = 0; i < names.size(); ++i) {
      const bool last = i + 1 == names.size();
      text_.put(" !strcmp(" + std::string(LUMO_TYPE_DEFINITION_NAME) + " (type, ctx), \"" + names[i] + "\")" +
                (last ? " ) { \n" : "\n          ||"));
    }
    text_.put("      switch (codec_selector)\n");
    text_.put("        { \n");
    for (const int i : kCaseOrder)
      if (Has(type, kCodecs[i], mask_)) Case(type, kCodecs[i].selector, kCodecs[i].family);
    if (AllowsCodec(files_.module, type, kCodecOwnRoutines)) Case(type, "T3ASN_RTS_CODEC_OWN", "_own");
    text_.put("        default:\n");
    text_.put("          break;\n");
    text_.put("        }\n");
    Leave("      ");
    text_.put("    }\n");
  }

  void Case(const AsnType& type, const char* selector, const char* family) {
    const std::string id = getMetaTypeId(type), name = FunctionPrefix(type, family);
    text_.put(std::string("        case ") + selector + ":\n");
    text_.put("          " + std::string(LUMO_TYPE_SET_ENCODER) + " (type, " + name + "_encode_" + id +
              ", ctx);\n");
    text_.put("          " + std::string(LUMO_TYPE_SET_DECODER) + " (type, " + name + "_decode_" + id +
              ", ctx);\n");
    text_.put("          break;\n");
  }

  T3AsnFiles& files_;
  CText& text_;
  int mask_;
  std::string ref_;
};
}  // namespace

void t3asn_gen_codec_functions(T3AsnFiles& files, int mask) {
  for (const CodecRow& row : kCodecs) {
    if ((mask & row.mask) == 0) continue;
    forEachHomeType(files.module, [&](const AsnType& type, int) {
      if (isEntryType(type) && Has(type, row, mask)) CodecFunctions(files, row).generate_codec_func(type);
    });
  }
}

void t3asn_gen_codecs_init_setup_register(T3AsnFiles& files, int mask) {
  if ((mask & (kMaskBer | kMaskBerIndefinite | kMaskPerUnaligned | kMaskPerAligned)) != 0)
    Registration(files, mask).Write();
}
}  // namespace asn1
