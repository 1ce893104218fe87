#include "build/MGHostType.h"

#include <cctype>
#include <cstdlib>

namespace {

// The prototypes, in the order in which they are tried.
const Windows windows_prototype(true);
const CygWin cygwin_prototype(true);
const Solaris solaris_prototype(true);
const HPUX hpux_prototype(true);
const Linux linux_prototype(true);

bool HasBlank(const std::string& text) {
  return text.find(' ') != std::string::npos;
}

/// The stem by which a linker knows a library: without the "lib" in front and without its extension.
std::string LibraryStem(const std::string& library) {
  std::string stem = library.starts_with("lib") ? library.substr(3) : library;
  return stem.substr(0, stem.rfind('.'));
}

/// A path as make reads it: each blank behind a backslash. One that has it already is left alone.
std::string EscapeBlanks(const std::string& path) {
  std::string fixed;
  for (const char c : path) {
    if (c == ' ' && !fixed.ends_with('\\')) fixed += '\\';
    fixed += c;
  }
  return fixed;
}

}  // namespace

HostType::HostType(bool) {
  register_item(this);
}

HostType::~HostType() {
  unregister_item(this);
}

std::string HostType::name() const {
  return instance().name();
}
std::string HostType::config_name() const {
  return instance().config_name();
}
std::string HostType::exe_ext() const {
  return instance().exe_ext();
}
std::string HostType::obj_ext() const {
  return instance().obj_ext();
}
std::string HostType::lib_ext() const {
  return instance().lib_ext();
}
std::string HostType::slash() const {
  return instance().slash();
}
std::string HostType::quoute() const {
  return instance().quoute();
}
std::string HostType::rm_cmd(const std::string& files) const {
  return instance().rm_cmd(files);
}
std::string HostType::fix_path(const std::string& path) const {
  return instance().fix_path(path);
}
std::string HostType::fix_head(const std::string& path) const {
  return instance().fix_head(path);
}
std::string HostType::fix_lib(const std::string& library) const {
  return instance().fix_lib(library);
}

std::string HostType::os_name() {
  for (const char* variable : {"OSTYPE", "OS"}) {
    if (const char* value = std::getenv(variable)) return value;
  }
  return "";
}

void HostType::init(const std::string& name) {
  std::string host = name.empty() ? os_name() : name;
  if (host.empty()) host = "solaris";
  try {
    set_instance(create_instance(host));
  } catch (...) {
    throw "Error: could not determine the correct host type for '" + host + "': unknown host type.\n" +
        "Please set the environment variable 'OSTYPE' to one of the following supported values:\n" +
        "Windows_NT, solaris, linux, linux-gnu, hpux or cygwin";
  }
}

std::vector<std::string> HostType::fix_path(const std::vector<std::string>& paths) const {
  std::vector<std::string> fixed;
  fixed.reserve(paths.size());
  for (const std::string& path : paths) fixed.push_back(fix_path(path));
  return fixed;
}

std::string Windows::name() const {
  return "Windows";
}
std::string Windows::config_name() const {
  return "make_win.mcfg";
}
std::string Windows::exe_ext() const {
  return ".exe";
}
std::string Windows::obj_ext() const {
  return ".obj";
}
std::string Windows::lib_ext() const {
  return ".lib";
}
std::string Windows::slash() const {
  return "\\";
}
std::string Windows::quoute() const {
  return "\"";
}
// make ignores the failure of a command that begins with a minus sign
std::string Windows::rm_cmd(const std::string& files) const {
  return "-del " + files + " 2>nul";
}
std::string Windows::fix_path(const std::string& path) const {
  const std::string fixed = fix_head(path);
  return HasBlank(fixed) ? "\"" + fixed + "\"" : fixed;
}
std::string Windows::fix_head(const std::string& path) const {
  return path.starts_with(".\\") ? path.substr(2) : path;
}
std::string Windows::fix_lib(const std::string& library) const {
  return library;
}
HostType* Windows::create_instance(const std::string& name) const {
  return name == "Windows_NT" ? new Windows(false) : nullptr;
}

std::string CygWin::name() const {
  return "CygWin";
}
std::string CygWin::config_name() const {
  return "make_win.mcfg";
}
std::string CygWin::exe_ext() const {
  return ".exe";
}
std::string CygWin::obj_ext() const {
  return ".obj";
}
std::string CygWin::lib_ext() const {
  return ".lib";
}
std::string CygWin::slash() const {
  return "/";
}
std::string CygWin::quoute() const {
  return "\"";
}
std::string CygWin::rm_cmd(const std::string& files) const {
  return "rm -f " + files + " 2>nul";
}
std::string CygWin::fix_path(const std::string& path) const {
  std::string fixed = fix_head(path);
  for (size_t i = 0; i < fixed.size(); ++i)
    if (fixed[i] == '\\' && fixed.compare(i + 1, 1, " ") != 0) fixed[i] = '/';
  return EscapeBlanks(fixed);
}
std::string CygWin::fix_head(const std::string& path) const {
  if (path.size() > 1 && path[1] == ':') {
    const auto drive = static_cast<char>(std::tolower(static_cast<unsigned char>(path[0])));
    return std::string("/cygdrive/") + drive + path.substr(2);
  }
  return path.starts_with("./") || path.starts_with(".\\") ? path.substr(2) : path;
}
std::string CygWin::fix_lib(const std::string& library) const {
  return LibraryStem(library);
}
HostType* CygWin::create_instance(const std::string& name) const {
  return name == "cygwin" ? new CygWin(false) : nullptr;
}

std::string Unix::exe_ext() const {
  return "";
}
std::string Unix::obj_ext() const {
  return ".o";
}
std::string Unix::lib_ext() const {
  return ".a";
}
std::string Unix::slash() const {
  return "/";
}
std::string Unix::quoute() const {
  return "";
}
std::string Unix::rm_cmd(const std::string& files) const {
  return "rm -f " + files;
}
std::string Unix::fix_path(const std::string& path) const {
  return EscapeBlanks(path);
}
std::string Unix::fix_head(const std::string& path) const {
  return path;
}
std::string Unix::fix_lib(const std::string& library) const {
  return LibraryStem(library);
}

std::string Solaris::name() const {
  return "Solaris";
}
std::string Solaris::config_name() const {
  return "make_solaris.mcfg";
}
HostType* Solaris::create_instance(const std::string& name) const {
  return name == "solaris" ? new Solaris(false) : nullptr;
}

std::string HPUX::name() const {
  return "HPUX";
}
std::string HPUX::config_name() const {
  return "make_hpux.mcfg";
}
HostType* HPUX::create_instance(const std::string& name) const {
  return name == "hpux" ? new HPUX(false) : nullptr;
}

std::string Linux::name() const {
  return "Linux";
}
std::string Linux::config_name() const {
  return "make_linux.mcfg";
}
HostType* Linux::create_instance(const std::string& name) const {
  return name == "linux" || name == "linux-gnu" ? new Linux(false) : nullptr;
}
