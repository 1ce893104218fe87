// The values that stand for something special; handles to them are compared by address.
#include "value/value.h"

using lumos::Form;
using lumos::Special;

namespace {

constexpr lumo_value_struct special(Special what) {
  lumo_value_struct v;
  v.form = Form::special;
  v.special = what;
  return v;
}

lumo_value_struct truth(bool value) {
  lumo_value_struct v;
  v.type = lumo_boolean_type;
  v.kind = lumo_type_kind_boolean;
  v.form = Form::boolean;
  v.boolean = value;
  return v;
}

}  // namespace

lumo_value_struct lumo_STATIC_no_value = special(Special::no_value);
lumo_value_struct lumo_STATIC_illegal_value = special(Special::illegal);
lumo_value_struct lumo_STATIC_omit_value = special(Special::omit);
lumo_value_struct lumo_STATIC_not_used_value = special(Special::not_used);
lumo_value_struct lumo_STATIC_anyone_value = special(Special::anyone);
lumo_value_struct lumo_STATIC_anyornone_value = special(Special::anyornone);
lumo_value_struct lumo_STATIC_any_value = special(Special::any);
lumo_value_struct lumo_STATIC_all_value = special(Special::all);
lumo_value_struct lumo_STATIC_true_value = truth(true);
lumo_value_struct lumo_STATIC_false_value = truth(false);
lumo_value_struct lumo_STATIC_no_return_value = special(Special::no_return);
lumo_value_struct lumo_STATIC_default_value = special(Special::default_value);
lumo_value_struct lumo_STATIC_null_component_reference_value = special(Special::null_component);
lumo_value_struct lumo_STATIC_null_default_reference_value = special(Special::null_default);
lumo_value_struct lumo_STATIC_null_address_value = special(Special::null_address);
lumo_value_struct lumo_STATIC_infinity_value = special(Special::infinity);
