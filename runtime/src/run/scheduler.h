// The scheduler of a running test case. Ready components run in the order in which they
// became ready, each until it waits, yields or ends; expired timers, polling components
// and messages from outside are looked after between two turns.
#pragma once

#include "run/component.h"

namespace lumos {

// Runs components until the test case ends.
void schedule();
void make_ready(Component& component);
// Forgets what is ready or polls.
void clear_schedule();
// Takes the component out of the ready ones.
void drop_from_ready(Component& component);
// Gives control to the scheduler; returns at the caller's next turn.
void to_scheduler();
// Leaves the component's stack for good; the scheduler does what is left to do.
[[noreturn]] void leave_component(Component& component);
// The component is woken at the next change of the other's state, or of that of any component.
void watch_component(Component& component, Component& other);
void watch_components(Component& component);
// The state of a component changed.
void wake_watchers(Component& changed);
// Another schedule for each seed above 0: the next component is any that is ready, and one that tells another
// something, or looks for events, may have to wait for its next turn first. 0 or none for the usual order.
void explore_schedule(std::optional<uint64_t> seed);
std::optional<uint64_t> explored_seed();
// Behind what others can notice.
void maybe_yield();

}  // namespace lumos
