#include "codec/raw.h"

#include "value/task.h"
#include "value/types.h"

namespace lumos {

std::string FieldPath::text() const {
  std::string text;
  for (const char* name : names_) text += (text.empty() ? "" : ".") + std::string(name);
  return text;
}

void append_elements(Value list, Value more) {
  for (size_t i = 0; more && i < more->parts.size; ++i) {
    const size_t last = list->parts.size;
    resize_parts(list, last + 1);
    lumo_value_assign(force_part(list, last), more->parts.data[i], current_task);
  }
  if (more) destroy(more);
}

Value part_at(Value v, const std::vector<size_t>& path) {
  for (const size_t step : path) {
    if (!v || v->form == Form::special) return nullptr;
    v = settled(v);
    const bool has_part = v->form == Form::fields
                              ? step < v->parts.size
                              : v->form == Form::choice && v->index == static_cast<long>(step);
    if (!has_part) return nullptr;
    v = v->parts.data[v->form == Form::fields ? step : 0];
  }
  return v && !is_omit(v) && v->form != Form::unset ? v : nullptr;
}

Value length_leaf(Value field, std::span<const std::string> index) {
  for (int depth = 0; field && depth < 100; ++depth) {
    field = settled(field);
    if (field->kind == lumo_type_kind_integer) return field;
    const bool is_choice = field->form == Form::choice;
    if (!is_choice && field->form != Form::fields) return nullptr;
    const long i = index.empty() ? -1 : field_index(field->type, index[0].c_str());
    if (i >= 0) index = index.subspan(1);
    if (i >= 0 && is_choice && i != field->index) return nullptr;
    field = is_choice ? field->parts.data[0] : i < 0 ? nullptr : field->parts.data[i];
  }
  return nullptr;
}

bool holds_for(const RawCondition& condition, Value part) {
  if (!condition.constant || !part) return !condition.constant && !part;
  const Value constant = condition.constant;
  if (part->form != constant->form) return false;
  if (part->form == Form::string)
    return std::string_view(part->text.data, part->text.size) ==
           std::string_view(constant->text.data, constant->text.size);
  return part->form == Form::integer || part->form == Form::enumerated ? part->integer == constant->integer
                                                                       : equal_values(part, constant);
}

}  // namespace lumos
