// Assignment and copying: contents go from value to value, parts keep their identity.
#include <cstring>

#include "value/characters.h"
#include "value/error.h"
#include "value/memory.h"
#include "value/task.h"
#include "value/subtypes.h"
#include "template/templates.h"
#include "value/hooks.h"
#include "value/types.h"

namespace lumos {

bool is_within(Value part, Value whole) {
  while (part && part != whole) part = part->parent;
  return part != nullptr;
}

namespace {

[[noreturn]] void mismatch(Value target, Value source) {
  fault("a value of type '%s' cannot be assigned to a value of type '%s'", type_name(source->type),
        type_name(target->type));
}

void copy_restraint(Value target, Value source) {
  target->if_present = source->if_present;
  target->list_kind = source->list_kind;
  if (!source->restraint) {
    delete target->restraint;
    target->restraint = nullptr;
    return;
  }
  if (!target->restraint) target->restraint = new Restraint;
  *target->restraint = *source->restraint;
}

// Compatible types have the same number of fields, and an array takes lists of its length.
void check_shape(Value target, Value source) {
  if (source->form == Form::fields && source->parts.size != field_count(target->type))
    mismatch(target, source);
  if (source->form == Form::vector && target->kind == lumo_type_kind_array && !target->dynamic &&
      source->parts.size != array_length(target->type))
    mismatch(target, source);
}

void copy_parts(Value target, Value source) {
  check_stack();
  check_shape(target, source);
  if (target->form != source->form) change_form(target, source->form);
  resize_parts(target, source->parts.size);
  if (source->form == Form::vector) target->index = source->index;  // whether its end is open
  const lumo_type_info_struct_t* info =
      target->kind == lumo_type_kind_component ? nullptr : structure_of(target->type);
  const lumo_field_info_t* fields = target->form == Form::fields && info ? info->field_info : nullptr;
  for (size_t i = 0; i < source->parts.size; ++i) {
    Value from = source->parts.data[i];
    Value& slot = target->parts.data[i];
    if (!from || from->life == Life::fixed) {
      if (slot && slot->life != Life::fixed) retire(slot);
      slot = from;
      continue;
    }
    if (!slot || slot->life == Life::fixed) {
      const bool own_type = from->dynamic || source->form >= Form::wrapped;
      lumo_type_t type = own_type ? from->type : fields ? fields[i].type : part_type(target, i);
      slot = new_scalar_part(target, type, from);
      if (slot) continue;
      slot = make_part(type, target);
    }
    slot->dynamic = target->dynamic || from->dynamic;
    if (!assign_scalar(slot, from)) assign_contents(slot, from);
  }
}

// The same alternative of another module's `anytype`: its list is another one, in which built-in types have
// the name of that module.
long alternative_in(Value target, Value source) {
  const lumo_field_info_t* from = field_info(source->type);
  const lumo_field_info_t* to = field_info(target->type);
  if (to == from || !from || !to || source->index < 0) return source->index;
  const char* name = from[source->index].name;
  const char* type = std::strrchr(name, '.');
  if (!type) return source->index;
  const long same = field_index(target->type, name);
  if (same >= 0) return same;
  const auto count = static_cast<long>(field_count(target->type));
  for (long i = 0; i < count; ++i) {
    const char* other = std::strrchr(to[i].name, '.');
    const bool is_same_kind = base_kind(to[i].type) == base_kind(from[source->index].type);
    if (other && is_same_kind && std::strcmp(other, type) == 0) return i;
  }
  return source->index;
}

void copy_choice(Value target, Value source) {
  check_stack();
  const long alternative = alternative_in(target, source);
  if (target->form != Form::choice) {
    change_form(target, Form::choice);
    target->index = -1;
  }
  if (target->index != alternative) {
    resize_parts(target, 0);
    target->index = alternative;
  }
  copy_parts(target, source);
}

void copy_instance(Value target, Value source) {
  change_form(target, Form::instance);
  target->type = source->type;
  target->index = source->index;
  size_t count = source->parts.size;
  reserve(target->parts, 2 * count + 1);
  target->parts.size = count;
  target->owns_arguments = true;
  for (size_t i = 0; i < count; ++i) {
    Value argument = source->parts.data[i];
    target->parts.data[i] = argument ? copy_value(argument, lumo_perm_alloc_c) : nullptr;
    target->parts.data[count + 1 + i] = nullptr;
  }
  target->parts.data[count] = nullptr;
}

void assign_text_kinds(Value target, Value source) {
  const Characters text(source);
  switch (target->kind) {
    case lumo_type_kind_universal_charstring:
      reserve_wide(target, text.size());
      text.copy_to(target->wide.data);
      return;
    case lumo_type_kind_charstring:
      reserve_text(target, text.size());
      for (size_t i = 0; i < text.size(); ++i) target->text.data[i] = narrow_character(text[i]);
      return;
    default:
      break;
  }
  const char32_t c = text.size() == 1 ? text[0] : 0;
  if (text.size() != 1) fault("a single character is needed for type '%s'", type_name(target->type));
  if (target->kind == lumo_type_kind_universal_char) {
    change_form(target, Form::wide_character);
    target->wide_character = c;
  } else {
    change_form(target, Form::character);
    target->character = static_cast<char>(c);
  }
}

bool same_family(lumo_type_kind_t a, lumo_type_kind_t b) {
  if (a == b) return true;
  auto component = [](lumo_type_kind_t k) {
    return k == lumo_type_kind_component_ref || k == lumo_type_kind_component;
  };
  if (component(a) && component(b)) return true;
  auto list = [](lumo_type_kind_t k) { return is_list_kind(k); };
  if (list(a) && list(b)) return true;
  auto record = [](lumo_type_kind_t k) { return k == lumo_type_kind_record || k == lumo_type_kind_set; };
  return record(a) && record(b);
}

void assign_timer(Value target, Value source) {
  if (target->form != Form::timer) mismatch(target, source);
  hooks.copy_timer_default(target->timer, source->timer);
}

void assign_number(Value target, Value source) {
  if (target->form != source->form) change_form(target, source->form);
  switch (source->form) {
    case Form::real:
      target->real = source->real;
      break;
    case Form::boolean:
      target->boolean = source->boolean;
      break;
    case Form::character:
      target->character = source->character;
      break;
    case Form::wide_character:
      target->wide_character = source->wide_character;
      break;
    case Form::verdict:
      target->verdict = source->verdict;
      break;
    case Form::port:
      target->port = source->port;
      break;
    default:
      target->integer = source->integer;
      break;
  }
}

void assign_object_id(Value target, Value source) {
  if (target->form != Form::object_id) change_form(target, Form::object_id);
  reserve(target->ids, source->ids.size);
  if (source->ids.size)
    std::memcpy(target->ids.data, source->ids.data, source->ids.size * sizeof *source->ids.data);
  target->ids.size = source->ids.size;
}

// Special values as the right side of an assignment.
void assign_special(Value target, Value source) {
  switch (source->special) {
    case Special::omit:
    case Special::null_address:
      set_special(target, source->special);
      return;
    case Special::null_component:
    case Special::null_default:
      change_form(target, source->special == Special::null_component ? Form::component : Form::default_ref);
      target->integer = 0;
      return;
    case Special::anyone:
    case Special::anyornone:
    case Special::infinity:
      if (!target->dynamic) fault("a matching mechanism cannot be assigned to a value");
      set_special(target, source->special);
      return;
    case Special::not_used:
    case Special::default_value:
      return;
    default:
      fault("use of a value that is not initialized");
  }
}

void assign_by_form(Value target, Value source) {
  switch (source->form) {
    case Form::unset:
      clear_contents(target);
      return;
    case Form::special:
      assign_special(target, source);
      return;
    case Form::string:
      set_text(target, {source->text.data, source->text.size});
      return;
    case Form::wide_string:
      set_wide(target, source->wide.data, source->wide.size);
      return;
    case Form::object_id:
      assign_object_id(target, source);
      return;
    case Form::choice:
      copy_choice(target, source);
      return;
    case Form::fields:
    case Form::vector:
    case Form::wrapped:
    case Form::range:
    case Form::value_list:
    case Form::pattern:
      copy_parts(target, source);
      return;
    case Form::instance:
      copy_instance(target, source);
      return;
    case Form::timer:
      assign_timer(target, source);
      return;
    default:
      assign_number(target, source);
      return;
  }
}

bool is_text_form(Form f) {
  return f == Form::string || f == Form::wide_string || f == Form::character || f == Form::wide_character;
}

// Omit is a value of optional fields, and of templates.
void check_takes_omit(Value target) {
  if (target->dynamic) return;
  Value whole = target->parent;
  if (whole && whole->form == Form::fields && field_info(whole->type)) {
    size_t slot = target->pending && target->life == Life::temp ? target->place : 0;
    while (slot < whole->parts.size && !target->pending && whole->parts.data[slot] != target) ++slot;
    if (slot < whole->parts.size && is_optional(field_info(whole->type)[slot])) return;
  }
  fault("omit is assigned to %s%s of type '%s', which is no optional field", target->label ? "" : "a value",
        target->label ? target->label : "", type_name(target->type));
}

void check_takes_special(Value target, Value source) {
  if (is_omit(source)) return check_takes_omit(target);
  if (is_special(source, Special::null_address) && !target->dynamic && !takes_null_address(target->type))
    fault("null, which stands for no address, is no value of type '%s'", type_name(target->type));
}

inline void copy_text(Value target, const TextBuffer& text) {
  std::memcpy(target->text.data, text.data, text.size + 1);
  target->text.size = text.size;
}

}  // namespace

bool assign_scalar(Value target, Value source) {
  if (!is_scalar(source->form) || target->kind != source->kind || target->dynamic || source->dynamic)
    return false;
  if (source->form == Form::string) {
    const bool has_room = target->form == Form::string && target->text.capacity > source->text.size;
    if (has_room && target != source && source->text.data) {
      copy_text(target, source->text);
    } else {
      set_text(target, {source->text.data, source->text.size});
    }
  } else if (source->form < Form::string) {
    if (may_own(target->form)) clear_contents(target);
    target->form = source->form;
    target->special = Special::none;
    target->integer = source->integer;
  } else {
    return false;
  }
  return true;
}

Value new_scalar_part(Value whole, lumo_type_t type, Value source) {
  if (!is_scalar(source->form) || source->form > Form::string || source->dynamic || whole->dynamic)
    return nullptr;
  const lumo_type_kind_t kind = base_kind(type);
  if (kind != source->kind) return nullptr;
  Value part = take_node();
  part->type = type;
  part->kind = kind;
  part->life = Life::part;
  part->parent = whole;
  part->pending = whole->pending;
  part->form = source->form;
  part->integer = source->integer;
  if (source->form != Form::string) return part;
  part->text = {nullptr, 0, 0};
  reserve(part->text, source->text.size + 1);
  copy_text(part, source->text);
  return part;
}

void assign_contents(Value target, Value source) {
  if (source->form == Form::external) source = settled(source);
  if (target->kind == lumo_type_kind_undefined && source->kind != lumo_type_kind_undefined) {
    target->type = source->type;
    target->kind = source->kind;
  }
  if (source->form != Form::special && source->form != Form::unset) {
    bool texts = is_text_kind(target->kind) && is_text_kind(source->kind);
    if (texts && source->kind != target->kind && is_text_form(source->form)) {
      assign_text_kinds(target, source);
      return;
    }
    if (!texts && !same_family(target->kind, source->kind)) mismatch(target, source);
  }
  assign_by_form(target, source);
  if (target->dynamic) copy_restraint(target, source);
}

Value copy_value(Value source, lumo_alloc_strategy_t strategy) {
  if (source->life == Life::fixed && source->form == Form::special) return source;
  if (source->form == Form::external) source = settled(source);
  Value v = new_node(source->type);
  set_strategy(v, strategy);
  v->dynamic = source->dynamic;
  v->label = source->label;
  v->restriction = source->restriction;
  if (!v->dynamic) shape_fresh(v);
  if (source->form == Form::instance) v->dynamic = true;
  assign_contents(v, source);
  return v;
}

}  // namespace lumos

