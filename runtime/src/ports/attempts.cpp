#include "ports/attempts.h"

#include <algorithm>

#include "template/templates.h"
#include "text/mismatch.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr size_t most_attempts = 16;

// The place of a temporary value among those of its task: it ends when that place does.
size_t root_place(const Task& task, Value v) {
  while (v->parent) v = v->parent;
  for (size_t i = task.roots.size(); i-- > 0;)
    if (task.roots[i] == v) return i;
  return SIZE_MAX;
}

bool same_root_type(Value pattern, Value content) {
  if (!pattern->type || !content->type || pattern->form == Form::special) return true;
  const lumo_type_info_struct_t* wanted = root_of(pattern->type);
  return !wanted || wanted->kind == lumo_type_kind_undefined || wanted == root_of(content->type);
}

struct Explanation {
  size_t depth;
  std::string text;
};

Explanation explain(Value pattern, Value content) {
  if (!same_root_type(pattern, content))
    return {0, std::string("expected a value of type '") + type_name(pattern->type) +
                   "', actual one of type '" + type_name(content->type) + "'"};
  TempScope scope;
  MismatchTrace trace;
  if (match_value(pattern, content)) return {0, ""};
  if (!trace.is_found()) trace.add("", "value mismatch", content, pattern);
  return {trace.depth() + 1, trace.text()};
}

}  // namespace

void note_attempt(Value pattern, Value content) {
  Task& task = *current_task;
  if (!pattern || !content || task.attempts.size() >= most_attempts) return;
  task.attempts.push_back({pattern, content, root_place(task, pattern)});
}

void release_content(Value content) {
  Task& task = *current_task;
  const bool is_needed = std::any_of(task.attempts.begin(), task.attempts.end(),
                                     [&](const Attempt& a) { return a.content == content; });
  if (!is_needed) return destroy(content);
  task.kept_contents.push_back(content);
}

std::vector<std::string> explain_attempts() {
  // Matching may end in a fault, and what is matched may look at the attempts.
  std::vector<Attempt> attempts;
  attempts.swap(current_task->attempts);
  std::vector<Explanation> all;
  for (const Attempt& a : attempts) {
    Explanation e = explain(a.pattern, a.content);
    if (!e.text.empty()) all.push_back(std::move(e));
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Explanation& a, const Explanation& b) { return a.depth > b.depth; });
  std::vector<std::string> texts;
  for (Explanation& e : all) texts.push_back(std::move(e.text));
  return texts;
}

}  // namespace lumos
