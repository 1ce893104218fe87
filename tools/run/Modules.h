// What must be known of the modules before they are compiled: their names, what they import and which of them
// has a control part. The files are looked through for these words only; whether they are well-formed is the
// compiler's question.
#pragma once

#include <string>
#include <vector>

namespace run {

struct Module {
  std::string name;
  std::vector<std::string> imports;
  bool has_control = false;
};

/// The modules of TTCN-3 files, in order. A file that cannot be read has none. Any encoding that keeps the
/// characters of ASCII apart from others will do.
std::vector<Module> FindModules(const std::vector<std::string>& files);

/// The module where the run begins: among those that no other imports, the only one with a control part, else
/// the only one; empty without modules. Throws a std::string that names them when several could be it.
std::string FindRoot(const std::vector<Module>& modules);

}  // namespace run
