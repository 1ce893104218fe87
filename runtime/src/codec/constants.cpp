#include "codec/constants.h"

#include <string>

#include "codec/words.h"
#include "text/reader.h"
#include "value/symbols.h"
#include "value/types.h"

namespace lumos {

namespace {

Value constant_in(const char* module, std::string_view name) {
  const lumo_symbol_entry_t row = own_row(module, name);
  return row && row->kind == lumo_symbol_entry_kind_constant ? row->value_descriptor : nullptr;
}

Value named_constant(std::string_view name, const char* module) {
  if (Value own = module ? constant_in(module, name) : nullptr) return own;
  for (const Module& m : registered_modules())
    if (Value found = constant_in(m.name, name)) return found;
  return nullptr;
}

}  // namespace

Value read_constant(lumo_type_t type, std::string_view text, const char* module) {
  Value v = make_root(type, lumo_perm_alloc_c);
  size_t taken = 0;
  std::string error;
  if (base_kind(type) == lumo_type_kind_charstring && text.size() > 1 && text.front() == '\'' &&
      text.back() == '\'') {
    set_text(v, text.substr(1, text.size() - 2));
    return v;
  }
  if (read_value_prefix(v, text, taken, error) && trim(text.substr(taken)).empty()) return v;
  destroy(v);
  Value named = named_constant(text, module);
  return named && named->kind == base_kind(type) ? named : nullptr;
}

}  // namespace lumos
