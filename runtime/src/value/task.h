// A task is a thread of behaviour: the control part, an initialization, or a component. It
// carries the roots of temporary values and the places in the source. The context that
// generated code passes on is the current task.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "value/clock.h"
#include "lumos.h"
#include "value/value.h"

namespace lumos {

struct Component;
struct Fiber;

// A behaviour that runs, from location push to pop.

struct Frame {
  const char* module;
  const char* name;
  const char* file;
  lumo_value_t* argv;
  unsigned long line;
  lumo_scope_t scope;
  uint32_t first_named;  // named values of the frame start here
  uint32_t first_block;
};

struct ActiveDefault {
  long number;
  lumo_test_step_t altstep;  // null: deactivated
  lumo_type_t type;
  unsigned long argc;
  std::vector<lumo_value_t> argv;  // owned but for timers and ports
};

// A call whose answers are waited for. Its body is known by the depth at which its alternatives
// are tried.
struct OpenCall {
  lumo_type_t signature = nullptr;
  lumo_value_t timer = nullptr;  // owned; of a call that does not wait for ever
  size_t frames = 0, blocks = 0;
};

// What an alternative looked at; octets that are no value for it.
enum class Attempted : uint8_t { value, octets, call, reply, result, sender, match };

// A pattern that did not take a message in the alternatives that are tried, or a value in `match`, as long as
// both exist.
struct Attempt {
  lumo_value_t pattern = nullptr, content = nullptr;
  Attempted what = Attempted::value;
  bool is_past = false;           // of a snapshot before, of the same alternatives
  size_t root = SIZE_MAX;         // place among the roots from which on one of them lies, or SIZE_MAX
  size_t frames = 0, blocks = 0;  // around it: what is declared in them ends with them
};

// A default that runs. When it is deactivated meanwhile, its arguments are kept here until it has ended.
struct DefaultRun {
  long number;
  std::vector<lumo_value_t> argv;
};

struct NamedValue {
  const char* name;
  lumo_value_t value;
};

}  // namespace lumos

struct lumo_context_struct {
  const char* name = "";  // in the log
  lumos::Component* component = nullptr;
  lumos::Fiber* fiber = nullptr;
  std::vector<lumo_value_t> roots;
  std::vector<lumos::Frame> frames;
  std::vector<lumos::NamedValue> named;
  std::vector<uint32_t> blocks;
  // Of the calls that run: arguments by reference, and slots with the arguments that they get back.
  std::vector<lumo_value_t> pinned;
  std::vector<std::pair<lumo_value_t*, lumo_value_t>> arguments;
  // How many frames a search by name looks at, while a template of an outer frame runs.
  size_t visible_frames = SIZE_MAX;
  size_t statement_roots = SIZE_MAX;     // roots from here on were made by the statement that runs
  int quiet = 0;                         // above 0: mismatches are not logged
  int decoding = 0;                      // above 0: a decoder runs; a value that it may not write is no fault
  bool refused = false;                  // the decoder that runs wrote such a value
  std::vector<lumo_value_t> registered;  // by source tracking, outside of frames
  lumos::Timer* timers = nullptr;        // that run
  std::vector<lumos::Timer*> first_timers;   // those of them that are no calls', the first to expire in front
  lumos::Time snapshot_time = lumos::never;  // not asked for yet
  std::vector<lumos::ActiveDefault>
      defaults;  // oldest first; without an altstep those that are none any more
  size_t inactive_defaults = 0;
  std::vector<lumos::DefaultRun> default_runs;  // outermost first
  std::vector<lumo_value_t> kept_timers;        // only the defaults use them any more
  std::vector<lumos::OpenCall> calls;           // innermost last
  lumos::OpenCall called;                       // just now; its body, if any, comes next
  lumo_type_t answered = nullptr;               // by the raise that comes next
  std::vector<lumos::Attempt> attempts;         // since the snapshot
  std::vector<lumo_value_t> kept_contents;      // owned: of messages that are gone, for the attempts
  lumos::Attempt last_match;                    // the last `match`, if it did not fit
  unsigned matching = 0;                        // functions of templates that run
  unsigned steps = 0;                           // control points of this turn
  bool polls_by_else = false;                   // took an else branch in it
  bool furnishing = false;                      // makes what a new component has
  // Evaluates the local definitions of an altstep, which is at that depth.
  bool defining = false;
  size_t defining_frames = 0;
  bool choosing = false;  // looks at alternatives, of which none has been taken yet
  bool event = false;     // something happened since the snapshot
};

namespace lumos {

using Task = lumo_context_struct;

// Never null: outside of any behaviour it is the task of the process itself.
extern Task* current_task;

// Who ends the value: the task, with what else it made from now on, or whoever deletes it.
inline void set_strategy(lumo_value_t v, lumo_alloc_strategy_t strategy) {
  if (strategy != lumo_temp_alloc_c) {
    v->life = Life::perm;
    return;
  }
  std::vector<lumo_value_t>& roots = current_task->roots;
  v->life = Life::temp;
  v->root = static_cast<uint32_t>(roots.size());
  roots.push_back(v);
}
// Ends all temporary values and places of the task.
void reset_task(Task& task);
void end_last_roots(Task& task, size_t mark);
inline void end_roots(Task& task, size_t mark) {
  if (task.roots.size() > mark || !task.attempts.empty() || task.last_match.pattern)
    end_last_roots(task, mark);
}
// Forgets the attempts, or those whose patterns are among the roots from the mark on.
void end_attempts(Task& task);
// The alternatives are looked at once more.
void end_attempts_of_snapshot(Task& task);
// Nobody looks at them any more: attempts end with what they name.
void leave_attempts(Task& task);
void end_attempts(Task& task, size_t mark);
// The place of a temporary value among those of its task: it ends when that place does. SIZE_MAX for others.
size_t root_place(const Task& task, lumo_value_t value);
void end_attempts_of_ended_blocks(Task& task);
inline bool has_attempts(const Task& task) {
  return !task.attempts.empty() || task.last_match.pattern;
}
// Alternatives are entered: those of a call's body, or others, so that calls at this depth are over.
void enter_alternatives(Task& task);
// Ends the calls of this depth and below.
void end_calls(Task& task);
void end_call(OpenCall& call);
// The call in whose body the alternatives are tried; one without a signature elsewhere.
OpenCall open_call(const Task& task);
// An operation that changes or asks for what is around: a fault while local definitions of an
// altstep are evaluated, which has to have no effect if no alternative is chosen.
void refuse_effect(const char* operation);
inline void check_effect(const char* operation) {
  if (current_task->defining) refuse_effect(operation);
}
// The same for what may come to another result when the snapshot is looked at once more: a fault in functions
// that guards and templates of alternatives call.
void refuse_choice(const char* operation);
inline void check_choice(const char* operation) {
  check_effect(operation);
  if (current_task->choosing) refuse_choice(operation);
}
// Tells whether an alternative is taken.
inline bool takes(bool is_taken) {
  if (is_taken) current_task->choosing = false;
  return is_taken;
}

// Mismatches are not logged meanwhile, since they are no failure.
struct Quiet {
  Quiet() { ++current_task->quiet; }
  ~Quiet() { --current_task->quiet; }
};

// Frees what was made meanwhile, at its end.
struct TempScope {
  Task* task = current_task;
  size_t mark = task->roots.size();
  ~TempScope() { end_roots(*task, mark); }
};

}  // namespace lumos
