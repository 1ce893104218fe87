// mesk: compiles ASN.1 modules into syntax files.
//
//   mesk [-S=directory] [-A=directory...] [-PREFIX=module:file:generation...] [+option-file...] [source...]
//   mesk -DUMP=file.stx     prints the records of a syntax file
#include <cstdio>

#include "mesk/Compilation.h"
#include "mesk/Dump.h"

int main(int argc, char** argv) {
  mesk::Options options;
  if (!options.parse(std::vector<std::string>(argv + 1, argv + argc))) return 1;
  if (!options.dump.empty()) return mesk::dumpFile(options.dump) ? 0 : 1;
  if (options.sources.empty() && options.prefixes.empty()) {
    std::puts(
        "Usage: mesk [-S=directory] [-A=directory...] [-PREFIX=module:file:generation...] [+option-file...] "
        "[source...]");
    return 1;
  }
  return mesk::Compilation(options).run();
}
