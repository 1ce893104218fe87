#include "suite/plan.h"

#include "run/component.h"
#include "text/log.h"
#include "value/error.h"
#include "value/symbols.h"
#include "value/types.h"

namespace lumos {

namespace {

std::vector<Selected>* planned = nullptr;

bool hands_back(lumo_symbol_entry_t row) {
  const lumo_field_info_t* fields = row->type_descriptor ? field_info(row->type_descriptor) : nullptr;
  const lumo_field_info_t* formals = fields && fields[0].type ? field_info(fields[0].type) : nullptr;
  for (size_t i = 0; formals && i < field_count(fields[0].type); ++i)
    if (formals[i].property & (lumo_type_parameter_out_c | lumo_type_parameter_inout_c)) return true;
  return false;
}

// Its result has no value, so that asking for it is a fault.
lumo_value_t note(lumo_symbol_entry_t row, const char* module, const char* testcase, unsigned long argc,
                  lumo_value_t argv[], double timeout) {
  if (hands_back(row)) fault("test case '%s' hands something back", testcase);
  Selected one{module, testcase, timeout, {}, {}};
  for (unsigned long i = 0; i < argc; ++i)
    one.arguments.push_back(argv[i] ? copy_value(argv[i], lumo_perm_alloc_c) : nullptr);
  planned->push_back(std::move(one));
  return make_root(lumo_verdicttype_type, lumo_temp_alloc_c);
}

const char* name_of_control_part(const char* module) {
  const Module* root = root_module();
  return module ? module : root ? root->name : nullptr;
}

}  // namespace

bool has_control_part(const char* module) {
  const char* name = name_of_control_part(module);
  lumo_symbol_entry_t row = name ? own_row(name, "control part function") : nullptr;
  return row && row->function_ptr;
}

bool plan_control_part(const char* module, std::vector<Selected>& list, std::string& why) {
  planned = &list;
  execute_instead = note;
  mute_log(&why);
  const bool good = lumo_execute_control_part(module, lumo_no_context_c);
  mute_log(nullptr);
  execute_instead = nullptr;
  if (!good) list.clear();
  if (why.find("not initialized") != std::string::npos) why = "it asks for verdicts";
  return good;
}

}  // namespace lumos
