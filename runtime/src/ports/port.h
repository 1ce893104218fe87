// Ports: the queues of what arrived, and the connections to other ports.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "run/component.h"

namespace lumos {

enum class MessageKind : uint8_t { message, call, reply, exception };

struct Message {
  MessageKind kind = MessageKind::message;
  Value content = nullptr;  // owned; of a call or reply a value of the signature
  Value result = nullptr;   // owned; of a reply
  lumo_type_t signature = nullptr;
  long sender = 0;          // number of a component
  Value address = nullptr;  // owned; sender in the system under test
  std::string raw;          // encoded content, not decoded yet
  bool encoded = false;
  lumo_type_t decoded_as = nullptr;  // what the content is a value of, of an encoded message
  std::vector<lumo_type_t> refused;  // types that the octets are none of
  std::string shown;                 // the content as text, once somebody asked (shown_content)
  Message* next = nullptr;
};
// The octets of all messages that wait encoded.
extern size_t encoded_octets;
Message* new_message(MessageKind kind);
void delete_message(Message* message);
std::string_view shown_content(Message& message);

struct Queue {
  Message* first = nullptr;
  Message* last = nullptr;
  size_t length = 0;
  size_t allowed = SIZE_MAX;  // of a halted port: how many it still delivers
};

enum class PortState : uint8_t { started, stopped, halted };

// A call that was taken and not answered yet.
struct TakenCall {
  lumo_type_t signature;
  long caller;
};

struct Port {
  Component* owner = nullptr;
  const char* name = "";
  long index = -1;  // in an array of ports
  lumo_type_t type = nullptr;
  PortState state = PortState::started;
  Queue queues[2];  // for messages; for calls and their answers
  std::vector<Port*> connections;
  std::vector<Port*> mappings;  // on the other side
  bool was_mapped = false;
  bool is_mapped_itself = false;  // by its test case, and nobody has asked for it since
  Time call_expiry = never;
  std::deque<TakenCall> taken;    // the latest of them
  mutable std::string full_name;  // once somebody asked (port_name)
};

// Gives the element the ports that its type asks for; nothing for other types.
void make_ports(Component& component, Value element, lumo_type_t type, const char* name);
// Ends all ports of the component.
void close_ports(Component& component);
// Takes connections and mappings away.
void disconnect_all(Component& component);
// The port of the component among the connections or mappings of a port; null without one. Ports with many of
// them ask the other side, since both have each other in their lists.
Port* linked_port(const Port& port, std::vector<Port*> Port::*list, const Component& component);
// Takes the port out of a list of connections or mappings.
void remove_port(std::vector<Port*>& list, Port* port);
// Puts the message into the queue and wakes the owner; takes the message over.
void deliver(Port& port, Message* message);
// "component:port", with the index in an array.
const std::string& port_name(const Port& port);
// Null if there is none.
Port* find_port(Component& component, const char* name, long index);

}  // namespace lumos
