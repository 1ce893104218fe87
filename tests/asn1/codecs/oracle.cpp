// Our codecs for a test that compares them with another one. Each line of the input is a request:
//   take Prefix.Type RULE HEX    decodes the octets and encodes the value again
//   make Prefix.Type RULE SEED   encodes a value made at random
// RULE is ber, uper or per. The answer is a line: the octets, or "-" and what is wrong.
#include <cstdio>
#include <iostream>
#include <map>
#include <sstream>

#include "maker.h"

extern "C" const char* const asn_all_names[];

namespace codecs {
namespace {
const asn_type* TypeNamed(const std::string& name) {
  for (size_t i = 0; asn_all_types[i] != nullptr; ++i)
    if (name == asn_all_names[i]) return asn_all_types[i];
  return nullptr;
}

Octets FromHex(const std::string& digits) {
  Octets octets;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    octets.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return octets;
}

void Answer(const char* error, const Octets& octets) {
  if (error != nullptr) {
    std::printf("- %s\n", error);
    return;
  }
  for (const unsigned char octet : octets) std::printf("%02X", octet);
  std::printf("\n");
}

void Serve(const std::string& what, const asn_type* type, Rule rule, const std::string& argument) {
  Home home(type);
  Octets octets;
  const char* error = nullptr;
  if (what == "take") {
    error = home.Decode(rule, FromHex(argument));
  } else {
    Maker(static_cast<unsigned>(std::stoul(argument))).Fill(type, home.get(), 0);
  }
  if (error == nullptr) error = home.Encode(rule, octets);
  Answer(error, octets);
}
}  // namespace
}  // namespace codecs

int main() {
  const std::map<std::string, codecs::Rule> rules = {
      {"ber", codecs::kBer}, {"uper", codecs::kPerUnaligned}, {"per", codecs::kPerAligned}};
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string what, name, rule, argument;
    words >> what >> name >> rule >> argument;
    const asn_type* type = codecs::TypeNamed(name);
    if (type == nullptr || rules.count(rule) == 0)
      std::printf("- no such type or rule\n");
    else
      codecs::Serve(what, type, rules.at(rule), argument);
  }
  return 0;
}
