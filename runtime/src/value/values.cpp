// Making, changing and ending values of any kind.
#include <cstdlib>
#include <cstring>

#include "value/error.h"
#include "value/memory.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/hooks.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

// Frees what is not parts; parts are with the caller.
void free_rare_buffers(Value v) {
  switch (v->form) {
    case Form::wide_string:
      release(v->wide);
      break;
    case Form::object_id:
      release(v->ids);
      break;
    case Form::timer:
      hooks.delete_timer(v->timer);
      break;
    case Form::external:
      if (v->external->destroy && v->external->home) v->external->destroy(v->external->home, current_task);
      delete v->external;
      break;
    default:
      break;
  }
}

inline void free_buffers(Value v) {
  if (v->form == Form::string) return release(v->text);
  if (has_parts(v->form) || v->form == Form::instance) return release(v->parts);
  free_rare_buffers(v);
}

// An instance owns all arguments, or those that stand for defaults since it was called.
bool owns_argument(Value v, size_t i) {
  Value argument = v->parts.data[i];
  if (!argument || argument->life == Life::fixed) return false;
  if (v->owns_arguments) return true;
  return v->parts.data[v->parts.size + 1 + i] == lumo_value_default_c;
}

void give_up_contents(Value v) {
  if (has_parts(v->form)) {
    for (size_t i = 0; i < v->parts.size; ++i) retire(v->parts.data[i]);
  } else if (v->form == Form::instance) {
    for (size_t i = 0; i < v->parts.size; ++i)
      if (owns_argument(v, i)) retire(v->parts.data[i]);
  }
  free_buffers(v);
}

}  // namespace

void change_form(Value v, Form form) {
  clear_contents(v);
  v->form = form;
  v->parts = {nullptr, 0, 0};
}

Value new_node(lumo_type_t type) {
  Value v = take_node();
  v->type = type;
  v->kind = base_kind(type);
  return v;
}

void shape(Value v) {
  switch (v->kind) {
    case lumo_type_kind_record:
    case lumo_type_kind_set:
    case lumo_type_kind_signature:
    case lumo_type_kind_component:
      if (v->form != Form::fields) change_form(v, Form::fields);
      resize_parts(v, field_count(v->type));
      break;
    case lumo_type_kind_array:
      if (v->form != Form::vector) change_form(v, Form::vector);
      resize_parts(v, array_length(v->type));
      break;
    case lumo_type_kind_recordof:
    case lumo_type_kind_setof:
      if (v->form != Form::vector) change_form(v, Form::vector);
      break;
    case lumo_type_kind_union:
      if (v->form != Form::choice) {
        change_form(v, Form::choice);
        v->index = -1;
      }
      break;
    case lumo_type_kind_timer:
      if (v->form != Form::timer) {
        clear_contents(v);
        v->form = Form::timer;
        v->timer = hooks.new_timer(v);
      }
      break;
    default:
      break;
  }
}

// What a fresh value has from the beginning: slots that a record has anyway, and timers.
void shape_fresh(Value v) {
  if (v->dynamic) return;
  if (v->kind == lumo_type_kind_timer || v->kind == lumo_type_kind_array || is_record_kind(v->kind)) shape(v);
}

Value make_root(lumo_type_t type, lumo_alloc_strategy_t strategy) {
  Value v = new_node(type);
  set_strategy(v, strategy);
  shape_fresh(v);
  return v;
}

Value make_part(lumo_type_t type, Value parent) {
  Value v = new_node(type);
  v->life = Life::part;
  v->parent = parent;
  v->dynamic = parent->dynamic;
  v->pending = parent->pending;
  shape_fresh(v);
  return v;
}

namespace {

inline void end_node(Value node) {
  if (may_own(node->form)) free_buffers(node);
  if (node->restraint) delete node->restraint;
  give_node(node);
}

// Whether it is a template whose arguments are all its caller's.
inline bool borrows_arguments(Value v) {
  if (v->form != Form::instance || v->owns_arguments) return false;
  const Value* defaults = v->parts.data + v->parts.size + 1;
  for (size_t i = 0; i < v->parts.size; ++i)
    if (defaults[i]) return false;
  return true;
}

}  // namespace

