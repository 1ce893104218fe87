// asn2c: the C of an ASN.1 module. From syntax files it writes, for the first module and all that it imports,
// <prefix>.typ with the types that hold values, <prefix>.def and <prefix>.tab, and <prefix>cod.c and
// <prefix>cod.ext with the descriptions of the types and the routines of the basic encoding rules.
#include <cstdio>
#include <string>
#include <vector>

#include "asn1/front/AsnFault.h"
#include "asn1/front/Backend.h"
#include "asn1/model/AsnHome.h"
#include "asn1/model/AsnNames.h"
#include "asn2c/Browser.h"
#include "asn2c/CFile.h"
#include "asn2c/Homes.h"
#include "asn2c/Tables.h"

namespace {
using namespace asn1;  // NOLINT(google-build-using-namespace)
using asn2c::CFile;

std::string SourcePath(const ModRec& module, const char* ending) {
  return DirectoryOption(module, "C") + getModulePrefix(module) + ending;
}

std::string HeaderPath(const ModRec& module, const char* ending) {
  return DirectoryOption(module, "H") + getModulePrefix(module) + ending;
}

void WriteNamedNumbers(ModRec& module, CFile& file) {
  const std::string guard = asn2c::GuardOf(getModulePrefix(module) + ".def");
  file << "/* Named numbers of the ASN.1 module " << module.name << ". */\n#ifndef " << guard << "\n#define "
       << guard << "\n\n";
  forEachType(module, [&](const AsnType& type, int) {
    forEachNamedNumber(type, [&](const AsnValue& item, int) {
      file << "#define " << cTypeId(type) << "_" << getValueRef(item) << " " << int64Value(item) << "\n";
    });
  });
  file << "\n#endif\n";
}

// The types with their tags and bounds, for readers.
void WriteList(ModRec& module, CFile& file) {
  file << "/* Types of the ASN.1 module " << module.name << ":\n";
  forEachType(module, [&](const AsnType& type, int) {
    file << "   " << getTypeRef(type) << ", line " << getTypeDefinitionLine(type) << ": "
         << getTypeMainTypeStri(getBaseTypeMainType(type)) << ", C type " << cTypeId(type) << "\n";
  });
  file << "*/\n";
}

void WriteCodecHeader(ModRec& module, const std::string& functions, CFile& file) {
  const std::string guard = asn2c::GuardOf(getModulePrefix(module) + "cod.ext");
  file << "#ifndef " << guard << "\n#define " << guard << "\n\n#include \"asncodec.ext\"\n#include \""
       << getModulePrefix(module) << ".typ\"\n\n";
  asn2c::DeclareTables(module, file);
  file << "\n";
  forEachType(module, [&](const AsnType& type, int) {
    if (!asn2c::HasCodec(type)) return;
    const std::string name = cTypeId(type);
    file << "void " << functions << "enc" << name << "(ASNCODG *codg, " << name << " *home);\n";
    file << "BOOLE " << functions << "dec" << name << "(ASNCODG *codg, " << name << " *home);\n";
  });
  file << "\n#endif\n";
}

void WriteCodec(ModRec& module, const std::string& functions, CFile& file) {
  file << "/* Descriptions of the types of the ASN.1 module " << module.name
       << ", and routines of the basic encoding rules. */\n#include \"" << getModulePrefix(module)
       << "cod.ext\"\n";
  forEachExportingModule(
      module, [&](ModRec& imported) { file << "#include \"" << getModulePrefix(imported) << "cod.ext\"\n"; });
  file << "\n";
  asn2c::WriteTables(module, file);
  const char* indefinite = functions.empty() ? "0" : "1";
  forEachType(module, [&](const AsnType& type, int) {
    if (!asn2c::HasCodec(type)) return;
    const std::string name = cTypeId(type);
    file << "void " << functions << "enc" << name << "(ASNCODG *codg, " << name
         << " *home) {\n  codg->indefinite = " << indefinite << ";\n  asnEncodeBer(codg, &"
         << asn2c::DescriptionOf(type) << ", home);\n}\n\n";
    file << "BOOLE " << functions << "dec" << name << "(ASNCODG *codg, " << name
         << " *home) {\n  return asnDecodeBer(codg, &" << asn2c::DescriptionOf(type) << ", home);\n}\n\n";
  });
}

template <class Write>
void WriteFile(const std::string& path, const Write& write) {
  CFile file(path);
  write(file);
  file.Close();
}

// The indefinite form comes from syntax files of its own, whose descriptions get names of their own.
void WriteModule(ModRec& module, const std::string& functions) {
  WriteFile(HeaderPath(module, ".typ"), [&](CFile& file) { asn2c::WriteHomes(module, functions, file); });
  WriteFile(HeaderPath(module, ".def"), [&](CFile& file) { WriteNamedNumbers(module, file); });
  WriteFile(HeaderPath(module, ".tab"), [&](CFile& file) { WriteList(module, file); });
  WriteFile(HeaderPath(module, "cod.ext"), [&](CFile& file) { WriteCodecHeader(module, functions, file); });
  WriteFile(SourcePath(module, "cod.c"), [&](CFile& file) { WriteCodec(module, functions, file); });
}

int Run(const std::vector<std::string>& words) {
  static const BackendName name{
      "asn2c", 100, 0, {"Usage:", "  asn2c [options] [+option-file ...] syntax-file [syntax-file ...]"}};
  std::string functions;
  initBackend(words, name, [&](ModRec&, const std::string& text) {
    const std::string option = optionToUpper(text);
    if (option.compare(0, 14, "COD-FUNC-PREF=") == 0) functions = option.substr(14);
    return AsnOptions::IsKnown(text);
  });
  if (functions.empty()) asn2c::WriteBrowserFiles(firstModule());
  for (const auto& module : gSyntaxTrees.all())
    if (module->state == kRead) WriteModule(*module, functions);
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
