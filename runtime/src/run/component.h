// Components of a running test case. Each component is a fiber that the scheduler lets run
// in turn.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "report/events.h"
#include "run/fiber.h"
#include "value/task.h"

namespace lumos {

struct Message;
struct Port;

enum class State : uint8_t {
  idle,     // created, or an alive component whose behaviour ended
  ready,    // waits for its turn
  running,  // has the processor
  waiting,  // for an event
  ended     // for good
};

struct Behaviour {
  lumo_function_t function = nullptr;
  lumo_type_t type = nullptr;
  unsigned long argc = 0;
  std::vector<lumo_value_t> argv;  // owned; ends with NULL
};

// What is asked of any or all components, in bits.
enum Standing : unsigned char {
  standing_running = 1,
  standing_killed = 2,
  standing_done = 4,    // completed a behaviour; one that was never started has not
  standing_exempt = 8,  // need not run for all to run: never started, or stopped by another component
  standings = 16
};

// A component that asked for the state of another, or of any, as the number of its question among all tells.
struct Watcher {
  Component* component;
  uint64_t number;
};

struct Component {
  long number = 0;
  std::string name;
  lumo_type_t type = nullptr;  // reference type
  Value record = nullptr;      // variables, timers and ports by field
  Task task;
  State state = State::idle;
  bool alive = false;                  // may be started again
  bool done = false;                   // a behaviour ended
  bool polls = false;                  // waits, but is to be woken after a while without an event
  bool busy = false;                   // ready since its turn was over, not for an event
  bool is_watching = false;            // asked for the state of any component, and none has changed since
  const Component* watched = nullptr;  // the last whose state it asked for, if that has not changed since
  unsigned turn = 0;                   // of its entries among the ready ones, those of this turn count
  bool stopped_by_other = false;
  const char* overdue = nullptr;       // why the test case ends where it waits
  bool is_polling = false;             // waits, or waited, to be woken after a while (scheduler.cpp)
  unsigned char standing = standings;  // as what it counts; as nothing yet
  lumo_verdict_t verdict = lumo_verdict_none_c;
  Behaviour behaviour;
  std::vector<Watcher> watchers;  // of its state; each once
  std::vector<Port*> ports;       // owned
  Message* unsent = nullptr;      // made, but not on its way yet
};

// The running test case; null between test cases.
struct TestCase {
  std::string module, name;
  std::vector<std::unique_ptr<Component>> components;  // by number - 1; mtc, system, parallel ones
  Component* mtc = nullptr;
  Component* system = nullptr;
  lumo_type_t system_type = nullptr;
  lumo_verdict_t verdict = lumo_verdict_none_c;
  std::string reason;
  Place place;  // where the verdict was decided
  Time begin = 0;
  bool maps_by_itself = false;  // has no system clause: its ports are mapped at the start
  Time deadline = never;
  bool ended = false;
  Fiber* scheduler = nullptr;
  Task* caller = nullptr;
  std::vector<lumo_value_t> arguments;   // owned; those of the main component's behaviour, after it has ended
  std::unordered_set<uint64_t> watches;  // which of many watchers watch which component (scheduler.cpp)
  size_t counts[standings] = {};         // of the parallel components by what they are
};
extern TestCase* test_case;

// Told of a test case that is to be executed, and gives the value of the operation in its place; null
// executes it.
extern lumo_value_t (*execute_instead)(lumo_symbol_entry_t row, const char* module, const char* testcase,
                                       unsigned long argc, lumo_value_t argv[], double timeout);
// With it, the random numbers of a test case depend on its name and the seed only.
extern bool has_testcase_seed;
// The seed of the schedule that is explored.
extern std::optional<uint64_t> explored_seed;
extern uint64_t testcase_seed;

Results& results();
// Told of each result as it comes; null tells nobody.
extern void (*result_listener)(Result& result);
// Ends the running test case and notes its result; a faulty one may be left in the middle.
void conclude_test_case();

// --- life of a component

// A new component of the running test case; an empty name gives it one by its number.
Component& add_component(lumo_type_t type, const std::string& name, bool alive);
// Copies the arguments and makes a place for a result.
void set_behaviour(Component& component, lumo_symbol_entry_t row, unsigned long argc, lumo_value_t argv[]);
// False if there is no memory for a stack.
bool start_fiber(Component& component);
void take_verdict(Component& component);
// Counts the component as what it is now; called behind each change of what Standing tells.
void count_anew(Component& component);
// What is left to do when the behaviour of a component is over; not on the component's stack.
void bury(Component& component);
// Ends behaviour, ports and variables. Number, name, state and verdict stay.
void release_component(Component& component);

// The component of the calling behaviour; a fault in a control part.
Component& self();
// Null for null, or a component that does not exist.
Component* component_of(Value reference);
Value reference_to(const Component& component);
Value find_component_element(const char* name);  // null if there is none
// The place of an element in the record of components of a type, -1 if there is none; known by the address of
// the name, which lives on.
long element_index(lumo_type_t type, const char* name);
Component& system_component();
// What concerns all components is for the main test component.
void check_is_mtc(const char* operation);

// Something happened to the component: it tries its alternatives again.
void wake(Component& component);
// Gives up the processor; the caller stays ready.
void yield();
// Ends the test case with verdict error, from the scheduler's or any component's side.
void end_test_case(lumo_verdict_t verdict, const char* reason);
// Ends it in a component that waited in vain for what it received: that says why.
[[noreturn]] void end_overdue(const Component& c);

// Runs on a fiber of its own, so that a fault ends it alone; false after a fault.
bool run_guarded(const char* task_name, void (*function)(void*), void* argument);
// Ends the calling guarded run or component without a fault.
[[noreturn]] void leave_behaviour();

}  // namespace lumos
