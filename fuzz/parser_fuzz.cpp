// Any bytes as a source file: the parse must end, and where it finds no fault the tree must pass its check.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3Parser.h"
#include "frontend/T3Tree.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The messages are not what is looked at.
  gErrors.SetStream(std::fopen("/dev/null", "w"));
  gT3CommandLine.maximum_errors = 1000000;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  gErrors.BeginErrors();
  gParseErrors = 0;
  gT3AST.root = nullptr;
  T3Scanner scanner;
  T3Parser parser(&scanner, &gErrors);
  scanner.BeginText(std::string_view(reinterpret_cast<const char*>(data), size));
  const long errors = parser.Parse();
  scanner.CloseFile();
  if (errors != gParseErrors) std::abort();
  if (errors == 0 && gErrors.ErrorCount() == 0 && !gT3AST.CheckT3Tree(gT3AST.root)) std::abort();
  return 0;
}
