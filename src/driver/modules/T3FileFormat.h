// The encodings of source files: which one a file has, and its conversion to UTF-8 for the length of one
// parse. Failures are reported at no position.
#pragma once

#include "driver/options/T3Options.h"
#include "support/TemporaryFiles.h"

/// The format of a file by its first bytes; format_unknown after a report.
file_format_t GuessFileFormat(const char* path);

/// True when the file begins with a byte-order mark.
bool HasBOM(const char* path);

/// Writes the file as UTF-8, without mark, into a new temporary file, which `converted` then holds and
/// removes. 0 on success, -1 after a report. An unknown format is a fault of the caller.
int ConvertToUTF_8(const char* path, file_format_t format, TemporaryFile& converted);
