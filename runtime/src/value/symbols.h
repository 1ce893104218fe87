// The registered modules and their symbol tables.
#pragma once

#include <vector>

#include "lumos.h"

namespace lumos {

struct Module {
  const char* name = "";
  bool is_root = false;
  lumo_symbol_entry_t rows = nullptr;
  unsigned long row_count = 0;
  const char* language = nullptr;
};

std::vector<Module> registered_modules();
const Module* root_module();  // null before registration

// Whether a type was declared by a module of ASN.1.
bool is_asn1_type(lumo_type_t type);

}  // namespace lumos
