// What archives of objects define.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace run {

/// The names in the index of an archive; none where it has no index, or is none.
std::vector<std::string> NamesInArchive(const std::filesystem::path& file);

}  // namespace run
