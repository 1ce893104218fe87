// The encodings that the library knows by name: what `encode "RAW"` leads to.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "value/value.h"

namespace lumos {

struct CodecFamily {
  const char* name;
  // Looks at the attributes of a type and adds what is wrong to errors.
  void (*prepare)(lumo_type_t type, std::vector<std::string>& errors);
  // Appends the octets; false leaves the reason in fault.
  bool (*encode)(Value v, std::string& octets, std::string& fault);
  // A value with temporary life from the beginning of the octets, or null. fault tells where and why, also
  // when octets are left and something was tried with them.
  Value (*decode)(lumo_type_t type, std::string_view octets, size_t& taken, std::string& fault);
};

// The encode attribute of a type or of the nearest one that it is derived from; null without one.
const char* encoding_of(lumo_type_t type);
// The family of that name, or null.
const CodecFamily* codec_family_of(lumo_type_t type);

// Looks at all types of the suite; false leaves a line in the log for each that has no codec or wrong
// attributes. `messages_leave`: something is linked that takes messages; where nothing is, words that no
// codec knows do no harm.
bool check_codecs(bool messages_leave);

}  // namespace lumos
