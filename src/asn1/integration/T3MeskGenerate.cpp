// What is written for an ASN.1 module beside its declarations.
#include <fstream>
#include <set>

#include "asn1/integration/T3Mesk.h"
#include "driver/T3Error.h"
#include "driver/T3Exception.h"

namespace {
std::set<std::string>& entry_types = *new std::set<std::string>;
}  // namespace

void addMESKEntryType(const std::string& name) {
  entry_types.insert(name);
}

void writeMESKOptionFile(const std::string& path) {
  std::ofstream file(path);
  if (!file) throw internal_exception("T3GenMESKOptions", __LINE__, "writeMeskOptionFile", "could not create '" + path + "'");
  file << "#\n# automatically created MESK option file\n#\n\n\n# generate codecs for the following types\n\n";
  for (const std::string& name : entry_types) file << "-ENTRY=" << mesk::vexa_rehyphenize(name) << ":sdu\n";
}

bool mesk_T3Module_generate(T3Tree_Node*) {
  return true;
}
