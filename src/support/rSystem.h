// Thin calls of the system.
#pragma once

#include <cstddef>
#include <string>

/// Runs a command by the shell and waits for it. Its exit status; 128 and the signal's number when a
/// signal ended it; -1 when it could not be started.
int rSystem(const std::string& command);
/// Opens those of the three standard streams that the caller left closed on the null device, so that no
/// file gets their place and with it what is printed.
void OccupyStandardStreams();
/// True when the file is gone.
bool rDeleteFile(const std::string& path);
[[noreturn]] void rExit(int status);
/// Memory that is never null: exhausted memory ends the process. The caller gives it back by rFree.
void* rAlloc(size_t size);
void rFree(void* memory);
/// Processor time of the process in milliseconds.
long rTime();
/// The value of a variable of the environment, or null.
const char* GetEnvVar(const char* name);
