// Making, assigning, copying and ending values of any kind.
#include <cstdlib>
#include <cstring>
#include <new>

#include "error.h"
#include "memory.h"
#include "task.h"
#include "templates.h"
#include "timer.h"
#include "types.h"
#include "value.h"

namespace lumos {

namespace {

template <class Buffer>
void reserve(Buffer& buffer, size_t capacity) {
  if (buffer.capacity >= capacity) return;
  size_t grown = buffer.capacity + buffer.capacity / 2;
  if (grown < capacity) grown = capacity;
  void* data = std::realloc(static_cast<void*>(buffer.data), grown * sizeof *buffer.data);
  if (!data) throw std::bad_alloc();
  buffer.data = static_cast<decltype(buffer.data)>(data);
  buffer.capacity = grown;
}

// Frees what is not parts; parts are with the caller.
void free_buffers(Value v) {
  switch (v->form) {
    case Form::string:
      std::free(v->text.data);
      break;
    case Form::wide_string:
      std::free(v->wide.data);
      break;
    case Form::object_id:
      std::free(v->ids.data);
      break;
    case Form::timer:
      delete_timer(v->timer);
      break;
    case Form::external:
      if (v->external->destroy && v->external->home) v->external->destroy(v->external->home, current_task);
      delete v->external;
      break;
    default:
      if (has_parts(v->form) || v->form == Form::instance) std::free(v->parts.data);
      break;
  }
}

// An instance owns all arguments, or those that stand for defaults since it was called.
bool owns_argument(Value v, size_t i) {
  Value argument = v->parts.data[i];
  if (!argument || argument->life == Life::fixed) return false;
  if (v->owns_arguments) return true;
  return v->parts.data[v->parts.size + 1 + i] == lumo_value_default_c;
}

void change_form(Value v, Form form) {
  clear_contents(v);
  v->form = form;
  v->parts = {nullptr, 0, 0};
}

bool is_related(Value a, Value b) {
  for (Value v = a; v; v = v->parent)
    if (v == b) return true;
  for (Value v = b; v; v = v->parent)
    if (v == a) return true;
  return false;
}

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
  for (size_t i = 0; i < source->parts.size; ++i) {
    Value from = source->parts.data[i];
    Value& slot = target->parts.data[i];
    if (!from || from->life == Life::fixed) {
      if (slot && slot->life != Life::fixed) retire(slot);
      slot = from;
      continue;
    }
    if (!slot || slot->life == Life::fixed) {
      bool own_type = from->dynamic || source->form >= Form::wrapped;
      slot = make_part(own_type ? from->type : part_type(target, i), target);
    }
    slot->dynamic = target->dynamic || from->dynamic;
    assign_contents(slot, from);
  }
}

void copy_choice(Value target, Value source) {
  check_stack();
  if (target->form != Form::choice) {
    change_form(target, Form::choice);
    target->index = -1;
  }
  if (target->index != source->index) {
    resize_parts(target, 0);
    target->index = source->index;
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
  std::u32string text = wide_text(source);
  switch (target->kind) {
    case lumo_type_kind_universal_charstring:
      set_wide(target, text.data(), text.size());
      return;
    case lumo_type_kind_charstring: {
      std::string narrow = narrow_text(text);
      set_text(target, narrow);
      return;
    }
    default:
      break;
  }
  bool single = text.size() == 1;
  char32_t c = single ? text[0] : 0;
  text.clear();
  text.shrink_to_fit();
  if (!single) fault("a single character is needed for type '%s'", type_name(target->type));
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
  copy_timer_default(target->timer, source->timer);
}

void assign_scalar(Value target, Value source) {
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
      assign_scalar(target, source);
      return;
  }
}

bool is_matching(Value v) {
  switch (v->form) {
    case Form::instance:
    case Form::wrapped:
    case Form::range:
    case Form::value_list:
    case Form::pattern:
      return true;
    case Form::special:
      return v->special == Special::anyone || v->special == Special::anyornone;
    default:
      return false;
  }
}

// The characters of a text as one value of the string kind.
bool is_text_form(Form f) {
  return f == Form::string || f == Form::wide_string || f == Form::character || f == Form::wide_character;
}

}  // namespace

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
        v->timer = new_timer(v);
      }
      break;
    default:
      break;
  }
}

// What a fresh value has from the beginning: slots that a record has anyway, and timers.
static void shape_fresh(Value v) {
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
  shape_fresh(v);
  return v;
}

void destroy(Value v) {
  if (!v || v->life == Life::fixed) return;
  Value list = v;
  v->parent = nullptr;
  auto push = [&list](Value part) {
    part->parent = list;
    list = part;
  };
  while (list) {
    Value node = list;
    list = node->parent;
    if (has_parts(node->form)) {
      for (size_t i = 0; i < node->parts.size; ++i) {
        Value part = node->parts.data[i];
        if (part && part->life != Life::fixed) push(part);
      }
    } else if (node->form == Form::instance) {
      for (size_t i = 0; i < node->parts.size; ++i)
        if (owns_argument(node, i)) push(node->parts.data[i]);
    }
    free_buffers(node);
    delete node->restraint;
    give_node(node);
  }
}

