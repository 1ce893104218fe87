#include "support/Global.h"

#include <cstdio>

namespace {
void PlainFault(int code, long information) {
  std::fprintf(stderr, "support library: fault %d: %ld\n", code, information);
}
}  // namespace

void (*gSupportFault)(int code, long information) = PlainFault;
