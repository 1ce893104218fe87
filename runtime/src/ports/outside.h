// What is outside of the test system: the adapter that the user links, and the calls that
// it makes into the run, perhaps from threads of its own.
#pragma once

#include <string>

#include "value/clock.h"
#include "ports/port.h"

namespace lumos {

void outside_test_case_begins(const char* module, const char* name);
void outside_test_case_ends();
// Both are faults where the adapter refuses.
void outside_map(Port& component_port, Port& system_port);
void outside_unmap(Port& component_port, Port& system_port);
void outside_send(Port& component_port, Port& system_port, Message& message);
void outside_action(const std::string& text);
void outside_external_function(lumo_type_t signature, lumo_value_t argv[]);

// Sleeps until the time or until something arrived.
void wait_outside(Time until);
void take_messages_from_outside();
// Whether something may still arrive.
bool outside_may_send();

// Without an adapter messages to the system come back to the port that sent them.
void set_loopback(bool on);

}  // namespace lumos
