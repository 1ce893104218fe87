#include "ports/attempts.h"

#include <algorithm>

#include "template/templates.h"
#include "text/mismatch.h"
#include "value/types.h"

namespace lumos {

namespace {

constexpr size_t most_attempts = 256, most_told = 16;

bool same_root_type(Value pattern, Value content) {
  if (!pattern->type || !content->type || pattern->form == Form::special) return true;
  const lumo_type_info_struct_t* wanted = root_of(pattern->type);
  return !wanted || wanted->kind == lumo_type_kind_undefined || wanted == root_of(content->type);
}

// Whether the block that runs is one of those that the result of `match` chose.
bool decides_here(const Attempt& match) {
  // What was complete when it was matched need not be so any more.
  const bool is_whole = match.content && (match.content->form == Form::special || is_complete(match.content));
  return match.pattern && is_whole && match.frames == current_task->frames.size() &&
         match.blocks < current_task->blocks.size();
}

struct Explanation {
  size_t depth;
  std::vector<size_t> place;
  std::string text;
};

bool matches(const Attempt& a) {
  if (a.what == Attempted::call || a.what == Attempted::reply)
    return lumo_match_signature(a.pattern, a.content, a.what == Attempted::call, current_task);
  return match_value(a.pattern, a.content);
}

// What stands before the path of a mismatch.
std::string place_of_path(Attempted what) {
  return what == Attempted::result ? "value" : what == Attempted::sender ? "sender" : "";
}

Explanation explain(const Attempt& a) {
  const Value pattern = a.pattern, content = a.content;
  if (a.what == Attempted::octets) {
    MismatchTrace trace;
    trace.add("", (std::string("no value of type '") + type_name(pattern->type) + "'").c_str(), content,
              nullptr);
    return {0, {}, trace.text()};
  }
  const bool asks_for_type =
      a.what != Attempted::result && a.what != Attempted::sender && a.what != Attempted::match;
  if (asks_for_type && !same_root_type(pattern, content))
    return {0,
            {},
            std::string("expected a value of type '") + type_name(pattern->type) + "', actual one of type '" +
                type_name(content->type) + "'"};
  TempScope scope;
  MismatchTrace trace;
  if (matches(a)) return {0, {}, ""};
  if (!trace.is_found()) trace.add("", "value mismatch", content, pattern);
  std::vector<size_t> place = trace.place_in(content);
  // The result is looked at behind all parameters.
  if (a.what == Attempted::result) place.insert(place.begin(), SIZE_MAX);
  trace.put_before(place_of_path(a.what));
  return {trace.depth() + 1, std::move(place), trace.text()};
}

// Deeper; or of as much depth, but further behind in the message.
bool is_nearer(const Explanation& a, const Explanation& b) {
  return a.depth != b.depth ? a.depth > b.depth : a.place > b.place;
}

}  // namespace

void note_attempt(Value pattern, Value content, Attempted what) {
  Task& task = *current_task;
  if (!pattern || !content || task.attempts.size() >= most_attempts) return;
  task.attempts.push_back(
      {pattern, content, what, false, root_place(task, pattern), task.frames.size(), task.blocks.size()});
}

void forget_past_attempts() {
  std::erase_if(current_task->attempts, [](const Attempt& a) { return a.is_past; });
}

void keep_attempts() {
  std::vector<Attempt>& attempts = current_task->attempts;
  current_task->last_match = {};
  if (std::all_of(attempts.begin(), attempts.end(), [](const Attempt& a) { return a.is_past; })) return;
  forget_past_attempts();
  for (Attempt& a : attempts) a.is_past = true;
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
  // What was tried before is told of what is still there, and where nothing is.
  const auto is_present = [](const Attempt& a) { return !a.is_past; };
  const bool is_over = std::none_of(attempts.begin(), attempts.end(), is_present);
  const auto is_told = [&](const Attempt& a) {
    return is_over || std::any_of(attempts.begin(), attempts.end(), [&](const Attempt& other) {
             return is_present(other) && other.content == a.content;
           });
  };
  std::vector<Explanation> all;
  const auto add = [&](const Attempt& a) {
    Explanation e = explain(a);
    if (!e.text.empty()) all.push_back(std::move(e));
  };
  for (const Attempt& a : attempts)
    if (is_told(a)) add(a);
  if (decides_here(current_task->last_match)) add(current_task->last_match);
  std::stable_sort(all.begin(), all.end(), is_nearer);
  std::vector<std::string> texts;
  for (Explanation& e : all)
    if (texts.size() < most_told && std::find(texts.begin(), texts.end(), e.text) == texts.end())
      texts.push_back(std::move(e.text));
  return texts;
}

}  // namespace lumos
