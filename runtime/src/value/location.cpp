#include "value/location.h"

#include <algorithm>
#include <cstring>

#include "value/hooks.h"
#include "value/error.h"
#include "value/types.h"

namespace lumos {

void (*line_counter)(const CountedPlace& place, bool is_block) = nullptr;

namespace {

void pop_frame(Task& task) {
  if (task.frames.empty()) return;
  const Frame& frame = task.frames.back();
  if (task.named.size() > frame.first_named) task.named.resize(frame.first_named);
  if (task.blocks.size() > frame.first_block) task.blocks.resize(frame.first_block);
  task.frames.pop_back();
  if (has_attempts(task)) end_attempts_of_ended_blocks(task);
}

// Parameters are known by the signature of the behaviour's type.
Value find_argument(const Frame& frame, const char* name) {
  if (!frame.argv) return nullptr;
  lumo_symbol_entry_t row = lumo_find_element(frame.module, frame.name, current_task);
  if (!row || !row->type_descriptor) return nullptr;
  const lumo_field_info_t* fields = field_info(row->type_descriptor);
  if (!fields || !fields[0].type) return nullptr;
  long index = field_index(fields[0].type, name);
  return index >= 0 ? frame.argv[index] : nullptr;
}

Value find_in_frame(const Task& task, size_t number, const char* name) {
  const Frame& frame = task.frames[number];
  size_t end = number + 1 < task.frames.size() ? task.frames[number + 1].first_named : task.named.size();
  for (size_t i = end; i-- > frame.first_named;)
    if (!std::strcmp(task.named[i].name, name)) return task.named[i].value;
  return find_argument(frame, name);
}

Value find_registered(const Task& task, const char* name) {
  for (size_t i = task.registered.size(); i-- > 0;) {
    Value v = task.registered[i];
    if (v->label && !std::strcmp(v->label, name)) return v;
  }
  return nullptr;
}

}  // namespace

Value find_named_value(const char* name) {
  const Task& task = *current_task;
  size_t visible = std::min(task.visible_frames, task.frames.size());
  for (size_t i = visible; i-- > 0;)
    if (Value v = find_in_frame(task, i, name)) return v;
  if (Value v = hooks.component_element ? hooks.component_element(name) : nullptr) return v;
  if (Value v = find_registered(task, name)) return v;
  if (visible == 0) return nullptr;
  lumo_symbol_entry_t row = lumo_find_element(task.frames[visible - 1].module, name, current_task);
  return row ? row->value_descriptor : nullptr;
}

}  // namespace lumos

using namespace lumos;

void lumo_source_location_push(const char* module, const char* name, lumo_value_t argv[], lumo_scope_t scope,
                               const char* file, unsigned long line, lumo_context_t) {
  Task& task = *current_task;
  check_stack();
  task.frames.push_back({module ? module : "", name ? name : "", file ? file : "", argv, line, scope,
                         static_cast<uint32_t>(task.named.size()),
                         static_cast<uint32_t>(task.blocks.size())});
}

void lumo_source_location_pop(lumo_context_t) {
  pop_frame(*current_task);
}

void lumo_source_location_push_block_at(const char* code, unsigned long code_line, lumo_context_t) {
  Task& task = *current_task;
  task.blocks.push_back(static_cast<uint32_t>(task.named.size()));
  if (line_counter && !task.frames.empty())
    line_counter({task.frames.back().file, task.frames.back().line, code, code_line}, true);
}

// In parentheses, since the words are macros too.
void(lumo_source_location_push_block)(lumo_context_t context) {
  lumo_source_location_push_block_at(nullptr, 0, context);
}

void lumo_source_location_pop_block(lumo_context_t) {
  Task& task = *current_task;
  if (task.blocks.empty()) return;
  if (task.named.size() > task.blocks.back()) task.named.resize(task.blocks.back());
  task.blocks.pop_back();
  if (has_attempts(task)) end_attempts_of_ended_blocks(task);
}

void lumo_source_location_set_line_at(unsigned long line, const char* code, unsigned long code_line,
                                      lumo_context_t) {
  Task& task = *current_task;
  task.called.signature = nullptr;
  task.statement_roots = task.roots.size();
  if (task.frames.empty()) return;
  Frame& frame = task.frames.back();
  frame.line = line;
  if (line_counter) line_counter({frame.file, line, code, code_line}, false);
}

void(lumo_source_location_set_line)(unsigned long line, lumo_context_t context) {
  lumo_source_location_set_line_at(line, nullptr, 0, context);
}

void lumo_source_tracking_name_value(const char* name, lumo_value_t value, lumo_context_t) {
  if (!current_task->frames.empty()) current_task->named.push_back({name, value});
}

void lumo_source_tracking_register_value(lumo_value_t value, lumo_boolean_t, lumo_context_t) {
  if (value && value->life == Life::perm) current_task->registered.push_back(value);
}

lumo_value_t lumo_source_tracking_find_value(const char* name, lumo_context_t) {
  Value v = find_named_value(name);
  if (!v) fault("'%s' is not known here", name);
  return v;
}

void lumo_targetcode_location_push(const char* function, const char* file, unsigned long line,
                                   lumo_context_t context) {
  lumo_source_location_push("", function, nullptr, lumo_scope_undefined_c, file, line, context);
}

void lumo_targetcode_location_pop(lumo_context_t context) {
  lumo_source_location_pop(context);
}

void lumo_targetcode_location_set_line(unsigned long line, lumo_context_t context) {
  lumo_source_location_set_line_at(line, nullptr, 0, context);
}
