// The generator of the files that join ASN.1 and the run-time system: for each ASN.1 module <prefix>t3asn.c
// and <prefix>t3asn.h with checks of constraints, length templates, conversions between homes and run-time
// values, and encoders and decoders around the routines of the ASN.1 tools.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "asn1/front/SyntaxTree.h"
#include "asn1/generate/CText.h"
#include "asn1/model/AsnModel.h"

namespace asn1 {

/// A codec as options and tables name it.
enum AsnCodec {
  kCodecNone,
  kCodecBerDefinite,
  kCodecBerIndefinite,
  kCodecPerUa,
  kCodecPerAl,
  kCodecOwnRoutines,
  kCodecEach
};

/// The options of the generator for one type.
struct T3AsnTypeOptions {
  bool own_function = false;
  AsnCodec codec = kCodecNone;
  std::string chosen;   // CONST-CHOSEN=
  std::string omitted;  // CONST-OMIT=
};

/// The options of the generator for one module.
struct T3AsnModuleOptions : BEModMetaRec {
  std::string logfile;
  std::vector<std::string> own_includes;
  std::set<std::string> own_functions;
  int verbosity = 1;
  int entry_tag = 0;
  bool fxe = false;
  bool no_headers = false;
  AsnCodec codec = kCodecEach;
  bool ber_used = true;
  bool per_used = true;
  std::map<std::string, T3AsnTypeOptions> types;  // by the types' names
};

/// The bits of a module's codec mask.
enum CodecMask {
  kMaskBer = 1,
  kMaskBerIndefinite = 2,
  kMaskPerUnaligned = 4,
  kMaskPerAligned = 8,
  kMaskNoTranslation = 16
};

/// Takes an option of the generator; false for a text that is none. The meta record is made at the first one.
bool globalBEOptionOK(ModRec& module, const std::string& text);
/// The same for an option of one type, by the type's name.
bool typeBEOptionOK(T3AsnModuleOptions& module, const std::string& type, const std::string& option);
/// The generator's names for itself and for what makes syntax files.
inline constexpr const char* kName = "ASN2T3";
inline constexpr const char* kVersion = "1.00";
inline constexpr const char* kMeskVersion = "2.13";
T3AsnModuleOptions& OptionsOf(ModRec& module);
/// Whether a type of the module has routines of a codec by the options.
bool AllowsCodec(ModRec& module, const AsnType& type, AsnCodec codec);
/// Whether functions have heads with the types of their arguments.
bool HasAnsiC(const ModRec& module);

/// What the generators of one module write to.
struct T3AsnFiles {
  ModRec& module;
  CText source;
  CText header;
  /// The file prefix of the run-time system's part of a module's generated code: what its ".h" begins with.
  std::string (*t3_prefix)(const ModRec& module) = nullptr;
};

/// Writes the two files of the first module that was loaded, with the codecs of the mask. `t3_prefix` gives
/// the name of a module's TTCN-3 header without its ending. Returns 1, or 0 where that was not possible.
int asn2t3_main(int mask, std::string (*t3_prefix)(const ModRec& module));

// The parts, in the order of the file.
void t3asn_gen_check(T3AsnFiles& files);
void t3asn_gen_consof(T3AsnFiles& files);
void t3asn_gen_translate(T3AsnFiles& files);
void t3asn_gen_translate2(T3AsnFiles& files);
void t3asn_gen_destruct(T3AsnFiles& files);
void t3asn_gen_codec_functions(T3AsnFiles& files, int mask);
void t3asn_gen_codecs_init_setup_register(T3AsnFiles& files, int mask);

/// Whether a type has a function that checks its constraints, and one that makes a template of its length.
bool has_check_func(const AsnType& type);
bool has_consof_func(const AsnType& type);
/// The functions of a module's types, those written within others included, by the types' names in TTCN-3.
std::map<std::string, std::string> CheckFunctionNames(ModRec& module);
std::map<std::string, std::string> ConsofFunctionNames(ModRec& module);
}  // namespace asn1
