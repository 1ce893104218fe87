// The files that T3Makefile writes: the makefile with its backup, and the main file in its three forms.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "build/T3Makefile.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "support/TemporaryFiles.h"

namespace {

constexpr const char* kMainFile = "main_driver.c";

constexpr const char* kServerMain = R"(#include <stdio.h>
#include "lumos.h"
#include "tci.h"

void tciControlTerminated () {}

int main(int argc, char *argv[])
{
  return tciStartTestsuiteServer(argc, argv);
}
)";

constexpr const char* kTciMainHead = R"(#include "lumos.h"
#include "tci.h"

static void *sem = NULL;

void tciControlTerminated () {

  pavo_sem_post(sem, lumo_no_context_c);
}

int main(int argc, char *argv[]) {

  if (tciInit(argc, argv)) {
    sem = pavo_sem_create(0, lumo_no_context_c);

)";

constexpr const char* kTciMainTail = R"(    tciStartControl();

    pavo_sem_wait(sem, lumo_no_context_c);
    pavo_sem_destroy(sem, lumo_no_context_c);

    tciFinalize();

    return 0;
  } else {
    return 1;
  }
}
)";

bool Exists(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

/// Renames `path`, over an old backup. Should something else stand in the way, such as an empty directory, it
/// is removed first.
void MoveToBackup(const std::string& path, const std::string& backup) {
  if (std::rename(path.c_str(), backup.c_str()) == 0) return;
  std::remove(backup.c_str());
  if (std::rename(path.c_str(), backup.c_str()) != 0) throw std::string();
}

void Progress(const std::string& text) {
  vexa_progress(gT3CommandLine.CommonVerbosity(), "MakeFile/MainFile generation - " + text);
}

}  // namespace

std::vector<std::string> T3Makefile::outputs(bool with_makefile) {
  if (!with_makefile) return {kMainFile};
  read_config();
  std::vector<std::string> names = {makefile_name()};
  if (main_function_file_generation_enabled()) names.emplace_back(kMainFile);
  load_tools();
  names.push_back(target_name());
  return names;
}

std::string T3Makefile::makefile_name() const {
  return _config.item("MAKEFILE_NAME", "makefile");
}

void T3Makefile::write_makefile() {
  const std::string name = makefile_name();
  create_makefile(_output_dir + _host.slash() + name);
  Progress("Creating \"" + name + "\"");
}

/// The makefile's own name up to its last point, and ".bak". A point in the directory takes no part.
std::string T3Makefile::backup_name(const std::string& path) const {
  const size_t slash = path.rfind(_host.slash());
  const size_t dot = path.rfind('.');
  const bool has_extension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  const std::string backup = path.substr(0, has_extension ? dot : std::string::npos) + ".bak";
  return backup == path ? path + ".bak" : backup;
}

/// The makefile is written beside its place. The old one is moved away only when the new one is complete, and
/// comes back should the last step fail.
void T3Makefile::create_makefile(const std::string& path) const {
  const bool replaces = Exists(path);
  if (replaces && !_overwrite) {
    throw std::string("there already exists a makefile and the 'do not overwrite' flag was specified");
  }
  TemporaryFile beside;
  beside.Adopt(path + "." + std::to_string(getpid()) + ".tmp");
  std::ofstream out(beside.path(), std::ios::binary | std::ios::trunc);
  if (!out) throw "could not open '" + path + "'";
  _makefile.generate(out, true);
  out.close();
  if (!out) throw "could not write '" + path + "'";
  const std::string backup = backup_name(path);
  if (replaces) MoveToBackup(path, backup);
  if (std::rename(beside.path().c_str(), path.c_str()) == 0) return;
  if (replaces) std::rename(backup.c_str(), path.c_str());
  throw "could not open '" + path + "'";
}

void T3Makefile::check_root_module() {
  if (gT3CommandLine.root_module_given || _root_warning_given) return;
  _root_warning_given = true;
  vexa_warning(gT3CommandLine.CommonVerbosity(),
               "Root module not specified - using \"" + _root_module + "\" as root", NoPosition);
}

std::string T3Makefile::generate_main_function_file() {
  const bool server = gT3CommandLine.tci && gT3CommandLine.test_management;
  if (!server) check_root_module();
  const std::string text = server ? kServerMain : gT3CommandLine.tci ? tci_main() : plain_main();
  OutputFile file;
  // make need not compile again what is the same
  if (!file.Open(_output_dir + _host.slash() + kMainFile) || std::fputs(text.c_str(), file.stream()) < 0 ||
      (!file.IsLikeOld() && !file.Commit())) {
    throw std::string("could not create \"") + kMainFile + "\"";
  }
  Progress(std::string("The file \"") + kMainFile + "\", with \"main\" function, has been generated.");
  return kMainFile;
}

std::string T3Makefile::tci_main() const {
  return kTciMainHead + ("    tciRootModule(\"" + _root_module + "\");\n") + kTciMainTail;
}

std::string T3Makefile::plain_main() const {
  return "#include <stdio.h>\n"
         "#include \"lumos.h\"\n"
         "#include \"" +
         _root_file +
         ".h\"\n"
         "\n"
         "int main(int argc, char *argv[])\n"
         "{\n"
         "  lumo_run_test_suite(argc, argv, vexa_" +
         _root_module +
         "_register, lumo_root_control_part_c);\n"
         "  return true;\n"
         "}\n";
}
