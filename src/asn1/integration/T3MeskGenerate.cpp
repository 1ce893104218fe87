// What is written for an ASN.1 module beside its declarations: the syntax files for generation, the
// conversions and checks, and the codecs of the tools.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "asn1/front/Backend.h"
#include "asn1/front/FilePrefix.h"
#include "asn1/generate/Asn2T3.h"
#include "asn1/integration/T3CodecReference.h"
#include "asn1/integration/T3Mesk.h"
#include "asn1/integration/T3MeskTranslate.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/diagnostics/T3Exception.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3Tree.h"
#include "support/rFsearch.h"
#include "support/rSystem.h"

namespace {
constexpr const char* kGenerationOptions = "VEXA-ASN-1-generation-options.txt";
constexpr const char* kIndefinite = "bi";

std::set<std::string>& entry_types = *new std::set<std::string>;

std::string NameOf(T3Module* module) {
  return gIdents.GetCStr(module->name);
}

// The module and those that it imports, imports first, each once.
void Hierarchy(T3Module* module, std::set<T3Module*>& seen, std::vector<T3Module*>& list) {
  if (!seen.insert(module).second) return;
  for (auto* decl : Items<_T3Decl>(module->definition_part)) {
    auto* import = decl->try_as<_T3ImportDecl>();
    if (import == nullptr || !T3Is<T3ImportIdentifier>(import->from_module)) continue;
    T3Tree_Node* imported = vexa_find_T3Module(import->from_module->as<T3ImportIdentifier>()->id);
    if (imported != nullptr && imported->as<T3Module>()->filename != NoIdent)
      Hierarchy(imported->as<T3Module>(), seen, list);
  }
  list.push_back(module);
}

// With the module itself in front.
std::vector<T3Module*> HierarchyOf(T3Module* module) {
  std::set<T3Module*> seen;
  std::vector<T3Module*> list;
  Hierarchy(module, seen, list);
  list.pop_back();
  list.insert(list.begin(), module);
  return list;
}

// The other ASN.1 modules of a module's source.
std::vector<T3Module*> BesideInSource(T3Module* module) {
  std::vector<T3Module*> list;
  for (const auto& [name, node] : gT3ModuleMap) {
    auto* other = node->as<T3Module>();
    if (other != module && other->filename == module->filename) list.push_back(other);
  }
  return list;
}

// All modules of the sources that mesk has to read for a module, the module in front.
std::vector<T3Module*> ReadWith(T3Module* module) {
  std::set<T3Module*> seen;
  std::vector<T3Module*> list;
  Hierarchy(module, seen, list);
  for (size_t i = 0; i < list.size(); ++i)
    for (T3Module* other : BesideInSource(list[i])) Hierarchy(other, seen, list);
  list.erase(std::find(list.begin(), list.end(), module));
  list.insert(list.begin(), module);
  return list;
}

std::string SourcePrefix(T3Module* module, const std::string& behind) {
  return mesk::vexa_asn_1_filename_prefix(GetSourceFile(module)) + behind;
}

// The files of one run of the chain: with or without "bi" behind the prefixes.
class Chain {
 public:
  Chain(T3Module* module, std::string behind)
      : module_(module),
        behind_(std::move(behind)),
        directory_(GetOutputDir(module)),
        option_file_(directory_ + DirectorySeparator() + "VEXA-ASN-1-" + NameOf(module) + behind_ + ".txt") {
    mesk::RemoveAtEnd(option_file_);
  }

  const std::string& option_file() const { return option_file_; }
  const std::string& directory() const { return directory_; }

  void mesk_vexa_write_module_options() const {
    std::ofstream file(option_file_);
    for (T3Module* module : ReadWith(module_))
      file << "-PREFIX=" << mesk::vexa_rehyphenize(NameOf(module)) << ':' << SourcePrefix(module, behind_)
           << ':' << GetOutputFile(module) << behind_ << '\n';
  }

  void mesk_vexa_write_module_generation_options() const {
    std::ofstream file(mesk::GenerationOptionReference().substr(1), std::ios::app);
    WriteScopes(file);
  }

  bool RunMesk() const {
    std::vector<std::string> arguments{
        "mesk", "-VERBOSE=0", "-DEFINITION-CATEGORY=STAND-ALONE", "-TYP=1", "-DEF=1", "-TAB=1", "-COD=1"};
    if (behind_.empty()) arguments.emplace_back("-TST=1");
    for (const std::string& argument :
         {std::string("-NAMELEN=128"), std::string(behind_.empty() ? "-DEFINITELEN=1" : "-DEFINITELEN=0"),
          "-S=" + directory_, "-L=" + directory_, "+" + std::string(mesk::kCompilationOptions),
          "+" + option_file_, std::string("-PREFIXLEN=32"), mesk::GenerationOptionReference(),
          "+" + std::string(kGenerationOptions), std::string("-C-GENERATION=REAL")})
      arguments.push_back(argument);
    return mesk::Binary_invoke(arguments);
  }

