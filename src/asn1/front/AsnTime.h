// The time at which files say that they were made.
#pragma once

#include <cstdlib>
#include <ctime>

/// The local time; that of SOURCE_DATE_EPOCH, in UTC, where the environment sets one so that the same sources give the
/// same files.
inline std::tm TimeOfFiles() {
  const char* given = std::getenv("SOURCE_DATE_EPOCH");
  const std::time_t now = given != nullptr ? static_cast<std::time_t>(std::atoll(given)) : std::time(nullptr);
  std::tm parts{};
  given != nullptr ? gmtime_r(&now, &parts) : localtime_r(&now, &parts);
  return parts;
}
