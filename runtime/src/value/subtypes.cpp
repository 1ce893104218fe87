#include "value/subtypes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <set>

#include "value/task.h"
#include "value/error.h"
#include "value/types.h"

namespace lumos {

namespace {

// What the subtypes of a list ask for.
struct ListRule {
  bool of_elements = false;  // more than lengths
  lumo_long_integer_t lower = 0, upper = -1;
};

Value constraint_of(lumo_type_t type) {
  auto constraintof = reinterpret_cast<lumo_constraintof_function_t>(type->type_info->constraintof_function);
  return constraintof ? constraintof(type, nullptr, lumo_temp_alloc_c, current_task) : nullptr;
}

void add_rule(ListRule& rule, lumo_type_t type) {
  const TempScope scope;
  Value constraint = constraint_of(type);
  const bool is_length = constraint && constraint->restraint && constraint->restraint->has_length &&
                         constraint->form == Form::wrapped && constraint->parts.data[0] &&
                         is_special(constraint->parts.data[0], Special::anyornone);
  if (!is_length) {
    rule.of_elements = true;
    return;
  }
  rule.lower = std::max(rule.lower, constraint->restraint->lower);
  const lumo_long_integer_t upper = constraint->restraint->upper;
  if (upper >= 0 && (rule.upper < 0 || upper < rule.upper)) rule.upper = upper;
}

const ListRule& list_rule(lumo_type_t type) {
  static auto* rules = new std::map<const void*, ListRule>;
  type = plain_type(type);
  auto [known, is_new] = rules->try_emplace(type->type_info);
  if (!is_new) return known->second;
  ListRule rule;
  for (int i = 0; i < 1000 && type && type->type_info; ++i) {
    if (type->type_info->check_function) add_rule(rule, type);
    type = plain_type(type->type_info->parent_type);
  }
  return known->second = rule;
}

bool holds(lumo_type_t type, Value v) {
  ++current_task->quiet;
  const bool result = lumo_type_check(type, v, current_task);
  --current_task->quiet;
  return result;
}

void does_not_belong(Value v, lumo_type_t type) {
  static char text[512];
  std::string shown = render(v);
  std::strncpy(text, shown.c_str(), sizeof text - 1);
  shown.clear();
  shown.shrink_to_fit();
  refuse("value %s does not belong to type '%s'", text, type_name(type));
}

// A literal is made when its module starts, and checked by those who use it.
bool is_literal(Value v) {
  return v->life == Life::perm && !v->parent && !v->label;
}

bool is_starting() {
  const auto& frames = current_task->frames;
  return !current_task->component && !frames.empty() && frames.front().scope == lumo_scope_undefined_c;
}

bool is_list(Value v) {
  return v->form == Form::vector && v->kind != lumo_type_kind_array;
}

// A value that is being made has fields that nothing was said of yet.
bool is_made(Value v) {
  if (v->form == Form::fields)
    for (size_t i = 0; i < v->parts.size; ++i)
      if (!v->parts.data[i]) return false;
  return is_complete(v);
}

void check_own(Value v) {
  if (v->dynamic || v->form == Form::special || !has_check(v->type)) return;
  const bool by_length = is_list(v) && !list_rule(v->type).of_elements;
  if (!by_length && has_parts(v->form) && !is_made(v)) return;
  if (!holds(v->type, v)) does_not_belong(v, v->type);
}

// A list may still grow to the length that it needs.
void check_around(Value v) {
  if (v->dynamic || !has_check(v->type)) return;
  if (!is_list(v) || list_rule(v->type).of_elements) return check_own(v);
  const lumo_long_integer_t upper = list_rule(v->type).upper;
  if (upper >= 0 && v->parts.size > static_cast<size_t>(upper)) does_not_belong(v, v->type);
}

}  // namespace

void check_written(Value v) {
  Value checked = v;
  while (checked && !has_check(checked->type)) checked = checked->parent;
  if (!checked || (is_starting() && is_literal(v))) return;
  check_own(v);
  for (Value whole = v->parent; whole; whole = whole->parent) check_around(whole);
}

void check_parts(Value v) {
  if (v->form != Form::fields && v->form != Form::vector && v->form != Form::choice) return;
  check_stack();
  for (size_t i = 0; i < v->parts.size; ++i) {
    Value part = v->parts.data[i];
    if (!part || part->life == Life::fixed) continue;
    check_own(part);
    check_parts(part);
  }
}

void begin_value(Value v) {
  if (v->dynamic || !has_parts(v->form) || !has_check(v->type)) return;
  if (is_list(v) && !list_rule(v->type).of_elements) return;
  clear_contents(v);
  shape(v);
}

void check_length(Value v) {
  if (v->dynamic || !is_list(v) || !has_check(v->type) || list_rule(v->type).of_elements) return;
  if (!holds(v->type, v)) does_not_belong(v, v->type);
}

// A type that has itself among its parts is not asked again.
static bool has_short(lumo_type_t type, std::set<const void*>& asked) {
  type = plain_type(type);
  if (!type || !type->type_info || !asked.insert(type->type_info).second) return false;
  const lumo_type_kind_t kind = base_kind(type);
  if (is_list_kind(kind)) {
    const bool is_bounded = kind != lumo_type_kind_array && has_check(type) && list_rule(type).lower > 0;
    return is_bounded || has_short(element_type(type), asked);
  }
  const bool has_fields = is_record_kind(kind) || kind == lumo_type_kind_union;
  const size_t count = has_fields ? field_count(type) : 0;
  for (size_t i = 0; i < count; ++i)
    if (has_short(field_info(type)[i].type, asked)) return true;
  return false;
}

bool may_be_short(lumo_type_t type) {
  struct Answer {
    const void* info = nullptr;
    bool is_short = false;
  };
  static Answer answers[256];
  const void* info = type ? type->type_info : nullptr;
  Answer& answer = answers[reinterpret_cast<uintptr_t>(info) / 16 % std::size(answers)];
  if (answer.info == info) return answer.is_short;
  std::set<const void*> asked;
  const bool is_short = has_short(type, asked);
  answer = {info, is_short};
  return is_short;
}

LengthBounds length_bounds(lumo_type_t type) {
  LengthBounds bounds;
  type = plain_type(type);
  for (int i = 0; i < 1000 && type && type->type_info; ++i) {
    const TempScope scope;
    Value constraint = type->type_info->check_function ? constraint_of(type) : nullptr;
    const Restraint* restraint = constraint ? constraint->restraint : nullptr;
    if (restraint && restraint->has_length) {
      bounds.lower = std::max(bounds.lower, restraint->lower);
      if (restraint->upper >= 0 && (bounds.upper < 0 || restraint->upper < bounds.upper))
        bounds.upper = restraint->upper;
    }
    type = plain_type(type->type_info->parent_type);
  }
  return bounds;
}

bool belongs(Value v, lumo_type_t type) {
  if (v->dynamic || v->form == Form::instance) return true;
  if (is_special(v, Special::null_address)) return takes_null_address(type);
  if (lumo_type_is_equal(v->type, type, nullptr))
    return !(is_literal(v) && has_check(type)) && !(has_parts(v->form) && may_be_short(type));
  const lumo_type_kind_t kind = base_kind(type);
  const bool has_fields = kind == lumo_type_kind_record || kind == lumo_type_kind_set;
  if ((has_fields || is_list_kind(kind)) && structure_of(v->type) != structure_of(type)) return false;
  return !has_check(type);
}

void check_belongs(Value v, lumo_type_t type) {
  if (v->form == Form::unset || belongs(v, type)) return;
  if (may_be_short(type)) check_parts(v);
  if (!has_check(type)) return;
  if (has_parts(v->form) && !is_complete(v)) return;
  if (!holds(type, v)) does_not_belong(v, type);
}

}  // namespace lumos
