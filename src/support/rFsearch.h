// Names of files: their parts, and the search along a list of directories.
#pragma once

#include <string>
#include <string_view>

/// What stands between the components of a path here.
constexpr char DirectorySeparator() {
  return '/';
}

/// The last component of a path. `/` and `\` both separate; trailing separators do not count.
std::string rBaseName(std::string_view path);
/// All but the last component; "." for a plain name, the root for a path of one component below it.
std::string rDirName(std::string_view path);

/// The executable file `name` in one of the directories of `path`, which are separated by ':'; an empty
/// one is the working directory. A name with a separator is not searched. Empty when there is none.
std::string searchpath(const std::string& name, const std::string& path);
