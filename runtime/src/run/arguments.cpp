#include "run/arguments.h"

#include "run/component.h"
#include "template/templates.h"
#include "value/task.h"
#include "value/error.h"
#include "value/memory.h"
#include "value/subtypes.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr unsigned by_reference = lumo_type_parameter_out_c | lumo_type_parameter_inout_c;

Value whole_of(Value v) {
  while (v->parent) v = v->parent;
  return v;
}

// Timers and ports, and arrays of them, are always passed as themselves.
bool is_object(lumo_type_t type) {
  while (base_kind(type) == lumo_type_kind_array) type = element_type(type);
  const lumo_type_kind_t kind = base_kind(type);
  return kind == lumo_type_kind_timer || kind == lumo_type_kind_port_ref || kind == lumo_type_kind_port;
}

void save(lumo_value_t& slot) {
  current_task->arguments.push_back({&slot, slot});
}

void pin(Value v) {
  for (; v && !v->pinned; v = v->parent) {
    v->pinned = true;
    current_task->pinned.push_back(v);
    if (!v->pending) return;
  }
}

// What a behaviour on a component may change besides what it is given.
Value changeable(const lumo_field_info_t* fields, size_t count) {
  const bool runs_on = count > 1 && fields[1].type;
  return runs_on && current_task->component ? current_task->component->record : nullptr;
}

bool goes_in(const lumo_field_info_t& formal, Value argument) {
  return !(formal.property & by_reference) && argument && argument->life != Life::fixed && !is_object(formal.type);
}

// What goes in has a value, at least in part.
void check_has_value(const lumo_field_info_t& formal, Value argument) {
  if (is_blank(argument))
    fault("parameter '%s' is given a value that is not initialized%s%s", formal.name, argument->label ? ": " : "",
          argument->label ? argument->label : "");
}

struct Call {
  const lumo_field_info_t* formals;
  unsigned long argc;
  lumo_value_t* argv;
  Value variables;  // of the component

  bool goes_out(unsigned long i) const { return formals[i].property & by_reference; }
  bool is_variable(unsigned long i) const { return argv[i] && argv[i]->life != Life::fixed; }

  bool may_change(Value whole) const {
    if (whole == variables) return true;
    for (unsigned long i = 0; i < argc; ++i)
      if (goes_out(i) && is_variable(i) && whole_of(argv[i]) == whole) return true;
    return false;
  }
  // A template that was made of references reads them whenever it is asked.
  bool reads_changeable(Value v) const {
    if (!v || v->life == Life::fixed) return false;
    if (may_change(whole_of(v))) return true;
    if (v->form != Form::instance || v->owns_arguments) return false;
    check_stack();
    for (size_t i = 0; i < v->parts.size; ++i)
      if (reads_changeable(v->parts.data[i])) return true;
    return false;
  }
  void take(unsigned long i) {
    if (argv[i] == lumo_value_default_c) return save(argv[i]);
    if (restriction_of(formals[i])) take_restricted(i);
    if (!is_variable(i) || is_object(formals[i].type)) return;
    if (goes_out(i)) return take_reference(i);
    check_has_value(formals[i], argv[i]);
    // What is sent is known by its type.
    const bool is_own_type = argv[i]->type == formals[i].type || argv[i]->dynamic ||
                             argv[i]->form == Form::instance || are_related(argv[i]->type, formals[i].type);
    const bool fits = is_own_type && belongs(argv[i], formals[i].type);
    if (fits && !reads_changeable(argv[i])) return;
    save(argv[i]);
    Value copy =
        fits ? copy_value(argv[i], lumo_temp_alloc_c) : make_root(formals[i].type, lumo_temp_alloc_c);
    if (!fits) lumo_value_assign(copy, argv[i], current_task);
    argv[i] = copy;
  }
  void take_restricted(unsigned long i) {
    if (!argv[i] || formals[i].property & lumo_type_parameter_out_c) return;
    Value held = restricted(argv[i], restriction_of(formals[i]));
    if (goes_out(i) || held == argv[i]) return;
    save(argv[i]);
    argv[i] = held;
  }
  void take_reference(unsigned long i) {
    pin(argv[i]);
    if (formals[i].property & lumo_type_parameter_inout_c) check_belongs(argv[i], formals[i].type);
  }
  void unset(unsigned long i) {
    if (!(formals[i].property & lumo_type_parameter_out_c) || !is_variable(i) || argv[i]->pending) return;
    if (is_object(formals[i].type)) return;
    clear_contents(argv[i]);
    shape_fresh(argv[i]);
  }
};

}  // namespace

Arguments::Arguments(lumo_type_t type, unsigned long argc, lumo_value_t argv[])
    : saved_(current_task->arguments.size()), pinned_(current_task->pinned.size()) {
  const lumo_field_info_t* fields = argc && argv && type ? field_info(type) : nullptr;
  const lumo_field_info_t* formals = fields && fields[0].type ? field_info(fields[0].type) : nullptr;
  if (!formals) return;
  Call call{formals, argc, argv, changeable(fields, field_count(type))};
  for (unsigned long i = 0; i < argc; ++i) call.take(i);
  for (unsigned long i = 0; i < argc; ++i) call.unset(i);
}

void check_arguments(lumo_type_t type, unsigned long argc, lumo_value_t argv[]) {
  const lumo_field_info_t* fields = argc && argv && type ? field_info(type) : nullptr;
  const lumo_field_info_t* formals = fields && fields[0].type ? field_info(fields[0].type) : nullptr;
  for (unsigned long i = 0; formals && i < argc; ++i) {
    if (goes_in(formals[i], argv[i])) {
      check_has_value(formals[i], argv[i]);
      check_belongs(argv[i], formals[i].type);
    }
    if (restriction_of(formals[i]) && argv[i] && argv[i] != lumo_value_default_c)
      restricted(argv[i], restriction_of(formals[i]));
  }
}

void check_results(lumo_type_t type, lumo_value_t argv[]) {
  const lumo_field_info_t* fields = argv && type ? field_info(type) : nullptr;
  const lumo_field_info_t* formals = fields && fields[0].type ? field_info(fields[0].type) : nullptr;
  if (!formals) return;
  const size_t count = field_count(fields[0].type);
  constexpr unsigned results = by_reference | lumo_field_property_return_value_c;
  for (unsigned long i = 0; i < count; ++i) {
    if (!(formals[i].property & results) || !argv[i] || argv[i]->life == Life::fixed) continue;
    if (restriction_of(formals[i]) && !is_blank(argv[i])) restricted(argv[i], restriction_of(formals[i]));
    check_belongs(argv[i], formals[i].type);
  }
}

void Arguments::end() {
  Task& task = *current_task;
  for (; task.arguments.size() > saved_; task.arguments.pop_back()) {
    auto [slot, argument] = task.arguments.back();
    // The callee made the value of a default.
    if (argument == lumo_value_default_c && *slot && (*slot)->life == Life::perm) destroy(*slot);
    *slot = argument;
  }
  for (; task.pinned.size() > pinned_; task.pinned.pop_back()) unpin(task.pinned.back());
}

}  // namespace lumos