namespace {

// What has neither parts nor arguments, as most of what is made; false, with nothing done, for all else.
inline bool end_leaf(Value v) {
  if (v->form > Form::object_id || v->pinned) return false;
  end_node(v);
  return true;
}

// Ends the fields that are leaves; false if others remain.
inline bool end_leaves(Value record) {
  bool is_all = true;
  for (size_t i = 0; i < record->parts.size; ++i) {
    Value& part = record->parts.data[i];
    if (!part || part->life == Life::fixed) continue;
    if (end_leaf(part)) {
      part = nullptr;
    } else {
      is_all = false;
    }
  }
  return is_all;
}

[[gnu::noinline]] void end_nested(Value v) {
  Value list = v;
  v->parent = nullptr;
  auto push = [&list](Value part) {
    if (end_leaf(part)) return;
    part->parent = list;
    list = part;
  };
  while (list) {
    Value node = list;
    list = node->parent;
    if (node->pinned) {
      node->parent = nullptr;
      node->life = Life::orphan;
      continue;
    }
    if (has_parts(node->form)) {
      for (size_t i = 0; i < node->parts.size; ++i) {
        Value part = node->parts.data[i];
        if (part && part->life != Life::fixed) push(part);
      }
    } else if (node->form == Form::instance) {
      for (size_t i = 0; i < node->parts.size; ++i)
        if (owns_argument(node, i)) push(node->parts.data[i]);
    }
    end_node(node);
  }
}

}  // namespace

void destroy(Value v) {
  if (!v || v->life == Life::fixed || end_leaf(v)) return;
  const bool is_flat = !v->pinned && (v->form == Form::fields ? end_leaves(v) : borrows_arguments(v));
  if (is_flat) return end_node(v);
  end_nested(v);
}

void clear_contents(Value v) {
  if (may_own(v->form)) give_up_contents(v);
  v->form = Form::unset;
  v->special = Special::none;
  v->index = -1;
  v->owns_arguments = false;
}

void set_special(Value v, Special s) {
  clear_contents(v);
  v->form = Form::special;
  v->special = s;
}

void set_text(Value v, std::string_view text) {
  if (v->form != Form::string) {
    clear_contents(v);
    v->form = Form::string;
    v->text = {nullptr, 0, 0};
  }
  // The text may be this value's own.
  bool own = v->text.data && text.data() >= v->text.data && text.data() <= v->text.data + v->text.size;
  size_t offset = own ? static_cast<size_t>(text.data() - v->text.data) : 0;
  reserve(v->text, text.size() + 1);
  if (!text.empty()) std::memmove(v->text.data, own ? v->text.data + offset : text.data(), text.size());
  v->text.data[text.size()] = 0;
  v->text.size = text.size();
}

void reserve_text(Value v, size_t size) {
  if (v->form != Form::string) {
    clear_contents(v);
    v->form = Form::string;
    v->text = {nullptr, 0, 0};
  }
  reserve(v->text, size + 1);
  v->text.data[size] = 0;
  v->text.size = size;
}

void reserve_wide(Value v, size_t size) {
  if (v->form != Form::wide_string) {
    clear_contents(v);
    v->form = Form::wide_string;
    v->wide = {nullptr, 0, 0};
  }
  reserve(v->wide, size + 1);
  v->wide.data[size] = 0;
  v->wide.size = size;
}

void set_wide(Value v, const char32_t* text, size_t size) {
  reserve_wide(v, size);
  if (size) std::memmove(v->wide.data, text, size * sizeof *text);
}

void resize_parts(Value v, size_t size) {
  for (size_t i = size; i < v->parts.size; ++i) retire(v->parts.data[i]);
  if (v->parts.capacity < size) reserve(v->parts, size);
  for (size_t i = v->parts.size; i < size; ++i) v->parts.data[i] = nullptr;
  v->parts.size = size;
}

void append_object_id(Value v, lumo_long_integer_t number) {
  prepare_write(v);
  if (v->form != Form::object_id) {
    clear_contents(v);
    v->form = Form::object_id;
    v->ids = {nullptr, 0, 0};
  }
  reserve(v->ids, v->ids.size + 1);
  v->ids.data[v->ids.size++] = number;
}

void open_parts(Value v, Form form, size_t count) {
  change_form(v, form);
  resize_parts(v, count);
}

lumo_type_t part_type(Value v, size_t slot) {
  if (v->form == Form::fields) {
    const lumo_type_info_struct_t* info = structure_of(v->type);
    const bool is_plain = info && info->kind != lumo_type_kind_component && info->field_info;
    if (is_plain && static_cast<long>(slot) < info->number_of_fields) return info->field_info[slot].type;
  }
  if (v->form == Form::vector) return element_type(v->type);
  if (v->form == Form::choice || v->form == Form::fields) {
    size_t field = v->form == Form::choice ? static_cast<size_t>(v->index) : slot;
    const lumo_field_info_t* fields = field_info(v->type);
    if (fields && field < field_count(v->type)) return fields[field].type;
    return lumo_undefined_type;
  }
  return v->type;
}

static bool is_any(Value part) {
  return part && (is_special(part, Special::anyone) || is_special(part, Special::anyornone));
}

