#include "value/symbols.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "value/error.h"

namespace lumos {

namespace {

struct RegisteredModule {
  Module module;
  std::unordered_map<std::string_view, lumo_symbol_entry_t> by_name;
};

std::vector<std::unique_ptr<RegisteredModule>>& registered() {
  static auto* all = new std::vector<std::unique_ptr<RegisteredModule>>;
  return *all;
}

RegisteredModule* find(const char* name) {
  for (auto& m : registered())
    if (!std::strcmp(m->module.name, name)) return m.get();
  return nullptr;
}

bool is_import_of_module(const lumo_symbol_entry_struct_t& row) {
  return row.kind == lumo_symbol_entry_kind_module || row.kind == lumo_symbol_entry_kind_imported_module;
}

void index_rows(RegisteredModule& m) {
  m.by_name.clear();
  for (unsigned long i = 0; i < m.module.row_count; ++i) {
    lumo_symbol_entry_t row = &m.module.rows[i];
    if (row->name && !is_import_of_module(*row)) m.by_name.emplace(row->name, row);
  }
}

}  // namespace

lumo_symbol_entry_t own_row(const char* module, std::string_view name) {
  RegisteredModule* m = find(module);
  if (!m) return nullptr;
  auto found = m->by_name.find(name);
  return found == m->by_name.end() ? nullptr : found->second;
}

std::vector<CodecSetup>& codec_setups() {
  static auto* all = new std::vector<CodecSetup>;
  return *all;
}

namespace {

// Rows of imports get their value or behaviour late, or not at all.
bool is_empty(const lumo_symbol_entry_struct_t& row) {
  switch (row.kind) {
    case lumo_symbol_entry_kind_constant:
    case lumo_symbol_entry_kind_module_parameter:
    case lumo_symbol_entry_kind_external_constant:
      return !row.value_descriptor;
    case lumo_symbol_entry_kind_function:
    case lumo_symbol_entry_kind_external_function:
    case lumo_symbol_entry_kind_test_step:
    case lumo_symbol_entry_kind_testcase:
      return !row.function_ptr;
    default:
      return false;
  }
}

// "<module>.<name>" in its own module.
lumo_symbol_entry_t find_origin(std::string_view qualified) {
  size_t point = qualified.find('.');
  if (point == std::string_view::npos) return nullptr;
  return own_row(std::string(qualified.substr(0, point)).c_str(), qualified.substr(point + 1));
}

// Behaviours ask with the same few names, by the same few addresses.
struct FoundRow {
  const char* module;
  const char* name;
  lumo_symbol_entry_t row;
};
FoundRow found_rows[256];

// How the types of a module are encoded, in the words of imports; null where none says it.
struct EncodingRules {
  const char *encoding, *variant;
};

// By modules; references to them stay valid while others come.
std::map<std::string, EncodingRules, std::less<>> encoding_rules;

// What was found holds until another module comes.
void forget_what_was_found() {
  for (FoundRow& found : found_rows) found = {};
  encoding_rules.clear();
}

bool is_asn1(const RegisteredModule& m) {
  return m.module.language && std::strstr(m.module.language, "ASN.1");
}

}  // namespace

std::vector<Module> registered_modules() {
  std::vector<Module> list;
  for (auto& m : registered()) list.push_back(m->module);
  return list;
}

bool is_asn1_type(lumo_type_t type) {
  const char* module = type ? lumo_type_definition_module(type, nullptr) : nullptr;
  const RegisteredModule* of = module ? find(module) : nullptr;
  return of && is_asn1(*of);
}

const Module* root_module() {
  for (auto& m : registered())
    if (m->module.is_root) return &m->module;
  return nullptr;
}

}  // namespace lumos

using namespace lumos;

