#include "support/rSystem.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

int rSystem(const std::string& command) {
  std::fflush(nullptr);
  const int status = std::system(command.c_str());
  if (status == -1) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void OccupyStandardStreams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = open("/dev/null", O_RDWR);
  if (descriptor > STDERR_FILENO) close(descriptor);
}

bool rDeleteFile(const std::string& path) {
  return unlink(path.c_str()) == 0 || errno == ENOENT;
}

void rExit(int status) {
  std::exit(status);
}

// operator new, for its handler of exhausted memory.
void* rAlloc(size_t size) {
  return ::operator new(size);
}

void rFree(void* memory) {
  ::operator delete(memory);
}

long rTime() {
  return static_cast<long>(std::clock() / (CLOCKS_PER_SEC / 1000));
}

const char* GetEnvVar(const char* name) {
  return std::getenv(name);
}
