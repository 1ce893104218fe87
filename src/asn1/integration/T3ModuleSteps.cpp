#include "asn1/integration/T3ModuleSteps.h"

#include <filesystem>

#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3MeskTranslate.h"
#include "asn1/integration/T3Representation.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3Tree.h"

namespace {
constexpr const char* kNotSupported = "External compilation is not supported";

T3ModuleSteps module_steps{};
}  // namespace

void BeginT3Representation(const T3ModuleSteps& steps) {
  module_steps = steps;
  MakeSharedRepresentations();
}

void CloseT3Representation() {
  mesk_RemoveOptionFiles();
}

bool T3Module_analyze(T3Tree_Node* module) {
  if (T3Is<T3TTCN_3>(RepresentationOf(module)) || T3Is<T3ASN_1>(RepresentationOf(module)))
    return module_steps.analyze(module);
  vexa_error(kNotSupported, NoPosition);
  return false;
}

bool T3Module_generate(T3Tree_Node* module) {
  static const bool named = NameGeneratedTypes();
  if (!named) return false;
  if (T3Is<T3ASN_1>(RepresentationOf(module)))
    return mesk_T3Module_generate(module) && module_steps.generate(module);
  if (T3Is<T3TTCN_3>(RepresentationOf(module))) return module_steps.generate(module);
  vexa_error(kNotSupported, NoPosition);
  return false;
}

bool ParseASN1(const char*, tIdent file) {
  vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), "Invoking external components");
  // The tools read the file that was named: they know its encodings themselves.
  return mesk_T3Module_read(gIdents.GetCStr(file));
}

void mesk_backupSTXFiles(const std::string& directory) {
  for (const std::string& source : mesk::AsnSources()) {
    for (const std::string& syntax_file : SyntaxFilesOf(directory, source)) {
      const std::string copy = syntax_file + ".t3a";
      std::error_code fault;
      std::filesystem::copy_file(syntax_file, copy, std::filesystem::copy_options::overwrite_existing, fault);
      if (fault)
        vexa_warning(gT3CommandLine.CommonVerbosity(),
                     "Could not rename \"" + syntax_file + "\" into \"" + copy +
                         "\" - build avoidance for ASN.1 parser will not work.",
                     NoPosition);
    }
  }
}
