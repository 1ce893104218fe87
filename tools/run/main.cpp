// From sources to verdicts by one command: finds the root module, compiles and builds what changed, and
// becomes the suite.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

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
  text += "\n" + LinkerFlags(suite);
  for (const char* name : kVariables)
    if (const char* value = std::getenv(name)) text += std::string(name) + " " + value + "\n";
  for (const std::string& option : request.compiler_options) text += "option " + option + "\n";
  for (const std::string& file : request.Files())
    text += "file " + std::filesystem::absolute(file).string() + "\n";
  for (const Module& module : suite.modules) text += "module " + module.name + "\n";
  return text;
}

/// The words of files for an MCFG file that is used in `folder`.
std::string Words(const std::vector<std::string>& files, const path& folder) {
  std::string words;
  for (const std::string& file : files)
    words += " \"" + std::filesystem::proximate(std::filesystem::absolute(file), folder).string() + "\"";
  return words;
}

/// The tools' MCFG file with what this suite needs: its sources, objects that know their headers, and the
/// names that this program relies on.
void WriteMcfg(const Suite& suite, const path& folder) {
  std::ifstream tools(suite.mcfg, std::ios::binary);
  std::ostringstream text;
  text << tools.rdbuf();
  if (!tools.is_open() || text.bad()) throw "cannot read " + suite.mcfg.string();
  std::ofstream out(folder / "suite.mcfg", std::ios::binary);
  out << text.str() << "\n</SECTION>\n"
      << "BUILD_LIBRARY = no\nMAINFILE = yes\nMAKEFILE_NAME = makefile\nETS_NAME = " << suite.executable()
      << "\n"
      << "USER_SRCS +=" << Words(suite.request.sources, folder) << "\n"
      << "USER_OBJS +=" << Words(suite.request.objects, folder) << "\n"
      << LinkerFlags(suite) << "USER_CC_FLAGS += -MD -MP\nGENERATED_CC_FLAGS += -MD\nINCLUDE += headers.mk\n";
  std::ofstream headers(folder / "headers.mk", std::ios::binary);
  headers << ".DELETE_ON_ERROR:\ninclude $(wildcard *.d)\n";
  if (!out.flush() || !headers.flush()) throw "cannot write into " + folder.string();
}

std::vector<std::string> CompilerCommand(const Suite& suite, const path& folder) {
  const Request& request = suite.request;
  std::vector<std::string> command = {(suite.installation / "bin/orvane").string(),
                                      "-v",
                                      "2",
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
  const int status = RunProgram(CompilerCommand(suite, folder), output);
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
  return RunProgram(make, output) == 0 ? 0 : kStartFault;
}

/// What could not be built leaves nothing to run. Compilers do not always tell of a full disk.
void TakeBack(const Suite& suite, const path& folder) {
  std::error_code error;
  std::filesystem::remove_all(folder / suite.executable(), error);
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
  RefuseEqualObjects(suite);
  return suite;
}

int Run(int argc, char** argv) {
  Request request = ReadRequest(argc, argv);
  if (request.help) {
    std::cout << HelpText();
    return 0;
  }
  // The compiler takes the host, and with it the form of paths, from here.
  setenv("OSTYPE", "linux", 1);
  const Suite suite = MakeSuite(std::move(request));
  BuildFolder folder(suite.request.folder);
  folder.Prepare(Setup(suite), suite.request.Files());
  const int status = Build(suite, folder);
  if (status != 0) TakeBack(suite, folder.path());
  folder.Settle();
  if (status != 0) return status;
  OpenProgram(folder.path() / suite.executable()).Become(suite.request.suite_arguments);
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
