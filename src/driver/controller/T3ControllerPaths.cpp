// Where the program is installed.
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "build/MGHostType.h"
#include "driver/controller/T3Controller.h"

namespace {
constexpr std::string_view kCygwinDrive = "/cygdrive/";

// A path of the Unix emulation, as the host itself writes it.
std::string ToDrivePath(std::string path) {
  if (path.compare(0, kCygwinDrive.size(), kCygwinDrive) != 0 || path.size() == kCygwinDrive.size())
    return path;
  path = path.substr(kCygwinDrive.size(), 1) + ':' + path.substr(kCygwinDrive.size() + 1);
  for (char& c : path)
    if (c == '/') c = '\\';
  return path;
}

// The path without its last component; an opening quote that is left is closed again. False when there is
// no separator.
bool DropComponent(std::string& path, const std::string& slash) {
  const size_t separator = path.rfind(slash);
  if (separator == std::string::npos) return false;
  path.resize(separator);
  if (path.size() > 1 && path.front() == '"') path += '"';
  return true;
}

// The place of a program that was called by its name alone, on the way that its caller found it; the name
// where that is not known.
std::string FoundThroughPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path == nullptr || name.empty() ? "" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string place = folder + '/' + name;
    if (!folder.empty() && access(place.c_str(), X_OK) == 0) return place;
  }
  return name;
}

// The directory as the system knows it: without the marks that a makefile needs.
std::string PlainDirectory(const std::string& directory, bool windows) {
  std::string plain = RemoveEnclosingQuotes(directory);
  if (windows) return plain;
  for (size_t at = plain.find("\\ "); at != std::string::npos; at = plain.find("\\ ", at)) plain.erase(at, 1);
  return plain;
}
}  // namespace

void setup_paths(int argc, const char** argv) {
  HostType host;
  host.init("");
  if (host.name() == "CygWin") host.init("Windows_NT");
  const bool windows = host.name() == "Windows";
  std::string program = argc > 0 ? argv[0] : "";
  if (!windows && program.find('/') == std::string::npos) program = FoundThroughPath(program);
  std::string directory = host.fix_path(program);
  if (windows) directory = ToDrivePath(directory);
  if (!DropComponent(directory, host.slash())) directory = ".";
  orv_dir = directory;
  DropComponent(orv_dir, host.slash());
  const char* old_path = std::getenv("PATH");
  const std::string path =
      PlainDirectory(directory, windows) + (windows ? ';' : ':') + (old_path == nullptr ? "" : old_path);
  setenv("PATH", path.c_str(), 1);
}
