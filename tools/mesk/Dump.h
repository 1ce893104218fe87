// Prints a syntax file as text, for tests and for those who look for a fault in one.
#pragma once

#include <string>

namespace mesk {

/// False, with a message, where the file can't be read or is not valid.
bool dumpFile(const std::string& path);

}  // namespace mesk