void clear_contents(Value v) {
  if (has_parts(v->form)) {
    for (size_t i = 0; i < v->parts.size; ++i) retire(v->parts.data[i]);
  } else if (v->form == Form::instance) {
    for (size_t i = 0; i < v->parts.size; ++i)
      if (owns_argument(v, i)) retire(v->parts.data[i]);
  }
  free_buffers(v);
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

void set_wide(Value v, const char32_t* text, size_t size) {
  if (v->form != Form::wide_string) {
    clear_contents(v);
    v->form = Form::wide_string;
    v->wide = {nullptr, 0, 0};
  }
  reserve(v->wide, size + 1);
  if (size) std::memmove(v->wide.data, text, size * sizeof *text);
  v->wide.data[size] = 0;
  v->wide.size = size;
}

void resize_parts(Value v, size_t size) {
  for (size_t i = size; i < v->parts.size; ++i) retire(v->parts.data[i]);
  reserve(v->parts, size);
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

// Room for the arguments of an instance: them, a terminator, and what stood there first.
void open_instance(Value v, size_t count) {
  change_form(v, Form::instance);
  reserve(v->parts, 2 * count + 1);
  v->parts.size = count;
  for (size_t i = 0; i < 2 * count + 1; ++i) v->parts.data[i] = nullptr;
}

void open_parts(Value v, Form form, size_t count) {
  change_form(v, form);
  resize_parts(v, count);
}

lumo_type_t part_type(Value v, size_t slot) {
  if (v->form == Form::vector) return element_type(v->type);
  if (v->form == Form::choice || v->form == Form::fields) {
    size_t field = v->form == Form::choice ? static_cast<size_t>(v->index) : slot;
    const lumo_field_info_t* fields = field_info(v->type);
    if (fields && field < field_count(v->type)) return fields[field].type;
    return lumo_undefined_type;
  }
  return v->type;
}

// Lists of `?` stay `?` where one part is written.
static void expand_any(Value part, Value special) {
  if (!part->dynamic || !special || special->special == Special::omit) return;
  if (!is_record_kind(part->kind)) return;
  shape(part);
  const lumo_field_info_t* fields = field_info(part->type);
  for (size_t i = 0; i < part->parts.size; ++i)
    part->parts.data[i] = is_optional(fields[i]) ? lumo_anyornone_value_c : lumo_anyone_value_c;
}

Value force_part(Value v, size_t slot) {
  Value old = v->parts.data[slot];
  if (old && old->life != Life::fixed) return old;
  Value part = make_part(part_type(v, slot), v);
  expand_any(part, old);
  if (v->form == Form::fields) {
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

void prepare_write(Value v) {
  if (!v || v->life == Life::fixed) fault("assignment to something that is no variable");
  if (!v->pending) return;
  v->pending = false;
  Value list = v->parent;
  size_t index = static_cast<size_t>(v->index);
  v->index = -1;
  prepare_write(list);
  open_structure(list);
  if (index >= list->parts.size) resize_parts(list, index + 1);
  retire(list->parts.data[index]);
  list->parts.data[index] = v;
  current_task->roots[v->root] = nullptr;
  v->life = Life::part;
}

void check_written(Value v) {
  if (v->dynamic || !has_check(v->type) || v->form == Form::special) return;
  if (has_parts(v->form) && !is_complete(v)) return;
  ++current_task->quiet;
  bool holds = lumo_type_check(v->type, v, current_task);
  --current_task->quiet;
  if (holds) return;
  static char text[512];
  std::string shown = render(v);
  std::strncpy(text, shown.c_str(), sizeof text - 1);
  shown.clear();
  shown.shrink_to_fit();
  fault("value %s does not belong to type '%s'", text, type_name(v->type));
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

bool is_template(Value v) {
  return v->dynamic || is_matching(v);
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

// A template variable of a component is known as one when it first gets a template.
void lumo_value_assign(lumo_value_t target, lumo_value_t source, lumo_context_t) {
  if (target == source || target == lumo_value_no_return_c) return;
  prepare_write(target);
  if (!source || source->form == Form::unset) fault("use of a value that is not initialized");
  bool from_template = is_template(source) && source != lumo_omit_value_c;
  if (!target->dynamic && from_template && target->parent && target->parent->kind == lumo_type_kind_component)
    target->dynamic = true;
  if (!target->dynamic && from_template) source = valueof_value(source, lumo_temp_alloc_c);
  if (target->restriction) source = restricted(source, target->restriction);
  if (target == source) return;
  if (is_related(target, source)) source = copy_value(source, lumo_temp_alloc_c);
  assign_contents(target, source);
  check_written(target);
}

lumo_value_t lumo_value_copy(lumo_value_t source, lumo_alloc_strategy_t strategy, lumo_context_t) {
  if (!source) fault("use of a value that is not initialized");
  return copy_value(source, strategy);
}

void lumo_value_delete(lumo_value_t* value, lumo_context_t) {
  if (!value || !*value) return;
  lumo_value_t v = *value;
  *value = nullptr;
  if (v->life == Life::perm) {
    destroy(v);
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

Value settled(Value v) {
  if (!v) fault("use of a value that is not initialized");
  if (v->form != Form::external) return v;
  ExternalHome* home = v->external;
  if (!home->translate) fault("use of a value that is not initialized");
  Value inner = home->translate(home->home, lumo_temp_alloc_c, current_task);
  if (!inner || inner == lumo_illegal_value_c) fault("a value of a codec cannot be translated");
  clear_contents(v);
  assign_contents(v, inner);
  return v;
}

bool is_complete(Value v) {
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
        bool optional = is_optional(fields[i]) || fields[i].default_value;
        if (!part || (optional && part->form == Form::unset)) {
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
        if (!v->parts.data[i] || !is_complete(v->parts.data[i])) return false;
      return true;
    case Form::choice:
      return v->index >= 0 && v->parts.size == 1 && v->parts.data[0] && is_complete(v->parts.data[0]);
    default:
      return true;
  }
}

}  // namespace lumos