  bool RunAsn2c() const {
    std::string command = "asn2c " + mesk::mesk_vexa_verbosity();
    if (!behind_.empty()) command += " -COD-FUNC-PREF=bi";
    command += " -S=\"" + directory_ + "\" +\"" + option_file_ + "\" -PREFIXLEN=32";
    for (T3Module* module : HierarchyOf(module_)) command += ' ' + GetOutputFile(module) + behind_;
    return mesk::ShellInvoke(command) == 0;
  }

 private:
  void WriteScopes(std::ostream& file) const {
    for (T3Module* module : ReadWith(module_)) {
      const std::string names =
          mesk::vexa_rehyphenize(GetPrefix(module)) + mesk::vexa_rehyphenize(NameOf(module));
      // The prefix of a source tells its modules not apart.
      std::vector<std::string> scopes{SourcePrefix(module, behind_), GetOutputFile(module) + behind_};
      if (!BesideInSource(module).empty()) scopes.erase(scopes.begin());
      std::string options;
      for (const char* option : {"TPREF", "VPREF", "CLPREF", "OPREF", "OSPREF"})
        options += std::string("-") + option + "=" + names + '\n';
      for (const char* option : {"C", "H", "L"}) options += std::string("-") + option + "=" + directory_ + '\n';
      for (const std::string& scope : scopes) WriteScope(scope, options, file);
    }
  }

  // Each run of the tools reads all scopes so far: one that holds already is not written once more.
  static void WriteScope(const std::string& scope, const std::string& options, std::ostream& file) {
    static std::map<std::string, std::string> written;
    std::string& last = written[scope];
    if (last == options) return;
    last = options;
    file << "-BEGIN-SCOPE=" << scope << '\n' << options << "-END-SCOPE\n\n";
  }

  T3Module* module_;
  std::string behind_;
  std::string directory_;
  std::string option_file_;
};

// A declaration for which an encoder is asked.
bool T3Declaration_has_encoder(T3Tree_Node* decl) {
  return T3Is<T3TypeDecl>(decl) && T3TypeDecl_encoder_reference(decl, T3TypeDecl_default_encoder(decl),
                                                                T3TypeDecl_default_variant(decl)) != "NULL";
}

void AddEntryTypes(T3Module* module) {
  for (auto* decl : Items<_T3Decl>(module->definition_part))
    if (T3Declaration_has_encoder(decl) || (gT3IsPortAllTypes && T3Is<T3TypeDecl>(decl)))
      addMESKEntryType(gIdents.GetCStr(decl->as<T3TypeDecl>()->name));
}

bool mesk_T3Module_recompile(T3Module* module, const Chain& chain) {
  MakeDir(chain.directory());
  chain.mesk_vexa_write_module_options();
  chain.mesk_vexa_write_module_generation_options();
  for (T3Module* part : HierarchyOf(module)) AddEntryTypes(part);
  mesk::RemoveAtEnd(kGenerationOptions);
  writeMESKOptionFile(kGenerationOptions);
  return chain.RunMesk();
}

// The TTCN-3 header of an ASN.1 module.
std::string T3HeaderOf(const asn1::ModRec& module) {
  T3Tree_Node* node = vexa_find_T3Module(gIdents.MakeIdent(asn1::convertHyphens(module.name)));
  return node == nullptr ? asn1::convertHyphens(module.name) : GetOutputFile(node);
}

// Tells the declarations which functions of the generator are theirs.
void NameFunctions(T3Module* module) {
  const auto checks = asn1::CheckFunctionNames(asn1::firstModule());
  const auto lengths = asn1::ConsofFunctionNames(asn1::firstModule());
  const auto text = [](const std::map<std::string, std::string>& names, const std::string& name) {
    const auto found = names.find(name);
    return found == names.end() ? "" : gIdents.GetCStr(gIdents.MakeIdent(found->second));
  };
  for (auto* at : Items<_T3Decl>(module->definition_part)) {
    auto* decl = at->try_as<T3TypeDecl>();
    if (decl == nullptr) continue;
    const std::string name = gIdents.GetCStr(decl->name);
    decl->cold().check_func_name = text(checks, name);
    decl->cold().constraintof_func_name = text(lengths, name);
  }
}

bool asn2c_generator_T3Module_generate(T3Module* module, const Chain& chain) {
  static const asn1::BackendName name{
      "ASN2T3",
      100,
      0,
      {"Usage:", "  asn2ttcn3 [options] [option-files] [syntax-file [syntax-file ...]]", "Options:",
       "  General back-end options (e.g.):", "    -S=syntax-file-directory                    Default: .",
       "  ASN2T3 specific options:", "    -OWNI=header.h ...", "    -OWNF=TypeIdentifier ...",
       "    -NOHEADERS",
       "Option files:", "  +filename    A text file with one global option or syntax file name",
       "               per line.", "Please refer to the asn2t3 documentation for more information."}};
  asn1::initBackend(mesk::BackendWords("+" + chain.option_file(), chain.directory(), {GetOutputFile(module)}),
                    name, asn1::globalBEOptionOK);
  if ((GetCodecGeneration(module) & kCodecNoTranslation) == 0) NameFunctions(module);
  return asn1::asn2t3_main(GetCodecGeneration(module), T3HeaderOf) > 0;
}

bool RunAsn2per(T3Module* module, const Chain& chain, const char* option, const char* variant) {
  return mesk::Binary_invoke({"asn2per", mesk::mesk_vexa_verbosity(), option,
                              std::string("-encoding-variant=") + variant, "-ENCODING-VARIANT-FUNC-PREF=yes",
                              "-DEFAULT-VALUES-WARNINGS-DISABLE=yes", "-S=" + chain.directory(),
                              "+" + chain.option_file(), "-PREFIXLEN=32", GetOutputFile(module)});
}

// Copies of the sources under the names of the second chain, gone when it has run.
class SourceCopies {
 public:
  explicit SourceCopies(T3Module* module) {
    for (T3Module* part : ReadWith(module)) {
      const std::string source = GetSourceFile(part);
      const std::string folder = GetOutputDir(module) + DirectorySeparator() + asn1::kCopiesFolder;
      const std::string copy = folder + DirectorySeparator() + SourcePrefix(part, kIndefinite) + ".asn";
      std::error_code fault;
      std::filesystem::create_directory(folder, fault);
      folder_ = folder;
      std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing, fault);
      if (!fault) copies_.push_back(copy);
      good_ = good_ && !fault;
    }
  }
  SourceCopies(const SourceCopies&) = delete;
  SourceCopies& operator=(const SourceCopies&) = delete;
  ~SourceCopies() {
    for (const std::string& copy : copies_) rDeleteFile(copy);
    std::error_code fault;
    std::filesystem::remove(folder_, fault);
  }
  bool good() const { return good_; }

