#include "asn1/integration/T3Representation.h"

#include <algorithm>
#include <iterator>
#include <filesystem>

#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3MeskTranslate.h"
#include "frontend/T3GlobalASTNodes.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3Tree.h"

namespace {
struct Edition {
  T3Kind kind;
  const char* text;
};
constexpr Edition kEditions[] = {
    {T3Kind::T3TTCN_3_Edition1, "\"TTCN-3:2001\""},
    {T3Kind::T3TTCN_3_Edition2, "\"TTCN-3:2003\""},
    {T3Kind::T3TTCN_3_Edition3, "\"TTCN-3:2005\""},
};
constexpr const char* kTtcn3 = "\"TTCN-3\"";
constexpr const char* kAsn1 = "\"ASN.1\"";
constexpr std::string_view kAsn1Editions[] = {"\"ASN.1:1988\"", "\"ASN.1:1994\"", "\"ASN.1:1997\"",
                                              "\"ASN.1:2002\""};

constexpr const char* kNotSupported = "External compilation is not supported";

T3ModuleSteps module_steps{};

T3Tree_Node* Representation(T3Tree_Node* node) {
  auto* module = node == nullptr ? nullptr : node->try_as<T3Module>();
  if (module == nullptr) return node;
  if (module->representation != nullptr) return module->representation;
  return MakeTTCN3Representation(StringM::StGetString(module->language));
}
}  // namespace

T3Tree_Node* gT3ASN_1 = nullptr;
T3Tree_Node* gT3MESK = nullptr;
T3Tree_Node* gT3ASN2C = nullptr;

void BeginT3Representation(const T3ModuleSteps& steps) {
  module_steps = steps;
  gT3ASN_1 = gT3AST.mT3ASN_1(NoPosition);
  gT3MESK = gT3AST.mT3MESK(NoPosition);
  gT3ASN2C = gT3AST.mT3ASN2C(NoPosition);
}

void CloseT3Representation() {
  mesk_RemoveOptionFiles();
}

bool T3Module_analyze(T3Tree_Node* module) {
  if (T3Is<T3TTCN_3>(Representation(module)) || T3Is<T3ASN_1>(Representation(module)))
    return module_steps.analyze(module);
  vexa_error(kNotSupported, NoPosition);
  return false;
}

bool T3Module_generate(T3Tree_Node* module) {
  static bool named = false;
  if (!named) NameGeneratedTypes();
  named = true;
  if (T3Is<T3ASN_1>(Representation(module)))
    return mesk_T3Module_generate(module) && module_steps.generate(module);
  if (T3Is<T3TTCN_3>(Representation(module))) return module_steps.generate(module);
  vexa_error(kNotSupported, NoPosition);
  return false;
}

bool ParseASN1(const char*, tIdent file) {
  vexa_compiler_phases(gT3CommandLine.CommonVerbosity(), "Invoking external components");
  // The tools read the file that was named: they know its encodings themselves.
  T3Tree_Node* module = nullptr;
  return mesk_T3Module_read(gIdents.GetCStr(file), module);
}

void mesk_backupSTXFiles(const std::string& directory) {
  for (const file_argument_t& file : gT3CommandLine.files) {
    if (file.language != language_asn1) continue;
    const std::string syntax_file = stxFileName(directory, gIdents.GetCStr(file.name));
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

const char* T3ReprToString(T3Tree_Node* node) {
  node = Representation(node);
  if (T3Is<T3ASN_1>(node)) return kAsn1;
  for (const Edition& edition : kEditions)
    if (node != nullptr && node->kind == edition.kind) return edition.text;
  return kTtcn3;
}

::language T3ReprToLanguage(T3Tree_Node* node) {
  return T3Is<T3ASN_1>(Representation(node)) ? language_asn1 : language_ttcn3;
}

T3Tree_Node* MakeTTCN3Representation(std::string_view text) {
  for (const Edition& edition : kEditions)
    if (text == edition.text) return gT3AST.MakeT3Tree(edition.kind);
  return _sgT3TTCN_3();
}

bool IsTTCN3LanguageSpecification(std::string_view text, bool strict) {
  return std::any_of(std::begin(kEditions), std::end(kEditions),
                     [text](const Edition& edition) { return text == edition.text; }) ||
         (!strict && text == kTtcn3);
}

bool IsASN1LanguageSpecification(std::string_view text, bool strict) {
  return std::find(std::begin(kAsn1Editions), std::end(kAsn1Editions), text) != std::end(kAsn1Editions) ||
         (!strict && text == kAsn1);
}
