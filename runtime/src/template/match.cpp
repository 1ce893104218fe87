#include "template/match.h"

#include <algorithm>

#include "value/characters.h"
#include "value/error.h"
#include "value/location.h"
#include "template/pattern.h"
#include "value/scratch.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"

namespace lumos {

namespace {

lumo_long_integer_t length_of(Value v) {
  if (v->form == Form::vector) return static_cast<lumo_long_integer_t>(v->parts.size);
  return static_cast<lumo_long_integer_t>(lumo_value_string_length(v, current_task));
}

bool length_fits(const Restraint& restraint, Value v) {
  lumo_long_integer_t length = length_of(v);
  return length >= restraint.lower && (restraint.upper < 0 || length <= restraint.upper);
}

bool in_range_of_texts(Value lower, Value upper, Value v) {
  const Characters low(lower), high(upper);
  const char32_t from = low.size() ? low[0] : 0;
  const char32_t to = high.size() ? high[0] : char32_t(-1);
  return Characters(v).all([&](char32_t c) { return from <= c && c <= to; });
}

bool match_range(Value p, Value v) {
  Value lower = p->parts.data[0], upper = p->parts.data[1];
  bool bounded_above = upper->form != Form::special, bounded_below = lower->form != Form::special;
  if (v->form == Form::integer)
    return (!bounded_below || lumo_value_get_integer(lower, nullptr) <= v->integer) &&
           (!bounded_above || v->integer <= lumo_value_get_integer(upper, nullptr));
  if (v->form == Form::real)
    return (!bounded_below || lumo_value_get_float(lower, nullptr) <= v->real) &&
           (!bounded_above || v->real <= lumo_value_get_float(upper, nullptr));
  if (is_text_kind(v->kind)) return in_range_of_texts(lower, upper, v);
  return false;
}

bool match_list(Value p, Value v) {
  Quiet quiet;
  bool found = false;
  for (size_t i = 0; i < p->parts.size && !found; ++i) found = match_value(p->parts.data[i], v);
  return found;
}

bool match_value_list(Value p, Value v) {
  switch (p->list_kind) {
    case lumo_value_list_normal_c:
      return match_list(p, v);
    case lumo_value_list_complement_c:
      return !is_omit(v) && !match_list(p, v);
    case lumo_value_list_subset_c:
      return match_subset(v, p->parts.data, p->parts.size);
    default:
      return match_superset(v, p->parts.data, p->parts.size);
  }
}

bool match_fields(Value p, Value v) {
  if (v->form != Form::fields || v->parts.size != p->parts.size) return false;
  check_stack();
  const lumo_field_info_t* fields = field_info(v->type);
  for (size_t i = 0; i < p->parts.size; ++i) {
    Value pattern = p->parts.data[i];
    if (!pattern || pattern->form == Form::unset) continue;
    Value part = v->parts.data[i];
    if (!part || part->form == Form::unset) {
      if (!is_optional(fields[i]) && v->kind != lumo_type_kind_signature &&
          !is_special(pattern, Special::anyornone))
        fault("field '%s' is not initialized", fields[i].name);
      part = lumo_omit_value_c;
    }
    if (match_value(pattern, part)) continue;
    lumo_log_template_mismatch_by_name_event(fields[i].name, "value mismatch", part, pattern, current_task);
    return false;
  }
  return true;
}

bool match_choice(Value p, Value v) {
  check_stack();
  if (v->form != Form::choice || v->index != p->index || p->parts.size != 1 || v->parts.size != 1)
    return false;
  Value pattern = p->parts.data[0], part = v->parts.data[0];
  if (!pattern || !part) return false;
  if (match_value(pattern, part)) return true;
  if (field_info(v->type))
    lumo_log_template_mismatch_by_name_event(shown_name(v->type, v->index), "value mismatch", part, pattern,
                                             current_task);
  return false;
}

bool match_dynamic_list(Value p, Value v) {
  if (v->form != Form::vector) return false;
  TempScope scope;
  Scratch<lumo_permutation_kind_t> kinds(p->parts.size + 1);
  if (p->restraint) {
    for (auto [head, tail] : p->restraint->permutations) {
      for (size_t i = head; i <= tail && i < p->parts.size; ++i)
        kinds[i] = head == tail ? lumo_permutation_head_tail_c
                   : i == head  ? lumo_permutation_head_c
                   : i == tail  ? lumo_permutation_tail_c
                                : lumo_permutation_body_c;
    }
  }
  ListPattern pattern{p->parts.data, p->parts.size, kinds.data(), nullptr};
  return p->kind == lumo_type_kind_setof ? match_set_of(v, pattern) : match_record_of(v, pattern);
}

bool match_special(Value p, Value v) {
  switch (p->special) {
    case Special::anyone:
      if (!v->dynamic && !is_complete(v)) fault("a value that is not completely initialized is matched");
      return !is_omit(v);
    case Special::anyornone:
    case Special::no_value:
      return true;
    case Special::omit:
      return is_omit(v);
    case Special::null_component:
    case Special::null_default:
    case Special::null_address:
      return equal_values(p, v);
    default:
      fault("use of a template that is not initialized");
  }
}

bool match_contents(Value p, Value v) {
  switch (p->form) {
    case Form::special:
      return match_special(p, v);
    case Form::wrapped:
      return match_value(p->parts.data[0], v);
    case Form::value_list:
      return match_value_list(p, v);
    default:
      break;
  }
  if (is_omit(v)) return false;
  switch (p->form) {
    case Form::unset:
      fault("use of a template that is not initialized%s%s", p->label ? ": " : "", p->label ? p->label : "");
    case Form::range:
      return match_range(p, v);
    case Form::pattern:
      return match_pattern(p->parts.data[0], v);
    case Form::fields:
      return match_fields(p, v);
    case Form::vector:
      return match_dynamic_list(p, v);
    case Form::choice:
      return match_choice(p, v);
    default:
      return equal_values(p, v);
  }
}

bool match_dynamic(Value p, Value v) {
  if (p->if_present && is_omit(v)) return true;
  if (p->restraint && p->restraint->has_length && (is_omit(v) || !length_fits(*p->restraint, v)))
    return false;
  return match_contents(p, v);
}

bool match_instance(Value p, Value v, lumo_match_function_t function) {
  if (!function) fault("template '%s' cannot be matched", type_name(p->type));
  check_stack();
  TempScope scope;
  VisibleFrames visible(p->index);
  ++current_task->matching;
  const bool fits = function(template_info(p->type)->base_type, p->parts.data, v, current_task);
  --current_task->matching;
  return fits;
}

}  // namespace

bool match_value(Value p, Value v) {
  if (!p) fault("use of a template that is not initialized");
  if (!v) fault("use of a value that is not initialized");
  if (v->form == Form::external) v = settled(v);
  if (p->form == Form::instance) {
    if (p->if_present && is_omit(v)) return true;
    if (p->restraint && p->restraint->has_length && (is_omit(v) || !length_fits(*p->restraint, v)))
      return false;
    const lumo_template_info_t* info = template_info(p->type);
    return match_instance(p, v, info ? info->match_function : nullptr);
  }
  if (v->form == Form::unset && !is_record_kind(v->kind))
    fault("use of a value that is not initialized%s%s", v->label ? ": " : "", v->label ? v->label : "");
  if (is_template(v) && v->form != Form::special) v = valueof_value(v, lumo_temp_alloc_c);
  if (p->dynamic || p->form == Form::special) return match_dynamic(p, v);
  return !is_omit(v) && equal_values(p, v);
}

}  // namespace lumos