Value force_part(Value v, size_t slot) {
  Value old = v->parts.data[slot];
  if (old && old->life != Life::fixed) return old;
  const lumo_type_info_struct_t* info = v->form == Form::fields ? structure_of(v->type) : nullptr;
  const bool is_field = info && info->kind != lumo_type_kind_component && info->field_info &&
                        static_cast<long>(slot) < info->number_of_fields;
  Value part = make_part(is_field ? info->field_info[slot].type : part_type(v, slot), v);
  if (part->dynamic && is_any(old)) set_special(part, old->special);  // what it stood for until it is written
  if (is_field) {
    part->label = info->field_info[slot].name;
  } else if (v->form == Form::fields) {
    const lumo_field_info_t* fields = field_info(v->type);
    if (fields && slot < field_count(v->type)) part->label = fields[slot].name;
  }
  v->parts.data[slot] = part;
  return part;
}

static void put_special(Value v, size_t slot, Value special) {
  retire(v->parts.data[slot]);
  v->parts.data[slot] = special;
}

// Elements of components are declared by values that may still be unset, or templates.
static bool store_element(Value v, size_t slot, Value source) {
  if (v->kind != lumo_type_kind_component || !source || source->life == Life::fixed) return false;
  Value part = force_part(v, slot);
  if (source->dynamic) {
    part->dynamic = true;
    part->restriction = source->restriction;
  }
  return source->form == Form::unset;
}

void store_part(Value v, size_t slot, Value source) {
  if (store_element(v, slot, source)) return;
  if (source && source->form == Form::special) {
    switch (source->special) {
      case Special::not_used:
        return;
      case Special::omit: {
        const lumo_field_info_t* fields = v->form == Form::fields ? field_info(v->type) : nullptr;
        bool may = v->dynamic || v->kind == lumo_type_kind_signature ||
                   (fields && slot < field_count(v->type) && is_optional(fields[slot]));
        if (!may) fault("omit is assigned to a mandatory field or element of '%s'", type_name(v->type));
        put_special(v, slot, lumo_omit_value_c);
        check_written(v);
        return;
      }
      case Special::anyone:
      case Special::anyornone:
        if (!v->dynamic) fault("a matching mechanism cannot be part of a value");
        put_special(v, slot,
                    source->special == Special::anyone ? lumo_anyone_value_c : lumo_anyornone_value_c);
        return;
      default:
        break;
    }
  }
  lumo_value_assign(force_part(v, slot), source, current_task);
}

static bool is_real(Value part) {
  return part && part->life != Life::fixed;
}

// The slot that a part goes to: of a list that grows for it, of a union that chooses it.
static Value& open_place(Value whole, size_t place) {
  open_structure(whole);
  if (whole->form == Form::choice) {
    if (whole->index != static_cast<long>(place)) resize_parts(whole, 0);
    whole->index = static_cast<long>(place);
    place = 0;
  }
  make_room(whole, place);
  return whole->parts.data[place];
}

static size_t place_in(Value whole, Value part) {
  if (whole->form == Form::choice) return static_cast<size_t>(whole->index);
  size_t i = 0;
  while (whole->parts.data[i] != part) ++i;
  return i;
}

// The place was filled since `from` was made for it: only what is written goes over to what is there now.
static void graft(Value into, Value from, Value written) {
  for (;;) {
    Value part = written;
    while (part->parent != from) part = part->parent;
    Value& slot = open_place(into, place_in(from, part));
    if (part == written || !is_real(slot)) {
      from->parts.data[from->form == Form::choice ? 0 : place_in(from, part)] = nullptr;
      retire(slot);
      slot = part;
      part->parent = into;
      return;
    }
    into = slot;
    from = part;
  }
}

// Gives a pending part its place.
static void join(Value pending, Value written) {
  Value& slot = open_place(pending->parent, pending->place);
  if (pending != written && is_real(slot)) return graft(slot, pending, written);
  retire(slot);
  slot = pending;
  current_task->roots[pending->root] = nullptr;
  pending->life = Life::part;
}

void check_writable(Value v) {
  if (!v || v->life == Life::fixed) fault("assignment to something that is no variable");
}

void prepare_first_write(Value v) {
  check_writable(v);
  for (Value p = v; p && p->pending; p = p->parent) {
    p->pending = false;
    if (p->life == Life::temp) join(p, v);
  }
}

bool is_blank_whole(Value v) {
  if (v->form == Form::unset) return !is_record_kind(v->kind) || field_count(v->type) > 0;
  const bool is_shaped =
      v->form == Form::fields || (v->form == Form::vector && v->kind == lumo_type_kind_array);
  if (!is_shaped || !v->parts.size) return false;
  check_stack();
  for (size_t i = 0; i < v->parts.size; ++i)
    if (v->parts.data[i] && !is_blank(v->parts.data[i])) return false;
  return true;
}

