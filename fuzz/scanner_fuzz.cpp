// Any bytes as a source text: the scanner must end, with no more tokens than bytes, and positions must not go
// back.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "driver/diagnostics/Errors.h"
#include "frontend/T3Scanner.h"
#include "support/Position.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The messages are not what is looked at.
  return std::freopen("/dev/null", "w", stdout) ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  T3Scanner scanner;
  scanner.BeginText(std::string_view(reinterpret_cast<const char*>(data), size));
  size_t tokens = 0;
  uint32_t line = 0;
  while (scanner.GetToken() != T3Token::EndOfFile) {
    if (++tokens > size) std::abort();
    if (scanner.Attribute().Position.Line < line) std::abort();
    line = scanner.Attribute().Position.Line;
  }
  scanner.CloseFile();
  return 0;
}
