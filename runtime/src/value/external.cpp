// Values in the form of a codec, which are translated when they are first looked at.
#include "value/error.h"
#include "value/task.h"
#include "value/types.h"
#include "value/value.h"

using namespace lumos;

lumo_value_t lumo_type_instantiate_external_value(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                                  lumo_context_t) {
  lumo_value_t v = new_node(plain_type(type));
  set_strategy(v, strategy);
  v->form = Form::external;
  v->external = new ExternalHome{nullptr, nullptr, nullptr};
  return v;
}

void lumo_value_set_external_value(lumo_value_t value, void* home,
                                   lumo_value_t (*translate)(void*, lumo_alloc_strategy_t, lumo_context_t),
                                   void (*destroy_home)(void*, lumo_context_t), lumo_context_t) {
  prepare_write(value);
  clear_contents(value);
  value->form = Form::external;
  value->external = new ExternalHome{home, translate, destroy_home};
}

void* lumo_value_get_external_value(lumo_value_t value, lumo_context_t) {
  return value && value->form == Form::external ? value->external->home : nullptr;
}

lumo_boolean_t t3asn_lumo_value_is_special_value(lumo_value_t value, lumo_context_t) {
  return !value || value->form == Form::special;
}

lumo_boolean_t t3asn_lumo_value_is_external_value(lumo_value_t value, lumo_context_t) {
  return value && value->form == Form::external;
}

void t3asn_lumo_value_set_type(lumo_value_t value, lumo_type_t type, lumo_context_t context) {
  lumo_value_set_type(value, type, context);
}

namespace lumos {

Value settle(Value v) {
  if (!v) fault("use of a value that is not initialized");
  ExternalHome* home = v->external;
  if (!home->translate) fault("use of a value that is not initialized");
  Value inner = home->translate(home->home, lumo_temp_alloc_c, current_task);
  if (!inner || inner == lumo_illegal_value_c) fault("a value of a codec cannot be translated");
  clear_contents(v);
  assign_contents(v, inner);
  return v;
}

}  // namespace lumos
