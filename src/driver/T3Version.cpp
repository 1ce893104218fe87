#include "driver/T3Version.h"

#include <set>

#include "T3VersionUnits.inc"

const char* const kNotice =
    "Copyright \251 the Orvane developers.  All rights reserved.  This program comes without any warranty.";

namespace {
std::set<std::string>& Lines() {
  static auto& lines = *new std::set<std::string>;
  return lines;
}

#define ORVANE_UNIT(name) VersionInfo(name, kVersion),
const VersionInfo units[] = {ORVANE_VERSION_UNITS};
#undef ORVANE_UNIT
}  // namespace

VersionInfo::VersionInfo(const char* unit, const char* version) {
  Lines().insert(std::string(unit) + ' ' + version);
}

void VersionInfo::Print(FILE* stream) {
  static_cast<void>(units);
  for (const std::string& line : Lines()) std::fprintf(stream, "%s\n", line.c_str());
  std::fflush(stream);
}
