// The last stage of a compilation: the makefile and the main file.
#pragma once

#include <string>
#include <vector>

/// Writes what `-k`, `-K` and `-E` ask for. `orv_dir` is the directory of the installation. False after a
/// failure, which has been reported; true when all went well or nothing was asked for.
bool GenerateMakefile(const std::string& orv_dir);

/// The files that GenerateMakefile will write, by their names in one directory. Empty where it will fail.
struct MakefileOutputs {
  std::string directory;
  std::vector<std::string> names;
};
MakefileOutputs GetMakefileOutputs(const std::string& orv_dir);

/// What the ASN.1 tools and the glue generator may write behind the base name of a module.
std::vector<std::string> Asn1OutputSuffixes();
