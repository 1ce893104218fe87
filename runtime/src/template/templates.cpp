#include "template/templates.h"

#include <algorithm>

#include "value/error.h"
#include "value/location.h"
#include "value/memory.h"
#include "value/task.h"
#include "value/types.h"

namespace lumos {

namespace {

// Takes over the contents of another value, keeping what restrains the template.
void replace_contents(Value v, Value contents) {
  Restraint* kept = v->restraint;
  bool if_present = v->if_present;
  v->restraint = nullptr;
  v->if_present = false;
  assign_contents(v, contents);
  v->if_present = v->if_present || if_present;
  if (!kept) return;
  delete v->restraint;
  v->restraint = kept;
}

Value open_template(Value v) {
  if (v->form == Form::wrapped) return v->parts.data[0];
  const lumo_template_info_t* info = template_info(v->type);
  auto constraintof =
      reinterpret_cast<lumo_constraintof_function_t>(v->type->type_info->constraintof_function);
  if (!info || !constraintof) fault("the parts of template '%s' are not known", type_name(v->type));
  VisibleFrames visible(v->index);
  Value opened = constraintof(info->base_type, v->parts.data, lumo_temp_alloc_c, current_task);
  if (!opened || is_special(opened, Special::illegal))
    fault("the parts of template '%s' are not known", type_name(v->type));
  return opened;
}

// The index of a list that was `?`: its last element goes on to stand for any number of them.
constexpr long open_end = -2;

void expand_any_structure(Value v, Special special) {
  if (special != Special::anyone && special != Special::anyornone) {
    clear_contents(v);
    shape(v);
    return;
  }
  clear_contents(v);
  shape(v);
  if (v->form == Form::vector && v->kind != lumo_type_kind_array) {
    resize_parts(v, 1);
    v->index = open_end;
  }
  const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
  for (size_t i = 0; i < v->parts.size; ++i) {
    const bool may_be_none = fields ? is_optional(fields[i]) : v->kind != lumo_type_kind_array;
    v->parts.data[i] = may_be_none ? lumo_anyornone_value_c : lumo_anyone_value_c;
  }
}

// A fault names the template where it has a name.
[[noreturn]] void ambiguous(Value v) {
  const char* name = v->label ? v->label : v->form == Form::instance ? type_name(v->type) : nullptr;
  fault("valueof: template%s%s does not stand for one value", name ? " " : "", name ? name : "");
}

// Whether a dynamic template holds nothing but a value.
bool holds_value(Value v) {
  if (v->form == Form::external) return true;
  if (v->restraint && v->restraint->has_length) return false;
  if (v->if_present || (v->restraint && !v->restraint->permutations.empty())) return false;
  switch (v->form) {
    case Form::special:
      return v->special != Special::anyone && v->special != Special::anyornone;
    case Form::instance:
    case Form::wrapped:
    case Form::range:
    case Form::value_list:
    case Form::pattern:
      return false;
    case Form::fields:
    case Form::vector:
    case Form::choice:
      check_stack();
      for (size_t i = 0; i < v->parts.size; ++i)
        if (v->parts.data[i] && !holds_value(v->parts.data[i])) return false;
      return true;
    default:
      return true;
  }
}

Value call_valueof(Value v, lumo_valueof_function_t function, lumo_alloc_strategy_t strategy) {
  const lumo_template_info_t* info = template_info(v->type);
  if (!info || !function) ambiguous(v);
  VisibleFrames visible(v->index);
  Value result = function(info->base_type, v->parts.data, strategy, current_task);
  if (!result || is_special(result, Special::illegal)) ambiguous(v);
  return result;
}

// A part of a template as a part of a value.
void value_into(Value target, Value source);

void value_parts_into(Value target, Value source) {
  check_stack();
  shape(target);
  if (source->form == Form::choice) target->index = source->index;
  resize_parts(target, source->parts.size);
  for (size_t i = 0; i < source->parts.size; ++i) {
    Value part = source->parts.data[i];
    if (!part || part->form == Form::unset) continue;
    if (is_omit(part)) {
      target->parts.data[i] = lumo_omit_value_c;
    } else {
      value_into(force_part(target, i), part);
    }
  }
}

void value_into(Value target, Value source) {
  if (source->form == Form::instance) {
    source = valueof_value(source, lumo_temp_alloc_c);
  } else if (source->form == Form::wrapped && !source->if_present &&
             !(source->restraint && source->restraint->has_length)) {
    value_into(target, source->parts.data[0]);
    return;
  }
  if (source->form == Form::fields || source->form == Form::vector || source->form == Form::choice) {
    value_parts_into(target, source);
  } else if (holds_value(source)) {
    assign_contents(target, source);
  } else {
    ambiguous(source);
  }
}

Value dynamic_target(Value v) {
  prepare_write(v);
  if (!v->dynamic) fault("a matching mechanism is set in a value");
  return v;
}

Restraint& restraint_of(Value v) {
  if (!v->restraint) v->restraint = new Restraint;
  return *v->restraint;
}

// Puts an item of a template into the slot: special values by their handle, others copied.
void put_item(Value v, size_t slot, Value item) {
  if (!item) fault("use of a value that is not initialized");
  if (item->life == Life::fixed && item->form == Form::special) {
    v->parts.data[slot] = item;
    return;
  }
  Value part = new_node(item->type);
  part->life = Life::part;
  part->parent = v;
  part->dynamic = true;
  v->parts.data[slot] = part;
  assign_contents(part, item);
}

// The old contents may hold the new item.
void set_items(Value v, Form form, Value a, Value b) {
  Value first = a ? copy_value(a, lumo_temp_alloc_c) : nullptr;
  Value second = b ? copy_value(b, lumo_temp_alloc_c) : nullptr;
  open_parts(v, form, b ? 2 : 1);
  put_item(v, 0, first);
  if (b) put_item(v, 1, second);
}

}  // namespace

Value valueof_value(Value v, lumo_alloc_strategy_t strategy) {
  if (!v) fault("use of a value that is not initialized");
  if (v->form == Form::special) {
    if (v->special == Special::anyone || v->special == Special::anyornone) ambiguous(v);
    return v->special == Special::omit ? lumo_omit_value_c : v;
  }
  if (v->form == Form::instance) {
    const lumo_template_info_t* info = template_info(v->type);
    Value result = call_valueof(v, info ? info->valueof_function : nullptr, strategy);
    return is_template(result) ? valueof_value(result, strategy) : result;
  }
  if (!v->dynamic) return v;
  if (v->form == Form::unset) fault("use of a value that is not initialized");
  Value result = make_root(v->type, strategy);
  value_into(result, v);
  return result;
}

Value restricted(Value source, unsigned restriction) {
  if (restriction == restricted_to_present) {
    Value held = source->form == Form::instance ? open_template(source) : source;
    if (is_omit(held) || is_special(held, Special::anyornone) || held->if_present)
      fault("a template that may be omitted stands where it has to be present");
    return source;
  }
  if (restriction != restricted_to_omit && restriction != restricted_to_value) return source;
  Value v = valueof_value(source, lumo_temp_alloc_c);
  if (is_omit(v) && restriction == restricted_to_value)
    fault("omit stands where a template is restricted to a value");
  return v;
}

// Neither a value, nor declared to stand for one.
static bool may_be_no_value(Value argument) {
  if (argument == lumo_value_default_c || !is_template(argument)) return false;
  return argument->form != Form::instance || argument->restriction != restricted_to_value;
}

// What the parameter of a template may hold of its argument. One by value takes what matches as well.
static Value template_argument(Value argument, const lumo_field_info_t& formal) {
  return may_be_no_value(argument) ? restricted(argument, restriction_of(formal)) : argument;
}

static bool has_open_end(Value v) {
  return v->form == Form::vector && v->index == open_end && v->parts.size &&
         v->parts.data[v->parts.size - 1] && is_special(v->parts.data[v->parts.size - 1], Special::anyornone);
}

bool is_behind_open_end(Value v, size_t slot) {
  return has_open_end(v) && slot + 1 >= v->parts.size;
}

void make_room(Value v, size_t slot) {
  const size_t size = v->parts.size;
  const bool is_open = has_open_end(v);
  const size_t written = is_open ? size - 1 : size;
  if (slot < written) return;
  resize_parts(v, is_open ? slot + 2 : slot + 1);
  if (!is_open) return;
  for (size_t i = written; i <= slot; ++i) v->parts.data[i] = lumo_anyone_value_c;
  v->parts.data[slot + 1] = lumo_anyornone_value_c;
}

void open_structure(Value v) {
  for (int i = 0; i < 100 && (v->form == Form::instance || v->form == Form::wrapped); ++i) {
    lumo_type_t base = plain_type(v->type);
    replace_contents(v, open_template(v));
    if (v->form != Form::instance) v->type = base;
  }
  if (v->form == Form::external) settled(v);
  if (v->form == Form::fields || v->form == Form::vector || v->form == Form::choice) return;
  if (v->form == Form::special) {
    expand_any_structure(v, v->special);
  } else {
    if (v->form != Form::unset) clear_contents(v);
    shape(v);
  }
  if (v->form == Form::unset) fault("a value of type '%s' has no parts", type_name(v->type));
}

namespace {

// Gives a fresh node its arguments: them, a terminator, and what stood there first where that was a default.
// True if one of them may stand for no value. A fault on the way finds no arguments.
inline bool open_instance(Value v, const lumo_field_info_t* formals, lumo_value_t argv[], size_t count) {
  size_t bytes = (2 * count + 1) * sizeof *argv;
  auto* slots = static_cast<Value*>(new_buffer(bytes));
  v->form = Form::instance;
  v->parts = {slots, 0, bytes / sizeof *argv};
  bool takes_template = false;
  for (size_t i = 0; i < count; ++i) {
    slots[i] = template_argument(argv[i], formals[i]);
    takes_template = takes_template || may_be_no_value(slots[i]);
    slots[count + 1 + i] = slots[i] == lumo_value_default_c ? slots[i] : nullptr;
  }
  slots[count] = nullptr;
  v->parts.size = count;
  return takes_template;
}

[[gnu::noinline]] void own_arguments(Value v) {
  for (size_t i = 0; i < v->parts.size; ++i)
    v->parts.data[i] = copy_value(v->parts.data[i], lumo_perm_alloc_c);
  v->owns_arguments = true;
}

}  // namespace

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_type_instantiate_template(lumo_type_t template_type, lumo_alloc_strategy_t strategy,
                                            lumo_value_t argv[], unsigned long restriction, lumo_context_t) {
  if (!template_info(template_type)) fault("'%s' is no template", type_name(template_type));
  const long formals = template_type->type_info->number_of_fields;
  size_t count = 0;
  while (argv && static_cast<long>(count) < formals && argv[count]) ++count;
  Value v = new_node(template_type);
  set_strategy(v, strategy);
  v->dynamic = true;
  v->restriction = static_cast<uint8_t>(restriction);
  const bool takes_template = open_instance(v, template_type->type_info->field_info, argv, count);
  if (strategy != lumo_temp_alloc_c) own_arguments(v);
  v->index = static_cast<long>(std::min(current_task->visible_frames, current_task->frames.size()));
  if (restriction && takes_template) restricted(v, v->restriction);
  return v;
}

lumo_value_t lumo_type_valueof(lumo_type_t type, lumo_value_t value, lumo_alloc_strategy_t strategy,
                               lumo_context_t context) {
  Value v = valueof_value(value, strategy);
  if (v->form == Form::special || lumo_type_is_equal(v->type, type, context)) return v;
  Value result = make_root(plain_type(type), strategy);
  lumo_value_assign(result, v, context);
  return result;
}

lumo_value_t lumo_valueof(lumo_value_t template_value, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return valueof_value(template_value, strategy);
}

lumo_value_t lumo_valueof_signature(lumo_value_t template_value, lumo_boolean_t is_call,
                                    lumo_alloc_strategy_t strategy, lumo_context_t) {
  if (!template_value) fault("use of a value that is not initialized");
  if (template_value->form != Form::instance) return valueof_value(template_value, strategy);
  const lumo_template_info_t* info = template_info(template_value->type);
  lumo_valueof_function_t function = is_call ? info->call_valueof_function : info->reply_valueof_function;
  if (!function) function = info->valueof_function;
  Value v = call_valueof(template_value, function, strategy);
  return is_template(v) && v->form != Form::special ? valueof_value(v, strategy) : v;
}

lumo_value_t lumo_templateof(lumo_value_t value, lumo_alloc_strategy_t strategy, lumo_context_t) {
  if (!value) fault("use of a value that is not initialized");
  if (value->form != Form::instance && value->form != Form::wrapped) return value;
  Value v = new_node(plain_type(value->type));
  set_strategy(v, strategy);
  v->dynamic = true;
  assign_contents(v, open_template(value));
  for (int i = 0; i < 100 && (v->form == Form::instance || v->form == Form::wrapped); ++i)
    replace_contents(v, open_template(v));
  return v;
}

void lumo_template_set_value(lumo_value_t location, lumo_value_t inner, lumo_boolean_t if_present,
                             lumo_context_t) {
  Value v = dynamic_target(location);
  set_items(v, Form::wrapped, inner, nullptr);
  v->if_present = if_present;
}

void lumo_template_set_value_range(lumo_value_t location, lumo_value_t lower, lumo_value_t upper,
                                   lumo_boolean_t if_present, lumo_context_t) {
  Value v = dynamic_target(location);
  if (!lower || !upper) fault("use of a value that is not initialized");
  set_items(v, Form::range, lower, upper);
  v->if_present = if_present;
}

void lumo_template_set_value_list(lumo_value_t location, lumo_value_list_kind_t kind, lumo_value_t values[],
                                  lumo_boolean_t if_present, lumo_context_t) {
  Value v = dynamic_target(location);
  size_t count = 0;
  while (values && values[count]) ++count;
  open_parts(v, Form::value_list, count);
  for (size_t i = 0; i < count; ++i) put_item(v, i, values[i]);
  v->list_kind = static_cast<uint8_t>(kind);
  v->if_present = if_present;
}

void lumo_template_set_string_pattern(lumo_value_t location, lumo_value_t pattern, lumo_boolean_t if_present,
                                      lumo_context_t) {
  Value v = dynamic_target(location);
  if (!pattern) fault("use of a value that is not initialized");
  set_items(v, Form::pattern, pattern, nullptr);
  v->if_present = if_present;
}

void lumo_template_set_length_constraint(lumo_value_t location, lumo_value_t lower, lumo_value_t upper,
                                         lumo_context_t context) {
  Value v = dynamic_target(location);
  lumo_long_integer_t low = lumo_value_get_integer(lower, context);
  lumo_long_integer_t high =
      is_special(upper, Special::infinity) ? -1 : lumo_value_get_integer(upper, context);
  if (low < 0 || (high < 0 && !is_special(upper, Special::infinity))) fault("a length cannot be negative");
  Restraint& restraint = restraint_of(v);
  restraint.has_length = true;
  restraint.lower = low;
  restraint.upper = high;
}

void lumo_template_set_permutation(lumo_value_t location, unsigned long head, unsigned long tail,
                                   lumo_context_t) {
  Value v = dynamic_target(location);
  restraint_of(v).permutations.emplace_back(head, tail);
}
