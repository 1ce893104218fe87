// The source layer below the scanner: blocks of bytes from a file descriptor.
#pragma once

#include <sys/types.h>

#include <cstddef>

/// Opens a file for reading. Returns its descriptor, or -1.
int T3Scanner_BeginSourceFile(const char* path);

/// The number of bytes that the file holds, as far as the system tells; 0 for what has no size.
size_t T3Scanner_SourceSize(int handle);

/// Reads up to `size` bytes into `buffer`. Returns their number; 0 at the end of the file, -1 on failure.
ssize_t T3Scanner_GetLine(int handle, char* buffer, size_t size);

void T3Scanner_CloseSource(int handle);