void lumo_module_register(const char* name, lumo_boolean_t is_root, lumo_symbol_entry_t symbol_table,
                          unsigned long number_of_rows, const char* language, lumo_context_t) {
  RegisteredModule* m = find(name);
  if (!m) {
    registered().push_back(std::make_unique<RegisteredModule>());
    m = registered().back().get();
  }
  m->module = {name, is_root, symbol_table, number_of_rows, language};
  forget_what_was_found();
  index_rows(*m);
}

lumo_symbol_entry_t lumo_find_element(const char* module, const char* name, lumo_context_t) {
  if (!module || !name) return nullptr;
  lumo_symbol_entry_t row = own_row(module, name);
  if (row && !is_empty(*row)) return row;
  if (lumo_symbol_entry_t origin = find_origin(name)) return origin;
  return row;
}

lumo_symbol_entry_t lumos::checked_row(const char* module, const char* name) {
  lumo_symbol_entry_t row = lumo_find_element(module, name, nullptr);
  if (!row) fault("module '%s' has no element '%s'", module ? module : "", name ? name : "");
  return row;
}

lumo_symbol_entry_t lumo_find_element_with_check(const char* module, const char* name, lumo_context_t) {
  const uintptr_t number = reinterpret_cast<uintptr_t>(name) ^ reinterpret_cast<uintptr_t>(module) >> 5;
  FoundRow& found = found_rows[number % std::size(found_rows)];
  if (found.row && found.module == module && found.name == name) return found.row;
  lumo_symbol_entry_t row = checked_row(module, name);
  if (!is_empty(*row)) found = {module, name, row};
  return row;
}

void lumo_codecs_register(void (*init)(lumo_context_t), void (*setup)(lumo_type_t, lumo_context_t),
                          lumo_context_t context) {
  if (init) init(context);
  if (!setup) return;
  for (auto known : codec_setups())
    if (known == setup) return;
  codec_setups().push_back(setup);
}

namespace {
// The first attribute of a kind that stands for a whole type, among the rows in which other modules name a
// module's types.
const char* import_attribute(const char* module, lumo_encoding_attr_struct_t* lumo_type_struct_t::*kind) {
  for (auto& m : registered())
    for (unsigned long i = 0; i < m->module.row_count; ++i) {
      const lumo_symbol_entry_struct_t& row = m->module.rows[i];
      if (row.kind != lumo_symbol_entry_kind_userdefined_type || !row.type_descriptor) continue;
      lumo_type_t type = row.type_descriptor;
      if (!type->module || std::strcmp(type->module, module) != 0) continue;
      const lumo_encoding_attr_struct_t* attribute = type->*kind;
      if (attribute && attribute->text && !attribute->field_name) return attribute->text;
    }
  return nullptr;
}

bool imports(const RegisteredModule& m, const char* module) {
  for (unsigned long i = 0; i < m.module.row_count; ++i) {
    const lumo_symbol_entry_struct_t& row = m.module.rows[i];
    if (row.kind == lumo_symbol_entry_kind_imported_module && row.name && !std::strcmp(row.name, module))
      return true;
  }
  return false;
}

// What imports say of a module's types; where they say nothing, what they say of the first ASN.1 module that
// imports it, in whose messages its types stand. Kept, since each type of the module asks.
const EncodingRules& rules_of(const char* module) {
  if (const auto known = encoding_rules.find(module); known != encoding_rules.end()) return known->second;
  EncodingRules& rules = encoding_rules[module];
  rules = {import_attribute(module, &lumo_type_struct_t::encode_attributes),
           import_attribute(module, &lumo_type_struct_t::variant_attributes)};
  for (auto m = registered().begin(); !rules.encoding && m != registered().end(); ++m)
    if (is_asn1(**m) && imports(**m, module)) rules = rules_of((*m)->module.name);
  return rules;
}
}  // namespace

const char* t3asn_lumo_import_encoding(const char* module, lumo_context_t) {
  return rules_of(module).encoding;
}

const char* t3asn_lumo_import_variant(const char* module, lumo_context_t) {
  return rules_of(module).variant;
}
