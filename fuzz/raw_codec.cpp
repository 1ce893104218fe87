// Any octets are a value of bit fields or are refused, and what is decoded has the same octets again and
// again.
#include "wire_types.h"

using namespace lumos;
using namespace lumos::testing;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
  static TypeTable item("Item", lumo_type_kind_record,
                        {mandatory("tag", lumo_integer_type), mandatory("len", lumo_integer_type),
                         mandatory("v", lumo_octetstring_type)});
  static TypeTable choice("Choice", lumo_type_kind_union,
                          {mandatory("one", item), mandatory("two", item), mandatory("rest", item)});
  static TypeTable list("List", lumo_type_kind_recordof,
                        {mandatory(lumo_type_array_contained_type_c, choice)});
  static TypeTable message("Message", lumo_type_kind_record,
                           {mandatory("a", lumo_integer_type), mandatory("n", lumo_integer_type),
                            mandatory("p", lumo_integer_type), mandatory("l", list),
                            optional("o", lumo_hexstring_type), mandatory("b", lumo_bitstring_type),
                            optional("q", lumo_charstring_type), optional("e", lumo_octetstring_type)});
  static TypeTable group("Group", lumo_type_kind_record,
                         {mandatory("a", lumo_integer_type), optional("b", lumo_octetstring_type),
                          optional("c", list), mandatory("p", lumo_integer_type),
                          mandatory("d", lumo_octetstring_type), optional("l", lumo_bitstring_type)});
  static const lumo_type_t types[] = {
      with_attributes(item, "RAW",
                      {{"LENGTHTO(v), FIELDLENGTH(7)", "len"},
                       {"FIELDORDER(msb)", nullptr},
                       {"FIELDLENGTH(9), BYTEORDER(last)", "tag"}}),
      with_attributes(choice, "RAW",
                      {{"TAG(one, tag = 1; two, {tag = 2, tag = 3}; rest, OTHERWISE)", nullptr}}),
      with_attributes(list, "RAW", {}),
      with_attributes(group, "RAW",
                      {{"EXTENSION_BIT_GROUP(reverse, a, c)", nullptr},
                       {"FIELDLENGTH(2)", "b"},
                       {"POINTERTO(l), PTROFFSET(d), PTRUNIT(4)", "p"},
                       {"BITORDER(msb)", "l"}}),
      with_attributes(message, "RAW",
                      {{"LENGTHTO(l), UNIT(elements)", "n"},
                       {"POINTERTO(q)", "p"},
                       {"PRESENCE(a = 1, a = 7)", "o"},
                       {"FIELDLENGTH(5)", "o"},
                       {"FIELDLENGTH(12), BYTEORDER(last), PADDING(word16)", "b"},
                       {"FIELDLENGTH(null_terminated)", "q"},
                       {"EXTENSION_BIT(yes)", "e"}})};
  if (size == 0) return 0;
  round_trip(types[data[0] % 5], std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  return 0;
}
