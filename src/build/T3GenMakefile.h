// The last stage of a compilation: the makefile and the main file.
#pragma once

#include <string>

/// Writes what `-k`, `-K` and `-E` ask for. `orv_dir` is the directory of the installation. False after a
/// failure, which has been reported; true when all went well or nothing was asked for.
bool GenerateMakefile(const std::string& orv_dir);
