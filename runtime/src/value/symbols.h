// The registered modules and their symbol tables.
#pragma once

#include <string_view>
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
// The row of that name in a module's own table, whatever it holds; null if there is none.
lumo_symbol_entry_t own_row(const char* module, std::string_view name);

// As lumo_find_element_with_check, for names wherever they stand.
lumo_symbol_entry_t checked_row(const char* module, const char* name);

using CodecSetup = void (*)(lumo_type_t, lumo_context_t);
// What is called with every type when the suite starts.
std::vector<CodecSetup>& codec_setups();

// Whether a type was declared by a module of ASN.1.
bool is_asn1_type(lumo_type_t type);

}  // namespace lumos
