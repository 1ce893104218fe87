#include "asn1/generate/Asn2T3.h"

#include <cctype>

#include "asn1/front/AsnFault.h"
#include "asn1/front/AsnTime.h"
#include "asn1/front/Backend.h"
#include "asn1/generate/T3AsnNames.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "support/TemporaryFiles.h"
#include "generator/text/T3CodeDefs.h"

namespace asn1 {
namespace {
std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

void verbose_msg(ModRec& module, int level, const std::string& text) {
  const int verbosity = OptionsOf(module).verbosity;
  if (verbosity != 0 && verbosity >= level) std::printf("%s>>> %s\n", kName, text.c_str());
}

void print_prog_info(ModRec& module) {
  if (OptionsOf(module).verbosity > 0)
    std::printf("\n%s Version %s for MESK Version %s\n", kName, kVersion, kMeskVersion);
  verbose_msg(module, 1, "generating " + module.name);
}

std::string GuardOf(const std::string& name) {
  std::string guard = Upper(name);
  for (char& c : guard)
    if (c == '-' || c == '.') c = '_';
  return guard;
}

void printFileHeader(ModRec& module, const std::string& name, CText& text) {
  char line[200];
  const std::tm now = TimeOfFiles();
  text.put("/****************************************************************\n");
  text.put(std::string(" * Processed by ") + kName + " " + kVersion + " ");
  std::snprintf(line, sizeof line, "on %02d.%02d.%d at %d:%02d.%02d\n", now.tm_mday, now.tm_mon + 1,
                now.tm_year + 1900, now.tm_hour, now.tm_min, now.tm_sec);
  text.put(line);
  const MNode& node = module.header;
  std::snprintf(line, sizeof line, " * Syntax file processed by MESK %s on %02d.%02d.%d at %d:%02d.%02d\n",
                kMeskVersion, node.date % 100, node.date / 100 % 100, node.date / 10000, node.time / 10000,
                node.time / 100 % 100, node.time % 100);
  text.put(line);
  text.put(" * ASN.1 module = " + module.name + "\n");
  text.put(" * FILE = " + getModulePrefix(module) + name + "\n");
  bool first = true;
  for (const std::string& info : module.options.info()) {
    text.put((first ? " * INFO = " : " *        ") + info + "\n");
    first = false;
  }
  text.put(" ****************************************************************/\n");
}

void include(CText& text, const std::string& name) {
  text.put("#include \"" + name + "\"\n");
}

void BeginHeader(T3AsnFiles& files) {
  CText& text = files.header;
  const std::string guard = GuardOf(getModulePrefix(files.module) + "t3asn.h");
  text.put("#ifndef " + guard + "\n#define " + guard + "\n");
  include(text, "asnmisc.typ");
  include(text, getModulePrefix(files.module) + ".typ");
  include(text, "lumos.h");
  text.endl();
  text.put("extern const " + std::string(LUMO_TYPE_T) + " t3asn_asn_1_null_type;\n");
  text.put("#define t3asn_STATIC_asn_1_null_type (" + std::string(LUMO_TYPE_T) +
           ")&t3asn_asn_1_null_type_struct\n");
  text.put("extern " + std::string(LUMO_TYPE_STRUCT_T) + " t3asn_asn_1_null_type_struct;\n");
  text.endl();
}

void EndHeader(T3AsnFiles& files) {
  files.header.put("#endif /*" + GuardOf(getModulePrefix(files.module) + "t3asn.h") + "*/\n");
}

// The types of the indefinite form are the same ones: their declarations are shut out.
void ShutOutSecondTypes(T3AsnFiles& files) {
  const auto shut_out = [&](const ModRec& module) {
    files.source.put("#define " + GuardOf(getModulePrefix(module) + "bi.typ") + "\n");
  };
  shut_out(files.module);
  forEachExportingModule(files.module, [&](ModRec& imported) { shut_out(imported); });
}

void IncludeCodecs(T3AsnFiles& files, int mask) {
  CText& text = files.source;
  const std::string prefix = getModulePrefix(files.module);
  const T3AsnModuleOptions& options = OptionsOf(files.module);
  if (options.ber_used) {
    if ((mask & kMaskBer) != 0) {
      include(text, prefix + "cod.ext");
      ShutOutSecondTypes(files);
    }
    if ((mask & kMaskBerIndefinite) != 0) include(text, prefix + "bicod.ext");
  }
  if (!options.per_used) return;
  if ((mask & kMaskPerAligned) != 0) include(text, prefix + "per.ext");
  if ((mask & kMaskPerUnaligned) != 0) {
    include(text, prefix + "pec.ext");
    include(text, prefix + "pdc.ext");
  }
}

// Every definition is visible: a module has types for codecs where it has any.
bool HasTypes(ModRec& module) {
  bool has = false;
  forEachHomeType(module, [&](const AsnType&, int) { has = true; });
  return has;
}

void BeginSource(T3AsnFiles& files, int mask) {
  CText& text = files.source;
  const std::string prefix = getModulePrefix(files.module);
  const T3AsnModuleOptions& options = OptionsOf(files.module);
  if (!options.no_headers) {
    text.put("#include <limits.h>\n");
    for (const char* name : {"asncnf.cnf", "asnutils.ext", "asncodec.ext", "memory.ext"}) include(text, name);
    include(text, prefix + ".typ");
    if (HasTypes(files.module)) IncludeCodecs(files, mask);
    include(text, "lumos.h");
    include(text, files.t3_prefix(files.module) + ".h");
    forEachExportingModule(files.module,
                           [&](ModRec& module) { include(text, files.t3_prefix(module) + ".h"); });
    for (const char* word : {"bool", "true", "false"})
      text.put(std::string("#ifdef ") + word + "\n#undef " + word + "\n#endif\n");
    include(text, "asn2lumos.h");
    include(text, prefix + "t3asn.h");
    forEachExportingModule(files.module,
                           [&](ModRec& module) { include(text, getModulePrefix(module) + "t3asn.h"); });
  }
  for (const std::string& name : options.own_includes) include(text, name);
}

void WriteTo(const std::string& path, const std::string& text) {
  const std::string beside = path + ".tmp";
  TemporaryFile guard;
  guard.Adopt(beside);
  FILE* file = std::fopen(beside.c_str(), "w");
  if (file == nullptr) fatalError(kCannotWrite, path);
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  if (std::fclose(file) != 0) fatalError(kCloseFault, path);
  if (!written) fatalError(kWriteFault, path);
  if (std::rename(beside.c_str(), path.c_str()) != 0) fatalError(kCannotWrite, path);
}

void generate_log_file(T3AsnFiles& files) {
  const std::string& name = OptionsOf(files.module).logfile;
  if (name.empty()) return;
  const std::string prefix = getModulePrefix(files.module);
  WriteTo(name, prefix + ".stx: " + prefix + "t3asn.c " + prefix + "t3asn.h\n");
}

// Numbers of items are compared and coded in 32 bits by whoever does not look for more.
void WarnOfLargeItems(ModRec& module) {
  forEachNamedOrInlineType(module, [&](const AsnType& type, const std::string&) {
    if (isReference(type) || getTypeMainType(type) != TYP_ENUM) return;
    forEachNamedNumber(type, [&](const AsnValue& item, int index) {
      const int64_t number = int64Value(item);
      if (number >= INT32_MIN && number <= INT32_MAX) return;
      const bool added = isExtensibleEnumeratedList(type) && index >= type.node().extension_index;
      int64Warning(module, item.node().line,
                   added ? "Large extension addition enumeration item" : "Large enumeration item value");
    });
  });
}

void WarnOfForeignSelections(ModRec& module) {
  forEachNamedOrInlineType(module, [&](const AsnType& type, const std::string&) {
    if (getTypeMainType(type) == TYP_SELECTION && forSelectionType(type).module != &module)
      std::printf("%s:%d:%s\n", module.source.c_str(), type.node().line,
                  "warning: multi-module selection types not supported completely.");
  });
}

void asn2t3_gen_module(T3AsnFiles& files, int mask) {
  BeginHeader(files);
  BeginSource(files, mask);
  WarnOfLargeItems(files.module);
  WarnOfForeignSelections(files.module);
  t3asn_gen_check(files);
  t3asn_gen_consof(files);
  if ((mask & kMaskNoTranslation) == 0) {
    t3asn_gen_translate(files);
    t3asn_gen_translate2(files);
    t3asn_gen_destruct(files);
  }
  t3asn_gen_codec_functions(files, mask);
  t3asn_gen_codecs_init_setup_register(files, mask);
  EndHeader(files);
}
}  // namespace

int asn2t3_main(int mask, std::string (*t3_prefix)(const ModRec& module)) {
  ModRec& module = firstModule();
  print_prog_info(module);
  T3AsnFiles files{module, {}, {}, t3_prefix};
  printFileHeader(module, "t3asn.c", files.source);
  printFileHeader(module, "t3asn.h", files.header);
  asn2t3_gen_module(files, mask);
  WriteTo(DirectoryOption(module, "C") + getModulePrefix(module) + "t3asn.c", files.source.text());
  WriteTo(DirectoryOption(module, "H") + getModulePrefix(module) + "t3asn.h", files.header.text());
  generate_log_file(files);
  return 1;
}

namespace {
std::map<std::string, std::string> NamesOf(ModRec& module, const char* family, bool (*has)(const AsnType&)) {
  std::map<std::string, std::string> names;
  forEachNamedOrInlineType(module, [&](const AsnType& type, const std::string& name) {
    if (!has(type) || (!isDefinedType(type) && !isLocalTypeConstraints(type))) return;
    names[name] = FunctionPrefix(type, family) + (isDefinedType(type) ? getMetaTypeId(type) : name);
  });
  return names;
}
}  // namespace

std::map<std::string, std::string> CheckFunctionNames(ModRec& module) {
  return NamesOf(module, "_chck_", has_check_func);
}

std::map<std::string, std::string> ConsofFunctionNames(ModRec& module) {
  return NamesOf(module, "_consof_", has_consof_func);
}
}  // namespace asn1
