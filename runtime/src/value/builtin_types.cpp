// The types of the language, as tables of the same form as those of generated modules.
#include "lumos.h"

#define BUILTIN_TYPE(word, text, word_of_kind)                                                               \
  lumo_type_info_struct_t lumo_##word##_type_info_struct = {text,    nullptr, lumo_type_kind_##word_of_kind, \
                                                            nullptr, true,    nullptr,                       \
                                                            nullptr, nullptr, nullptr,                       \
                                                            0,       nullptr, nullptr,                       \
                                                            nullptr};                                        \
  lumo_type_struct_t lumo_##word##_type_struct = {                                                           \
      nullptr, text, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &lumo_##word##_type_info_struct};

BUILTIN_TYPE(illegal, "illegal type", undefined)
BUILTIN_TYPE(undefined, "undefined type", undefined)
BUILTIN_TYPE(integer, "integer", integer)
BUILTIN_TYPE(float, "float", float)
BUILTIN_TYPE(boolean, "boolean", boolean)
BUILTIN_TYPE(objectidentifier, "objid", objectidentifier)
BUILTIN_TYPE(verdicttype, "verdicttype", verdicttype)
BUILTIN_TYPE(bitstring, "bitstring", bitstring)
BUILTIN_TYPE(hexstring, "hexstring", hexstring)
BUILTIN_TYPE(octetstring, "octetstring", octetstring)
BUILTIN_TYPE(charstring, "charstring", charstring)
BUILTIN_TYPE(universal_charstring, "universal charstring", universal_charstring)
BUILTIN_TYPE(char, "char", char)
BUILTIN_TYPE(universal_char, "universal char", universal_char)
BUILTIN_TYPE(address, "address", address)
BUILTIN_TYPE(array, "array", array)
BUILTIN_TYPE(default, "default", default)
BUILTIN_TYPE(timer, "timer", timer)
BUILTIN_TYPE(binary_string, "binary string", octetstring)
BUILTIN_TYPE(template_as_field, "template", undefined)

static lumo_enum_or_array_info_t null_info[] = {{"NULL", 0}};
static lumo_type_info_struct_t null_type_info = {"NULL",  nullptr, lumo_type_kind_enumerated,
                                                 nullptr, true,    nullptr,
                                                 nullptr, nullptr, nullptr,
                                                 1,       nullptr, null_info,
                                                 nullptr};
lumo_type_struct_t t3asn_asn_1_null_type_struct = {nullptr, "NULL",  nullptr, nullptr,        nullptr,
                                                   nullptr, nullptr, nullptr, &null_type_info};
const lumo_type_t t3asn_asn_1_null_type = &t3asn_asn_1_null_type_struct;
