// From sources to verdicts by one command: finds the root module, compiles and builds what changed, and
// becomes the suite.
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>

#include "run/Archives.h"
#include "run/BuildFolder.h"
#include "run/FileStates.h"
#include "run/Modules.h"
#include "run/Programs.h"
#include "run/Request.h"

namespace run {

namespace {

using std::filesystem::path;

/// With less free space a failed build may be due to that.
constexpr std::uintmax_t kScarce = 16 << 20;
/// The compiler's status when it could not write a makefile, of which it tells the reason among its stages.
constexpr int kNoMakefile = 245;
constexpr const char* kWarnings = "2";
constexpr const char* kStages = "3";

/// A suite on its way: what was asked for, and what was found out about it.
struct Suite {
  Request request;
  path installation;
  path mcfg;
  std::vector<Module> modules;
  std::string root;

  /// The executable's name, which is that of no target of a makefile.
  std::string executable() const { return root + ".run"; }
};

path ChooseMcfg(const Suite& suite) {
  if (!suite.request.mcfg.empty()) return suite.request.mcfg;
  return suite.installation / "share/orvane" /
         (IsInstalled("tcc") ? "make_linux_tcc.mcfg" : "make_linux.mcfg");
}

/// Objects have the names of their sources and lie in one folder.
void RefuseEqualObjects(const Suite& suite) {
  std::map<std::string, std::string> sources = {{"main_driver", "the main file"}};
  for (const Module& module : suite.modules) sources.emplace(module.name, "module " + module.name);
  for (const std::string& source : suite.request.sources) {
    const path name = path(source).extension() == ".c" ? path(source).stem() : path(source).filename();
    const auto [other, added] = sources.emplace(name.string(), source);
    if (!added) throw source + " would have the object of " + other->second;
  }
}

/// Files have the names of their modules, and while they are made, a linker's ".run.tmp1234567" behind them.
void RefuseLongNames(const Suite& suite) {
  constexpr size_t kAdded = 15, kShown = 40;
  const long limit = pathconf(suite.request.folder.c_str(), _PC_NAME_MAX);
  for (const Module& module : suite.modules)
    if (limit > 0 && module.name.size() + kAdded > static_cast<size_t>(limit))
      throw "the name of module " + module.name.substr(0, kShown) + "... is too long for files in " +
          suite.request.folder + ", which takes " + std::to_string(static_cast<size_t>(limit) - kAdded) +
          " characters";
}

/// The library has substitutes for what an adapter leaves out. So that an adapter in an archive is found
/// before them, its functions are named.
std::string AdapterFlags(const Suite& suite) {
  std::string flags;
  for (const std::string& file : suite.request.objects)
    for (const std::string& name : NamesInArchive(file))
      if (name.starts_with("tri")) flags += " -Wl,-u," + name;
  return flags.empty() ? "" : "LD_FLAGS +=" + flags + "\n";
}

/// Linking a large suite takes longer than compiling a module of it: the option for a faster linker than the
/// usual one, where one is installed and neither the tools nor objects are the user's own.
std::string LinkerFlags(const Suite& suite) {
  if (suite.request.mcfg.empty() && suite.request.objects.empty())
    for (const std::string linker : {"lld", "gold"})
      if (IsInstalled("ld." + linker)) return "LD_FLAGS += -fuse-ld=" + linker + "\n";
  return "";
}

/// Names that make and compilers take from elsewhere than the command.
constexpr const char* kVariables[] = {"MAKEFLAGS",      "GNUMAKEFLAGS",       "MAKEFILES",   "CPATH",
                                      "C_INCLUDE_PATH", "CPLUS_INCLUDE_PATH", "LIBRARY_PATH"};
constexpr const char* kTools[] = {"tcc", "cc", "c++"};
constexpr const char* kInstalled[] = {
    "bin/orvane",      "bin/mesk",       "bin/mkprefil",      "bin/asn2c",
    "bin/asn2per",     "lib/liblumos.a", "lib/libasn1home.a", "lib/liblumos_json.a",
    "include/lumos.h", "include/tri.h",  "include/tci.h",     "include/asn2lumos.h"};

/// By what, of what and where the suite is built: another setup has nothing to use again.
std::string Setup(const Suite& suite) {
  const Request& request = suite.request;
  std::string text = suite.root + "\n" + std::filesystem::absolute(request.folder).string() + "\n" +
                     suite.mcfg.string() + " " + StateOf(suite.mcfg) + "\n" + suite.installation.string();
  for (const char* part : kInstalled) text += " " + StateOf(suite.installation / part);
  for (const char* tool : kTools) text += " " + StateOf(FindProgram(tool));
  text += "\n" + LinkerFlags(suite) + AdapterFlags(suite);
  for (const char* name : kVariables)
    if (const char* value = std::getenv(name)) text += std::string(name) + " " + value + "\n";
  for (const std::string& option : request.compiler_options) text += "option " + option + "\n";
  for (const std::string& file : request.Files())
    text += "file " + std::filesystem::absolute(file).string() + "\n";
  for (const Module& module : suite.modules) text += "module " + module.name + "\n";
  return text;
}

/// What makefiles and shells take for nothing else; blanks are guarded in both.
bool IsPlain(const std::string& name) {
  return std::ranges::all_of(name, [](unsigned char c) {
    return c >= 0x80 || std::isalnum(c) != 0 ||
           std::string_view("_./+-,@ ").find(c) != std::string_view::npos;
  });
}

/// How make, in `folder`, may call a file. A folder's name that make would not take is reached by a link.
std::string NameForMake(const path& file, const path& folder, size_t number) {
  const path name = std::filesystem::proximate(std::filesystem::absolute(file), folder);
  if (IsPlain(name)) return name;
  if (!IsPlain(file.filename())) throw file.string() + " has a name that make cannot take; rename it";
  const path link = "from" + std::to_string(number);
  std::filesystem::remove_all(folder / link);
  std::filesystem::create_directory_symlink(std::filesystem::absolute(file).parent_path(), folder / link);
  return link / file.filename();
}

/// The words of files for an MCFG file that is used in `folder`, with a space of numbers for links.
std::string Words(const std::vector<std::string>& files, const path& folder, size_t number) {
  std::string words;
  for (const std::string& file : files) words += " \"" + NameForMake(file, folder, number++) + "\"";
  return words;
}

/// The tools' MCFG file with what this suite needs: its sources, objects that know their headers, and the
/// names that this program relies on.
void WriteMcfg(const Suite& suite, const path& folder) {
  const std::string tools = ReadFile(suite.mcfg);
  if (tools.empty()) throw "cannot read " + suite.mcfg.string();
  std::ofstream out(folder / "suite.mcfg", std::ios::binary);
  out << tools << "\n</SECTION>\n";
  // an installation may have been moved
  if (suite.request.mcfg.empty()) out << "<ORV_DIR> = \"" << suite.installation.string() << "\"\n";
  out << "BUILD_LIBRARY = no\nMAINFILE = yes\nMAKEFILE_NAME = makefile\nETS_NAME = " << suite.executable()
      << "\n"
      << "USER_SRCS +=" << Words(suite.request.sources, folder, 0) << "\n"
      << "USER_OBJS +=" << Words(suite.request.objects, folder, suite.request.sources.size()) << "\n"
      << LinkerFlags(suite) << AdapterFlags(suite)
      << "USER_CC_FLAGS += -MD\nGENERATED_CC_FLAGS += -MD\nINCLUDE += rules.mk\n";
  std::ofstream rules(folder / "rules.mk", std::ios::binary);
  rules << ".DELETE_ON_ERROR:\n# a module may have the name of these files, and make knows how to link "
           "programs\nmakefile rules.mk: ;\n";
  if (!out.flush() || !rules.flush()) throw "cannot write into " + folder.string();
}

std::vector<std::string> CompilerCommand(const Suite& suite, const path& folder, const char* verbosity) {
  const Request& request = suite.request;
  std::vector<std::string> command = {(suite.installation / "bin/orvane").string(),
                                      "-v",
                                      verbosity,
                                      "-B",
                                      "-K",
                                      "-d",
                                      folder.string(),
                                      "-f",
                                      (folder / "suite.mcfg").string()};
  if (!suite.root.empty()) command.insert(command.end(), {"-r", suite.root});
  command.insert(command.end(), request.compiler_options.begin(), request.compiler_options.end());
  command.emplace_back("-F");
  command.insert(command.end(), request.ttcn_files.begin(), request.ttcn_files.end());
  if (!request.asn1_files.empty()) command.emplace_back("-A");
  command.insert(command.end(), request.asn1_files.begin(), request.asn1_files.end());
  return command;
}

/// Compiles and builds the suite: 0, or the status of the step that failed.
int Build(const Suite& suite, const BuildFolder& place) {
  const path& folder = place.path();
  WriteMcfg(suite, folder);
  const path output = folder / "output";
  int status = RunProgram(CompilerCommand(suite, folder, kWarnings), output, Errors::BehindOutput);
  if (status == kNoMakefile)
    status = RunProgram(CompilerCommand(suite, folder, kStages), output, Errors::BehindOutput);
  place.DropOutdated(suite.executable());
  if (status != 0) return status;
  if (suite.root.empty()) throw std::string("no module was found");
  const std::vector<std::string> make = {"make",
                                         "-s",
                                         "--no-print-directory",
                                         "-j",
                                         std::to_string(Processors()),
                                         "-C",
                                         folder.string(),
                                         "-f",
                                         "makefile",
                                         "all"};
  return RunProgram(make, output, Errors::AtOnce) == 0 ? 0 : kStartFault;
}

/// What could not be built leaves nothing to run. Not all tools tell what they lack.
void TakeBack(const Suite& suite, const path& folder) {
  std::error_code error;
  std::filesystem::remove_all(folder / suite.executable(), error);
  for (const char* tool : {"cc", "c++"})
    if (!IsInstalled(tool)) std::cerr << kProgram << ": there is no " << tool << " on the path\n";
  const auto space = std::filesystem::space(folder, error);
  if (!error && space.available < kScarce)
    std::cerr << kProgram << ": only " << space.available / 1024 << " kB are free where " << folder.string()
              << " lies\n";
}

Suite MakeSuite(Request request) {
  Suite suite;
  suite.request = std::move(request);
  suite.installation = Installation();
  suite.mcfg = ChooseMcfg(suite);
  suite.modules = FindModules(suite.request.ttcn_files);
  suite.root = suite.request.root.empty() ? FindRoot(suite.modules) : suite.request.root;
  for (const auto* files : {&suite.request.sources, &suite.request.objects})
    for (const std::string& file : *files)
      if (access(file.c_str(), R_OK) != 0) throw file + ": " + std::strerror(errno);
  RefuseEqualObjects(suite);
  if (const std::string& root = suite.request.root;
      !root.empty() && std::ranges::find(suite.modules, root, &Module::name) == suite.modules.end())
    throw "no module is named " + root;
  if (!IsPlain(suite.request.folder))
    throw "make cannot build in " + suite.request.folder + "; name another folder with -d";
  return suite;
}

/// A make that has started this program wants nothing of the one that is started here but what it defines:
/// options and jobs differ from call to call, and so would the setup.
void LeaveOuterMake() {
  const char* flags = std::getenv("MAKEFLAGS");
  const std::string text = flags == nullptr ? "" : flags;
  std::string definitions;
  for (size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find(' ', begin), text.size());
    while (end < text.size() && end > begin && text[end - 1] == '\\')
      end = std::min(text.find(' ', end + 1), text.size());
    const std::string word = text.substr(begin, end - begin);
    if (!word.starts_with('-') && word.find('=') != std::string::npos) definitions += " " + word;
  }
  setenv("MAKEFLAGS", definitions.c_str(), 1);
  for (const char* name : {"MFLAGS", "MAKELEVEL"}) unsetenv(name);
}

int Run(int argc, char** argv) {
  Request request = ReadRequest(argc, argv);
  if (request.help) {
    std::cout << HelpText();
    return 0;
  }
  if (request.version) {
    std::cout << VersionText();
    return 0;
  }
  LeaveOuterMake();
  // The compiler takes the host, and with it the form of paths, from here.
  setenv("OSTYPE", "linux", 1);
  const Suite suite = MakeSuite(std::move(request));
  BuildFolder folder(suite.request.folder);
  RefuseLongNames(suite);
  folder.Prepare(Setup(suite), suite.request.Files());
  const int status = Build(suite, folder);
  if (status != 0) TakeBack(suite, folder.path());
  folder.Settle();
  if (status != 0 || suite.request.build_only) return status;
  OpenProgram(folder.path() / suite.executable()).Become("./" + suite.root, suite.request.suite_arguments);
}

}  // namespace

}  // namespace run

int main(int argc, char** argv) {
  try {
    return run::Run(argc, argv);
  } catch (const std::string& reason) {
    std::cerr << run::kProgram << ": " << reason << "\n";
  } catch (const std::exception& failure) {
    std::cerr << run::kProgram << ": " << failure.what() << "\n";
  }
  return run::kStartFault;
}