 private:
  std::vector<std::string> copies_;
  std::string folder_;
  bool good_ = true;
};

bool IndefiniteChain(T3Module* module) {
  const Chain chain(module, kIndefinite);
  chain.mesk_vexa_write_module_options();
  chain.mesk_vexa_write_module_generation_options();
  writeMESKOptionFile(kGenerationOptions);
  const SourceCopies copies(module);
  return copies.good() && chain.RunMesk() && chain.RunAsn2c();
}

// Whether another module's files would have the names of some of this module's.
bool FilesCollide(T3Module* module) {
  const std::string own = GetOutputFile(module);
  bool collide = false;
  for (const auto& [name, other] : gT3ModuleMap) {
    if (other == module || GetOutputDir(other) != GetOutputDir(module)) continue;
    const std::string output = GetOutputFile(other);
    bool same = output == own;
    for (const char* suffix : asn1::kFileSuffixes) same = same || output == own + suffix;
    if (!same) continue;
    vexa_error("files of module \"" + std::string(gIdents.GetCStr(name)) +
                   "\" would take the names of those of ASN.1 module \"" + NameOf(module) + "\"",
               NoPosition);
    collide = true;
  }
  return collide;
}

bool Failed() {
  vexa_error("ASN.1 compilation failed", NoPosition);
  return false;
}
}  // namespace

void addMESKEntryType(const std::string& name) {
  entry_types.insert(name);
}

unsigned long EntryTypesDigest() {
  uint64_t digest = 0;
  for (const std::string& name : entry_types)
    for (const char c : name + '\n') digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3u + 1;
  return digest;
}

void writeMESKOptionFile(const std::string& path) {
  std::ofstream file(path);
  if (!file)
    throw internal_exception("T3GenMESKOptions", __LINE__, "writeMeskOptionFile",
                             "could not create '" + path + "'");
  file << "#\n# automatically created MESK option file\n#\n\n\n# generate codecs for the following types\n\n";
  for (const std::string& name : entry_types) file << "-ENTRY=" << mesk::vexa_rehyphenize(name) << ":sdu\n";
}

bool mesk_T3Module_generate(T3Tree_Node* node) {
  auto* module = node->as<T3Module>();
  const int mask = GetCodecGeneration(module);
  vexa_compiler_phases(GetVerbosity(module), "Invoking external components");
  if (FilesCollide(module)) return false;
  const Chain chain(module, "");
  if (!mesk_T3Module_recompile(module, chain)) return Failed();
  if (!asn2c_generator_T3Module_generate(module, chain)) return Failed();
  // A step that fails does not keep the others from their files.
  bool good = true;
  const auto step = [&](bool done) { good = (done || Failed()) && good; };
  if ((mask & kCodecPerAligned) != 0) step(RunAsn2per(module, chain, "-PERCOD=1:1", "basic-aligned"));
  if ((mask & kCodecPerUnaligned) != 0) step(RunAsn2per(module, chain, "-PERCOD=2:2", "basic-unaligned"));
  step(chain.RunAsn2c());
  if ((mask & kCodecBerLengthForm3) != 0) step(IndefiniteChain(module));
  return good;
}
