// The life of the modules: each phase is a function of every module, and the control part one of the root.
#include "codec/families.h"
#include "ports/no_adapter.h"
#include "run/component.h"
#include "suite/params.h"
#include "transport/link_spec.h"
#include "value/error.h"
#include "value/symbols.h"

// Defined by the user, or not.
#pragma weak triInit
extern "C" void triInit();

namespace lumos {

namespace {

using ModuleFunction = void (*)(lumo_context_t);

// Belongs to who starts the run, which a fault leaves without ending anything.
struct Pass {
  const char* row;
  std::vector<Module> modules = registered_modules();
};

void call_in_all_modules(void* argument) {
  const Pass& pass = *static_cast<Pass*>(argument);
  // The imports of a module stand before it, and guards keep a second call from doing anything.
  for (const Module& m : pass.modules) {
    lumo_symbol_entry_t row = own_row(m.name, pass.row);
    if (row && row->function_ptr) reinterpret_cast<ModuleFunction>(row->function_ptr)(current_task);
  }
}

bool run_pass(const char* task, const char* row) {
  Pass pass{row};
  return run_guarded(task, call_in_all_modules, &pass);
}

void set_codecs_up(void* argument) {
  for (auto setup : codec_setups())
    for (const Module& m : static_cast<Pass*>(argument)->modules)
      for (unsigned long i = 0; i < m.row_count; ++i) {
        const lumo_symbol_entry_struct_t& row = m.rows[i];
        if (row.kind == lumo_symbol_entry_kind_userdefined_type && row.type_descriptor)
          setup(row.type_descriptor, current_task);
      }
}

void call_user_init(void*) {
  if (triInit) triInit();
}

void look_at_codecs(void*) {
  if (!check_codecs(has_adapter() || has_links())) fault("types cannot be encoded as their attributes say");
}

struct ControlPart {
  lumo_function_t function;
};

void call_control_part(void* argument) {
  static_cast<ControlPart*>(argument)->function(0, nullptr, current_task);
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_boolean_t lumo_pre_initialize(lumo_context_t) {
  results().clear();
  return true;
}

lumo_boolean_t lumo_initialize(lumo_context_t) {
  Pass setup{nullptr};
  return run_pass("", "module initialize") && run_guarded("", set_codecs_up, &setup) &&
         run_guarded("", call_user_init, nullptr) && run_guarded("", look_at_codecs, nullptr) &&
         run_pass("", "module params initialize");
}

lumo_boolean_t lumo_execute_control_part(const char* module, lumo_context_t) {
  const Module* root = root_module();
  const char* name = module ? module : root ? root->name : nullptr;
  lumo_symbol_entry_t row = name ? own_row(name, "control part function") : nullptr;
  if (!row || !row->function_ptr) return false;
  ControlPart part{reinterpret_cast<lumo_function_t>(row->function_ptr)};
  return run_guarded("control", call_control_part, &part);
}

lumo_boolean_t lumo_finalize(lumo_context_t) {
  return run_pass("", "module finalize");
}

lumo_boolean_t lumo_retrieve_module_parameter(const char* module, const char* name, lumo_value_t location,
                                              lumo_context_t) {
  return set_from_parameter(module, name, location);
}
