// What a call of orvane-run asks for: the files, where and how they are built, and what the suite is to be
// told.
//
// The program's own options are few, and a file is known by its extension, or by the option that names it.
// All other arguments are the suite's, so that options which a suite has or will have need no second list
// here.
#pragma once

#include <string>
#include <vector>

namespace run {

/// The name under which the program speaks.
inline constexpr const char* kProgram = "orvane-run";
/// The exit status of wrong use and of what could not be built or started, as suites have it.
inline constexpr int kStartFault = 2;

struct Request {
  /// Where the suite is built; made where it is missing.
  std::string folder = ".orvane-run";
  /// The root module's name; empty for the one that is found.
  std::string root;
  /// The MCFG file; empty for that of the installation.
  std::string mcfg;
  bool help = false;
  bool version = false;
  /// Nothing is run.
  bool build_only = false;
  /// More options for the compiler, in order.
  std::vector<std::string> compiler_options;
  std::vector<std::string> ttcn_files;
  std::vector<std::string> asn1_files;
  /// C and C++ sources, objects and archives of the user's own.
  std::vector<std::string> sources;
  std::vector<std::string> objects;
  /// What the suite gets.
  std::vector<std::string> suite_arguments;

  /// The files of all kinds, in the order of the members above.
  std::vector<std::string> Files() const;
};

/// Reads the arguments behind the program's name. Throws a std::string for wrong use.
Request ReadRequest(int argc, char** argv);
/// What `--help` and `--version` print.
std::string HelpText();
std::string VersionText();

}  // namespace run
