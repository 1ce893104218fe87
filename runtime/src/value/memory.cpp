// Memory of values: a pool of nodes, buffers, the roots of temporary values, memory scopes.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>

#include "value/memory.h"
#include "value/task.h"
#include "value/value.h"

namespace lumos {

lumo_value_struct* free_nodes = nullptr;
FreeBuffer* free_buffers_of[8];

namespace {

// Nodes come in slabs.
constexpr size_t slab_nodes = 256;
std::vector<lumo_value_struct*>& slabs() {
  static auto* all = new std::vector<lumo_value_struct*>;
  return *all;
}

}  // namespace

void add_nodes() {
  void* memory = allocate(nullptr, slab_nodes * sizeof(lumo_value_struct));
  auto* nodes = static_cast<lumo_value_struct*>(memory);
  slabs().push_back(nodes);
  for (size_t i = slab_nodes; i-- > 0;) {
    nodes[i].parent = free_nodes;
    free_nodes = &nodes[i];
  }
}

namespace {

void* take_buffer(size_t bytes) {
  FreeBuffer*& list = free_buffers_of[std::bit_width(bytes / least_buffer) - 1];
  if (!list) return allocate(nullptr, bytes);
  FreeBuffer* buffer = list;
  list = buffer->next;
  return buffer;
}

}  // namespace

void* grow_buffer(void* data, size_t old_bytes, size_t& bytes) {
  if (bytes > most_pooled && (!data || old_bytes > most_pooled)) return allocate(data, bytes);
  if (bytes <= most_pooled) bytes = std::bit_ceil(std::max(bytes, least_buffer));
  void* grown = bytes <= most_pooled ? take_buffer(bytes) : allocate(nullptr, bytes);
  if (!data) return grown;
  std::memcpy(grown, data, old_bytes);
  give_buffer(data, old_bytes);
  return grown;
}

void free_buffer(void* data) {
  std::free(data);
}

void retire(Value part) {
  if (!part || part->life == Life::fixed) return;
  part->parent = nullptr;
  part->pending = false;
  set_strategy(part, lumo_temp_alloc_c);
}

void unpin(Value v) {
  v->pinned = false;
  if (v->life == Life::orphan) destroy(v);
}

void end_attempts(Task& task) {
  task.attempts.clear();
  for (Value v : task.kept_contents) destroy(v);
  task.kept_contents.clear();
}

void leave_attempts(Task& task) {
  for (Attempt& a : task.attempts) a.is_past = false;
}

void end_attempts_of_snapshot(Task& task) {
  std::erase_if(task.attempts, [](const Attempt& a) { return !a.is_past; });
  if (task.attempts.empty()) return end_attempts(task);
  std::erase_if(task.kept_contents, [&](Value v) {
    const bool is_needed = std::any_of(task.attempts.begin(), task.attempts.end(),
                                       [v](const Attempt& a) { return a.content == v || a.pattern == v; });
    if (!is_needed) destroy(v);
    return !is_needed;
  });
}

namespace {

// What an altstep tried in vain may be nearer than what is tried behind it, and what was tried before is told
// when nothing else comes: their patterns are kept as copies.
template <class Ends>
void end_those(Task& task, Ends ends) {
  for (Attempt& a : task.attempts) {
    if ((!task.choosing && !a.is_past) || !ends(a)) continue;
    task.kept_contents.push_back(copy_value(a.pattern, lumo_perm_alloc_c));
    a = {task.kept_contents.back(), a.content, a.what, a.is_past};
  }
  std::erase_if(task.attempts, ends);
  if (ends(task.last_match)) task.last_match = {};
}

}  // namespace

void end_attempts(Task& task, size_t mark) {
  end_those(task, [mark](const Attempt& a) { return a.root != SIZE_MAX && a.root >= mark; });
}

void end_attempts_of_ended_blocks(Task& task) {
  end_those(task, [&task](const Attempt& a) {
    return a.frames > task.frames.size() || a.blocks > task.blocks.size();
  });
}

size_t root_place(const Task& task, Value v) {
  while (v->parent) v = v->parent;
  if (v->life != Life::temp) return SIZE_MAX;
  for (size_t i = task.roots.size(); i-- > 0;)
    if (task.roots[i] == v) return i;
  return SIZE_MAX;
}

void end_call(OpenCall& call) {
  if (call.timer) destroy(call.timer);
  call = {};
}

void end_last_roots(Task& task, size_t mark) {
  if (has_attempts(task)) end_attempts(task, mark);
  while (task.roots.size() > mark) {
    Value v = task.roots.back();
    task.roots.pop_back();
    if (v) destroy(v);
  }
}

void reset_task(Task& task) {
  for (Value v : task.pinned) unpin(v);
  task.pinned.clear();
  task.arguments.clear();
  end_attempts(task);
  end_roots(task, 0);
  task.frames.clear();
  task.named.clear();
  task.blocks.clear();
  task.registered.clear();
  task.visible_frames = SIZE_MAX;
  task.quiet = 0;
  for (OpenCall& call : task.calls) end_call(call);
  task.calls.clear();
  end_call(task.called);
  task.last_match = {};
  task.matching = 0;
  task.defining = task.choosing = false;
}

}  // namespace lumos

using namespace lumos;

void lumo_memory_temp_begin(lumo_memory_scope_t* scope, lumo_context_t) {
  scope->mark = current_task->roots.size();
  scope->named = current_task->named.size();
}

void lumo_memory_temp_clear(lumo_memory_scope_t* scope, lumo_context_t) {
  if (current_task->named.size() > scope->named) current_task->named.resize(scope->named);
  end_roots(*current_task, scope->mark);
}

void lumo_memory_temp_end(lumo_memory_scope_t* scope, lumo_context_t) {
  end_roots(*current_task, scope->mark);
}