using namespace lumos;

namespace {

// A verdict that is set because of it may tell why.
void note_match(bool fits, Value pattern, Value value) {
  Task& task = *current_task;
  task.last_match = {};
  if (fits) return;
  const size_t root = std::min(root_place(task, pattern), root_place(task, value));
  task.last_match = {pattern, value, Attempted::match, false, root, task.frames.size(), task.blocks.size()};
}

}  // namespace

lumo_boolean_t lumo_match(lumo_value_t template_value, lumo_value_t value, lumo_context_t) {
  // Asked once, for a whole: its parts have parents.
  const bool is_whole =
      value && !value->parent && !value->dynamic && (has_parts(value->form) || value->form == Form::unset);
  if (is_whole && !is_complete(value)) fault("a value that is not completely initialized is matched");
  const bool fits = match_value(template_value, value);
  if (current_task->matching == 0) note_match(fits, template_value, value);
  return fits;
}

lumo_boolean_t lumo_match_signature(lumo_value_t template_value, lumo_value_t value, lumo_boolean_t is_call,
                                    lumo_context_t) {
  if (!template_value) fault("use of a template that is not initialized");
  if (template_value->form != Form::instance) return match_value(template_value, value);
  const lumo_template_info_t* info = template_info(template_value->type);
  lumo_match_function_t function = is_call ? info->call_match_function : info->reply_match_function;
  return match_instance(template_value, value, function ? function : info->match_function);
}

lumo_boolean_t lumo_regexp_match(lumo_value_t pattern, lumo_value_t value, lumo_context_t) {
  return match_pattern(pattern, value);
}

lumo_boolean_t lumo_match_continue_on_fail(lumo_context_t) {
  return match_continues_on_fail;
}

namespace lumos {
bool match_continues_on_fail = false;
}