static bool holds_scalars(Value record) {
  for (size_t i = 0; i < record->parts.size; ++i)
    if (!record->parts.data[i] || !is_scalar(record->parts.data[i]->form)) return false;
  return true;
}

bool is_complete_whole(Value v) {
  if (v->form == Form::fields && holds_scalars(v)) return true;
  if (v->form == Form::external) v = settled(v);
  switch (v->form) {
    case Form::unset:
      return is_record_kind(v->kind) && field_count(v->type) == 0;
    case Form::special:
      return v->special != Special::illegal && v->special != Special::no_value;
    case Form::fields: {
      check_stack();
      const lumo_field_info_t* fields = field_info(v->type);
      for (size_t i = 0; i < v->parts.size; ++i) {
        Value part = v->parts.data[i];
        if (part && is_scalar(part->form)) continue;
        bool optional = is_optional(fields[i]) || fields[i].default_value;
        if (!part || is_blank(part)) {
          if (optional) continue;
          return false;
        }
        if (!is_complete(part)) return false;
      }
      return true;
    }
    case Form::vector:
      check_stack();
      for (size_t i = 0; i < v->parts.size; ++i)
        if (!v->parts.data[i] || is_blank(v->parts.data[i]) || !is_complete(v->parts.data[i])) return false;
      return true;
    case Form::choice:
      return v->index >= 0 && v->parts.size == 1 && v->parts.data[0] && is_complete(v->parts.data[0]);
    default:
      return true;
  }
}

}  // namespace lumos

using namespace lumos;

lumo_value_t lumo_type_instantiate_value(lumo_type_t type, lumo_alloc_strategy_t strategy, lumo_context_t) {
  return make_root(plain_type(type), strategy);
}

lumo_value_t lumo_type_instantiate_named_value(lumo_type_t type, const char* name,
                                               lumo_alloc_strategy_t strategy, lumo_context_t) {
  lumo_value_t v = make_root(plain_type(type), strategy);
  v->label = name;
  if (!current_task->frames.empty()) current_task->named.push_back({name, v});
  return v;
}

lumo_value_t lumo_type_instantiate_dynamic_template(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                                    unsigned long restriction, lumo_context_t) {
  lumo_value_t v = new_node(plain_type(type));
  set_strategy(v, strategy);
  v->dynamic = true;
  v->restriction = static_cast<uint8_t>(restriction);
  return v;
}

lumo_value_t lumo_type_instantiate_named_dynamic_template(lumo_type_t type, const char* name,
                                                          lumo_alloc_strategy_t strategy,
                                                          unsigned long restriction, lumo_context_t context) {
  lumo_value_t v = lumo_type_instantiate_dynamic_template(type, strategy, restriction, context);
  v->label = name;
  if (!current_task->frames.empty()) current_task->named.push_back({name, v});
  return v;
}

lumo_value_t lumo_value_allocate_template(lumo_type_t type, lumo_alloc_strategy_t strategy,
                                          lumo_context_t context) {
  return lumo_type_instantiate_dynamic_template(type, strategy, 0, context);
}

lumo_type_t lumo_value_type(lumo_value_t value, lumo_context_t) {
  return value && value->type ? value->type : lumo_undefined_type;
}

lumo_boolean_t lumo_value_is_initialized(lumo_value_t value, lumo_context_t) {
  return value && is_complete(value);
}

lumo_boolean_t lumo_value_is_dynamic_template(lumo_value_t value, lumo_context_t) {
  return value && is_template(value);
}

void lumo_value_delete(lumo_value_t* value, lumo_context_t) {
  if (!value || !*value) return;
  lumo_value_t v = *value;
  *value = nullptr;
  if (v->life == Life::perm) {
    if (!hooks.keep_for_defaults || !hooks.keep_for_defaults(v)) destroy(v);
  } else if (v->life == Life::temp) {
    if (v->root < current_task->roots.size() && current_task->roots[v->root] == v) {
      current_task->roots[v->root] = nullptr;
      destroy(v);
    }
  }
}

lumo_value_t lumo_value_set_label(lumo_value_t value, const char* label, lumo_context_t) {
  if (value && value->life != Life::fixed) value->label = label;
  return value;
}

lumo_value_t lumo_value_set_type(lumo_value_t value, lumo_type_t type, lumo_context_t) {
  prepare_write(value);
  value->type = plain_type(type);
  value->kind = base_kind(type);
  return value;
}