using namespace lumos;

void lumo_value_assign(lumo_value_t target, lumo_value_t source, lumo_context_t) {
  if (target == lumo_value_no_return_c) return;
  if (!source || is_blank(source)) fault("use of a value that is not initialized");
  if (target == source) return;
  prepare_write(target);
  if (!target->restriction && assign_scalar(target, source)) return check_written(target);
  bool from_template = is_template(source) && source != lumo_omit_value_c;
  if (!target->dynamic && from_template) source = valueof_value(source, lumo_temp_alloc_c);
  if (target->restriction) source = restricted(source, target->restriction);
  if (target == source) return;
  if (source->form == Form::special) check_takes_special(target, source);
  if (is_within(target, source) || is_within(source, target)) source = copy_value(source, lumo_temp_alloc_c);
  const bool is_checked = !from_template && structure_of(target->type) == structure_of(source->type) &&
                          !(has_parts(source->form) && may_be_short(target->type));
  assign_contents(target, source);
  if (!is_checked && !target->dynamic) check_parts(target);
  check_written(target);
}

lumo_value_t lumo_value_copy(lumo_value_t source, lumo_alloc_strategy_t strategy, lumo_context_t) {
  if (!source) fault("use of a value that is not initialized");
  return copy_value(source, strategy);
}

lumo_value_t lumo_template_copy_to_type(lumo_type_t type, lumo_value_t source, lumo_alloc_strategy_t strategy,
                                        unsigned long restriction, lumo_context_t context) {
  Value v = lumo_type_instantiate_dynamic_template(type, strategy, restriction, context);
  if (source && !is_blank(source)) lumo_value_assign(v, source, context);
  return v;
}

lumo_value_t lumo_value_copy_to_type(lumo_type_t type, lumo_value_t source, lumo_alloc_strategy_t strategy,
                                     lumo_context_t context) {
  if (!source) fault("use of a value that is not initialized");
  if (source->type == type && source->life != Life::fixed) return copy_value(source, strategy);
  Value v = make_root(type, strategy);
  if (!is_blank(source)) lumo_value_assign(v, source, context);
  return v;
}
