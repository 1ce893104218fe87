// Types with attributes for the targets of the codecs.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <deque>

#include "../tests/runtime/unit/support.h"
#include "text/codec.h"
#include "value/task.h"

namespace lumos::testing {

// Rows of text and field, field null for the type as a whole.
inline lumo_type_t with_attributes(TypeTable& table, const char* encoding,
                                   std::vector<std::pair<const char*, const char*>> variants) {
  static auto* rows = new std::deque<std::vector<lumo_encoding_attr_struct_t>>;
  lumo_type_t type = table;
  rows->push_back({{encoding, false, nullptr}});
  type->encode_attributes = rows->back().data();
  lumo_attributes_register(type->encode_attributes, 1, nullptr);
  if (variants.empty()) return type;
  rows->emplace_back();
  for (const auto& [text, field] : variants) rows->back().push_back({text, false, field});
  type->variant_attributes = rows->back().data();
  lumo_attributes_register(type->variant_attributes, rows->back().size(), nullptr);
  return type;
}

// What was decoded has an encoding, which is decoded to the same.
inline void round_trip(lumo_type_t type, const std::string& octets) {
  const TempScope scope;
  std::string fault, first, second;
  size_t taken = 0;
  Value v = decode_value(type, octets, &taken, fault);
  if (!v || !encode_value(v, first, fault)) return;
  Value again = decode_value(type, first, nullptr, fault);
  if (again && encode_value(again, second, fault) && first == second) return;
  std::fprintf(stderr, "%s: %s\n", render(v).c_str(), fault.c_str());
  std::abort();
}

}  // namespace lumos::testing
