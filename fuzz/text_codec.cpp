// The same of tokens of text and of JSON; the first octet says which.
#include "wire_types.h"

using namespace lumos;
using namespace lumos::testing;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  using Fields = std::vector<lumo_field_info_t>;
  static TypeTable verb[] = {{"Verb", lumo_type_kind_enumerated, Fields{}, {{"get", 0}, {"getall", 1}}},
                             {"Verb", lumo_type_kind_enumerated, Fields{}, {{"get", 0}, {"getall", 1}}}};
  static TypeTable line[] = {{"Line", lumo_type_kind_record, Fields{mandatory("v", verb[0]), mandatory("n", lumo_integer_type), optional("s", lumo_charstring_type)}},
                             {"Line", lumo_type_kind_record, Fields{mandatory("v", verb[1]), mandatory("n", lumo_integer_type), optional("s", lumo_charstring_type)}}};
  static TypeTable lines[] = {{"Lines", lumo_type_kind_recordof, Fields{mandatory(lumo_type_array_contained_type_c, line[0])}},
                              {"Lines", lumo_type_kind_recordof, Fields{mandatory(lumo_type_array_contained_type_c, line[1])}}};
  static const bool done = (with_attributes(line[0], "TEXT", {{"BEGIN('<','[<{]'), SEPARATOR(' '), END('>')", nullptr}, {"TEXT_CODING(length=min(3))", "n"}}),
                            with_attributes(line[1], "JSON", {{"name as 'the s'", "s"}, {"default (3)", "n"}}), true);
  static const lumo_type_t types[] = {with_attributes(lines[0], "TEXT", {{"SEPARATOR(';', '[;,]')", nullptr}}), with_attributes(lines[1], "JSON", {})};
  if (size > 0 && done) round_trip(types[data[0] % 2], std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  return 0;
}
