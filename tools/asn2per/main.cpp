// asn2per: the routines of the packed encoding rules for an ASN.1 module. From its syntax file it writes
// <prefix>pec.c and <prefix>pec.ext with encoders, <prefix>pdc.c and <prefix>pdc.ext with decoders of both
// variants, and <prefix>per.c and <prefix>per.ext for what they share. A run for one variant writes the same
// as one for the other.
#include <cstdio>
#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/front/Backend.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn2c/CFile.h"
#include "asn2c/Tables.h"

namespace {
using namespace asn1;  // NOLINT(google-build-using-namespace)
using asn2c::CFile;

// The routines of both variants: each is small, and a caller takes the one that it needs.
constexpr struct {
  const char* suffix;
  const char* aligned;
} kVariants[] = {{"_ua", "0"}, {"_al", "1"}};

void Declare(const AsnType& type, const char* kind, const char* result, CFile& file) {
  for (const auto& variant : kVariants)
    file << result << " " << kind << variant.suffix << cTypeId(type) << "(ASNPERG *codg, " << cTypeId(type)
         << " *home);\n";
}

void Define(const AsnType& type, const char* kind, bool encodes, CFile& file) {
  for (const auto& variant : kVariants)
    file << (encodes ? "void " : "BOOLE ") << kind << variant.suffix << cTypeId(type) << "(ASNPERG *codg, "
         << cTypeId(type) << " *home) {\n  codg->aligned = " << variant.aligned << ";\n  "
         << (encodes ? "asnEncodePer" : "return asnDecodePer") << "(codg, &" << asn2c::DescriptionOf(type)
         << ", home);\n}\n\n";
}

void ForTypes(ModRec& module, const std::function<void(const AsnType&)>& call) {
  forEachType(module, [&](const AsnType& type, int) {
    if (asn2c::HasCodec(type)) call(type);
  });
}

void WriteHeader(ModRec& module, const char* kind, bool encodes) {
  const std::string name = getModulePrefix(module) + kind + ".ext";
  CFile file(DirectoryOption(module, "H") + name);
  const std::string guard = asn2c::GuardOf(name);
  file << "#ifndef " << guard << "\n#define " << guard << "\n\n#include \"" << getModulePrefix(module)
       << "per.ext\"\n\n";
  ForTypes(module, [&](const AsnType& type) { Declare(type, kind, encodes ? "void" : "BOOLE", file); });
  file << "\n#endif\n";
  file.Close();
}

void WriteSource(ModRec& module, const char* kind, bool encodes) {
  CFile file(DirectoryOption(module, "C") + getModulePrefix(module) + kind + ".c");
  file << "/* " << (encodes ? "Encoders" : "Decoders")
       << " of the packed encoding rules for the ASN.1 module " << module.name << ". */\n#include \""
       << getModulePrefix(module) << kind << ".ext\"\n\n";
  ForTypes(module, [&](const AsnType& type) { Define(type, kind, encodes, file); });
  file.Close();
}

void WriteCommon(ModRec& module) {
  const std::string name = getModulePrefix(module) + "per.ext";
  const std::string guard = asn2c::GuardOf(name);
  CFile header(DirectoryOption(module, "H") + name);
  header << "#ifndef " << guard << "\n#define " << guard << "\n\n#include \"asncodec.ext\"\n#include \""
         << getModulePrefix(module)
         << "cod.ext\"\n\n/* How many types have encoders and decoders. */\nextern const int "
         << getModuleRef(module)
         << "_per_types;\n\n/* All routines are there wherever one of the files is. */\n";
  for (const char* kind : {"pec", "pdc"})
    header << "#include \"" << getModulePrefix(module) << kind << ".ext\"\n";
  header << "\n#endif\n";
  header.Close();
  int count = 0;
  ForTypes(module, [&](const AsnType&) { ++count; });
  CFile source(DirectoryOption(module, "C") + getModulePrefix(module) + "per.c");
  source << "#include \"" << name << "\"\n\nconst int " << getModuleRef(module) << "_per_types = " << count
         << ";\n";
  source.Close();
}

int Run(const std::vector<std::string>& words) {
  static const BackendName name{
      "asn2per", 100, 0, {"Usage:", "  asn2per [options] [+option-file ...] syntax-file [syntax-file ...]"}};
  initBackend(words, name, [](ModRec&, const std::string& text) { return AsnOptions::IsKnown(text); });
  ModRec& module = firstModule();
  WriteCommon(module);
  WriteHeader(module, "pec", true);
  WriteSource(module, "pec", true);
  WriteHeader(module, "pdc", false);
  WriteSource(module, "pdc", false);
  return 0;
}
}  // namespace

int main(int argc, char** argv) {
  try {
    return Run({argv + 1, argv + argc});
  } catch (const asn1::AsnExit& ends) {
    return ends.status;
  }
}
