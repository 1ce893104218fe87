// Any text is an MCFG file. Whatever it holds, its values either have no placeholder left or stop with a
// message that names the placeholder at fault, and a single value is its list joined.
#include <cstdlib>
#include <sstream>

#include "build/MGConfig.h"

namespace {

void Expect(bool condition) {
  if (!condition) std::abort();
}

void CheckKey(const Config& config, const std::string& key) {
  std::string joined;
  try {
    for (const std::string& word : config.items(key)) {
      Expect(word.find('<') == std::string::npos);
      joined += word;
    }
  } catch (const std::string& message) {
    Expect(message.find("placeholder <") != std::string::npos);
    return;
  }
  Expect(joined == config.item(key));
  Expect(config.item_defined(key) || joined.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  Config config;
  config.add_default_value("<ORV_DIR>", "/opt/orvane");
  std::istringstream in(text);
  config.read_config_file(in, "DEFAULT_TRI");
  // every text that may be a key of the file: from a line's first character up to an operator
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string::npos) continue;
    CheckKey(config, line.substr(begin, line.find_first_of(" \t+=", begin) - begin));
  }
  CheckKey(config, "CC");
  return 0;
}
